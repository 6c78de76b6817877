#pragma once

#include <tovsqldbsession.h>

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QTemporaryDir>

// Registers the SQLite ODBC driver with unixODBC for this process only (ODBCSYSINI pointing at a
// temporary odbcinst.ini) and points the sessions' ODBC connection template at it, so that the
// QODBC path runs against SQLite files. Call once, before the first ODBC connection.
class OdbcTestEnv
{
public:
    static QString connectionTemplate() { return QStringLiteral("DRIVER={SQLite3};Database=%1;BigInt=1"); }

    // Empty when the driver library or Qt's QODBC plugin is missing.
    static QString findDriverLibrary()
    {
        if (!QSqlDatabase::isDriverAvailable(QStringLiteral("QODBC")))
            return QString();
        const QStringList dirs { QStringLiteral("/usr/lib/x86_64-linux-gnu/odbc"),
            QStringLiteral("/usr/lib/aarch64-linux-gnu/odbc"), QStringLiteral("/usr/lib/odbc"),
            QStringLiteral("/usr/lib64"), QStringLiteral("/usr/local/lib"), QStringLiteral("/usr/lib") };
        for (const QString &dir : dirs) {
            const QStringList found
                = QDir(dir).entryList({ QStringLiteral("libsqlite3odbc*.so") }, QDir::Files, QDir::Name);
            if (!found.isEmpty())
                return dir + QLatin1Char('/') + found.first();
        }
        return QString();
    }

    // false when the driver is not installed.
    bool setUp()
    {
        const QString library = findDriverLibrary();
        if (library.isEmpty() || !m_dir.isValid())
            return false;
        QFile ini(m_dir.filePath(QStringLiteral("odbcinst.ini")));
        if (!ini.open(QIODevice::WriteOnly))
            return false;
        ini.write("[SQLite3]\nDescription=SQLite3 ODBC Driver\nDriver=" + QFile::encodeName(library) + "\n");
        ini.close();
        QFile(m_dir.filePath(QStringLiteral("odbc.ini"))).open(QIODevice::WriteOnly);
        qputenv("ODBCSYSINI", QFile::encodeName(m_dir.path()));
        TovSqlDBSession::setOdbcConnectionTemplate(connectionTemplate());
        return true;
    }

private:
    QTemporaryDir m_dir;
};
