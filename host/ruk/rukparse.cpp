// Lexer, recursive-descent parser and compiler of the expression engine.
#include "rukparser_p.h"

#include <sefexception.h>

#include <QVarLengthArray>

#include <charconv>
#include <cmath>
#include <cstring>
#include <string>

namespace {

// Nesting limit of brackets, function calls and prefix operators: the parser recurses on them,
// so a hostile text must fail with a message before the stack runs out.
constexpr int kMaxDepth = 256;

enum TokKind
{
    TEnd,
    TNum,
    TStr,
    TBool,
    TVar,
    TFunc,
    TLParen,
    TRParen,
    TComma,
    TOp
};

struct Tok
{
    TokKind kind = TEnd;
    int start = 0;
    int len = 0;
    int op = 0;
    int codeStart = 0;
    int codeLen = 0;
    bool boolValue = false;
    RukNumber num;
};

// Full-width forms read as their ASCII twins.
inline ushort norm(ushort c)
{
    switch (c) {
    case 0xFF08:
        return '(';
    case 0xFF09:
        return ')';
    case 0xFF3B:
        return '[';
    case 0xFF3D:
        return ']';
    case 0xFF0C:
        return ',';
    case 0xFF0B:
        return '+';
    case 0xFF0D:
        return '-';
    case 0xFF0A:
        return '*';
    case 0xFF0F:
        return '/';
    case 0xFF1C:
        return '<';
    case 0xFF1E:
        return '>';
    case 0xFF1D:
        return '=';
    case 0xFF01:
        return '!';
    case 0x00D7:
        return '*';
    case 0x00F7:
        return '/';
    default:
        return c;
    }
}

inline bool isDigit(ushort c)
{
    return c >= '0' && c <= '9';
}

struct Builtin
{
    const char *name;
    int id;
    int minArgs;
    int maxArgs; // -1: no limit
};

const Builtin kBuiltins[] = {
    { "abs", RukFnAbs, 1, 1 },
    { "sqrt", RukFnSqrt, 1, 1 },
    { "exp", RukFnExp, 1, 1 },
    { "ln", RukFnLn, 1, 1 },
    { "log10", RukFnLog10, 1, 1 },
    { "pow", RukFnPow, 2, 2 },
    { "sin", RukFnSin, 1, 1 },
    { "cos", RukFnCos, 1, 1 },
    { "tan", RukFnTan, 1, 1 },
    { "asin", RukFnAsin, 1, 1 },
    { "acos", RukFnAcos, 1, 1 },
    { "atan", RukFnAtan, 1, 1 },
    { "atan2", RukFnAtan2, 2, 2 },
    { "rad", RukFnRad, 1, 1 },
    { "deg", RukFnDeg, 1, 1 },
    { "floor", RukFnFloor, 1, 1 },
    { "ceil", RukFnCeil, 1, 1 },
    { "trunc", RukFnTrunc, 1, 1 },
    { "int", RukFnTrunc, 1, 1 },
    { "round", RukFnRound, 1, 2 },
    { "min", RukFnMin, 1, -1 },
    { "max", RukFnMax, 1, -1 },
    { "sum", RukFnSum, 1, -1 },
    { "avg", RukFnAvg, 1, -1 },
    { "if", RukFnIf, 3, 3 },
    { "iif", RukFnIf, 3, 3 },
    { "pi", RukFnPi, 0, 0 },
    { "len", RukFnLen, 1, 1 },
    { "left", RukFnLeft, 2, 2 },
    { "right", RukFnRight, 2, 2 },
    { "mid", RukFnMid, 2, 3 },
    { "upper", RukFnUpper, 1, 1 },
    { "lower", RukFnLower, 1, 1 },
    { "trim", RukFnTrim, 1, 1 },
    { "str", RukFnStr, 1, 1 },
    { "num", RukFnNum, 1, 1 },
};

// Case-insensitive comparison of a name with an ASCII word.
bool sameWord(const QChar *p, int n, const char *word)
{
    const int len = int(std::strlen(word));
    if (len != n)
        return false;
    for (int i = 0; i < n; ++i) {
        ushort c = p[i].unicode();
        if (c >= 'A' && c <= 'Z')
            c = ushort(c + 32);
        if (c != ushort(word[i]))
            return false;
    }
    return true;
}

class Parser
{
    Q_DECLARE_TR_FUNCTIONS(RukEngine)

public:
    Parser(RukParserPrivate &owner, IRukQueryFunctionEvent *functionEvent, void *context)
        : p(owner)
        , s(owner.m_text.constData())
        , n(owner.m_text.size())
        , m_functionEvent(functionEvent)
        , m_context(context)
    { }

    int run()
    {
        next();
        if (tok.kind == TEnd)
            p.throwParseError(1, tr("表达式为空"));
        const int root = parseExpr();
        if (tok.kind != TEnd)
            p.throwParseError(tok.start + 1, tok.kind == TRParen ? tr("多余的右括号") : tr("缺少运算符"));
        return root;
    }

private:
    RukParserPrivate &p;
    const QChar *s;
    int n;
    int pos = 0;
    int depth = 0;
    Tok tok;
    IRukQueryFunctionEvent *m_functionEvent;
    void *m_context;

    // --- lexer

    uint codePointAt(int i, int *width) const
    {
        const QChar c = s[i];
        if (c.isHighSurrogate() && i + 1 < n && s[i + 1].isLowSurrogate()) {
            *width = 2;
            return QChar::surrogateToUcs4(c, s[i + 1]);
        }
        *width = 1;
        return c.unicode();
    }

    bool identStartAt(int i) const
    {
        int w;
        const uint c = codePointAt(i, &w);
        return c == '_' || QChar::isLetter(c);
    }

    void skipIdent()
    {
        while (pos < n) {
            int w;
            const uint c = codePointAt(pos, &w);
            if (c == '_' || QChar::isLetterOrNumber(c) || QChar::isMark(c))
                pos += w;
            else
                break;
        }
    }

    void setOp(int op, int len)
    {
        tok.kind = TOp;
        tok.op = op;
        pos += len;
    }

    ushort peek(int i) const { return i < n ? norm(s[i].unicode()) : 0; }

    void next()
    {
        while (pos < n && s[pos].isSpace())
            ++pos;
        tok.start = pos;
        if (pos >= n) {
            tok.kind = TEnd;
            tok.len = 0;
            return;
        }
        const ushort c = norm(s[pos].unicode());
        if (isDigit(c) || (c == '.' && isDigit(peek(pos + 1)))) {
            lexNumber();
        } else if (c == '"' || c == '\'') {
            lexString(c);
        } else if (c == '[') {
            lexBracket();
        } else if (c == '#') {
            tok.kind = TVar;
            tok.codeStart = pos;
            tok.codeLen = 1;
            ++pos;
        } else if (c == '@' && pos + 1 < n && identStartAt(pos + 1)) {
            ++pos;
            skipIdent();
            tok.kind = TVar;
            tok.codeStart = tok.start;
            tok.codeLen = pos - tok.start;
        } else if (c != '@' && identStartAt(pos)) {
            lexWord();
        } else {
            lexOperator(c);
        }
        tok.len = pos - tok.start;
    }

    void lexNumber()
    {
        bool isInt = true;
        while (pos < n && isDigit(s[pos].unicode()))
            ++pos;
        if (pos < n && s[pos].unicode() == '.') {
            isInt = false;
            ++pos;
            while (pos < n && isDigit(s[pos].unicode()))
                ++pos;
        }
        if (pos < n && (s[pos].unicode() == 'e' || s[pos].unicode() == 'E')) {
            int j = pos + 1;
            if (j < n && (s[j].unicode() == '+' || s[j].unicode() == '-'))
                ++j;
            if (j < n && isDigit(s[j].unicode())) {
                isInt = false;
                pos = j;
                while (pos < n && isDigit(s[pos].unicode()))
                    ++pos;
            }
        }
        tok.kind = TNum;
        RukNumber &num = tok.num;
        if (isInt) {
            qint64 v = 0;
            bool overflow = false;
            for (int i = tok.start; i < pos && !overflow; ++i)
                overflow = __builtin_mul_overflow(v, 10, &v)
                    || __builtin_add_overflow(v, s[i].unicode() - '0', &v);
            if (!overflow) {
                num.isInt = true;
                num.i = v;
                return;
            }
        }
        // Digits only, so the Latin-1 form is exact.
        std::string buffer(size_t(pos - tok.start), '\0');
        for (int i = tok.start; i < pos; ++i)
            buffer[size_t(i - tok.start)] = char(s[i].unicode());
        double value = 0.0;
        const auto result = std::from_chars(buffer.data(), buffer.data() + buffer.size(), value);
        if (result.ec != std::errc() || !std::isfinite(value))
            p.throwParseError(tok.start + 1, tr("数值超出范围"));
        num.isInt = false;
        num.f = value;
    }

    void lexString(ushort quote)
    {
        ++pos;
        for (;;) {
            if (pos >= n)
                p.throwParseError(tok.start + 1, tr("字符串缺少结束引号"));
            if (s[pos].unicode() == quote) {
                if (pos + 1 < n && s[pos + 1].unicode() == quote) {
                    pos += 2;
                    continue;
                }
                ++pos;
                break;
            }
            ++pos;
        }
        tok.kind = TStr;
    }

    void lexBracket()
    {
        int j = pos + 1;
        while (j < n && norm(s[j].unicode()) != ']')
            ++j;
        if (j >= n)
            p.throwParseError(tok.start + 1, tr("缺少右方括号"));
        if (j == pos + 1)
            p.throwParseError(tok.start + 1, tr("变量名为空"));
        tok.kind = TVar;
        tok.codeStart = pos + 1;
        tok.codeLen = j - pos - 1;
        pos = j + 1;
    }

    void lexWord()
    {
        skipIdent();
        const QChar *w = s + tok.start;
        const int len = pos - tok.start;
        if (sameWord(w, len, "and")) {
            tok.kind = TOp;
            tok.op = RukAnd;
        } else if (sameWord(w, len, "or")) {
            tok.kind = TOp;
            tok.op = RukOr;
        } else if (sameWord(w, len, "not")) {
            tok.kind = TOp;
            tok.op = RukNot;
        } else if (sameWord(w, len, "mod")) {
            tok.kind = TOp;
            tok.op = RukMod;
        } else if (sameWord(w, len, "true") || sameWord(w, len, "false")) {
            tok.kind = TBool;
            tok.boolValue = len == 4;
        } else if (peek(pos) == '(') {
            tok.kind = TFunc;
        } else {
            tok.kind = TVar;
            tok.codeStart = tok.start;
            tok.codeLen = len;
        }
    }

    void lexOperator(ushort c)
    {
        const ushort c2 = peek(pos + 1);
        switch (c) {
        case '(':
            tok.kind = TLParen;
            ++pos;
            return;
        case ')':
            tok.kind = TRParen;
            ++pos;
            return;
        case ',':
            tok.kind = TComma;
            ++pos;
            return;
        case '+':
            return setOp(RukAdd, 1);
        case '-':
            return setOp(RukSub, 1);
        case '*':
            return setOp(RukMul, 1);
        case '/':
            return setOp(RukDiv, 1);
        case '%':
            return setOp(RukMod, 1);
        case '^':
            return setOp(RukPow, 1);
        case '&':
            return c2 == '&' ? setOp(RukAnd, 2) : setOp(RukCat, 1);
        case '|':
            if (c2 == '|')
                return setOp(RukOr, 2);
            break;
        case '!':
            return c2 == '=' ? setOp(RukNe, 2) : setOp(RukNot, 1);
        case '=':
            return c2 == '=' ? setOp(RukEq, 2) : setOp(RukEq, 1);
        case '<':
            if (c2 == '=')
                return setOp(RukLe, 2);
            return c2 == '>' ? setOp(RukNe, 2) : setOp(RukLt, 1);
        case '>':
            return c2 == '=' ? setOp(RukGe, 2) : setOp(RukGt, 1);
        case 0x2260:
            return setOp(RukNe, 1);
        case 0x2264:
            return setOp(RukLe, 1);
        case 0x2265:
            return setOp(RukGe, 1);
        default:
            break;
        }
        int w;
        codePointAt(pos, &w);
        p.throwParseError(pos + 1, tr("无法识别的字符[%1]").arg(QString(s + pos, w)));
    }

    // --- tree

    int addNode(int type, int op, int start, int len)
    {
        RukNodeData node;
        node.type = type;
        node.op = op;
        node.start = start;
        node.len = len;
        node.owner = &p;
        p.m_nodes.push_back(node);
        return int(p.m_nodes.size()) - 1;
    }

    int addParent(int type, const Tok &t, const int *kids, int count)
    {
        const int id = addNode(type, t.op, t.start, t.len);
        RukNodeData &node = p.m_nodes[size_t(id)];
        node.firstKid = int(p.m_kids.size());
        node.kidCount = count;
        p.m_kids.insert(p.m_kids.end(), kids, kids + count);
        return id;
    }

    int binary(const Tok &t, int left, int right)
    {
        const int kids[2] = { left, right };
        return addParent(RukNode::BinaryOperator, t, kids, 2);
    }

    int unary(const Tok &t, int operand) { return addParent(RukNode::UnaryOperator, t, &operand, 1); }

    int constant(const RukData &value)
    {
        const int id = addNode(RukNode::Constant, 0, tok.start, tok.len);
        p.m_nodes[size_t(id)].slot = int(p.m_consts.size());
        p.m_consts.push_back(value);
        return id;
    }

    bool isOp(int op) const { return tok.kind == TOp && tok.op == op; }
    static bool isComparison(int op) { return op >= RukEq && op <= RukGe; }

    void enter()
    {
        if (++depth > kMaxDepth)
            p.throwParseError(tok.start + 1, tr("嵌套层数过多"));
    }

    int parseExpr()
    {
        enter();
        const int node = parseOr();
        --depth;
        return node;
    }

    int parseOr()
    {
        int left = parseAnd();
        while (isOp(RukOr)) {
            const Tok t = tok;
            next();
            left = binary(t, left, parseAnd());
        }
        return left;
    }

    int parseAnd()
    {
        int left = parseNot();
        while (isOp(RukAnd)) {
            const Tok t = tok;
            next();
            left = binary(t, left, parseNot());
        }
        return left;
    }

    int parseNot()
    {
        if (!isOp(RukNot))
            return parseCmp();
        const Tok t = tok;
        next();
        enter();
        const int operand = parseNot();
        --depth;
        return unary(t, operand);
    }

    int parseCmp()
    {
        int left = parseAdd();
        if (tok.kind == TOp && isComparison(tok.op)) {
            const Tok t = tok;
            next();
            left = binary(t, left, parseAdd());
            if (tok.kind == TOp && isComparison(tok.op))
                p.throwParseError(tok.start + 1, tr("比较运算不能连用"));
        }
        return left;
    }

    int parseAdd()
    {
        int left = parseMul();
        while (isOp(RukAdd) || isOp(RukSub) || isOp(RukCat)) {
            const Tok t = tok;
            next();
            left = binary(t, left, parseMul());
        }
        return left;
    }

    int parseMul()
    {
        int left = parseUnary();
        while (isOp(RukMul) || isOp(RukDiv) || isOp(RukMod)) {
            const Tok t = tok;
            next();
            left = binary(t, left, parseUnary());
        }
        return left;
    }

    int parseUnary()
    {
        if (!isOp(RukAdd) && !isOp(RukSub))
            return parsePow();
        Tok t = tok;
        t.op = t.op == RukSub ? RukNeg : RukPos;
        next();
        enter();
        const int operand = parseUnary();
        --depth;
        return unary(t, operand);
    }

    int parsePow()
    {
        const int base = parsePrimary();
        if (!isOp(RukPow))
            return base;
        const Tok t = tok;
        next();
        enter();
        const int exponent = parseUnary();
        --depth;
        return binary(t, base, exponent);
    }

    int parsePrimary()
    {
        switch (tok.kind) {
        case TNum: {
            RukData value;
            if (tok.num.isInt)
                value.setInteger(tok.num.i);
            else
                value.setFloat(tok.num.f);
            const int id = constant(value);
            next();
            return id;
        }
        case TStr: {
            const QChar quote = s[tok.start];
            QString text(s + tok.start + 1, tok.len - 2);
            text.replace(QString(2, quote), QString(quote));
            const int id = constant(RukData::fromString(text));
            next();
            return id;
        }
        case TBool: {
            const int id = constant(RukData::fromBoolean(tok.boolValue));
            next();
            return id;
        }
        case TVar: {
            const int id = addNode(RukNode::Variable, 0, tok.start, tok.len);
            p.m_nodes[size_t(id)].slot = int(p.m_vars.size());
            p.m_vars.emplace_back();
            p.m_vars.back().code = QString(s + tok.codeStart, tok.codeLen);
            p.m_varNodes.push_back(id);
            next();
            return id;
        }
        case TFunc:
            return parseCall();
        case TLParen: {
            const Tok open = tok;
            next();
            const int inner = parseExpr();
            expectClose(open);
            Tok t = open;
            t.op = 0;
            return addParent(RukNode::Group, t, &inner, 1);
        }
        default:
            p.throwParseError(tok.start + 1, tr("缺少运算数"));
        }
    }

    void expectClose(const Tok &open)
    {
        if (tok.kind == TRParen) {
            next();
            return;
        }
        if (tok.kind == TEnd)
            p.throwParseError(open.start + 1, tr("缺少右括号"));
        p.throwParseError(tok.start + 1, tr("缺少运算符"));
    }

    int parseCall()
    {
        Tok name = tok;
        next(); // the name
        const Tok open = tok;
        next(); // the bracket
        QVarLengthArray<int, 8> args;
        if (tok.kind == TRParen) {
            next();
        } else {
            for (;;) {
                args.append(parseExpr());
                if (tok.kind == TComma) {
                    next();
                    continue;
                }
                expectClose(open);
                break;
            }
        }
        name.op = resolveFunction(name, args.size());
        return addParent(RukNode::Function, name, args.constData(), args.size());
    }

    int resolveFunction(const Tok &name, int argCount)
    {
        const QChar *w = s + name.start;
        for (const Builtin &b : kBuiltins) {
            if (!sameWord(w, name.len, b.name))
                continue;
            if (argCount < b.minArgs || (b.maxArgs >= 0 && argCount > b.maxArgs))
                p.throwParseError(name.start + 1, tr("函数[%1]的参数个数不对").arg(QString(w, name.len)));
            return b.id;
        }
        const QString text(w, name.len);
        if (m_functionEvent) {
            RukFunction function;
            if (m_functionEvent->onQueryFunction(text, argCount, function, m_context) && function) {
                p.m_functions.push_back(std::move(function));
                return RukFnCustom + int(p.m_functions.size()) - 1;
            }
        }
        p.throwParseError(name.start + 1, tr("未知函数[%1]").arg(text));
    }
};

} // namespace

void RukParserPrivate::throwParseError(int position, const QString &detail) const
{
    throw SefException(
        tr("表达式[%1]第%2个字符处: %3").arg(m_text, QString::number(position), detail), position);
}

void RukParserPrivate::throwError(const QString &message)
{
    throw SefException(message);
}

void RukParserPrivate::clearExpression()
{
    m_ready = false;
    m_root = -1;
    m_nodes.clear();
    m_kids.clear();
    m_vars.clear();
    m_varNodes.clear();
    m_consts.clear();
    m_functions.clear();
    m_program.clear();
    m_genericProgram.clear();
    m_programReady = false;
    setNumericReady(false);
    m_genericReady = false;
    m_tokenOrder.clear();
}

void RukParserPrivate::setExpression(const QString &text, IRukQueryVarDataTypeEvent *typeEvent,
    IRukQueryConstValueEvent *constEvent, void *context, const RukNodeMapInfos &nodeMap,
    IRukQueryFunctionEvent *functionEvent)
{
    clearExpression();
    m_result.clear();
    m_text = text;
    try {
        Parser parser(*this, functionEvent, context);
        m_root = parser.run();
        for (size_t i = 0; i < m_varNodes.size(); ++i) {
            RukNodeData &node = m_nodes[size_t(m_varNodes[i])];
            RukVarState &var = m_vars[size_t(node.slot)];
            var.handle.d = &node;
            if (constEvent) {
                RukData value;
                if (constEvent->onQueryConstValue(var.code, value, context)
                    && value.dataType() != RukData::Unknown) {
                    node.type = RukNode::Constant;
                    node.slot = int(m_consts.size());
                    m_consts.push_back(value);
                    continue;
                }
            }
            int dataType = 0;
            if (!nodeMap.isEmpty()) {
                if (const RukData *bound = nodeMap.find(var.code))
                    dataType = bound->dataType();
            }
            if (typeEvent)
                typeEvent->onQueryVarDataType(var.handle, dataType, context);
            var.dataType = dataType;
        }
        for (RukVarState &var : m_vars)
            var.invalid = false;
    } catch (...) {
        clearExpression();
        throw;
    }
    m_ready = true;
}

// Flattens the tree into a post-order program without recursion: a long chain of left-associative
// operators makes a tree as deep as the chain is long. A typed program also tracks the type each
// instruction leaves on the stack where it is certain (constants, variables announced as
// floating-point, boolean or text, and what typed operations make of them) and uses the typed
// operations there; an integer constant beside a floating-point operand becomes a floating-point
// constant, which changes no result.
void RukParserPrivate::compile(std::vector<RukInstr> &program, bool typed)
{
    struct Frame
    {
        int node;
        int next;
        int patch;
        int branchType;
    };
    struct Static
    {
        int type; // 0: not known before evaluation
        int constInstr; // the PushConst that made it, or -1
        int varInstr; // the RukLoadVarF that made it, or -1
    };
    program.clear();
    bool numeric = typed;
    std::vector<Frame> frames;
    std::vector<Static> types;
    frames.push_back({ m_root, 0, -1, 0 });
    int depth = 0;
    int maxDepth = 1;
    auto put = [&program](int code, int a, int b, int node) {
        program.push_back({ code, a, b, node, { 0.0 } });
        return int(program.size()) - 1;
    };
    auto pop = [&types]() {
        const Static top = types.back();
        types.pop_back();
        return top;
    };
    auto push = [&types](int type, int constInstr = -1) { types.push_back({ type, constInstr, -1 }); };
    auto isIntConst = [](const Static &v) {
        return v.constInstr >= 0 && (v.type == RukData::Integer || v.type == RukData::Int64);
    };
    // Re-types an integer constant operand as floating-point.
    auto floatConst = [&](Static &v) {
        RukInstr &in = program[size_t(v.constInstr)];
        const double value = double(m_consts[size_t(in.a)].m_v.i);
        in.a = int(m_consts.size());
        m_consts.push_back(RukData::fromFloat(value));
        v.type = RukData::Float;
    };
    while (!frames.empty()) {
        const int nodeId = frames.back().node;
        const RukNodeData node = m_nodes[size_t(nodeId)];
        Frame &f = frames.back();
        if (f.next < node.kidCount) {
            if (f.next > 0) {
                if (node.type == RukNode::BinaryOperator && (node.op == RukAnd || node.op == RukOr)) {
                    f.patch = put(node.op == RukAnd ? RukAndJump : RukOrJump, -1, 0, nodeId);
                    --depth;
                    if (pop().type != RukData::Boolean)
                        numeric = false;
                } else if (node.type == RukNode::Function && node.op == RukFnIf) {
                    if (f.next == 1) {
                        f.patch = put(RukJumpIfFalse, -1, 0, nodeId);
                        if (pop().type != RukData::Boolean)
                            numeric = false;
                    } else {
                        const int jump = put(RukJump, -1, 0, nodeId);
                        program[size_t(f.patch)].a = int(program.size());
                        f.patch = jump;
                        f.branchType = pop().type;
                    }
                    --depth;
                }
            }
            const int kid = m_kids[size_t(node.firstKid + f.next)];
            ++f.next;
            frames.push_back({ kid, 0, -1, 0 });
            continue;
        }
        const Frame done = f;
        frames.pop_back();
        switch (node.type) {
        case RukNode::Variable: {
            const int t = m_vars[size_t(node.slot)].dataType;
            const bool known
                = typed && (t == RukData::Float || t == RukData::String || t == RukData::Boolean);
            const int instr
                = put(typed && t == RukData::Float ? RukLoadVarF : RukLoadVar, node.slot, 0, nodeId);
            types.push_back({ known ? t : 0, -1, known ? instr : -1 });
            ++depth;
            break;
        }
        case RukNode::Constant:
            push(m_consts[size_t(node.slot)].m_type, put(RukPushConst, node.slot, 0, nodeId));
            ++depth;
            break;
        case RukNode::UnaryOperator: {
            const Static x = pop();
            if (typed && node.op == RukNeg && x.type == RukData::Float) {
                put(RukNegF, 0, 0, nodeId);
                push(RukData::Float);
            } else {
                put(node.op, 0, 0, nodeId);
                push(node.op == RukNot ? RukData::Boolean : 0);
            }
            break;
        }
        case RukNode::BinaryOperator: {
            if (node.op == RukAnd || node.op == RukOr) {
                put(RukToBool, 0, 0, nodeId);
                program[size_t(done.patch)].a = int(program.size());
                if (pop().type != RukData::Boolean)
                    numeric = false;
                push(RukData::Boolean);
                break;
            }
            --depth;
            Static y = pop();
            Static x = pop();
            const bool comparison = node.op >= RukEq && node.op <= RukGe;
            const bool arithmetic
                = node.op == RukAdd || node.op == RukSub || node.op == RukMul || node.op == RukDiv;
            if (typed && (comparison || arithmetic)) {
                if (x.type == RukData::Float && isIntConst(y))
                    floatConst(y);
                else if (y.type == RukData::Float && isIntConst(x))
                    floatConst(x);
            }
            if (typed && (comparison || arithmetic) && x.type == RukData::Float && y.type == RukData::Float) {
                const int base = comparison ? RukEqF + 3 * (node.op - RukEq)
                    : node.op == RukAdd     ? RukAddF
                    : node.op == RukSub     ? RukSubF
                    : node.op == RukMul     ? RukMulF
                                            : RukDivF;
                const bool rightIsLast
                    = int(program.size()) - 1 == (y.constInstr >= 0 ? y.constInstr : y.varInstr);
                if (rightIsLast && y.constInstr >= 0) {
                    // The right operand is the constant just pushed: take it as the immediate.
                    const double imm = m_consts[size_t(program.back().a)].m_v.f;
                    program.pop_back();
                    put(base + 1, 0, 0, nodeId);
                    program.back().imm = imm;
                } else if (rightIsLast && y.varInstr >= 0) {
                    // The right operand is the variable just loaded: load it in place.
                    const RukInstr load = program.back();
                    program.pop_back();
                    put(base + 2, load.a, 0, load.node);
                    program.back().b = nodeId;
                } else {
                    put(base, 0, 0, nodeId);
                }
                push(comparison ? RukData::Boolean : RukData::Float);
            } else if (typed && (node.op == RukEq || node.op == RukNe) && x.type == RukData::String
                && y.type == RukData::String) {
                const int code = node.op == RukEq ? RukEqS : RukNeS;
                const int last = int(program.size()) - 1;
                if (y.constInstr >= 0 && y.constInstr == last && x.varInstr >= 0 && x.varInstr == last - 1) {
                    // A text variable against a constant: compared in place.
                    const int slot = program.back().a;
                    program.pop_back();
                    const RukInstr load = program.back();
                    program.pop_back();
                    put(node.op == RukEq ? RukEqSV : RukNeSV, load.a, slot, load.node);
                } else if (y.constInstr >= 0 && y.constInstr == last) {
                    const int slot = program.back().a;
                    program.pop_back();
                    put(code, 0, slot, nodeId);
                } else {
                    put(code, 0, -1, nodeId);
                }
                push(RukData::Boolean);
            } else {
                put(node.op, 0, 0, nodeId);
                push(comparison ? RukData::Boolean : node.op == RukCat ? RukData::String : 0);
            }
            break;
        }
        case RukNode::Function:
            if (node.op == RukFnIf) {
                program[size_t(done.patch)].a = int(program.size());
                const int elseType = pop().type;
                push(elseType == done.branchType ? elseType : 0);
            } else {
                bool math = false;
                if (typed && node.kidCount == 1 && types.back().type == RukData::Float) {
                    switch (node.op) {
                    case RukFnAbs:
                    case RukFnSqrt:
                    case RukFnExp:
                    case RukFnLn:
                    case RukFnLog10:
                    case RukFnSin:
                    case RukFnCos:
                    case RukFnTan:
                    case RukFnAsin:
                    case RukFnAcos:
                    case RukFnAtan:
                    case RukFnRad:
                    case RukFnDeg:
                    case RukFnFloor:
                    case RukFnCeil:
                    case RukFnTrunc:
                    case RukFnRound:
                        math = true;
                        break;
                    default:
                        break;
                    }
                }
                for (int k = 0; k < node.kidCount; ++k)
                    pop();
                if (math) {
                    put(RukMathF, node.op, 0, nodeId);
                    push(RukData::Float);
                } else {
                    put(RukCall, node.op, node.kidCount, nodeId);
                    push(0);
                }
                depth += 1 - node.kidCount;
            }
            break;
        default:
            break;
        }
        if (depth > maxDepth)
            maxDepth = depth;
    }
    if (m_stack.size() < size_t(maxDepth))
        m_stack.resize(size_t(maxDepth));
    if (!typed)
        return;
    put(RukHalt, 0, 0, m_root);
    // A program of floating-point and boolean values only runs on a stack of plain doubles.
    const int resultType = types.back().type;
    numeric = numeric && (resultType == RukData::Float || resultType == RukData::Boolean);
    for (size_t i = 0; numeric && i < program.size(); ++i) {
        const int code = program[i].code;
        if (code == RukPushConst)
            numeric = m_consts[size_t(program[i].a)].m_type == RukData::Float;
        else
            numeric = (code >= RukAddF && code <= RukMathF) || code == RukAndJump || code == RukOrJump
                || code == RukToBool || code == RukJumpIfFalse || code == RukJump || code == RukHalt
                || code == RukEqSV || code == RukNeSV;
    }
    m_numericResult = numeric ? resultType : RukData::Unknown;
    if (!numeric)
        return;
    if (m_numberStack.size() < size_t(maxDepth))
        m_numberStack.resize(size_t(maxDepth));
    fuseNumeric(program);
}
