#include "tovsimpleexprparser.h"

#include "tovexprborder_p.h"

#include <rukengine.h>
#include <sefcommon.h>

TovSimpleExprParser::TovSimpleExprParser(const QString &name)
    : m_name(name)
    , m_parser(rukEngine(QString()).createParser())
{ }

TovSimpleExprParser::TovSimpleExprParser(const TovSimpleExprParser &other) = default;

// The move forms copy: the engine parser stays shared with the source.
TovSimpleExprParser::TovSimpleExprParser(TovSimpleExprParser &&other)
    : TovSimpleExprParser(static_cast<const TovSimpleExprParser &>(other))
{ }

TovSimpleExprParser &TovSimpleExprParser::operator=(const TovSimpleExprParser &other) = default;

TovSimpleExprParser &TovSimpleExprParser::operator=(TovSimpleExprParser &&other)
{
    return *this = static_cast<const TovSimpleExprParser &>(other);
}

TovSimpleExprParser::~TovSimpleExprParser() = default;

void TovSimpleExprParser::addVarValue(const QString &code, double value)
{
    m_values.insert(code, value);
}

double TovSimpleExprParser::calcExpr(const QString &expression)
{
    QString message;
    return calcExpr(expression, message);
}

double TovSimpleExprParser::calcExpr(const QString &expression, QString &message)
{
    if (expression.isEmpty() || SefCommon::isNumeric(expression))
        return SefCommon::strToFloatDef(expression, 0.0);
    try {
        m_parser.setExpression(expression);
        m_parser.setOnQueryVarValue(static_cast<RukQueryVarValueImpl *>(this));
        m_parser.evaluate(static_cast<RukQueryVarDataTypeImpl *>(this));
        return m_parser.result().asFloat();
    } catch (const SefException &e) {
        tovReportEngineFailure("TovSimpleExprParser", __LINE__, e);
        message = e.message();
    }
    return 0.0;
}

bool TovSimpleExprParser::checkExpr(const QString &expression)
{
    if (expression.isEmpty())
        return true;
    try {
        m_parser.setExpression(expression);
        m_parser.setOnQueryVarValue(static_cast<RukQueryVarValueImpl *>(this));
        m_parser.evaluate(static_cast<RukQueryVarDataTypeImpl *>(this));
        return true;
    } catch (const SefException &e) {
        tovReportEngineFailure("TovSimpleExprParser", __LINE__, e);
    }
    return false;
}

QStringList TovSimpleExprParser::getExprVarCodes(const QString &expression)
{
    QStringList codes;
    if (expression.isEmpty())
        return codes;
    m_mode = ListingCodes;
    try {
        m_parser.setExpression(expression);
        m_parser.visitNode(RukParser::PreOrder, static_cast<RukVisitNodeImpl *>(this), &codes);
    } catch (const SefException &e) {
        tovReportEngineFailure("TovSimpleExprParser", __LINE__, e);
    }
    m_mode = Idle;
    return codes;
}

void TovSimpleExprParser::setTransTokener(ITovSimpleExprParserTransTokener *tokener)
{
    m_tokener = tokener;
}

QString TovSimpleExprParser::transExpr(const QString &expression)
{
    if (expression.isEmpty())
        return expression;
    try {
        m_parser.setExpression(expression);
        return m_parser.expression(static_cast<RukTransTokenImpl *>(this));
    } catch (const SefException &e) {
        tovReportEngineFailure("TovSimpleExprParser", __LINE__, e);
    }
    return expression;
}

void TovSimpleExprParser::queryVarDataType(RukVarNode &node, int &dataType, void *)
{
    if (node.nodeType() != RukNode::Variable)
        return;
    // While listing codes every variable is accepted as a number.
    if (m_mode == ListingCodes && m_values.isEmpty()) {
        dataType = RukData::Float;
        return;
    }
    if (m_values.contains(node.varCode()))
        dataType = RukData::Float;
    else if (m_provider)
        m_provider->queryVarDataType(m_name, node.varCode(), dataType);
}

void TovSimpleExprParser::queryVarValue(RukVarNode &node, void *)
{
    if (node.nodeType() != RukNode::Variable)
        return;
    const auto it = m_values.constFind(node.varCode());
    if (it != m_values.constEnd()) {
        node.setAsFloat(it.value());
        return;
    }
    QVariant value;
    if (m_provider && m_provider->queryVarValue(m_name, node.varCode(), value))
        node.setAsVariant(value);
}

void TovSimpleExprParser::visitNode(RukNode &node, void *context)
{
    if (m_mode != ListingCodes || node.nodeType() != RukNode::Variable || !context)
        return;
    QStringList &codes = *static_cast<QStringList *>(context);
    const QString token = node.token();
    if (!codes.contains(token))
        codes.append(token);
}

void TovSimpleExprParser::transToken(RukNode &node, QString &token, void *)
{
    if (m_tokener)
        m_tokener->transToken(m_name, node, token);
}
