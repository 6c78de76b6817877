#pragma once

#include "tovgeneralutility_export.h"

#include <QString>
#include <QVariant>

// Supplies the variables of a record expression that are not fields of the record (constants,
// values of other tables). Asked before the record's fields, for the type and for the value.
class TOVGENERALUTILITY_EXPORT RixMemRecordExprVarQuerier
{
public:
    virtual ~RixMemRecordExprVarQuerier();

    // Whether varCode is known; when it is, dataType is its type.
    virtual bool queryVarDataType(const QString &varCode, QVariant::Type &dataType) = 0;
    // Whether varCode is known; when it is, value is its value.
    virtual bool queryVarValue(const QString &varCode, QVariant &value) = 0;
};
