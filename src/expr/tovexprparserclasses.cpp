#include "tovexprparserclasses.h"

#include "tovexprborder_p.h"

#include <rukengine.h>

TovExprParserClasses::TovExprParserClasses()
    : m_parser(rukEngine(QString()).createParser())
{ }

TovExprParserClasses::TovExprParserClasses(const TovExprParserClasses &other) = default;
TovExprParserClasses &TovExprParserClasses::operator=(const TovExprParserClasses &other) = default;
TovExprParserClasses::~TovExprParserClasses() = default;

QStringList TovExprParserClasses::getExprCodes(const QString &expression)
{
    m_codes.clear();
    try {
        m_parser.setExpression(expression, static_cast<RukQueryVarDataTypeImpl *>(this));
        m_parser.visitNode(RukParser::PreOrder, static_cast<RukVisitNodeImpl *>(this));
    } catch (const SefException &e) {
        tovReportEngineFailure("TovExprParserCommon", __LINE__, e);
    }
    return m_codes;
}

void TovExprParserClasses::queryVarDataType(RukVarNode &node, int &dataType, void *)
{
    if (node.nodeType() == RukNode::Variable)
        dataType = RukData::Float;
}

void TovExprParserClasses::visitNode(RukNode &node, void *)
{
    if (node.nodeType() != RukNode::Variable)
        return;
    const QString token = node.token();
    if (!m_codes.contains(token))
        m_codes.append(token);
}
