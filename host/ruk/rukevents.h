#pragma once

#include "tovhost_export.h"

#include <rukdata.h>
#include <ruknode.h>

#include <QString>

#include <functional>

// The engine's callback interfaces, the event wrappers that hand them to a parser (a null
// pointer means no callback), and the callback bases that adapters derive from. The engine only
// borrows a callback during the call it was given to (the value callback: until replaced).

class TOVHOST_EXPORT IRukQueryVarDataTypeEvent
{
public:
    virtual ~IRukQueryVarDataTypeEvent();
    // dataType arrives preset (0 at setExpression, the announced type at evaluate).
    virtual void onQueryVarDataType(RukVarNode &node, int &dataType, void *context) = 0;
};

class TOVHOST_EXPORT IRukQueryVarValueEvent
{
public:
    virtual ~IRukQueryVarValueEvent();
    // Gives the node its value through its setters; a node left without one fails the evaluation.
    virtual void onQueryVarValue(RukVarNode &node, void *context) = 0;
};

class TOVHOST_EXPORT IRukQueryConstValueEvent
{
public:
    virtual ~IRukQueryConstValueEvent();
    // Asked at setExpression for each variable code; true turns the variable into that constant.
    virtual bool onQueryConstValue(const QString &code, RukData &value, void *context) = 0;
};

// A function supplied by a function callback: receives its evaluated arguments, returns a valid
// result (an invalid one fails the evaluation) or throws SefException.
using RukFunction = std::function<RukData(const RukData *args, int count)>;

class TOVHOST_EXPORT IRukQueryFunctionEvent
{
public:
    virtual ~IRukQueryFunctionEvent();
    // Asked at setExpression for a call of a name that is not built in; true with function set
    // accepts the call.
    virtual bool onQueryFunction(const QString &name, int argCount, RukFunction &function, void *context) = 0;
};

class TOVHOST_EXPORT IRukVisitNodeEvent
{
public:
    virtual ~IRukVisitNodeEvent();
    virtual void onVisitNode(RukNode &node, void *context) = 0;
};

class TOVHOST_EXPORT IRukTransTokenEvent
{
public:
    virtual ~IRukTransTokenEvent();
    // token holds the node's text as written; what the callback leaves in it goes into the
    // rebuilt expression.
    virtual void onTransToken(RukNode &node, QString &token, void *context) = 0;
};

template<typename Interface>
class RukEvent
{
public:
    RukEvent(Interface *callback = nullptr)
        : m_callback(callback)
    { }
    Interface *callback() const { return m_callback; }
    bool isNull() const { return m_callback == nullptr; }

private:
    Interface *m_callback;
};

using RukQueryVarDataTypeEvent = RukEvent<IRukQueryVarDataTypeEvent>;
using RukQueryVarValueEvent = RukEvent<IRukQueryVarValueEvent>;
using RukQueryConstValueEvent = RukEvent<IRukQueryConstValueEvent>;
using RukQueryFunctionEvent = RukEvent<IRukQueryFunctionEvent>;
using RukVisitNodeEvent = RukEvent<IRukVisitNodeEvent>;
using RukTransTokenEvent = RukEvent<IRukTransTokenEvent>;

// Callback bases: each forwards the engine's callback to the deriving adapter's protected
// virtual. Interface objects without reference counting: the adapter owns itself.
class TOVHOST_EXPORT RukQueryVarDataTypeImpl : public IRukQueryVarDataTypeEvent
{
public:
    ~RukQueryVarDataTypeImpl() override;
    void onQueryVarDataType(RukVarNode &node, int &dataType, void *context) final
    {
        queryVarDataType(node, dataType, context);
    }

protected:
    virtual void queryVarDataType(RukVarNode &node, int &dataType, void *context) = 0;

private:
    friend class RukParserPrivate; // calls the adapter's virtual directly on the evaluation path
};

class TOVHOST_EXPORT RukQueryVarValueImpl : public IRukQueryVarValueEvent
{
public:
    ~RukQueryVarValueImpl() override;
    void onQueryVarValue(RukVarNode &node, void *context) final { queryVarValue(node, context); }

protected:
    virtual void queryVarValue(RukVarNode &node, void *context) = 0;

private:
    friend class RukParserPrivate; // calls the adapter's virtual directly on the evaluation path
};

class TOVHOST_EXPORT RukVisitNodeImpl : public IRukVisitNodeEvent
{
public:
    ~RukVisitNodeImpl() override;
    void onVisitNode(RukNode &node, void *context) final { visitNode(node, context); }

protected:
    virtual void visitNode(RukNode &node, void *context) = 0;
};

class TOVHOST_EXPORT RukTransTokenImpl : public IRukTransTokenEvent
{
public:
    ~RukTransTokenImpl() override;
    void onTransToken(RukNode &node, QString &token, void *context) final
    {
        transToken(node, token, context);
    }

protected:
    virtual void transToken(RukNode &node, QString &token, void *context) = 0;
};
