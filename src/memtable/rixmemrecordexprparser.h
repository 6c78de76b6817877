#pragma once

#include "tovgeneralutility_export.h"

#include <rukparser.h>

#include <QCoreApplication>
#include <QString>
#include <QVariant>

#include <memory>

class RixMemFields;
class RixMemRecord;
class RixMemRecordExprVarQuerier;
class SefException;

// Evaluates an expression over the fields of one record at a time: set it once, then accept()
// each record (the filter of a view), or evaluate a text at once with asVariant(). A querier,
// when given, answers a variable before the record's fields do. Engine failures are written to
// the debug output and end as false or a null value; they never leave an operation.
//
// Copies share the engine parser; the object that set the expression last answers its
// variables. One evaluation at a time per parser (and its copies): a nested evaluation needs a
// parser of its own.
class TOVGENERALUTILITY_EXPORT RixMemRecordExprParser : public RukQueryVarDataTypeImpl,
                                                        public RukQueryVarValueImpl,
                                                        public virtual RukVisitNodeImpl
{
    Q_DECLARE_TR_FUNCTIONS(RixMemRecordExprParser)

public:
    // fields types the variables that no querier answers; borrowed, may be null.
    explicit RixMemRecordExprParser(RixMemFields *fields);
    RixMemRecordExprParser(const RixMemRecordExprParser &other);
    RixMemRecordExprParser &operator=(const RixMemRecordExprParser &other);
    ~RixMemRecordExprParser() override;

    RixMemFields *fields() const { return m_fields; }
    // Whether the last setExpression() succeeded.
    bool isValid() const { return m_valid; }

    void setExpression(const QString &expr);
    // The boolean value of the current expression for record; false while no expression is set
    // and when the evaluation fails.
    bool accept(RixMemRecord *const record);
    // Sets and evaluates expr for record; null on failure. querier and record are borrowed for
    // this call only.
    QVariant asVariant(const QString &expr, RixMemRecordExprVarQuerier *querier, RixMemRecord *record);

protected:
    void queryVarDataType(RukVarNode &node, int &dataType, void *context) override;
    void queryVarValue(RukVarNode &node, void *context) override;
    void visitNode(RukNode &node, void *context) override;

private:
    void listen();
    void setExpressionOrThrow(const QString &expr);
    void reportParseFailure(const SefException &failure);

    RukParser m_parser;
    RixMemFields *m_fields = nullptr;
    RixMemRecord *m_record = nullptr;
    RixMemRecordExprVarQuerier *m_querier = nullptr;
    // m_record while accept() knows that the field indexes are its own.
    const RixMemRecord *m_indexedRecord = nullptr;
    bool m_valid = false;
    // Which of the copies sharing m_parser is its value callback, so that a copy that goes away
    // never stays registered.
    std::shared_ptr<RixMemRecordExprParser *> m_listener;
};
