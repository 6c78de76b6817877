// tovutil expr: evaluates an expression through TovSimpleExprParser, or over a property set
// and "@" arguments through TovMemPropertiesExprParser.
#include "commandregistry.h"

#include <itovmempropertiesexprvarquerier.h>
#include <rukengine.h>
#include <sefcommon.h>
#include <sefdebugoutput.h>
#include <sefexception.h>
#include <tovmemproperties.h>
#include <tovmempropertiesexprparser.h>
#include <tovsimpleexprparser.h>

#include <QCommandLineParser>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>
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

// name=value pairs given beside --props: they replace the values of those properties.
class Overrides : public ITovMemPropertiesExprVarQuerier
{
public:
    QMap<QString, QString> values;

    bool queryVarValue(const QString &code, QVariant &value) override
    {
        for (auto it = values.cbegin(); it != values.cend(); ++it) {
            if (it.key().compare(code, Qt::CaseInsensitive) == 0) {
                value = SefCommon::isNumeric(it.value()) ? QVariant(SefCommon::strToFloatDef(it.value(), 0.0))
                                                         : QVariant(it.value());
                return true;
            }
        }
        return false;
    }
};

bool loadProperties(const QString &path, TovMemProperties &properties, QString &error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("%1: cannot read: %2").arg(path, file.errorString());
        return false;
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        error = QStringLiteral("%1: malformed JSON at offset %2: %3")
                    .arg(path)
                    .arg(parseError.offset)
                    .arg(parseError.errorString());
        return false;
    }
    if (!document.isObject() || !document.object().value(QStringLiteral("Property")).isArray()) {
        error = QStringLiteral("%1: expected a property set: an object with a \"Property\" array").arg(path);
        return false;
    }
    properties.loadFromFile(document.object());
    return true;
}

// Evaluates through a property set (maybe empty) and "@" arguments; without an expression lists
// every property with its calculated value.
int runProperties(const QString &propsPath, const QString &args, const QString &expression,
    const Overrides &overrides, const QStringList &failures)
{
    TovMemProperties properties;
    QString error;
    if (!propsPath.isEmpty() && !loadProperties(propsPath, properties, error))
        return tovFail(error);
    Overrides querier = overrides;
    // Each expression item is calculated by a parser of its own over the set, with the item's
    // argument text, as a host module connects it; the overrides reach every level.
    QObject::connect(&properties, &TovMemProperties::onCalcExprVal,
        [&properties, &querier](TovMemProperty *, TovMemPropertyExprCalcArgs &calc, QString &result) {
            TovMemPropertiesExprParser parser(calc.args);
            parser.addData(&properties);
            parser.setVarQuerier(&querier);
            result = parser.asString(calc.expr);
        });
    TovMemPropertiesExprParser parser(args);
    parser.addData(&properties);
    parser.setVarQuerier(&querier);

    if (expression.isEmpty()) {
        for (int i = 0; i < properties.count(); ++i) {
            TovMemProperty *property = properties.props(i);
            QString value;
            try {
                value = property->asString(true, args);
            } catch (const SefException &e) {
                value = QStringLiteral("(%1)").arg(e.message());
            }
            tovOut() << QString::fromStdWString(property->propName());
            if (!property->aliasName().empty())
                tovOut() << " (" << QString::fromStdWString(property->aliasName()) << ")";
            tovOut() << "\t" << property->value();
            if (property->isExpr())
                tovOut() << "\t= " << value;
            tovOut() << '\n';
        }
        tovOut().flush();
        return 0;
    }
    const int before = failures.size();
    const RukData result = parser.evaluate(expression);
    if (!result.isValid())
        return tovFail(
            failures.size() > before + 1 ? failures.at(before + 1) : QStringLiteral("evaluation failed"));
    const QString text = result.dataType() == RukData::Boolean
        ? (result.asBoolean() ? QStringLiteral("true") : QStringLiteral("false"))
        : result.asString();
    tovOut() << text << "\t" << RukData::typeName(result.dataType()) << " (" << result.dataType() << ")\n";
    tovOut().flush();
    return 0;
}

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
    const QCommandLineOption propsOption(QStringLiteral("props"),
        QStringLiteral("Evaluate over the property set in FILE (the JSON form of a saved set): its "
                       "properties, by name or alias, are the variables; expression properties are "
                       "calculated first. name=value pairs then replace property values. Without an "
                       "expression, lists every property with its calculated value."),
        QStringLiteral("FILE.json"));
    const QCommandLineOption argsOption(QStringLiteral("args"),
        QStringLiteral("Argument text of the properties parser, e.g. \"a=1;@n=4\": @n in the expression "
                       "is 4, an @ argument not given is 1."),
        QStringLiteral("TEXT"));
    cli.addOption(codesOption);
    cli.addOption(renameOption);
    cli.addOption(propsOption);
    cli.addOption(argsOption);
    if (!cli.parse(arguments))
        return tovFail(cli.errorText());
    if (cli.isSet(QStringLiteral("help"))) {
        tovOut() << cli.helpText();
        return 0;
    }
    QStringList positional = cli.positionalArguments();
    const bool properties = cli.isSet(propsOption) || cli.isSet(argsOption);
    if (positional.isEmpty() && !(cli.isSet(propsOption) && !cli.isSet(argsOption)))
        return tovFail(QStringLiteral("expr: missing the expression (see tovutil expr --help)"));
    const QString expression = positional.isEmpty() ? QString() : positional.takeFirst();

    if (properties) {
        if (cli.isSet(codesOption) || cli.isSet(renameOption))
            return tovFail(QStringLiteral("expr: --codes and --rename do not go with --props or --args"));
        Overrides overrides;
        for (const QString &pair : qAsConst(positional)) {
            const int equals = pair.indexOf(QLatin1Char('='));
            if (equals <= 0)
                return tovFail(QStringLiteral("expr: \"%1\" is not name=value").arg(pair));
            overrides.values.insert(pair.left(equals), pair.mid(equals + 1));
        }
        // The parser writes its failures to the debug output; the tool reports the first itself.
        QStringList failures;
        const SefDebugOutput::Handler previous
            = SefDebugOutput::setHandler([&failures](const QString &line) { failures << line; });
        const int code
            = runProperties(cli.value(propsOption), cli.value(argsOption), expression, overrides, failures);
        SefDebugOutput::setHandler(previous);
        return code;
    }

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
