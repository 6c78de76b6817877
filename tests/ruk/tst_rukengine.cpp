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
    void announcedTypes_data();
    void announcedTypes();
    void callbacksPerVariable();
    void typeChangeAtEvaluateRecompiles();
    void floatPrograms_data();
    void floatPrograms();
    void walks_data();
    void walks();
    void rebuild_data();
    void rebuild();
    void deepNesting_data();
    void deepNesting();
    void longChainsNeedNoRecursion();
    void parserHandles();
    void constantsFunctionsAndNodeMap();
    void dataConversions_data();
    void dataConversions();
};

void TestRukEngine::evaluate_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("expected"); // type:text, or the error message

    // precedence and associativity
    row("* before +", "1+2*3", "10:7");
    row("- is left-associative", "10-4-3", "10:3");
    row("/ is left-associative", "100/10/5", "11:2");
    row("^ is right-associative", "2^3^2", "10:512");
    row("^ binds tighter than unary -", "-2^2", "10:-4");
    row("unary - in an exponent", "2^-1", "11:0.5");
    row("unary - binds tighter than mod", "-7 mod 3", "10:-1");
    row("not binds looser than =", "not 1 = 2", "13:true");
    row("and binds tighter than or", "true or false and false", "13:true");
    row("keywords in any case", "TRUE And NOT False", "13:true");
    row("&& || !", "!(1>2) && (false || 1)", "13:true");
    // arithmetic types
    row("/ always yields a float", "6/3", "11:2");
    row("% of integers", "7%3", "10:1");
    row("% of floats", "7.5 % 2", "11:1.5");
    row("integer overflow widens to 64 bits", "2147483647+1", "17:2147483648");
    row("64-bit overflow becomes a float", "9223372036854775807+1", "11:9223372036854776000");
    row("literal beyond 32 bits", "3000000000", "17:3000000000");
    row("exponent literal", "1e3", "11:1000");
    row("leading-point literals", ".5+.25", "11:0.75");
    // texts
    row("+ joins a non-numeric text", "'a' + 1", "12:a1");
    row("+ adds a numeric text", "'2' + 1", "10:3");
    row("* reads a numeric text", "'2.5' * 2", "11:5");
    row("& joins numbers as texts", "1 & 2.5", "12:12.5");
    row("doubled double quote", "\"a\"\"b\"", "12:a\"b");
    row("doubled single quote", "'it''s'", "12:it's");
    // comparisons and the tolerance
    row("equal within 1e-10 relative", "1 = 1.00000000001", "13:true");
    row("unequal beyond the tolerance", "1 = 1.000000001", "13:false");
    row("0.1+0.2 equals 0.3", "0.1+0.2 = 0.3", "13:true");
    row("absolute tolerance near zero", "1e-11 = 0", "13:true");
    row("relative tolerance of large numbers", "1e20 = 1e20+1e9", "13:true");
    row("< is false within the tolerance", "3 < 3.00000000001", "13:false");
    row("<= is true within the tolerance", "3.00000000001 <= 3", "13:true");
    row("texts compare by code unit", "'B' < 'a'", "13:true");
    row("numeric text against a number", "'10' = 10", "13:true");
    row("two texts compare exactly", "'10' = '10.0'", "13:false");
    row("false < true", "true > false", "13:true");
    row("== != <>", "1 == 1 and 1 != 2 and 1 <> 2", "13:true");
    row("logic reads TRUE text and numbers", "1 and 'TRUE'", "13:true");
    // full-width and symbol forms
    row("full-width operators", "1 ＋ 2 × 3 ÷ 2 － 1", "11:3");
    row("full-width brackets", "（1＋2）＊3", "10:9");
    row("full-width <>", "1＜＞2", "13:true");
    row("≥ ≤ ≠", "3 ≥ 2 and 2 ≤ 2 and 3 ≠ 4", "13:true");
    // variables
    row("bracketed name with space", "[宽度 (m)] + 1", "11:5");
    row("full-width bracketed name", "［宽度］", "11:3");
    row("@ argument", "@n * 2", "10:10");
    row("# under check is a text", "# + 1", "10:11");
    row("string variable", "s & '!'", "12:abc!");
    row("boolean variable", "not t", "13:false");
    row("typed arithmetic", "x*2 - x/2 + -x - 宽度", "11:-1.75");
    row("typed arithmetic with a constant on the left", "10 - x / 0.5 * 2 + 1", "11:1");
    row("typed comparisons", "x > 2 and x >= 2.5 and x < 3 and x <= 2.5 and x = 2.5 and x != 2", "13:true");
    row("typed comparison false", "x > 2.5 or x < 2.5 or x <> 2.5", "13:false");
    row("typed functions", "floor(x) + ceil(x) + round(x) + abs(-x) + sqrt(x*x)", "11:13");
    row("typed text equality", "s = 'abc' and s != 'x' and 'abc' = s and not (s <> s)", "13:true");
    row("text variable against constants", "s = 'x' or s = 'abc' and s <> 'ab'", "13:true");
    row("number announced as text compares as text", "数 = '2.5' and 数 != '2.50'", "13:true");
    row("if of two typed branches", "if(t, x, 宽度) * 2", "11:5");
    // functions
    row("abs of an integer", "abs(-3)", "10:3");
    row("abs of a float", "ABS(-2.5)", "11:2.5");
    row("exp ln log10", "exp(0) + ln(1) + log10(1000)", "11:4");
    row("pow", "pow(2, 10)", "11:1024");
    row("trigonometry in radians", "sin(0) + cos(0) + tan(0)", "11:1");
    row("inverse trigonometry", "asin(1)*2 = pi() and acos(1) = 0 and atan(1)*4 = pi()", "13:true");
    row("atan2 takes y then x", "atan2(1, 0)*2", "11:3.141592653589793");
    row("deg and rad", "deg(rad(90))", "11:90");
    row("floor of a negative", "floor(-2.5)", "11:-3");
    row("int truncates", "int(-2.7)", "11:-2");
    row("trunc", "trunc(2.7)", "11:2");
    row("round half away from zero", "round(-2.5)", "11:-3");
    row("round to digits despite binary 2.675", "round(2.675, 2)", "11:2.68");
    row("round to tens", "round(1234, -2)", "11:1200");
    row("min of mixed numbers", "min(3, 1.5, 2)", "11:1.5");
    row("max of integers stays integer", "max(1, 5, 3)", "10:5");
    row("sum", "sum(1, 2, 3)", "10:6");
    row("avg", "avg(1, 2)", "11:1.5");
    row("if picks the else branch", "if(1>2, 'a', 'b')", "12:b");
    row("iif", "IIF(true, 1, 2)", "10:1");
    row("len counts characters", "len('宽度')", "10:2");
    row("left right", "left('abcdef', 2) & right('abcdef', 2)", "12:abef");
    row("mid is 1-based", "mid('abcdef', 2, 3)", "12:bcd");
    row("mid without a count takes the rest", "mid('abcdef', 5)", "12:ef");
    row("upper lower trim", "upper('aB') & lower('aB') & trim('  x ')", "12:ABabx");
    row("str of a float", "str(2.50)", "12:2.5");
    row("num of a text", "num(' 12 ')", "10:12");
    // Parse errors point at a character.
    const auto parseError
        = [](const char *name, const QString &expression, int position, const char *detail) {
              row(name, expression,
                  QStringLiteral("表达式[%1]第%2个字符处: ").arg(expression).arg(position)
                      + QString::fromUtf8(detail));
          };
    parseError("empty text", QString(), 1, "表达式为空");
    parseError("blank text", QStringLiteral("  \u3000"), 1, "表达式为空");
    parseError("operand missing at the end", QStringLiteral("1+"), 3, "缺少运算数");
    parseError("operand missing before an operator", QStringLiteral("1+*2"), 3, "缺少运算数");
    parseError("empty argument", QStringLiteral("max(1,)"), 7, "缺少运算数");
    parseError("unclosed bracket points at it", QStringLiteral("2*(1+2"), 3, "缺少右括号");
    parseError("extra closing bracket", QStringLiteral("1+2)"), 4, "多余的右括号");
    parseError("two operands in a row", QStringLiteral("a b"), 3, "缺少运算符");
    parseError("ideographic space separates", QStringLiteral("1\u30002"), 3, "缺少运算符");
    parseError("function name needs its bracket at once", QStringLiteral("abs (1)"), 5, "缺少运算符");
    parseError("arguments without a comma", QStringLiteral("max(1 2)"), 7, "缺少运算符");
    parseError("chained comparison", QStringLiteral("1 < 2 < 3"), 7, "比较运算不能连用");
    parseError("unknown function", QStringLiteral("1+foo(1)"), 3, "未知函数[foo]");
    parseError("wrong argument count", QStringLiteral("sqrt(1,2)"), 1, "函数[sqrt]的参数个数不对");
    parseError("too few arguments for if", QStringLiteral("if(1,2)"), 1, "函数[if]的参数个数不对");
    parseError("unknown character", QStringLiteral("1 $ 2"), 3, "无法识别的字符[$]");
    parseError("single bar", QStringLiteral("1 | 2"), 3, "无法识别的字符[|]");
    parseError("lone @", QStringLiteral("@ + 1"), 1, "无法识别的字符[@]");
    parseError("unterminated text", QStringLiteral("1 & 'abc"), 5, "字符串缺少结束引号");
    parseError("unterminated bracketed name", QStringLiteral("[宽度 + 1"), 1, "缺少右方括号");
    parseError("empty bracketed name", QStringLiteral("[] + 1"), 1, "变量名为空");
    parseError("number out of range", QStringLiteral("1e999"), 1, "数值超出范围");
    // Evaluation errors carry no position.
    row("division by zero", "1/0", "除数为零");
    row("float division by zero", "1.5/(2-2)", "除数为零");
    row("integer remainder by zero", "5 % 0", "除数为零");
    row("float remainder by zero", "1.5 mod 0", "除数为零");
    row("square root of a negative", "sqrt(-1)", "计算结果溢出");
    row("power beyond double", "10^400", "计算结果溢出");
    row("product beyond double", "1e300*1e300", "计算结果溢出");
    row("variable without a value", "missing + 1", "变量[missing]没有值");
    row("bracketed code in the message", "[无值]", "变量[无值]没有值");
    row("variable marked invalid", "bad + 1", "变量[bad]的值无效");
    row("negating a text", "-'abc'", "运算符[-]不能用于字符串");
    row("adding a boolean", "true + 1", "运算符[+]不能用于布尔值");
    row("subtracting a non-numeric text", "s - 1", "运算符[-]不能用于字符串");
    row("logic over a text", "'abc' and true", "运算符[and]不能用于字符串");
    row("not over a text", "not 'x'", "运算符[not]不能用于字符串");
    row("function over a text", "sqrt('x')", "函数[sqrt]不能用于字符串");
    row("if over a text", "if('x', 1, 2)", "函数[if]不能用于字符串");
    row("num of a word", "num('x')", "文本[x]不是数值");
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
    int code = -1;
    try {
        parser.setExpression(expression, &vars);
        parser.evaluate();
        actual = describe(parser.result());
        QVERIFY(parser.result().isValid());
        // With a type callback the engine runs its untyped program: same answer.
        parser.evaluate(&vars);
        generic = describe(parser.result());
    } catch (const SefException &e) {
        actual = generic = e.message();
        code = e.code();
        QVERIFY(!parser.result().isValid());
    }
    QCOMPARE(actual, expected);
    QCOMPARE(generic, expected);
    // A parse error's code is the position its message names; evaluation errors carry -1.
    static const QRegularExpression at(QStringLiteral("^表达式\\[.*\\]第(\\d+)个字符处: "));
    const QRegularExpressionMatch match = at.match(expected);
    QCOMPARE(code, match.hasMatch() ? match.captured(1).toInt() : -1);
}

void TestRukEngine::announcedTypes_data()
{
    QTest::addColumn<int>("announced");
    QTest::addColumn<RukData>("value");
    QTest::addColumn<QString>("expected"); // type:text or the message

    row("numeric text to integer", 10, RukData::fromString(QStringLiteral(" 12 ")), "10:12");
    row("float to integer rounds", 10, RukData::fromFloat(2.5), "10:3");
    row("integer to float", 11, RukData::fromInteger(3), "11:3");
    row("boolean to float", 11, RukData::fromBoolean(true), "11:1");
    row("float to text", 12, RukData::fromFloat(2.5), "12:2.5");
    row("number to boolean", 13, RukData::fromInteger(2), "13:true");
    row("text FALSE to boolean", 13, RukData::fromString(QStringLiteral("FALSE")), "13:false");
    row("integer to 64-bit", 17, RukData::fromInteger(4), "17:4");
    row("type 0 keeps the value's type", 0, RukData::fromString(QStringLiteral("7")), "12:7");
    row("word is not a float", 11, RukData::fromString(QStringLiteral("abc")),
        QStringLiteral("变量[v]的值[abc]不是浮点数"));
    row("word is not an integer", 10, RukData::fromString(QStringLiteral("1,5")),
        QStringLiteral("变量[v]的值[1,5]不是整数"));
    row("word is not a boolean", 13, RukData::fromString(QStringLiteral("maybe")),
        QStringLiteral("变量[v]的值[maybe]不是布尔值"));
    row("huge float is not an integer", 10, RukData::fromFloat(1e30),
        QStringLiteral("变量[v]的值[1e+30]不是整数"));
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

void TestRukEngine::floatPrograms_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("expected"); // type:text or the message
    QTest::addColumn<QString>("asked");

    // Branches not taken and operands after a decided and/or ask for nothing.
    row("if skips the else branch", "if(x > 1, x, 1/0 + missing)", "11:2.5", "x,x");
    row("iif skips the then branch", "iif(x < 1, missing, i)", "11:7", "x,i");
    row("and stops at false", "x < 1 and missing", "13:false", "x");
    row("or stops at true", "x > 1 or missing", "13:true", "x");
    row("and reads its right side as boolean", "true and i", "13:true", "i");
    row("nested if inside a sum", "1 + if(t, if(false, 1, 2), 3) * 10", "10:21", "t");
    row("variable against variable", "x*宽度 + x/宽度 - (x-宽度)", "11:8.833333333333334",
        "x,宽度,x,宽度,x,宽度");
    row("variable against an immediate", "x*2 - 宽度/4 + x", "11:6.75", "x,宽度,x");
    row("comparison of variables picks the then branch", "if(宽度 > x, x, 宽度)", "11:2.5", "宽度,x,x");
    row("the then branch ends the program", "if(x >= 宽度, x, 宽度) + 0", "11:3", "x,宽度,宽度");
    row("if as the whole expression", "if(x = 宽度, x, 宽度)", "11:3", "x,宽度,宽度");
    row("comparison with an immediate picks the then branch", "if(x < 3, x, 宽度)", "11:2.5", "x,x");
    row("comparison with an immediate picks the else branch", "if(x >= 3, x, 宽度) - 1", "11:2", "x,宽度");
    row("and over fused comparisons", "x > 2 and 宽度 <= 10", "13:true", "x,宽度");
    row("or jumps past a dropped boolean test", "(x < 2 or 宽度 = 3) and x != 宽度", "13:true",
        "x,宽度,x,宽度");
    row("if over and, then a sum", "if(x > 2 and x < 宽度, 1, 2) + x", "11:3.5", "x,x,宽度,x");
    row("square root in place", "sqrt(x*x + 宽度*宽度)", "11:3.905124837953327", "x,x,宽度,宽度");
    row("square root of a negative", "sqrt(x - 宽度)", "计算结果溢出", "x,宽度");
    row("first variable without a value asks no further", "m * x", "变量[m]没有值", "m");
    row("second variable without a value", "x * m", "变量[m]没有值", "x,m");
    row("invalid variable against an immediate", "bad > 1", "变量[bad]的值无效", "bad");
    row("division of variables by zero", "x / z", "除数为零", "x,z");
    row("integer value converted in a fused load", "i + x", "11:9.5", "i,x");
    row("second of a pair converted", "x + i", "11:9.5", "x,i");
    row("both of a pair converted", "i * i - x", "11:46.5", "i,i,x");
    row("pair converted inside an accumulation", "x + i*i", "11:51.5", "x,i,i");
    row("second of a pair in an accumulation without a value", "x + 宽度*m", "变量[m]没有值", "x,宽度,m");
    // An operation on variables whose result goes straight into the top of the stack.
    row("accumulation ends the program", "x + 宽度*2", "11:8.5", "x,宽度");
    row("accumulation in the middle", "x - 宽度/2 + 1", "11:2", "x,宽度");
    row("accumulation of two variables", "x * (宽度 - x)", "11:1.25", "x,宽度,x");
    row("accumulation divides by zero", "x + 宽度/z", "除数为零", "x,宽度,z");
    row("inner overflow fails before the next variable", "x + 宽度*1e308 + 宽度", "计算结果溢出", "x,宽度");
    row("inner overflow times zero still fails", "z * (宽度*1e308)", "计算结果溢出", "z,宽度");
    row("accumulation then negation", "-(x + 宽度*2)", "11:-8.5", "x,宽度");
    row("accumulation then a function", "abs(x - 宽度*2)", "11:3.5", "x,宽度");
    row("accumulation then a root, then more", "sqrt(x + 宽度*2) + 1", "11:3.9154759474226504", "x,宽度");
    row("accumulation then the root of a negative", "sqrt(x - 宽度*2) + 宽度", "计算结果溢出", "x,宽度");
    row("accumulation then the root of a negative ends the program", "sqrt(x - 宽度*2)", "计算结果溢出",
        "x,宽度");
    row("text comparison ends the program", "s = \"abc\"", "13:true", "s");
    row("text comparison before a jump", "s != \"abc\" or x > 2", "13:true", "s,x");
    row("text comparison after a jump", "x > 2 and s = \"abd\"", "13:false", "x,s");
    row("number given to a text variable is compared as text", "数 = \"2.5\"", "13:true", "数");
    row("square root ends the program", "sqrt(x*宽度)", "11:2.7386127875258306", "x,宽度");
}

// Programs over variables announced as floating-point run on plain doubles; their operations are
// fused, and must still ask for each variable node once, in order, and fail where the generic
// program fails.
void TestRukEngine::floatPrograms()
{
    QFETCH(QString, expression);
    QFETCH(QString, expected);
    QFETCH(QString, asked);
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
        QCOMPARE(vars.valueAsked.join(QLatin1Char(',')), asked);
    }
    // The generic program agrees.
    QCOMPARE(run(&vars), expected);
    QCOMPARE(vars.valueAsked.join(QLatin1Char(',')), asked);
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

    row("pre-order, children left to right", "a + b * -c", 0,
        QStringList({ "4:+", "1:a", "4:*", "1:b", "3:-", "1:c" }));
    row("post-order", "a + b * -c", 1, QStringList({ "1:a", "1:b", "1:c", "3:-", "4:*", "4:+" }));
    row("groups, functions and constants", "max([宽 度], (2))", 0,
        QStringList({ "5:max", "1:[宽 度]", "6:(", "2:2" }));
    row("tokens as written", "NOT #＝'x'", 0, QStringList({ "3:NOT", "4:＝", "1:#", "2:'x'" }));
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

    row("spacing and brackets stay as written", "  a+( b *max(c ,1))  ", "  A+( B *<max>(C ,1))  ");
    row("bracketed and prefixed names", "[宽度]＋@n", "[宽度]＋@N");
    row("texts and keywords untouched", "x and 'x' or not y", "X and 'x' or not Y");
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

    row("100000 opening brackets", QString(100000, QLatin1Char('(')) + QLatin1Char('1'), 257);
    row("100000 unary minus signs", QString(100000, QLatin1Char('-')) + QLatin1Char('1'), 257);
    row("100000 nots", QStringLiteral("not ").repeated(100000) + QLatin1Char('1'), 1025);
    row("nested calls", QStringLiteral("abs(").repeated(100000), 1025);
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

void TestRukEngine::parserHandles()
{
    RukParser first = rukEngine().createParser();
    RukParser copy = first;
    first.setExpression(QStringLiteral("1+1"));
    copy.evaluate();
    QCOMPARE(first.result().asInteger(), qint64(2));
    QCOMPARE(copy.expression(), QStringLiteral("1+1"));

    RukParser null;
    QVERIFY(null.isNull());
    TOV_VERIFY_THROWS(null.evaluate(), SefException, QStringLiteral("解析器没有创建"), -1);

    // A failed parse keeps the text and drops the tree.
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

    QVERIFY(rukEngine(QString()) == rukEngine(QString()));
    QVERIFY(rukEngine(QStringLiteral("other")) != rukEngine(QString()));
    QCOMPARE(rukEngine(QStringLiteral("other")).name(), QStringLiteral("other"));
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

void TestRukEngine::dataConversions_data()
{
    QTest::addColumn<RukData>("data");
    QTest::addColumn<double>("asFloat");
    QTest::addColumn<qint64>("asInteger");
    QTest::addColumn<QString>("asString");
    QTest::addColumn<bool>("asBoolean");
    QTest::addColumn<QVariant>("asVariant");

    row("invalid", RukData(), 0.0, qint64(0), QString(), false, QVariant());
    row("float rounds half away", RukData::fromFloat(-2.5), -2.5, qint64(-3), "-2.5", true, QVariant(-2.5));
    row("float shortest text", RukData::fromFloat(0.1), 0.1, qint64(0), "0.1", true, QVariant(0.1));
    row("integer", RukData::fromInteger(7), 7.0, qint64(7), "7", true, QVariant(7));
    row("64-bit integer", RukData::fromInteger(5000000000LL), 5e9, qint64(5000000000LL), "5000000000", true,
        QVariant(qlonglong(5000000000LL)));
    row("numeric text", RukData::fromString(QStringLiteral("2.5")), 2.5, qint64(3), "2.5", true,
        QVariant(QStringLiteral("2.5")));
    row("word", RukData::fromString(QStringLiteral("是")), 0.0, qint64(0), "是", true,
        QVariant(QStringLiteral("是")));
    row("boolean", RukData::fromBoolean(false), 0.0, qint64(0), "false", false, QVariant(false));
    row("variant long long keeps 64 bits", RukData::fromVariant(QVariant(qlonglong(3))), 3.0, qint64(3), "3",
        true, QVariant(qlonglong(3)));
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
