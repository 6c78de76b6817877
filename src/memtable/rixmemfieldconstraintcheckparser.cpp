#include "rixmemfieldconstraintcheckparser.h"

#include "rixmemexprtypes_p.h"
#include "rixmemfield.h"
#include "rixmemrecord.h"
#include "rixmemtable.h"

#include <rukengine.h>
#include <sefcommon.h>
#include <sefdebugoutput.h>
#include <sefexception.h>

RixMemFieldConstraintCheckParser::RixMemFieldConstraintCheckParser(RixMemRecord *record)
    : m_parser(rukEngine(QString()).createParser())
    , m_record(record)
    , m_listener(std::make_shared<RixMemFieldConstraintCheckParser *>(nullptr))
{
    listen();
}

RixMemFieldConstraintCheckParser::RixMemFieldConstraintCheckParser(
    const RixMemFieldConstraintCheckParser &other)
    : RukVisitNodeImpl()
    , RukQueryVarDataTypeImpl()
    , RukQueryVarValueImpl()
    , m_parser(other.m_parser)
    , m_record(other.m_record)
    , m_fieldName(other.m_fieldName)
    , m_value(other.m_value)
    , m_listener(other.m_listener)
{
    listen();
}

RixMemFieldConstraintCheckParser &RixMemFieldConstraintCheckParser::operator=(
    const RixMemFieldConstraintCheckParser &other)
{
    if (this == &other)
        return *this;
    if (*m_listener == this) {
        m_parser.setOnQueryVarValue(RukQueryVarValueEvent());
        *m_listener = nullptr;
    }
    m_parser = other.m_parser;
    m_record = other.m_record;
    m_fieldName = other.m_fieldName;
    m_value = other.m_value;
    m_listener = other.m_listener;
    listen();
    return *this;
}

RixMemFieldConstraintCheckParser::~RixMemFieldConstraintCheckParser()
{
    if (*m_listener == this) {
        m_parser.setOnQueryVarValue(RukQueryVarValueEvent());
        *m_listener = nullptr;
    }
}

void RixMemFieldConstraintCheckParser::listen()
{
    if (*m_listener == this)
        return;
    m_parser.setOnQueryVarValue(static_cast<RukQueryVarValueImpl *>(this));
    *m_listener = this;
}

void RixMemFieldConstraintCheckParser::run(const QString &expr)
{
    listen();
    m_parser.setExpression(expr, static_cast<RukQueryVarDataTypeImpl *>(this), RukQueryConstValueEvent(),
        nullptr, RukNodeMapInfos(), RukQueryFunctionEvent());
    m_parser.visitNode(RukParser::PreOrder, static_cast<RukVisitNodeImpl *>(this));
    m_parser.evaluate();
}

bool RixMemFieldConstraintCheckParser::validate(const QString &expr, RixMemField *field, const QString &value)
{
    m_fieldName = field ? field->fieldName() : QString();
    m_value = value;
    try {
        run(expr);
        const RukData &result = m_parser.result();
        if (result.dataType() == RukData::Boolean)
            return result.asBoolean();
    } catch (const SefException &e) {
        const SefException failure(e);
        SefDebugOutput::write(QStringLiteral("RixMemTableExprParser:215"));
        SefDebugOutput::write(failure.message());
    }
    m_fieldName.clear();
    m_value.clear();
    return false;
}

RukData RixMemFieldConstraintCheckParser::evaluate(const QString &expr)
{
    m_fieldName.clear();
    m_value.clear();
    run(expr);
    return m_parser.result();
}

QVariant RixMemFieldConstraintCheckParser::asVariant(const QString &expr)
{
    try {
        return evaluate(expr).asVariant();
    } catch (const SefException &e) {
        const SefException failure(e);
        SefDebugOutput::write(QStringLiteral("RixMemTableExprParser:194"));
        SefDebugOutput::write(failure.message());
    }
    return QVariant();
}

bool RixMemFieldConstraintCheckParser::isValueUnderCheck(const QString &code) const
{
    if (m_fieldName.isEmpty())
        return false;
    return code == QLatin1String("#") || code.compare(m_fieldName, Qt::CaseInsensitive) == 0;
}

void RixMemFieldConstraintCheckParser::queryVarDataType(RukVarNode &node, int &dataType, void *)
{
    if (node.nodeType() != RukNode::Variable || !m_record || !m_record->table())
        return;
    const QString &code = node.varCode();
    const bool underCheck = !m_fieldName.isEmpty() && code == QLatin1String("#");
    const RixMemField *field = m_record->table()->findField(underCheck ? m_fieldName : code);
    if (field)
        dataType = rixEngineDataType(field->dataType());
}

void RixMemFieldConstraintCheckParser::queryVarValue(RukVarNode &node, void *)
{
    if (node.nodeType() != RukNode::Variable)
        return;
    const QString &code = node.varCode();
    if (isValueUnderCheck(code)) {
        bool ok = true;
        switch (node.dataType()) {
        case RukData::Integer: {
            const int number = m_value.toInt(&ok, 10);
            if (ok)
                node.setAsInteger(number);
            break;
        }
        case RukData::Float: {
            const double number = m_value.toDouble(&ok);
            if (ok)
                node.setAsFloat(number);
            break;
        }
        case RukData::String:
            node.setAsString(m_value);
            break;
        case RukData::Boolean:
            node.setAsBoolean(SefCommon::strToBool(m_value));
            break;
        default:
            break;
        }
        // The check reports no reason of its own: the field's message tells the user.
        if (!ok)
            throw SefException(QString(), -1);
        return;
    }
    if (!m_record)
        return;
    switch (node.dataType()) {
    case RukData::Integer:
        node.setAsInteger(m_record->asInteger(code));
        break;
    case RukData::Float:
        node.setAsFloat(m_record->asDouble(code));
        break;
    case RukData::String:
        node.setAsString(m_record->asString(code));
        break;
    case RukData::Boolean:
        node.setAsBoolean(m_record->asBoolean(code));
        break;
    default:
        break;
    }
}

void RixMemFieldConstraintCheckParser::visitNode(RukNode &, void *) { }
