#pragma once

#include "tovhost_export.h"

#include <rukdata.h>

#include <QString>
#include <QVariant>

struct RukNodeData;

// State of one variable node while the engine asks for its type and value. Reached only
// through RukVarNode; public so that the setters stay inline on the evaluation path.
struct RukVarState
{
    QString code;
    RukData value; // type 0 while no value has been given
    int dataType = 0;
    bool invalid = false;
    qintptr tag = 0;
};

// A node of a parsed expression, as handed to the visit and translate callbacks. A handle: valid
// only during the callback that received it. Node types: 1 variable, 2 constant, 3 unary
// operator, 4 binary operator, 5 function call, 6 parenthesised group.
class TOVHOST_EXPORT RukNode
{
public:
    enum NodeType
    {
        Variable = 1,
        Constant = 2,
        UnaryOperator = 3,
        BinaryOperator = 4,
        Function = 5,
        Group = 6
    };

    int nodeType() const;
    // The node's text as written: a variable with its brackets or prefix, an operator, a
    // function's name, "(" for a group.
    QString token() const;
    // 1-based position of the token in the expression text.
    int position() const;

protected:
    explicit RukNode(RukNodeData *data)
        : d(data)
    { }
    RukNodeData *d;

    friend class RukParserPrivate;
};

// A variable node as handed to the type and value callbacks.
class TOVHOST_EXPORT RukVarNode : public RukNode
{
public:
    // The variable's code: the name without the brackets ("[宽度]" → "宽度"); "@n" keeps its "@".
    const QString &varCode() const { return s->code; }
    // The type announced by the type callback (0 until one is announced).
    int dataType() const { return s->dataType; }

    void setAsFloat(double value) { s->value.setFloat(value); }
    void setAsInteger(long value) { s->value.setInteger(value); }
    void setAsInt64(qint64 value) { s->value.setInt64(value); }
    void setAsString(const QString &value) { s->value.setString(value); }
    void setAsBoolean(bool value) { s->value.setBoolean(value); }
    // A null or invalid variant marks the node invalid.
    void setAsVariant(const QVariant &value);
    void setAsData(const RukData &value) { s->value = value; }
    // An invalid node fails the evaluation with "变量[%1]的值无效".
    void setIsInvalid(bool invalid) { s->invalid = invalid; }
    bool isInvalid() const { return s->invalid; }

    // A caller's tag kept with the node from setExpression on, e.g. the slot that holds its value
    // so that the value callback needs no lookup by name. 0 until set.
    void setTag(qintptr tag) { s->tag = tag; }
    qintptr tag() const { return s->tag; }

private:
    RukVarNode(RukNodeData *data, RukVarState *state)
        : RukNode(data)
        , s(state)
    { }
    RukVarState *s;

    friend class RukParserPrivate;
};
