// Feeds arbitrary bytes to RixMemTable::loadFromJson, plain and layered, and saves the result.
// Loading the bytes must give exactly what loading the document QJsonDocument makes of them gives
// (values and their types, identity numbers, reference records). Each loaded row is also checked
// against the same row loaded alone: a row's keys are matched against the previous row's, and
// that shortcut must not change what is stored.
#include <rixmemfield.h>
#include <rixmemrecord.h>
#include <rixmemtable.h>

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>

#include <QVariantList>
#include <QVariantMap>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

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

bool same(const QVariant &a, const QVariant &b)
{
    if (a.userType() != b.userType() || a.isNull() != b.isNull())
        return false;
    if (a.userType() == QMetaType::QVariantList) {
        const QVariantList x = a.toList();
        const QVariantList y = b.toList();
        if (x.size() != y.size())
            return false;
        for (int i = 0; i < x.size(); ++i) {
            if (!same(x.at(i), y.at(i)))
                return false;
        }
        return true;
    }
    if (a.userType() == QMetaType::QVariantMap) {
        const QVariantMap x = a.toMap();
        const QVariantMap y = b.toMap();
        if (x.keys() != y.keys())
            return false;
        for (auto it = x.constBegin(); it != x.constEnd(); ++it) {
            if (!same(it.value(), y.value(it.key())))
                return false;
        }
        return true;
    }
    if (a.userType() == QMetaType::Double) // bit for bit: -0.0 and 0.0 differ
        return std::memcmp(a.constData(), b.constData(), sizeof(double)) == 0;
    return a == b;
}

int nextId(RixMemTable &table)
{
    const std::unique_ptr<RixMemRecord> record(table.newRecord());
    return record->iD();
}

// table, loaded from json, against a table set up alike and loaded from the document.
void checkAgainstDocument(RixMemTable &table, RixMemTable *refTable, const QByteArray &json)
{
    RixMemTable expected;
    if (refTable)
        expected.setRefTable(refTable);
    else
        addFields(expected);
    expected.loadFromJson(QJsonDocument::fromJson(json).array());
    if (expected.recordCount() != table.recordCount())
        std::abort();
    for (int i = 0; i < expected.recordCount(); ++i) {
        const RixMemRecord *e = expected.items(i);
        const RixMemRecord *a = table.items(i);
        if (e->iD() != a->iD() || e->refRecord() != a->refRecord())
            std::abort();
        const QVector<QVariant> ev = e->getValues();
        const QVector<QVariant> av = a->getValues();
        if (ev.size() != av.size())
            std::abort();
        for (int f = 0; f < ev.size(); ++f) {
            if (!same(ev.at(f), av.at(f)))
                std::abort();
        }
    }
    if (nextId(expected) != nextId(table))
        std::abort();
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

// Qt's JSON parser leaks the earlier value of a repeated key when that value is an array or an
// object ({"a":[],"a":1}), and the loader parses such rows with it, as it always has. Allocations
// made by the table itself have no Qt frame below them and are still reported.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libQt5Core.so\n";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray json(reinterpret_cast<const char *>(data), int(size));
    RixMemTable base;
    addFields(base);
    base.loadFromJson(json);
    checkAgainstDocument(base, nullptr, json);
    checkRowsAlone(base, json);
    QByteArray saved;
    base.saveToJson(saved);

    RixMemTable layer;
    layer.setRefTable(&base);
    layer.loadFromJson(json);
    checkAgainstDocument(layer, &base, json);
    layer.appendRefRecords(&base);
    layer.saveToJson(saved);
    layer.sortByField(QStringLiteral("width"));

    RixMemTable reloaded;
    reloaded.assign(&base, false);
    reloaded.loadFromJson(saved);
    return 0;
}
