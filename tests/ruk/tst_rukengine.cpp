#include <rukengine.h>
#include <rukparser.h>
#include <tovtestutil.h>

#include <QtTest>

Q_DECLARE_METATYPE(RukData)

namespace {

// Answers variables from two tables and records what it was asked, in order.
class Vars : public RukQueryVarDataTypeImpl, public RukQueryVarValueImpl
{
public:
    QHash<QString, RukData> values;
    QHash<QString, int> types;
    QStringList invalid;
    QStringList typeAsked;
    QStringList valueAsked;
    QList<int> presets;

protected:
    void queryVarDataType(RukVarNode &node, int &dataType, void *) override
    {
        typeAsked << node.varCode();
        presets << dataType;
        const auto it = types.constFind(node.varCode());
        if (it != types.constEnd())
            dataType = it.value();
    }
    void queryVarValue(RukVarNode &node, void *) override
    {
        valueAsked << node.varCode();
        if (invalid.contains(node.varCode())) {
            node.setIsInvalid(true);
            return;
        }
        const auto it = values.constFind(node.varCode());
        if (it != values.constEnd())
            node.setAsData(it.value());
    }
};

class Walker : public RukVisitNodeImpl
{
public:
    QStringList seen;

protected:
    void visitNode(RukNode &node, void *context) override
    {
        seen << QString::number(node.nodeType()) + QLatin1Char(':') + node.token();
        if (context)
            ++*static_cast<int *>(context);
    }
};

// Upper-cases variables, wraps functions in <>, leaves the rest.
class Translator : public RukTransTokenImpl
{
protected:
    void transToken(RukNode &node, QString &token, void *) override
    {
        if (node.nodeType() == RukNode::Variable)
            token = token.toUpper();
        else if (node.nodeType() == RukNode::Function)
            token = QLatin1Char('<') + token + QLatin1Char('>');
    }
};

QString describe(const RukData &data)
{
    return QString::number(data.dataType()) + QLatin1Char(':') + data.asString();
}

void standardVars(Vars &vars)
{
    vars.values.insert(QStringLiteral("i"), RukData::fromInteger(7));
    vars.values.insert(QStringLiteral("x"), RukData::fromFloat(2.5));
    vars.values.insert(QStringLiteral("s"), RukData::fromString(QStringLiteral("abc")));
    vars.values.insert(QStringLiteral("t"), RukData::fromBoolean(true));
    vars.values.insert(QStringLiteral("宽度"), RukData::fromFloat(3));
    vars.values.insert(QStringLiteral("宽度 (m)"), RukData::fromFloat(4));
    vars.values.insert(QStringLiteral("@n"), RukData::fromInteger(5));
    vars.values.insert(QStringLiteral("#"), RukData::fromString(QStringLiteral("10")));
    vars.invalid << QStringLiteral("bad");
    // Announced types let the engine compile typed operations for these.
    vars.types.insert(QStringLiteral("x"), RukData::Float);
    vars.types.insert(QStringLiteral("宽度"), RukData::Float);
    vars.types.insert(QStringLiteral("s"), RukData::String);
    vars.types.insert(QStringLiteral("t"), RukData::Boolean);
    vars.values.insert(QStringLiteral("数"), RukData::fromFloat(2.5));
    vars.types.insert(QStringLiteral("数"), RukData::String);
}

} // namespace

class TestRukEngine : public QObject
{
    Q_OBJECT

private slots:
    void evaluate_data();
    void evaluate();
    void errors_data();
    void errors();
    void announcedTypes_data();
    void announcedTypes();
    void callbacksPerVariable();
    void typeChangeAtEvaluateRecompiles();
    void lazyBranches_data();
    void lazyBranches();
    void floatPrograms_data();
    void floatPrograms();
    void walks_data();
    void walks();
    void rebuild_data();
    void rebuild();
    void deepNesting_data();
    void deepNesting();
    void longChainsNeedNoRecursion();
    void handlesShareOneParser();
    void constantsFunctionsAndNodeMap();
    void failedParseKeepsTextAndDropsTree();
    void engineInstances();
    void dataConversions_data();
    void dataConversions();
};

void TestRukEngine::evaluate_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("expected"); // type:text

    // precedence and associativity
    QTest::newRow("* before +") << "1+2*3"
                                << "10:7";
    QTest::newRow("brackets first") << "(1+2)*3"
                                    << "10:9";
    QTest::newRow("- is left-associative") << "10-4-3"
                                           << "10:3";
    QTest::newRow("/ is left-associative") << "100/10/5"
                                           << "11:2";
    QTest::newRow("^ is right-associative") << "2^3^2"
                                            << "10:512";
    QTest::newRow("^ binds tighter than unary -") << "-2^2"
                                                  << "10:-4";
    QTest::newRow("unary - in an exponent") << "2^-1"
                                            << "11:0.5";
    QTest::newRow("unary - binds tighter than mod") << "-7 mod 3"
                                                    << "10:-1";
    QTest::newRow("not binds looser than =") << "not 1 = 2"
                                             << "13:true";
    QTest::newRow("and binds tighter than or") << "true or false and false"
                                               << "13:true";
    QTest::newRow("keywords in any case") << "TRUE And NOT False"
                                          << "13:true";
    QTest::newRow("&& || !") << "!(1>2) && (false || 1)"
                             << "13:true";
    // arithmetic types
    QTest::newRow("/ always yields a float") << "6/3"
                                             << "11:2";
    QTest::newRow("% of integers") << "7%3"
                                   << "10:1";
    QTest::newRow("% of floats") << "7.5 % 2"
                                 << "11:1.5";
    QTest::newRow("integer overflow widens to 64 bits") << "2147483647+1"
                                                        << "17:2147483648";
    QTest::newRow("64-bit overflow becomes a float") << "9223372036854775807+1"
                                                     << "11:9223372036854776000";
    QTest::newRow("literal beyond 32 bits") << "3000000000"
                                            << "17:3000000000";
    QTest::newRow("exponent literal") << "1e3"
                                      << "11:1000";
    QTest::newRow("leading-point literals") << ".5+.25"
                                            << "11:0.75";
    QTest::newRow("integer power") << "3^4"
                                   << "10:81";
    // texts
    QTest::newRow("+ joins a non-numeric text") << "'a' + 1"
                                                << "12:a1";
    QTest::newRow("+ adds a numeric text") << "'2' + 1"
                                           << "10:3";
    QTest::newRow("* reads a numeric text") << "'2.5' * 2"
                                            << "11:5";
    QTest::newRow("& joins numbers as texts") << "1 & 2.5"
                                              << "12:12.5";
    QTest::newRow("doubled double quote") << "\"a\"\"b\""
                                          << "12:a\"b";
    QTest::newRow("doubled single quote") << "'it''s'"
                                          << "12:it's";
    // comparisons and the tolerance
    QTest::newRow("equal within 1e-10 relative") << "1 = 1.00000000001"
                                                 << "13:true";
    QTest::newRow("unequal beyond the tolerance") << "1 = 1.000000001"
                                                  << "13:false";
    QTest::newRow("0.1+0.2 equals 0.3") << "0.1+0.2 = 0.3"
                                        << "13:true";
    QTest::newRow("absolute tolerance near zero") << "1e-11 = 0"
                                                  << "13:true";
    QTest::newRow("relative tolerance of large numbers") << "1e20 = 1e20+1e9"
                                                         << "13:true";
    QTest::newRow("< is false within the tolerance") << "3 < 3.00000000001"
                                                     << "13:false";
    QTest::newRow("<= is true within the tolerance") << "3.00000000001 <= 3"
                                                     << "13:true";
    QTest::newRow("texts compare by code unit") << "'B' < 'a'"
                                                << "13:true";
    QTest::newRow("numeric text against a number") << "'10' = 10"
                                                   << "13:true";
    QTest::newRow("two texts compare exactly") << "'10' = '10.0'"
                                               << "13:false";
    QTest::newRow("false < true") << "true > false"
                                  << "13:true";
    QTest::newRow("== != <>") << "1 == 1 and 1 != 2 and 1 <> 2"
                              << "13:true";
    QTest::newRow("logic reads TRUE text and numbers") << "1 and 'TRUE'"
                                                       << "13:true";
    // full-width and symbol forms
    QTest::newRow("full-width operators") << "1 ＋ 2 × 3 ÷ 2 － 1"
                                          << "11:3";
    QTest::newRow("full-width brackets") << "（1＋2）＊3"
                                         << "10:9";
    QTest::newRow("full-width <>") << "1＜＞2"
                                   << "13:true";
    QTest::newRow("≥ ≤ ≠") << "3 ≥ 2 and 2 ≤ 2 and 3 ≠ 4"
                           << "13:true";
    QTest::newRow("ideographic space separates") << "1\u30002"
                                                 << "ERR";
    // variables
    QTest::newRow("CJK name") << "宽度*2"
                              << "11:6";
    QTest::newRow("bracketed name with space") << "[宽度 (m)] + 1"
                                               << "11:5";
    QTest::newRow("full-width bracketed name") << "［宽度］"
                                               << "11:3";
    QTest::newRow("@ argument") << "@n * 2"
                                << "10:10";
    QTest::newRow("# under check is a text") << "# + 1"
                                             << "10:11";
    QTest::newRow("integer variable") << "i * 2"
                                      << "10:14";
    QTest::newRow("string variable") << "s & '!'"
                                     << "12:abc!";
    QTest::newRow("boolean variable") << "not t"
                                      << "13:false";
    QTest::newRow("typed arithmetic") << "x*2 - x/2 + -x - 宽度"
                                      << "11:-1.75";
    QTest::newRow("typed arithmetic with a constant on the left") << "10 - x / 0.5 * 2 + 1"
                                                                  << "11:1";
    QTest::newRow("typed comparisons") << "x > 2 and x >= 2.5 and x < 3 and x <= 2.5 and x = 2.5 and x != 2"
                                       << "13:true";
    QTest::newRow("typed comparison false") << "x > 2.5 or x < 2.5 or x <> 2.5"
                                            << "13:false";
    QTest::newRow("typed functions") << "floor(x) + ceil(x) + round(x) + abs(-x) + sqrt(x*x)"
                                     << "11:13";
    QTest::newRow("typed text equality") << "s = 'abc' and s != 'x' and 'abc' = s and not (s <> s)"
                                         << "13:true";
    QTest::newRow("text variable against constants") << "s = 'x' or s = 'abc' and s <> 'ab'"
                                                     << "13:true";
    QTest::newRow("number announced as text compares as text") << "数 = '2.5' and 数 != '2.50'"
                                                               << "13:true";
    QTest::newRow("if of two typed branches") << "if(t, x, 宽度) * 2"
                                              << "11:5";
    // functions
    QTest::newRow("abs of an integer") << "abs(-3)"
                                       << "10:3";
    QTest::newRow("abs of a float") << "ABS(-2.5)"
                                    << "11:2.5";
    QTest::newRow("sqrt") << "sqrt(16)"
                          << "11:4";
    QTest::newRow("exp ln log10") << "exp(0) + ln(1) + log10(1000)"
                                  << "11:4";
    QTest::newRow("pow") << "pow(2, 10)"
                         << "11:1024";
    QTest::newRow("trigonometry in radians") << "sin(0) + cos(0) + tan(0)"
                                             << "11:1";
    QTest::newRow("inverse trigonometry") << "asin(1)*2 = pi() and acos(1) = 0 and atan(1)*4 = pi()"
                                          << "13:true";
    QTest::newRow("atan2 takes y then x") << "atan2(1, 0)*2"
                                          << "11:3.141592653589793";
    QTest::newRow("deg and rad") << "deg(rad(90))"
                                 << "11:90";
    QTest::newRow("floor of a negative") << "floor(-2.5)"
                                         << "11:-3";
    QTest::newRow("ceil") << "ceil(2.1)"
                          << "11:3";
    QTest::newRow("int truncates") << "int(-2.7)"
                                   << "11:-2";
    QTest::newRow("trunc") << "trunc(2.7)"
                           << "11:2";
    QTest::newRow("round half away from zero") << "round(-2.5)"
                                               << "11:-3";
    QTest::newRow("round to digits despite binary 2.675") << "round(2.675, 2)"
                                                          << "11:2.68";
    QTest::newRow("round to tens") << "round(1234, -2)"
                                   << "11:1200";
    QTest::newRow("min of mixed numbers") << "min(3, 1.5, 2)"
                                          << "11:1.5";
    QTest::newRow("max of integers stays integer") << "max(1, 5, 3)"
                                                   << "10:5";
    QTest::newRow("sum") << "sum(1, 2, 3)"
                         << "10:6";
    QTest::newRow("avg") << "avg(1, 2)"
                         << "11:1.5";
    QTest::newRow("if picks the else branch") << "if(1>2, 'a', 'b')"
                                              << "12:b";
    QTest::newRow("iif") << "IIF(true, 1, 2)"
                         << "10:1";
    QTest::newRow("len counts characters") << "len('宽度')"
                                           << "10:2";
    QTest::newRow("left right") << "left('abcdef', 2) & right('abcdef', 2)"
                                << "12:abef";
    QTest::newRow("mid is 1-based") << "mid('abcdef', 2, 3)"
                                    << "12:bcd";
    QTest::newRow("mid without a count takes the rest") << "mid('abcdef', 5)"
                                                        << "12:ef";
    QTest::newRow("upper lower trim") << "upper('aB') & lower('aB') & trim('  x ')"
                                      << "12:ABabx";
    QTest::newRow("str of a float") << "str(2.50)"
                                    << "12:2.5";
    QTest::newRow("num of a text") << "num(' 12 ')"
                                   << "10:12";
}

void TestRukEngine::evaluate()
{
    QFETCH(QString, expression);
    QFETCH(QString, expected);
    Vars vars;
    standardVars(vars);
    RukParser parser = rukEngine().createParser();
    parser.setOnQueryVarValue(&vars);
    QString actual;
    QString generic;
    try {
        parser.setExpression(expression, &vars);
        parser.evaluate();
        actual = describe(parser.result());
        QVERIFY(parser.result().isValid());
        // With a type callback the engine runs its untyped program: same answer.
        parser.evaluate(&vars);
        generic = describe(parser.result());
    } catch (const SefException &) {
        actual = generic = QStringLiteral("ERR");
    }
    QCOMPARE(actual, expected);
    QCOMPARE(generic, expected);
}

void TestRukEngine::errors_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("code");

    auto parseError = [](const QString &expression, int position, const QString &detail) {
        return QStringLiteral("表达式[%1]第%2个字符处: %3").arg(expression).arg(position).arg(detail);
    };
    struct Row
    {
        const char *name;
        QString expression;
        int position;
        QString detail;
    };
    const Row parseRows[] = {
        { "empty text", QString(), 1, QStringLiteral("表达式为空") },
        { "blank text", QStringLiteral("  \u3000"), 1, QStringLiteral("表达式为空") },
        { "operand missing at the end", QStringLiteral("1+"), 3, QStringLiteral("缺少运算数") },
        { "operand missing before an operator", QStringLiteral("1+*2"), 3, QStringLiteral("缺少运算数") },
        { "empty argument", QStringLiteral("max(1,)"), 7, QStringLiteral("缺少运算数") },
        { "unclosed bracket points at it", QStringLiteral("2*(1+2"), 3, QStringLiteral("缺少右括号") },
        { "extra closing bracket", QStringLiteral("1+2)"), 4, QStringLiteral("多余的右括号") },
        { "two operands in a row", QStringLiteral("a b"), 3, QStringLiteral("缺少运算符") },
        { "function name needs its bracket at once", QStringLiteral("abs (1)"), 5,
            QStringLiteral("缺少运算符") },
        { "arguments without a comma", QStringLiteral("max(1 2)"), 7, QStringLiteral("缺少运算符") },
        { "chained comparison", QStringLiteral("1 < 2 < 3"), 7, QStringLiteral("比较运算不能连用") },
        { "unknown function", QStringLiteral("1+foo(1)"), 3, QStringLiteral("未知函数[foo]") },
        { "wrong argument count", QStringLiteral("sqrt(1,2)"), 1,
            QStringLiteral("函数[sqrt]的参数个数不对") },
        { "too few arguments for if", QStringLiteral("if(1,2)"), 1,
            QStringLiteral("函数[if]的参数个数不对") },
        { "unknown character", QStringLiteral("1 $ 2"), 3, QStringLiteral("无法识别的字符[$]") },
        { "single bar", QStringLiteral("1 | 2"), 3, QStringLiteral("无法识别的字符[|]") },
        { "lone @", QStringLiteral("@ + 1"), 1, QStringLiteral("无法识别的字符[@]") },
        { "unterminated text", QStringLiteral("1 & 'abc"), 5, QStringLiteral("字符串缺少结束引号") },
        { "unterminated bracketed name", QStringLiteral("[宽度 + 1"), 1, QStringLiteral("缺少右方括号") },
        { "empty bracketed name", QStringLiteral("[] + 1"), 1, QStringLiteral("变量名为空") },
        { "number out of range", QStringLiteral("1e999"), 1, QStringLiteral("数值超出范围") },
    };
    for (const Row &row : parseRows)
        QTest::newRow(row.name) << row.expression << parseError(row.expression, row.position, row.detail)
                                << row.position;

    QTest::newRow("division by zero") << "1/0" << QStringLiteral("除数为零") << -1;
    QTest::newRow("float division by zero") << "1.5/(2-2)" << QStringLiteral("除数为零") << -1;
    QTest::newRow("integer remainder by zero") << "5 % 0" << QStringLiteral("除数为零") << -1;
    QTest::newRow("float remainder by zero") << "1.5 mod 0" << QStringLiteral("除数为零") << -1;
    QTest::newRow("square root of a negative") << "sqrt(-1)" << QStringLiteral("计算结果溢出") << -1;
    QTest::newRow("power beyond double") << "10^400" << QStringLiteral("计算结果溢出") << -1;
    QTest::newRow("product beyond double") << "1e300*1e300" << QStringLiteral("计算结果溢出") << -1;
    QTest::newRow("variable without a value") << "missing + 1" << QStringLiteral("变量[missing]没有值") << -1;
    QTest::newRow("bracketed code in the message") << "[无值]" << QStringLiteral("变量[无值]没有值") << -1;
    QTest::newRow("variable marked invalid") << "bad + 1" << QStringLiteral("变量[bad]的值无效") << -1;
    QTest::newRow("negating a text") << "-'abc'" << QStringLiteral("运算符[-]不能用于字符串") << -1;
    QTest::newRow("adding a boolean") << "true + 1" << QStringLiteral("运算符[+]不能用于布尔值") << -1;
    QTest::newRow("subtracting a non-numeric text")
        << "s - 1" << QStringLiteral("运算符[-]不能用于字符串") << -1;
    QTest::newRow("logic over a text")
        << "'abc' and true" << QStringLiteral("运算符[and]不能用于字符串") << -1;
    QTest::newRow("not over a text") << "not 'x'" << QStringLiteral("运算符[not]不能用于字符串") << -1;
    QTest::newRow("function over a text") << "sqrt('x')" << QStringLiteral("函数[sqrt]不能用于字符串") << -1;
    QTest::newRow("if over a text") << "if('x', 1, 2)" << QStringLiteral("函数[if]不能用于字符串") << -1;
    QTest::newRow("num of a word") << "num('x')" << QStringLiteral("文本[x]不是数值") << -1;
}

void TestRukEngine::errors()
{
    QFETCH(QString, expression);
    QFETCH(QString, message);
    QFETCH(int, code);
    Vars vars;
    standardVars(vars);
    RukParser parser = rukEngine().createParser();
    parser.setOnQueryVarValue(&vars);
    TOV_VERIFY_THROWS(
        {
            parser.setExpression(expression);
            parser.evaluate();
        },
        SefException, message, code);
    QVERIFY(!parser.result().isValid());
}

void TestRukEngine::announcedTypes_data()
{
    QTest::addColumn<int>("announced");
    QTest::addColumn<RukData>("value");
    QTest::addColumn<QString>("expected"); // type:text or the message

    QTest::newRow("numeric text to integer") << 10 << RukData::fromString(QStringLiteral(" 12 ")) << "10:12";
    QTest::newRow("float to integer rounds") << 10 << RukData::fromFloat(2.5) << "10:3";
    QTest::newRow("integer to float") << 11 << RukData::fromInteger(3) << "11:3";
    QTest::newRow("boolean to float") << 11 << RukData::fromBoolean(true) << "11:1";
    QTest::newRow("float to text") << 12 << RukData::fromFloat(2.5) << "12:2.5";
    QTest::newRow("number to boolean") << 13 << RukData::fromInteger(2) << "13:true";
    QTest::newRow("text FALSE to boolean")
        << 13 << RukData::fromString(QStringLiteral("FALSE")) << "13:false";
    QTest::newRow("integer to 64-bit") << 17 << RukData::fromInteger(4) << "17:4";
    QTest::newRow("type 0 keeps the value's type") << 0 << RukData::fromString(QStringLiteral("7")) << "12:7";
    QTest::newRow("word is not a float")
        << 11 << RukData::fromString(QStringLiteral("abc")) << QStringLiteral("变量[v]的值[abc]不是浮点数");
    QTest::newRow("word is not an integer")
        << 10 << RukData::fromString(QStringLiteral("1,5")) << QStringLiteral("变量[v]的值[1,5]不是整数");
    QTest::newRow("word is not a boolean") << 13 << RukData::fromString(QStringLiteral("maybe"))
                                           << QStringLiteral("变量[v]的值[maybe]不是布尔值");
    QTest::newRow("huge float is not an integer")
        << 10 << RukData::fromFloat(1e30) << QStringLiteral("变量[v]的值[1e+30]不是整数");
}

void TestRukEngine::announcedTypes()
{
    QFETCH(int, announced);
    QFETCH(RukData, value);
    QFETCH(QString, expected);
    Vars vars;
    vars.types.insert(QStringLiteral("v"), announced);
    vars.values.insert(QStringLiteral("v"), value);
    RukParser parser = rukEngine().createParser();
    parser.setOnQueryVarValue(&vars);
    // Announced at setExpression, kept for an evaluation without a type callback.
    parser.setExpression(QStringLiteral("v"), &vars);
    QString actual;
    try {
        parser.evaluate();
        actual = describe(parser.result());
    } catch (const SefException &e) {
        actual = e.message();
    }
    QCOMPARE(actual, expected);
}

void TestRukEngine::callbacksPerVariable()
{
    Vars vars;
    standardVars(vars);
    vars.types.insert(QStringLiteral("x"), 10);
    RukParser parser = rukEngine().createParser();
    parser.setOnQueryVarValue(&vars);
    parser.setExpression(QStringLiteral("x + [i] * x - @n"), &vars);
    // Once per variable node, as written, each preset to 0; no values asked while parsing.
    QCOMPARE(vars.typeAsked, QStringList({ "x", "i", "x", "@n" }));
    QCOMPARE(vars.presets, QList<int>({ 0, 0, 0, 0 }));
    QVERIFY(vars.valueAsked.isEmpty());

    vars.typeAsked.clear();
    vars.presets.clear();
    parser.evaluate(&vars);
    // Type then value for each node; the type arrives preset to the announced one.
    QCOMPARE(vars.typeAsked, QStringList({ "x", "i", "x", "@n" }));
    QCOMPARE(vars.presets, QList<int>({ 10, 0, 10, 0 }));
    QCOMPARE(vars.valueAsked, QStringList({ "x", "i", "x", "@n" }));
    // x announced as integer: 2.5 rounds to 3; 3 + 7*3 - 5.
    QCOMPARE(describe(parser.result()), QStringLiteral("10:19"));

    // Evaluate many: new values each time, same tree.
    vars.values.insert(QStringLiteral("i"), RukData::fromInteger(1));
    parser.evaluate();
    QCOMPARE(describe(parser.result()), QStringLiteral("10:1"));
}

void TestRukEngine::typeChangeAtEvaluateRecompiles()
{
    Vars vars;
    standardVars(vars);
    RukParser parser = rukEngine().createParser();
    parser.setOnQueryVarValue(&vars);
    parser.setExpression(QStringLiteral("x + 1 > 3.25"), &vars); // x announced floating-point
    parser.evaluate();
    QCOMPARE(describe(parser.result()), QStringLiteral("13:true"));
    // Announced as integer from now on: 2.5 rounds to 3, and the typed program must follow.
    vars.types.insert(QStringLiteral("x"), RukData::Integer);
    parser.evaluate(&vars);
    QCOMPARE(describe(parser.result()), QStringLiteral("13:true"));
    vars.values.insert(QStringLiteral("x"), RukData::fromFloat(2.4));
    parser.evaluate();
    QCOMPARE(describe(parser.result()), QStringLiteral("13:false"));
}

void TestRukEngine::lazyBranches_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QStringList>("asked");

    QTest::newRow("if skips the else branch") << "if(x > 1, x, 1/0 + missing)"
                                              << "11:2.5" << QStringList({ "x", "x" });
    QTest::newRow("iif skips the then branch") << "iif(x < 1, missing, i)"
                                               << "10:7" << QStringList({ "x", "i" });
    QTest::newRow("and stops at false") << "x < 1 and missing"
                                        << "13:false" << QStringList({ "x" });
    QTest::newRow("or stops at true") << "x > 1 or missing"
                                      << "13:true" << QStringList({ "x" });
    QTest::newRow("and reads its right side as boolean") << "true and i"
                                                         << "13:true" << QStringList({ "i" });
    QTest::newRow("nested if inside a sum") << "1 + if(t, if(false, 1, 2), 3) * 10"
                                            << "10:21" << QStringList({ "t" });
}

void TestRukEngine::lazyBranches()
{
    QFETCH(QString, expression);
    QFETCH(QString, expected);
    QFETCH(QStringList, asked);
    Vars vars;
    standardVars(vars);
    RukParser parser = rukEngine().createParser();
    parser.setOnQueryVarValue(&vars);
    parser.setExpression(expression);
    parser.evaluate();
    QCOMPARE(describe(parser.result()), expected);
    QCOMPARE(vars.valueAsked, asked);
}

void TestRukEngine::floatPrograms_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("expected"); // type:text or the message
    QTest::addColumn<QStringList>("asked");

    const QStringList xw { "x", "宽度" };
    QTest::newRow("variable against variable")
        << "x*宽度 + x/宽度 - (x-宽度)"
        << "11:8.833333333333334" << QStringList({ "x", "宽度", "x", "宽度", "x", "宽度" });
    QTest::newRow("variable against an immediate") << "x*2 - 宽度/4 + x"
                                                   << "11:6.75" << QStringList({ "x", "宽度", "x" });
    QTest::newRow("comparison of variables picks the then branch")
        << "if(宽度 > x, x, 宽度)"
        << "11:2.5" << QStringList({ "宽度", "x", "x" });
    QTest::newRow("the then branch ends the program") << "if(x >= 宽度, x, 宽度) + 0"
                                                      << "11:3" << QStringList({ "x", "宽度", "宽度" });
    QTest::newRow("if as the whole expression") << "if(x = 宽度, x, 宽度)"
                                                << "11:3" << QStringList({ "x", "宽度", "宽度" });
    QTest::newRow("comparison with an immediate picks the then branch")
        << "if(x < 3, x, 宽度)"
        << "11:2.5" << QStringList({ "x", "x" });
    QTest::newRow("comparison with an immediate picks the else branch")
        << "if(x >= 3, x, 宽度) - 1"
        << "11:2" << QStringList({ "x", "宽度" });
    QTest::newRow("and over fused comparisons") << "x > 2 and 宽度 <= 10"
                                                << "13:true" << xw;
    QTest::newRow("or jumps past a dropped boolean test")
        << "(x < 2 or 宽度 = 3) and x != 宽度"
        << "13:true" << QStringList({ "x", "宽度", "x", "宽度" });
    QTest::newRow("if over and, then a sum") << "if(x > 2 and x < 宽度, 1, 2) + x"
                                             << "11:3.5" << QStringList({ "x", "x", "宽度", "x" });
    QTest::newRow("square root in place")
        << "sqrt(x*x + 宽度*宽度)"
        << "11:3.905124837953327" << QStringList({ "x", "x", "宽度", "宽度" });
    QTest::newRow("square root of a negative") << "sqrt(x - 宽度)"
                                               << "计算结果溢出" << xw;
    QTest::newRow("first variable without a value asks no further")
        << "m * x"
        << "变量[m]没有值" << QStringList({ "m" });
    QTest::newRow("second variable without a value") << "x * m"
                                                     << "变量[m]没有值" << QStringList({ "x", "m" });
    QTest::newRow("invalid variable against an immediate") << "bad > 1"
                                                           << "变量[bad]的值无效" << QStringList({ "bad" });
    QTest::newRow("division of variables by zero") << "x / z"
                                                   << "除数为零" << QStringList({ "x", "z" });
    QTest::newRow("integer value converted in a fused load") << "i + x"
                                                             << "11:9.5" << QStringList({ "i", "x" });
    // An operation on variables whose result goes straight into the top of the stack.
    QTest::newRow("accumulation ends the program") << "x + 宽度*2"
                                                   << "11:8.5" << xw;
    QTest::newRow("accumulation in the middle") << "x - 宽度/2 + 1"
                                                << "11:2" << xw;
    QTest::newRow("accumulation of two variables") << "x * (宽度 - x)"
                                                   << "11:1.25" << QStringList({ "x", "宽度", "x" });
    QTest::newRow("accumulation divides by zero") << "x + 宽度/z"
                                                  << "除数为零" << QStringList({ "x", "宽度", "z" });
    QTest::newRow("inner overflow fails before the next variable") << "x + 宽度*1e308 + 宽度"
                                                                   << "计算结果溢出" << xw;
    QTest::newRow("inner overflow times zero still fails") << "z * (宽度*1e308)"
                                                           << "计算结果溢出" << QStringList({ "z", "宽度" });
    QTest::newRow("accumulation then negation") << "-(x + 宽度*2)"
                                                << "11:-8.5" << xw;
    QTest::newRow("accumulation then a function") << "abs(x - 宽度*2)"
                                                  << "11:3.5" << xw;
    QTest::newRow("accumulation then a root, then more") << "sqrt(x + 宽度*2) + 1"
                                                         << "11:3.9154759474226504" << xw;
    QTest::newRow("accumulation then the root of a negative") << "sqrt(x - 宽度*2) + 宽度"
                                                              << "计算结果溢出" << xw;
    QTest::newRow("square root ends the program") << "sqrt(x*宽度)"
                                                  << "11:2.7386127875258306" << xw;
}

// Programs over variables announced as floating-point run on plain doubles; their operations are
// fused, and must still ask for each variable node once, in order, and fail where the generic
// program fails.
void TestRukEngine::floatPrograms()
{
    QFETCH(QString, expression);
    QFETCH(QString, expected);
    QFETCH(QStringList, asked);
    Vars vars;
    standardVars(vars);
    for (const char *name : { "i", "m", "z", "bad" })
        vars.types.insert(QString::fromLatin1(name), RukData::Float);
    vars.values.insert(QStringLiteral("z"), RukData::fromFloat(0));
    RukParser parser = rukEngine().createParser();
    parser.setOnQueryVarValue(&vars);
    parser.setExpression(expression, &vars);
    auto run = [&](IRukQueryVarDataTypeEvent *types) {
        vars.valueAsked.clear();
        try {
            parser.evaluate(types);
            return describe(parser.result());
        } catch (const SefException &e) {
            [&] { QVERIFY(!parser.result().isValid()); }();
            return e.message();
        }
    };
    // Twice: the first evaluation compiles, the second runs the compiled program.
    for (int round = 0; round < 2; ++round) {
        QCOMPARE(run(nullptr), expected);
        QCOMPARE(vars.valueAsked, asked);
    }
    // The generic program agrees.
    QCOMPARE(run(&vars), expected);
    QCOMPARE(vars.valueAsked, asked);
    // A failure leaves no mark: the next good evaluation succeeds.
    vars.values.insert(QStringLiteral("m"), RukData::fromFloat(1));
    vars.values.insert(QStringLiteral("z"), RukData::fromFloat(1));
    vars.invalid.clear();
    vars.values.insert(QStringLiteral("bad"), RukData::fromFloat(2));
    vars.values.insert(QStringLiteral("x"), RukData::fromFloat(4));
    vars.values.insert(QStringLiteral("宽度"), RukData::fromFloat(1));
    QVERIFY(!run(nullptr).isEmpty());
    QVERIFY(parser.result().isValid());
}

void TestRukEngine::walks_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<int>("order");
    QTest::addColumn<QStringList>("seen");

    QTest::newRow("pre-order, children left to right")
        << "a + b * -c" << 0 << QStringList({ "4:+", "1:a", "4:*", "1:b", "3:-", "1:c" });
    QTest::newRow("post-order") << "a + b * -c" << 1
                                << QStringList({ "1:a", "1:b", "1:c", "3:-", "4:*", "4:+" });
    QTest::newRow("groups, functions and constants")
        << "max([宽 度], (2))" << 0 << QStringList({ "5:max", "1:[宽 度]", "6:(", "2:2" });
    QTest::newRow("tokens as written")
        << "NOT #＝'x'" << 0 << QStringList({ "3:NOT", "4:＝", "1:#", "2:'x'" });
}

void TestRukEngine::walks()
{
    QFETCH(QString, expression);
    QFETCH(int, order);
    QFETCH(QStringList, seen);
    RukParser parser = rukEngine().createParser();
    parser.setExpression(expression);
    Walker walker;
    int count = 0;
    parser.visitNode(order, &walker, &count);
    QCOMPARE(walker.seen, seen);
    QCOMPARE(count, seen.size());
}

void TestRukEngine::rebuild_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("rebuilt");

    QTest::newRow("spacing and brackets stay as written") << "  a+( b *max(c ,1))  "
                                                          << "  A+( B *<max>(C ,1))  ";
    QTest::newRow("bracketed and prefixed names") << "[宽度]＋@n"
                                                  << "[宽度]＋@N";
    QTest::newRow("texts and keywords untouched") << "x and 'x' or not y"
                                                  << "X and 'x' or not Y";
}

void TestRukEngine::rebuild()
{
    QFETCH(QString, expression);
    QFETCH(QString, rebuilt);
    RukParser parser = rukEngine().createParser();
    parser.setExpression(expression);
    QCOMPARE(parser.expression(), expression);
    Translator translator;
    QCOMPARE(parser.expression(&translator), rebuilt);
}

void TestRukEngine::deepNesting_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<int>("position");

    QTest::newRow("100000 opening brackets") << QString(100000, QLatin1Char('(')) + QLatin1Char('1') << 257;
    QTest::newRow("100000 unary minus signs") << QString(100000, QLatin1Char('-')) + QLatin1Char('1') << 257;
    QTest::newRow("100000 nots") << QStringLiteral("not ").repeated(100000) + QLatin1Char('1') << 1025;
    QTest::newRow("nested calls") << QStringLiteral("abs(").repeated(100000) << 1025;
}

void TestRukEngine::deepNesting()
{
    QFETCH(QString, expression);
    QFETCH(int, position);
    RukParser parser = rukEngine().createParser();
    try {
        parser.setExpression(expression);
        QFAIL("deep nesting was accepted");
    } catch (const SefException &e) {
        QVERIFY2(e.message().endsWith(QStringLiteral("个字符处: 嵌套层数过多")),
            qPrintable(e.message().right(40)));
        QCOMPARE(e.code(), position);
    }
}

void TestRukEngine::longChainsNeedNoRecursion()
{
    // Left-associative chains make trees as deep as they are long; walks and evaluation must
    // not recurse on them.
    const int terms = 200000;
    QString text = QStringLiteral("x");
    text += QStringLiteral("+x").repeated(terms - 1);
    Vars vars;
    standardVars(vars);
    RukParser parser = rukEngine().createParser();
    parser.setOnQueryVarValue(&vars);
    parser.setExpression(text);
    parser.evaluate();
    QCOMPARE(parser.result().asFloat(), 2.5 * terms);
    Walker walker;
    parser.visitNode(RukParser::PostOrder, &walker);
    QCOMPARE(walker.seen.size(), 2 * terms - 1);
    QCOMPARE(walker.seen.last(), QStringLiteral("4:+"));
    Translator translator;
    QCOMPARE(parser.expression(&translator), text.toUpper());
}

void TestRukEngine::handlesShareOneParser()
{
    RukParser first = rukEngine().createParser();
    RukParser copy = first;
    first.setExpression(QStringLiteral("1+1"));
    copy.evaluate();
    QCOMPARE(first.result().asInteger(), qint64(2));
    QCOMPARE(copy.expression(), QStringLiteral("1+1"));

    RukParser other = rukEngine().createParser();
    TOV_VERIFY_THROWS(other.evaluate(), SefException, QStringLiteral("没有可计算的表达式"), -1);
    RukParser null;
    QVERIFY(null.isNull());
    TOV_VERIFY_THROWS(null.evaluate(), SefException, QStringLiteral("解析器没有创建"), -1);
}

namespace {

class Constants : public IRukQueryConstValueEvent
{
public:
    bool onQueryConstValue(const QString &code, RukData &value, void *) override
    {
        if (code.compare(QLatin1String("g"), Qt::CaseInsensitive) != 0)
            return false;
        value.setFloat(9.81);
        return true;
    }
};

class Functions : public IRukQueryFunctionEvent
{
public:
    bool onQueryFunction(const QString &name, int argCount, RukFunction &function, void *) override
    {
        if (name == QLatin1String("twice") && argCount == 1) {
            function = [](const RukData *args, int) { return RukData::fromFloat(args[0].asFloat() * 2); };
            return true;
        }
        if (name == QLatin1String("nothing")) {
            function = [](const RukData *, int) { return RukData(); };
            return true;
        }
        return false;
    }
};

} // namespace

void TestRukEngine::constantsFunctionsAndNodeMap()
{
    Vars vars;
    standardVars(vars);
    Constants constants;
    Functions functions;
    RukParser parser = rukEngine().createParser();
    parser.setOnQueryVarValue(&vars);

    parser.setExpression(
        QStringLiteral("twice(G) + x"), &vars, &constants, nullptr, RukNodeMapInfos(), &functions);
    QCOMPARE(vars.typeAsked, QStringList({ "x" })); // G became a constant
    parser.evaluate();
    QCOMPARE(parser.result().asFloat(), 9.81 * 2 + 2.5);
    Walker walker;
    parser.visitNode(RukParser::PreOrder, &walker);
    QCOMPARE(walker.seen, QStringList({ "4:+", "5:twice", "2:G", "1:x" }));

    TOV_VERIFY_THROWS(parser.setExpression(QStringLiteral("twice(1, 2)"), RukQueryVarDataTypeEvent(),
                          RukQueryConstValueEvent(), nullptr, RukNodeMapInfos(), &functions),
        SefException, QStringLiteral("表达式[twice(1, 2)]第1个字符处: 未知函数[twice]"), 1);
    parser.setExpression(QStringLiteral("nothing()"), RukQueryVarDataTypeEvent(), RukQueryConstValueEvent(),
        nullptr, RukNodeMapInfos(), &functions);
    TOV_VERIFY_THROWS(parser.evaluate(), SefException, QStringLiteral("函数[nothing]没有返回值"), -1);

    // A node map binds values without asking the callbacks.
    RukNodeMapInfos map;
    map.insert(QStringLiteral("x"), RukData::fromInteger(40));
    parser.setExpression(QStringLiteral("x + i"));
    vars.valueAsked.clear();
    parser.evaluate(RukQueryVarDataTypeEvent(), nullptr, map);
    QCOMPARE(describe(parser.result()), QStringLiteral("10:47"));
    QCOMPARE(vars.valueAsked, QStringList({ "i" }));
}

void TestRukEngine::failedParseKeepsTextAndDropsTree()
{
    RukParser parser = rukEngine().createParser();
    parser.setExpression(QStringLiteral("1+2"));
    parser.evaluate();
    QVERIFY(parser.result().isValid());
    QVERIFY_EXCEPTION_THROWN(parser.setExpression(QStringLiteral("1+")), SefException);
    QCOMPARE(parser.expression(), QStringLiteral("1+"));
    QVERIFY(!parser.result().isValid());
    Walker walker;
    parser.visitNode(RukParser::PreOrder, &walker);
    QVERIFY(walker.seen.isEmpty());
    TOV_VERIFY_THROWS(parser.evaluate(), SefException, QStringLiteral("没有可计算的表达式"), -1);
    TOV_VERIFY_THROWS(parser.visitNode(2, &walker), SefException, QStringLiteral("遍历顺序[2]不对"), -1);
}

void TestRukEngine::engineInstances()
{
    QVERIFY(rukEngine(QString()) == rukEngine(QString()));
    QVERIFY(rukEngine(QStringLiteral("other")) != rukEngine(QString()));
    QCOMPARE(rukEngine(QStringLiteral("other")).name(), QStringLiteral("other"));
}

void TestRukEngine::dataConversions_data()
{
    QTest::addColumn<RukData>("data");
    QTest::addColumn<double>("asFloat");
    QTest::addColumn<qint64>("asInteger");
    QTest::addColumn<QString>("asString");
    QTest::addColumn<bool>("asBoolean");
    QTest::addColumn<QVariant>("asVariant");

    QTest::newRow("invalid") << RukData() << 0.0 << qint64(0) << QString() << false << QVariant();
    QTest::newRow("float rounds half away")
        << RukData::fromFloat(-2.5) << -2.5 << qint64(-3) << "-2.5" << true << QVariant(-2.5);
    QTest::newRow("float shortest text")
        << RukData::fromFloat(0.1) << 0.1 << qint64(0) << "0.1" << true << QVariant(0.1);
    QTest::newRow("integer") << RukData::fromInteger(7) << 7.0 << qint64(7) << "7" << true << QVariant(7);
    QTest::newRow("64-bit integer") << RukData::fromInteger(5000000000LL) << 5e9 << qint64(5000000000LL)
                                    << "5000000000" << true << QVariant(qlonglong(5000000000LL));
    QTest::newRow("numeric text") << RukData::fromString(QStringLiteral("2.5")) << 2.5 << qint64(3) << "2.5"
                                  << true << QVariant(QStringLiteral("2.5"));
    QTest::newRow("word") << RukData::fromString(QStringLiteral("是")) << 0.0 << qint64(0) << "是" << true
                          << QVariant(QStringLiteral("是"));
    QTest::newRow("boolean") << RukData::fromBoolean(false) << 0.0 << qint64(0) << "false" << false
                             << QVariant(false);
    QTest::newRow("variant long long keeps 64 bits") << RukData::fromVariant(QVariant(qlonglong(3))) << 3.0
                                                     << qint64(3) << "3" << true << QVariant(qlonglong(3));
}

void TestRukEngine::dataConversions()
{
    QFETCH(RukData, data);
    QFETCH(double, asFloat);
    QFETCH(qint64, asInteger);
    QFETCH(QString, asString);
    QFETCH(bool, asBoolean);
    QFETCH(QVariant, asVariant);
    QCOMPARE(data.asFloat(), asFloat);
    QCOMPARE(data.asInteger(), asInteger);
    QCOMPARE(data.asString(), asString);
    QCOMPARE(data.asBoolean(), asBoolean);
    QCOMPARE(data.asVariant(), asVariant);
}

QTEST_GUILESS_MAIN(TestRukEngine)
#include "tst_rukengine.moc"
