#pragma once

#include "tovhost_export.h"

#include <rukdata.h>

#include <QHash>
#include <QString>

// Values bound to variable codes for one parse or evaluation. At setExpression a variable whose
// code is in the map has its data type preset to its value's type; at evaluate it takes the value
// from the map and the type and value callbacks are not asked for it. Usually empty.
class TOVHOST_EXPORT RukNodeMapInfos
{
public:
    bool isEmpty() const { return m_values.isEmpty(); }
    int count() const { return m_values.size(); }
    void insert(const QString &code, const RukData &value);
    void remove(const QString &code);
    void clear();
    // The value bound to code (exact spelling), or null.
    const RukData *find(const QString &code) const;

private:
    QHash<QString, RukData> m_values;
};
