// tovutil expr: evaluates an expression through TovSimpleExprParser.
#include "commandregistry.h"

#include <rukengine.h>
#include <sefcommon.h>
#include <sefdebugoutput.h>
#include <sefexception.h>
#include <tovsimpleexprparser.h>

#include <QCommandLineParser>
#include <QMap>

namespace {

// Variables given as name=value: numbers go to the parser's own table, other values are texts
// supplied through the provider.
class Texts : public ITovSimpleExprParserVarProvider
{
public:
    QMap<QString, QString> values;

    void queryVarDataType(const QString &, const QString &code, int &dataType) override
    {
        if (values.contains(code))
            dataType = RukData::String;
    }
    bool queryVarValue(const QString &, const QString &code, QVariant &value) override
    {
        const auto it = values.constFind(code);
        if (it == values.constEnd())
            return false;
        value = it.value();
        return true;
    }
};

class ToolParser : public TovSimpleExprParser
{
public:
    explicit ToolParser(Texts *texts)
        : TovSimpleExprParser(QStringLiteral("tovutil"))
    {
        m_provider = texts;
    }
};

// Renames variables: "[old]" becomes "[new]", old becomes new (bracketed when new is no plain name).
class Renamer : public ITovSimpleExprParserTransTokener
{
public:
    QMap<QString, QString> names;

    void transToken(const QString &, RukNode &node, QString &token) override
    {
        if (node.nodeType() != RukNode::Variable)
            return;
        const bool bracketed
            = token.size() > 2 && token.startsWith(QLatin1Char('[')) && token.endsWith(QLatin1Char(']'));
        const QString name = bracketed ? token.mid(1, token.size() - 2) : token;
        const auto it = names.constFind(name);
        if (it == names.constEnd())
            return;
        const bool plain = isPlainName(it.value());
        token = bracketed || !plain ? QLatin1Char('[') + it.value() + QLatin1Char(']') : it.value();
    }

private:
    static bool isPlainName(const QString &name)
    {
        if (name.isEmpty() || !(name.at(0).isLetter() || name.at(0) == QLatin1Char('_')))
            return false;
        for (const QChar c : name) {
            if (!c.isLetterOrNumber() && c != QLatin1Char('_'))
                return false;
        }
        return true;
    }
};

// Display columns of text: East Asian wide forms take two.
int columns(const QString &text)
{
    int width = 0;
    for (const QChar c : text)
        width += (c.unicode() >= 0x1100 && !c.isLowSurrogate()) ? 2 : 1;
    return width;
}

bool parses(const QString &expression)
{
    try {
        rukEngine().createParser().setExpression(expression);
        return true;
    } catch (const SefException &) {
        return false;
    }
}

// Prints the failure; for a parse error also the expression with a caret under the position.
int reportFailure(const QString &expression, QString message = QString())
{
    int position = -1;
    try {
        rukEngine().createParser().setExpression(expression);
    } catch (const SefException &e) {
        if (message.isEmpty())
            message = e.message();
        if (e.message() == message)
            position = e.code();
    }
    tovFail(message);
    if (position > 0) {
        tovErr() << "  " << expression << '\n'
                 << "  " << QString(columns(expression.left(position - 1)), QLatin1Char(' ')) << "^\n";
        tovErr().flush();
    }
    return 1;
}

// The engine's result with its type, evaluated with the same variables as the parser.
class ResultProbe : public RukQueryVarValueImpl
{
public:
    ResultProbe(const QMap<QString, double> &numbers, const Texts &texts)
        : m_numbers(numbers)
        , m_texts(texts)
    { }

protected:
    void queryVarValue(RukVarNode &node, void *) override
    {
        const auto number = m_numbers.constFind(node.varCode());
        if (number != m_numbers.constEnd()) {
            node.setAsFloat(number.value());
            return;
        }
        const auto text = m_texts.values.constFind(node.varCode());
        if (text != m_texts.values.constEnd())
            node.setAsString(text.value());
    }

private:
    const QMap<QString, double> &m_numbers;
    const Texts &m_texts;
};

int runExpr(const QStringList &arguments)
{
    QCommandLineParser cli;
    cli.setApplicationDescription(QStringLiteral(
        "Evaluates an expression with the library's simple expression parser and prints the result "
        "and its type. Variables are given as name=value; values that read as numbers are numbers, "
        "others are texts."));
    cli.addHelpOption();
    cli.addPositionalArgument(
        QStringLiteral("expression"), QStringLiteral("The expression, e.g. \"a+b*2\"."));
    cli.addPositionalArgument(
        QStringLiteral("name=value"), QStringLiteral("Variable values."), QStringLiteral("[name=value...]"));
    const QCommandLineOption codesOption(
        QStringLiteral("codes"), QStringLiteral("List the variable codes instead."));
    const QCommandLineOption renameOption(QStringLiteral("rename"),
        QStringLiteral("Rebuild the text with variable old renamed to new."), QStringLiteral("old=new"));
    cli.addOption(codesOption);
    cli.addOption(renameOption);
    if (!cli.parse(arguments))
        return tovFail(cli.errorText());
    if (cli.isSet(QStringLiteral("help"))) {
        tovOut() << cli.helpText();
        return 0;
    }
    QStringList positional = cli.positionalArguments();
    if (positional.isEmpty())
        return tovFail(QStringLiteral("expr: missing the expression (see tovutil expr --help)"));
    const QString expression = positional.takeFirst();

    // The parser writes its failures to the debug output; the tool reports them itself.
    const SefDebugOutput::Handler previous = SefDebugOutput::setHandler([](const QString &) {});
    struct Restore
    {
        SefDebugOutput::Handler handler;
        ~Restore() { SefDebugOutput::setHandler(std::move(handler)); }
    } restore { previous };

    Texts texts;
    QMap<QString, double> numbers;
    ToolParser parser(&texts);
    for (const QString &pair : qAsConst(positional)) {
        const int equals = pair.indexOf(QLatin1Char('='));
        if (equals <= 0)
            return tovFail(QStringLiteral("expr: \"%1\" is not name=value").arg(pair));
        const QString name = pair.left(equals);
        const QString value = pair.mid(equals + 1);
        if (SefCommon::isNumeric(value)) {
            numbers.insert(name, SefCommon::strToFloatDef(value, 0.0));
            parser.addVarValue(name, SefCommon::strToFloatDef(value, 0.0));
        } else {
            texts.values.insert(name, value);
        }
    }

    if (cli.isSet(codesOption)) {
        if (!parses(expression))
            return reportFailure(expression);
        const QStringList codes = parser.getExprVarCodes(expression);
        for (const QString &code : codes)
            tovOut() << code << '\n';
        return 0;
    }
    if (cli.isSet(renameOption)) {
        Renamer renamer;
        for (const QString &pair : cli.values(renameOption)) {
            const int equals = pair.indexOf(QLatin1Char('='));
            if (equals <= 0 || equals == pair.size() - 1)
                return tovFail(QStringLiteral("expr: --rename needs old=new, not \"%1\"").arg(pair));
            renamer.names.insert(pair.left(equals), pair.mid(equals + 1));
        }
        if (!parses(expression))
            return reportFailure(expression);
        parser.setTransTokener(&renamer);
        tovOut() << parser.transExpr(expression) << '\n';
        return 0;
    }

    QString message;
    const double value = parser.calcExpr(expression, message);
    if (!message.isEmpty())
        return reportFailure(expression, message);
    // The parser answers a number; the engine tells what the expression made of it.
    ResultProbe probe(numbers, texts);
    RukParser engine = rukEngine().createParser();
    engine.setOnQueryVarValue(&probe);
    QString text = SefCommon::variantToString(value);
    int type = RukData::Float;
    try {
        engine.setExpression(expression);
        engine.evaluate();
        type = engine.result().dataType();
        if (type == RukData::String || type == RukData::Boolean)
            text = engine.result().asString();
    } catch (const SefException &) {
        // A plain number never reaches the engine.
    }
    tovOut() << text << "\t" << RukData::typeName(type) << " (" << type << ")\n";
    return 0;
}

} // namespace

TOVUTIL_COMMAND("expr", "evaluate an expression, list its variables or rename them", runExpr);
