// Memory-table loading and lookup beside their floors: the JSON parse alone, a plain
// read-and-split loop over the CSV file, and lookup by field index.
#include <rixmemfield.h>
#include <rixmemfields.h>
#include <rixmemrecord.h>
#include <rixmemtable.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace {

constexpr int rowCount = 100000;

void addFields(RixMemTable &table)
{
    table.addField(QStringLiteral("ID"), QStringLiteral("编号"), QVariant::Int);
    table.addField(QStringLiteral("Code"), QStringLiteral("代码"), QVariant::String);
    table.addField(QStringLiteral("Name"), QStringLiteral("名称"), QVariant::String);
    table.addField(QStringLiteral("Width"), QStringLiteral("宽度"), QVariant::Double);
    table.addField(QStringLiteral("Height"), QStringLiteral("高度"), QVariant::Double);
    table.addField(QStringLiteral("Ratio"), QStringLiteral("坡率"), QVariant::Double);
    table.addField(QStringLiteral("Paved"), QStringLiteral("铺砌"), QVariant::Bool);
    table.addField(QStringLiteral("Note"), QStringLiteral("备注"), QVariant::String);
}

QString cell(int row, int column)
{
    switch (column) {
    case 0:
        return QString::number(row + 1);
    case 1:
        return QStringLiteral("R%1").arg(row % 9973, 5, 10, QLatin1Char('0'));
    case 2:
        return row % 2 ? QStringLiteral("填方边坡") : QStringLiteral("挖方边坡");
    case 3:
        return QString::number(0.25 * (row % 40));
    case 4:
        return QString::number(1.5 + (row % 17));
    case 5:
        return QString::number(1.0 + 0.125 * (row % 8));
    case 6:
        return row % 3 ? QStringLiteral("true") : QStringLiteral("false");
    default:
        return QStringLiteral("note %1").arg(row);
    }
}

const QByteArray &jsonBytes()
{
    static const QByteArray bytes = [] {
        static const char *const keys[]
            = { "ID", "Code", "Name", "Width", "Height", "Ratio", "Paved", "Note" };
        QJsonArray array;
        for (int row = 0; row < rowCount; ++row) {
            QJsonObject object;
            for (int column = 0; column < 8; ++column) {
                const QString text = cell(row, column);
                if (column == 0)
                    object.insert(QLatin1String(keys[column]), row + 1);
                else if (column >= 3 && column <= 5)
                    object.insert(QLatin1String(keys[column]), text.toDouble());
                else if (column == 6)
                    object.insert(QLatin1String(keys[column]), text == QLatin1String("true"));
                else
                    object.insert(QLatin1String(keys[column]), text);
            }
            array.append(object);
        }
        return QJsonDocument(array).toJson(QJsonDocument::Compact);
    }();
    return bytes;
}

const QString &csvPath()
{
    static QTemporaryDir dir;
    static const QString path = [] {
        const QString p = dir.filePath(QStringLiteral("rows.csv"));
        QFile file(p);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("cannot write %s", qPrintable(p));
        file.write("ID,Code,Name,Width,Height,Ratio,Paved,Note\r\n");
        for (int row = 0; row < rowCount; ++row) {
            QStringList cells;
            for (int column = 0; column < 8; ++column)
                cells << cell(row, column);
            file.write(cells.join(QLatin1Char(',')).toUtf8() + "\r\n");
        }
        return p;
    }();
    return path;
}

void LoadJson_tov(benchmark::State &state)
{
    const QByteArray &bytes = jsonBytes();
    for (auto _ : state) {
        state.PauseTiming();
        auto table = std::make_unique<RixMemTable>();
        addFields(*table);
        state.ResumeTiming();
        table->loadFromJson(bytes);
        state.PauseTiming();
        if (table->recordCount() != rowCount)
            state.SkipWithError("wrong row count");
        table.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * rowCount);
}

// The document is parsed and released, as any loader built on QJsonDocument must do.
void LoadJson_floor(benchmark::State &state)
{
    const QByteArray &bytes = jsonBytes();
    for (auto _ : state) {
        const int size = QJsonDocument::fromJson(bytes).array().size();
        if (size != rowCount)
            state.SkipWithError("wrong row count");
    }
    state.SetItemsProcessed(state.iterations() * rowCount);
}

void LoadCsv_tov(benchmark::State &state)
{
    const QString &path = csvPath();
    for (auto _ : state) {
        state.PauseTiming();
        auto table = std::make_unique<RixMemTable>();
        addFields(*table);
        state.ResumeTiming();
        table->loadFromCSVFile(path, true);
        state.PauseTiming();
        if (table->recordCount() != rowCount)
            state.SkipWithError("wrong row count");
        table.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * rowCount);
}

// Reads the file, splits it into lines and each trimmed line into its non-empty cells, and keeps
// the cells: what any loader of this form must at least do.
void LoadCsv_floor(benchmark::State &state)
{
    const QString &path = csvPath();
    for (auto _ : state) {
        auto rows = std::make_unique<std::vector<QStringList>>();
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            state.SkipWithError("cannot open");
        const QByteArray data = file.readAll();
        int start = data.indexOf('\n') + 1; // header
        rows->reserve(rowCount);
        while (start < data.size()) {
            int end = data.indexOf('\n', start);
            if (end < 0)
                end = data.size();
            const QString line = QString::fromUtf8(data.constData() + start, end - start).trimmed();
            rows->push_back(line.split(QLatin1Char(','), Qt::SkipEmptyParts));
            start = end + 1;
        }
        state.PauseTiming();
        if (int(rows->size()) != rowCount)
            state.SkipWithError("wrong row count");
        rows.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * rowCount);
}

struct LookupFixture
{
    LookupFixture()
    {
        addFields(table);
        table.loadFromString(
            QStringLiteral("1;R00001;填方边坡;0.5;2.5;1.5;true;note"), QLatin1Char(';'), QStringList());
        record = table.items(0);
        names = table.fields()->fieldNames();
    }
    RixMemTable table;
    RixMemRecord *record = nullptr;
    QStringList names;
};

void Lookup_tov(benchmark::State &state)
{
    LookupFixture fixture;
    for (auto _ : state) {
        for (const QString &name : qAsConst(fixture.names))
            benchmark::DoNotOptimize(fixture.record->getVariant(name));
    }
    state.SetItemsProcessed(state.iterations() * fixture.names.size());
}

void Lookup_byindex(benchmark::State &state)
{
    LookupFixture fixture;
    for (auto _ : state) {
        for (int index = 0; index < fixture.names.size(); ++index)
            benchmark::DoNotOptimize(fixture.record->getVariant(index));
    }
    state.SetItemsProcessed(state.iterations() * fixture.names.size());
}

} // namespace

int main(int argc, char **argv)
{
    benchmark::RegisterBenchmark("LoadJson/tov", LoadJson_tov)->Unit(benchmark::kMillisecond)->UseRealTime();
    benchmark::RegisterBenchmark("LoadJson/floor", LoadJson_floor)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    benchmark::RegisterBenchmark("LoadCsv/tov", LoadCsv_tov)->Unit(benchmark::kMillisecond)->UseRealTime();
    benchmark::RegisterBenchmark("LoadCsv/floor", LoadCsv_floor)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    benchmark::RegisterBenchmark("Lookup/tov", Lookup_tov);
    benchmark::RegisterBenchmark("Lookup/byindex", Lookup_byindex);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
