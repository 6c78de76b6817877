#include <itovmempropertiesexprvarquerier.h>
#include <tovmemproperties.h>
#include <tovmempropertiesexprparser.h>
#include <tovtestutil.h>

#include <QtTest>

#include <memory>

namespace {

class MapQuerier : public ITovMemPropertiesExprVarQuerier
{
public:
    QHash<QString, QVariant> values;
    bool queryVarValue(const QString &code, QVariant &value) override
    {
        if (!values.contains(code))
            return false;
        value = values.value(code);
        return true;
    }
};

// Computes the set's expression items as a host module does: a parser of its own per item, over
// the set, with the item's argument text.
void connectCalculator(TovMemProperties *properties, int *calls = nullptr)
{
    QObject::connect(properties, &TovMemProperties::onCalcExprVal,
        [properties, calls](TovMemProperty *, TovMemPropertyExprCalcArgs &args, QString &result) {
            if (calls)
                ++*calls;
            TovMemPropertiesExprParser parser(args.args);
            parser.addData(properties);
            result = parser.asString(args.expr);
        });
}

} // namespace

class TestTovMemPropertiesExprParser : public QObject
{
    Q_OBJECT

private slots:
    void dynArgs_data();
    void dynArgs();
    void asString_data();
    void asString();
    void unknownVariableReports();
    void querierAnswersValuesOfKnownNames();
    void firstSetWins();
    void expressionPropertiesAreCalculated();
    void failedPropertyEndsInvalid();
};

void TestTovMemPropertiesExprParser::dynArgs_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected"); // name=value pairs in name order

    QTest::newRow("trimmed pairs, bad parts skipped")
        << "a=1; @n = 4 ;bad;=5" << QStringList { QStringLiteral("@n=4"), QStringLiteral("a=1") };
    QTest::newRow("later pair wins") << "x=1;x=2" << QStringList { QStringLiteral("x=2") };
    QTest::newRow("value keeps further equal signs") << "k = a=b" << QStringList { QStringLiteral("k=a=b") };
    QTest::newRow("empty value is kept") << "e=;;" << QStringList { QStringLiteral("e=") };
    QTest::newRow("empty text") << "" << QStringList();
}

void TestTovMemPropertiesExprParser::dynArgs()
{
    QFETCH(QString, text);
    QFETCH(QStringList, expected);

    const TovMemPropertiesExprParser parser(text);
    QStringList pairs;
    const QMap<QString, QString> args = parser.dynArgs();
    for (auto it = args.cbegin(); it != args.cend(); ++it)
        pairs.append(it.key() + QLatin1Char('=') + it.value());
    QCOMPARE(pairs, expected);
    QCOMPARE(parser.args(), text);
}

void TestTovMemPropertiesExprParser::asString_data()
{
    QTest::addColumn<QString>("args");
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("separator"); // empty: one value
    QTest::addColumn<QString>("expected"); // of one value, empty: the evaluation fails
    const auto row
        = [](const char *name, const char *args, const char *expression, const char *separator,
              const char *expected) { QTest::newRow(name) << args << expression << separator << expected; };
    row("supplied argument", "a=1; @n = 4 ;bad;=5", "@n*2", "", "8");
    row("missing argument counts as 1", "a=1; @n = 4", "@m*2", "", "2");
    row("argument without @ is no @ argument", "a=1", "@a+1", "", "2");
    row("property by name in another case", "", "W*2", "", "6");
    row("property by alias", "", "Wide+Height", "", "5");
    row("bracketed name", "", "[height]*1.5", "", "3");
    row("boolean result", "", "W>2 and @n=1", "", "true");
    row("false result", "", "W<2", "", "false");
    row("fraction", "", "W/4", "", "0.75");
    row("unknown variable", "", "x+1", "", "");
    row("unparsable", "", "W*", "", "");
    row("division by zero", "", "W/(Height-2)", "", "");
    row("items: a failed one reads 0, numbers kept as written", "", "1.5;x+1;2", ";", "1.5;0;2");
    row("items: numbers kept verbatim", "", " 2.50;W ", ";", "2.50;3");
    row("items: six significant digits", "", "W/7,W*1e7,W*1e5", ",", "0.428571,3e+07,300000");
    row("items: empty ones fail to 0", "", "W;;W", ";", "3;0;3");
    row("items: a boolean as a number", "", "W>2", ";", "1");
}

void TestTovMemPropertiesExprParser::asString()
{
    QFETCH(QString, args);
    QFETCH(QString, expression);
    QFETCH(QString, separator);
    QFETCH(QString, expected);

    TovMemProperties properties;
    properties.add(L"w", L"Wide", 3);
    properties.add(L"Height", 2);
    TovMemPropertiesExprParser parser(args);
    parser.addData(&properties);
    DebugCapture capture;
    if (!separator.isEmpty()) {
        QCOMPARE(parser.asString(expression, separator.at(0)), expected);
        return;
    }
    QCOMPARE(parser.asString(expression), expected);
    QCOMPARE(parser.evaluate(expression).isValid(), !expected.isEmpty());
}

void TestTovMemPropertiesExprParser::unknownVariableReports()
{
    TovMemProperties properties;
    properties.add(L"W", 3);
    TovMemPropertiesExprParser parser;
    parser.addData(&properties);
    DebugCapture capture;
    QVERIFY(!parser.evaluate(QStringLiteral("W+[宽度 x]")).isValid());
    QCOMPARE(capture.lines().size(), 2);
    QVERIFY2(capture.lines().at(0).startsWith(QStringLiteral("TovMemPropertiesExprParser:")),
        qPrintable(capture.lines().at(0)));
    QCOMPARE(capture.lines().at(1), QStringLiteral("[宽度 x]变量没有找到!"));
}

void TestTovMemPropertiesExprParser::querierAnswersValuesOfKnownNames()
{
    TovMemProperties properties;
    properties.add(L"W", 3);
    MapQuerier querier;
    querier.values.insert(QStringLiteral("W"), 10);
    querier.values.insert(QStringLiteral("Q"), 5);
    querier.values.insert(QStringLiteral("@n"), 100);
    TovMemPropertiesExprParser parser(QStringLiteral("@n=2"));
    parser.addData(&properties);
    parser.setVarQuerier(&querier);
    DebugCapture capture;
    QCOMPARE(parser.asString(QStringLiteral("W*2")), QStringLiteral("20"));
    // Arguments are not the querier's; a name no set has cannot be set at all.
    QCOMPARE(parser.asString(QStringLiteral("@n+1")), QStringLiteral("3"));
    QCOMPARE(parser.asString(QStringLiteral("Q+1")), QString());
    parser.setVarQuerier(nullptr);
    QCOMPARE(parser.asString(QStringLiteral("W*2")), QStringLiteral("6"));
}

void TestTovMemPropertiesExprParser::firstSetWins()
{
    TovMemProperties first;
    first.add(L"H", 1);
    TovMemProperties second;
    second.add(L"H", 2);
    second.add(L"K", 7);
    TovMemPropertiesExprParser parser;
    parser.addData(&first);
    parser.addData(&second);
    QCOMPARE(parser.asString(QStringLiteral("H*10+K")), QStringLiteral("17"));
    QCOMPARE(parser.findProp(QStringLiteral("h")), first.findPropByName(L"H"));
    QCOMPARE(parser.findProp(QStringLiteral("none")), nullptr);
}

void TestTovMemPropertiesExprParser::expressionPropertiesAreCalculated()
{
    TovMemProperties properties;
    properties.add(L"H", 3);
    properties.add(L"W", QStringLiteral("H*2"), true);
    properties.add(L"Area", QStringLiteral("W*H*@k;W+1"), true);
    int calls = 0;
    connectCalculator(&properties, &calls);

    TovMemPropertiesExprParser parser;
    parser.addData(&properties);
    QCOMPARE(parser.asString(QStringLiteral("W+1")), QStringLiteral("7"));
    // The argument text reaches the property's own items: @k of Area is 5 here.
    TovMemPropertiesExprParser withArgs(QStringLiteral("@k=5"));
    withArgs.addData(&properties);
    QCOMPARE(properties.asString(L"Area", true, QStringLiteral("@k=5")), QStringLiteral("90;7"));
    QCOMPARE(withArgs.asString(QStringLiteral("W*@k")), QStringLiteral("30"));

    // A changed value shows after the dependent property is reset.
    properties.findPropByName(L"H")->setValue(QStringLiteral("4"));
    QCOMPARE(parser.asString(QStringLiteral("W")), QStringLiteral("6"));
    properties.resetState();
    calls = 0;
    QCOMPARE(parser.asString(QStringLiteral("W")), QStringLiteral("8"));
    QCOMPARE(calls, 1);
}

void TestTovMemPropertiesExprParser::failedPropertyEndsInvalid()
{
    TovMemProperties properties;
    properties.add(L"W", QStringLiteral("1+"), true);
    QObject::connect(&properties, &TovMemProperties::onCalcExprVal,
        [](TovMemProperty *, TovMemPropertyExprCalcArgs &, QString &) {
            throw SefException(QStringLiteral("坏值"));
        });
    TovMemPropertiesExprParser parser;
    parser.addData(&properties);
    DebugCapture capture;
    QCOMPARE(parser.asString(QStringLiteral("W*2")), QString());
    QCOMPARE(capture.lines().value(1), QStringLiteral("坏值"));
    QCOMPARE(properties.findPropByName(L"W")->state(), TovMemPropertyExprState(2));
    QCOMPARE(parser.asString(QStringLiteral("W*2;3"), QLatin1Char(';')), QStringLiteral("0;3"));
}

QTEST_GUILESS_MAIN(TestTovMemPropertiesExprParser)
#include "tst_tovmempropertiesexprparser.moc"
