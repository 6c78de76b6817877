// Feeds arbitrary bytes to RixMemTable::loadFromJson, plain and layered, and saves the result.
#include <rixmemfield.h>
#include <rixmemtable.h>

#include <QByteArray>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray json(reinterpret_cast<const char *>(data), int(size));
    RixMemTable base;
    base.addField(QStringLiteral("ID"), QString(), QVariant::Int);
    base.addField(QStringLiteral("Name"), QString(), QVariant::String);
    base.addField(QStringLiteral("Width"), QString(), QVariant::Double);
    base.addField(QStringLiteral("Paved"), QString(), QVariant::Bool);
    base.addField(QStringLiteral("Big"), QString(), QVariant::LongLong);
    base.addField(QStringLiteral("Any"), QString(), QVariant::Invalid);
    base.loadFromJson(json);
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
