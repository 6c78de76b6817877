#include <rixmemfield.h>
#include <rixmemrecord.h>
#include <rixmemtable.h>
#include <rixmemtablefilterrules.h>
#include <rixmemtableview.h>

#include <QJsonArray>
#include <QJsonObject>
#include <QPointer>
#include <QtTest>

#include <cmath>
#include <limits>
#include <memory>
#include <stdexcept>

using Row = QVariantMap;
using IdList = QList<int>;

namespace {

// QVariant::compare() itself, the reference the view's orderings must agree with.
struct VariantReference : QVariant
{
    static int qtCompare(const QVariant &a, const QVariant &b)
    {
        int (QVariant::*compare)(const QVariant &) const = &VariantReference::compare;
        return (a.*compare)(b);
    }
};

const double largest = std::numeric_limits<double>::max();

} // namespace

class TestRixMemTableView : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void filters_data();
    void filters();
    void functionFilter();
    void firstOneAndLeastOne_data();
    void firstOneAndLeastOne();
    void filterRules_data();
    void filterRules();
    void unsupportedRuleThrows();
    void uniqueValues_data();
    void uniqueValues();
    void maxAndMin_data();
    void maxAndMin();
    void joinKeepsEmptyTexts();
    void sortSpec_data();
    void sortSpec();
    void sortByComparator();
    void valueOrderAgreesWithQVariant_data();
    void valueOrderAgreesWithQVariant();
    void extractConditionValue_data();
    void extractConditionValue();
    void intervalSearch_data();
    void intervalSearch();
    void findRecordModes_data();
    void findRecordModes();
    void deletedRecordsLeaveTheView_data();
    void deletedRecordsLeaveTheView();
    void longViewWhoseFilterDeletesRecordsAhead();
    void viewOutlivesItsTable();
    void createViewFiltersAndBelongsToTable();

private:
    RixMemRecord *addRow(const Row &row)
    {
        RixMemRecord *record = m_table->newRecord();
        for (auto it = row.cbegin(); it != row.cend(); ++it)
            record->setVariant(it.key(), it.value());
        m_table->appendRecord(record);
        return record;
    }
    void addRows(const QList<Row> &rows)
    {
        for (const Row &row : rows)
            addRow(row);
    }
    // Rows with the IDs 1..n and the given values of one field (an invalid QVariant stays null).
    void addColumn(const QString &field, const QVariantList &values)
    {
        for (int i = 0; i < values.size(); ++i)
            addRow({ { QStringLiteral("ID"), i + 1 }, { field, values.at(i) } });
    }
    // As addColumn(), storing the values as given: a text can sit in a number field.
    void addRawColumn(const QString &field, const QVariantList &values)
    {
        const int index = m_table->filedIndex(field);
        for (int i = 0; i < values.size(); ++i) {
            RixMemRecord *record = addRow({ { QStringLiteral("ID"), i + 1 } });
            QVector<QVariant> stored = record->getValues();
            if (index >= 0)
                stored[index] = values.at(i);
            record->setValues(stored);
        }
    }
    // The ID values of the view's records, in view order.
    static IdList ids(const RixMemTableView &view)
    {
        IdList result;
        for (const RixMemRecord *record : view.records())
            result.append(record->asInteger(QStringLiteral("ID")));
        return result;
    }

    std::unique_ptr<RixMemTable> m_table;
};

void TestRixMemTableView::init()
{
    m_table = std::make_unique<RixMemTable>();
    m_table->addField(QStringLiteral("ID"), QString(), QVariant::Int);
    m_table->addField(QStringLiteral("Count"), QString(), QVariant::Int);
    m_table->addField(QStringLiteral("Width"), QStringLiteral("宽度"), QVariant::Double);
    m_table->addField(QStringLiteral("Name"), QString(), QVariant::String);
    m_table->addField(QStringLiteral("Limit"), QString(), QVariant::String);
}

void TestRixMemTableView::filters_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<QString>("how"); // "type N", "text <op>", "equal" or "condition"
    QTest::addColumn<QVariant>("given");
    QTest::addColumn<IdList>("kept");
    const auto row = [](const char *name, const char *field, const QVariantList &values, const char *how,
                         const QVariant &given, const IdList &kept) {
        QTest::newRow(name) << field << values << how << given << kept;
    };

    // The comparisons read "given op record-value".
    const QVariantList counts { 5, 10, 20, QVariant() };
    row("greater keeps the values below the given one", "Count", counts, "type 0", 10, { 1, 4 });
    row("greater-equal keeps the values up to the given one", "Count", counts, "type 1", 10, { 1, 2, 4 });
    row("less keeps the values above the given one", "Count", counts, "type 2", 10, { 3, 4 });
    row("less-equal keeps the values from the given one on", "Count", counts, "type 3", 10, { 2, 3, 4 });
    row("type outside the enum keeps only null values", "Count", counts, "type 4", 10, { 4 });
    row("unknown field changes nothing", "Missing", counts, "type 0", 10, { 1, 2, 3, 4 });
    row("int field against a double given value", "Count", counts, "type 0", 10.5, { 1, 2, 4 });
    const QVariantList sums { 0.1 + 0.2, 0.3, 0.3 + 2e-12 };
    row("double field: greater-equal within the tolerance", "Width", sums, "type 1", 0.3, { 1, 2 });
    row("double field: less-equal within the tolerance", "Width", sums, "type 3", 0.3, { 1, 2, 3 });
    row("double field: the other direction", "Width", sums, "type 1", 0.1 + 0.2, { 1, 2 });
    row("double field: greater needs more than the tolerance", "Width", { 0.3 - 2e-12, 0.3 - 1e-13 },
        "type 0", 0.3, { 1 });
    row("double field: a text given value reads as a double", "Width", { 1.5, 2.5 }, "type 0", "2", { 1 });
    // Texts follow QVariant ordering: case-insensitive, and a case variant is "greater" both ways.
    row("text field: a case variant is greater, not equal", "Name", { "a", "B", "c", "b" }, "type 0", "b",
        { 1, 2 });
    row("text field: greater-equal keeps the case variant and the equal text", "Name", { "B", "b", "c" },
        "type 1", "b", { 1, 2 });

    const QVariantList three { 5, 10, 20 };
    row(">", "count", three, "text >", 10, { 1 });
    row(">=", "count", three, "text >=", 10, { 1, 2 });
    row("<", "count", three, "text <", 10, { 3 });
    row("<=", "count", three, "text <=", 10, { 2, 3 });
    row("≥ is not an operator text here", "count", three, "text ≥", 10, { 1, 2, 3 });
    row("= is not an operator text", "count", three, "text =", 10, { 1, 2, 3 });
    row("blanks are not trimmed", "count", three, "text  >", 10, { 1, 2, 3 });

    row("equal: equal and null values stay", "Count", { 5, 10, QVariant(), 10 }, "equal", 10, { 2, 3, 4 });
    row("equal: a text equal after conversion stays", "Count", { 5, 10 }, "equal", "10", { 2 });
    row("equal: texts are equal only in the same case", "Name", { "A", "a" }, "equal", "A", { 1 });
    row("equal: doubles equal within QVariant's fuzziness", "Width", { 1.0, 1.0 + 1e-13, 1.0 + 1e-9 },
        "equal", 1.0, { 1, 2 });
    row("equal: unknown field compares nulls and keeps everything", "Missing", { 5, 10 }, "equal", 10,
        { 1, 2 });

    const QVariantList widths { 2.0, 3.5, 5.0 };
    row("condition ≤3.5 keeps the widths from 3.5 up", "Width", widths, "condition", "H≤3.5", { 2, 3 });
    row("condition >3.5 keeps the widths below 3.5", "Width", widths, "condition", ">3.5", { 1 });
    row("unreadable condition changes nothing", "Width", widths, "condition", "H", { 1, 2, 3 });
}

void TestRixMemTableView::filters()
{
    QFETCH(QString, field);
    QFETCH(QVariantList, values);
    QFETCH(QString, how);
    QFETCH(QVariant, given);
    QFETCH(IdList, kept);

    // An unknown field filters the rows of a known one.
    addColumn(m_table->filedIndex(field) < 0 ? QStringLiteral("Count") : field, values);
    RixMemTableView view(m_table.get());
    if (how.startsWith(QLatin1String("type ")))
        view.applyFilterForCondition(field, given, RixMemTableView::ConditionType(how.mid(5).toInt()));
    else if (how.startsWith(QLatin1String("text ")))
        view.applyFilterForCondition(field, given, how.mid(5));
    else if (how == QLatin1String("equal"))
        view.applyFilterForEqual(field, given);
    else
        view.applyFilterByFieldCondition(field, given.toString());
    QCOMPARE(ids(view), kept);
    QCOMPARE(m_table->recordCount(), values.size());
}

void TestRixMemTableView::functionFilter()
{
    addColumn(QStringLiteral("Count"), { 1, 2, 3, 4 });
    RixMemTableView view(m_table.get());
    IdList asked;
    view.applyFilter(QStringLiteral("not 3"), [&](RixMemRecord *record, bool &keep) {
        const int id = record->asInteger(QStringLiteral("ID"));
        asked.append(id);
        if (id == 4)
            m_table->deleteRecord(1); // record 2, not asked yet
        if (id != 3)
            keep = true; // the flag starts false
    });
    QCOMPARE(asked, (IdList { 4, 3, 1 })); // last to first
    QCOMPARE(ids(view), (IdList { 1, 4 })); // order kept
    view.applyFilter(QString(), nullptr);
    QCOMPARE(view.recordCount(), 2);

    RixMemRecord *found = view.findRecord([&](RixMemRecord *record, bool &pass) {
        m_table->clear();
        pass = record != nullptr;
    });
    QVERIFY(!found);
    QVERIFY(view.isEmpty());
}

void TestRixMemTableView::firstOneAndLeastOne_data()
{
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<QVariant>("given");
    QTest::addColumn<bool>("firstAnswer");
    QTest::addColumn<IdList>("firstKept");
    QTest::addColumn<bool>("leastAnswer");
    QTest::addColumn<IdList>("leastKept");

    const auto row = [](const char *name, const QVariantList &values, const QVariant &given, bool firstAnswer,
                         const IdList &firstKept, bool leastAnswer, const IdList &leastKept) {
        QTest::newRow(name) << values << given << firstAnswer << firstKept << leastAnswer << leastKept;
    };
    const QVariantList values { 20, 5, 10, QVariant(), 20 };
    row("between values: the next one up", values, 12, true, { 1, 4, 5 }, true, { 1, 4, 5 });
    row("on a value: that value", values, 10, true, { 3, 4 }, true, { 3, 4 });
    row("below all: the smallest", values, -1, true, { 2, 4 }, true, { 2, 4 });
    row("above all: first one fails, least one takes the largest", values, 25, false, { 1, 2, 3, 4, 5 }, true,
        { 1, 4, 5 });
    row("no values: both leave the view", { QVariant(), QVariant() }, 1, false, { 1, 2 }, true, { 1, 2 });
    row("a case variant is greater, so the next text up is taken", { "b", "D", "c" }, "C", true, { 2 }, true,
        { 2 });
}

void TestRixMemTableView::firstOneAndLeastOne()
{
    QFETCH(QVariantList, values);
    QFETCH(QVariant, given);
    QFETCH(bool, firstAnswer);
    QFETCH(IdList, firstKept);
    QFETCH(bool, leastAnswer);
    QFETCH(IdList, leastKept);

    const QString field
        = values.first().userType() == QMetaType::QString ? QStringLiteral("Name") : QStringLiteral("Count");
    addColumn(field, values);
    RixMemTableView first(m_table.get());
    QCOMPARE(first.applyFilterForFirstOne(field, given), firstAnswer);
    QCOMPARE(ids(first), firstKept);
    RixMemTableView least(m_table.get());
    QCOMPARE(least.applyFilterForLeastOne(field, given), leastAnswer);
    QCOMPARE(ids(least), leastKept);
}

void TestRixMemTableView::filterRules_data()
{
    QTest::addColumn<QVariant>("name");
    QTest::addColumn<QVariant>("count");
    QTest::addColumn<bool>("answer");
    QTest::addColumn<IdList>("kept");

    const auto row = [](const char *name, const QVariant &kind, const QVariant &count, bool answer,
                         const IdList &kept) { QTest::newRow(name) << kind << count << answer << kept; };
    row("equal then least one", "A", 12, true, { 3 });
    row("least one above all keeps the largest", "A", 99, true, { 3 });
    row("rules without a value are left out", QVariant(), QVariant(), true, { 1, 2, 3, 4 });
    row("no record left answers false", "Z", 1, false, {});
}

void TestRixMemTableView::filterRules()
{
    QFETCH(QVariant, name);
    QFETCH(QVariant, count);
    QFETCH(bool, answer);
    QFETCH(IdList, kept);

    addRows({ { { "ID", 1 }, { "Name", "A" }, { "Count", 5 } },
        { { "ID", 2 }, { "Name", "B" }, { "Count", 15 } }, { { "ID", 3 }, { "Name", "A" }, { "Count", 20 } },
        { { "ID", 4 }, { "Name", "B" }, { "Count", 30 } } });
    RixMemTableFilterRules rules;
    rules.add(QStringLiteral("Name"), RixMemTableFilterRule::Equal, name);
    rules.add(QStringLiteral("Count"), RixMemTableFilterRule::LeastOne, count);
    RixMemTableView view(m_table.get());
    QCOMPARE(view.applyFilter(&rules), answer);
    QCOMPARE(ids(view), kept);
    QVERIFY(!view.applyFilter(static_cast<RixMemTableFilterRules *>(nullptr)));
}

void TestRixMemTableView::unsupportedRuleThrows()
{
    addColumn(QStringLiteral("Count"), { 5, 10 });
    RixMemTableFilterRules rules;
    rules.add(QStringLiteral("Count"), RixMemTableFilterRule::Equal, 5);
    rules.add(QStringLiteral("Count"), RixMemTableFilterRule::ConditionType(2), 5);
    RixMemTableView view(m_table.get());
    bool thrown = false;
    try {
        view.applyFilter(&rules);
    } catch (const std::logic_error &e) {
        thrown = true;
        QCOMPARE(
            QString::fromLatin1(e.what()), QStringLiteral("The method or operation is not implemented."));
    }
    QVERIFY(thrown);
    QCOMPARE(ids(view), IdList { 1 }); // the rules before it were applied

    rules.at(1)->setFieldValue(QVariant()); // without a value the rule is not looked at
    RixMemTableView again(m_table.get());
    QVERIFY(again.applyFilter(&rules));
}

void TestRixMemTableView::uniqueValues_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<QVariantList>("unique");

    const auto row = [](const char *name, const char *field, const QVariantList &values,
                         const QVariantList &unique) { QTest::newRow(name) << field << values << unique; };
    row("ints ascending without repeats or nulls", "Count", { 3, 1, QVariant(), 3, 2, 1 }, { 1, 2, 3 });
    row("texts ascending case-insensitively", "Name", { "b", "C", "a", "b" }, { "a", "b", "C" });
    row("doubles within QVariant's fuzziness are one value", "Width", { 2.0, 1.0 + 1e-13, 1.0, -0.0, 0.0 },
        { -0.0, 1.0 + 1e-13, 2.0 });
    row("a text equal to a number after conversion is a repeat", "Count", { 7, "7", 8 }, { 7, 8 });
    row("no values", "Count", { QVariant(), QVariant() }, {});
    row("unknown field", "Missing", { 1 }, {});
}

void TestRixMemTableView::uniqueValues()
{
    QFETCH(QString, field);
    QFETCH(QVariantList, values);
    QFETCH(QVariantList, unique);

    addRawColumn(field, values);
    RixMemTableView view(m_table.get());
    const QList<QVariant> answer = view.getUniqueValues(field);
    QCOMPARE(answer.size(), unique.size());
    for (int i = 0; i < unique.size(); ++i) {
        QCOMPARE(answer.at(i).userType(), unique.at(i).userType());
        QCOMPARE(answer.at(i), unique.at(i));
    }
}

void TestRixMemTableView::maxAndMin_data()
{
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<int>("maxId");
    QTest::addColumn<int>("minId");

    QTest::newRow("first of equal extremes wins") << QVariantList { 3, 9, 1, 9, 1 } << 2 << 3;
    QTest::newRow("nulls are passed over") << QVariantList { QVariant(), 4, QVariant() } << 2 << 2;
    QTest::newRow("no values: no record") << QVariantList { QVariant() } << 0 << 0;
    QTest::newRow("empty view: no record") << QVariantList {} << 0 << 0;
}

void TestRixMemTableView::maxAndMin()
{
    QFETCH(QVariantList, values);
    QFETCH(int, maxId);
    QFETCH(int, minId);

    addColumn(QStringLiteral("Count"), values);
    RixMemTableView view(m_table.get());
    const QString field = QStringLiteral("Count");
    RixMemRecord *max = view.maxRecord(field);
    RixMemRecord *min = view.minRecord(field);
    QCOMPARE(max ? max->asInteger(QStringLiteral("ID")) : 0, maxId);
    QCOMPARE(min ? min->asInteger(QStringLiteral("ID")) : 0, minId);
    QCOMPARE(view.calcMaxValue(field), max ? max->getVariant(field) : QVariant());
    QCOMPARE(view.calcMinValue(field), min ? min->getVariant(field) : QVariant());
    QVERIFY(!view.calcMaxValue(QStringLiteral("Missing")).isValid());
}

void TestRixMemTableView::joinKeepsEmptyTexts()
{
    addColumn(QStringLiteral("Width"), { 2.5, QVariant(), 3.0 });
    RixMemTableView view(m_table.get());
    QCOMPARE(view.join(QStringLiteral("width"), QStringLiteral(", ")), QStringLiteral("2.5, , 3"));
    QCOMPARE(view.join(QStringLiteral("Missing"), QStringLiteral("|")), QStringLiteral("||"));
}

void TestRixMemTableView::sortSpec_data()
{
    QTest::addColumn<QString>("spec");
    QTest::addColumn<IdList>("order");

    // Rows: (Count, Name): 1 (2,b) 2 (1,a) 3 (2,a) 4 (1,b) 5 (2,b). Rows 1 and 5 tie on both keys.
    QTest::newRow("a desc, b") << "Count desc, Name" << IdList { 3, 5, 1, 2, 4 };
    QTest::newRow("desc in any case, blanks simplified")
        << "  count\tDeSc ,name  desc" << IdList { 5, 1, 3, 4, 2 };
    QTest::newRow("any other word ascends") << "Count asc,Name whatever" << IdList { 2, 4, 3, 5, 1 };
    QTest::newRow("empty parts are skipped") << ",,Count,,Name," << IdList { 2, 4, 3, 5, 1 };
    // Equal keys answer "before" on purpose: the merge sort then reverses rows that tie.
    QTest::newRow("rows with equal keys come out reversed") << "Count" << IdList { 4, 2, 5, 3, 1 };
    QTest::newRow("an unknown field ties every row") << "Missing" << IdList { 5, 4, 3, 2, 1 };
    QTest::newRow("empty spec ties every row") << "" << IdList { 5, 4, 3, 2, 1 };
}

void TestRixMemTableView::sortSpec()
{
    QFETCH(QString, spec);
    QFETCH(IdList, order);

    addRows({ { { "ID", 1 }, { "Count", 2 }, { "Name", "b" } },
        { { "ID", 2 }, { "Count", 1 }, { "Name", "a" } }, { { "ID", 3 }, { "Count", 2 }, { "Name", "a" } },
        { { "ID", 4 }, { "Count", 1 }, { "Name", "b" } }, { { "ID", 5 }, { "Count", 2 }, { "Name", "b" } } });
    RixMemTableView view(m_table.get());
    view.sort(spec);
    QCOMPARE(ids(view), order);
}

void TestRixMemTableView::sortByComparator()
{
    // Enough rows for several merge passes: 40 rows of 4 counts.
    for (int i = 0; i < 40; ++i)
        addRow({ { "ID", i + 1 }, { "Count", (i * 7) % 4 } });
    RixMemTableView view(m_table.get());
    view.sort([](RixMemRecord *a, RixMemRecord *b) {
        return a->asInteger(QStringLiteral("Count")) < b->asInteger(QStringLiteral("Count"));
    });
    IdList expected;
    for (int count = 0; count < 4; ++count) {
        for (int i = 0; i < 40; ++i)
            expected += (i * 7) % 4 == count ? IdList { i + 1 } : IdList {};
    }
    QCOMPARE(ids(view), expected); // stable

    // A comparator that is no ordering at all must not break the list.
    view.sort([](RixMemRecord *, RixMemRecord *) { return true; });
    IdList reversed = expected;
    std::reverse(reversed.begin(), reversed.end());
    QCOMPARE(ids(view), reversed);
    int calls = 0;
    view.sort([&calls](RixMemRecord *, RixMemRecord *) { return ++calls % 3 == 0; });
    IdList sortedIds = ids(view);
    std::sort(sortedIds.begin(), sortedIds.end());
    std::sort(expected.begin(), expected.end());
    QCOMPARE(sortedIds, expected); // still a permutation
}

void TestRixMemTableView::valueOrderAgreesWithQVariant_data()
{
    QTest::addColumn<QVariant>("a");
    QTest::addColumn<QVariant>("b");

    const double nan = std::nan("");
    const double inf = std::numeric_limits<double>::infinity();
    QTest::newRow("doubles within fuzziness") << QVariant(1.0) << QVariant(1.0 + 1e-13);
    QTest::newRow("doubles just outside fuzziness") << QVariant(1.0) << QVariant(1.0 + 1e-11);
    QTest::newRow("zero against a tiny double") << QVariant(0.0) << QVariant(1e-300);
    QTest::newRow("zero against negative zero") << QVariant(0.0) << QVariant(-0.0);
    QTest::newRow("infinities") << QVariant(inf) << QVariant(-inf);
    QTest::newRow("infinity against the largest") << QVariant(inf) << QVariant(largest);
    QTest::newRow("NaN against a number") << QVariant(nan) << QVariant(1.0);
    QTest::newRow("NaN against NaN") << QVariant(nan) << QVariant(nan);
    QTest::newRow("ints") << QVariant(-3) << QVariant(7);
    QTest::newRow("int against a double") << QVariant(3) << QVariant(3.0000000000001);
    QTest::newRow("double against an int") << QVariant(2.5) << QVariant(2);
    QTest::newRow("long longs") << QVariant(qlonglong(1) << 40) << QVariant(qlonglong(5));
    QTest::newRow("texts in another case") << QVariant(QStringLiteral("a")) << QVariant(QStringLiteral("A"));
    QTest::newRow("non-ASCII texts in another case")
        << QVariant(QStringLiteral("ä")) << QVariant(QStringLiteral("Ä"));
    QTest::newRow("empty and null text") << QVariant(QString()) << QVariant(QStringLiteral(""));
    QTest::newRow("text against a number") << QVariant(QStringLiteral("10")) << QVariant(9);
    QTest::newRow("bool against an int") << QVariant(true) << QVariant(2);
    QTest::newRow("null double against zero") << QVariant(QVariant::Double) << QVariant(0.0);
}

// Sorting two records, the equal filter and the maximum must decide as QVariant itself does.
void TestRixMemTableView::valueOrderAgreesWithQVariant()
{
    QFETCH(QVariant, a);
    QFETCH(QVariant, b);

    addRawColumn(QStringLiteral("Name"), { a, b });

    RixMemTableView ascending(m_table.get());
    ascending.sort(QStringLiteral("Name"));
    // The sort asks whether the later record goes first; a tie answers yes.
    const IdList expected = VariantReference::qtCompare(b, a) <= 0 ? IdList { 2, 1 } : IdList { 1, 2 };
    QCOMPARE(ids(ascending), expected);

    RixMemTableView equal(m_table.get());
    equal.applyFilterForEqual(QStringLiteral("Name"), a);
    QCOMPARE(equal.indexOf(m_table->items(1)) >= 0, b.isNull() || b == a);

    if (!a.isNull() && !b.isNull()) {
        RixMemTableView view(m_table.get());
        QCOMPARE(view.maxRecord(QStringLiteral("Name")),
            m_table->items(VariantReference::qtCompare(b, a) > 0 ? 1 : 0));
        QCOMPARE(view.minRecord(QStringLiteral("Name")),
            m_table->items(VariantReference::qtCompare(b, a) < 0 ? 1 : 0));
    }
}

void TestRixMemTableView::extractConditionValue_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("type");

    // The type is preset to 2 ("<") before each call.
    QTest::newRow("H≤3.5") << "H≤3.5" << true << 3.5 << 3;
    QTest::newRow("<=5 reads as < with an unreadable number") << "<=5" << true << 0.0 << 2;
    QTest::newRow("≥") << "≥2" << true << 2.0 << 1;
    QTest::newRow(">") << "  Width>7  " << true << 7.0 << 0;
    QTest::newRow("<") << "<-1.25" << true << -1.25 << 2;
    QTest::newRow("another first character keeps the type") << "=5" << true << 5.0 << 2;
    QTest::newRow("letters go everywhere, an exponent too") << ">1e3" << true << 13.0 << 0;
    QTest::newRow("a blank after a letter hides the operator") << "H ≤ 3.5" << true << 0.0 << 2;
    QTest::newRow("blank between operator and number") << "≤ 3.5" << true << 3.5 << 3;
    QTest::newRow("one character is too short") << "Height>" << false << 0.0 << 2;
    QTest::newRow("empty") << "" << false << 0.0 << 2;
}

void TestRixMemTableView::extractConditionValue()
{
    QFETCH(QString, text);
    QFETCH(bool, ok);
    QFETCH(double, value);
    QFETCH(int, type);

    double read = 0.0;
    RixMemTableView::ConditionType readType = RixMemTableView::Less;
    QCOMPARE(RixMemTableView::extractConditionValue(text, read, readType), ok);
    QCOMPARE(read, value);
    QCOMPARE(int(readType), type);
}

void TestRixMemTableView::intervalSearch_data()
{
    QTest::addColumn<bool>("ex"); // findRecordByIntervalConditionEx()
    QTest::addColumn<QVariantList>("limits");
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("found");
    const auto row = [](const char *name, bool ex, const QVariantList &limits, double value, int found) {
        QTest::newRow(name) << ex << limits << value << found;
    };

    const QVariantList steps { "[0,3]", "[3,5)", "[5, ∞)" };
    row("closed upper bound admits itself", false, steps, 3.0, 1);
    row("inside the second interval", false, steps, 4.0, 2);
    row("open upper bound excludes itself", false, steps, 5.0, 3);
    row("lower bound is not tested", false, steps, -10.0, 1);
    row("∞ is the largest double", false, steps, 1e308, 3);
    row("nothing above the largest double", false, steps, largest, 0);
    row("closed bound within the tolerance", false, { "[0,3]", "[3,9]" }, 3.0 + 1e-13, 1);
    row("only [ opens an interval", false, { "(0,3]", "[0,4]" }, 1.0, 2);
    row("unreadable bound fails the row", false, { "[a,3]", "[-∞,3]", "[0,3]" }, 1.0, 3);
    row("∞ as the lower bound", false, { "[∞,3]" }, 2.0, 1);
    row("empty and comma-less texts fail", false, { "", "[3]", "[,]", "[0,3]" }, 1.0, 4);

    const QVariantList conditions { "", "W", ">10", "<6", "≤3.5", "≥8" };
    row("≤3.5 admits up to 3.5", true, conditions, 3.5, 4);
    row("<6 admits below 6", true, conditions, 5.0, 4);
    row("<6 excludes 6", true, conditions, 6.0, 0);
    row(">10 admits above 10", true, conditions, 10.5, 3);
    row("≥8 admits 8", true, conditions, 8.0, 6);
    row("≥8 within the tolerance", true, conditions, 8.0 - 1e-13, 6);
}

void TestRixMemTableView::intervalSearch()
{
    QFETCH(bool, ex);
    QFETCH(QVariantList, limits);
    QFETCH(double, value);
    QFETCH(int, found);

    addColumn(QStringLiteral("Limit"), limits);
    RixMemTableView view(m_table.get());
    RixMemRecord *record = ex ? view.findRecordByIntervalConditionEx(QStringLiteral("Limit"), value)
                              : view.findRecordByIntervalCondition(QStringLiteral("limit"), value);
    QCOMPARE(record ? record->asInteger(QStringLiteral("ID")) : 0, found);
}

void TestRixMemTableView::findRecordModes_data()
{
    QTest::addColumn<int>("wanted");
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("found");

    QTest::newRow("first passing record in view order") << 2 << 0 << 3;
    QTest::newRow("none passing, null") << 9 << 0 << 0;
    QTest::newRow("none passing, first record") << 9 << 1 << 4;
    QTest::newRow("none passing, last record") << 9 << 2 << 1;
    QTest::newRow("none passing, other mode") << 9 << 3 << 0;
}

void TestRixMemTableView::findRecordModes()
{
    QFETCH(int, wanted);
    QFETCH(int, mode);
    QFETCH(int, found);

    addColumn(QStringLiteral("Count"), { 1, 2, 2, 3 });
    RixMemTableView view(m_table.get());
    view.sort(QStringLiteral("ID desc"));
    RixMemRecord *record = view.findRecord(
        [wanted](RixMemRecord *r, bool &pass) { pass = r->asInteger(QStringLiteral("Count")) == wanted; },
        RixMemTableView::NotFoundReturnMode(mode));
    QCOMPARE(record ? record->asInteger(QStringLiteral("ID")) : 0, found);

    QVERIFY(!view.findRecord(nullptr, RixMemTableView::ReturnFirst));
    RixMemTableView empty(nullptr);
    QVERIFY(!empty.findRecord([](RixMemRecord *, bool &pass) { pass = true; }, RixMemTableView::ReturnFirst));
}

void TestRixMemTableView::deletedRecordsLeaveTheView_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<IdList>("left");

    QTest::newRow("deleteRecord(int)") << "deleteRecord" << IdList { 1, 3 };
    QTest::newRow("removeRecord") << "removeRecord" << IdList { 1, 3 };
    QTest::newRow("record deleted directly") << "delete" << IdList { 1, 3 };
    QTest::newRow("clear() without signals") << "clear" << IdList {};
    QTest::newRow("loadFromJson clears first") << "loadFromJson" << IdList {};
    QTest::newRow("loadFromString clears first") << "loadFromString" << IdList {};
    QTest::newRow("assign() clears first") << "assign" << IdList {};
}

void TestRixMemTableView::deletedRecordsLeaveTheView()
{
    QFETCH(QString, how);
    QFETCH(IdList, left);

    addColumn(QStringLiteral("Count"), { 1, 2, 3 });
    RixMemTableView view(m_table.get());
    RixMemTableView other(m_table.get()); // a second borrower is told as well
    RixMemRecord *second = m_table->items(1);
    if (how == QLatin1String("deleteRecord")) {
        m_table->deleteRecord(1);
    } else if (how == QLatin1String("removeRecord")) {
        m_table->removeRecord(second);
        delete second;
    } else if (how == QLatin1String("delete")) {
        delete second;
    } else if (how == QLatin1String("clear")) {
        m_table->clear();
    } else if (how == QLatin1String("loadFromJson")) {
        m_table->loadFromJson(QJsonArray { QJsonObject { { "ID", 7 } } });
    } else if (how == QLatin1String("loadFromString")) {
        m_table->loadFromString(QStringLiteral("8"), QLatin1Char(','), { QStringLiteral("ID") });
    } else if (how == QLatin1String("assign")) {
        RixMemTable source;
        source.addField(QStringLiteral("ID"), QString(), QVariant::Int);
        m_table->assign(&source, false);
    }
    // Reading the records would fail under the address sanitizer if any were left dangling.
    QCOMPARE(ids(view), left);
    QCOMPARE(ids(other), left);
    QCOMPARE(view.join(QStringLiteral("Count"), QStringLiteral(",")).count(QLatin1Char(',')),
        qMax(0, left.size() - 1));
}

// The view reads ahead of the filter function in a long list; the records the function deletes
// there must never be read again (the address sanitizer build catches a read).
void TestRixMemTableView::longViewWhoseFilterDeletesRecordsAhead()
{
    QVariantList counts;
    for (int i = 1; i <= 60; ++i)
        counts << i;
    addColumn(QStringLiteral("Count"), counts);
    RixMemTableView view(m_table.get());
    IdList asked;
    view.applyFilter(QStringLiteral("deletes ahead"), [&](RixMemRecord *record, bool &keep) {
        const int id = record->asInteger(QStringLiteral("ID"));
        asked.append(id);
        // The first record asked is the last one; every other record before it goes at once.
        if (id == 60) {
            for (int i = m_table->recordCount() - 2; i >= 0; i -= 2)
                m_table->deleteRecord(i);
        }
        keep = id % 3 != 0;
    });
    IdList expectedAsked { 60 };
    IdList remaining;
    for (int id = 58; id >= 2; id -= 2)
        expectedAsked << id;
    for (int id = 2; id <= 60; id += 2)
        remaining << id;
    remaining.erase(std::remove_if(remaining.begin(), remaining.end(), [](int id) { return id % 3 == 0; }),
        remaining.end());
    QCOMPARE(asked, expectedAsked);
    QCOMPARE(ids(view), remaining);
}

void TestRixMemTableView::viewOutlivesItsTable()
{
    addColumn(QStringLiteral("Count"), { 1, 2 });
    RixMemTableView view(m_table.get());
    m_table.reset();
    QVERIFY(!view.table());
    QVERIFY(view.isEmpty());
    QVERIFY(!view.fields());
    QCOMPARE(view.filedIndex(QStringLiteral("Count")), -1);
    QVERIFY(!view.findField(QStringLiteral("Count")));
    QVERIFY(view.getUniqueValues(QStringLiteral("Count")).isEmpty());
}

void TestRixMemTableView::createViewFiltersAndBelongsToTable()
{
    addColumn(QStringLiteral("Count"), { 1, 2, 3 });
    QPointer<RixMemTableView> view = m_table->createView(QStringLiteral("odd"),
        [](RixMemRecord *r, bool &keep) { keep = r->asInteger(QStringLiteral("Count")) % 2; });
    QVERIFY(view);
    QCOMPARE(view->objectName(), QStringLiteral("odd"));
    QCOMPARE(view->table(), m_table.get());
    QCOMPARE(ids(*view), (IdList { 1, 3 }));
    QCOMPARE(view->findField(QStringLiteral("WIDTH"))->displayName(), QStringLiteral("宽度"));

    std::unique_ptr<RixMemTableView> all(m_table->createView(QStringLiteral("all"), nullptr));
    QCOMPARE(all->recordCount(), 3);
    all.reset(); // deleting a view early is fine
    m_table.reset();
    QVERIFY(view.isNull());
}

QTEST_GUILESS_MAIN(TestRixMemTableView)
#include "tst_rixmemtableview.moc"
