#pragma once

#include "tovhost_export.h"

#include <QString>
#include <QVariant>
#include <QVector>

namespace hln {

class CDatabase;

// One table of the project database, from CDatabase::openTable(). Records are identified by
// their row identifiers. Failures answer -1, false or an empty list and leave the reason in the
// database's lastError().
class TOVHOST_EXPORT CTable
{
public:
    CTable(const CDatabase *database, const QString &name);

    QString name() const { return m_name; }

    // The first record (lowest identifier) whose column holds exactly text; -1 when none.
    qint64 findRecord(const QString &column, const QString &text) const;
    // The column's value of the record as text (empty for NULL); false when there is no such
    // record or column.
    bool getText(qint64 record, const QString &column, QString &text) const;
    // Writes text into the column of the record; false when there is no such record or column.
    bool setText(qint64 record, const QString &column, const QString &text);
    // The identifiers, ascending, of the records whose column equals value.
    QVector<qint64> query(const QString &column, const QVariant &value) const;

private:
    const CDatabase *m_database;
    QString m_name;
};

} // namespace hln
