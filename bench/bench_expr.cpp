// The expression engine against muparser, muparserx and a hand-written floor (one std::function
// call per variable), parse once and evaluate many, with the variables changing every iteration.
// Ours reads its variables through the value callback, the peers through bound variables.
#include <rukengine.h>

#include <benchmark/benchmark.h>
#include <mpParser.h>
#include <muParser.h>

#include <QHash>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace {

enum Uses
{
    UsesAB = 1,
    UsesV = 2,
    UsesS = 4
};

struct Case
{
    const char *name;
    int uses;
    QString tov;
    std::string muparser; // empty: not supported by muparser
    std::string muparserx;
    std::function<double()> floor;
};

// The variables every expression reads; update() changes them before each evaluation.
double a = 0, b = 0;
double v[10];
QString s;
std::string sx;
const QString strings[2] = { QStringLiteral("abc"), QStringLiteral("abd") };

// Changes the variables that the expression reads.
inline void update(unsigned k, int uses)
{
    if (uses & UsesAB) {
        a = 1.0 + double(k & 7) * 0.5;
        b = 3.0 - double(k & 3) * 0.75;
    }
    if (uses & UsesV) {
        for (int i = 0; i < 10; ++i)
            v[i] = double((k + unsigned(i)) & 15) * 0.25;
    }
    if (uses & UsesS) {
        s = strings[k & 1];
        sx = (k & 1) ? "abd" : "abc";
    }
}

// The floor reads each variable through one std::function, as a callback-driven engine must.
std::function<double()> fa = [] { return a; };
std::function<double()> fb = [] { return b; };
std::function<double()> fv[10] = { [] { return v[0]; }, [] { return v[1]; }, [] { return v[2]; },
    [] { return v[3]; }, [] { return v[4]; }, [] { return v[5]; }, [] { return v[6]; }, [] { return v[7]; },
    [] { return v[8]; }, [] { return v[9]; } };
std::function<const QString &()> fs = []() -> const QString & { return s; };

std::vector<Case> &cases()
{
    static std::vector<Case> all = {
        { "E1", UsesAB, "a+b*2", "a+b*2", "a+b*2", [] { return fa() + fb() * 2; } },
        { "E2", UsesAB, "(a+b)*(a-b)/2.5", "(a+b)*(a-b)/2.5", "(a+b)*(a-b)/2.5",
            [] {
                const double x = fa(), y = fb(), x2 = fa(), y2 = fb();
                return (x + y) * (x2 - y2) / 2.5;
            } },
        { "E3", UsesAB, "a>3 and b<=10", "a>3 && b<=10", "a>3 && b<=10",
            [] { return double(fa() > 3 && fb() <= 10); } },
        { "E4", UsesAB, "sqrt(a*a+b*b)", "sqrt(a*a+b*b)", "sqrt(a*a+b*b)",
            [] {
                const double x = fa(), x2 = fa(), y = fb(), y2 = fb();
                return std::sqrt(x * x2 + y * y2);
            } },
        { "E5", UsesV, "v0+v1+v2+v3+v4+v5+v6+v7+v8+v9", "v0+v1+v2+v3+v4+v5+v6+v7+v8+v9",
            "v0+v1+v2+v3+v4+v5+v6+v7+v8+v9",
            [] {
                double sum = 0;
                for (auto &f : fv)
                    sum += f();
                return sum;
            } },
        { "E6", UsesAB, "if(a>b,a,b)", "a>b ? a : b", "a>b ? a : b",
            [] {
                const double x = fa(), y = fb();
                return x > y ? fa() : fb();
            } },
        { "E7", UsesS, "s = \"abc\"", "", "s == \"abc\"",
            [] { return double(fs() == QLatin1String("abc")); } },
    };
    return all;
}

// Binds each variable node to its slot at setExpression, so that the value callback needs no
// lookup by name. The value callback's base comes first: called once per variable read, it is
// the one that should need no this-adjusting thunk.
class BoundVars : public RukQueryVarValueImpl, public RukQueryVarDataTypeImpl
{
public:
    BoundVars()
    {
        numbers.insert(QStringLiteral("a"), &a);
        numbers.insert(QStringLiteral("b"), &b);
        for (int i = 0; i < 10; ++i)
            numbers.insert(QStringLiteral("v%1").arg(i), &v[i]);
    }

protected:
    void queryVarDataType(RukVarNode &node, int &dataType, void *) override
    {
        if (double *slot = numbers.value(node.varCode())) {
            node.setTag(reinterpret_cast<qintptr>(slot));
            dataType = RukData::Float;
        } else if (node.varCode() == QLatin1String("s")) {
            node.setTag(reinterpret_cast<qintptr>(&s));
            dataType = RukData::String;
        }
    }
    void queryVarValue(RukVarNode &node, void *) override
    {
        if (Q_LIKELY(node.dataType() == RukData::Float)) // all but E7's
            node.setAsFloat(*reinterpret_cast<const double *>(node.tag()));
        else
            node.setAsString(*reinterpret_cast<const QString *>(node.tag()));
    }

private:
    QHash<QString, double *> numbers;
};

BoundVars &boundVars()
{
    static BoundVars vars;
    return vars;
}

RukParser tovParser(const Case &c)
{
    RukParser parser = rukEngine().createParser();
    parser.setOnQueryVarValue(&boundVars());
    parser.setExpression(c.tov, &boundVars());
    return parser;
}

double tovValue(RukParser &parser)
{
    parser.evaluate();
    const RukData &r = parser.result();
    return r.dataType() == RukData::Boolean ? double(r.asBoolean()) : r.asFloat();
}

void defineMu(mu::Parser &parser)
{
    parser.DefineVar("a", &a);
    parser.DefineVar("b", &b);
    for (int i = 0; i < 10; ++i)
        parser.DefineVar("v" + std::to_string(i), &v[i]);
}

struct MuxVars
{
    mup::Value a { 0.0 }, b { 0.0 }, s { "abc" };
    mup::Value v[10];
    void load(int uses)
    {
        if (uses & UsesAB) {
            a = ::a;
            b = ::b;
        }
        if (uses & UsesV) {
            for (int i = 0; i < 10; ++i)
                v[i] = ::v[i];
        }
        if (uses & UsesS)
            s = sx;
    }
};

void defineMux(mup::ParserX &parser, MuxVars &vars)
{
    parser.DefineVar("a", mup::Variable(&vars.a));
    parser.DefineVar("b", mup::Variable(&vars.b));
    parser.DefineVar("s", mup::Variable(&vars.s));
    for (int i = 0; i < 10; ++i)
        parser.DefineVar("v" + std::to_string(i), mup::Variable(&vars.v[i]));
}

double muxValue(const mup::IValue &r)
{
    return r.GetType() == 'b' ? double(r.GetBool()) : r.GetFloat();
}

// Every implementation must agree with the floor before it is timed.
template<typename Eval>
bool agrees(const Case &c, Eval eval, std::string &why)
{
    for (unsigned k = 0; k < 32; ++k) {
        update(k, c.uses);
        const double expected = c.floor();
        const double actual = eval();
        if (std::fabs(actual - expected) > 1e-12 * std::max(1.0, std::fabs(expected))) {
            why = std::string(c.name) + ": " + std::to_string(actual) + " != floor "
                + std::to_string(expected);
            return false;
        }
    }
    return true;
}

void benchTov(benchmark::State &state, const Case *c)
{
    RukParser parser = tovParser(*c);
    std::string why;
    if (!agrees(
            *c, [&] { return tovValue(parser); }, why)) {
        state.SkipWithError(why.c_str());
        return;
    }
    unsigned k = 0;
    for (auto _ : state) {
        update(k++, c->uses);
        parser.evaluate();
        benchmark::DoNotOptimize(parser.result());
    }
}

void benchMu(benchmark::State &state, const Case *c)
{
    mu::Parser parser;
    defineMu(parser);
    parser.SetExpr(c->muparser);
    std::string why;
    if (!agrees(
            *c, [&] { return parser.Eval(); }, why)) {
        state.SkipWithError(why.c_str());
        return;
    }
    unsigned k = 0;
    for (auto _ : state) {
        update(k++, c->uses);
        benchmark::DoNotOptimize(parser.Eval());
    }
}

void benchMux(benchmark::State &state, const Case *c)
{
    mup::ParserX parser;
    MuxVars vars;
    defineMux(parser, vars);
    parser.SetExpr(c->muparserx);
    std::string why;
    if (!agrees(
            *c,
            [&] {
                vars.load(c->uses);
                return muxValue(parser.Eval());
            },
            why)) {
        state.SkipWithError(why.c_str());
        return;
    }
    unsigned k = 0;
    for (auto _ : state) {
        update(k++, c->uses);
        vars.load(c->uses);
        benchmark::DoNotOptimize(&parser.Eval());
    }
}

void benchFloor(benchmark::State &state, const Case *c)
{
    unsigned k = 0;
    for (auto _ : state) {
        update(k++, c->uses);
        benchmark::DoNotOptimize(c->floor());
    }
}

// Parsing: set the expression and evaluate it once (the peers parse on their first evaluation).
void parseTov(benchmark::State &state)
{
    const Case &c = cases()[1];
    RukParser parser = rukEngine().createParser();
    parser.setOnQueryVarValue(&boundVars());
    update(1, c.uses);
    for (auto _ : state) {
        parser.setExpression(c.tov, &boundVars());
        parser.evaluate();
        benchmark::DoNotOptimize(parser.result());
    }
}

void parseMu(benchmark::State &state)
{
    const Case &c = cases()[1];
    mu::Parser parser;
    defineMu(parser);
    update(1, c.uses);
    for (auto _ : state) {
        parser.SetExpr(c.muparser);
        benchmark::DoNotOptimize(parser.Eval());
    }
}

void parseMux(benchmark::State &state)
{
    const Case &c = cases()[1];
    mup::ParserX parser;
    MuxVars vars;
    defineMux(parser, vars);
    update(1, c.uses);
    vars.load(c.uses);
    for (auto _ : state) {
        parser.SetExpr(c.muparserx);
        benchmark::DoNotOptimize(&parser.Eval());
    }
}

int registerAll()
{
    for (const Case &c : cases()) {
        const std::string name = c.name;
        benchmark::RegisterBenchmark((name + "/tov").c_str(), benchTov, &c);
        if (!c.muparser.empty())
            benchmark::RegisterBenchmark((name + "/muparser").c_str(), benchMu, &c);
        benchmark::RegisterBenchmark((name + "/muparserx").c_str(), benchMux, &c);
        benchmark::RegisterBenchmark((name + "/floor").c_str(), benchFloor, &c);
    }
    benchmark::RegisterBenchmark("ParseE2/tov", parseTov);
    benchmark::RegisterBenchmark("ParseE2/muparser", parseMu);
    benchmark::RegisterBenchmark("ParseE2/muparserx", parseMux);
    return 0;
}

const int registered = registerAll();

} // namespace

BENCHMARK_MAIN();
