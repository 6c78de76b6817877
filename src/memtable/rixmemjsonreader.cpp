#include "rixmemjsonreader_p.h"

#include "rixmemfield.h"
#include "rixmemfields.h"
#include "rixmemrecord.h"
#include "rixmemtextpool_p.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

namespace {

// Deeper documents go to the document parser, which has a nesting limit of its own.
constexpr int maxDepth = 64;

const char refIdKey[] = "_RefID";

// Whether QString::fromUtf8 of a string the reader unescaped gives the document parser's text. It
// does not when fromUtf8 drops a leading byte-order mark (the document keeps it), nor for an
// escaped lone surrogate, which the reader writes as bytes fromUtf8 replaces.
inline bool decodesAsDocument(const char *text, rapidjson::SizeType length)
{
    if (length >= 3 && std::memcmp(text, "\xEF\xBB\xBF", 3) == 0)
        return false;
    const char *const end = text + length;
    for (const char *p = text; (p = static_cast<const char *>(std::memchr(p, '\xED', size_t(end - p))));) {
        if (++p != end && uchar(*p) >= 0xA0)
            return false;
    }
    return true;
}

// The number a document holds for the text: an integer when the text is one that fits, or when
// its value is integral and fits; a double otherwise. False for text it would reject.
bool parseNumber(const char *text, rapidjson::SizeType length, QJsonValue &value)
{
    const char *p = text;
    const char *const end = text + length;
    const bool negative = *p == '-';
    if (negative)
        ++p;
    const char *const digits = p;
    while (p != end && *p >= '0' && *p <= '9')
        ++p;
    if (p == end && end - digits <= 19) {
        quint64 n = 0;
        for (const char *d = digits; d != end; ++d)
            n = n * 10 + quint64(*d - '0'); // 19 digits cannot overflow 64 bits
        const quint64 limit = negative ? quint64(1) << 63 : (quint64(1) << 63) - 1;
        if (n <= limit) {
            value = QJsonValue(negative ? qint64(0 - n) : qint64(n));
            return true;
        }
    }
    bool ok = false;
    const double d = QByteArray::fromRawData(text, int(length)).toDouble(&ok);
    if (!ok || !std::isfinite(d))
        return false;
    if (d == 0) {
        // Zero from non-zero digits is an underflow, which the document parser rejects.
        for (const char *q = digits; q != end && *q != 'e' && *q != 'E'; ++q) {
            if (*q >= '1' && *q <= '9')
                return false;
        }
    }
    if (d == std::trunc(d) && d >= -9223372036854775808.0 && d < 9223372036854775808.0)
        value = QJsonValue(qint64(d));
    else
        value = QJsonValue(d);
    return true;
}

class Handler : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Handler>
{
public:
    Handler(const QByteArray &json, const rapidjson::MemoryStream &stream, RixMemFields *fields,
        const RixMemJsonReader::Access &access, std::vector<RixMemJsonReader::Row> &rows)
        : m_json(json)
        , m_stream(stream)
        , m_fields(fields)
        , m_access(access)
        , m_rows(rows)
        , m_texts(fields->count())
    {
        const int count = fields->count();
        m_types.reserve(size_t(count));
        for (int i = 0; i < count; ++i)
            m_types.push_back(int(fields->items(i)->dataType()));
        m_stamps.assign(size_t(count), -1);
    }

    ~Handler() { delete m_record; }

    bool done() const { return m_done; }

    bool Null()
    {
        return scalar([] { return QJsonValue(QJsonValue::Null); });
    }
    bool Bool(bool b)
    {
        return scalar([b] { return QJsonValue(b); });
    }
    bool RawNumber(const char *text, rapidjson::SizeType length, bool)
    {
        // Every number is checked: one the document parser rejects fails the whole document.
        QJsonValue value;
        return parseNumber(text, length, value) && scalar([&value] { return value; });
    }
    bool String(const char *text, rapidjson::SizeType length, bool)
    {
        if (m_depth != 2 || !m_inRow || !relevant())
            return scalar([] { return QJsonValue(); });
        if (!decodesAsDocument(text, length))
            return false;
        if (m_isRefId || !keepsText(m_index))
            return apply(QJsonValue(QString::fromUtf8(text, int(length))));
        // Stored as the very string, not through a QJsonValue (which keeps a copy of its own), so
        // that pooled texts stay shared.
        stamp();
        m_access.setVariant(m_record, m_index, QVariant(m_texts.fromUtf8(m_index, text, int(length))));
        return true;
    }

    bool Key(const char *text, rapidjson::SizeType length, bool)
    {
        if (m_depth != 2 || !m_inRow)
            return true;
        m_isRefId = length == sizeof(refIdKey) - 1 && std::memcmp(text, refIdKey, length) == 0;
        // Rows mostly repeat the previous row's keys: only a different key is looked up.
        if (m_position < m_lastKeys.size()) {
            std::string &last = m_lastKeys[m_position];
            if (last.size() != length || std::memcmp(last.data(), text, length) != 0) {
                if (!decodesAsDocument(text, length))
                    return false;
                last.assign(text, length);
                m_lastFields[m_position] = m_fields->filedIndex(QString::fromUtf8(text, int(length)));
            }
        } else {
            if (!decodesAsDocument(text, length))
                return false;
            m_lastKeys.emplace_back(text, length);
            m_lastFields.push_back(m_fields->filedIndex(QString::fromUtf8(text, int(length))));
        }
        m_index = m_lastFields[m_position++];
        return true;
    }

    bool StartObject() { return start(true); }
    bool EndObject(rapidjson::SizeType) { return end(); }
    bool StartArray() { return start(false); }
    bool EndArray(rapidjson::SizeType) { return end(); }

private:
    bool relevant() const { return m_index >= 0 || m_isRefId; }
    // Whether the field stores a text value as it is (toVariant() makes no conversion).
    bool keepsText(int index) const
    {
        const int type = m_types[size_t(index)];
        return type == QMetaType::QString || type == QMetaType::UnknownType;
    }
    // Marks the current field as set in this row; a second key reaching it is a collision.
    void stamp()
    {
        int &stamp = m_stamps[size_t(m_index)];
        if (stamp == m_rowNumber)
            m_collision = true;
        stamp = m_rowNumber;
    }

    template<typename Make>
    bool scalar(Make make)
    {
        if (m_depth == 0)
            return false; // a root that is not an array
        if (m_depth == 1) {
            m_rows.push_back({ m_access.create(), -1 }); // an element that is not an object
            return true;
        }
        if (m_depth == 2 && m_inRow && relevant())
            return apply(make());
        return true;
    }

    // The value of the current key of a row object.
    bool apply(const QJsonValue &value)
    {
        if (m_isRefId) {
            if (m_hasRefId)
                m_collision = true;
            m_hasRefId = true;
            m_refId = value.toInt(-1);
        }
        if (m_index >= 0) {
            stamp();
            m_access.setVariant(
                m_record, m_index, RixMemJsonReader::toVariant(value, m_types[size_t(m_index)]));
        }
        return true;
    }

    bool start(bool object)
    {
        const size_t offset = m_stream.Tell() - 1;
        if (m_depth == 0) {
            if (object)
                return false;
        } else if (m_depth == 1) {
            if (object) {
                m_record = m_access.create();
                m_inRow = true;
                m_rowStart = offset;
                m_position = 0;
                m_hasRefId = false;
                m_refId = -1;
                m_collision = false;
                ++m_rowNumber;
            } else {
                m_rows.push_back({ m_access.create(), -1 });
            }
        } else if (m_depth == 2 && m_inRow && relevant()) {
            m_valueStart = offset;
        }
        return ++m_depth <= maxDepth;
    }

    bool end()
    {
        const size_t endOffset = m_stream.Tell();
        --m_depth;
        if (m_depth == 2 && m_inRow && relevant()) {
            // A nested array or object: the document parser makes its value.
            const QJsonDocument document = QJsonDocument::fromJson(span(m_valueStart, endOffset));
            if (document.isArray())
                return apply(QJsonValue(document.array()));
            if (document.isObject())
                return apply(QJsonValue(document.object()));
            return false;
        }
        if (m_depth == 1 && m_inRow) {
            m_inRow = false;
            if (m_collision && !reloadRow(endOffset))
                return false;
            m_rows.push_back({ m_record, m_refId });
            m_record = nullptr;
        } else if (m_depth == 0) {
            m_done = true;
        }
        return true;
    }

    // Two keys of the row reach the same field or "_RefID": which one wins depends on the
    // document's key order and duplicate rule, so the document parser reads this row.
    bool reloadRow(size_t endOffset)
    {
        const QJsonDocument document = QJsonDocument::fromJson(span(m_rowStart, endOffset));
        if (!document.isObject())
            return false;
        delete m_record;
        m_record = m_access.create();
        const QJsonObject object = document.object();
        for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
            const int index = m_fields->filedIndex(it.key());
            if (index >= 0)
                m_access.setVariant(
                    m_record, index, RixMemJsonReader::toVariant(it.value(), m_types[size_t(index)]));
        }
        m_refId = object.value(QLatin1String(refIdKey)).toInt(-1);
        return true;
    }

    QByteArray span(size_t begin, size_t end) const
    {
        return QByteArray::fromRawData(m_json.constData() + begin, int(end - begin));
    }

    const QByteArray &m_json;
    const rapidjson::MemoryStream &m_stream;
    RixMemFields *const m_fields;
    const RixMemJsonReader::Access &m_access;
    std::vector<RixMemJsonReader::Row> &m_rows;
    std::vector<int> m_types;
    std::vector<int> m_stamps; // the row that last set each field
    std::vector<std::string> m_lastKeys;
    std::vector<int> m_lastFields;
    RixMemTextPool m_texts;
    RixMemRecord *m_record = nullptr;
    int m_depth = 0;
    bool m_inRow = false;
    bool m_done = false;
    size_t m_rowStart = 0;
    size_t m_valueStart = 0;
    size_t m_position = 0;
    int m_rowNumber = 0;
    int m_index = -1;
    bool m_isRefId = false;
    bool m_hasRefId = false;
    bool m_collision = false;
    int m_refId = -1;
};

} // namespace

bool RixMemJsonReader::read(
    const QByteArray &json, RixMemFields *fields, const Access &access, std::vector<Row> &rows)
{
    rows.clear();
    constexpr unsigned flags = rapidjson::kParseValidateEncodingFlag | rapidjson::kParseNumbersAsStringsFlag;
    rapidjson::MemoryStream stream(json.constData(), size_t(json.size()));
    bool ok;
    {
        Handler handler(json, stream, fields, access, rows);
        rapidjson::Reader reader;
        ok = !reader.Parse<flags>(stream, handler).IsError() && handler.done()
            && stream.Tell() == size_t(json.size()); // a NUL byte after the root ends the stream
    }
    if (!ok) {
        for (const Row &row : rows)
            delete row.record;
        rows.clear();
    }
    return ok;
}

QVariant RixMemJsonReader::toVariant(const QJsonValue &json, int type)
{
    // Texts, booleans and numbers that plainly fit the type are made directly: the same
    // variants, without the conversion machinery.
    if (json.isString()) {
        if (type == QMetaType::QString || type == QMetaType::UnknownType)
            return QVariant(json.toString());
    } else if (json.isBool()) {
        if (type == QMetaType::Bool || type == QMetaType::UnknownType)
            return QVariant(json.toBool());
    } else if (json.isDouble()) {
        const double number = json.toDouble();
        if (type == QMetaType::Double)
            return QVariant(number);
        if (type == QMetaType::Int && number == std::trunc(number)
            && number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max())
            return QVariant(int(number));
    }
    QVariant value = json.toVariant();
    if (type != QMetaType::UnknownType && value.userType() != type && value.canConvert(type)) {
        QVariant converted = value;
        // A value that does not convert is kept as it is.
        if (converted.convert(type))
            value = converted;
    }
    return value;
}
