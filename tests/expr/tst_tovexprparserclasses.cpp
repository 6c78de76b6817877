#include <tovexprparserclasses.h>
#include <tovtestutil.h>

#include <QRegularExpression>
#include <QtTest>

class TestTovExprParserClasses : public QObject
{
    Q_OBJECT

private slots:
    void getExprCodes_data();
    void getExprCodes();
    void copiesKeepTheirCodes();
};

void TestTovExprParserClasses::getExprCodes_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QStringList>("codes");
    QTest::addColumn<QString>("message");

    QTest::newRow("distinct, in the order written") << "a+b*a" << QStringList({ "a", "b" }) << QString();
    QTest::newRow("case-sensitive") << "A+a" << QStringList({ "A", "a" }) << QString();
    QTest::newRow("spelled as written")
        << "[宽度]*@n + #" << QStringList({ "[宽度]", "@n", "#" }) << QString();
    QTest::newRow("inside functions and branches")
        << "if(c > 0, sqrt(d), e)" << QStringList({ "c", "d", "e" }) << QString();
    QTest::newRow("constants only") << "1 + 2" << QStringList() << QString();
    QTest::newRow("rejected text") << "a + (b" << QStringList()
                                   << QStringLiteral("表达式[a + (b]第5个字符处: 缺少右括号");
    QTest::newRow("empty text") << QString() << QStringList()
                                << QStringLiteral("表达式[]第1个字符处: 表达式为空");
}

void TestTovExprParserClasses::getExprCodes()
{
    QFETCH(QString, expression);
    QFETCH(QStringList, codes);
    QFETCH(QString, message);
    TovExprParserClasses parser;
    DebugCapture capture;
    QCOMPARE(parser.getExprCodes(expression), codes);
    const QStringList lines = capture.lines();
    QCOMPARE(lines.size(), message.isEmpty() ? 0 : 2);
    if (!message.isEmpty()) {
        QVERIFY2(
            QRegularExpression(QStringLiteral("^TovExprParserCommon:\\d+$")).match(lines.at(0)).hasMatch(),
            qPrintable(lines.at(0)));
        QCOMPARE(lines.at(1), message);
    }
}

void TestTovExprParserClasses::copiesKeepTheirCodes()
{
    TovExprParserClasses parser;
    QCOMPARE(parser.getExprCodes(QStringLiteral("x+y")), QStringList({ "x", "y" }));
    TovExprParserClasses copy(parser);
    QCOMPARE(copy.getExprCodes(QStringLiteral("z")), QStringList({ "z" }));
    // Each call starts from an empty list.
    QCOMPARE(parser.getExprCodes(QStringLiteral("w")), QStringList({ "w" }));
    TovExprParserClasses assigned;
    assigned = copy;
    QCOMPARE(assigned.getExprCodes(QStringLiteral("p*q")), QStringList({ "p", "q" }));
}

QTEST_GUILESS_MAIN(TestTovExprParserClasses)
#include "tst_tovexprparserclasses.moc"
