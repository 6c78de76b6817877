#include "rixmemtable.h"
#include "rixmemtable_p.h"

#include "rixmemfield.h"
#include "rixmemfields.h"
#include "rixmemjsonreader_p.h"
#include "rixmemrecord.h"
#include "rixmemtableview.h"
#include "rixmemtextpool_p.h"

#include <QCborMap>
#include <QCborValue>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

QString idFieldName()
{
    return QStringLiteral("ID");
}

// QChar::isSpace() of a byte below 0x80.
inline bool isAsciiSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// A cell inside a line, decoded as the line's decoding would: a byte-order mark is a character
// there, whereas QString::fromUtf8 drops one at the start of what it decodes.
QString decodeCell(const char *begin, const char *end, int field, RixMemTextPool &texts)
{
    static const char bom[] = "\xEF\xBB\xBF";
    if (end - begin < 3 || std::memcmp(begin, bom, 3) != 0)
        return texts.fromUtf8(field, begin, int(end - begin));
    QString text;
    while (end - begin >= 3 && std::memcmp(begin, bom, 3) == 0) {
        text += QChar(0xFEFF);
        begin += 3;
    }
    return text + QString::fromUtf8(begin, int(end - begin));
}

// The first record of refTable whose "ID" compares equal to refId; null for -1 or no match.
RixMemRecord *findRefRecord(const RixMemTable *refTable, int refIdIndex, int refId)
{
    if (refId == -1)
        return nullptr;
    const QVariant wanted(refId);
    for (int i = 0; i < refTable->recordCount(); ++i) {
        RixMemRecord *candidate = refTable->items(i);
        if (candidate->getVariant(refIdIndex) == wanted)
            return candidate;
    }
    return nullptr;
}

} // namespace

RixMemTable::RixMemTable()
    : QObject(nullptr)
    , d(std::make_unique<RixMemTablePrivate>())
{
    // Lets the signals be spied on and queued.
    static const int recordType = qRegisterMetaType<RixMemRecord *>();
    Q_UNUSED(recordType)
}

RixMemTable::RixMemTable(QObject *parent)
    : RixMemTable()
{
    Q_UNUSED(parent)
}

RixMemTable::~RixMemTable()
{
    clear();
}

RixMemFields *RixMemTable::fields() const
{
    const RixMemTable *table = this;
    while (table->d->refTable)
        table = table->d->refTable;
    return table->d->fields.get();
}

RixMemField *RixMemTable::field(int index) const
{
    return fields()->items(index);
}

int RixMemTable::filedIndex(const QString &name) const
{
    return fields()->filedIndex(name);
}

RixMemField *RixMemTable::findField(const QString &name) const
{
    return fields()->findField(name);
}

int RixMemTable::addField(RixMemField *field)
{
    return fields()->addField(field);
}

RixMemField *RixMemTable::addField(
    const QString &fieldName, const QString &displayName, QVariant::Type dataType)
{
    return fields()->addField(fieldName, displayName, dataType);
}

QString RixMemTable::tableName() const
{
    return d->refTable ? d->refTable->tableName() : d->tableName;
}

void RixMemTable::setTableName(const QString &tableName)
{
    d->tableName = tableName;
}

RixMemTable *RixMemTable::refTable() const
{
    return d->refTable;
}

void RixMemTable::setRefTable(RixMemTable *refTable)
{
    if (refTable == d->refTable)
        return;
    if (!d->refTable)
        d->fields.reset();
    d->refTable = refTable;
    if (!refTable)
        d->fields = std::make_unique<RixMemFields>();
}

int RixMemTable::recordCount() const
{
    return d->records.count();
}

bool RixMemTable::isEmpty() const
{
    return d->records.isEmpty();
}

RixMemRecord *RixMemTable::items(int index) const
{
    return d->records.at(index);
}

RixMemRecord *RixMemTable::operator[](int index) const
{
    return d->records.at(index);
}

bool RixMemTable::canAccess(int index) const
{
    return index >= 0 && index < d->records.count();
}

int RixMemTable::indexOf(const RixMemRecord *record) const
{
    return d->records.indexOf(const_cast<RixMemRecord *>(record));
}

RixMemRecord *RixMemTable::newRecord()
{
    RixMemRecord *record = createRecord();
    record->setID(genID());
    return record;
}

RixMemRecord *RixMemTable::createRecord()
{
    return new RixMemRecord(this);
}

int RixMemTable::genID()
{
    return d->nextID++;
}

int RixMemTable::appendRecord(RixMemRecord *record)
{
    d->records.append(record);
    record->m_ownerTable = this;
    const int index = d->records.count() - 1;
    emit onAfterAdd(record);
    return index;
}

int RixMemTable::insertRecord(int index, RixMemRecord *record)
{
    d->records.insert(index, record);
    record->m_ownerTable = this;
    emit onAfterAdd(record);
    return index;
}

void RixMemTable::removeRecord(RixMemRecord *record)
{
    emit onBeforeRemove(record);
    d->records.removeAll(record);
    emit onAfterRemove(record);
}

void RixMemTable::deleteRecord(int index)
{
    if (!canAccess(index))
        return;
    RixMemRecord *record = d->records.at(index);
    emit onBeforeRemove(record);
    if (canAccess(index) && d->records.at(index) == record)
        d->records.removeAt(index);
    else
        d->records.removeOne(record);
    emit onAfterRemove(record);
    deleteRecord(record);
}

void RixMemTable::deleteRecord(RixMemRecord *record)
{
    record->m_ownerTable = nullptr;
    delete record;
}

void RixMemTable::clear()
{
    const QList<RixMemRecord *> records = std::move(d->records);
    d->records.clear();
    // No remove signals follow: borrowers let go of the records now.
    for (RixMemRecordBorrower *borrower : qAsConst(d->borrowers))
        borrower->recordsDeleting(records);
    for (RixMemRecord *record : records)
        deleteRecord(record);
    d->nextID = 0;
}

int RixMemTable::findRecordIndex(const QString &fieldName, const QVariant &value)
{
    const int index = filedIndex(fieldName);
    for (int i = 0; i < d->records.count(); ++i) {
        if (d->records.at(i)->getVariant(index) == value)
            return i;
    }
    return -1;
}

RixMemRecord *RixMemTable::findRecord(const QString &fieldName, const QVariant &value)
{
    const int index = findRecordIndex(fieldName, value);
    return index < 0 ? nullptr : d->records.at(index);
}

bool RixMemTable::columnDataIsNull(int fieldIndex)
{
    for (const RixMemRecord *record : qAsConst(d->records)) {
        if (!record->getVariant(fieldIndex).isNull())
            return false;
    }
    return true;
}

bool RixMemTable::isValid() const
{
    return !fields()->isEmpty() && !d->records.isEmpty();
}

void RixMemTable::sortByField(QString fieldName)
{
    const int index = filedIndex(fieldName);
    if (index < 0)
        return;
    const QVariant::Type type = field(index)->dataType();
    if (type != QVariant::Int && type != QVariant::Double)
        return; // every pair compares equal: any permutation is sorted
    // Doubles compare by their integer conversion on purpose.
    std::sort(d->records.begin(), d->records.end(), [index](RixMemRecord *a, RixMemRecord *b) {
        return a->getVariant(index).toInt() < b->getVariant(index).toInt();
    });
}

QVariant RixMemTable::calcExprVal(
    const QString &expr, RixMemRecordExprVarQuerier *querier, RixMemRecord *record)
{
    if (d->calcDepth != 0) {
        RixMemRecordExprParser nested(d->fields.get());
        return nested.asVariant(expr, querier, record);
    }
    struct Depth
    {
        int &depth;
        ~Depth() { --depth; }
    } depth { d->calcDepth };
    d->calcDepth = 1;
    // The own field set is replaced by setRefTable: a parser over the old one must not survive it.
    if (!d->exprParser || d->exprParser->fields() != d->fields.get())
        d->exprParser = std::make_unique<RixMemRecordExprParser>(d->fields.get());
    return d->exprParser->asVariant(expr, querier, record);
}

RixMemTableView *RixMemTable::createView(
    const QString &name, std::function<void(RixMemRecord *, bool &)> filter)
{
    auto *view = new RixMemTableView(this, this);
    view->setObjectName(name);
    view->applyFilter(name, std::move(filter));
    return view;
}

void RixMemTable::appendRecords(RixMemTable *source)
{
    if (!source)
        return;
    const QList<RixMemRecord *> records = source->d->records;
    for (RixMemRecord *sourceRecord : records) {
        RixMemRecord *record = newRecord();
        record->assign(sourceRecord);
        appendRecord(record);
    }
}

void RixMemTable::appendRefRecords(RixMemTable *source)
{
    if (!source)
        return;
    const QList<RixMemRecord *> records = source->d->records;
    for (RixMemRecord *sourceRecord : records) {
        RixMemRecord *record = newRecord();
        record->setRefRecord(sourceRecord);
        appendRecord(record);
    }
}

void RixMemTable::assign(RixMemTable *source, bool withRecords)
{
    if (!source || source == this)
        return;
    if (!source->d->refTable) {
        setRefTable(nullptr);
        d->tableName = source->d->tableName;
        d->fields->assign(source->d->fields.get());
    } else {
        setRefTable(source->d->refTable);
    }
    clear();
    if (withRecords)
        appendRecords(source);
}

void RixMemTable::loadCells(
    const QString &line, QChar separator, const QVector<int> &columns, RixMemTextPool &texts)
{
    RixMemRecord *record = newRecord();
    int column = 0;
    const int size = line.size();
    int start = 0;
    while (start < size && column < columns.size()) {
        int end = line.indexOf(separator, start);
        if (end < 0)
            end = size;
        if (end > start) {
            const int field = columns.at(column++);
            record->setVariant(
                field, QVariant(texts.fromUtf16(field, line.constData() + start, end - start)));
        }
        start = end + 1;
    }
    if (column > 0)
        appendRecord(record);
    else
        delete record;
}

void RixMemTable::loadFromCSVFile(const QString &fileName, bool hasHeader)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QByteArray data = file.readAll();
    if (data.isEmpty())
        return;
    const char *p = data.constData();
    const char *const end = p + data.size();

    auto lineEnd = [end](const char *from) {
        const void *nl = std::memchr(from, '\n', size_t(end - from));
        return nl ? static_cast<const char *>(nl) : end;
    };

    // Each line is decoded on its own, so a byte-order mark at the start of a line (the file's
    // included) is dropped by the decoder, as QString::fromUtf8 does.
    const char *eol = lineEnd(p);
    const QString header = QString::fromUtf8(p, int(eol - p)).trimmed();
    const QVector<QStringRef> names = header.splitRef(QLatin1Char(','), Qt::SkipEmptyParts);
    QVector<int> columns;
    RixMemFields *tableFields = fields();
    if (hasHeader) {
        for (const QStringRef &name : names) {
            const int index = tableFields->filedIndex(name.toString());
            if (index >= 0)
                columns.append(index);
        }
    } else {
        const int count = qMin(tableFields->count(), names.size());
        for (int i = 0; i < count; ++i)
            columns.append(i);
    }
    p = eol == end ? end : eol + 1;

    RixMemTextPool texts(tableFields->count());
    while (p < end) {
        eol = lineEnd(p);
        const char *b = p;
        const char *e = eol;
        const char *const lineBegin = p;
        p = eol == end ? end : eol + 1;
        while (b < e && isAsciiSpace(*b))
            ++b;
        while (e > b && isAsciiSpace(e[-1]))
            --e;
        if ((b < e && (uchar(*b) >= 0x80 || uchar(e[-1]) >= 0x80))) {
            // The line may begin or end with white space outside ASCII (or a byte-order mark):
            // decode and trim it as text.
            loadCells(QString::fromUtf8(lineBegin, int(eol - lineBegin)).trimmed(), QLatin1Char(','), columns,
                texts);
            continue;
        }
        // Cells are decoded straight from the bytes: ',' never occurs inside a UTF-8 sequence.
        RixMemRecord *record = newRecord();
        int column = 0;
        while (b < e && column < columns.size()) {
            const void *comma = std::memchr(b, ',', size_t(e - b));
            const char *cellEnd = comma ? static_cast<const char *>(comma) : e;
            if (cellEnd > b) {
                const int field = columns.at(column++);
                record->setVariant(field, QVariant(decodeCell(b, cellEnd, field, texts)));
            }
            b = cellEnd + 1;
        }
        if (column > 0)
            appendRecord(record);
        else
            delete record;
    }
}

void RixMemTable::loadFromString(QString text, QChar separator, const QStringList &fieldNames)
{
    clear();
    if (text.isEmpty())
        return;
    RixMemFields *tableFields = fields();
    QVector<int> columns;
    if (fieldNames.isEmpty()) {
        for (int i = 0; i < tableFields->count(); ++i) {
            if (tableFields->items(i)->visible())
                columns.append(i);
        }
    } else {
        for (const QString &name : fieldNames) {
            const int index = tableFields->filedIndex(name);
            if (index >= 0)
                columns.append(index);
        }
    }
    const QVector<QStringRef> lines = text.splitRef(QLatin1Char('\n'), Qt::SkipEmptyParts);
    RixMemTextPool texts(tableFields->count());
    for (const QStringRef &line : lines) {
        const QString trimmed = line.trimmed().toString();
        if (!trimmed.isEmpty())
            loadCells(trimmed, separator, columns, texts);
    }
}

void RixMemTable::loadFromJson(const QByteArray &json)
{
    clear();
    // The rows are read in full before any is added, so that bytes the reader declines leave
    // nothing behind and load through the document as before.
    const RixMemJsonReader::Access access { [this] { return createRecord(); },
        [](RixMemRecord *record, int index, const QVariant &value) { record->setVariant(index, value); } };
    std::vector<RixMemJsonReader::Row> rows;
    if (!RixMemJsonReader::read(json, fields(), access, rows)) {
        loadFromJson(QJsonDocument::fromJson(json).array());
        return;
    }
    if (rows.empty())
        return;
    const int idIndex = filedIndex(idFieldName());
    RixMemTable *refTable = d->refTable;
    const int refIdIndex = refTable ? refTable->filedIndex(idFieldName()) : -1;
    d->records.reserve(int(rows.size()));
    for (const RixMemJsonReader::Row &row : rows) {
        RixMemRecord *record = row.record;
        record->setID(genID());
        if (!refTable) {
            // Continues from the largest "ID", without adding one.
            d->nextID = qMax(d->nextID, record->getVariant(idIndex).toInt());
        } else {
            record->setRefRecord(findRefRecord(refTable, refIdIndex, row.refId));
        }
        appendRecord(record);
    }
}

void RixMemTable::loadFromJson(const QJsonArray &array)
{
    clear();
    if (array.isEmpty())
        return;
    RixMemFields *tableFields = fields();
    const int idIndex = tableFields->filedIndex(idFieldName());
    RixMemTable *refTable = d->refTable;
    const int refIdIndex = refTable ? refTable->filedIndex(idFieldName()) : -1;
    const QString refIdKey = QStringLiteral("_RefID");
    d->records.reserve(array.size());

    // Rows mostly repeat the previous row's keys. A key is compared with the previous row's key
    // at the same position in the document's own storage (as a CBOR value, which needs no text
    // copy); only a different key is looked up by name.
    QVector<QCborValue> lastKeys;
    QVector<int> lastFields;
    RixMemTextPool texts(tableFields->count());
    for (const QJsonValue element : array) {
        const QJsonObject object = element.toObject();
        const QCborMap keys = QCborMap::fromJsonObject(object);
        RixMemRecord *record = newRecord();
        auto keyIt = keys.constBegin();
        int position = 0;
        for (auto it = object.constBegin(); it != object.constEnd(); ++it, ++keyIt, ++position) {
            const QCborValue key = keyIt.key();
            int index;
            if (position < lastKeys.size() && lastKeys.at(position) == key) {
                index = lastFields.at(position);
            } else {
                index = tableFields->filedIndex(it.key());
                if (position < lastKeys.size()) {
                    lastKeys[position] = key;
                    lastFields[position] = index;
                } else {
                    lastKeys.append(key);
                    lastFields.append(index);
                }
            }
            if (index < 0)
                continue;
            const QJsonValue value = it.value();
            const int type = tableFields->items(index)->dataType();
            if (value.isString() && (type == QMetaType::QString || type == QMetaType::UnknownType)) {
                const QString text = value.toString();
                record->setVariant(index, QVariant(texts.fromUtf16(index, text.constData(), text.size())));
            } else {
                record->setVariant(index, RixMemJsonReader::toVariant(value, type));
            }
        }
        if (!refTable) {
            // Continues from the largest "ID", without adding one.
            d->nextID = qMax(d->nextID, record->getVariant(idIndex).toInt());
        } else {
            record->setRefRecord(findRefRecord(refTable, refIdIndex, object.value(refIdKey).toInt(-1)));
        }
        appendRecord(record);
    }
}

void RixMemTable::saveToJson(QJsonArray &array)
{
    if (d->records.isEmpty())
        return;
    RixMemFields *tableFields = fields();
    RixMemTable *refTable = d->refTable;
    const QString refIdKey = QStringLiteral("_RefID");
    bool allNull = true;
    int withRefRecord = 0;
    for (const RixMemRecord *record : qAsConst(d->records)) {
        QJsonObject object;
        if (refTable) {
            const RixMemRecord *refRecord = record->refRecord();
            object.insert(refIdKey, refRecord ? refRecord->getVariant(idFieldName()).toInt() : -1);
            if (refRecord)
                ++withRefRecord;
        }
        const QVector<QVariant> &values = record->m_values;
        const int count = qMin(values.size(), tableFields->count());
        for (int i = 0; i < count; ++i) {
            const QVariant &value = values.at(i);
            if (!value.isValid() || value.isNull())
                continue;
            object.insert(tableFields->items(i)->fieldName(), QJsonValue::fromVariant(value));
            allNull = false;
        }
        if (!object.isEmpty())
            array.append(object);
    }
    // A layer that changes nothing over its reference table is saved as nothing.
    if (allNull && refTable && withRefRecord == d->records.count()
        && withRefRecord == refTable->recordCount())
        array = QJsonArray();
}

void RixMemTable::saveToJson(QByteArray &json)
{
    QJsonArray array;
    saveToJson(array);
    if (!array.isEmpty())
        json = QJsonDocument(array).toJson(QJsonDocument::Compact);
}
