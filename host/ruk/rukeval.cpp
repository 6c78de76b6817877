// The evaluator of the expression engine: runs the compiled program on a stack of RukData.
#include "rukparser_p.h"

#include <rukparser.h>
#include <sefexception.h>

#include <sefcommon.h>

#include <QLocale>

#include <atomic>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <mutex>
#include <string>

namespace {

constexpr double kTolerance = 1e-10;
constexpr double kPi = 3.14159265358979323846;

inline bool isNumType(int t)
{
    return t == RukData::Float || t == RukData::Integer || t == RukData::Int64;
}

inline bool isSpace(QChar c)
{
    return c.isSpace();
}

// Numbers are equal within a relative tolerance of 1e-10 (absolute near zero).
inline int compareReal(double a, double b)
{
    const double scale = std::max(1.0, std::max(std::fabs(a), std::fabs(b)));
    if (std::fabs(a - b) <= kTolerance * scale)
        return 0;
    return a < b ? -1 : 1;
}

inline bool compareResult(int code, int c)
{
    switch (code) {
    case RukEq:
        return c == 0;
    case RukNe:
        return c != 0;
    case RukLt:
        return c < 0;
    case RukLe:
        return c <= 0;
    case RukGt:
        return c > 0;
    default:
        return c >= 0;
    }
}

// Equal texts by code unit, as QString's operator== has it, without a call into Qt. Codes, kinds
// and units are a few characters long: those are compared in place, not through memcmp.
inline bool sameText(const QString &a, const QString &b)
{
    const int n = a.size();
    if (n != b.size())
        return false;
    const ushort *p = reinterpret_cast<const ushort *>(a.constData());
    const ushort *q = reinterpret_cast<const ushort *>(b.constData());
    if (p == q)
        return true;
    if (n > 16)
        return std::memcmp(p, q, size_t(n) * sizeof(ushort)) == 0;
    for (int i = 0; i < n; ++i) {
        if (p[i] != q[i])
            return false;
    }
    return true;
}

// Half away from zero; a value within 1e-9 of the half counts as the half, so that 2.675 (held as
// 2.67499999...) rounds to 2.68 at two digits.
double roundHalfAway(double value, qint64 digits)
{
    if (digits > 300)
        return value;
    if (digits < -300)
        return 0.0;
    const double scale = std::pow(10.0, double(std::llabs(digits)));
    const double y = digits >= 0 ? value * scale : value / scale;
    const double a = std::fabs(y);
    double whole = std::floor(a);
    if (a - whole >= 0.5 - 1e-9)
        whole += 1.0;
    const double r = std::copysign(whole, y);
    return digits >= 0 ? r / scale : r * scale;
}

} // namespace

// --- value rules

bool RukOps::readNumber(const QChar *p, int n, RukNumber &out)
{
    int b = 0;
    int e = n;
    while (b < e && isSpace(p[b]))
        ++b;
    while (e > b && isSpace(p[e - 1]))
        --e;
    if (b == e || e - b > 400)
        return false;
    char buffer[402];
    int len = 0;
    int i = b;
    bool negative = false;
    if (p[i].unicode() == '+' || p[i].unicode() == '-') {
        negative = p[i].unicode() == '-';
        if (negative)
            buffer[len++] = '-';
        ++i;
    }
    int digits = 0;
    bool isInt = true;
    auto digit = [&](int k) { return k < e && p[k].unicode() >= '0' && p[k].unicode() <= '9'; };
    while (digit(i)) {
        buffer[len++] = char(p[i++].unicode());
        ++digits;
    }
    if (i < e && p[i].unicode() == '.') {
        isInt = false;
        buffer[len++] = '.';
        ++i;
        while (digit(i)) {
            buffer[len++] = char(p[i++].unicode());
            ++digits;
        }
    }
    if (digits == 0)
        return false;
    if (i < e && (p[i].unicode() == 'e' || p[i].unicode() == 'E')) {
        isInt = false;
        buffer[len++] = 'e';
        ++i;
        if (i < e && (p[i].unicode() == '+' || p[i].unicode() == '-'))
            buffer[len++] = char(p[i++].unicode());
        if (!digit(i))
            return false;
        while (digit(i))
            buffer[len++] = char(p[i++].unicode());
    }
    if (i != e)
        return false;
    if (isInt) {
        qint64 v = 0;
        const auto r = std::from_chars(buffer, buffer + len, v);
        if (r.ec == std::errc()) {
            out.isInt = true;
            out.i = v;
            return true;
        }
    }
    double v = 0.0;
    const auto r = std::from_chars(buffer, buffer + len, v);
    if (r.ec != std::errc() || !std::isfinite(v))
        return false;
    out.isInt = false;
    out.f = v;
    return true;
}

int RukOps::readLogic(const QString &text)
{
    if (text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0 || text == QLatin1String("1"))
        return 1;
    if (text.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0 || text == QLatin1String("0"))
        return 0;
    return -1;
}

QString RukOps::floatText(double value)
{
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

// --- evaluation

void RukParserPrivate::throwOverflow()
{
    throwError(tr("计算结果溢出"));
}

void RukParserPrivate::throwDivisionByZero()
{
    throwError(tr("除数为零"));
}

#define RUK_COPY(dst, src)                                                                                   \
    do {                                                                                                     \
        (dst).m_type = (src).m_type;                                                                         \
        (dst).m_v = (src).m_v;                                                                               \
        if ((src).m_type == RukData::String)                                                                 \
            (dst).m_s = (src).m_s;                                                                           \
    } while (false)

#define RUK_SET_BOOL(dst, value)                                                                             \
    do {                                                                                                     \
        (dst).m_type = RukData::Boolean;                                                                     \
        (dst).m_v.b = (value);                                                                               \
    } while (false)

bool RukParserPrivate::number(const RukInstr &, const RukData &x, RukNumber &out, bool) const
{
    switch (x.m_type) {
    case RukData::Integer:
    case RukData::Int64:
        out.isInt = true;
        out.i = x.m_v.i;
        return true;
    case RukData::Float:
        out.isInt = false;
        out.f = x.m_v.f;
        return true;
    case RukData::String:
        return RukOps::readNumber(x.m_s, out);
    default:
        return false;
    }
}

double RukParserPrivate::real(const RukInstr &in, const RukData &x) const
{
    RukNumber num;
    if (!number(in, x, num, true))
        throwOperandError(in, x);
    return num.value();
}

void RukParserPrivate::setReal(const RukInstr &, RukData &dst, double value) const
{
    if (!std::isfinite(value))
        throwError(tr("计算结果溢出"));
    dst.m_type = RukData::Float;
    dst.m_v.f = value;
}

void RukParserPrivate::throwOperandError(const RukInstr &in, const RukData &operand) const
{
    const RukNodeData &node = m_nodes[size_t(in.node)];
    const QString what = RukData::typeName(operand.m_type);
    if (node.type == RukNode::Function)
        throwError(tr("函数[%1]不能用于%2").arg(tokenText(node), what));
    throwError(tr("运算符[%1]不能用于%2").arg(tokenText(node), what));
}

bool RukParserPrivate::logic(const RukInstr &in, const RukData &x) const
{
    switch (x.m_type) {
    case RukData::Boolean:
        return x.m_v.b;
    case RukData::Integer:
    case RukData::Int64:
        return x.m_v.i != 0;
    case RukData::Float:
        return x.m_v.f != 0.0;
    case RukData::String: {
        const int v = RukOps::readLogic(x.m_s);
        if (v >= 0)
            return v == 1;
        break;
    }
    default:
        break;
    }
    throwOperandError(in, x);
}

void RukParserPrivate::convertVar(const RukInstr &in, RukData &dst)
{
    const RukVarState &var = m_vars[size_t(in.a)];
    const RukData v = dst;
    RukNumber num;
    bool ok = true;
    switch (var.dataType) {
    case RukData::Float:
        if (v.m_type == RukData::Boolean) {
            dst.setFloat(v.m_v.b ? 1.0 : 0.0);
        } else if (number(in, v, num, true)) {
            dst.setFloat(num.value());
        } else {
            ok = false;
        }
        break;
    case RukData::Integer:
    case RukData::Int64:
        if (v.m_type == RukData::Boolean) {
            num.i = v.m_v.b ? 1 : 0;
        } else if (!number(in, v, num, true)) {
            ok = false;
        } else if (!num.isInt) {
            if (!(std::fabs(num.f) < 9.2e18)) {
                ok = false;
            } else {
                num.i = std::llround(num.f);
            }
        }
        if (ok) {
            if (var.dataType == RukData::Int64)
                dst.setInt64(num.i);
            else
                dst.setInteger(num.i);
        }
        break;
    case RukData::String:
        dst.setString(v.asString());
        break;
    case RukData::Boolean:
        if (v.m_type == RukData::String) {
            const int b = RukOps::readLogic(v.m_s);
            ok = b >= 0;
            dst.setBoolean(b == 1);
        } else {
            dst.setBoolean(v.asBoolean());
        }
        break;
    default:
        RUK_COPY(dst, v);
        break;
    }
    if (!ok)
        throwError(tr("变量[%1]的值[%2]不是%3").arg(var.code, v.asString(), RukData::typeName(var.dataType)));
}

inline void RukParserPrivate::loadVar(const RukInstr &in, RukData &dst, IRukQueryVarDataTypeEvent *typeEvent,
    void *context, const RukNodeMapInfos *nodeMap)
{
    RukVarState &var = m_vars[size_t(in.a)];
    var.value.m_type = RukData::Unknown;
    const RukData *bound = nodeMap ? nodeMap->find(var.code) : nullptr;
    if (bound) {
        RUK_COPY(var.value, *bound);
    } else {
        RukVarNode &handle = var.handle;
        if (typeEvent) {
            int dataType = var.dataType;
            typeEvent->onQueryVarDataType(handle, dataType, context);
            if (dataType != var.dataType) {
                var.dataType = dataType;
                m_programReady = false;
                setNumericReady(false);
            }
        }
        m_valueImpl->queryVarValue(handle, context);
    }
    RUK_COPY(dst, var.value);
    if (Q_UNLIKELY(var.invalid || dst.m_type != var.dataType || dst.m_type == RukData::Unknown))
        varSlow(in, dst);
}

// The typed program's load of a variable announced as floating-point: the value callback, one
// check, the number.
inline double RukParserPrivate::loadFloat(int index, void *context)
{
    RukVarState &var = m_vars[size_t(index)];
    var.value.m_type = RukData::Unknown;
    m_valueImpl->queryVarValue(var.handle, context);
    if (Q_UNLIKELY(var.value.m_type != RukData::Float || var.invalid))
        return loadFloatSlow(index);
    return var.value.m_v.f;
}

void RukParserPrivate::settleFloatSlow(RukVarState *var)
{
    const int index = int(var - m_vars.data());
    loadInPlaceSlow(index, m_varNodes[size_t(index)]);
}

double RukParserPrivate::loadFloatSlow(int index)
{
    const RukInstr in = { RukLoadVar, index, 0, m_varNodes[size_t(index)], { 0.0 } };
    RukData value = m_vars[size_t(index)].value;
    varSlow(in, value);
    return value.m_v.f;
}

// The typed program's load of a variable announced as text, left in the variable's own slot.
const RukData &RukParserPrivate::loadInPlace(int index, int node, void *context)
{
    RukVarState &var = m_vars[size_t(index)];
    var.value.m_type = RukData::Unknown;
    m_valueImpl->queryVarValue(var.handle, context);
    if (Q_LIKELY(var.value.m_type == var.dataType && !var.invalid))
        return var.value;
    return loadInPlaceSlow(index, node);
}

const RukData &RukParserPrivate::loadInPlaceSlow(int index, int node)
{
    RukVarState &var = m_vars[size_t(index)];
    const RukInstr in = { RukLoadVar, index, 0, node, { 0.0 } };
    RukData value = var.value;
    varSlow(in, value);
    var.value = value;
    return var.value;
}

void RukParserPrivate::resetVarFlags()
{
    for (RukVarState &var : m_vars)
        var.invalid = false;
}

void RukParserPrivate::varSlow(const RukInstr &in, RukData &dst)
{
    const RukVarState &var = m_vars[size_t(in.a)];
    if (var.invalid)
        throwError(tr("变量[%1]的值无效").arg(var.code));
    if (dst.m_type == RukData::Unknown)
        throwError(tr("变量[%1]没有值").arg(var.code));
    if (var.dataType != RukData::Unknown)
        convertVar(in, dst);
}

void RukParserPrivate::mathF(const RukInstr &in, RukData &x) const
{
    setReal(in, x, mathValue(in.a, x.m_v.f));
}

double RukParserPrivate::mathValue(int function, double f)
{
    double r;
    switch (function) {
    case RukFnAbs:
        r = std::fabs(f);
        break;
    case RukFnSqrt:
        r = std::sqrt(f);
        break;
    case RukFnExp:
        r = std::exp(f);
        break;
    case RukFnLn:
        r = std::log(f);
        break;
    case RukFnLog10:
        r = std::log10(f);
        break;
    case RukFnSin:
        r = std::sin(f);
        break;
    case RukFnCos:
        r = std::cos(f);
        break;
    case RukFnTan:
        r = std::tan(f);
        break;
    case RukFnAsin:
        r = std::asin(f);
        break;
    case RukFnAcos:
        r = std::acos(f);
        break;
    case RukFnAtan:
        r = std::atan(f);
        break;
    case RukFnRad:
        r = f * kPi / 180.0;
        break;
    case RukFnDeg:
        r = f * 180.0 / kPi;
        break;
    case RukFnFloor:
        r = std::floor(f);
        break;
    case RukFnCeil:
        r = std::ceil(f);
        break;
    case RukFnTrunc:
        r = std::trunc(f);
        break;
    default: // RukFnRound
        r = roundHalfAway(f, 0);
        break;
    }
    if (!std::isfinite(r))
        throwError(tr("计算结果溢出"));
    return r;
}

// The one-argument operation an accumulation or a square root carries: -1 negates, a function id
// applies the function. The root is checked before it is taken, so that its latency stays off the
// branch: a negative, infinite or NaN operand has no finite root.
inline double RukParserPrivate::unaryTail(int function, double value)
{
    if (function == RukFnSqrt) {
        if (Q_UNLIKELY(!(value >= 0.0 && value <= std::numeric_limits<double>::max())))
            throwOverflow();
        return std::sqrt(value);
    }
    return function < 0 ? -value : mathValue(function, value);
}

void RukParserPrivate::unary(const RukInstr &in, RukData &x)
{
    if (in.code == RukNot) {
        const bool b = logic(in, x);
        RUK_SET_BOOL(x, !b);
        return;
    }
    RukNumber num;
    if (x.m_type == RukData::Boolean || !number(in, x, num, true))
        throwOperandError(in, x);
    const bool wide = x.m_type == RukData::Int64;
    if (!num.isInt) {
        setReal(in, x, in.code == RukNeg ? -num.f : num.f);
    } else if (in.code == RukPos) {
        wide ? x.setInt64(num.i) : x.setInteger(num.i);
    } else if (num.i == std::numeric_limits<qint64>::min()) {
        setReal(in, x, -double(num.i));
    } else {
        wide ? x.setInt64(-num.i) : x.setInteger(-num.i);
    }
}

void RukParserPrivate::arithmetic(const RukInstr &in, RukData &x, const RukData &y)
{
    RukNumber a;
    RukNumber b;
    const bool na = x.m_type != RukData::Boolean && number(in, x, a, false);
    const bool nb = y.m_type != RukData::Boolean && number(in, y, b, false);
    if (in.code == RukAdd && ((x.m_type == RukData::String && !na) || (y.m_type == RukData::String && !nb))) {
        x.setString(x.asString() + y.asString());
        return;
    }
    if (!na)
        throwOperandError(in, x);
    if (!nb)
        throwOperandError(in, y);
    if (a.isInt && b.isInt && in.code != RukDiv) {
        const bool wide = x.m_type == RukData::Int64 || y.m_type == RukData::Int64;
        qint64 r = 0;
        bool overflow = false;
        switch (in.code) {
        case RukAdd:
            overflow = __builtin_add_overflow(a.i, b.i, &r);
            break;
        case RukSub:
            overflow = __builtin_sub_overflow(a.i, b.i, &r);
            break;
        case RukMul:
            overflow = __builtin_mul_overflow(a.i, b.i, &r);
            break;
        case RukMod:
            if (b.i == 0)
                throwError(tr("除数为零"));
            r = b.i == -1 ? 0 : a.i % b.i;
            break;
        default: // RukPow
            if (b.i < 0) {
                overflow = true;
                break;
            }
            r = 1;
            for (qint64 base = a.i, e = b.i; e > 0 && !overflow; e >>= 1) {
                if (e & 1)
                    overflow = __builtin_mul_overflow(r, base, &r);
                if (e > 1 && !overflow)
                    overflow = __builtin_mul_overflow(base, base, &base);
            }
            break;
        }
        if (!overflow) {
            wide ? x.setInt64(r) : x.setInteger(r);
            return;
        }
    }
    const double da = a.value();
    const double db = b.value();
    double r = 0.0;
    switch (in.code) {
    case RukAdd:
        r = da + db;
        break;
    case RukSub:
        r = da - db;
        break;
    case RukMul:
        r = da * db;
        break;
    case RukDiv:
        if (db == 0.0)
            throwError(tr("除数为零"));
        r = da / db;
        break;
    case RukMod:
        if (db == 0.0)
            throwError(tr("除数为零"));
        r = std::fmod(da, db);
        break;
    default:
        r = std::pow(da, db);
        break;
    }
    setReal(in, x, r);
}

void RukParserPrivate::compare(const RukInstr &in, RukData &x, const RukData &y)
{
    int c = 0;
    RukNumber a;
    RukNumber b;
    const bool xs = x.m_type == RukData::String;
    const bool ys = y.m_type == RukData::String;
    if (isNumType(x.m_type) && isNumType(y.m_type)) {
        if (x.m_type != RukData::Float && y.m_type != RukData::Float)
            c = x.m_v.i < y.m_v.i ? -1 : (x.m_v.i > y.m_v.i ? 1 : 0);
        else
            c = compareReal(x.m_type == RukData::Float ? x.m_v.f : double(x.m_v.i),
                y.m_type == RukData::Float ? y.m_v.f : double(y.m_v.i));
    } else if (xs && ys) {
        c = x.m_s.compare(y.m_s);
    } else if ((xs && isNumType(y.m_type) && RukOps::readNumber(x.m_s, a) && number(in, y, b, false))
        || (ys && isNumType(x.m_type) && RukOps::readNumber(y.m_s, b) && number(in, x, a, false))) {
        if (a.isInt && b.isInt)
            c = a.i < b.i ? -1 : (a.i > b.i ? 1 : 0);
        else
            c = compareReal(a.value(), b.value());
    } else if (x.m_type == RukData::Boolean || y.m_type == RukData::Boolean) {
        const int bx = x.m_type == RukData::String ? RukOps::readLogic(x.m_s) : int(x.asBoolean());
        const int by = y.m_type == RukData::String ? RukOps::readLogic(y.m_s) : int(y.asBoolean());
        if (bx >= 0 && by >= 0)
            c = bx - by;
        else
            c = x.asString().compare(y.asString());
    } else {
        c = x.asString().compare(y.asString());
    }
    RUK_SET_BOOL(x, compareResult(in.code, c));
}

void RukParserPrivate::binarySlow(const RukInstr &in, RukData &x, const RukData &y)
{
    switch (in.code) {
    case RukCat:
        x.setString(x.asString() + y.asString());
        break;
    case RukEq:
    case RukNe:
    case RukLt:
    case RukLe:
    case RukGt:
    case RukGe:
        compare(in, x, y);
        break;
    default:
        arithmetic(in, x, y);
        break;
    }
}

void RukParserPrivate::call(const RukInstr &in, RukData *args)
{
    const int id = in.a;
    const int argc = in.b;
    RukData &r = args[0];
    RukNumber num;
    auto integerArg = [&](const RukData &x) -> qint64 {
        RukNumber n;
        if (x.m_type == RukData::Boolean || !number(in, x, n, true))
            throwOperandError(in, x);
        if (n.isInt)
            return n.i;
        if (!(std::fabs(n.f) < 9.2e18))
            throwError(tr("计算结果溢出"));
        return std::llround(n.f);
    };
    auto numericArg = [&](const RukData &x, RukNumber &n) {
        if (x.m_type == RukData::Boolean || !number(in, x, n, true))
            throwOperandError(in, x);
    };
    switch (id) {
    case RukFnAbs:
    case RukFnFloor:
    case RukFnCeil:
    case RukFnTrunc: {
        numericArg(r, num);
        if (num.isInt) {
            if (id == RukFnAbs && num.i < 0) {
                if (num.i == std::numeric_limits<qint64>::min())
                    setReal(in, r, -double(num.i));
                else
                    r.m_type == RukData::Int64 ? r.setInt64(-num.i) : r.setInteger(-num.i);
            } else {
                r.m_type == RukData::Int64 ? r.setInt64(num.i) : r.setInteger(num.i);
            }
            break;
        }
        setReal(in, r, mathValue(id, num.f));
        break;
    }
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
        setReal(in, r, mathValue(id, real(in, r)));
        break;
    case RukFnPow:
        setReal(in, r, std::pow(real(in, args[0]), real(in, args[1])));
        break;
    case RukFnAtan2:
        setReal(in, r, std::atan2(real(in, args[0]), real(in, args[1])));
        break;
    case RukFnRound: {
        const qint64 digits = argc > 1 ? integerArg(args[1]) : 0;
        numericArg(r, num);
        if (num.isInt && digits >= 0) {
            r.m_type == RukData::Int64 ? r.setInt64(num.i) : r.setInteger(num.i);
            break;
        }
        setReal(in, r, roundHalfAway(num.value(), digits));
        break;
    }
    case RukFnMin:
    case RukFnMax:
    case RukFnSum:
    case RukFnAvg: {
        bool allInt = id != RukFnAvg;
        bool wide = false;
        qint64 isum = 0;
        double fsum = 0.0;
        RukNumber best;
        for (int k = 0; k < argc; ++k) {
            RukNumber n;
            numericArg(args[k], n);
            wide = wide || args[k].m_type == RukData::Int64;
            if (!n.isInt)
                allInt = false;
            if (id == RukFnSum && allInt && __builtin_add_overflow(isum, n.i, &isum))
                allInt = false;
            fsum += n.value();
            if (k == 0) {
                best = n;
            } else {
                const int c = (n.isInt && best.isInt) ? (n.i < best.i ? -1 : (n.i > best.i ? 1 : 0))
                                                      : compareReal(n.value(), best.value());
                if ((id == RukFnMin && c < 0) || (id == RukFnMax && c > 0))
                    best = n;
            }
        }
        if (id == RukFnSum) {
            if (allInt)
                wide ? r.setInt64(isum) : r.setInteger(isum);
            else
                setReal(in, r, fsum);
        } else if (id == RukFnAvg) {
            setReal(in, r, fsum / argc);
        } else if (allInt) {
            wide ? r.setInt64(best.i) : r.setInteger(best.i);
        } else {
            setReal(in, r, best.value());
        }
        break;
    }
    case RukFnPi:
        setReal(in, r, kPi);
        break;
    case RukFnLen:
        r.setInteger(r.asString().size());
        break;
    case RukFnLeft:
    case RukFnRight: {
        const qint64 count = std::max<qint64>(0, integerArg(args[1]));
        const QString text = r.asString();
        const int k = int(std::min<qint64>(count, text.size()));
        r.setString(id == RukFnLeft ? text.left(k) : text.right(k));
        break;
    }
    case RukFnMid: {
        const qint64 start = std::max<qint64>(1, integerArg(args[1]));
        const qint64 count = argc > 2 ? integerArg(args[2]) : std::numeric_limits<int>::max();
        const QString text = r.asString();
        if (count <= 0 || start > text.size()) {
            r.setString(QString());
            break;
        }
        r.setString(text.mid(int(start - 1), int(std::min<qint64>(count, text.size()))));
        break;
    }
    case RukFnUpper:
        r.setString(r.asString().toUpper());
        break;
    case RukFnLower:
        r.setString(r.asString().toLower());
        break;
    case RukFnTrim:
        r.setString(r.asString().trimmed());
        break;
    case RukFnStr:
        r.setString(r.asString());
        break;
    case RukFnNum:
        if (r.m_type == RukData::String) {
            if (!RukOps::readNumber(r.m_s, num))
                throwError(tr("文本[%1]不是数值").arg(r.m_s));
            num.isInt ? r.setInteger(num.i) : setReal(in, r, num.f);
        } else if (!isNumType(r.m_type)) {
            throwOperandError(in, r);
        }
        break;
    default: {
        const RukData out = m_functions[size_t(id - RukFnCustom)](args, argc);
        if (!out.isValid() || out.dataType() == RukData::Unknown)
            throwError(tr("函数[%1]没有返回值").arg(tokenText(m_nodes[size_t(in.node)])));
        RUK_COPY(r, out);
        if (out.m_type == RukData::Float)
            setReal(in, r, out.m_v.f);
        break;
    }
    }
}

void RukParserPrivate::evaluate(
    IRukQueryVarDataTypeEvent *typeEvent, void *context, const RukNodeMapInfos *nodeMap)
{
    if (!m_ready) {
        m_result.clear();
        throwError(tr("没有可计算的表达式"));
    }
    if (nodeMap && nodeMap->isEmpty())
        nodeMap = nullptr;
    try {
        if (typeEvent || nodeMap) {
            if (!m_genericReady) {
                compile(m_genericProgram, false);
                m_genericReady = true;
            }
            run(m_genericProgram, typeEvent, context, nodeMap);
        } else {
            if (!m_programReady) {
                compile(m_program, true);
                m_programReady = true;
            }
            if (m_numericResult != RukData::Unknown) {
                setNumericReady(true);
                runNumeric(this, context);
                return;
            }
            run(m_program, nullptr, context, nodeMap);
        }
    } catch (...) {
        resetVarFlags();
        m_result.clear();
        throw;
    }
    RUK_COPY(m_result, m_stack[0]);
    m_result.m_valid = true;
}

void RukParserPrivate::enterGeneral(RukParserPrivate *p, void *context)
{
    p->evaluate(nullptr, context, nullptr);
}

void RukParser::evaluateTyped(const RukQueryVarDataTypeEvent &typeEvent, void *context)
{
    if (Q_UNLIKELY(!d))
        throwNull();
    d->evaluate(typeEvent.callback(), context, nullptr);
}

void RukParser::evaluate(
    const RukQueryVarDataTypeEvent &typeEvent, void *context, const RukNodeMapInfos &nodeMap)
{
    if (Q_UNLIKELY(!d))
        throwNull();
    d->evaluate(typeEvent.callback(), context, &nodeMap);
}

void RukParserPrivate::run(const std::vector<RukInstr> &program, IRukQueryVarDataTypeEvent *typeEvent,
    void *context, const RukNodeMapInfos *nodeMap)
{
    RukData *st = m_stack.data();
    int sp = 0;
    const RukInstr *code = program.data();
    const int count = int(program.size());
    for (int pc = 0; pc < count; ++pc) {
        const RukInstr &in = code[pc];
        switch (in.code) {
        case RukPushConst:
            RUK_COPY(st[sp], m_consts[size_t(in.a)]);
            ++sp;
            break;
        case RukLoadVar:
            loadVar(in, st[sp], typeEvent, context, nodeMap);
            ++sp;
            break;
#define RUK_FLOAT_CASES(CODE, APPLY)                                                                         \
    case CODE: {                                                                                             \
        --sp;                                                                                                \
        RukData &x = st[sp - 1];                                                                             \
        const double y = st[sp].m_v.f;                                                                       \
        APPLY;                                                                                               \
        break;                                                                                               \
    }                                                                                                        \
    case CODE##I: {                                                                                          \
        RukData &x = st[sp - 1];                                                                             \
        const double y = in.imm;                                                                             \
        APPLY;                                                                                               \
        break;                                                                                               \
    }                                                                                                        \
    case CODE##V: {                                                                                          \
        const double y = loadFloat(in.a, context);                                                           \
        RukData &x = st[sp - 1];                                                                             \
        APPLY;                                                                                               \
        break;                                                                                               \
    }
#define RUK_ARITH(OP)                                                                                        \
    x.m_v.f OP y;                                                                                            \
    if (Q_UNLIKELY(!std::isfinite(x.m_v.f)))                                                                 \
    throwError(tr("计算结果溢出"))
#define RUK_DIVIDE                                                                                           \
    if (Q_UNLIKELY(y == 0.0))                                                                                \
        throwError(tr("除数为零"));                                                                          \
    RUK_ARITH(/=)
#define RUK_COMPARE(RESULT)                                                                                  \
    const int c = compareReal(x.m_v.f, y);                                                                   \
    RUK_SET_BOOL(x, RESULT)

            RUK_FLOAT_CASES(RukAddF, RUK_ARITH(+=))
            RUK_FLOAT_CASES(RukSubF, RUK_ARITH(-=))
            RUK_FLOAT_CASES(RukMulF, RUK_ARITH(*=))
            RUK_FLOAT_CASES(RukDivF, RUK_DIVIDE)
            RUK_FLOAT_CASES(RukEqF, RUK_COMPARE(c == 0))
            RUK_FLOAT_CASES(RukNeF, RUK_COMPARE(c != 0))
            RUK_FLOAT_CASES(RukLtF, RUK_COMPARE(c < 0))
            RUK_FLOAT_CASES(RukLeF, RUK_COMPARE(c <= 0))
            RUK_FLOAT_CASES(RukGtF, RUK_COMPARE(c > 0))
            RUK_FLOAT_CASES(RukGeF, RUK_COMPARE(c >= 0))
        case RukLoadVarF: {
            const double value = loadFloat(in.a, context);
            st[sp].m_type = RukData::Float;
            st[sp].m_v.f = value;
            ++sp;
            break;
        }
        case RukNegF:
            st[sp - 1].m_v.f = -st[sp - 1].m_v.f;
            break;
        case RukMathF:
            mathF(in, st[sp - 1]);
            break;
        case RukEqSV:
        case RukNeSV: {
            // The variable is compared where the callback left it: no copy of the text.
            const RukData &value = loadInPlace(in.a, in.node, context);
            const bool equal = value.m_s == m_consts[size_t(in.b)].m_s;
            RUK_SET_BOOL(st[sp], in.code == RukEqSV ? equal : !equal);
            ++sp;
            break;
        }
        case RukEqS:
        case RukNeS: {
            RukData &x = in.b >= 0 ? st[sp - 1] : st[sp - 2];
            const QString &y = in.b >= 0 ? m_consts[size_t(in.b)].m_s : st[sp - 1].m_s;
            if (in.b < 0)
                --sp;
            const bool equal = x.m_s == y;
            RUK_SET_BOOL(x, in.code == RukEqS ? equal : !equal);
            break;
        }
        case RukAdd:
        case RukSub:
        case RukMul:
        case RukDiv: {
            --sp;
            RukData &x = st[sp - 1];
            const RukData &y = st[sp];
            if ((x.m_type == RukData::Float || y.m_type == RukData::Float) && isNumType(x.m_type)
                && isNumType(y.m_type)) {
                const double a = x.m_type == RukData::Float ? x.m_v.f : double(x.m_v.i);
                const double b = y.m_type == RukData::Float ? y.m_v.f : double(y.m_v.i);
                double r;
                if (in.code == RukAdd) {
                    r = a + b;
                } else if (in.code == RukSub) {
                    r = a - b;
                } else if (in.code == RukMul) {
                    r = a * b;
                } else {
                    if (b == 0.0)
                        throwError(tr("除数为零"));
                    r = a / b;
                }
                if (!std::isfinite(r))
                    throwError(tr("计算结果溢出"));
                x.m_type = RukData::Float;
                x.m_v.f = r;
            } else {
                binarySlow(in, x, y);
            }
            break;
        }
        case RukEq:
        case RukNe:
        case RukLt:
        case RukLe:
        case RukGt:
        case RukGe:
            --sp;
            compare(in, st[sp - 1], st[sp]);
            break;
        case RukCat:
        case RukMod:
        case RukPow:
            --sp;
            binarySlow(in, st[sp - 1], st[sp]);
            break;
        case RukNeg:
        case RukPos:
        case RukNot:
            unary(in, st[sp - 1]);
            break;
        case RukAndJump: {
            RukData &x = st[sp - 1];
            if (!(x.m_type == RukData::Boolean ? x.m_v.b : logic(in, x))) {
                RUK_SET_BOOL(x, false);
                pc = in.a - 1;
            } else {
                --sp;
            }
            break;
        }
        case RukOrJump: {
            RukData &x = st[sp - 1];
            if (x.m_type == RukData::Boolean ? x.m_v.b : logic(in, x)) {
                RUK_SET_BOOL(x, true);
                pc = in.a - 1;
            } else {
                --sp;
            }
            break;
        }
        case RukToBool: {
            RukData &x = st[sp - 1];
            if (x.m_type != RukData::Boolean) {
                const bool b = logic(in, x);
                RUK_SET_BOOL(x, b);
            }
            break;
        }
        case RukJumpIfFalse: {
            --sp;
            const RukData &x = st[sp];
            if (!(x.m_type == RukData::Boolean ? x.m_v.b : logic(in, x)))
                pc = in.a - 1;
            break;
        }
        case RukJump:
            pc = in.a - 1;
            break;
        case RukCall:
            sp -= in.b;
            call(in, st + sp);
            ++sp;
            break;
        default:
            break;
        }
    }
}

// The typed program when it holds only floating-point and boolean values (booleans as 1 and 0;
// a text variable compared with a text constant makes a boolean too), fused by fuseNumeric,
// with one indirect jump per instruction (labels as values, as GCC and Clang offer). Reached
// straight from RukParser::evaluate, so it cleans up after a failure itself.
void RukParserPrivate::runNumeric(RukParserPrivate *self, void *context)
{
    // By operation code, in the order of RukCode; codes that never reach this program end it.
    static const void *const labels[] = {
        &&l_RukPushConst,
        &&l_RukHalt, // RukLoadVar
        &&l_RukHalt, // RukNeg
        &&l_RukHalt, // RukPos
        &&l_RukHalt, // RukNot
        &&l_RukHalt, // RukAdd
        &&l_RukHalt, // RukSub
        &&l_RukHalt, // RukCat
        &&l_RukHalt, // RukMul
        &&l_RukHalt, // RukDiv
        &&l_RukHalt, // RukMod
        &&l_RukHalt, // RukPow
        &&l_RukHalt, // RukEq
        &&l_RukHalt, // RukNe
        &&l_RukHalt, // RukLt
        &&l_RukHalt, // RukLe
        &&l_RukHalt, // RukGt
        &&l_RukHalt, // RukGe
        &&l_RukHalt, // RukOr
        &&l_RukHalt, // RukAnd
        &&l_RukAndJump,
        &&l_RukOrJump,
        &&l_RukToBool,
        &&l_RukJumpIfFalse,
        &&l_RukJump,
        &&l_RukHalt, // RukCall
        &&l_RukAddF,
        &&l_RukAddFI,
        &&l_RukAddFV,
        &&l_RukSubF,
        &&l_RukSubFI,
        &&l_RukSubFV,
        &&l_RukMulF,
        &&l_RukMulFI,
        &&l_RukMulFV,
        &&l_RukDivF,
        &&l_RukDivFI,
        &&l_RukDivFV,
        &&l_RukEqF,
        &&l_RukEqFI,
        &&l_RukEqFV,
        &&l_RukNeF,
        &&l_RukNeFI,
        &&l_RukNeFV,
        &&l_RukLtF,
        &&l_RukLtFI,
        &&l_RukLtFV,
        &&l_RukLeF,
        &&l_RukLeFI,
        &&l_RukLeFV,
        &&l_RukGtF,
        &&l_RukGtFI,
        &&l_RukGtFV,
        &&l_RukGeF,
        &&l_RukGeFI,
        &&l_RukGeFV,
        &&l_RukLoadVarF,
        &&l_RukNegF,
        &&l_RukMathF,
        &&l_RukHalt, // RukEqS
        &&l_RukHalt, // RukNeS
        &&l_RukEqSV,
        &&l_RukNeSV,
        &&l_RukHalt,
        &&l_RukAddVI,
        &&l_RukAddVV,
        &&l_RukSubVI,
        &&l_RukSubVV,
        &&l_RukMulVI,
        &&l_RukMulVV,
        &&l_RukDivVI,
        &&l_RukDivVV,
        &&l_RukEqVI,
        &&l_RukEqVV,
        &&l_RukNeVI,
        &&l_RukNeVV,
        &&l_RukLtVI,
        &&l_RukLtVV,
        &&l_RukLeVI,
        &&l_RukLeVV,
        &&l_RukGtVI,
        &&l_RukGtVV,
        &&l_RukGeVI,
        &&l_RukGeVV,
        &&l_RukSqrtF,
        &&l_RukHaltB,
        &&l_RukHaltF,
        &&l_RukEqVIJ,
        &&l_RukEqVVJ,
        &&l_RukNeVIJ,
        &&l_RukNeVVJ,
        &&l_RukLtVIJ,
        &&l_RukLtVVJ,
        &&l_RukLeVIJ,
        &&l_RukLeVVJ,
        &&l_RukGtVIJ,
        &&l_RukGtVVJ,
        &&l_RukGeVIJ,
        &&l_RukGeVVJ,
        &&l_RukAddAddVI,
        &&l_RukAddAddVV,
        &&l_RukAddSubVI,
        &&l_RukAddSubVV,
        &&l_RukAddMulVI,
        &&l_RukAddMulVV,
        &&l_RukAddDivVI,
        &&l_RukAddDivVV,
        &&l_RukSubAddVI,
        &&l_RukSubAddVV,
        &&l_RukSubSubVI,
        &&l_RukSubSubVV,
        &&l_RukSubMulVI,
        &&l_RukSubMulVV,
        &&l_RukSubDivVI,
        &&l_RukSubDivVV,
        &&l_RukMulAddVI,
        &&l_RukMulAddVV,
        &&l_RukMulSubVI,
        &&l_RukMulSubVV,
        &&l_RukMulMulVI,
        &&l_RukMulMulVV,
        &&l_RukMulDivVI,
        &&l_RukMulDivVV,
    };
    static_assert(sizeof(labels) / sizeof(labels[0]) == RukCodeCount, "one label per operation code");
    // Each instruction holds the label of its code, and an accumulation the label it goes on to:
    // the next instruction's, or the end it makes with the one-argument operation after it.
    // Filled in on the program's first run.
    if (Q_UNLIKELY(!self->m_numericThreaded)) {
        std::vector<RukInstr> &program = self->m_program;
        for (size_t i = 0; i < program.size(); ++i) {
            RukInstr &instr = program[i];
            instr.label = labels[instr.code];
            if (!isRukAccumulation(instr.code))
                continue;
            const int next = program[i + 1].code; // an accumulation is never last
            if (!instr.b)
                instr.link.tail = labels[next];
            else
                instr.link.tail = next == RukSqrtF ? &&l_TailSqrtHalt : &&l_TailUnaryHalt;
        }
        self->m_numericThreaded = true;
    }
    // Never null, and replaced only between evaluations.
    RukQueryVarValueImpl *const impl = self->m_valueImpl;
    double *sp = self->m_numberStack.data(); // the next free slot
    const RukInstr *in = self->m_program.data();
    try {
#define RUK_NEXT                                                                                             \
    ++in;                                                                                                    \
    goto * in->label
// Asks for the value of the variable of STATE and checks it; a value that is not a plain number
// is converted, or fails the evaluation, out of line. The number is then in the state's slot.
#define RUK_ASK(STATE)                                                                                       \
    do {                                                                                                     \
        RukVarState *state_ = (STATE);                                                                       \
        state_->value.m_type = RukData::Unknown;                                                             \
        impl->queryVarValue(state_->handle, context);                                                        \
        state_ = (STATE);                                                                                    \
        if (Q_UNLIKELY(state_->value.m_type != RukData::Float || state_->invalid))                           \
            self->settleFloatSlow(state_);                                                                   \
    } while (false)
#define RUK_LOAD(STATE, OUT)                                                                                 \
    do {                                                                                                     \
        RUK_ASK(STATE);                                                                                      \
        OUT = (STATE)->value.m_v.f;                                                                          \
    } while (false)
// Both variables are asked and checked in order before either number is read, so that no number
// is held across the second call.
#define RUK_LOAD2(STATE1, STATE2, X, Y)                                                                      \
    do {                                                                                                     \
        RUK_ASK(STATE1);                                                                                     \
        RUK_ASK(STATE2);                                                                                     \
        X = (STATE1)->value.m_v.f;                                                                           \
        Y = (STATE2)->value.m_v.f;                                                                           \
    } while (false)
#define RUK_NUMBER_CASES(CODE, BASE, APPLY)                                                                  \
    l_##CODE:                                                                                                \
    {                                                                                                        \
        --sp;                                                                                                \
        double &x = sp[-1];                                                                                  \
        const double y = sp[0];                                                                              \
        APPLY;                                                                                               \
        RUK_NEXT;                                                                                            \
    }                                                                                                        \
    l_##CODE##I:                                                                                             \
    {                                                                                                        \
        double &x = sp[-1];                                                                                  \
        const double y = in->imm;                                                                            \
        APPLY;                                                                                               \
        RUK_NEXT;                                                                                            \
    }                                                                                                        \
    l_##CODE##V:                                                                                             \
    {                                                                                                        \
        double y;                                                                                            \
        RUK_LOAD(in->state, y);                                                                              \
        double &x = sp[-1];                                                                                  \
        APPLY;                                                                                               \
        RUK_NEXT;                                                                                            \
    }                                                                                                        \
    l_##BASE##VI:                                                                                            \
    {                                                                                                        \
        double x;                                                                                            \
        RUK_LOAD(in->state, x);                                                                              \
        const double y = in->imm;                                                                            \
        APPLY;                                                                                               \
        *sp++ = x;                                                                                           \
        RUK_NEXT;                                                                                            \
    }                                                                                                        \
    l_##BASE##VV:                                                                                            \
    {                                                                                                        \
        double x, y;                                                                                         \
        RUK_LOAD2(in->state, in->state2, x, y);                                                              \
        APPLY;                                                                                               \
        *sp++ = x;                                                                                           \
        RUK_NEXT;                                                                                            \
    }
#define RUK_NUMBER_ARITH(OP)                                                                                 \
    x OP y;                                                                                                  \
    if (Q_UNLIKELY(!std::isfinite(x)))                                                                       \
    throwOverflow()
#define RUK_NUMBER_DIVIDE                                                                                    \
    if (Q_UNLIKELY(y == 0.0))                                                                                \
        throwDivisionByZero();                                                                               \
    RUK_NUMBER_ARITH(/=)
#define RUK_NUMBER_COMPARE(RESULT)                                                                           \
    const int c = compareReal(x, y);                                                                         \
    x = (RESULT) ? 1.0 : 0.0

        goto * in->label;
        RUK_NUMBER_CASES(RukAddF, RukAdd, RUK_NUMBER_ARITH(+=))
        RUK_NUMBER_CASES(RukSubF, RukSub, RUK_NUMBER_ARITH(-=))
        RUK_NUMBER_CASES(RukMulF, RukMul, RUK_NUMBER_ARITH(*=))
        RUK_NUMBER_CASES(RukDivF, RukDiv, RUK_NUMBER_DIVIDE)
        RUK_NUMBER_CASES(RukEqF, RukEq, RUK_NUMBER_COMPARE(c == 0))
        RUK_NUMBER_CASES(RukNeF, RukNe, RUK_NUMBER_COMPARE(c != 0))
        RUK_NUMBER_CASES(RukLtF, RukLt, RUK_NUMBER_COMPARE(c < 0))
        RUK_NUMBER_CASES(RukLeF, RukLe, RUK_NUMBER_COMPARE(c <= 0))
        RUK_NUMBER_CASES(RukGtF, RukGt, RUK_NUMBER_COMPARE(c > 0))
        RUK_NUMBER_CASES(RukGeF, RukGe, RUK_NUMBER_COMPARE(c >= 0))
#undef RUK_NUMBER_CASES
#undef RUK_NUMBER_ARITH
#undef RUK_NUMBER_DIVIDE
#undef RUK_NUMBER_COMPARE
    l_RukLoadVarF:
        RUK_LOAD(in->state, *sp);
        ++sp;
        RUK_NEXT;
    l_RukPushConst: // fuseNumeric put the constant in imm
        *sp++ = in->imm;
        RUK_NEXT;
    l_RukNegF:
        sp[-1] = -sp[-1];
        RUK_NEXT;
    l_RukMathF:
        sp[-1] = mathValue(in->a, sp[-1]);
        RUK_NEXT;
    l_RukSqrtF:
        if (in->b) {
            self->m_result.setFloat(unaryTail(RukFnSqrt, sp[-1]));
            return;
        }
        sp[-1] = unaryTail(RukFnSqrt, sp[-1]);
        RUK_NEXT;
    l_RukAndJump:
        if (sp[-1] == 0.0) {
            in = in->link.target;
            goto * in->label;
        }
        --sp;
        RUK_NEXT;
    l_RukOrJump:
        if (sp[-1] != 0.0) {
            in = in->link.target;
            goto * in->label;
        }
        --sp;
        RUK_NEXT;
    l_RukJumpIfFalse:
        --sp;
        if (*sp == 0.0) {
            in = in->link.target;
            goto * in->label;
        }
        RUK_NEXT;
#define RUK_COMPARE_JUMP(BASE, RESULT)                                                                       \
    l_##BASE##VIJ:                                                                                           \
    {                                                                                                        \
        double x;                                                                                            \
        RUK_LOAD(in->state, x);                                                                              \
        const int c = compareReal(x, in->imm);                                                               \
        if (!(RESULT)) {                                                                                     \
            in = in->link.target;                                                                            \
            goto * in->label;                                                                                \
        }                                                                                                    \
        RUK_NEXT;                                                                                            \
    }                                                                                                        \
    l_##BASE##VVJ:                                                                                           \
    {                                                                                                        \
        double x, y;                                                                                         \
        RUK_LOAD2(in->state, in->state2, x, y);                                                              \
        const int c = compareReal(x, y);                                                                     \
        if (!(RESULT)) {                                                                                     \
            in = in->link.target;                                                                            \
            goto * in->label;                                                                                \
        }                                                                                                    \
        RUK_NEXT;                                                                                            \
    }
        RUK_COMPARE_JUMP(RukEq, c == 0)
        RUK_COMPARE_JUMP(RukNe, c != 0)
        RUK_COMPARE_JUMP(RukLt, c < 0)
        RUK_COMPARE_JUMP(RukLe, c <= 0)
        RUK_COMPARE_JUMP(RukGt, c > 0)
        RUK_COMPARE_JUMP(RukGe, c >= 0)
#undef RUK_COMPARE_JUMP
// The inner result needs no check of its own: a sum, difference or product with an infinite or
// NaN operand is not finite either, so the outer check fails as the inner one would have, with
// the same message and before any further callback.
#define RUK_INNER_ARITH(OP) x OP y
#define RUK_INNER_DIVIDE                                                                                     \
    if (Q_UNLIKELY(y == 0.0))                                                                                \
        throwDivisionByZero();                                                                               \
    x /= y
// The top of the stack takes the inner result x; then on to the instruction's tail, with `in` at
// the instruction after it.
#define RUK_ACCUMULATE_INTO_TOP(OUTER_OP2)                                                                   \
    const double top = sp[-1] OUTER_OP2 x;                                                                   \
    if (Q_UNLIKELY(!std::isfinite(top)))                                                                     \
        throwOverflow();                                                                                     \
    sp[-1] = top;                                                                                            \
    goto *(in++)->link.tail
#define RUK_ACCUMULATE_CASES(OUTER, OUTER_OP2, INNER, INNER_APPLY)                                           \
    l_##OUTER##INNER##VI:                                                                                    \
    {                                                                                                        \
        double x;                                                                                            \
        RUK_LOAD(in->state, x);                                                                              \
        const double y = in->imm;                                                                            \
        INNER_APPLY;                                                                                         \
        RUK_ACCUMULATE_INTO_TOP(OUTER_OP2);                                                                  \
    }                                                                                                        \
    l_##OUTER##INNER##VV:                                                                                    \
    {                                                                                                        \
        double x, y;                                                                                         \
        RUK_LOAD2(in->state, in->state2, x, y);                                                              \
        INNER_APPLY;                                                                                         \
        RUK_ACCUMULATE_INTO_TOP(OUTER_OP2);                                                                  \
    }
#define RUK_ACCUMULATE_OUTER(OUTER, OUTER_OP)                                                                \
    RUK_ACCUMULATE_CASES(OUTER, OUTER_OP, Add, RUK_INNER_ARITH(+=))                                          \
    RUK_ACCUMULATE_CASES(OUTER, OUTER_OP, Sub, RUK_INNER_ARITH(-=))                                          \
    RUK_ACCUMULATE_CASES(OUTER, OUTER_OP, Mul, RUK_INNER_ARITH(*=))                                          \
    RUK_ACCUMULATE_CASES(OUTER, OUTER_OP, Div, RUK_INNER_DIVIDE)
        RUK_ACCUMULATE_OUTER(RukAdd, +)
        RUK_ACCUMULATE_OUTER(RukSub, -)
        RUK_ACCUMULATE_OUTER(RukMul, *)
#undef RUK_ACCUMULATE_OUTER
#undef RUK_ACCUMULATE_CASES
#undef RUK_ACCUMULATE_INTO_TOP
#undef RUK_INNER_ARITH
#undef RUK_INNER_DIVIDE
    // The ends an accumulation goes on to, with its result, known finite, on the top of the stack
    // and `in` at the one-argument operation that follows it.
    l_TailSqrtHalt:
        if (Q_UNLIKELY(sp[-1] < 0.0))
            throwOverflow();
        self->m_result.setFloat(std::sqrt(sp[-1]));
        return;
    l_TailUnaryHalt:
        self->m_result.setFloat(unaryTail(in->code == RukNegF ? -1 : in->a, sp[-1]));
        return;
    l_RukJump:
        in = in->link.target;
        goto * in->label;
    l_RukToBool: // already a boolean
        RUK_NEXT;
    l_RukEqSV:
    l_RukNeSV : {
        // The variable is compared where the callback left it: no copy of the text.
        in->state->value.m_type = RukData::Unknown;
        impl->queryVarValue(in->state->handle, context);
        const RukVarState &var = *in->state;
        const RukData &value = Q_LIKELY(var.value.m_type == RukData::String && !var.invalid)
            ? var.value
            : self->loadInPlaceSlow(in->a, in->node);
        const bool holds = sameText(value.m_s, *in->text) == (in->code == RukEqSV);
        if (in->b) {
            self->m_result.setBoolean(holds);
            return;
        }
        *sp++ = holds ? 1.0 : 0.0;
        RUK_NEXT;
    }
#undef RUK_NEXT
#undef RUK_LOAD
#undef RUK_LOAD2
#undef RUK_ASK
    l_RukHaltB:
        self->m_result.setBoolean(sp[-1] != 0.0);
        return;
    l_RukHaltF:
        self->m_result.setFloat(sp[-1]);
        return;
    l_RukHalt:
        if (self->m_numericResult == RukData::Boolean)
            self->m_result.setBoolean(sp[-1] != 0.0);
        else
            self->m_result.setFloat(sp[-1]);
    } catch (...) {
        self->abandonEvaluation();
        throw;
    }
}

// Out of line, so that the evaluator keeps no registers ready for its temporaries.
void RukParserPrivate::abandonEvaluation()
{
    resetVarFlags();
    m_result.clear();
}

// Rewrites the plain-double program: a variable loaded just before an operation on the
// immediate or on another variable joins it, a no-op boolean test goes, a square root runs in
// place, and a jump to the end becomes the end. Same operations in the same order, so the same
// callbacks, results and failures.
void RukParserPrivate::fuseNumeric(std::vector<RukInstr> &program)
{
    const size_t count = program.size();
    std::vector<char> target(count + 1, 0);
    auto isJump = [](int code) {
        return code == RukAndJump || code == RukOrJump || code == RukJumpIfFalse || code == RukJump
            || (code >= RukEqVIJ && code <= RukGeVVJ);
    };
    for (const RukInstr &in : program) {
        if (isJump(in.code))
            target[size_t(in.a)] = 1;
    }
    const int halt = m_numericResult == RukData::Boolean ? RukHaltB : RukHaltF;
    std::vector<RukInstr> out;
    out.reserve(count);
    std::vector<int> moved(count + 1, 0); // old index -> new index
    for (size_t i = 0; i < count; ++i) {
        moved[i] = int(out.size());
        RukInstr in = program[i];
        if (in.code == RukToBool)
            continue;
        if (in.code == RukLoadVarF && i + 1 < count && !target[i + 1]) {
            const RukInstr &next = program[i + 1];
            const int offset = next.code - RukAddF;
            if (next.code >= RukAddF && next.code <= RukGeFV && offset % 3 != 0) {
                const int op = offset / 3; // Add, Sub, Mul, Div, then the comparisons
                const int withVar = offset % 3 == 2 ? 1 : 0;
                // Keeps the load's node: a failure names the first variable.
                RukInstr fused = { RukAddVI + 2 * op + withVar, 0, 0, in.node, { withVar ? 0.0 : next.imm } };
                fused.state = &m_vars[size_t(in.a)];
                if (withVar)
                    fused.state2 = &m_vars[size_t(next.a)];
                moved[++i] = int(out.size());
                if (op >= 4 && i + 1 < count && !target[i + 1] && program[i + 1].code == RukJumpIfFalse) {
                    fused.code = RukEqVIJ + 2 * (op - 4) + withVar;
                    fused.a = program[i + 1].a;
                    moved[++i] = int(out.size());
                } else if (op < 4 && i + 1 < count && !target[i + 1]
                    && (program[i + 1].code == RukAddF || program[i + 1].code == RukSubF
                        || program[i + 1].code == RukMulF)) {
                    const int outer = (program[i + 1].code - RukAddF) / 3; // Add, Sub, Mul
                    fused.code = RukAddAddVI + 2 * (4 * outer + op) + withVar;
                    moved[++i] = int(out.size());
                }
                out.push_back(fused);
                continue;
            }
        }
        if (in.code == RukPushConst) {
            in.imm = m_consts[size_t(in.a)].m_v.f;
        } else if (in.code == RukLoadVarF || in.code == RukEqSV || in.code == RukNeSV
            || (in.code >= RukAddF && in.code <= RukGeFV && (in.code - RukAddF) % 3 == 2)) {
            in.state = &m_vars[size_t(in.a)];
            if (in.code == RukEqSV || in.code == RukNeSV) {
                in.text = &m_consts[size_t(in.b)].m_s;
                in.b = 0;
            }
        } else if (in.code == RukMathF && in.a == RukFnSqrt)
            in.code = RukSqrtF;
        else if (in.code == RukHalt)
            in.code = halt;
        out.push_back(in);
    }
    moved[count] = int(out.size());
    for (RukInstr &in : out) {
        if (isJump(in.code))
            in.a = moved[size_t(in.a)];
    }
    for (RukInstr &in : out) {
        if (in.code == RukJump && out[size_t(in.a)].code == halt)
            in = out[size_t(in.a)];
    }
    // A square root or a text comparison just before the end of the program ends it itself, and
    // so does an accumulation followed by a one-argument operation and the end (both stay in
    // place, for jumps that land on them). An accumulation just before the end needs no mark: it
    // goes on to the end's label.
    for (size_t i = 0; i + 1 < out.size(); ++i) {
        RukInstr &in = out[i];
        const int next = out[i + 1].code;
        if (isRukAccumulation(in.code)) {
            if ((next == RukNegF || next == RukSqrtF || next == RukMathF) && i + 2 < out.size()
                && out[i + 2].code == RukHaltF)
                in.b = RukEndsProgram;
        } else if ((in.code == RukSqrtF && next == RukHaltF)
            || ((in.code == RukEqSV || in.code == RukNeSV) && next == RukHaltB)) {
            in.b = RukEndsProgram;
        }
    }
    for (RukInstr &in : out) {
        if (isJump(in.code))
            in.link.target = out.data() + in.a;
    }
    program.swap(out); // the buffer moves with its targets
    m_numericThreaded = false;
}
