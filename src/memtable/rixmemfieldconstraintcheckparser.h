#pragma once

#include "tovgeneralutility_export.h"

#include <rukparser.h>

#include <QString>
#include <QVariant>

#include <memory>

class RixMemField;
class RixMemRecord;

// Checks a field's constraint expression for a typed-in text before the record stores it. In the
// expression "#", and the field's own name in any case, stand for the text under check, read as
// the field's type; any other name is a field of the record being edited (its effective value).
//
// Copies share the engine parser; the object that evaluated last answers its variables. One
// check at a time per parser (and its copies).
class TOVGENERALUTILITY_EXPORT RixMemFieldConstraintCheckParser : public RukQueryVarDataTypeImpl,
                                                                  public RukQueryVarValueImpl,
                                                                  public virtual RukVisitNodeImpl
{
public:
    // record is borrowed.
    explicit RixMemFieldConstraintCheckParser(RixMemRecord *record);
    RixMemFieldConstraintCheckParser(const RixMemFieldConstraintCheckParser &other);
    RixMemFieldConstraintCheckParser &operator=(const RixMemFieldConstraintCheckParser &other);
    ~RixMemFieldConstraintCheckParser() override;

    // Whether expr evaluates to the boolean true with value standing for field. A result of
    // another type, a text that does not read as the field's number type and an engine failure
    // (written to the debug output) all fail the check.
    bool validate(const QString &expr, RixMemField *field, const QString &value);
    // expr for the record, without a text under check. Engine failures are thrown as they come.
    RukData evaluate(const QString &expr);
    // As evaluate(); null, with the failure written to the debug output, when the engine fails.
    QVariant asVariant(const QString &expr);

protected:
    void queryVarDataType(RukVarNode &node, int &dataType, void *context) override;
    void queryVarValue(RukVarNode &node, void *context) override;
    void visitNode(RukNode &node, void *context) override;

private:
    void listen();
    void run(const QString &expr);
    bool isValueUnderCheck(const QString &code) const;

    RukParser m_parser;
    RixMemRecord *m_record = nullptr;
    QString m_fieldName;
    QString m_value;
    // Which of the copies sharing m_parser is its value callback.
    std::shared_ptr<RixMemFieldConstraintCheckParser *> m_listener;
};
