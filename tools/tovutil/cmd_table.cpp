// tovutil table: loads a CSV file (header line = field names) or a JSON array of objects into a
// memory table and prints it, or a view of it: filtered by a record expression, narrowed to the
// first / least row of a value or to an interval row, sorted, or reduced to distinct values.
#include "commandregistry.h"
#include "tableprinter.h"

#include <rixmemfield.h>
#include <rixmemfields.h>
#include <rixmemrecord.h>
#include <rixmemrecordexprparser.h>
#include <rixmemtable.h>
#include <rixmemtableview.h>
#include <sefcommon.h>
#include <sefdebugoutput.h>
#include <tovexprparserclasses.h>

#include <QCommandLineParser>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

#include <cmath>

namespace {

// The narrowest type that holds every non-null value of a key: Int, Double, Bool or String.
QVariant::Type columnType(const QJsonArray &array, const QString &key)
{
    bool allInt = true;
    bool allNumber = true;
    bool allBool = true;
    bool any = false;
    for (const QJsonValue element : array) {
        const QJsonValue value = element.toObject().value(key);
        if (value.isUndefined() || value.isNull())
            continue;
        any = true;
        allBool = allBool && value.isBool();
        allNumber = allNumber && value.isDouble();
        const double number = value.toDouble();
        allInt
            = allInt && value.isDouble() && number == std::trunc(number) && std::abs(number) <= 2147483647.0;
    }
    if (!any)
        return QVariant::String;
    if (allInt)
        return QVariant::Int;
    if (allNumber)
        return QVariant::Double;
    return allBool ? QVariant::Bool : QVariant::String;
}

bool loadJson(const QString &path, const QByteArray &bytes, RixMemTable &table, QString &error)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        error = QStringLiteral("%1: malformed JSON at offset %2: %3")
                    .arg(path)
                    .arg(parseError.offset)
                    .arg(parseError.errorString());
        return false;
    }
    if (!document.isArray()) {
        error = QStringLiteral("%1: expected a JSON array of objects").arg(path);
        return false;
    }
    const QJsonArray array = document.array();
    QStringList keys;
    for (int i = 0; i < array.size(); ++i) {
        if (!array.at(i).isObject()) {
            error = QStringLiteral("%1: element %2 of the array is not an object").arg(path).arg(i);
            return false;
        }
        for (const QString &key : array.at(i).toObject().keys()) {
            if (!keys.contains(key))
                keys << key;
        }
    }
    for (const QString &key : qAsConst(keys))
        table.addField(key, QString(), columnType(array, key));
    table.loadFromJson(array);
    return true;
}

bool loadCsv(const QString &path, const QByteArray &bytes, RixMemTable &table, QString &error)
{
    QByteArray firstLine = bytes.left(bytes.indexOf('\n') < 0 ? bytes.size() : bytes.indexOf('\n'));
    if (firstLine.startsWith("\xEF\xBB\xBF"))
        firstLine.remove(0, 3);
    const QStringList names = QString::fromUtf8(firstLine.constData(), firstLine.size())
                                  .trimmed()
                                  .split(QLatin1Char(','), Qt::SkipEmptyParts);
    if (names.isEmpty()) {
        error = QStringLiteral("%1: no field names in the header line").arg(path);
        return false;
    }
    for (const QString &name : names) {
        if (table.filedIndex(name) >= 0) {
            error = QStringLiteral("%1: field \"%2\" appears twice in the header line").arg(path, name);
            return false;
        }
        table.addField(name, QString(), QVariant::String);
    }
    table.loadFromCSVFile(path, true);
    return true;
}

// The view options of the command, applied in the order of the help text.
struct ViewOptions
{
    QString where;
    QString sort;
    QString unique;
    QString firstOne;
    QString leastOne;
    QString interval;
};

// Debug lines of the library while it lives (the engine's failures), instead of on stderr.
class DebugLines
{
public:
    DebugLines()
        : m_previous(SefDebugOutput::setHandler([this](const QString &line) { m_lines << line; }))
    { }
    ~DebugLines() { SefDebugOutput::setHandler(m_previous); }
    DebugLines(const DebugLines &) = delete;
    DebugLines &operator=(const DebugLines &) = delete;
    QStringList lines() const { return m_lines; }

private:
    QStringList m_lines;
    SefDebugOutput::Handler m_previous;
};

// FIELD=VALUE of an option: the field must exist; the value is converted to the field's type
// when it converts.
bool fieldValue(const RixMemTable &table, const QString &option, const QString &text, QString &field,
    QVariant &value, QString &error)
{
    const int equal = text.indexOf(QLatin1Char('='));
    if (equal <= 0) {
        error = QStringLiteral("--%1 needs FIELD=VALUE, not \"%2\"").arg(option, text);
        return false;
    }
    field = text.left(equal).trimmed();
    const RixMemField *definition = table.findField(field);
    if (!definition) {
        error = QStringLiteral("--%1: no field \"%2\" (fields: %3)")
                    .arg(option, field, table.fields()->fieldNames().join(QStringLiteral(", ")));
        return false;
    }
    value = text.mid(equal + 1).trimmed();
    QVariant converted = value;
    if (converted.convert(int(definition->dataType())))
        value = converted;
    return true;
}

bool checkField(const RixMemTable &table, const QString &option, const QString &field, QString &error)
{
    if (table.findField(field))
        return true;
    error = QStringLiteral("--%1: no field \"%2\" (fields: %3)")
                .arg(option, field, table.fields()->fieldNames().join(QStringLiteral(", ")));
    return false;
}

// Narrows view by the options; false with error when an option cannot be applied.
bool applyViewOptions(RixMemTable &table, RixMemTableView &view, const ViewOptions &options, QString &error)
{
    if (!options.where.isEmpty()) {
        RixMemRecordExprParser parser(table.fields());
        DebugLines lines;
        parser.setExpression(options.where);
        if (!parser.isValid()) {
            error = QStringLiteral("--where: %1").arg(lines.lines().value(0));
            return false;
        }
        // A name that is no field would fail every row: say so instead.
        for (const QString &code : TovExprParserClasses().getExprCodes(options.where)) {
            const QString name = code.startsWith(QLatin1Char('[')) && code.endsWith(QLatin1Char(']'))
                ? code.mid(1, code.size() - 2)
                : code;
            if (!checkField(table, QStringLiteral("where"), name, error))
                return false;
        }
        int failed = 0;
        QString firstFailure;
        view.applyFilter(QStringLiteral("where"), [&](RixMemRecord *record, bool &keep) {
            const int before = lines.lines().size();
            keep = parser.accept(record);
            if (lines.lines().size() > before && failed++ == 0)
                firstFailure = lines.lines().value(before);
        });
        if (failed > 0) {
            tovErr() << "tovutil: --where: " << failed << " row(s) left out, the expression failed for them ("
                     << firstFailure << ")\n";
            tovErr().flush();
        }
    }
    QString field;
    QVariant value;
    if (!options.firstOne.isEmpty()) {
        if (!fieldValue(table, QStringLiteral("first-one"), options.firstOne, field, value, error))
            return false;
        // Above every value the view is left as it is: show nothing rather than everything.
        if (!view.applyFilterForFirstOne(field, value))
            view.applyFilter(QStringLiteral("none"), [](RixMemRecord *, bool &keep) { keep = false; });
    }
    if (!options.leastOne.isEmpty()) {
        if (!fieldValue(table, QStringLiteral("least-one"), options.leastOne, field, value, error))
            return false;
        view.applyFilterForLeastOne(field, value);
    }
    if (!options.interval.isEmpty()) {
        if (!fieldValue(table, QStringLiteral("interval"), options.interval, field, value, error))
            return false;
        bool ok = false;
        const double number = value.toDouble(&ok);
        if (!ok) {
            error = QStringLiteral("--interval: \"%1\" is no number").arg(value.toString());
            return false;
        }
        RixMemRecord *found = view.findRecordByIntervalCondition(field, number);
        view.applyFilter(QStringLiteral("interval"),
            [found](RixMemRecord *record, bool &keep) { keep = record == found; });
    }
    if (!options.sort.isEmpty()) {
        for (const QString &part : options.sort.simplified().split(QLatin1Char(','), Qt::SkipEmptyParts)) {
            if (!checkField(
                    table, QStringLiteral("sort"), part.trimmed().section(QLatin1Char(' '), 0, 0), error))
                return false;
        }
        view.sort(options.sort);
    }
    if (!options.unique.isEmpty() && !checkField(table, QStringLiteral("unique"), options.unique, error))
        return false;
    return true;
}

void printUnique(RixMemTableView &view, const QString &field, TovTablePrinter::Format format)
{
    const QList<QVariant> values = view.getUniqueValues(field);
    if (format == TovTablePrinter::Format::Json) {
        QJsonArray array;
        for (const QVariant &value : values)
            array.append(QJsonValue::fromVariant(value));
        tovOut() << QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Indented));
    } else {
        if (format == TovTablePrinter::Format::Csv)
            tovOut() << field << '\n';
        for (const QVariant &value : values)
            tovOut() << SefCommon::variantToString(value) << '\n';
    }
    tovOut().flush();
}

// The view's records as a table layered over the loaded one, for the printer.
void printView(RixMemTable &table, RixMemTableView &view, TovTablePrinter::Format format)
{
    RixMemTable shown;
    shown.setRefTable(&table);
    for (RixMemRecord *record : view.records()) {
        RixMemRecord *row = shown.newRecord();
        row->setRefRecord(record);
        shown.appendRecord(row);
    }
    TovTablePrinter::print(tovOut(), shown, format);
}

int runTable(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Loads a CSV file (header line = field names) or a JSON array of objects into a "
                       "memory table and prints it."));
    const QCommandLineOption helpOption(
        QStringList { QStringLiteral("h"), QStringLiteral("help") }, QStringLiteral("Shows this help."));
    const QCommandLineOption formatOption(QStringList { QStringLiteral("f"), QStringLiteral("format") },
        QStringLiteral("Output format: text (default), csv or json."), QStringLiteral("format"),
        QStringLiteral("text"));
    const QCommandLineOption whereOption(QStringLiteral("where"),
        QStringLiteral("Keeps the rows for which the record expression EXPR is true, e.g. "
                       "'Width>3 and Kind=\"A\"' (field names in any case)."),
        QStringLiteral("EXPR"));
    const QCommandLineOption firstOneOption(QStringLiteral("first-one"),
        QStringLiteral("Keeps the rows whose FIELD has the smallest value not below VALUE; none when "
                       "VALUE is above every value."),
        QStringLiteral("FIELD=VALUE"));
    const QCommandLineOption leastOneOption(QStringLiteral("least-one"),
        QStringLiteral("As --first-one, but a VALUE above every value keeps the rows of the largest."),
        QStringLiteral("FIELD=VALUE"));
    const QCommandLineOption intervalOption(QStringLiteral("interval"),
        QStringLiteral("Keeps the first row whose FIELD, an interval such as [0,8] or [8,20) or [20,∞), "
                       "admits the number VALUE by its upper bound."),
        QStringLiteral("FIELD=VALUE"));
    const QCommandLineOption sortOption(QStringLiteral("sort"),
        QStringLiteral("Sorts the rows by SPEC: fields separated by ',', each optionally followed by "
                       "' desc', e.g. 'Kind, Ratio desc'."),
        QStringLiteral("SPEC"));
    const QCommandLineOption uniqueOption(QStringLiteral("unique"),
        QStringLiteral("Prints the distinct values of FIELD over the rows, in ascending order, instead of "
                       "the rows."),
        QStringLiteral("FIELD"));
    parser.addOption(helpOption);
    parser.addOption(formatOption);
    for (const QCommandLineOption &option :
        { whereOption, firstOneOption, leastOneOption, intervalOption, sortOption, uniqueOption })
        parser.addOption(option);
    parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("A .csv file or a .json file."));
    if (!parser.parse(arguments))
        return tovFail(parser.errorText());
    if (parser.isSet(helpOption)) {
        QString help = parser.helpText();
        help.replace(
            0, help.indexOf(QLatin1Char('\n')), QStringLiteral("Usage: tovutil table [options] file"));
        tovOut() << help;
        tovOut().flush();
        return 0;
    }
    TovTablePrinter::Format format;
    if (!TovTablePrinter::parseFormat(parser.value(formatOption), format))
        return tovFail(
            QStringLiteral("unknown format \"%1\" (use text, csv or json)").arg(parser.value(formatOption)));
    const QStringList files = parser.positionalArguments();
    if (files.size() != 1)
        return tovFail(QStringLiteral("table needs exactly one FILE (see tovutil table --help)"));

    const QString path = files.first();
    QFile file(path);
    if (!QFileInfo(path).isFile())
        return tovFail(QStringLiteral("%1: no such file").arg(path));
    if (!file.open(QIODevice::ReadOnly))
        return tovFail(QStringLiteral("%1: cannot read: %2").arg(path, file.errorString()));
    const QByteArray bytes = file.readAll();
    if (bytes.trimmed().isEmpty())
        return tovFail(QStringLiteral("%1: the file is empty").arg(path));

    const QByteArray start = bytes.trimmed().left(1);
    const bool json
        = path.endsWith(QLatin1String(".json"), Qt::CaseInsensitive) || start == "[" || start == "{";
    RixMemTable table;
    QString error;
    if (!(json ? loadJson(path, bytes, table, error) : loadCsv(path, bytes, table, error)))
        return tovFail(error);
    ViewOptions options;
    options.where = parser.value(whereOption);
    options.firstOne = parser.value(firstOneOption);
    options.leastOne = parser.value(leastOneOption);
    options.interval = parser.value(intervalOption);
    options.sort = parser.value(sortOption);
    options.unique = parser.value(uniqueOption);
    const bool viewed = !(options.where.isEmpty() && options.firstOne.isEmpty() && options.leastOne.isEmpty()
        && options.interval.isEmpty() && options.sort.isEmpty() && options.unique.isEmpty());
    if (!viewed) {
        TovTablePrinter::print(tovOut(), table, format);
        return 0;
    }
    RixMemTableView view(&table);
    if (!applyViewOptions(table, view, options, error))
        return tovFail(error);
    if (!options.unique.isEmpty())
        printUnique(view, options.unique, format);
    else
        printView(table, view, format);
    return 0;
}

} // namespace

TOVUTIL_COMMAND("table", "Loads a CSV or JSON file into a memory table and prints it", runTable);
