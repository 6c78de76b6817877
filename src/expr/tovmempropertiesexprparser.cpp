#include "tovmempropertiesexprparser.h"

#include "itovmempropertiesexprvarquerier.h"
#include "tovmemproperties.h"
#include "tovmemproperty.h"
#include "tovnotfoundvarexception.h"

#include <rukengine.h>
#include <sefcommon.h>
#include <sefdebugoutput.h>
#include <sefexception.h>

#include <QCoreApplication>
#include <QStringList>

#include <exception>

namespace {

void writeFailure(int line, const QString &message)
{
    SefDebugOutput::write(QStringLiteral("TovMemPropertiesExprParser:%1").arg(line));
    SefDebugOutput::write(message);
}

bool isDynArg(const QString &code)
{
    return code.startsWith(QLatin1Char('@'));
}

} // namespace

TovMemPropertiesExprParser::TovMemPropertiesExprParser(const QString &args)
    : m_parser(rukEngine(QString()).createParser())
{
    initDynArgs(args);
}

TovMemPropertiesExprParser::TovMemPropertiesExprParser(const TovMemPropertiesExprParser &other)
    : RukVisitNodeImpl()
    , RukQueryVarDataTypeImpl()
    , RukQueryVarValueImpl()
    , m_parser(other.m_parser)
    , m_properties(other.m_properties)
    , m_args(other.m_args)
    , m_dynArgs(other.m_dynArgs)
    , m_querier(other.m_querier)
{ }

TovMemPropertiesExprParser &TovMemPropertiesExprParser::operator=(const TovMemPropertiesExprParser &other)
{
    m_parser = other.m_parser;
    m_properties = other.m_properties;
    m_args = other.m_args;
    m_dynArgs = other.m_dynArgs;
    m_querier = other.m_querier;
    return *this;
}

TovMemPropertiesExprParser::~TovMemPropertiesExprParser()
{
    // The engine parser may outlive this object in a copy: it must not call back into it.
    m_parser.setOnQueryVarValue(RukQueryVarValueEvent());
}

void TovMemPropertiesExprParser::addData(TovMemProperties *properties)
{
    m_properties.append(properties);
}

void TovMemPropertiesExprParser::setVarQuerier(ITovMemPropertiesExprVarQuerier *querier)
{
    m_querier = querier;
}

TovMemProperty *TovMemPropertiesExprParser::findProp(const QString &code) const
{
    const std::wstring name = code.toStdWString();
    for (TovMemProperties *properties : m_properties) {
        if (!properties)
            continue;
        if (TovMemProperty *property = properties->findPropByName(name))
            return property;
    }
    return nullptr;
}

void TovMemPropertiesExprParser::initDynArgs(const QString &text)
{
    m_args = text;
    m_dynArgs.clear();
    if (text.isEmpty())
        return;
    const QStringList parts = text.split(QLatin1Char(';'), Qt::KeepEmptyParts);
    for (const QString &part : parts) {
        const int equal = part.indexOf(QLatin1Char('='));
        if (equal <= 0)
            continue;
        m_dynArgs.insert(part.left(equal).trimmed(), part.mid(equal + 1).trimmed());
    }
}

void TovMemPropertiesExprParser::throwNotFound(const QString &code)
{
    throw TovNotFoundVarException(
        QCoreApplication::translate("TovMemProperties", "[%1]变量没有找到!").arg(code, 0, QLatin1Char(' ')));
}

void TovMemPropertiesExprParser::queryVarDataType(RukVarNode &node, int &dataType, void *)
{
    if (node.nodeType() != RukNode::Variable)
        return;
    const QString &code = node.varCode();
    if (isDynArg(code)) {
        dataType = RukData::Float;
        return;
    }
    TovMemProperty *property = findProp(code);
    if (!property)
        throwNotFound(code);
    dataType = RukData::Float;
    // The value callback finds it again without a lookup by name; the sets do not change while an
    // expression is evaluated.
    node.setTag(reinterpret_cast<qintptr>(property));
}

void TovMemPropertiesExprParser::queryVarValue(RukVarNode &node, void *)
{
    if (node.nodeType() != RukNode::Variable)
        return;
    const QString &code = node.varCode();
    if (isDynArg(code)) {
        node.setAsFloat(m_dynArgs.value(code, QStringLiteral("1")).toDouble());
        return;
    }
    QVariant value;
    if (m_querier && m_querier->queryVarValue(code, value)) {
        node.setAsVariant(value);
        return;
    }
    TovMemProperty *property = node.tag() ? reinterpret_cast<TovMemProperty *>(node.tag()) : findProp(code);
    if (!property)
        throwNotFound(code);
    node.setAsFloat(property->asDouble(m_args));
}

void TovMemPropertiesExprParser::visitNode(RukNode &, void *) { }

RukData TovMemPropertiesExprParser::evaluate(const QString &expression)
{
    try {
        m_parser.setExpression(expression, static_cast<RukQueryVarDataTypeImpl *>(this),
            RukQueryConstValueEvent(), nullptr, RukNodeMapInfos(), RukQueryFunctionEvent());
        m_parser.visitNode(RukParser::PreOrder, static_cast<RukVisitNodeImpl *>(this));
        m_parser.setOnQueryVarValue(static_cast<RukQueryVarValueImpl *>(this));
        m_parser.evaluate();
        RukData result = m_parser.result();
        result.setIsValid(true);
        return result;
    } catch (const SefException &e) {
        const SefException failure(e);
        writeFailure(__LINE__, failure.message());
    } catch (const std::exception &e) {
        writeFailure(__LINE__, QString::fromLocal8Bit(e.what()));
    } catch (...) {
        writeFailure(__LINE__, QStringLiteral("Unknown exception"));
    }
    RukData invalid;
    invalid.setIsValid(false);
    return invalid;
}

QString TovMemPropertiesExprParser::asString(const QString &expression)
{
    const RukData result = evaluate(expression);
    if (!result.isValid())
        return QString();
    if (result.dataType() == RukData::Boolean)
        return result.asBoolean() ? QStringLiteral("true") : QStringLiteral("false");
    return result.asString();
}

QString TovMemPropertiesExprParser::asString(const QString &expression, QChar separator)
{
    const QStringList parts = expression.trimmed().split(separator, Qt::KeepEmptyParts);
    QStringList texts;
    texts.reserve(parts.size());
    for (const QString &part : parts) {
        if (SefCommon::isNumeric(part)) {
            texts.append(part);
            continue;
        }
        const RukData result = evaluate(part);
        texts.append(result.isValid() ? QString::number(result.asFloat(), 'g', 6) : QStringLiteral("0"));
    }
    return texts.join(separator);
}
