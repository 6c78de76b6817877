#pragma once

#include "tovhost_export.h"

#include <rukdata.h>

#include <QString>
#include <QVariant>

struct RukNodeData;
struct RukVarState;

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

// A variable node as handed to the type and value callbacks, by reference only. It is the first
// member of its variable's state, so that the accessors reach the value, type and tag with no
// hop through a pointer: the value callback runs once per variable read.
class TOVHOST_EXPORT RukVarNode : public RukNode
{
public:
    // The variable's code: the name without the brackets ("[宽度]" → "宽度"); "@n" keeps its "@".
    inline const QString &varCode() const;
    // The type announced by the type callback (0 until one is announced).
    inline int dataType() const;

    inline void setAsFloat(double value);
    inline void setAsInteger(long value);
    inline void setAsInt64(qint64 value);
    inline void setAsString(const QString &value);
    inline void setAsBoolean(bool value);
    // A null or invalid variant marks the node invalid.
    void setAsVariant(const QVariant &value);
    inline void setAsData(const RukData &value);
    // An invalid node fails the evaluation with "变量[%1]的值无效".
    inline void setIsInvalid(bool invalid);
    inline bool isInvalid() const;

    // A caller's tag kept with the node from setExpression on, e.g. the slot that holds its value
    // so that the value callback needs no lookup by name. 0 until set.
    inline void setTag(qintptr tag);
    inline qintptr tag() const;

private:
    RukVarNode()
        : RukNode(nullptr)
    { }
    RukVarNode(const RukVarNode &) = default;
    RukVarNode &operator=(const RukVarNode &) = default;
    // The state this handle opens: the two share an address (see RukVarState).
    RukVarState &state() { return *reinterpret_cast<RukVarState *>(this); }
    const RukVarState &state() const { return *reinterpret_cast<const RukVarState *>(this); }

    friend struct RukVarState;
    friend class RukParserPrivate;
};

// State of one variable node while the engine asks for its type and value. Reached only
// through its handle; public so that the handle's accessors stay inline on the evaluation path.
// Standard layout, with the handle first, so that the handle's address is the state's.
struct RukVarState
{
    RukVarNode handle;
    QString code;
    RukData value; // type 0 while no value has been given
    int dataType = 0;
    bool invalid = false;
    qintptr tag = 0;
};

const QString &RukVarNode::varCode() const
{
    return state().code;
}
int RukVarNode::dataType() const
{
    return state().dataType;
}
void RukVarNode::setAsFloat(double value)
{
    state().value.setFloat(value);
}
void RukVarNode::setAsInteger(long value)
{
    state().value.setInteger(value);
}
void RukVarNode::setAsInt64(qint64 value)
{
    state().value.setInt64(value);
}
void RukVarNode::setAsString(const QString &value)
{
    state().value.setString(value);
}
void RukVarNode::setAsBoolean(bool value)
{
    state().value.setBoolean(value);
}
void RukVarNode::setAsData(const RukData &value)
{
    state().value = value;
}
void RukVarNode::setIsInvalid(bool invalid)
{
    state().invalid = invalid;
}
bool RukVarNode::isInvalid() const
{
    return state().invalid;
}
void RukVarNode::setTag(qintptr tag)
{
    state().tag = tag;
}
qintptr RukVarNode::tag() const
{
    return state().tag;
}
