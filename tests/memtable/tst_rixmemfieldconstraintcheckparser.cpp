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
    void cleanup();

    void validate_data();
    void validate();
    void validateReadsInheritedValues();
    void failureReports_data();
    void failureReports();
    void evaluateAndAsVariant();
    void copiesEvaluateOnTheirOwn();

    void setAsStringCheck_data();
    void setAsStringCheck();
    void unchangedTextIsNotChecked();
    void acceptedTextIsConverted();

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

void TestRixMemFieldConstraintCheckParser::cleanup()
{
    m_table.reset();
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

    QTest::newRow("double text above zero passes") << "Width"
                                                   << "#>0"
                                                   << "2.5" << true;
    QTest::newRow("double text zero fails") << "Width"
                                            << "#>0"
                                            << "0" << false;
    QTest::newRow("non-numeric text in a double field fails") << "Width"
                                                              << "#>0"
                                                              << "abc" << false;
    QTest::newRow("empty text in a double field fails") << "Width"
                                                        << "#>0"
                                                        << "" << false;
    QTest::newRow("field name in another case stands for the text") << "Width"
                                                                    << "width>0"
                                                                    << "2.5" << true;
    QTest::newRow("field name in another case fails like #") << "Width"
                                                             << "WIDTH>0"
                                                             << "-1" << false;
    QTest::newRow("integer field takes a decimal integer") << "Count"
                                                           << "#>=1"
                                                           << "3" << true;
    QTest::newRow("integer field rejects a fraction") << "Count"
                                                      << "#>=1"
                                                      << "1.5" << false;
    QTest::newRow("64-bit field is not given the text") << "Big"
                                                        << "#>0"
                                                        << "5" << false;
    QTest::newRow("bool field reads true text") << "Paved"
                                                << "Paved"
                                                << "yes" << true;
    QTest::newRow("bool field reads false text") << "Paved"
                                                 << "#"
                                                 << "否" << false;
    QTest::newRow("text field compares as text") << "Name"
                                                 << "len(#)<=3 and #<>\"x\""
                                                 << "abc" << true;
    QTest::newRow("text field too long fails") << "Name"
                                               << "len(#)<=3"
                                               << "abcd" << false;
    QTest::newRow("numeric result fails") << "Width"
                                          << "1+1"
                                          << "2" << false;
    QTest::newRow("text result fails") << "Name"
                                       << "#"
                                       << "true" << false;
    QTest::newRow("other field answers its current value") << "Width"
                                                           << "#<Height"
                                                           << "4" << true;
    QTest::newRow("other field bounds the text") << "Width"
                                                 << "#<Height"
                                                 << "6" << false;
    QTest::newRow("other field of another case") << "Width"
                                                 << "#*2<=height*2"
                                                 << "5" << true;
    QTest::newRow("unknown variable fails") << "Width"
                                            << "#>Nope"
                                            << "1" << false;
    QTest::newRow("unparsable constraint fails") << "Width"
                                                 << "#>"
                                                 << "1" << false;
}

void TestRixMemFieldConstraintCheckParser::validate()
{
    QFETCH(QString, field);
    QFETCH(QString, constraint);
    QFETCH(QString, text);
    QFETCH(bool, expected);

    RixMemRecord *record = addRecord(1.0, 5.0);
    DebugCapture capture;
    RixMemFieldConstraintCheckParser parser(record);
    QCOMPARE(parser.validate(constraint, m_table->findField(field), text), expected);
    // The record under edit is never written by a check.
    QCOMPARE(record->getVariant(QStringLiteral("Width")), QVariant(1.0));
}

void TestRixMemFieldConstraintCheckParser::validateReadsInheritedValues()
{
    RixMemRecord *base = addRecord(1.0, 5.0);
    RixMemRecord *layer = m_table->newRecord();
    layer->setRefRecord(base);
    m_table->appendRecord(layer);

    RixMemFieldConstraintCheckParser parser(layer);
    RixMemField *width = m_table->findField(QStringLiteral("Width"));
    QVERIFY(parser.validate(QStringLiteral("#<Height"), width, QStringLiteral("4.5")));
    QVERIFY(!parser.validate(QStringLiteral("#<Height"), width, QStringLiteral("5.5")));
}

void TestRixMemFieldConstraintCheckParser::failureReports_data()
{
    QTest::addColumn<QString>("constraint");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");

    // An unreadable number is thrown without a message: the field's message speaks for it.
    QTest::newRow("unreadable number reports an empty message")
        << "#>0"
        << "abc" << QStringList { QStringLiteral("RixMemTableExprParser:215"), QString() };
    QTest::newRow("non-boolean result reports nothing") << "#+1"
                                                        << "1" << QStringList();
    QTest::newRow("passing check reports nothing") << "#>0"
                                                   << "1" << QStringList();
}

void TestRixMemFieldConstraintCheckParser::failureReports()
{
    QFETCH(QString, constraint);
    QFETCH(QString, text);
    QFETCH(QStringList, expected);

    RixMemRecord *record = addRecord(1.0, 5.0);
    RixMemFieldConstraintCheckParser parser(record);
    DebugCapture capture;
    parser.validate(constraint, m_table->findField(QStringLiteral("Width")), text);
    QCOMPARE(capture.lines(), expected);
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
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expectedError");

    QTest::newRow("failure carries the field's message")
        << "#>0" << QStringLiteral("宽度必须大于0") << "-2" << QStringLiteral("宽度必须大于0");
    QTest::newRow("failure without message carries the default text")
        << "#>0" << QString() << "-2" << QStringLiteral("属性值[-2]非法");
    QTest::newRow("unreadable number carries the default text")
        << "#>0" << QString() << "abc" << QStringLiteral("属性值[abc]非法");
    QTest::newRow("unparsable constraint rejects every text")
        << "#>>0" << QString() << "3" << QStringLiteral("属性值[3]非法");
    QTest::newRow("an empty entry is checked though unchanged")
        << "#>0" << QStringLiteral("必填") << "" << QStringLiteral("必填");
    QTest::newRow("passing text is stored") << "#>0" << QStringLiteral("x") << "2" << QString();
    QTest::newRow("no constraint accepts anything") << "" << QStringLiteral("x") << "abc" << QString();
}

void TestRixMemFieldConstraintCheckParser::setAsStringCheck()
{
    QFETCH(QString, constraint);
    QFETCH(QString, message);
    QFETCH(QString, text);
    QFETCH(QString, expectedError);

    RixMemField *height = m_table->findField(QStringLiteral("Height"));
    height->setConstraintExpr(constraint);
    height->setConstraintMsg(message);
    RixMemRecord *record = m_table->newRecord();
    m_table->appendRecord(record);

    if (expectedError.isEmpty()) {
        record->setAsString(QStringLiteral("Height"), text, true);
        QCOMPARE(record->asString(QStringLiteral("Height")), text);
        return;
    }
    TOV_VERIFY_THROWS(
        record->setAsString(QStringLiteral("Height"), text, true), TovException, expectedError, -1);
    QVERIFY(record->getVariant(QStringLiteral("Height")).isNull());
    // Without the check the same text is stored.
    record->setAsString(QStringLiteral("Height"), text, false);
    QCOMPARE(record->asString(QStringLiteral("Height")), text);
}

void TestRixMemFieldConstraintCheckParser::unchangedTextIsNotChecked()
{
    RixMemRecord *record = addRecord(3.0, 5.0);
    RixMemField *width = m_table->findField(QStringLiteral("Width"));
    width->setConstraintExpr(QStringLiteral("#>10"));
    // The stored text equals the entry: nothing to store, so nothing to check.
    record->setAsString(QStringLiteral("Width"), QStringLiteral("3"), true);
    TOV_VERIFY_THROWS(record->setAsString(QStringLiteral("Width"), QStringLiteral("4"), true), TovException,
        QStringLiteral("属性值[4]非法"), -1);
    QCOMPARE(record->getVariant(QStringLiteral("Width")), QVariant(3.0));
}

void TestRixMemFieldConstraintCheckParser::acceptedTextIsConverted()
{
    RixMemRecord *record = addRecord(3.0, 5.0);
    record->setNeedConvert(true);
    m_table->findField(QStringLiteral("Width"))->setConstraintExpr(QStringLiteral("#>0 and #<Height"));
    record->setAsString(QStringLiteral("Width"), QStringLiteral("4.25"), true);
    const QVariant stored = record->getVariant(QStringLiteral("Width"));
    QCOMPARE(stored.type(), QVariant::Double);
    QCOMPARE(stored.toDouble(), 4.25);
}

QTEST_GUILESS_MAIN(TestRixMemFieldConstraintCheckParser)
#include "tst_rixmemfieldconstraintcheckparser.moc"
