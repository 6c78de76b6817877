#include "rixmemrecordexprparser.h"

#include "rixmemexprtypes_p.h"
#include "rixmemfield.h"
#include "rixmemfields.h"
#include "rixmemrecord.h"
#include "rixmemrecordexprvarquerier.h"
#include "rixmemtable.h"

#include <rukengine.h>
#include <sefdebugoutput.h>
#include <sefexception.h>

namespace {

// Resets the borrowed pointers however an evaluation ends.
struct EvaluationScope
{
    RixMemRecord *&record;
    RixMemRecordExprVarQuerier *&querier;
    const RixMemRecord *&indexedRecord;
    ~EvaluationScope()
    {
        record = nullptr;
        querier = nullptr;
        indexedRecord = nullptr;
    }
};

// Numbers and texts go straight into the node, without the variant's conversions. A null value
// marks the node invalid, as the engine does with it.
void handOver(RukVarNode &node, const QVariant &value)
{
    const QVariant::Private &d = value.data_ptr();
    switch (d.type) {
    case QMetaType::Double:
        if (d.is_null)
            break;
        node.setAsFloat(d.data.d);
        return;
    case QMetaType::Int:
        if (d.is_null)
            break;
        node.setAsInteger(d.data.i);
        return;
    case QMetaType::QString: {
        const QString &text = *static_cast<const QString *>(value.constData());
        if (d.is_null || text.isNull())
            break;
        node.setAsString(text);
        return;
    }
    case QMetaType::UnknownType:
        break;
    default:
        if (value.isNull())
            break;
        node.setAsVariant(value);
        return;
    }
    node.setIsInvalid(true);
}

} // namespace

RixMemRecordExprParser::RixMemRecordExprParser(RixMemFields *fields)
    : m_parser(rukEngine(QString()).createParser())
    , m_fields(fields)
    , m_listener(std::make_shared<RixMemRecordExprParser *>(nullptr))
{
    listen();
}

RixMemRecordExprParser::RixMemRecordExprParser(const RixMemRecordExprParser &other)
    : RukVisitNodeImpl()
    , RukQueryVarDataTypeImpl()
    , RukQueryVarValueImpl()
    , m_parser(other.m_parser)
    , m_fields(other.m_fields)
    , m_record(other.m_record)
    , m_querier(other.m_querier)
    , m_valid(other.m_valid)
    , m_listener(other.m_listener)
{
    listen();
}

RixMemRecordExprParser &RixMemRecordExprParser::operator=(const RixMemRecordExprParser &other)
{
    if (this == &other)
        return *this;
    if (*m_listener == this) {
        m_parser.setOnQueryVarValue(RukQueryVarValueEvent());
        *m_listener = nullptr;
    }
    m_parser = other.m_parser;
    m_fields = other.m_fields;
    m_record = other.m_record;
    m_querier = other.m_querier;
    m_valid = other.m_valid;
    m_listener = other.m_listener;
    listen();
    return *this;
}

RixMemRecordExprParser::~RixMemRecordExprParser()
{
    if (*m_listener == this)
        m_parser.setOnQueryVarValue(RukQueryVarValueEvent());
    *m_listener = nullptr;
}

void RixMemRecordExprParser::listen()
{
    if (*m_listener == this)
        return;
    m_parser.setOnQueryVarValue(static_cast<RukQueryVarValueImpl *>(this));
    *m_listener = this;
}

void RixMemRecordExprParser::setExpressionOrThrow(const QString &expr)
{
    m_parser.setExpression(expr, static_cast<RukQueryVarDataTypeImpl *>(this), RukQueryConstValueEvent(),
        nullptr, RukNodeMapInfos(), RukQueryFunctionEvent());
    m_parser.visitNode(RukParser::PreOrder, static_cast<RukVisitNodeImpl *>(this));
}

void RixMemRecordExprParser::reportParseFailure(const SefException &failure)
{
    QString text;
    try {
        text = m_parser.expression(RukTransTokenEvent());
    } catch (const SefException &) {
        // A parser without an expression has no text to show.
    }
    SefDebugOutput::write(
        tr("表达式 %1 有误，无法解析").arg(text) + QStringLiteral(", [%1]").arg(failure.message()));
}

void RixMemRecordExprParser::setExpression(const QString &expr)
{
    listen();
    try {
        setExpressionOrThrow(expr);
        m_valid = true;
    } catch (const SefException &e) {
        m_valid = false;
        reportParseFailure(e);
    }
}

bool RixMemRecordExprParser::accept(RixMemRecord *const record)
{
    if (!m_valid)
        return false;
    listen();
    EvaluationScope scope { m_record, m_querier, m_indexedRecord };
    m_record = record;
    // Nothing but this parser runs during the evaluation, so the record's field set is checked
    // once, not once per variable.
    if (record && record->usesFields(m_fields))
        m_indexedRecord = record;
    try {
        m_parser.evaluate();
        return m_parser.result().asBoolean();
    } catch (const SefException &e) {
        reportParseFailure(e);
    }
    return false;
}

QVariant RixMemRecordExprParser::asVariant(
    const QString &expr, RixMemRecordExprVarQuerier *querier, RixMemRecord *record)
{
    listen();
    EvaluationScope scope { m_record, m_querier, m_indexedRecord };
    m_querier = querier;
    m_record = record;
    try {
        m_valid = false;
        setExpressionOrThrow(expr);
        m_valid = true;
        m_parser.evaluate();
        return m_parser.result().asVariant();
    } catch (const SefException &e) {
        SefDebugOutput::write(QStringLiteral("RixMemTableExprParser:104"));
        reportParseFailure(e);
    }
    return QVariant();
}

void RixMemRecordExprParser::queryVarDataType(RukVarNode &node, int &dataType, void *)
{
    if (node.nodeType() != RukNode::Variable)
        return;
    QVariant::Type type = QVariant::Invalid;
    if (m_querier && m_querier->queryVarDataType(node.varCode(), type)) {
        dataType = rixEngineDataType(type);
        return;
    }
    if (!m_fields)
        return;
    const int index = m_fields->filedIndex(node.varCode());
    if (index < 0)
        return;
    dataType = rixEngineDataType(m_fields->items(index)->dataType());
    // The field's index, so that each record's value is found without a lookup by name.
    node.setTag(index + 1);
}

void RixMemRecordExprParser::queryVarValue(RukVarNode &node, void *)
{
    if (node.nodeType() != RukNode::Variable)
        return;
    if (m_querier) {
        QVariant value;
        if (m_querier->queryVarValue(node.varCode(), value)) {
            handOver(node, value);
            return;
        }
    }
    if (!m_record)
        return;
    const qintptr tag = node.tag();
    if (tag > 0 && m_record == m_indexedRecord && !m_record->m_refRecord) {
        // A record without a reference record: its stored value is the effective one.
        const QVector<QVariant> &values = m_record->m_values;
        const int index = int(tag - 1);
        if (index < values.size()) {
            handOver(node, values.at(index));
            return;
        }
    }
    // The index is the record's own only when the record's table uses the field set that typed
    // the expression.
    if (tag > 0 && (m_record == m_indexedRecord || m_record->usesFields(m_fields)))
        handOver(node, m_record->effectiveValue(int(tag - 1)));
    else
        handOver(node, m_record->getVariant(node.varCode()));
}

void RixMemRecordExprParser::visitNode(RukNode &, void *) { }
