#include <sefcommon.h>
#include <tovtestutil.h>

#include <QDateTime>
#include <QtTest>

#include <limits>

class TestSefCommon : public QObject
{
    Q_OBJECT

private slots:
    void isNumeric_data();
    void isNumeric();
    void strToFloatDef_data();
    void strToFloatDef();
    void strToBoolDef_data();
    void strToBoolDef();
    void variantToString_data();
    void variantToString();
    void pos_data();
    void pos();
    void trim_data();
    void trim();
};

void TestSefCommon::isNumeric_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("expected");
    row("integer", "12", true);
    row("negative fraction", "-3.5", true);
    row("leading point", ".5", true);
    row("trailing point", "5.", true);
    row("exponent", "1e3", true);
    row("signed upper-case exponent", "2.5E-4", true);
    row("surrounding blanks are trimmed", "  42\t", true);
    row("empty", "", false);
    row("letters", "abc", false);
    row("grouping comma", "1,000", false);
    row("two points", "1.2.3", false);
    row("sign alone", "-", false);
    row("exponent without digits", "1e", false);
    row("inner blank", "1 2", false);
    row("hex", "0x10", false);
    row("full-width digits", QStringLiteral("１２"), false);
}

void TestSefCommon::isNumeric()
{
    QFETCH(QString, text);
    QFETCH(bool, expected);
    QCOMPARE(SefCommon::isNumeric(text), expected);
}

void TestSefCommon::strToFloatDef_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("def");
    QTest::addColumn<double>("expected");
    row("number", "-3.5", 9.0, -3.5);
    row("exponent", "1e3", 9.0, 1000.0);
    row("trimmed", " 8 ", 9.0, 8.0);
    row("not a number gives default", "abc", 9.0, 9.0);
    row("empty gives default", "", 4.5, 4.5);
}

void TestSefCommon::strToFloatDef()
{
    QFETCH(QString, text);
    QFETCH(double, def);
    QFETCH(double, expected);
    QCOMPARE(SefCommon::strToFloatDef(text, def), expected);
}

void TestSefCommon::strToBoolDef_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("def");
    QTest::addColumn<bool>("expected");
    for (const char *t : { "true", "TRUE", "Yes", "y", "1", " true " })
        QTest::addRow("true word '%s'", t) << QString::fromLatin1(t) << false << true;
    row("true word 是", QStringLiteral("是"), false, true);
    row("true word 真", QStringLiteral("真"), false, true);
    for (const char *t : { "false", "False", "NO", "n", "0" })
        QTest::addRow("false word '%s'", t) << QString::fromLatin1(t) << true << false;
    row("false word 否", QStringLiteral("否"), true, false);
    row("false word 假", QStringLiteral("假"), true, false);
    row("other non-zero number is true", "2.5", false, true);
    row("zero in another form is false", "0.0", true, false);
    row("unknown word gives default true", "maybe", true, true);
    row("unknown word gives default false", "maybe", false, false);
    row("empty gives default", "", true, true);
}

void TestSefCommon::strToBoolDef()
{
    QFETCH(QString, text);
    QFETCH(bool, def);
    QFETCH(bool, expected);
    QCOMPARE(SefCommon::strToBoolDef(text, def), expected);
    if (!def) // strToBool defaults to false
        QCOMPARE(SefCommon::strToBool(text), expected);
}

void TestSefCommon::variantToString_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("expected");
    row("invalid", QVariant(), QString());
    row("null string", QVariant(QString()), QString());
    row("null int", QVariant(QVariant::Int), QString());
    row("bool true", QVariant(true), "true");
    row("bool false", QVariant(false), "false");
    row("int", QVariant(-42), "-42");
    row("long long beyond 32 bits", QVariant(qlonglong(1) << 40), "1099511627776");
    row("unsigned long long max", QVariant(std::numeric_limits<qulonglong>::max()), "18446744073709551615");
    row("double 0.1 shortest", QVariant(0.1), "0.1");
    row("whole double has no point", QVariant(3.0), "3");
    row("double needing 17 digits", QVariant(0.1 + 0.2), "0.30000000000000004");
    row("date-time ISO", QVariant(QDateTime(QDate(2024, 3, 5), QTime(7, 8, 9))), "2024-03-05T07:08:09.000");
    row("date ISO", QVariant(QDate(2024, 12, 31)), "2024-12-31");
    row("string as is", QVariant(QStringLiteral(" 路面 ")), QStringLiteral(" 路面 "));
}

void TestSefCommon::variantToString()
{
    QFETCH(QVariant, value);
    QFETCH(QString, expected);
    QCOMPARE(SefCommon::variantToString(value), expected);
}

void TestSefCommon::pos_data()
{
    QTest::addColumn<QString>("sub");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("expected");
    row("at the start is 1", "ab", "abcab", 1);
    row("absent is 0", "x", "abc", 0);
    row("case-sensitive", "A", "abc", 0);
    row("chinese", QStringLiteral("面"), QStringLiteral("路面"), 2);
}

void TestSefCommon::pos()
{
    QFETCH(QString, sub);
    QFETCH(QString, text);
    QFETCH(int, expected);
    QCOMPARE(SefCommon::pos(sub, text), expected);
}

void TestSefCommon::trim_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    row("both ends", " \t a b \n", "a b");
    row("blanks only", "   ", "");
    row("ideographic space", QStringLiteral("\u3000路\u3000"), QStringLiteral("路"));
}

void TestSefCommon::trim()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(SefCommon::trim(text), expected);
}

QTEST_GUILESS_MAIN(TestSefCommon)
#include "tst_sefcommon.moc"
