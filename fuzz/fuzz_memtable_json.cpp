// Feeds arbitrary bytes to RixMemTable::loadFromJson, plain and layered, and saves the result.
// Each loaded row is checked against the same row loaded alone: a row's keys are matched against
// the previous row's, and that shortcut must not change what is stored.
#include <rixmemfield.h>
#include <rixmemrecord.h>
#include <rixmemtable.h>

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

void addFields(RixMemTable &table)
{
    table.addField(QStringLiteral("ID"), QString(), QVariant::Int);
    table.addField(QStringLiteral("Name"), QString(), QVariant::String);
    table.addField(QStringLiteral("Width"), QString(), QVariant::Double);
    table.addField(QStringLiteral("Paved"), QString(), QVariant::Bool);
    table.addField(QStringLiteral("Big"), QString(), QVariant::LongLong);
    table.addField(QStringLiteral("Any"), QString(), QVariant::Invalid);
    table.addField(QStringLiteral("name"), QString(), QVariant::String);
}

void checkRowsAlone(const RixMemTable &table, const QByteArray &json)
{
    const QJsonArray array = QJsonDocument::fromJson(json).array();
    if (array.size() != table.recordCount())
        std::abort();
    for (int i = 0; i < array.size(); ++i) {
        RixMemTable alone;
        addFields(alone);
        alone.loadFromJson(QJsonArray { array.at(i) });
        const QVector<QVariant> expected = alone.items(0)->getValues();
        const QVector<QVariant> actual = table.items(i)->getValues();
        for (int f = 0; f < expected.size(); ++f) {
            if (expected.at(f).userType() != actual.at(f).userType() || expected.at(f) != actual.at(f))
                std::abort();
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray json(reinterpret_cast<const char *>(data), int(size));
    RixMemTable base;
    addFields(base);
    base.loadFromJson(json);
    checkRowsAlone(base, json);
    QByteArray saved;
    base.saveToJson(saved);

    RixMemTable layer;
    layer.setRefTable(&base);
    layer.loadFromJson(json);
    layer.appendRefRecords(&base);
    layer.saveToJson(saved);
    layer.sortByField(QStringLiteral("width"));

    RixMemTable reloaded;
    reloaded.assign(&base, false);
    reloaded.loadFromJson(saved);
    return 0;
}
