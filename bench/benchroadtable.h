#pragma once

// The 100,000-row table that the view and expression benchmarks share: loaded through
// loadFromJson as a host fills it, and the same values in SQLite's in-memory database.

#include <rixmemrecord.h>
#include <rixmemtable.h>
#include <rixmemtableview.h>

#include <QByteArray>
#include <QString>

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

namespace benchroad {

const int rowCount = 100000;

// Eight kinds, 1000 distinct widths from 0 to 9.99, 500 heights, 100 counts, as the JSON text a
// host reads. The products are 64-bit: i * 104729 leaves int range beyond row 20,504.
inline QByteArray makeJson()
{
    static const char *const kinds[] = { "A", "B", "C", "D", "E", "F", "G", "H" };
    QByteArray json;
    json.reserve(rowCount * 100);
    json += '[';
    char row[160];
    for (int i = 0; i < rowCount; ++i) {
        const int n = std::snprintf(row, sizeof row,
            "%s{\"ID\":%d,\"Name\":\"R%06d\",\"Kind\":\"%s\",\"Width\":%.2f,\"Height\":%.1f,\"Count\":%d}",
            i ? "," : "", i + 1, i, kinds[(i * 7 + i / 13) % 8], double((qint64(i) * 7919) % 1000) / 100.0,
            double((qint64(i) * 104729) % 500) / 10.0, i % 100);
        json.append(row, n);
    }
    json += ']';
    return json;
}

// Built once per program.
inline RixMemTable &table()
{
    static const std::unique_ptr<RixMemTable> table = [] {
        auto t = std::make_unique<RixMemTable>();
        t->setTableName(QStringLiteral("t"));
        t->addField(QStringLiteral("ID"), QString(), QVariant::Int);
        t->addField(QStringLiteral("Name"), QString(), QVariant::String);
        t->addField(QStringLiteral("Kind"), QString(), QVariant::String);
        t->addField(QStringLiteral("Width"), QString(), QVariant::Double);
        t->addField(QStringLiteral("Height"), QString(), QVariant::Double);
        t->addField(QStringLiteral("Count"), QString(), QVariant::Int);
        t->loadFromJson(makeJson());
        if (t->recordCount() != rowCount)
            std::abort();
        return t;
    }();
    return *table;
}

inline void check(int rc, sqlite3 *db)
{
    if (rc != SQLITE_OK && rc != SQLITE_DONE && rc != SQLITE_ROW) {
        std::fprintf(stderr, "sqlite: %s\n", sqlite3_errmsg(db));
        std::abort();
    }
}

// The same rows, read back from the memory table so that both sides hold identical data.
inline sqlite3 *database()
{
    static sqlite3 *const db = [] {
        const RixMemTable &t = table();
        sqlite3 *d = nullptr;
        check(sqlite3_open(":memory:", &d), d);
        check(sqlite3_exec(d,
                  "CREATE TABLE t(ID INTEGER, Name TEXT, Kind TEXT, Width REAL, Height REAL, Count INTEGER)",
                  nullptr, nullptr, nullptr),
            d);
        check(sqlite3_exec(d, "BEGIN", nullptr, nullptr, nullptr), d);
        sqlite3_stmt *insert = nullptr;
        check(sqlite3_prepare_v2(d, "INSERT INTO t VALUES(?,?,?,?,?,?)", -1, &insert, nullptr), d);
        for (int i = 0; i < t.recordCount(); ++i) {
            RixMemRecord *record = t.items(i);
            const QByteArray name = record->asString(QStringLiteral("Name")).toUtf8();
            const QByteArray kind = record->asString(QStringLiteral("Kind")).toUtf8();
            sqlite3_bind_int(insert, 1, record->asInteger(QStringLiteral("ID")));
            sqlite3_bind_text(insert, 2, name.constData(), name.size(), SQLITE_TRANSIENT);
            sqlite3_bind_text(insert, 3, kind.constData(), kind.size(), SQLITE_TRANSIENT);
            sqlite3_bind_double(insert, 4, record->asDouble(QStringLiteral("Width")));
            sqlite3_bind_double(insert, 5, record->asDouble(QStringLiteral("Height")));
            sqlite3_bind_int(insert, 6, record->asInteger(QStringLiteral("Count")));
            check(sqlite3_step(insert), d);
            sqlite3_reset(insert);
        }
        sqlite3_finalize(insert);
        check(sqlite3_exec(d, "COMMIT", nullptr, nullptr, nullptr), d);
        return d;
    }();
    return db;
}

// Runs a query that answers row ids, as a view answers records; returns how many.
inline size_t selectRowIds(const char *sql)
{
    sqlite3 *db = database();
    sqlite3_stmt *statement = nullptr;
    check(sqlite3_prepare_v2(db, sql, -1, &statement, nullptr), db);
    std::vector<sqlite3_int64> ids;
    while (sqlite3_step(statement) == SQLITE_ROW)
        ids.push_back(sqlite3_column_int64(statement, 0));
    sqlite3_finalize(statement);
    return ids.size();
}

// The view of rows with Width > 3 and Kind "A", filtered by a function written by hand: what the
// records' layout costs without any expression. Answers the number of rows kept.
inline int handFilteredWideA()
{
    RixMemTable &t = table();
    const int width = t.filedIndex(QStringLiteral("Width"));
    const int kind = t.filedIndex(QStringLiteral("Kind"));
    const QString a = QStringLiteral("A");
    std::unique_ptr<RixMemTableView> view(
        t.createView(QStringLiteral("wide A"), [width, kind, &a](RixMemRecord *record, bool &keep) {
            keep = record->getVariant(width).toDouble() > 3 && record->getVariant(kind).toString() == a;
        }));
    return view->recordCount();
}

} // namespace benchroad
