#pragma once

#include "tovgeneralutility_export.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

// One row of a query result; fields are read by column name (case-insensitive). An unknown
// column reads as an invalid value, converted (false, 0, empty).
class TOVGENERALUTILITY_EXPORT ITovSqliteRecord
{
public:
    virtual ~ITovSqliteRecord();

    virtual bool getBool(const QString &name) const = 0;
    virtual QByteArray getByteArray(const QString &name) const = 0;
    virtual double getDouble(const QString &name) const = 0;
    virtual float getFloat(const QString &name) const = 0;
    virtual int getInt(const QString &name) const = 0;
    virtual QString getString(const QString &name) const = 0;
    virtual QVariant getVariant(const QString &name) const = 0;
};
