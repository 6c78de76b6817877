// Views over a 100,000-row table loaded from JSON, against the same rows in SQLite's in-memory
// database: a comparison filter, unique values, a two-key sort and a filter function.
#include "benchroadtable.h"

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

using namespace benchroad;

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
    table();
    for (auto _ : state)
        benchmark::DoNotOptimize(handFilteredWideA());
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
