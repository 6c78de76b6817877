// Writes arbitrary bytes to a temporary file and loads it with RixMemTable::loadFromCSVFile, with
// and without a header line.
#include <rixmemfield.h>
#include <rixmemtable.h>

#include <QTemporaryFile>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static QTemporaryFile file;
    if (!file.isOpen() && !file.open())
        return 0;
    file.resize(0);
    file.seek(0);
    file.write(reinterpret_cast<const char *>(data), qint64(size));
    file.flush();

    RixMemTable table;
    table.addField(QStringLiteral("ID"), QString(), QVariant::Int);
    table.addField(QStringLiteral("Name"), QString(), QVariant::String);
    table.addField(QStringLiteral("宽度"), QString(), QVariant::Double);
    table.loadFromCSVFile(file.fileName(), true);
    table.loadFromCSVFile(file.fileName(), false);
    QByteArray json;
    table.saveToJson(json);
    return 0;
}
