#pragma once

#include "tovgeneralutility_export.h"

#include <rukparser.h>

#include <QString>
#include <QStringList>

// Lists the variable codes that an expression refers to.
class TOVGENERALUTILITY_EXPORT TovExprParserClasses : public RukQueryVarDataTypeImpl,
                                                      public virtual RukVisitNodeImpl
{
public:
    TovExprParserClasses();
    // Copies share the engine parser.
    TovExprParserClasses(const TovExprParserClasses &other);
    TovExprParserClasses &operator=(const TovExprParserClasses &other);
    ~TovExprParserClasses() override;

    // The distinct variable tokens in the order written, each spelled as written (case-sensitive).
    // A text the engine rejects yields what was collected before the failure, after two debug
    // lines; never throws SefException.
    QStringList getExprCodes(const QString &expression);

protected:
    void queryVarDataType(RukVarNode &node, int &dataType, void *context) override;
    void visitNode(RukNode &node, void *context) override;

private:
    RukParser m_parser;
    QStringList m_codes;
};
