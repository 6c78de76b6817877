#pragma once

#include "ctable.h"
#include "tovhost_export.h"

#include <QString>

#include <memory>

namespace hln {

// The host's project database: one SQLite file with named tables. Each instance has its own
// connection, usable from the thread that opened it. Not copyable.
class TOVHOST_EXPORT CDatabase
{
public:
    CDatabase();
    ~CDatabase();
    CDatabase(const CDatabase &) = delete;
    CDatabase &operator=(const CDatabase &) = delete;

    // Opens (and creates when missing) the file; closes a previous one first. false on failure,
    // with lastError() telling why.
    bool open(const QString &fileName);
    void close();
    bool isOpen() const;
    QString fileName() const;

    // The named table (names compare case-insensitively, as SQLite's do); null when the
    // database is closed or has no such table. The table borrows this database and must not
    // outlive it.
    std::shared_ptr<CTable> openTable(const QString &name) const;

    // Setup: runs one statement (creating tables, filling them). false on failure.
    bool execute(const QString &sql);
    QString lastError() const;

    // The Qt SQL connection name of this instance.
    QString connectionName() const;

private:
    friend class CTable;
    void setLastError(const QString &error) const;

    QString m_connectionName;
    QString m_fileName;
    mutable QString m_lastError;
};

} // namespace hln
