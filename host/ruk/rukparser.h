#pragma once

#include "tovhost_export.h"

#include <rukdata.h>
#include <rukevents.h>
#include <ruknodemapinfos.h>
#include <sefexception.h>

#include <QString>

#include <memory>

class RukParserPrivate;

// A counted handle to one expression parser, made by RukEngine::createParser(). Copies share the
// same parser. Parse once, evaluate many: setExpression compiles the text, evaluate runs it.
// Failures throw SefException; parse errors carry the 1-based character position as code().
// One thread at a time per parser, copies included.
class TOVHOST_EXPORT RukParser
{
public:
    enum TraverseOrder
    {
        PreOrder = 0,
        PostOrder = 1
    };

    // A null handle; every operation on it throws.
    RukParser();
    ~RukParser();
    RukParser(const RukParser &other);
    RukParser &operator=(const RukParser &other);

    bool isNull() const { return !d; }

    // Parses text; calls the constant callback and then the type callback once per variable,
    // in the order written. On failure the parser holds no expression.
    void setExpression(const QString &text,
        const RukQueryVarDataTypeEvent &typeEvent = RukQueryVarDataTypeEvent(),
        const RukQueryConstValueEvent &constEvent = RukQueryConstValueEvent(), void *context = nullptr,
        const RukNodeMapInfos &nodeMap = RukNodeMapInfos(),
        const RukQueryFunctionEvent &functionEvent = RukQueryFunctionEvent());
    // The value callback used by every later evaluate (borrowed until replaced).
    void setOnQueryVarValue(const RukQueryVarValueEvent &valueEvent);
    // Evaluates the expression set last; for each variable reached, the type callback (when
    // given) and then the value callback. Only the chosen branch of if/iif and the needed
    // operand of and/or are evaluated.
    // Inline, so that an evaluate-many loop makes one indirect call into the compiled program.
    void evaluate(
        const RukQueryVarDataTypeEvent &typeEvent = RukQueryVarDataTypeEvent(), void *context = nullptr)
    {
        if (Q_LIKELY(m_entry && !typeEvent.callback()))
            (*m_entry)(d.get(), context);
        else
            evaluateTyped(typeEvent, context);
    }
    void evaluate(const RukQueryVarDataTypeEvent &typeEvent, void *context, const RukNodeMapInfos &nodeMap);
    // The result of the last evaluation; invalid after a failed one. Inline: evaluate-many
    // loops read it once per evaluation.
    const RukData &result() const
    {
        if (Q_UNLIKELY(!m_result))
            throwNull();
        return *m_result;
    }
    // Walks every node of the expression set last, depth-first, children left to right.
    void visitNode(int order, const RukVisitNodeEvent &visitEvent, void *context = nullptr);
    // The text set last, with the token of every variable, constant, operator and function node
    // replaced by what the callback leaves in it; spacing and brackets stay as written.
    QString expression(const RukTransTokenEvent &transEvent = RukTransTokenEvent(), void *context = nullptr);

private:
    using Entry = void (*)(RukParserPrivate *p, void *context);

    explicit RukParser(std::shared_ptr<RukParserPrivate> data);
    [[noreturn]] static void throwNull();
    void evaluateTyped(const RukQueryVarDataTypeEvent &typeEvent, void *context);
    std::shared_ptr<RukParserPrivate> d;
    // Both live in d, as long as d: its result, and where evaluate without a type callback goes.
    const RukData *m_result = nullptr;
    const Entry *m_entry = nullptr;

    friend class RukEngine;
    friend class RukParserPrivate;
};
