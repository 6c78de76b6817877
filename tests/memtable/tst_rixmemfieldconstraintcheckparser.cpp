#include <rixmemfield.h>
#include <rixmemfieldconstraintcheckparser.h>
#include <rixmemrecord.h>
#include <rixmemtable.h>
#include <tovexception.h>
#include <tovtestutil.h>

#include <QtTest>

#include <memory>

class TestRixMemFieldConstraintCheckParser : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void validate_data();
    void validate();
    void evaluateAndAsVariant();
    void copiesEvaluateOnTheirOwn();

    void setAsStringCheck_data();
    void setAsStringCheck();

private:
    RixMemRecord *addRecord(double width, double height);

    std::unique_ptr<RixMemTable> m_table;
};

void TestRixMemFieldConstraintCheckParser::init()
{
    m_table = std::make_unique<RixMemTable>();
    m_table->addField(QStringLiteral("Width"), QStringLiteral("宽度"), QVariant::Double);
    m_table->addField(QStringLiteral("Height"), QString(), QVariant::Double);
    m_table->addField(QStringLiteral("Count"), QString(), QVariant::Int);
    m_table->addField(QStringLiteral("Name"), QString(), QVariant::String);
    m_table->addField(QStringLiteral("Paved"), QString(), QVariant::Bool);
    m_table->addField(QStringLiteral("Big"), QString(), QVariant::LongLong);
}

RixMemRecord *TestRixMemFieldConstraintCheckParser::addRecord(double width, double height)
{
    RixMemRecord *record = m_table->newRecord();
    record->setVariant(QStringLiteral("Width"), width);
    record->setVariant(QStringLiteral("Height"), height);
    record->setVariant(QStringLiteral("Name"), QStringLiteral("road"));
    m_table->appendRecord(record);
    return record;
}

void TestRixMemFieldConstraintCheckParser::validate_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("constraint");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("expected");

    QTest::addColumn<QStringList>("report");
    // An unreadable number is thrown without a message: the field's message speaks for it.
    const auto row = [](const char *name, const char *field, const char *constraint, const char *text,
                         bool expected, const char *report) {
        QTest::newRow(name) << field << constraint << text << expected
                            << (report ? QStringList { QStringLiteral("RixMemTableExprParser:215"), report }
                                       : QStringList());
    };
    row("double text above zero passes", "Width", "#>0", "2.5", true, nullptr);
    row("double text zero fails", "Width", "#>0", "0", false, nullptr);
    row("non-numeric text in a double field fails", "Width", "#>0", "abc", false, "");
    row("empty text in a double field fails", "Width", "#>0", "", false, "");
    row("field name in another case stands for the text", "Width", "width>0", "2.5", true, nullptr);
    row("field name in another case fails like #", "Width", "WIDTH>0", "-1", false, nullptr);
    row("integer field takes a decimal integer", "Count", "#>=1", "3", true, nullptr);
    row("integer field rejects a fraction", "Count", "#>=1", "1.5", false, "");
    row("64-bit field is not given the text", "Big", "#>0", "5", false, "变量[#]没有值");
    row("bool field reads true text", "Paved", "Paved", "yes", true, nullptr);
    row("bool field reads false text", "Paved", "#", "否", false, nullptr);
    row("text field compares as text", "Name", "len(#)<=3 and #<>\"x\"", "abc", true, nullptr);
    row("text field too long fails", "Name", "len(#)<=3", "abcd", false, nullptr);
    row("numeric result fails", "Width", "1+1", "2", false, nullptr);
    row("text result fails", "Name", "#", "true", false, nullptr);
    row("other field answers its current value", "Width", "#<Height", "4", true, nullptr);
    row("other field bounds the text", "Width", "#<Height", "6", false, nullptr);
    row("other field of another case", "Width", "#*2<=height*2", "5", true, nullptr);
    row("unknown variable fails", "Width", "#>Nope", "1", false, "变量[Nope]没有值");
    row("unparsable constraint fails", "Width", "#>", "1", false, "表达式[#>]第3个字符处: 缺少运算数");
}

void TestRixMemFieldConstraintCheckParser::validate()
{
    QFETCH(QString, field);
    QFETCH(QString, constraint);
    QFETCH(QString, text);
    QFETCH(bool, expected);
    QFETCH(QStringList, report);

    // The values of a record over a reference record are read through it.
    RixMemRecord *base = addRecord(1.0, 5.0);
    RixMemRecord *layer = m_table->newRecord();
    layer->setRefRecord(base);
    m_table->appendRecord(layer);
    for (RixMemRecord *record : { base, layer }) {
        DebugCapture capture;
        RixMemFieldConstraintCheckParser parser(record);
        QCOMPARE(parser.validate(constraint, m_table->findField(field), text), expected);
        QCOMPARE(capture.lines(), report);
        // The record under edit is never written by a check.
        QCOMPARE(record->getVariant(QStringLiteral("Width")), QVariant(1.0));
    }
}

void TestRixMemFieldConstraintCheckParser::evaluateAndAsVariant()
{
    RixMemRecord *record = addRecord(1.5, 5.0);
    RixMemFieldConstraintCheckParser parser(record);
    QCOMPARE(parser.evaluate(QStringLiteral("Width+Height")).asFloat(), 6.5);
    QCOMPARE(parser.asVariant(QStringLiteral("Height*2")), QVariant(10.0));

    // Without a check under way "#" is no value of its own.
    DebugCapture capture;
    QVERIFY(parser.asVariant(QStringLiteral("#+1")).isNull());
    QCOMPARE(capture.lines().size(), 2);
    QCOMPARE(capture.lines().at(0), QStringLiteral("RixMemTableExprParser:194"));
    QVERIFY(!capture.lines().at(1).isEmpty());

    bool thrown = false;
    try {
        parser.evaluate(QStringLiteral("Width*"));
    } catch (const SefException &) {
        thrown = true;
    }
    QVERIFY2(thrown, "evaluate hands engine failures on");
}

void TestRixMemFieldConstraintCheckParser::copiesEvaluateOnTheirOwn()
{
    RixMemRecord *first = addRecord(1.0, 5.0);
    RixMemRecord *second = addRecord(1.0, 50.0);
    RixMemField *width = m_table->findField(QStringLiteral("Width"));
    RixMemFieldConstraintCheckParser parser(first);
    {
        RixMemFieldConstraintCheckParser copy(parser);
        copy = RixMemFieldConstraintCheckParser(second);
        QVERIFY(copy.validate(QStringLiteral("#<Height"), width, QStringLiteral("20")));
    }
    // The copies are gone; the original answers from its own record again.
    QVERIFY(!parser.validate(QStringLiteral("#<Height"), width, QStringLiteral("20")));
}

void TestRixMemFieldConstraintCheckParser::setAsStringCheck_data()
{
    QTest::addColumn<QString>("constraint");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QVariant>("preset"); // the width stored before; invalid: none
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("error"); // empty: the text is stored
    const auto row = [](const char *name, const char *constraint, const char *message, const QVariant &preset,
                         const char *text, const char *error) {
        QTest::newRow(name) << constraint << message << preset << text << error;
    };
    const QVariant none;
    row("failure carries the field's message", "#>0", "宽度必须大于0", none, "-2", "宽度必须大于0");
    row("failure without message carries the default text", "#>0", "", none, "-2", "属性值[-2]非法");
    row("unreadable number carries the default text", "#>0", "", none, "abc", "属性值[abc]非法");
    row("unparsable constraint rejects every text", "#>>0", "", none, "3", "属性值[3]非法");
    row("an empty entry is checked though unchanged", "#>0", "必填", none, "", "必填");
    row("a changed text is checked, the stored value kept", "#>10", "", 3.0, "4", "属性值[4]非法");
    row("an unchanged text is not checked", "#>10", "", 3.0, "3", "");
    row("passing text is stored converted", "#>0 and #<Height", "x", none, "4.25", "");
    row("no constraint accepts anything", "", "x", none, "abc", "");
}

void TestRixMemFieldConstraintCheckParser::setAsStringCheck()
{
    QFETCH(QString, constraint);
    QFETCH(QString, message);
    QFETCH(QVariant, preset);
    QFETCH(QString, text);
    QFETCH(QString, error);

    RixMemField *width = m_table->findField(QStringLiteral("Width"));
    width->setConstraintExpr(constraint);
    width->setConstraintMsg(message);
    RixMemRecord *record = m_table->newRecord();
    record->setVariant(QStringLiteral("Height"), 5.0);
    record->setVariant(QStringLiteral("Width"), preset);
    record->setNeedConvert(true);
    m_table->appendRecord(record);

    if (error.isEmpty()) {
        record->setAsString(QStringLiteral("Width"), text, true);
        QCOMPARE(record->asString(QStringLiteral("Width")), text);
        bool number = false;
        text.toDouble(&number);
        QCOMPARE(
            record->getVariant(QStringLiteral("Width")).type(), number ? QVariant::Double : QVariant::String);
        return;
    }
    TOV_VERIFY_THROWS(record->setAsString(QStringLiteral("Width"), text, true), TovException, error, -1);
    QCOMPARE(record->getVariant(QStringLiteral("Width")), preset);
    // Without the check the same text is stored.
    record->setAsString(QStringLiteral("Width"), text, false);
    QCOMPARE(record->asString(QStringLiteral("Width")), text);
}

QTEST_GUILESS_MAIN(TestRixMemFieldConstraintCheckParser)
#include "tst_rixmemfieldconstraintcheckparser.moc"
