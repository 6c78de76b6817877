#pragma once

#include "tovgeneralutility_export.h"

#include <QString>
#include <QVariant>

// Supplies the variables that a TovSimpleExprParser does not hold itself. name is the parser's
// name.
class TOVGENERALUTILITY_EXPORT ITovSimpleExprParserVarProvider
{
public:
    virtual ~ITovSimpleExprParserVarProvider();
    // Sets dataType to the engine's type code of the variable, or leaves it.
    virtual void queryVarDataType(const QString &name, const QString &code, int &dataType) = 0;
    // Whether the variable is known; if so value holds it.
    virtual bool queryVarValue(const QString &name, const QString &code, QVariant &value) = 0;
};
