#pragma once

#include "tovgeneralutility_export.h"

#include <rukparser.h>

#include <QChar>
#include <QMap>
#include <QString>
#include <QVector>

class ITovMemPropertiesExprVarQuerier;
class TovMemProperties;
class TovMemProperty;

// Evaluates an expression whose variables are properties (by name or alias, case-insensitive) of
// the added property sets, "@" arguments from the argument text ("a=1;@n=4"; a missing one counts
// as 1), or values of an outside querier. Connect it to a set's onCalcExprVal to compute
// expression properties. A variable that is neither an argument nor a property of a set cannot
// be set at all: the querier only supplies values. Failures are written to the debug output and
// end as an invalid result; nothing is thrown.
//
// Borrows the sets and the querier. Copies share the engine parser; one evaluation at a time per
// parser, so a property read during an evaluation is calculated through a parser of its own.
// Cycles between expression properties are not detected.
class TOVGENERALUTILITY_EXPORT TovMemPropertiesExprParser : public RukQueryVarDataTypeImpl,
                                                            public RukQueryVarValueImpl,
                                                            public virtual RukVisitNodeImpl
{
public:
    explicit TovMemPropertiesExprParser(const QString &args = QString());
    TovMemPropertiesExprParser(const TovMemPropertiesExprParser &other);
    TovMemPropertiesExprParser &operator=(const TovMemPropertiesExprParser &other);
    ~TovMemPropertiesExprParser() override;

    // Sets are searched in the order added; the first that has a name wins.
    void addData(TovMemProperties *properties);
    // Borrowed; null clears it.
    void setVarQuerier(ITovMemPropertiesExprVarQuerier *querier);
    TovMemProperty *findProp(const QString &code) const;

    // The argument text given to the constructor and the arguments read from it.
    QString args() const { return m_args; }
    QMap<QString, QString> dynArgs() const { return m_dynArgs; }

    // The engine's result; invalid on failure.
    RukData evaluate(const QString &expression);
    // The result as text ("true"/"false" for a boolean); empty on failure.
    QString asString(const QString &expression);
    // Each separated item evaluated (a plain number kept as written, a result in 6 significant
    // digits, a failure as "0") and joined with the separator again.
    QString asString(const QString &expression, QChar separator);

protected:
    void initDynArgs(const QString &text);
    void queryVarDataType(RukVarNode &node, int &dataType, void *context) override;
    void queryVarValue(RukVarNode &node, void *context) override;
    void visitNode(RukNode &node, void *context) override;

private:
    [[noreturn]] static void throwNotFound(const QString &code);

    RukParser m_parser;
    QVector<TovMemProperties *> m_properties;
    QString m_args;
    QMap<QString, QString> m_dynArgs;
    ITovMemPropertiesExprVarQuerier *m_querier = nullptr;
};
