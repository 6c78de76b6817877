// tovutil table: loads a CSV file (header line = field names) or a JSON array of objects into a
// memory table and prints it.
#include "commandregistry.h"
#include "tableprinter.h"

#include <rixmemfield.h>
#include <rixmemtable.h>

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
    parser.addOption(helpOption);
    parser.addOption(formatOption);
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
    TovTablePrinter::print(tovOut(), table, format);
    return 0;
}

} // namespace

TOVUTIL_COMMAND("table", "Loads a CSV or JSON file into a memory table and prints it", runTable);
