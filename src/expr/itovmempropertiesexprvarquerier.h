#pragma once

#include "tovgeneralutility_export.h"

#include <QString>
#include <QVariant>

// Supplies values of variables of a properties expression from outside the property sets; asked
// before the sets for every variable that is not an "@" argument.
class TOVGENERALUTILITY_EXPORT ITovMemPropertiesExprVarQuerier
{
public:
    virtual ~ITovMemPropertiesExprVarQuerier();

    // Whether code is known; when it is, value is its value.
    virtual bool queryVarValue(const QString &code, QVariant &value) = 0;
};
