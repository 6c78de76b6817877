#include <rixmemfields.h>
#include <rixmemrecord.h>
#include <rixmemrecordexprparser.h>
#include <rixmemrecordexprvarquerier.h>
#include <rixmemtable.h>
#include <tovtestutil.h>

#include <QtTest>

#include <functional>
#include <memory>

namespace {

// Knows a fixed set of variables; may compute one through a function.
class MapQuerier : public RixMemRecordExprVarQuerier
{
public:
    QHash<QString, QVariant> values;
    std::function<QVariant(const QString &)> compute;
    int valueQueries = 0;

    bool queryVarDataType(const QString &varCode, QVariant::Type &dataType) override
    {
        if (!values.contains(varCode))
            return false;
        dataType = values.value(varCode).type();
        return true;
    }
    bool queryVarValue(const QString &varCode, QVariant &value) override
    {
        ++valueQueries;
        if (!values.contains(varCode))
            return false;
        value = compute ? compute(varCode) : values.value(varCode);
        return true;
    }
};

} // namespace

class TestRixMemRecordExprParser : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void accept_data();
    void accept();
    void failedExpressionReports();
    void acceptReadsTheRecordsValues();
    void asVariant_data();
    void asVariant();
    void asVariantUnknownFieldReports();
    void querierComesFirst();
    void copyKeepsWorkingAfterOriginalGoes();

    void asExprValue_data();
    void asExprValue();
    void nestedEvaluationKeepsOuterParser();
    void layeredTableEvaluatesByName();

private:
    RixMemRecord *addRecord(double width, const QString &kind, int count);

    std::unique_ptr<RixMemTable> m_table;
};

void TestRixMemRecordExprParser::init()
{
    m_table = std::make_unique<RixMemTable>();
    m_table->addField(QStringLiteral("Width"), QString(), QVariant::Double);
    m_table->addField(QStringLiteral("Kind"), QString(), QVariant::String);
    m_table->addField(QStringLiteral("Count"), QString(), QVariant::Int);
    m_table->addField(QStringLiteral("Paved"), QString(), QVariant::Bool);
    m_table->addField(QStringLiteral("Formula"), QString(), QVariant::String);
}

RixMemRecord *TestRixMemRecordExprParser::addRecord(double width, const QString &kind, int count)
{
    RixMemRecord *record = m_table->newRecord();
    record->setVariant(QStringLiteral("Width"), width);
    record->setVariant(QStringLiteral("Kind"), kind);
    record->setVariant(QStringLiteral("Count"), count);
    record->setVariant(QStringLiteral("Paved"), true);
    m_table->appendRecord(record);
    return record;
}

void TestRixMemRecordExprParser::accept_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<bool>("expected");
    QTest::addColumn<int>("debugLines");

    QTest::newRow("number and text conditions hold") << "Width>3 and Kind=\"A\"" << true << 0;
    QTest::newRow("number condition fails") << "Width>5 and Kind=\"A\"" << false << 0;
    QTest::newRow("names are case-insensitive") << "width*2=9 and KIND=\"A\"" << true << 0;
    QTest::newRow("integer field") << "Count+1=4" << true << 0;
    QTest::newRow("boolean field") << "Paved" << true << 0;
    QTest::newRow("text result reads as boolean") << "Kind" << false << 0;
    QTest::newRow("number result reads as boolean") << "Count" << true << 0;
    QTest::newRow("null value fails and reports") << "Formula=\"\"" << false << 1;
    QTest::newRow("unknown field fails and reports") << "Nope>1" << false << 1;
}

void TestRixMemRecordExprParser::accept()
{
    QFETCH(QString, expression);
    QFETCH(bool, expected);
    QFETCH(int, debugLines);

    RixMemRecord *record = addRecord(4.5, QStringLiteral("A"), 3);
    RixMemRecordExprParser parser(m_table->fields());
    parser.setExpression(expression);
    QVERIFY(parser.isValid());
    DebugCapture capture;
    QCOMPARE(parser.accept(record), expected);
    QCOMPARE(capture.lines().size(), debugLines);
}

void TestRixMemRecordExprParser::failedExpressionReports()
{
    RixMemRecord *record = addRecord(4.5, QStringLiteral("A"), 3);
    RixMemRecordExprParser parser(m_table->fields());
    QVERIFY(!parser.isValid());
    QVERIFY(!parser.accept(record));
    parser.setExpression(QStringLiteral("Width>3"));
    QVERIFY(parser.accept(record));

    DebugCapture capture;
    parser.setExpression(QStringLiteral("Width >"));
    QVERIFY(!parser.isValid());
    // The earlier expression is gone, not kept.
    QVERIFY(!parser.accept(record));
    QCOMPARE(capture.lines().size(), 1);
    const QString line = capture.lines().first();
    QVERIFY2(line.startsWith(QStringLiteral("表达式 Width > 有误，无法解析, [")), qPrintable(line));
    QVERIFY2(line.endsWith(QLatin1Char(']')) && line.size() > 22, qPrintable(line));
}

// The record's own values are read: through its reference record, and by its own table's field
// indexes (same names, other order) rather than the parser's.
void TestRixMemRecordExprParser::acceptReadsTheRecordsValues()
{
    RixMemRecord *base = addRecord(4.5, QStringLiteral("A"), 3);
    RixMemRecord *layer = m_table->newRecord();
    layer->setRefRecord(base);
    layer->setVariant(QStringLiteral("Kind"), QStringLiteral("B"));
    m_table->appendRecord(layer);
    RixMemRecordExprParser parser(m_table->fields());
    parser.setExpression(QStringLiteral("Width>3 and Kind=\"B\""));
    QVERIFY(parser.accept(layer));
    QVERIFY(!parser.accept(base));

    RixMemTable other;
    other.addField(QStringLiteral("Kind"), QString(), QVariant::String);
    other.addField(QStringLiteral("Width"), QString(), QVariant::Double);
    RixMemRecord *foreign = other.newRecord();
    foreign->setVariant(QStringLiteral("Kind"), QStringLiteral("A"));
    foreign->setVariant(QStringLiteral("Width"), 4.0);
    other.appendRecord(foreign);
    parser.setExpression(QStringLiteral("Width>3 and Kind=\"A\""));
    QVERIFY(parser.accept(foreign));
    QVERIFY(!parser.accept(addRecord(1.0, QStringLiteral("A"), 1)));
}

void TestRixMemRecordExprParser::asVariant_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QVariant>("expected");

    QTest::newRow("double arithmetic") << "Width*2" << QVariant(9.0);
    QTest::newRow("integer arithmetic stays integer") << "Count*2" << QVariant(6);
    QTest::newRow("text joins") << "Kind & \"x\"" << QVariant(QStringLiteral("Ax"));
    QTest::newRow("comparison") << "Count>=3" << QVariant(true);
    QTest::newRow("division by zero is null") << "Width/0" << QVariant();
    QTest::newRow("unparsable text is null") << "Width*" << QVariant();
}

void TestRixMemRecordExprParser::asVariant()
{
    QFETCH(QString, expression);
    QFETCH(QVariant, expected);

    RixMemRecord *record = addRecord(4.5, QStringLiteral("A"), 3);
    DebugCapture capture;
    RixMemRecordExprParser parser(m_table->fields());
    const QVariant value = parser.asVariant(expression, nullptr, record);
    QCOMPARE(value, expected);
    if (expected.isValid())
        QCOMPARE(value.type(), expected.type());
    QCOMPARE(capture.lines().isEmpty(), expected.isValid());
}

void TestRixMemRecordExprParser::asVariantUnknownFieldReports()
{
    RixMemRecord *record = addRecord(4.5, QStringLiteral("A"), 3);
    RixMemRecordExprParser parser(m_table->fields());
    DebugCapture capture;
    QVERIFY(parser.asVariant(QStringLiteral("Nope+1"), nullptr, record).isNull());
    QCOMPARE(capture.lines().size(), 2);
    QCOMPARE(capture.lines().at(0), QStringLiteral("RixMemTableExprParser:104"));
    QVERIFY2(capture.lines().at(1).startsWith(QStringLiteral("表达式 Nope+1 有误，无法解析, [")),
        qPrintable(capture.lines().at(1)));
    QVERIFY(capture.lines().at(1).contains(QStringLiteral("Nope")));
}

void TestRixMemRecordExprParser::querierComesFirst()
{
    RixMemRecord *record = addRecord(4.5, QStringLiteral("A"), 3);
    MapQuerier querier;
    querier.values.insert(QStringLiteral("Width"), 10);
    querier.values.insert(QStringLiteral("Limit"), 2.5);
    RixMemRecordExprParser parser(m_table->fields());

    // The querier's integer replaces the double field, for type and value alike.
    QCOMPARE(parser.asVariant(QStringLiteral("Width*Count"), &querier, record), QVariant(30));
    QCOMPARE(parser.asVariant(QStringLiteral("Limit+Count"), &querier, record), QVariant(5.5));
    // The querier is borrowed for one call only.
    const int queries = querier.valueQueries;
    QCOMPARE(parser.asVariant(QStringLiteral("Width*2"), nullptr, record), QVariant(9.0));
    QCOMPARE(querier.valueQueries, queries);
}

void TestRixMemRecordExprParser::copyKeepsWorkingAfterOriginalGoes()
{
    RixMemRecord *record = addRecord(4.5, QStringLiteral("A"), 3);
    auto original = std::make_unique<RixMemRecordExprParser>(m_table->fields());
    original->setExpression(QStringLiteral("Width>4"));
    RixMemRecordExprParser copy(*original);
    original.reset();
    QVERIFY(copy.isValid());
    QVERIFY(copy.accept(record));
}

void TestRixMemRecordExprParser::asExprValue_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QVariant>("expected");

    QTest::newRow("numeric text is returned unevaluated")
        << QVariant(QStringLiteral("3")) << QVariant(QStringLiteral("3"));
    QTest::newRow("empty text is returned") << QVariant(QStringLiteral("")) << QVariant(QStringLiteral(""));
    QTest::newRow("null is returned") << QVariant() << QVariant();
    QTest::newRow("number is returned") << QVariant(7) << QVariant(7);
    QTest::newRow("expression text is evaluated") << QVariant(QStringLiteral("Width*2")) << QVariant(9.0);
    QTest::newRow("expression with a text result")
        << QVariant(QStringLiteral("Kind & Kind")) << QVariant(QStringLiteral("AA"));
    QTest::newRow("failing expression is null") << QVariant(QStringLiteral("Width/0")) << QVariant();
}

void TestRixMemRecordExprParser::asExprValue()
{
    QFETCH(QVariant, stored);
    QFETCH(QVariant, expected);

    RixMemRecord *record = addRecord(4.5, QStringLiteral("A"), 3);
    record->setVariant(QStringLiteral("Formula"), stored);
    DebugCapture capture;
    const QVariant value = record->asExprValue(QStringLiteral("Formula"), nullptr);
    QCOMPARE(value, expected);
    QCOMPARE(value.type(), expected.type());
}

void TestRixMemRecordExprParser::nestedEvaluationKeepsOuterParser()
{
    RixMemRecord *record = addRecord(4.5, QStringLiteral("A"), 3);
    record->setVariant(QStringLiteral("Formula"), QStringLiteral("Width+Count"));
    MapQuerier querier;
    querier.values.insert(QStringLiteral("Inner"), 0.0);
    // Inner is the record's Formula, evaluated from inside the outer evaluation.
    querier.compute
        = [&](const QString &) { return record->asExprValue(QStringLiteral("Formula"), nullptr); };

    const QVariant first = m_table->calcExprVal(QStringLiteral("Inner*10+Count"), &querier, record);
    QCOMPARE(first, QVariant(78.0));
    // The table's parser is reused afterwards, at depth 0 again.
    QCOMPARE(m_table->calcExprVal(QStringLiteral("Count-1"), nullptr, record), QVariant(2));
    QCOMPARE(m_table->calcExprVal(QStringLiteral("Inner+Width"), &querier, record), QVariant(12.0));
}

void TestRixMemRecordExprParser::layeredTableEvaluatesByName()
{
    RixMemRecord *base = addRecord(4.5, QStringLiteral("A"), 3);
    RixMemTable layer;
    layer.setRefTable(m_table.get());
    layer.appendRefRecords(m_table.get());
    RixMemRecord *record = layer.items(0);
    QCOMPARE(record->refRecord(), base);
    QCOMPARE(layer.calcExprVal(QStringLiteral("Width*2"), nullptr, record), QVariant(9.0));

    // A parser made while layered does not outlive the table's own field set when the layer is
    // lifted.
    layer.setRefTable(nullptr);
    layer.addField(QStringLiteral("Width"), QString(), QVariant::Double);
    RixMemRecord *own = layer.newRecord();
    own->setVariant(QStringLiteral("Width"), 2.0);
    layer.appendRecord(own);
    QCOMPARE(layer.calcExprVal(QStringLiteral("Width*2"), nullptr, own), QVariant(4.0));
}

QTEST_GUILESS_MAIN(TestRixMemRecordExprParser)
#include "tst_rixmemrecordexprparser.moc"
