// Expressions over data: a view of a 100,000-row table filtered by a record expression, against
// the same query in SQLite's in-memory database; and a set of 200 expression properties
// recalculated after a reset, against the same formulas written out in C++ (the floor).
#include "benchroadtable.h"

#include <rixmemrecord.h>
#include <rixmemrecordexprparser.h>
#include <rixmemtable.h>
#include <rixmemtableview.h>
#include <tovmemproperties.h>
#include <tovmempropertiesexprparser.h>

#include <QString>

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace benchroad;

const char *const wideA = "Width>3 and Kind=\"A\"";

// A host's query: parse the expression, then a view of the records that it accepts.
int exprView()
{
    RixMemTable &t = table();
    RixMemRecordExprParser parser(t.fields());
    parser.setExpression(QString::fromLatin1(wideA));
    std::unique_ptr<RixMemTableView> view(t.createView(QStringLiteral("wide A"),
        [&parser](RixMemRecord *record, bool &keep) { keep = parser.accept(record); }));
    return view->recordCount();
}

// The same query answering row ids, as a view answers records.
int sqliteView()
{
    return int(selectRowIds("SELECT rowid FROM t WHERE Width>3 AND Kind='A'"));
}

void RecordExprView_tov(benchmark::State &state)
{
    if (exprView() != sqliteView())
        std::abort();
    for (auto _ : state)
        benchmark::DoNotOptimize(exprView());
}

// The same view through a filter function written by hand.
void RecordExprView_lambda(benchmark::State &state)
{
    table();
    for (auto _ : state)
        benchmark::DoNotOptimize(handFilteredWideA());
}

void RecordExprView_sqlite(benchmark::State &state)
{
    database();
    for (auto _ : state)
        benchmark::DoNotOptimize(sqliteView());
}

// Ten plain numbers, then 190 formulas each over two earlier properties.
const int propCount = 200;
const int plainCount = 10;

QString formula(int i)
{
    return QStringLiteral("p%1*0.5+P%2*0.25+1").arg(i - 1).arg(i - 7);
}

std::unique_ptr<TovMemProperties> makeProperties()
{
    auto properties = std::make_unique<TovMemProperties>();
    for (int i = 0; i < propCount; ++i) {
        const std::wstring name = QStringLiteral("p%1").arg(i).toStdWString();
        if (i < plainCount)
            properties->add(name, double(i + 1));
        else
            properties->add(name, formula(i), true);
    }
    TovMemProperties *set = properties.get();
    // As a host connects it: each item computed by a parser over the set.
    QObject::connect(set, &TovMemProperties::onCalcExprVal,
        [set](TovMemProperty *, TovMemPropertyExprCalcArgs &args, QString &result) {
            TovMemPropertiesExprParser parser(args.args);
            parser.addData(set);
            result = parser.asString(args.expr);
        });
    return properties;
}

double recalcTov(TovMemProperties &properties)
{
    properties.resetState();
    double sum = 0.0;
    for (int i = 0; i < properties.count(); ++i)
        sum += properties.props(i)->asDouble();
    return sum;
}

double recalcFloor(std::vector<double> &p)
{
    double sum = 0.0;
    for (int i = 0; i < propCount; ++i) {
        p[size_t(i)] = i < plainCount ? double(i + 1) : p[size_t(i - 1)] * 0.5 + p[size_t(i - 7)] * 0.25 + 1;
        sum += p[size_t(i)];
    }
    return sum;
}

void PropertyRecalc_tov(benchmark::State &state)
{
    const std::unique_ptr<TovMemProperties> properties = makeProperties();
    std::vector<double> p(propCount);
    if (std::fabs(recalcTov(*properties) - recalcFloor(p)) > 1e-9)
        std::abort();
    for (auto _ : state)
        benchmark::DoNotOptimize(recalcTov(*properties));
}

void PropertyRecalc_floor(benchmark::State &state)
{
    std::vector<double> p(propCount);
    for (auto _ : state) {
        benchmark::DoNotOptimize(recalcFloor(p));
        benchmark::ClobberMemory();
    }
}

} // namespace

BENCHMARK(RecordExprView_tov)->Name("RecordExprView/tov")->Unit(benchmark::kMillisecond);
BENCHMARK(RecordExprView_sqlite)->Name("RecordExprView/sqlite")->Unit(benchmark::kMillisecond);
BENCHMARK(RecordExprView_lambda)->Name("RecordExprView/lambda")->Unit(benchmark::kMillisecond);
BENCHMARK(PropertyRecalc_tov)->Name("PropertyRecalc/tov")->Unit(benchmark::kMicrosecond);
BENCHMARK(PropertyRecalc_floor)->Name("PropertyRecalc/floor")->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
