// Writes arbitrary bytes to a temporary file and loads it with RixMemTable::loadFromCSVFile, with
// and without a header line. The header-less load is checked against a plain text-level reading
// of the same bytes (decode each line, trim it, split at ',' dropping empty cells).
#include <rixmemfield.h>
#include <rixmemrecord.h>
#include <rixmemtable.h>

#include <QStringList>
#include <QTemporaryFile>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

// Every byte, NUL included: QString::fromUtf8(QByteArray) would stop at the first NUL.
QString utf8(const QByteArray &bytes)
{
    return QString::fromUtf8(bytes.constData(), bytes.size());
}

QList<QStringList> expectedRows(const QByteArray &bytes, int fieldCount)
{
    QList<QStringList> rows;
    QList<QByteArray> lines = bytes.split('\n');
    if (bytes.endsWith('\n'))
        lines.removeLast();
    if (lines.isEmpty())
        return rows;
    const int columns
        = qMin(fieldCount, utf8(lines.takeFirst()).trimmed().split(',', Qt::SkipEmptyParts).size());
    for (const QByteArray &line : qAsConst(lines)) {
        const QStringList cells = utf8(line).trimmed().split(',', Qt::SkipEmptyParts).mid(0, columns);
        if (!cells.isEmpty())
            rows << cells;
    }
    return rows;
}

} // namespace

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
    table.loadFromCSVFile(file.fileName(), false);

    const QList<QStringList> expected = size
        ? expectedRows(QByteArray(reinterpret_cast<const char *>(data), int(size)), 3)
        : QList<QStringList>();
    if (expected.size() != table.recordCount())
        std::abort();
    for (int r = 0; r < expected.size(); ++r) {
        for (int c = 0; c < 3; ++c) {
            const QVariant value = table.items(r)->getVariant(c);
            if (c < expected.at(r).size() ? value != QVariant(expected.at(r).at(c)) : !value.isNull())
                std::abort();
        }
    }

    table.loadFromCSVFile(file.fileName(), true);
    QByteArray json;
    table.saveToJson(json);
    return 0;
}
