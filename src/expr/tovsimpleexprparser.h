#pragma once

#include "tovgeneralutility_export.h"

#include <itovsimpleexprparsertranstokener.h>
#include <itovsimpleexprparservarprovider.h>

#include <rukparser.h>

#include <QCoreApplication>
#include <QMap>
#include <QString>
#include <QStringList>

// Evaluates numeric expressions over a table of named numbers, checks them, lists their variable
// codes and rewrites their tokens. Engine failures never leave an operation: they are written as
// two debug lines and turned into the operation's failure result. Copies share the engine parser
// (moves too), so a parser and its copies are used by one thread at a time.
class TOVGENERALUTILITY_EXPORT TovSimpleExprParser : public RukQueryVarDataTypeImpl,
                                                     public RukQueryVarValueImpl,
                                                     public virtual RukVisitNodeImpl,
                                                     public RukTransTokenImpl
{
public:
    explicit TovSimpleExprParser(const QString &name = QString());
    TovSimpleExprParser(const TovSimpleExprParser &other);
    TovSimpleExprParser(TovSimpleExprParser &&other);
    TovSimpleExprParser &operator=(const TovSimpleExprParser &other);
    TovSimpleExprParser &operator=(TovSimpleExprParser &&other);
    ~TovSimpleExprParser() override;

    // Sets (or replaces) the value of code; values are never cleared.
    void addVarValue(const QString &code, double value);
    double calcExpr(const QString &expression);
    // 0.0 on failure, with the engine's message in message. An empty or plainly numeric text is
    // read without the engine.
    double calcExpr(const QString &expression, QString &message);
    // Whether the text parses and evaluates; an empty text is valid.
    bool checkExpr(const QString &expression);
    // The distinct variable tokens in the order written (case-sensitive); a partial list when
    // the engine rejects the text.
    QStringList getExprVarCodes(const QString &expression);
    // Borrowed; null clears it.
    void setTransTokener(ITovSimpleExprParserTransTokener *tokener);
    // The text rebuilt with each token passed through the translator; the text unchanged when the
    // engine rejects it.
    QString transExpr(const QString &expression);

protected:
    void queryVarDataType(RukVarNode &node, int &dataType, void *context) override;
    void queryVarValue(RukVarNode &node, void *context) override;
    void visitNode(RukNode &node, void *context) override;
    void transToken(RukNode &node, QString &token, void *context) override;

    // Borrowed; set by a deriving class, null otherwise.
    ITovSimpleExprParserVarProvider *m_provider = nullptr;

private:
    enum Mode
    {
        Idle = -1,
        ListingCodes = 1
    };

    QString m_name;
    RukParser m_parser;
    int m_mode = Idle;
    QMap<QString, double> m_values;
    ITovSimpleExprParserTransTokener *m_tokener = nullptr;
};
