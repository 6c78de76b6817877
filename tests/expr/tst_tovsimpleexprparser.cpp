#include <tovsimpleexprparser.h>
#include <tovtestutil.h>

#include <QRegularExpression>
#include <QtTest>

#include <stdexcept>

namespace {

using Values = QList<QPair<QString, double>>;

// No lines without a message; else the two lines written when an engine failure is caught.
void verifyLines(DebugCapture &capture, const QString &message)
{
    const QStringList lines = capture.lines();
    capture.clear();
    if (message.isEmpty()) {
        QCOMPARE(lines, QStringList());
        return;
    }
    QCOMPARE(lines.size(), 2);
    QVERIFY2(QRegularExpression(QStringLiteral("^TovSimpleExprParser:\\d+$")).match(lines.at(0)).hasMatch(),
        qPrintable(lines.at(0)));
    QCOMPARE(lines.at(1), message);
}

class Provider : public ITovSimpleExprParserVarProvider
{
public:
    QStringList names;
    bool throwOther = false;

    void queryVarDataType(const QString &name, const QString &code, int &dataType) override
    {
        names << name;
        if (code == QLatin1String("p"))
            dataType = 11;
        else if (code == QLatin1String("t"))
            dataType = 12;
    }
    bool queryVarValue(const QString &name, const QString &code, QVariant &value) override
    {
        names << name;
        if (throwOther)
            throw std::runtime_error("provider failed");
        if (code == QLatin1String("p") || code == QLatin1String("a"))
            value = 4;
        else if (code == QLatin1String("t"))
            value = QStringLiteral("文本");
        else if (code == QLatin1String("nul"))
            value = QVariant();
        else
            return false;
        return true;
    }
};

// The library has no setter for the provider: a deriving class sets it.
class ProvidedParser : public TovSimpleExprParser
{
public:
    ProvidedParser(const QString &name, ITovSimpleExprParserVarProvider *provider)
        : TovSimpleExprParser(name)
    {
        m_provider = provider;
    }
};

class Tokener : public ITovSimpleExprParserTransTokener
{
public:
    QStringList names;
    void transToken(const QString &name, RukNode &node, QString &token) override
    {
        names << name;
        if (node.nodeType() == RukNode::Variable && token == QLatin1String("a"))
            token = QStringLiteral("长度");
    }
};

} // namespace

class TestTovSimpleExprParser : public QObject
{
    Q_OBJECT

private slots:
    void calcAndCheckExpr_data();
    void calcAndCheckExpr();
    void valuesAreReplacedNeverCleared();
    void getExprVarCodes_data();
    void getExprVarCodes();
    void provider_data();
    void provider();
    void otherExceptionsPassThrough();
    void transExpr_data();
    void transExpr();
    void copiesShareTheEngineParser();
};

void TestTovSimpleExprParser::calcAndCheckExpr_data()
{
    QTest::addColumn<Values>("values");
    QTest::addColumn<QString>("expression");
    QTest::addColumn<double>("result");
    QTest::addColumn<QString>("message"); // empty: no failure, no debug lines

    const Values ab = { { QStringLiteral("a"), 1.0 }, { QStringLiteral("b"), 2.0 } };
    QTest::newRow("empty text is 0 without the engine") << Values() << QString() << 0.0 << QString();
    QTest::newRow("plain number without the engine") << Values() << "12.5" << 12.5 << QString();
    QTest::newRow("padded exponent number") << Values() << " 1e3 " << 1000.0 << QString();
    QTest::newRow("a+b") << ab << "a+b" << 3.0 << QString();
    QTest::newRow("codes are case-sensitive") << ab << "A+b" << 0.0 << QStringLiteral("变量[A]没有值");
    QTest::newRow("boolean result reads as 1") << ab << "b > a" << 1.0 << QString();
    QTest::newRow("text result reads as 0") << ab << "'abc'" << 0.0 << QString();
    QTest::newRow("grouped digits go to the engine")
        << Values() << "1,000" << 0.0 << QStringLiteral("表达式[1,000]第2个字符处: 缺少运算符");
    QTest::newRow("unparsable text") << ab << "a+" << 0.0
                                     << QStringLiteral("表达式[a+]第3个字符处: 缺少运算数");
    QTest::newRow("unknown variable") << ab << "x*2" << 0.0 << QStringLiteral("变量[x]没有值");
    QTest::newRow("division by zero") << ab << "a/(b-2)" << 0.0 << QStringLiteral("除数为零");
    QTest::newRow("unknown function")
        << ab << "foo(a)" << 0.0 << QStringLiteral("表达式[foo(a)]第1个字符处: 未知函数[foo]");
}

// checkExpr() fails exactly where calcExpr() does, with the same message.
void TestTovSimpleExprParser::calcAndCheckExpr()
{
    QFETCH(Values, values);
    QFETCH(QString, expression);
    QFETCH(double, result);
    QFETCH(QString, message);
    TovSimpleExprParser parser(QStringLiteral("calc"));
    for (const auto &value : values)
        parser.addVarValue(value.first, value.second);
    DebugCapture capture;
    QString actualMessage = QStringLiteral("untouched");
    QCOMPARE(parser.calcExpr(expression, actualMessage), result);
    QCOMPARE(actualMessage, message.isEmpty() ? QStringLiteral("untouched") : message);
    verifyLines(capture, message);
    QCOMPARE(parser.calcExpr(expression), result);
    capture.clear();
    QCOMPARE(parser.checkExpr(expression), message.isEmpty());
    verifyLines(capture, message);
}

void TestTovSimpleExprParser::valuesAreReplacedNeverCleared()
{
    TovSimpleExprParser parser(QStringLiteral("p"));
    DebugCapture capture;
    // A failed listing leaves the parser idle: an unknown variable is not taken as a number.
    QVERIFY(parser.getExprVarCodes(QStringLiteral("a+")).isEmpty());
    QString message;
    QCOMPARE(parser.calcExpr(QStringLiteral("a+1"), message), 0.0);
    QCOMPARE(message, QStringLiteral("变量[a]没有值"));

    parser.addVarValue(QStringLiteral("a"), 1);
    parser.addVarValue(QStringLiteral("b"), 2);
    QCOMPARE(parser.calcExpr(QStringLiteral("a+b")), 3.0);
    parser.addVarValue(QStringLiteral("a"), 5);
    QCOMPARE(parser.calcExpr(QStringLiteral("a+b")), 7.0);
    QCOMPARE(parser.getExprVarCodes(QStringLiteral("a+b")), QStringList({ "a", "b" }));
    QCOMPARE(parser.calcExpr(QStringLiteral("b*10")), 20.0);
}

void TestTovSimpleExprParser::getExprVarCodes_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QStringList>("codes");
    QTest::addColumn<QString>("message");

    QTest::newRow("distinct, in the order written") << "a+b*a" << QStringList({ "a", "b" }) << QString();
    QTest::newRow("case-sensitive") << "A+a" << QStringList({ "A", "a" }) << QString();
    QTest::newRow("tokens as written")
        << "[宽度]+宽度*@n-#" << QStringList({ "[宽度]", "宽度", "@n", "#" }) << QString();
    QTest::newRow("functions and constants are no codes")
        << "max(x, 2, 'y')" << QStringList({ "x" }) << QString();
    QTest::newRow("empty text") << QString() << QStringList() << QString();
    QTest::newRow("rejected text yields what was collected")
        << "a+(b" << QStringList() << QStringLiteral("表达式[a+(b]第3个字符处: 缺少右括号");
}

void TestTovSimpleExprParser::getExprVarCodes()
{
    QFETCH(QString, expression);
    QFETCH(QStringList, codes);
    QFETCH(QString, message);
    TovSimpleExprParser parser;
    DebugCapture capture;
    QCOMPARE(parser.getExprVarCodes(expression), codes);
    verifyLines(capture, message);
}

void TestTovSimpleExprParser::provider_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<double>("result");
    QTest::addColumn<QString>("message");

    QTest::newRow("provider's number") << "p*2" << 8.0 << QString();
    QTest::newRow("own values before the provider") << "a+p" << 5.0 << QString();
    QTest::newRow("provider's text typed as text") << "len(t)" << 2.0 << QString();
    QTest::newRow("provider's null value is invalid")
        << "nul+1" << 0.0 << QStringLiteral("变量[nul]的值无效");
    QTest::newRow("unknown to the provider") << "q+1" << 0.0 << QStringLiteral("变量[q]没有值");
}

void TestTovSimpleExprParser::provider()
{
    QFETCH(QString, expression);
    QFETCH(double, result);
    QFETCH(QString, message);
    Provider provider;
    ProvidedParser parser(QStringLiteral("楼层"), &provider);
    parser.addVarValue(QStringLiteral("a"), 1);
    DebugCapture capture;
    QString actual;
    QCOMPARE(parser.calcExpr(expression, actual), result);
    QCOMPARE(actual, message);
    QVERIFY(!provider.names.isEmpty());
    QCOMPARE(provider.names.filter(QStringLiteral("楼层")).size(), provider.names.size());
}

void TestTovSimpleExprParser::otherExceptionsPassThrough()
{
    Provider provider;
    provider.throwOther = true;
    ProvidedParser parser(QStringLiteral("n"), &provider);
    DebugCapture capture;
    QVERIFY_EXCEPTION_THROWN(parser.calcExpr(QStringLiteral("p+1")), std::runtime_error);
    QVERIFY_EXCEPTION_THROWN(parser.checkExpr(QStringLiteral("p+1")), std::runtime_error);
    QVERIFY(capture.lines().isEmpty());
}

void TestTovSimpleExprParser::transExpr_data()
{
    QTest::addColumn<bool>("withTokener");
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("rebuilt");
    QTest::addColumn<QString>("message");

    QTest::newRow("no translator: the text as the engine rebuilds it") << false << " a +  max( a ,b ) "
                                                                       << " a +  max( a ,b ) " << QString();
    QTest::newRow("translator renames variables only") << true << "a + max(a, b) & 'a'"
                                                       << "长度 + max(长度, b) & 'a'" << QString();
    QTest::newRow("empty text unchanged") << true << QString() << QString() << QString();
    QTest::newRow("rejected text unchanged")
        << true << "a + (b"
        << "a + (b" << QStringLiteral("表达式[a + (b]第5个字符处: 缺少右括号");
}

void TestTovSimpleExprParser::transExpr()
{
    QFETCH(bool, withTokener);
    QFETCH(QString, expression);
    QFETCH(QString, rebuilt);
    QFETCH(QString, message);
    TovSimpleExprParser parser(QStringLiteral("译"));
    Tokener tokener;
    if (withTokener)
        parser.setTransTokener(&tokener);
    DebugCapture capture;
    QCOMPARE(parser.transExpr(expression), rebuilt);
    verifyLines(capture, message);
    QCOMPARE(tokener.names.filter(QStringLiteral("译")).size(), tokener.names.size());
    QCOMPARE(tokener.names.isEmpty(), !withTokener || expression.isEmpty() || !message.isEmpty());
    parser.setTransTokener(nullptr);
    QCOMPARE(parser.transExpr(QStringLiteral("a+b")), QStringLiteral("a+b"));
}

void TestTovSimpleExprParser::copiesShareTheEngineParser()
{
    DebugCapture capture;
    TovSimpleExprParser original(QStringLiteral("o"));
    original.addVarValue(QStringLiteral("a"), 2);
    Tokener tokener;
    original.setTransTokener(&tokener);

    TovSimpleExprParser copy(original);
    copy.addVarValue(QStringLiteral("b"), 3);
    QCOMPARE(copy.calcExpr(QStringLiteral("a*b")), 6.0);
    QCOMPARE(copy.transExpr(QStringLiteral("a")), QStringLiteral("长度"));
    // The original keeps its own values: b is unknown to it.
    QString message;
    QCOMPARE(original.calcExpr(QStringLiteral("a*b"), message), 0.0);
    QCOMPARE(message, QStringLiteral("变量[b]没有值"));

    TovSimpleExprParser moved(std::move(copy));
    QCOMPARE(moved.calcExpr(QStringLiteral("a*b")), 6.0);
    QCOMPARE(copy.calcExpr(QStringLiteral("a*b")), 6.0); // NOLINT: the source stays usable on purpose

    TovSimpleExprParser assigned;
    assigned = original;
    QCOMPARE(assigned.calcExpr(QStringLiteral("a+1")), 3.0);
    QCOMPARE(assigned.transExpr(QStringLiteral("a")), QStringLiteral("长度"));
}

QTEST_GUILESS_MAIN(TestTovSimpleExprParser)
#include "tst_tovsimpleexprparser.moc"
