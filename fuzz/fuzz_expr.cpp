// Arbitrary text through the expression engine and the simple parser: parse, evaluate with
// arbitrary variable types and values (typed and generic programs, node map), walk both orders
// and rebuild the text. Input: the expression (UTF-8) up to the first NUL, then bytes that choose
// each variable's announced type and value.
#include <rukengine.h>
#include <sefdebugoutput.h>
#include <sefexception.h>
#include <tovexprparserclasses.h>
#include <tovsimpleexprparser.h>

#include <QByteArray>
#include <QString>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace {

class Source
{
public:
    Source(const uint8_t *data, size_t size)
        : m_data(data)
        , m_size(size)
    { }
    uint8_t byte()
    {
        if (m_size == 0)
            return 0;
        const uint8_t b = m_data[m_pos % m_size];
        ++m_pos;
        return b;
    }

private:
    const uint8_t *m_data;
    size_t m_size;
    size_t m_pos = 0;
};

const int kTypes[] = { 0, 10, 11, 12, 13, 17, 99 };

class Vars : public RukQueryVarDataTypeImpl, public RukQueryVarValueImpl
{
public:
    explicit Vars(Source &source)
        : m_source(source)
    { }

protected:
    void queryVarDataType(RukVarNode &node, int &dataType, void *) override
    {
        (void)node.varCode();
        dataType = kTypes[m_source.byte() % 7];
    }
    void queryVarValue(RukVarNode &node, void *) override
    {
        const uint8_t kind = m_source.byte();
        const uint8_t v = m_source.byte();
        switch (kind % 12) {
        case 0:
            return; // no value
        case 1:
            node.setIsInvalid(true);
            return;
        case 2:
            node.setAsFloat(double(int8_t(v)) / 4.0);
            break;
        case 3:
            node.setAsFloat(
                v & 1 ? std::numeric_limits<double>::max() : -std::numeric_limits<double>::infinity());
            break;
        case 4:
            node.setAsFloat(std::numeric_limits<double>::quiet_NaN());
            break;
        case 5:
            node.setAsInteger(long(int8_t(v)));
            break;
        case 6:
            node.setAsInt64(v & 1 ? std::numeric_limits<qint64>::min() : std::numeric_limits<qint64>::max());
            break;
        case 7:
            node.setAsString(QString::number(int8_t(v)));
            break;
        case 8:
            node.setAsString(v & 1 ? QStringLiteral("TRUE") : QStringLiteral("宽度 x"));
            break;
        case 9:
            node.setAsBoolean(v & 1);
            break;
        case 10:
            node.setAsVariant(v & 1 ? QVariant() : QVariant(QStringLiteral("1e3")));
            break;
        default:
            node.setTag(v);
            node.setAsFloat(double(node.tag()));
            break;
        }
    }

private:
    Source &m_source;
};

class Walker : public RukVisitNodeImpl
{
protected:
    void visitNode(RukNode &node, void *) override
    {
        sink += node.nodeType() + node.position() + node.token().size();
    }

public:
    long sink = 0;
};

class Renamer : public RukTransTokenImpl
{
protected:
    void transToken(RukNode &node, QString &token, void *) override
    {
        if (node.nodeType() == RukNode::Variable)
            token = QLatin1Char('[') + token + QLatin1Char(']');
    }
};

class Functions : public IRukQueryFunctionEvent
{
public:
    bool onQueryFunction(const QString &name, int, RukFunction &function, void *) override
    {
        if (!name.startsWith(QLatin1Char('f')))
            return false;
        function = [](const RukData *args, int count) {
            return count > 0 ? RukData::fromFloat(args[0].asFloat() + args[count - 1].asFloat()) : RukData();
        };
        return true;
    }
};

void exercise(const QString &text, Source &source)
{
    Vars vars(source);
    Functions functions;
    RukParser parser = rukEngine().createParser();
    parser.setOnQueryVarValue(&vars);
    try {
        parser.setExpression(text, &vars, RukQueryConstValueEvent(), nullptr, RukNodeMapInfos(), &functions);
    } catch (const SefException &) {
        (void)parser.expression();
        return;
    }
    for (int round = 0; round < 3; ++round) {
        try {
            if (round == 0) {
                parser.evaluate();
            } else if (round == 1) {
                parser.evaluate(&vars);
            } else {
                RukNodeMapInfos map;
                map.insert(QStringLiteral("a"), RukData::fromFloat(1.5));
                map.insert(QStringLiteral("b"), RukData::fromString(QStringLiteral("x")));
                parser.evaluate(RukQueryVarDataTypeEvent(), nullptr, map);
            }
            const RukData &r = parser.result();
            (void)r.asString();
            (void)r.asInteger();
            (void)r.asVariant();
        } catch (const SefException &) { }
    }
    Walker walker;
    parser.visitNode(RukParser::PreOrder, &walker);
    parser.visitNode(RukParser::PostOrder, &walker);
    Renamer renamer;
    const QString rebuilt = parser.expression(&renamer);
    try {
        parser.setExpression(rebuilt);
    } catch (const SefException &) { }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const bool quiet = [] {
        SefDebugOutput::setHandler([](const QString &) {});
        return true;
    }();
    (void)quiet;
    const uint8_t *nul = static_cast<const uint8_t *>(std::memchr(data, 0, size));
    const size_t textSize = nul ? size_t(nul - data) : size;
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), int(textSize));
    Source source(nul ? nul + 1 : data, nul ? size - textSize - 1 : 0);
    exercise(text, source);

    TovSimpleExprParser simple(QStringLiteral("fuzz"));
    simple.addVarValue(QStringLiteral("a"), 2.5);
    QString message;
    (void)simple.calcExpr(text, message);
    (void)simple.checkExpr(text);
    (void)simple.getExprVarCodes(text);
    (void)simple.transExpr(text);
    TovExprParserClasses classes;
    (void)classes.getExprCodes(text);
    return 0;
}
