// Views over a 100,000-row table loaded from JSON, against the same rows in SQLite's in-memory
// database: a comparison filter, unique values, a two-key sort and a filter function.
#include <rixmemrecord.h>
#include <rixmemtable.h>
#include <rixmemtableview.h>

#include <QByteArray>
#include <QString>

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

const int rowCount = 100000;

// Eight kinds, 1000 distinct widths from 0 to 9.99, 500 heights, 100 counts, as JSON text the
// way a host receives it.
QByteArray makeJson()
{
    static const char *const kinds[] = { "A", "B", "C", "D", "E", "F", "G", "H" };
    QByteArray json = "[";
    char row[200];
    for (int i = 0; i < rowCount; ++i) {
        std::snprintf(row, sizeof row,
            "%s{\"ID\":%d,\"Name\":\"R%06d\",\"Kind\":\"%s\",\"Width\":%.2f,\"Height\":%.1f,"
            "\"Count\":%d}",
            i ? "," : "", i + 1, i, kinds[(i * 7 + i / 13) % 8], double((i * 7919) % 1000) / 100.0,
            double((i * 37) % 500) / 10.0, i % 100);
        json += row;
    }
    json += "]";
    return json;
}

RixMemTable &table()
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

void check(int rc, sqlite3 *db)
{
    if (rc != SQLITE_OK && rc != SQLITE_DONE && rc != SQLITE_ROW) {
        std::fprintf(stderr, "sqlite: %s\n", sqlite3_errmsg(db));
        std::abort();
    }
}

sqlite3 *database()
{
    static sqlite3 *const db = [] {
        sqlite3 *d = nullptr;
        check(sqlite3_open(":memory:", &d), d);
        check(sqlite3_exec(d,
                  "CREATE TABLE t(ID INTEGER, Name TEXT, Kind TEXT, Width REAL, Height REAL, Count INTEGER)",
                  nullptr, nullptr, nullptr),
            d);
        check(sqlite3_exec(d, "BEGIN", nullptr, nullptr, nullptr), d);
        sqlite3_stmt *insert = nullptr;
        check(sqlite3_prepare_v2(d, "INSERT INTO t VALUES(?,?,?,?,?,?)", -1, &insert, nullptr), d);
        // The same values the table holds.
        const RixMemTable &t = table();
        for (int i = 0; i < t.recordCount(); ++i) {
            const RixMemRecord *record = t.items(i);
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

// Runs a query that answers row ids, as a view answers records.
size_t selectRowIds(const char *sql)
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

void ConditionFilter_tov(benchmark::State &state)
{
    RixMemTable &t = table();
    for (auto _ : state) {
        RixMemTableView view(&t);
        // Greater reads "3 > Width".
        view.applyFilterForCondition(QStringLiteral("Width"), 3.0, RixMemTableView::Greater);
        benchmark::DoNotOptimize(view.recordCount());
    }
}

void ConditionFilter_sqlite(benchmark::State &state)
{
    database();
    for (auto _ : state)
        benchmark::DoNotOptimize(selectRowIds("SELECT rowid FROM t WHERE Width < 3"));
}

void UniqueText_tov(benchmark::State &state)
{
    RixMemTable &t = table();
    for (auto _ : state) {
        RixMemTableView view(&t);
        benchmark::DoNotOptimize(view.getUniqueValues(QStringLiteral("Kind")).size());
    }
}

void UniqueText_sqlite(benchmark::State &state)
{
    sqlite3 *db = database();
    for (auto _ : state) {
        sqlite3_stmt *statement = nullptr;
        check(
            sqlite3_prepare_v2(db, "SELECT DISTINCT Kind FROM t ORDER BY Kind", -1, &statement, nullptr), db);
        std::vector<std::string> values;
        while (sqlite3_step(statement) == SQLITE_ROW)
            values.emplace_back(reinterpret_cast<const char *>(sqlite3_column_text(statement, 0)));
        sqlite3_finalize(statement);
        benchmark::DoNotOptimize(values.size());
    }
}

void UniqueNumber_tov(benchmark::State &state)
{
    RixMemTable &t = table();
    for (auto _ : state) {
        RixMemTableView view(&t);
        benchmark::DoNotOptimize(view.getUniqueValues(QStringLiteral("Width")).size());
    }
}

void UniqueNumber_sqlite(benchmark::State &state)
{
    sqlite3 *db = database();
    for (auto _ : state) {
        sqlite3_stmt *statement = nullptr;
        check(sqlite3_prepare_v2(db, "SELECT DISTINCT Width FROM t ORDER BY Width", -1, &statement, nullptr),
            db);
        std::vector<double> values;
        while (sqlite3_step(statement) == SQLITE_ROW)
            values.push_back(sqlite3_column_double(statement, 0));
        sqlite3_finalize(statement);
        benchmark::DoNotOptimize(values.size());
    }
}

void SortTwoKeys_tov(benchmark::State &state)
{
    RixMemTable &t = table();
    for (auto _ : state) {
        RixMemTableView view(&t);
        view.sort(QStringLiteral("Width desc, Kind"));
        benchmark::DoNotOptimize(view.first());
    }
}

void SortTwoKeys_sqlite(benchmark::State &state)
{
    database();
    for (auto _ : state)
        benchmark::DoNotOptimize(selectRowIds("SELECT rowid FROM t ORDER BY Width DESC, Kind"));
}

void FunctionFilter_tov(benchmark::State &state)
{
    RixMemTable &t = table();
    const int width = t.filedIndex(QStringLiteral("Width"));
    const int kind = t.filedIndex(QStringLiteral("Kind"));
    const QString a = QStringLiteral("A");
    for (auto _ : state) {
        std::unique_ptr<RixMemTableView> view(
            t.createView(QStringLiteral("wide A"), [width, kind, &a](RixMemRecord *record, bool &keep) {
                keep = record->getVariant(width).toDouble() > 3 && record->getVariant(kind).toString() == a;
            }));
        benchmark::DoNotOptimize(view->recordCount());
    }
}

void FunctionFilter_sqlite(benchmark::State &state)
{
    database();
    for (auto _ : state)
        benchmark::DoNotOptimize(selectRowIds("SELECT rowid FROM t WHERE Width > 3 AND Kind = 'A'"));
}

} // namespace

BENCHMARK(ConditionFilter_tov)->Name("ConditionFilter/tov")->Unit(benchmark::kMillisecond);
BENCHMARK(ConditionFilter_sqlite)->Name("ConditionFilter/sqlite")->Unit(benchmark::kMillisecond);
BENCHMARK(UniqueText_tov)->Name("UniqueText/tov")->Unit(benchmark::kMillisecond);
BENCHMARK(UniqueText_sqlite)->Name("UniqueText/sqlite")->Unit(benchmark::kMillisecond);
BENCHMARK(UniqueNumber_tov)->Name("UniqueNumber/tov")->Unit(benchmark::kMillisecond);
BENCHMARK(UniqueNumber_sqlite)->Name("UniqueNumber/sqlite")->Unit(benchmark::kMillisecond);
BENCHMARK(SortTwoKeys_tov)->Name("SortTwoKeys/tov")->Unit(benchmark::kMillisecond);
BENCHMARK(SortTwoKeys_sqlite)->Name("SortTwoKeys/sqlite")->Unit(benchmark::kMillisecond);
BENCHMARK(FunctionFilter_tov)->Name("FunctionFilter/tov")->Unit(benchmark::kMillisecond);
BENCHMARK(FunctionFilter_sqlite)->Name("FunctionFilter/sqlite")->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
