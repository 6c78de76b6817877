#pragma once

#include "tovgeneralutility_export.h"

#include <ruknode.h>

#include <QString>

// Rewrites the tokens of an expression for TovSimpleExprParser::transExpr. name is the parser's
// name, so that one translator can serve several parsers.
class TOVGENERALUTILITY_EXPORT ITovSimpleExprParserTransTokener
{
public:
    virtual ~ITovSimpleExprParserTransTokener();
    // token holds the node's text as written; what is left in it goes into the rebuilt text.
    virtual void transToken(const QString &name, RukNode &node, QString &token) = 0;
};
