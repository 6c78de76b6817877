#include <sefcommon.h>

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
    void strToBoolDefaultsToFalse();
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
    QTest::newRow("integer") << "12" << true;
    QTest::newRow("negative fraction") << "-3.5" << true;
    QTest::newRow("plus sign") << "+7" << true;
    QTest::newRow("leading point") << ".5" << true;
    QTest::newRow("trailing point") << "5." << true;
    QTest::newRow("exponent") << "1e3" << true;
    QTest::newRow("signed upper-case exponent") << "2.5E-4" << true;
    QTest::newRow("surrounding blanks are trimmed") << "  42\t" << true;
    QTest::newRow("empty") << "" << false;
    QTest::newRow("blanks only") << "   " << false;
    QTest::newRow("letters") << "abc" << false;
    QTest::newRow("grouping comma") << "1,000" << false;
    QTest::newRow("two points") << "1.2.3" << false;
    QTest::newRow("sign alone") << "-" << false;
    QTest::newRow("point alone") << "." << false;
    QTest::newRow("exponent without digits") << "1e" << false;
    QTest::newRow("exponent without mantissa") << "e5" << false;
    QTest::newRow("inner blank") << "1 2" << false;
    QTest::newRow("hex") << "0x10" << false;
    QTest::newRow("full-width digits") << QStringLiteral("１２") << false;
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
    QTest::newRow("number") << "-3.5" << 9.0 << -3.5;
    QTest::newRow("trailing point") << "5." << 9.0 << 5.0;
    QTest::newRow("leading point") << ".25" << 9.0 << 0.25;
    QTest::newRow("exponent") << "1e3" << 9.0 << 1000.0;
    QTest::newRow("trimmed") << " 8 " << 9.0 << 8.0;
    QTest::newRow("not a number gives default") << "abc" << 9.0 << 9.0;
    QTest::newRow("grouping gives default") << "1,000" << -1.0 << -1.0;
    QTest::newRow("empty gives default") << "" << 4.5 << 4.5;
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
    QTest::newRow("true word 是") << QStringLiteral("是") << false << true;
    QTest::newRow("true word 真") << QStringLiteral("真") << false << true;
    for (const char *t : { "false", "False", "NO", "n", "0" })
        QTest::addRow("false word '%s'", t) << QString::fromLatin1(t) << true << false;
    QTest::newRow("false word 否") << QStringLiteral("否") << true << false;
    QTest::newRow("false word 假") << QStringLiteral("假") << true << false;
    QTest::newRow("other non-zero number is true") << "2.5" << false << true;
    QTest::newRow("negative number is true") << "-1" << false << true;
    QTest::newRow("zero in another form is false") << "0.0" << true << false;
    QTest::newRow("unknown word gives default true") << "maybe" << true << true;
    QTest::newRow("unknown word gives default false") << "maybe" << false << false;
    QTest::newRow("empty gives default") << "" << true << true;
}

void TestSefCommon::strToBoolDef()
{
    QFETCH(QString, text);
    QFETCH(bool, def);
    QFETCH(bool, expected);
    QCOMPARE(SefCommon::strToBoolDef(text, def), expected);
}

void TestSefCommon::strToBoolDefaultsToFalse()
{
    QCOMPARE(SefCommon::strToBool(QStringLiteral("maybe")), false);
    QCOMPARE(SefCommon::strToBool(QStringLiteral("是")), true);
}

void TestSefCommon::variantToString_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("expected");
    QTest::newRow("invalid") << QVariant() << QString();
    QTest::newRow("null string") << QVariant(QString()) << QString();
    QTest::newRow("null int") << QVariant(QVariant::Int) << QString();
    QTest::newRow("bool true") << QVariant(true) << "true";
    QTest::newRow("bool false") << QVariant(false) << "false";
    QTest::newRow("int") << QVariant(-42) << "-42";
    QTest::newRow("long long beyond 32 bits") << QVariant(qlonglong(1) << 40) << "1099511627776";
    QTest::newRow("unsigned long long max")
        << QVariant(std::numeric_limits<qulonglong>::max()) << "18446744073709551615";
    QTest::newRow("double 2.5") << QVariant(2.5) << "2.5";
    QTest::newRow("double 0.1 shortest") << QVariant(0.1) << "0.1";
    QTest::newRow("whole double has no point") << QVariant(3.0) << "3";
    QTest::newRow("double needing 17 digits") << QVariant(0.1 + 0.2) << "0.30000000000000004";
    QTest::newRow("date-time ISO") << QVariant(QDateTime(QDate(2024, 3, 5), QTime(7, 8, 9)))
                                   << "2024-03-05T07:08:09.000";
    QTest::newRow("date ISO") << QVariant(QDate(2024, 12, 31)) << "2024-12-31";
    QTest::newRow("string as is") << QVariant(QStringLiteral(" 路面 ")) << QStringLiteral(" 路面 ");
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
    QTest::newRow("at the start is 1") << "ab"
                                       << "abcab" << 1;
    QTest::newRow("first occurrence") << "b"
                                      << "abcab" << 2;
    QTest::newRow("absent is 0") << "x"
                                 << "abc" << 0;
    QTest::newRow("case-sensitive") << "A"
                                    << "abc" << 0;
    QTest::newRow("longer than text") << "abcd"
                                      << "abc" << 0;
    QTest::newRow("chinese") << QStringLiteral("面") << QStringLiteral("路面") << 2;
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
    QTest::newRow("both ends") << " \t a b \n"
                               << "a b";
    QTest::newRow("nothing to trim") << "ab"
                                     << "ab";
    QTest::newRow("blanks only") << "   "
                                 << "";
    QTest::newRow("ideographic space") << QStringLiteral("\u3000路\u3000") << QStringLiteral("路");
}

void TestSefCommon::trim()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(SefCommon::trim(text), expected);
}

QTEST_GUILESS_MAIN(TestSefCommon)
#include "tst_sefcommon.moc"
