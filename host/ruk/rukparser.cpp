#include "rukparser.h"

#include "rukparser_p.h"

#include <sefexception.h>

#include <algorithm>

RukParser::RukParser() = default;
RukParser::~RukParser() = default;
RukParser::RukParser(const RukParser &other) = default;
RukParser &RukParser::operator=(const RukParser &other) = default;

RukParser::RukParser(std::shared_ptr<RukParserPrivate> data)
    : d(std::move(data))
    , m_result(d ? &d->m_result : nullptr)
    , m_entry(d ? &d->m_entry : nullptr)
{ }

void RukParser::throwNull()
{
    throw SefException(QCoreApplication::translate("RukEngine", "解析器没有创建"));
}

namespace {

// Stands in for a value callback that is not a RukQueryVarValueImpl, or for none.
class ForwardValue : public RukQueryVarValueImpl
{
public:
    IRukQueryVarValueEvent *target = nullptr;

protected:
    void queryVarValue(RukVarNode &node, void *context) override
    {
        if (target)
            target->onQueryVarValue(node, context);
    }
};

// Every operation on a null handle throws.
inline RukParserPrivate &checked(const std::shared_ptr<RukParserPrivate> &d)
{
    if (Q_UNLIKELY(!d))
        throw SefException(QCoreApplication::translate("RukEngine", "解析器没有创建"));
    return *d;
}

} // namespace

void RukParser::setExpression(const QString &text, const RukQueryVarDataTypeEvent &typeEvent,
    const RukQueryConstValueEvent &constEvent, void *context, const RukNodeMapInfos &nodeMap,
    const RukQueryFunctionEvent &functionEvent)
{
    checked(d).setExpression(
        text, typeEvent.callback(), constEvent.callback(), context, nodeMap, functionEvent.callback());
}

void RukParser::setOnQueryVarValue(const RukQueryVarValueEvent &valueEvent)
{
    checked(d).setValueEvent(valueEvent.callback());
}

RukParserPrivate::RukParserPrivate()
    : m_forward(std::make_unique<ForwardValue>())
{
    m_valueImpl = m_forward.get();
}

RukParserPrivate::~RukParserPrivate() = default;

void RukParserPrivate::setValueEvent(IRukQueryVarValueEvent *event)
{
    if (event == m_valueEvent)
        return;
    m_valueEvent = event;
    auto *forward = static_cast<ForwardValue *>(m_forward.get());
    m_valueImpl = dynamic_cast<RukQueryVarValueImpl *>(event);
    forward->target = m_valueImpl ? nullptr : event;
    if (!m_valueImpl)
        m_valueImpl = forward;
}

// RukParser::evaluate lives in rukeval.cpp, beside the evaluator it calls.

void RukParser::visitNode(int order, const RukVisitNodeEvent &visitEvent, void *context)
{
    checked(d).visitNode(order, visitEvent.callback(), context);
}

QString RukParser::expression(const RukTransTokenEvent &transEvent, void *context)
{
    return checked(d).expression(transEvent.callback(), context);
}

// Iterative walks: a chain of left-associative operators makes a tree as deep as it is long.
void RukParserPrivate::visitNode(int order, IRukVisitNodeEvent *visitEvent, void *context)
{
    if (order != RukParser::PreOrder && order != RukParser::PostOrder)
        throwError(tr("遍历顺序[%1]不对").arg(order));
    if (!m_ready || !visitEvent)
        return;
    auto visit = [&](int id) {
        RukNodeData &node = m_nodes[size_t(id)];
        if (node.type == RukNode::Variable) {
            visitEvent->onVisitNode(m_vars[size_t(node.slot)].handle, context);
        } else {
            RukNode handle(&node);
            visitEvent->onVisitNode(handle, context);
        }
    };
    if (order == RukParser::PreOrder) {
        std::vector<int> pending { m_root };
        while (!pending.empty()) {
            const int id = pending.back();
            pending.pop_back();
            visit(id);
            const RukNodeData &node = m_nodes[size_t(id)];
            for (int k = node.kidCount - 1; k >= 0; --k)
                pending.push_back(m_kids[size_t(node.firstKid + k)]);
        }
        return;
    }
    std::vector<std::pair<int, int>> frames { { m_root, 0 } };
    while (!frames.empty()) {
        auto &frame = frames.back();
        const RukNodeData &node = m_nodes[size_t(frame.first)];
        if (frame.second < node.kidCount) {
            const int kid = m_kids[size_t(node.firstKid + frame.second++)];
            frames.emplace_back(kid, 0);
            continue;
        }
        const int id = frame.first;
        frames.pop_back();
        visit(id);
    }
}

QString RukParserPrivate::expression(IRukTransTokenEvent *transEvent, void *context)
{
    if (!transEvent || !m_ready)
        return m_text;
    if (m_tokenOrder.empty()) {
        for (size_t i = 0; i < m_nodes.size(); ++i) {
            if (m_nodes[i].type != RukNode::Group)
                m_tokenOrder.push_back(int(i));
        }
        std::sort(m_tokenOrder.begin(), m_tokenOrder.end(),
            [this](int a, int b) { return m_nodes[size_t(a)].start < m_nodes[size_t(b)].start; });
    }
    QString out;
    out.reserve(m_text.size() + 16);
    int done = 0;
    for (const int id : m_tokenOrder) {
        RukNodeData &node = m_nodes[size_t(id)];
        out.append(m_text.constData() + done, node.start - done);
        QString token = tokenText(node);
        if (node.type == RukNode::Variable) {
            transEvent->onTransToken(m_vars[size_t(node.slot)].handle, token, context);
        } else {
            RukNode handle(&node);
            transEvent->onTransToken(handle, token, context);
        }
        out.append(token);
        done = node.start + node.len;
    }
    out.append(m_text.constData() + done, m_text.size() - done);
    return out;
}
