// Feeds arbitrary text to TovKeyValueList::loadFromString (the first byte picks the separator)
// and checks that what is saved loads back equal whenever the text form can hold it.
#include <tovkeyvaluelist.h>

#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    const QChar separator(data[0] == '=' ? ';' : data[0]);
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data + 1), int(size - 1));
    TovKeyValueList list;
    list.loadFromString(text, separator);
    QString saved;
    list.saveToString(saved, separator);
    TovKeyValueList reloaded;
    reloaded.loadFromString(saved, separator);
    // Keys never hold the separator or "=", values never the separator: the form round-trips,
    // except that an empty list saves as empty text and loads back without a map.
    if (list.isValid() && !saved.isEmpty() && !list.isEqual(reloaded))
        std::abort();
    QString diff;
    list.saveToDiffString(diff, reloaded);
    return 0;
}
