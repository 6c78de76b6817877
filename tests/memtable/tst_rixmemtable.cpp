#include <rixmemfield.h>
#include <rixmemfields.h>
#include <rixmemrecord.h>
#include <rixmemtable.h>
#include <sefcommon.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPointer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

// Exposes the protected record factory.
class TestableTable : public RixMemTable
{
public:
    using RixMemTable::createRecord;
};

// "iD:v|v|v" per record, records separated by ";", values by their text.
QString dump(const RixMemTable &table)
{
    QStringList rows;
    for (int i = 0; i < table.recordCount(); ++i) {
        const RixMemRecord *record = table.items(i);
        QStringList values;
        for (int f = 0; f < table.fields()->count(); ++f)
            values << SefCommon::variantToString(record->getVariant(f));
        rows << QString::number(record->iD()) + QLatin1Char(':') + values.join(QLatin1Char('|'));
    }
    return rows.join(QLatin1Char(';'));
}

// "Name,ID:i,Width:d,Paved:b,Any:?": text fields unless a type letter follows the name.
void addFields(RixMemTable &table, const QString &list)
{
    for (const QString &part : list.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const QString type = part.section(QLatin1Char(':'), 1);
        table.addField(part.section(QLatin1Char(':'), 0, 0), QString(),
            type == QLatin1String("i")       ? QVariant::Int
                : type == QLatin1String("d") ? QVariant::Double
                : type == QLatin1String("b") ? QVariant::Bool
                : type == QLatin1String("?") ? QVariant::Invalid
                                             : QVariant::String);
    }
}

bool writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

// Every record's identity, reference record and values: types, nested values and nullness included.
QString typedDump(const RixMemTable &table)
{
    QString text;
    QDebug debug(&text);
    debug << qSetRealNumberPrecision(17);
    for (int i = 0; i < table.recordCount(); ++i) {
        debug << "\n" << table.items(i)->iD() << table.items(i)->refRecord();
        for (int f = 0; f < table.fields()->count(); ++f)
            debug << table.items(i)->getVariant(f) << table.items(i)->getVariant(f).isNull();
    }
    return text;
}

// "row r field f: value" of the first record value that is not the expected text; empty when all are.
QString firstDifference(const RixMemTable &table, const QVector<QStringList> &expected)
{
    for (int r = 0; r < expected.size(); ++r) {
        for (int f = 0; f < expected[r].size(); ++f) {
            const QVariant value = table.items(r)->getVariant(f);
            if (value.userType() != QMetaType::QString || value.toString() != expected[r][f])
                return QStringLiteral("row %1 field %2: %3").arg(r).arg(f).arg(value.toString());
        }
    }
    return QString();
}

QString savedJson(RixMemTable &table)
{
    QByteArray json("untouched");
    table.saveToJson(json);
    return QString::fromUtf8(json);
}

} // namespace

class TestRixMemTable : public QObject
{
    Q_OBJECT

private slots:
    void identities();
    void csvFile_data();
    void csvFile();
    void csvFixtures();
    void csvUnreadableLeavesTableUnchanged();
    void loadFromString_data();
    void loadFromString();
    void loadFromJson_data();
    void loadFromJson();
    void loadFromJsonConvertsToFieldTypes();
    void loadFromJsonOverReference();
    void loadFromJsonMatchesDocument_data();
    void loadFromJsonMatchesDocument();
    void repeatedTextsStayValues_data();
    void repeatedTextsStayValues();
    void saveToJson_data();
    void saveToJson();
    void layerSavesOnlyChanges();
    void addAndRemoveSignals_data();
    void addAndRemoveSignals();
    void sortByField_data();
    void sortByField();
    void referenceTable();
    void assign_data();
    void assign();
    void findAndColumnQueries();
};

void TestRixMemTable::identities()
{
    TestableTable table;
    const auto append = [&table](int count) {
        QList<int> ids;
        for (int i = 0; i < count; ++i) {
            RixMemRecord *record = table.newRecord();
            ids << record->iD();
            table.appendRecord(record);
        }
        return ids;
    };
    QCOMPARE(append(1), QList<int> { 1 });
    QCOMPARE(std::unique_ptr<RixMemRecord>(table.createRecord())->iD(), 0);
    QCOMPARE(append(2), (QList<int> { 2, 3 }));
    table.clear();
    QCOMPARE(append(3), (QList<int> { 0, 1, 2 }));
}

void TestRixMemTable::csvFile_data()
{
    QTest::addColumn<QString>("fields");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("hasHeader");
    QTest::addColumn<QString>("expected");

    QTest::newRow("header maps columns by name in any case")
        << "a,b" << QByteArray("B,A\n1,2\n") << true << "1:2|1";
    QTest::newRow("unknown header column: later columns shift left")
        << "a,b" << QByteArray("a,x,b\n1,2,3\n") << true << "1:1|2";
    QTest::newRow("empty cell shifts the following cells left")
        << "a,b,c" << QByteArray("a,b,c\n1,,3\n") << true << "1:1|3|";
    QTest::newRow("without header the first line is never loaded")
        << "a,b" << QByteArray("1,2\n3,4\n") << false << "1:3|4";
    QTest::newRow("without header the map stops at the first line's cell count")
        << "a,b,c" << QByteArray("x,y\n1,2,3\n") << false << "1:1|2|";
    QTest::newRow("extra cells beyond the map are dropped")
        << "a" << QByteArray("a\n1,2,3\n") << true << "1:1";
    QTest::newRow("line trimmed, cells not trimmed inside")
        << "a,b" << QByteArray("a,b\n  1 , 2  \r\n") << true << "1:1 | 2";
    QTest::newRow("blank and comma-only lines draw an identity but add nothing")
        << "a" << QByteArray("a\n\n,,\n5\n") << true << "3:5";
    QTest::newRow("last line without newline") << "a" << QByteArray("a\n1\n2") << true << "1:1;2:2";
    QTest::newRow("values stay text on a typed table") << "a" << QByteArray("a\n007\n") << true << "1:007";
    QTest::newRow("byte-order mark: dropped at a line's start, kept inside it")
        << "a,b"
        << QByteArray("a,b\n\xEF\xBB\xBF"
                      "1,\xEF\xBB\xBF"
                      "x\n \xEF\xBB\xBF\n")
        << true << QStringLiteral("1:1|\uFEFFx;2:\uFEFF|");
    QTest::newRow("header only") << "a" << QByteArray("a\n") << true << "";
    QTest::newRow("invalid UTF-8 decoded with replacement")
        << "a,b" << QByteArray("a,b\n\xff,\xe4\xb8\n") << true << QStringLiteral("1:\uFFFD|\uFFFD\uFFFD");
}

void TestRixMemTable::csvFile()
{
    QFETCH(QString, fields);
    QFETCH(QByteArray, content);
    QFETCH(bool, hasHeader);
    QFETCH(QString, expected);

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("rows.csv"));
    QVERIFY(writeFile(path, content));
    RixMemTable table;
    addFields(table, fields);
    table.field(0)->setDataType(QVariant::Int);
    table.loadFromCSVFile(path, hasHeader);
    QCOMPARE(dump(table), expected);
    for (int i = 0; i < table.recordCount(); ++i) {
        QCOMPARE(table.items(i)->getVariant(0).userType(), int(QMetaType::QString));
        QCOMPARE(table.items(i)->index(), i);
    }
}

void TestRixMemTable::csvFixtures()
{
    const auto load = [](const char *file, const char *fields) {
        RixMemTable table;
        addFields(table, QString::fromLatin1(fields));
        table.loadFromCSVFile(QFINDTESTDATA(QStringLiteral("../data/memtable/") + QLatin1String(file)), true);
        return dump(table);
    };
    // Unknown header column and CRLF lines; a byte-order mark skipped and full-width spaces trimmed.
    QCOMPARE(load("header_unknown_column.csv", "ID,Name,Width"), QStringLiteral("1:1|x|边沟;2:2|y|路肩"));
    QCOMPARE(load("bom_fullwidth_space.csv", "Name,Width"), QStringLiteral("1:中央分隔带|2;4:路缘石|0.15"));
}

void TestRixMemTable::csvUnreadableLeavesTableUnchanged()
{
    for (const bool exists : { false, true }) { // a missing file, an empty one
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("none.csv"));
        if (exists)
            QVERIFY(writeFile(path, QByteArray()));
        RixMemTable table;
        addFields(table, QStringLiteral("a"));
        table.loadFromString(QStringLiteral("x\ny"), QLatin1Char(','), QStringList());
        table.loadFromCSVFile(path, true);
        QCOMPARE(dump(table), QStringLiteral("0:x;1:y"));
        // A readable file appends after the existing rows, continuing the identities.
        QVERIFY(writeFile(path, "a\nz\n"));
        table.loadFromCSVFile(path, true);
        QCOMPARE(dump(table), QStringLiteral("0:x;1:y;2:z"));
    }
}

void TestRixMemTable::loadFromString_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("separator");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QString>("expected");

    QTest::newRow("visible fields when no names are given") << "1;2;3\n4;5;6"
                                                            << ";" << QStringList() << "0:1||2;1:4||5";
    QTest::newRow("named columns in the order given") << "1;2"
                                                      << ";" << QStringList { "C", "a" } << "0:2||1";
    QTest::newRow("unknown names dropped") << "1;2"
                                           << ";" << QStringList { "zz", "b" } << "0:|1|";
    QTest::newRow("blank lines skipped without identity") << "\n  \n1\n\n2"
                                                          << ";" << QStringList() << "0:1||;1:2||";
    QTest::newRow("separator-only line draws an identity") << ";;\n7"
                                                           << ";" << QStringList() << "1:7||";
    QTest::newRow("empty cells shift left") << "\t;;x;y\t"
                                            << ";" << QStringList() << "0:x||y";
    QTest::newRow("empty text clears") << ""
                                       << ";" << QStringList() << "";
}

void TestRixMemTable::loadFromString()
{
    QFETCH(QString, text);
    QFETCH(QString, separator);
    QFETCH(QStringList, names);
    QFETCH(QString, expected);

    RixMemTable table;
    addFields(table, QStringLiteral("a,b,c"));
    table.field(1)->setVisible(false);
    table.loadFromString(QStringLiteral("old"), QLatin1Char(';'), QStringList());
    table.loadFromString(text, separator.at(0), names);
    QCOMPARE(dump(table), expected);
}

void TestRixMemTable::loadFromJson_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<int>("nextID");

    QTest::newRow("ID 3 then 7 continues at 7")
        << QByteArray(R"([{"ID":3,"Name":"a"},{"ID":7,"Name":"b"}])") << "0:3|a;3:7|b" << 7;
    QTest::newRow("ID 7 then 3: the identity drawn after 7 is kept")
        << QByteArray(R"([{"ID":7},{"ID":3}])") << "0:7|;7:3|" << 8;
    QTest::newRow("keys found in any case, unknown keys ignored")
        << QByteArray(R"([{"id":1,"NAME":"x","Other":5}])") << "0:1|x" << 1;
    QTest::newRow("rows with changing key sets") << QByteArray(
        R"([{"ID":1,"Name":"a"},{"ID":2,"NAME":"b"},{"id":3,"Name":"c","X":0},{"ID":4,"Name":"d"},{"Name":"e","ID":5}])")
                                                 << "0:1|a;1:2|b;2:3|c;3:4|d;4:5|e" << 5;
    QTest::newRow("keys equal in any case: the last in key order wins, on every row")
        << QByteArray(R"([{"NAME":"x","name":"y"},{"name":"v","NAME":"u"}])") << "0:|y;1:|v" << 2;
    QTest::newRow("without ID field numbering goes on")
        << QByteArray(R"([{"Name":"x"},{"Name":"y"}])") << "0:|x;1:|y" << 2;
    QTest::newRow("a non-object element is an empty record")
        << QByteArray(R"([1,{"Name":"y"}])") << "0:|;1:|y" << 2;
    QTest::newRow("malformed JSON clears") << QByteArray(R"([{"ID":1)") << "" << 0;
    QTest::newRow("an object, not an array, clears") << QByteArray(R"({"ID":1})") << "" << 0;
    QTest::newRow("empty array clears") << QByteArray("[]") << "" << 0;
}

void TestRixMemTable::loadFromJson()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, expected);
    QFETCH(int, nextID);

    RixMemTable table;
    addFields(table, QStringLiteral("ID:i,Name"));
    table.loadFromString(QStringLiteral("9;old"), QLatin1Char(';'), QStringList());
    table.loadFromJson(json);
    QCOMPARE(dump(table), expected);
    const std::unique_ptr<RixMemRecord> next(table.newRecord());
    QCOMPARE(next->iD(), nextID);
}

void TestRixMemTable::loadFromJsonConvertsToFieldTypes()
{
    RixMemTable table;
    addFields(table, QStringLiteral("ID:i,Name,Height:d,Ratio:d,Paved:b"));
    QFile file(QFINDTESTDATA("../data/memtable/slope_rules.json"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    table.loadFromJson(file.readAll());
    QCOMPARE(table.recordCount(), 3);

    const RixMemRecord *fill = table.items(0);
    QCOMPARE(fill->getVariant(QStringLiteral("ID")).userType(), int(QMetaType::Int));
    QCOMPARE(fill->getVariant(QStringLiteral("Height")).userType(), int(QMetaType::Double));
    QCOMPARE(fill->getVariant(QStringLiteral("Paved")), QVariant(true));
    const RixMemRecord *cut = table.items(1);
    QCOMPARE(cut->getVariant(QStringLiteral("Name")), QVariant(QStringLiteral("挖方边坡")));
    QCOMPARE(cut->getVariant(QStringLiteral("Height")), QVariant(12.5));
    QCOMPARE(cut->getVariant(QStringLiteral("Ratio")), QVariant(1.25));
    QVERIFY(cut->getVariant(QStringLiteral("Paved")).isNull());
    const RixMemRecord *berm = table.items(2);
    // A text that does not convert is kept as it is.
    QCOMPARE(berm->getVariant(QStringLiteral("Ratio")), QVariant(QStringLiteral("steep")));
    QCOMPARE(berm->getVariant(QStringLiteral("Paved")), QVariant(false));
    QCOMPARE(berm->iD(), 7);
}

void TestRixMemTable::loadFromJsonOverReference()
{
    RixMemTable base;
    addFields(base, QStringLiteral("ID:i,Name"));
    base.loadFromJson(QByteArray(R"([{"ID":10,"Name":"a"},{"ID":20,"Name":"b"},{"ID":10,"Name":"dup"}])"));

    RixMemTable layer;
    layer.setRefTable(&base);
    layer.loadFromJson(QByteArray(
        R"([{"_RefID":20},{"_RefID":10,"Name":"A"},{"_RefID":99},{"Name":"new"},{"_RefID":99,"_RefID":20.0}])"));
    QCOMPARE(layer.recordCount(), 5);
    QCOMPARE(layer.items(0)->refRecord(), base.items(1));
    QCOMPARE(layer.items(1)->refRecord(), base.items(0)); // the first match wins
    QCOMPARE(layer.items(2)->refRecord(), nullptr);
    QCOMPARE(layer.items(3)->refRecord(), nullptr);
    QCOMPARE(layer.items(4)->refRecord(), base.items(1)); // the last of repeated keys, a whole double
    QCOMPARE(dump(layer), QStringLiteral("0:20|b;1:10|A;2:|;3:|new;4:20|b"));
    // Over a reference table the "ID" values do not move the numbering.
    const std::unique_ptr<RixMemRecord> next(layer.newRecord());
    QCOMPARE(next->iD(), 5);
}

void TestRixMemTable::loadFromJsonMatchesDocument_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("anyType"); // of the first row's "Any" value

    const auto row = [](const char *name, const QByteArray &json, int rows, int anyType) {
        QTest::newRow(name) << json << rows << anyType;
    };
    const int longLong = QMetaType::LongLong;
    const int text = QMetaType::QString;
    row("integer text is a long long", R"([{"Any":9223372036854775807}])", 1, longLong);
    row("integral fraction is a long long", R"([{"Any":-0.0}])", 1, longLong);
    row("integral exponent is a long long", R"([{"Any":1.5e2}])", 1, longLong);
    row("integer beyond 64 bits is a double", R"([{"Any":9223372036854775808}])", 1, QMetaType::Double);
    row("fraction is a double", R"([{"Any":0.1,"Width":7}])", 1, QMetaType::Double);
    row("null", R"([{"Any":null,"Name":null}])", 1, QMetaType::Nullptr);
    row("nested array", R"([{"Any":[1,1.0,0.5,{"b":[]}],"Name":[2]}])", 1, QMetaType::QVariantList);
    row("nested object with a repeated key", R"([{"Any":{"b":1,"a":2,"b":3},"ID":{"x":1}}])", 1,
        QMetaType::QVariantMap);
    row("nesting deeper than the reader goes",
        "[{\"Any\":" + QByteArray(100, '[') + QByteArray(100, ']') + "}]", 1, QMetaType::QVariantList);
    row("repeated key: the last wins", R"([{"Any":1,"Name":"a","Any":"x"},{"Any":2}])", 2, text);
    row("escaped surrogate pair", R"([{"Any":"\ud83d\ude00\u00e9\n"}])", 1, text);
    row("escaped lone surrogates are kept", R"([{"Any":"\udc00x","Name":"\ud800"}])", 1, text);
    row("byte-order mark inside a text is kept",
        "[{\"Any\":\"\xEF\xBB\xBF"
        "a\"}]",
        1, text);
    row("byte-order mark at the start of a key is dropped",
        "[{\"\xEF\xBB\xBF"
        "Any\":1}]",
        1, longLong);
    row("byte-order mark before the document", "\xEF\xBB\xBF[{\"Any\":true}]", 1, QMetaType::Bool);
    row("control character in a text", "[{\"Any\":\"a\x01\"}]", 1, text);
    row("unknown escape", R"([{"Any":"\x"}])", 1, text);
    row("number ending in a point", R"([{"Any":1.}])", 1, longLong);
    row("elements that are not objects", R"([1,"x",null,[{"Any":1}],{"Any":true}])", 5,
        QMetaType::UnknownType);
    row("number too large fails the document", R"([{"Any":1},{"Any":1e400}])", 0, 0);
    row("number underflowing fails the document", R"([{"Any":1},{"Any":1e-400}])", 0, 0);
    row("invalid UTF-8 fails the document", "[{\"Any\":1},{\"Any\":\"\xC3\x28\"}]", 0, 0);
    row("NUL byte after the document", QByteArray("[{\"Any\":1}]\0 x", 14), 0, 0);
    row("text after the document fails it", R"([{"Any":1}] x)", 0, 0);
    row("an object, not an array", R"({"Any":1})", 0, 0);
    row("repeated reference key: the last wins", R"([{"_RefID":1,"_RefID":2},{"_RefID":1.0}])", 2,
        QMetaType::UnknownType);
}

// Loading the bytes gives what loading the document made of them gives: values and their
// types, identity numbers and, over a reference table, reference records.
void TestRixMemTable::loadFromJsonMatchesDocument()
{
    QFETCH(QByteArray, json);
    QFETCH(int, rows);
    QFETCH(int, anyType);

    const QString fields = QStringLiteral("ID:i,Name,Width:d,Any:?");
    RixMemTable base;
    addFields(base, fields);
    base.loadFromJson(QByteArray(R"([{"ID":1,"Name":"a"},{"ID":2,"Name":"b"}])"));
    const QJsonArray document = QJsonDocument::fromJson(json).array();
    for (RixMemTable *refTable : { static_cast<RixMemTable *>(nullptr), &base }) {
        RixMemTable actual;
        RixMemTable expected;
        if (refTable) {
            actual.setRefTable(refTable);
            expected.setRefTable(refTable);
        } else {
            addFields(actual, fields);
            addFields(expected, fields);
        }
        actual.loadFromJson(json);
        expected.loadFromJson(document);
        QCOMPARE(actual.recordCount(), rows);
        QCOMPARE(typedDump(actual), typedDump(expected));
        if (rows > 0 && !refTable)
            QCOMPARE(actual.items(0)->getVariant(QStringLiteral("Any")).userType(), anyType);
        const std::unique_ptr<RixMemRecord> actualNext(actual.newRecord());
        const std::unique_ptr<RixMemRecord> expectedNext(expected.newRecord());
        QCOMPARE(actualNext->iD(), expectedNext->iD());
    }
}

void TestRixMemTable::repeatedTextsStayValues_data()
{
    QTest::addColumn<QString>("loader");

    QTest::newRow("JSON bytes") << "json";
    QTest::newRow("JSON array") << "array";
    QTest::newRow("CSV file") << "csv";
    QTest::newRow("delimited string") << "string";
}

// The loaders read the same texts over many rows; every record must still hold its own value:
// equal to what was read and unaffected by a change to any other record or to a copy.
void TestRixMemTable::repeatedTextsStayValues()
{
    QFETCH(QString, loader);

    // Kind is distinct at first and repeats later; Name never repeats; Note repeats a long text
    // and a text outside ASCII.
    const int rows = 900;
    const QString longText = QStringLiteral("a text well beyond the length of a short code");
    QVector<QStringList> expected;
    for (int i = 0; i < rows; ++i) {
        const QString kind = i < 300 ? QStringLiteral("K%1").arg(i) : QStringLiteral("K%1").arg(i % 3);
        const QString note = i % 2 ? longText : QStringLiteral("沥青");
        expected.append({ QStringLiteral("R%1").arg(i), kind, note });
    }

    RixMemTable table;
    addFields(table, QStringLiteral("Name,Kind,Note"));
    QTemporaryDir dir;
    if (loader == QLatin1String("json") || loader == QLatin1String("array")) {
        QJsonArray array;
        for (const QStringList &row : qAsConst(expected))
            array.append(QJsonObject { { "Name", row[0] }, { "Kind", row[1] }, { "Note", row[2] } });
        if (loader == QLatin1String("json"))
            table.loadFromJson(QJsonDocument(array).toJson());
        else
            table.loadFromJson(array);
    } else if (loader == QLatin1String("csv")) {
        QByteArray content("Name,Kind,Note\n");
        for (const QStringList &row : qAsConst(expected))
            content += row.join(QLatin1Char(',')).toUtf8() + '\n';
        const QString path = dir.filePath(QStringLiteral("rows.csv"));
        QVERIFY(writeFile(path, content));
        table.loadFromCSVFile(path, true);
    } else {
        QStringList lines;
        for (const QStringList &row : qAsConst(expected))
            lines << row.join(QLatin1Char(';'));
        table.loadFromString(lines.join(QLatin1Char('\n')), QLatin1Char(';'), QStringList());
    }

    QCOMPARE(table.recordCount(), rows);
    QCOMPARE(firstDifference(table, expected), QString());

    // A record changed in place, and a copy of a value changed, leave every other record alone.
    table.items(303)->setAsString(QStringLiteral("Kind"), QStringLiteral("changed"), false);
    table.items(1)->setVariant(QStringLiteral("Note"), QStringLiteral("mine"));
    QString copy = table.items(0)->asString(QStringLiteral("Note"));
    copy[0] = QLatin1Char('x');
    expected[303][1] = QStringLiteral("changed");
    expected[1][2] = QStringLiteral("mine");
    QCOMPARE(firstDifference(table, expected), QString());
}

void TestRixMemTable::saveToJson_data()
{
    QTest::addColumn<QByteArray>("loaded");
    QTest::addColumn<QString>("expected");
    QTest::newRow("stored values, field names as spelled, types kept")
        << QByteArray(R"([{"id":1,"Name":"边沟","Width":0.5}])") << R"([{"ID":1,"Name":"边沟","Width":0.5}])";
    QTest::newRow("null values left out")
        << QByteArray(R"([{"ID":2,"Name":"x"}])") << R"([{"ID":2,"Name":"x"}])";
    QTest::newRow("no records: byte array untouched") << QByteArray("[]") << "untouched";
}

void TestRixMemTable::saveToJson()
{
    QFETCH(QByteArray, loaded);
    QFETCH(QString, expected);
    RixMemTable table;
    addFields(table, QStringLiteral("ID:i,Name,Width:d"));
    table.loadFromJson(loaded);
    QCOMPARE(savedJson(table), expected);
}

void TestRixMemTable::layerSavesOnlyChanges()
{
    RixMemTable base;
    addFields(base, QStringLiteral("ID:i,Name"));
    base.loadFromJson(QByteArray(R"([{"ID":1,"Name":"a"},{"ID":2,"Name":"b"},{"ID":3,"Name":"c"}])"));

    RixMemTable layer;
    layer.setRefTable(&base);
    layer.appendRefRecords(&base);
    QCOMPARE(dump(layer), QStringLiteral("1:1|a;2:2|b;3:3|c"));

    QJsonArray array { QStringLiteral("already there") };
    layer.saveToJson(array);
    QVERIFY2(array.isEmpty(), "an unchanged layer replaces the whole array by an empty one");
    QCOMPARE(savedJson(layer), QStringLiteral("untouched"));

    layer.items(1)->setAsString(QStringLiteral("name"), QStringLiteral("B"), false);
    const QString saved = savedJson(layer);
    QCOMPARE(saved, QStringLiteral(R"([{"_RefID":1},{"Name":"B","_RefID":2},{"_RefID":3}])"));
    QCOMPARE(base.items(1)->asString(QStringLiteral("Name")), QStringLiteral("b"));
    RixMemTable reloaded;
    reloaded.setRefTable(&base);
    reloaded.loadFromJson(saved.toUtf8());
    QCOMPARE(dump(reloaded), QStringLiteral("0:1|a;1:2|B;2:3|c"));
    QCOMPARE(reloaded.items(1)->refRecord(), base.items(1));

    // Setting the reference's value back stores nothing again.
    layer.items(1)->setAsString(QStringLiteral("Name"), QStringLiteral("b"), false);
    QCOMPARE(savedJson(layer), QStringLiteral("untouched"));

    // One record fewer than the reference: saved, although nothing changed.
    layer.deleteRecord(2);
    QCOMPARE(savedJson(layer), QStringLiteral(R"([{"_RefID":1},{"_RefID":2}])"));
}

void TestRixMemTable::addAndRemoveSignals_data()
{
    QTest::addColumn<int>("operation");
    QTest::addColumn<int>("added");
    QTest::addColumn<int>("beforeRemove");
    QTest::addColumn<int>("afterRemove");
    QTest::addColumn<int>("remaining");
    QTest::addColumn<int>("deleted"); // of the two records there before

    QTest::newRow("append") << 0 << 1 << 0 << 0 << 3 << 0;
    QTest::newRow("insert") << 1 << 1 << 0 << 0 << 3 << 0;
    QTest::newRow("removeRecord of a table record") << 2 << 0 << 1 << 1 << 1 << 0;
    QTest::newRow("removeRecord of a foreign record still signals") << 3 << 0 << 1 << 1 << 2 << 0;
    QTest::newRow("deleteRecord(-1) does nothing") << 4 << 0 << 0 << 0 << 2 << 0;
    QTest::newRow("deleteRecord past the end does nothing") << 9 << 0 << 0 << 0 << 2 << 0;
    QTest::newRow("deleteRecord(0) deletes, signalled while still in the table")
        << 5 << 0 << 1 << 1 << 1 << 1;
    QTest::newRow("clear deletes silently") << 6 << 0 << 0 << 0 << 0 << 2;
    QTest::newRow("loaders signal each added record") << 7 << 2 << 0 << 0 << 2 << 2;
    QTest::newRow("appendRefRecords signals each record") << 8 << 2 << 0 << 0 << 4 << 0;
}

void TestRixMemTable::addAndRemoveSignals()
{
    QFETCH(int, operation);
    QFETCH(int, added);
    QFETCH(int, beforeRemove);
    QFETCH(int, afterRemove);
    QFETCH(int, remaining);
    QFETCH(int, deleted);

    RixMemTable table;
    addFields(table, QStringLiteral("a"));
    table.loadFromString(QStringLiteral("x\ny"), QLatin1Char(','), QStringList());
    RixMemRecord foreign(&table);
    const QPointer<RixMemRecord> first = table.items(0);
    const QPointer<RixMemRecord> second = table.items(1);
    int indexSeen = -2;
    connect(&table, &RixMemTable::onBeforeRemove, this, [&](RixMemRecord *r) { indexSeen = r->index(); });

    QSignalSpy addSpy(&table, &RixMemTable::onAfterAdd);
    QSignalSpy beforeSpy(&table, &RixMemTable::onBeforeRemove);
    QSignalSpy afterSpy(&table, &RixMemTable::onAfterRemove);
    RixMemRecord *signalled = nullptr;
    std::unique_ptr<RixMemRecord> detached;
    switch (operation) {
    case 0:
        signalled = table.newRecord();
        table.appendRecord(signalled);
        break;
    case 1:
        signalled = table.newRecord();
        QCOMPARE(table.insertRecord(0, signalled), 0);
        QCOMPARE(table.items(0), signalled);
        break;
    case 2:
        signalled = table.items(1);
        detached.reset(signalled);
        table.removeRecord(signalled);
        break;
    case 3:
        signalled = &foreign;
        table.removeRecord(&foreign);
        break;
    case 4:
        table.deleteRecord(-1);
        break;
    case 5:
        signalled = table.items(0);
        table.deleteRecord(0);
        break;
    case 6:
        table.clear();
        break;
    case 7:
        table.loadFromString(QStringLiteral("1\n2"), QLatin1Char(','), QStringList());
        break;
    case 8:
        table.appendRefRecords(&table);
        break;
    case 9:
        table.deleteRecord(2);
        break;
    }
    QCOMPARE(addSpy.count(), added);
    QCOMPARE(beforeSpy.count(), beforeRemove);
    QCOMPARE(afterSpy.count(), afterRemove);
    QCOMPARE(table.recordCount(), remaining);
    QCOMPARE(int(first.isNull()) + int(second.isNull()), deleted);
    if (operation == 5)
        QCOMPARE(indexSeen, 0);
    if (signalled) {
        const QSignalSpy &spy = added ? addSpy : beforeSpy;
        // Read the pointer without a cast: the record may be deleted by now.
        QCOMPARE(*static_cast<RixMemRecord *const *>(spy.at(0).at(0).constData()), signalled);
    }
    if (detached) {
        // The detached record still names the table: deleting it signals again, harmlessly.
        detached.reset();
        QCOMPARE(beforeSpy.count(), 2);
        QCOMPARE(table.recordCount(), remaining);
    }
}

void TestRixMemTable::sortByField_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<QVariantList>("sorted"); // for records that compare equal: the set of values

    QTest::newRow("int field ascending") << "N" << QVariantList { 3, -1, 2 } << QVariantList { -1, 2, 3 };
    QTest::newRow("double field: 1.4 and 1.2 compare equal")
        << "D" << QVariantList { 2.6, 1.4, 1.2 } << QVariantList { QVariant(), QVariant(), 2.6 };
    QTest::newRow("text field: all equal, a permutation")
        << "T" << QVariantList { "b", "c", "a" } << QVariantList { QVariant(), QVariant(), QVariant() };
    QTest::newRow("unknown field: nothing happens")
        << "Nope" << QVariantList { 2, 1 } << QVariantList { 2, 1 };
}

void TestRixMemTable::sortByField()
{
    QFETCH(QString, field);
    QFETCH(QVariantList, values);
    QFETCH(QVariantList, sorted);

    RixMemTable table;
    addFields(table, QStringLiteral("N:i,D:d,T"));
    const QString valueField = field == QLatin1String("Nope") ? QStringLiteral("N") : field;
    for (const QVariant &value : values) {
        RixMemRecord *record = table.newRecord();
        record->setVariant(valueField, value);
        table.appendRecord(record);
    }
    table.sortByField(field);
    QVariantList actual;
    for (int i = 0; i < table.recordCount(); ++i)
        actual << table.items(i)->getVariant(valueField);
    QCOMPARE(actual.size(), values.size());
    for (int i = 0; i < sorted.size(); ++i) {
        if (sorted.at(i).isValid())
            QCOMPARE(actual.at(i), sorted.at(i));
        QVERIFY(actual.contains(values.at(i)));
    }
}

void TestRixMemTable::referenceTable()
{
    RixMemTable base;
    base.setTableName(QStringLiteral("T"));
    base.addField(QStringLiteral("A"), QString(), QVariant::String);
    RixMemTable middle;
    middle.setTableName(QStringLiteral("own"));
    middle.addField(QStringLiteral("Dropped"), QString(), QVariant::String);
    middle.setRefTable(&base);
    RixMemTable top;
    top.setRefTable(&middle);
    QCOMPARE(top.tableName(), QStringLiteral("T"));
    QCOMPARE(middle.tableName(), QStringLiteral("T"));
    QCOMPARE(top.fields(), base.fields());
    QCOMPARE(top.filedIndex(QStringLiteral("Dropped")), -1);
    // Fields added through a layer go to the bottom table.
    top.addField(QStringLiteral("B"), QString(), QVariant::Int);
    QCOMPARE(base.fields()->count(), 2);
    RixMemRecord *record = top.newRecord();
    QCOMPARE(record->getValues().size(), 2);
    top.appendRecord(record);
    QVERIFY(top.isValid());
    QVERIFY(!base.isValid());

    top.setRefTable(&middle); // same table: nothing happens
    QCOMPARE(top.fields(), base.fields());
    middle.setRefTable(nullptr);
    QVERIFY(middle.fields()->isEmpty());
    QCOMPARE(middle.tableName(), QStringLiteral("own"));
    QCOMPARE(top.fields(), middle.fields());
    top.setRefTable(nullptr);
}

void TestRixMemTable::assign_data()
{
    QTest::addColumn<bool>("layered");
    QTest::addColumn<bool>("withRecords");
    QTest::addColumn<QString>("expected");
    QTest::newRow("plain source with records") << false << true << "0:1|a;1:2|b";
    QTest::newRow("plain source without records") << false << false << "";
    QTest::newRow("layered source: same reference table") << true << true << "0:1|A;1:2|b";
}

void TestRixMemTable::assign()
{
    QFETCH(bool, layered);
    QFETCH(bool, withRecords);
    QFETCH(QString, expected);

    RixMemTable base;
    base.setTableName(QStringLiteral("rules"));
    base.addField(QStringLiteral("ID"), QString(), QVariant::Int);
    base.addField(QStringLiteral("Name"), QStringLiteral("名称"), QVariant::String);
    base.loadFromJson(QByteArray(R"([{"ID":1,"Name":"a"},{"ID":2,"Name":"b"}])"));
    RixMemTable layer;
    layer.setRefTable(&base);
    layer.appendRefRecords(&base);
    layer.items(0)->setVariant(QStringLiteral("Name"), QStringLiteral("A"));

    RixMemTable target;
    target.setTableName(QStringLiteral("mine"));
    target.addField(QStringLiteral("Old"), QString(), QVariant::String);
    target.loadFromString(QStringLiteral("x"), QLatin1Char(','), QStringList());
    target.assign(layered ? &layer : &base, withRecords);
    QCOMPARE(dump(target), expected);
    QCOMPARE(target.tableName(), QStringLiteral("rules"));
    QCOMPARE(target.refTable(), layered ? &base : nullptr);
    if (!layered) {
        QVERIFY(target.fields() != base.fields());
        QCOMPARE(target.fields()->fieldNames(), base.fields()->fieldNames());
        QCOMPARE(target.field(1)->displayName(), QStringLiteral("名称"));
    } else {
        QCOMPARE(target.items(1)->refRecord(), base.items(1));
    }
}

void TestRixMemTable::findAndColumnQueries()
{
    RixMemTable table;
    addFields(table, QStringLiteral("ID:i,Name,Empty"));
    QVERIFY(table.columnDataIsNull(0));
    QVERIFY(!table.isValid());
    table.loadFromJson(QByteArray(R"([{"ID":1,"Name":"a"},{"ID":2,"Name":"b"},{"ID":3,"Name":"b"}])"));
    QCOMPARE(table.findRecordIndex(QStringLiteral("name"), QStringLiteral("b")), 1);
    QCOMPARE(table.findRecord(QStringLiteral("ID"), QStringLiteral("3")), table.items(2));
    QCOMPARE(table.findRecordIndex(QStringLiteral("Name"), QStringLiteral("z")), -1);
    QCOMPARE(table.findRecord(QStringLiteral("Name"), QStringLiteral("z")), nullptr);
    QVERIFY(table.columnDataIsNull(2));
    QVERIFY(!table.columnDataIsNull(1));
    QVERIFY(table.canAccess(2));
    QVERIFY(!table.canAccess(3));
    QVERIFY(!table.canAccess(-1));
    QCOMPARE(table.indexOf(table[1]), 1);
    QCOMPARE(table.indexOf(nullptr), -1);
    QVERIFY(table.isValid());
}

QTEST_GUILESS_MAIN(TestRixMemTable)
#include "tst_rixmemtable.moc"
