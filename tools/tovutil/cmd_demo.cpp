// tovutil demo: what a host module does with a rule table. It defines typed fields, fills the
// table from JSON, layers a project table over it, changes one value and saves the layer; then
// types entries in with their constraints checked, filters a view by a record expression and
// computes properties from the rule it finds.
#include "commandregistry.h"
#include "logdemo.h"
#include "tableprinter.h"

#include <rixmemfield.h>
#include <rixmemfields.h>
#include <rixmemrecord.h>
#include <rixmemrecordexprparser.h>
#include <rixmemtable.h>
#include <rixmemtableview.h>
#include <sefdebugoutput.h>
#include <tovexception.h>
#include <tovmemproperties.h>
#include <tovmempropertiesexprparser.h>

#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <memory>

namespace {

void heading(const QString &text)
{
    tovOut() << '\n' << "== " << text << '\n';
}

void defineFields(RixMemTable &rules)
{
    rules.setTableName(QStringLiteral("边坡规则"));
    rules.addField(QStringLiteral("ID"), QStringLiteral("编号"), QVariant::Int)->setReadonly(true);
    rules.addField(QStringLiteral("Kind"), QStringLiteral("类型"), QVariant::String)
        ->setPickList(QStringLiteral("填方;挖方;浸水"));
    RixMemField *height
        = rules.addField(QStringLiteral("HeightLimit"), QStringLiteral("高度上限(m)"), QVariant::Double);
    height->setConstraintExpr(QStringLiteral("#>0"));
    height->setExtData(QStringLiteral("unit"), QStringLiteral("m"));
    RixMemField *ratio
        = rules.addField(QStringLiteral("Ratio"), QStringLiteral("坡率(1:n)"), QVariant::Double);
    ratio->setConstraintExpr(QStringLiteral("(#>=0.5) and (#<=3)"));
    ratio->setConstraintMsg(QStringLiteral("坡率应在0.5到3之间"));
    ratio->initExtData(QStringLiteral("digits=2;unit=1:n"));
    rules.addField(QStringLiteral("Protection"), QStringLiteral("防护形式"), QVariant::String);
    rules.addField(QStringLiteral("Paved"), QStringLiteral("铺砌"), QVariant::Bool);
}

void printFields(RixMemTable &rules)
{
    // The field definitions are themselves a small table.
    RixMemTable listing;
    for (const char *name : { "fieldName", "displayName", "dataType", "constraintExpr", "extData" })
        listing.addField(QLatin1String(name), QString(), QVariant::String);
    RixMemFields *fields = rules.fields();
    for (int i = 0; i < fields->count(); ++i) {
        RixMemField *field = fields->items(i);
        RixMemRecord *record = listing.newRecord();
        record->setVariant(QStringLiteral("fieldName"), field->fieldName());
        record->setVariant(QStringLiteral("displayName"), field->displayName());
        record->setVariant(
            QStringLiteral("dataType"), QString::fromLatin1(QVariant::typeToName(field->dataType())));
        record->setVariant(QStringLiteral("constraintExpr"), field->constraintExpr());
        record->setVariant(QStringLiteral("extData"), field->extDataToString());
        listing.appendRecord(record);
    }
    TovTablePrinter::print(tovOut(), listing, TovTablePrinter::Format::Text);
}

// A typed entry with the check requested, as an editor does: the stored value, or the message.
void typeIn(RixMemRecord *record, const QString &field, const QString &caption, const QString &text)
{
    const QString before = record->asString(field);
    tovOut() << "  " << caption << " " << before << " -> " << text << ": ";
    try {
        record->setAsString(field, text, true);
        const QVariant stored = record->getVariant(field);
        tovOut() << "accepted, stored as " << QVariant::typeToName(stored.type()) << " "
                 << record->asString(field) << '\n';
    } catch (const TovException &e) {
        tovOut() << "rejected: " << e.message() << " (still " << record->asString(field) << ")\n";
    }
}

void printView(RixMemTable &table, RixMemTableView &view)
{
    RixMemTable shown;
    shown.setRefTable(&table);
    for (RixMemRecord *record : view.records()) {
        RixMemRecord *row = shown.newRecord();
        row->setRefRecord(record);
        shown.appendRecord(row);
    }
    TovTablePrinter::Options named;
    named.displayNames = true;
    TovTablePrinter::print(tovOut(), shown, TovTablePrinter::Format::Text, named);
}

// Steps 7 to 9: the typical road of a host module's editor over the rule table.
void typicalRoad(RixMemTable &rules)
{
    heading(
        QStringLiteral("7. Rule 1 typed in, checked against the fields' constraints (\"#\" is the text)"));
    RixMemRecord *rule = rules.items(0);
    rule->setNeedConvert(true);
    const QString ratio = QStringLiteral("Ratio");
    const QString height = QStringLiteral("HeightLimit");
    tovOut() << QStringLiteral("  constraints: 坡率 %1 (message \"%2\"), 高度上限 %3 (no message)\n")
                    .arg(rules.findField(ratio)->constraintExpr(), rules.findField(ratio)->constraintMsg(),
                        rules.findField(height)->constraintExpr());
    // A failed check also writes the engine's reason to the debug output; the message is what the
    // user sees.
    const SefDebugOutput::Handler previous = SefDebugOutput::setHandler([](const QString &) {});
    typeIn(rule, ratio, QStringLiteral("坡率"), QStringLiteral("5"));
    typeIn(rule, height, QStringLiteral("高度上限"), QStringLiteral("-2"));
    typeIn(rule, ratio, QStringLiteral("坡率"), QStringLiteral("abc"));
    typeIn(rule, ratio, QStringLiteral("坡率"), QStringLiteral("1.25"));
    SefDebugOutput::setHandler(previous);

    const QString where = QStringLiteral("Ratio>=1 and Kind=\"填方\"");
    RixMemRecordExprParser parser(rules.fields());
    parser.setExpression(where);
    std::unique_ptr<RixMemTableView> view(rules.createView(QStringLiteral("fill"),
        [&parser](RixMemRecord *record, bool &keep) { keep = parser.accept(record); }));
    view->sort(QStringLiteral("HeightLimit"));
    heading(QStringLiteral("8. A view of the rules filtered by the record expression %1, sorted by 高度上限")
                .arg(where));
    printView(rules, *view);

    const double designHeight = 12.0;
    view->applyFilterForFirstOne(height, designHeight);
    RixMemRecord *found = view->first();
    heading(
        QStringLiteral("9. Properties of a %1 m fill slope: rule %2 is the first whose 高度上限 admits it; "
                       "expression properties computed by the properties parser (@len=100)")
            .arg(designHeight)
            .arg(found ? found->asString(QStringLiteral("ID")) : QStringLiteral("-")));
    TovMemProperties slope;
    slope.add(L"H", L"高度", designHeight);
    slope.add(L"Ratio", L"坡率", found ? found->asDouble(ratio) : 1.5);
    slope.add(L"SlopeWidth", L"坡面宽", QStringLiteral("H*Ratio"), true);
    slope.add(L"Area", L"断面面积", QStringLiteral("SlopeWidth*H/2"), true);
    slope.add(L"Volume", L"土方量", QStringLiteral("Area*@len"), true);
    QObject::connect(&slope, &TovMemProperties::onCalcExprVal,
        [&slope](TovMemProperty *, TovMemPropertyExprCalcArgs &calc, QString &result) {
            TovMemPropertiesExprParser itemParser(calc.args);
            itemParser.addData(&slope);
            result = itemParser.asString(calc.expr);
        });
    const QString args = QStringLiteral("@len=100");
    for (int i = 0; i < slope.count(); ++i) {
        TovMemProperty *property = slope.props(i);
        tovOut() << "  " << QString::fromStdWString(property->aliasName()) << " "
                 << QString::fromStdWString(property->propName());
        if (property->isExpr())
            tovOut() << " = " << property->value();
        tovOut() << " = " << property->asString(true, args) << '\n';
    }
}

int runDemo(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Shows what a host module does with a rule table: typed fields, a JSON load, a "
                       "project layer over the rules, one change, and the layer saved with only that "
                       "change; then entries typed in and checked against the fields' constraints, a "
                       "view filtered by a record expression, and properties computed from the rule "
                       "it finds."));
    const QCommandLineOption helpOption(
        QStringList { QStringLiteral("h"), QStringLiteral("help") }, QStringLiteral("Shows this help."));
    const QCommandLineOption dataOption(QStringLiteral("data"),
        QStringLiteral("The rule table to load (default: the shipped "
                       "slope_rules.json)."),
        QStringLiteral("file"));
    parser.addOption(helpOption);
    parser.addOption(dataOption);
    if (!parser.parse(arguments))
        return tovFail(parser.errorText());
    if (parser.isSet(helpOption)) {
        QString help = parser.helpText();
        help.replace(0, help.indexOf(QLatin1Char('\n')), QStringLiteral("Usage: tovutil demo [options]"));
        tovOut() << help;
        tovOut().flush();
        return 0;
    }
    if (!parser.positionalArguments().isEmpty())
        return tovFail(QStringLiteral("demo takes no arguments (see tovutil demo --help)"));

    const QString path = parser.isSet(dataOption)
        ? parser.value(dataOption)
        : QDir(tovDataDir()).filePath(QStringLiteral("slope_rules.json"));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return tovFail(QStringLiteral("%1: cannot read: %2").arg(path, file.errorString()));
    const QByteArray json = file.readAll();

    tovOut() << "A host module's rule table and a project layer over it.\n";
    RixMemTable rules;
    defineFields(rules);
    heading(QStringLiteral("1. Fields of the rule table \"%1\": typed, with constraints and extra attributes")
                .arg(rules.tableName()));
    printFields(rules);

    rules.loadFromJson(json);
    if (rules.recordCount() < 3)
        return tovFail(QStringLiteral("%1: expected a JSON array of at least three rules").arg(path));
    heading(
        QStringLiteral("2. Rule table filled from %1 (%2 rules; JSON numbers converted to the field types)")
            .arg(QDir::toNativeSeparators(path))
            .arg(rules.recordCount()));
    TovTablePrinter::Options named;
    named.displayNames = true;
    TovTablePrinter::print(tovOut(), rules, TovTablePrinter::Format::Text, named);

    RixMemTable project;
    project.setRefTable(&rules);
    project.appendRefRecords(&rules);
    QByteArray saved;
    project.saveToJson(saved);
    heading(QStringLiteral("3. Project layer over the rules (appendRefRecords): %1 rows inherit every value; "
                           "saving it writes %2")
                .arg(project.recordCount())
                .arg(saved.isEmpty() ? QStringLiteral("nothing") : QString::fromUtf8(saved)));

    RixMemRecord *changed = project.items(2);
    changed->setNeedConvert(true);
    const QString before = changed->asString(QStringLiteral("Ratio"));
    changed->setAsString(QStringLiteral("Ratio"), QStringLiteral("1.25"), false);
    heading(
        QStringLiteral("4. Rule %1: 坡率 changed from %2 to %3 in the layer only (* = stored in the layer)")
            .arg(
                changed->asString(QStringLiteral("ID")), before, changed->asString(QStringLiteral("Ratio"))));
    TovTablePrinter::Options marked = named;
    marked.markStored = true;
    TovTablePrinter::print(tovOut(), project, TovTablePrinter::Format::Text, marked);
    tovOut() << "The rule table still says " << rules.items(2)->asString(QStringLiteral("Ratio")) << ".\n";

    project.saveToJson(saved);
    heading(QStringLiteral(
        "5. The layer saved as JSON: one object per row naming its rule, only the change stored"));
    tovOut() << QString::fromUtf8(saved) << '\n';

    RixMemTable reloaded;
    reloaded.setRefTable(&rules);
    reloaded.loadFromJson(saved);
    heading(QStringLiteral("6. Loaded back over the rules: rule %1 has 坡率 %2 again")
                .arg(reloaded.items(2)->asString(QStringLiteral("ID")),
                    reloaded.items(2)->asString(QStringLiteral("Ratio"))));

    typicalRoad(rules);

    // The project folder lives only as long as the demo; the log database is made in it.
    QTemporaryDir projectDir;
    if (!projectDir.isValid())
        return tovFail(QStringLiteral("cannot make a temporary project folder"));
    heading(QStringLiteral("10. The steps of a calculation, logged into the project's TovLog.db"));
    tovOut().flush();
    return tovRunLogDemo(projectDir.path());
}

} // namespace

TOVUTIL_COMMAND("demo", "Shows a rule table, a project layer over it and what the layer saves", runDemo);
