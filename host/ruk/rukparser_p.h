#pragma once

#include <rukdata.h>
#include <rukevents.h>
#include <ruknode.h>
#include <ruknodemapinfos.h>
#include <rukparser.h>

#include <QCoreApplication>
#include <QString>

#include <memory>
#include <vector>

// Operation codes of the compiled program; operator nodes keep theirs in RukNodeData::op.
enum RukCode : int
{
    RukPushConst,
    RukLoadVar,
    RukNeg,
    RukPos,
    RukNot,
    RukAdd,
    RukSub,
    RukCat,
    RukMul,
    RukDiv,
    RukMod,
    RukPow,
    RukEq,
    RukNe,
    RukLt,
    RukLe,
    RukGt,
    RukGe,
    RukOr,
    RukAnd,
    RukAndJump, // false: keep it and jump to a; else pop
    RukOrJump, // true: keep it and jump to a; else pop
    RukToBool,
    RukJumpIfFalse, // pops the condition
    RukJump,
    RukCall, // function a with b arguments
    // Typed forms, compiled where both operands are known to be floating-point (or texts). Each
    // floating-point operation comes in three forms: right operand on the stack, the immediate,
    // or the variable a loaded in place.
    RukAddF,
    RukAddFI,
    RukAddFV,
    RukSubF,
    RukSubFI,
    RukSubFV,
    RukMulF,
    RukMulFI,
    RukMulFV,
    RukDivF,
    RukDivFI,
    RukDivFV,
    RukEqF,
    RukEqFI,
    RukEqFV,
    RukNeF,
    RukNeFI,
    RukNeFV,
    RukLtF,
    RukLtFI,
    RukLtFV,
    RukLeF,
    RukLeFI,
    RukLeFV,
    RukGtF,
    RukGtFI,
    RukGtFV,
    RukGeF,
    RukGeFI,
    RukGeFV,
    RukLoadVarF, // a variable announced as floating-point
    RukNegF,
    RukMathF, // built-in function a of one floating-point argument
    RukEqS, // the right operand is constant b when b >= 0
    RukNeS,
    RukEqSV, // text variable a against constant b
    RukNeSV,
    RukHalt, // ends a typed program
    // Fused forms of the plain-double program: variable a against the immediate, or variables
    // a and b, the result pushed; in the order Add, Sub, Mul, Div, Eq, Ne, Lt, Le, Gt, Ge.
    RukAddVI,
    RukAddVV,
    RukSubVI,
    RukSubVV,
    RukMulVI,
    RukMulVV,
    RukDivVI,
    RukDivVV,
    RukEqVI,
    RukEqVV,
    RukNeVI,
    RukNeVV,
    RukLtVI,
    RukLtVV,
    RukLeVI,
    RukLeVV,
    RukGtVI,
    RukGtVV,
    RukGeVI,
    RukGeVV,
    RukSqrtF,
    RukHaltB, // ends a plain-double program whose result is a boolean
    RukHaltF, // ends a plain-double program whose result is floating-point
    // A fused comparison (VI or VV) followed by a jump to a unless it holds.
    RukEqVIJ,
    RukEqVVJ,
    RukNeVIJ,
    RukNeVVJ,
    RukLtVIJ,
    RukLtVVJ,
    RukLeVIJ,
    RukLeVVJ,
    RukGtVIJ,
    RukGtVVJ,
    RukGeVIJ,
    RukGeVVJ,
    // A fused arithmetic operation (VI or VV) whose result goes straight into an addition,
    // subtraction or multiplication with the top of the stack, which takes the result: RukAddMulVI
    // is top + var * imm. The order is Add, Sub, Mul for the outer operation, then Add, Sub, Mul,
    // Div for the inner one.
    RukAddAddVI,
    RukAddAddVV,
    RukAddSubVI,
    RukAddSubVV,
    RukAddMulVI,
    RukAddMulVV,
    RukAddDivVI,
    RukAddDivVV,
    RukSubAddVI,
    RukSubAddVV,
    RukSubSubVI,
    RukSubSubVV,
    RukSubMulVI,
    RukSubMulVV,
    RukSubDivVI,
    RukSubDivVV,
    RukMulAddVI,
    RukMulAddVV,
    RukMulSubVI,
    RukMulSubVV,
    RukMulMulVI,
    RukMulMulVV,
    RukMulDivVI,
    RukMulDivVV,
    RukCodeCount
};

// An instruction of the plain-double program marked so in its b ends the program with its result
// (an accumulation: after the one-argument operation that follows it).
constexpr int RukEndsProgram = 1;

// An operation on variables whose result goes into the top of the stack (RukAddAddVI..RukMulDivVV).
inline bool isRukAccumulation(int code)
{
    return code >= RukAddAddVI && code <= RukMulDivVV;
}

// Built-in functions; ids from RukFnCustom on are functions from a function callback.
enum RukFunctionId : int
{
    RukFnAbs,
    RukFnSqrt,
    RukFnExp,
    RukFnLn,
    RukFnLog10,
    RukFnPow,
    RukFnSin,
    RukFnCos,
    RukFnTan,
    RukFnAsin,
    RukFnAcos,
    RukFnAtan,
    RukFnAtan2,
    RukFnRad,
    RukFnDeg,
    RukFnFloor,
    RukFnCeil,
    RukFnTrunc,
    RukFnRound,
    RukFnMin,
    RukFnMax,
    RukFnSum,
    RukFnAvg,
    RukFnIf,
    RukFnPi,
    RukFnLen,
    RukFnLeft,
    RukFnRight,
    RukFnMid,
    RukFnUpper,
    RukFnLower,
    RukFnTrim,
    RukFnStr,
    RukFnNum,
    RukFnCustom
};

class RukParserPrivate;

struct RukNodeData
{
    int type = 0;
    int op = 0; // RukCode of an operator, RukFunctionId of a call
    int start = 0; // token span in the text
    int len = 0;
    int firstKid = 0;
    int kidCount = 0;
    int slot = -1; // index into vars (variables) or consts (constants)
    RukParserPrivate *owner = nullptr;
};

struct RukInstr
{
    int code;
    int a;
    int b;
    int node;
    union {
        double imm;
        const QString *text; // the plain-double program's text constant (RukEqSV, RukNeSV)
    };
    // The plain-double program's own: its variables' states (each the address of its handle too)
    // and the label of its code.
    RukVarState *state = nullptr;
    RukVarState *state2 = nullptr;
    const void *label = nullptr;
    union Link {
        const RukInstr *target; // a jump's destination
        const void *tail; // the label an accumulation goes on to
    } link = {};
};

// A number read from a text or a value: integer or floating-point.
struct RukNumber
{
    bool isInt = true;
    qint64 i = 0;
    double f = 0.0;
    double value() const { return isInt ? double(i) : f; }
};

// Value rules shared by the evaluator and RukData.
struct RukOps
{
    // The trimmed text as a decimal number (optional sign, fraction, exponent).
    static bool readNumber(const QChar *p, int n, RukNumber &out);
    static bool readNumber(const QString &text, RukNumber &out)
    {
        return readNumber(text.constData(), text.size(), out);
    }
    // "true"/"false"/"1"/"0" in any case: 1 or 0; anything else -1.
    static int readLogic(const QString &text);
    static QString floatText(double value);
};

class RukParserPrivate
{
    Q_DECLARE_TR_FUNCTIONS(RukEngine)

public:
    RukParserPrivate();
    ~RukParserPrivate();
    RukParserPrivate(const RukParserPrivate &) = delete;
    RukParserPrivate &operator=(const RukParserPrivate &) = delete;

    void setExpression(const QString &text, IRukQueryVarDataTypeEvent *typeEvent,
        IRukQueryConstValueEvent *constEvent, void *context, const RukNodeMapInfos &nodeMap,
        IRukQueryFunctionEvent *functionEvent);
    void evaluate(IRukQueryVarDataTypeEvent *typeEvent, void *context, const RukNodeMapInfos *nodeMap);
    // Runs the plain-double program; static, so that it can be the handle's entry itself.
    static void runNumeric(RukParserPrivate *self, void *context);
    void visitNode(int order, IRukVisitNodeEvent *visitEvent, void *context);
    QString expression(IRukTransTokenEvent *transEvent, void *context);

    QString tokenText(const RukNodeData &node) const { return m_text.mid(node.start, node.len); }

    [[noreturn]] void throwParseError(int position, const QString &detail) const;
    [[noreturn]] static void throwError(const QString &message);
    // Out of line, so that the evaluator's hot paths hold no message temporaries.
    [[noreturn]] Q_DECL_COLD_FUNCTION Q_NEVER_INLINE static void throwOverflow();
    [[noreturn]] Q_DECL_COLD_FUNCTION Q_NEVER_INLINE static void throwDivisionByZero();

    QString m_text;
    std::vector<RukNodeData> m_nodes;
    std::vector<int> m_kids;
    int m_root = -1;
    std::vector<RukVarState> m_vars;
    std::vector<int> m_varNodes;
    std::vector<RukData> m_consts;
    std::vector<RukFunction> m_functions;
    // The typed program holds as long as the variables keep the types they had when it was
    // compiled; an evaluation with a type callback runs the generic one.
    std::vector<RukInstr> m_program;
    std::vector<RukInstr> m_genericProgram;
    bool m_programReady = false;
    int m_numericResult = 0; // Float or Boolean when the typed program runs on m_numberStack
    std::vector<double> m_numberStack;
    bool m_genericReady = false;
    std::vector<RukData> m_stack;
    std::vector<int> m_tokenOrder; // token nodes by position, built on the first expression()
    IRukQueryVarValueEvent *m_valueEvent = nullptr;
    // Never null: m_valueEvent when it is one (one virtual call less), else m_forward, which
    // passes the call on to m_valueEvent, if any. Its type lives in rukparser.cpp only, so that
    // the evaluator's compiler does not guess at the callback's type.
    RukQueryVarValueImpl *m_valueImpl;
    std::unique_ptr<RukQueryVarValueImpl> m_forward;
    void setValueEvent(IRukQueryVarValueEvent *event);
    // Where the handle's inline evaluate goes when there is no type callback: the plain-double
    // program once it is compiled, the general path until then.
    RukParser::Entry m_entry = &RukParserPrivate::enterGeneral;
    static void enterGeneral(RukParserPrivate *p, void *context);
    void setNumericReady(bool ready) { m_entry = ready ? &runNumeric : &enterGeneral; }
    bool m_numericThreaded = false; // the labels of m_program are filled in
    RukData m_result;
    bool m_ready = false;

private:
    void clearExpression();
    void compile(std::vector<RukInstr> &program, bool typed);
    void run(const std::vector<RukInstr> &program, IRukQueryVarDataTypeEvent *typeEvent, void *context,
        const RukNodeMapInfos *nodeMap);
    void loadVar(const RukInstr &in, RukData &dst, IRukQueryVarDataTypeEvent *typeEvent, void *context,
        const RukNodeMapInfos *nodeMap);
    double loadFloat(int var, void *context);
    void fuseNumeric(std::vector<RukInstr> &program);
    double loadFloatSlow(int var);
    // Leaves the checked, converted number in the variable's own slot.
    Q_DECL_COLD_FUNCTION Q_NEVER_INLINE void settleFloatSlow(RukVarState *var);
    const RukData &loadInPlace(int var, int node, void *context);
    Q_DECL_COLD_FUNCTION Q_NEVER_INLINE const RukData &loadInPlaceSlow(int var, int node);
    void varSlow(const RukInstr &in, RukData &dst);
    void resetVarFlags();
    Q_DECL_COLD_FUNCTION Q_NEVER_INLINE void abandonEvaluation();
    void convertVar(const RukInstr &in, RukData &dst);
    void mathF(const RukInstr &in, RukData &x) const;
    static double mathValue(int function, double value);
    static double unaryTail(int function, double value);
    [[noreturn]] void throwOperandError(const RukInstr &in, const RukData &operand) const;
    void binarySlow(const RukInstr &in, RukData &x, const RukData &y);
    void arithmetic(const RukInstr &in, RukData &x, const RukData &y);
    void compare(const RukInstr &in, RukData &x, const RukData &y);
    void unary(const RukInstr &in, RukData &x);
    bool logic(const RukInstr &in, const RukData &x) const;
    void call(const RukInstr &in, RukData *args);
    bool number(const RukInstr &in, const RukData &x, RukNumber &out, bool strict) const;
    double real(const RukInstr &in, const RukData &x) const;
    void setReal(const RukInstr &in, RukData &dst, double value) const;
};
