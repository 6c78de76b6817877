// Feeds arbitrary text to RixMemTable::loadFromString; the first byte picks the separator.
#include <rixmemfield.h>
#include <rixmemtable.h>

#include <QString>
#include <QStringList>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    const QChar separator(data[0] ? QChar(data[0]) : QChar(0x3001));
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data + 1), int(size - 1));
    RixMemTable table;
    table.addField(QStringLiteral("A"), QString(), QVariant::String);
    table.addField(QStringLiteral("B"), QString(), QVariant::Int)->setVisible(false);
    table.addField(QStringLiteral("名称"), QString(), QVariant::String);
    table.loadFromString(text, separator, QStringList());
    table.loadFromString(
        text, separator, QStringList { QStringLiteral("b"), QStringLiteral("zz"), QStringLiteral("a") });
    QByteArray json;
    table.saveToJson(json);
    table.sortByField(QStringLiteral("B"));
    return 0;
}
