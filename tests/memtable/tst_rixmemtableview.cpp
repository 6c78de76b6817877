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
    void cleanup();

    void conditionFilter_data();
    void conditionFilter();
    void conditionOperatorText_data();
    void conditionOperatorText();
    void equalFilter_data();
    void equalFilter();
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
    void fieldCondition_data();
    void fieldCondition();
    void intervalSearch_data();
    void intervalSearch();
    void conditionSearch_data();
    void conditionSearch();
    void findRecordModes_data();
    void findRecordModes();
    void deletedRecordsLeaveTheView_data();
    void deletedRecordsLeaveTheView();
    void recordsDeletedByAFilterFunction();
    void longViewWhoseFilterDeletesRecordsAhead();
    void viewOutlivesItsTable();
    void createViewFiltersAndBelongsToTable();

private:
    RixMemRecord *addRow(const Row &row);
    void addRows(const QList<Row> &rows);
    // The ID values of the view's records, in view order.
    static IdList ids(const RixMemTableView &view);
    static IdList ids(const QList<RixMemRecord *> &records);

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

void TestRixMemTableView::cleanup()
{
    m_table.reset();
}

RixMemRecord *TestRixMemTableView::addRow(const Row &row)
{
    RixMemRecord *record = m_table->newRecord();
    for (auto it = row.cbegin(); it != row.cend(); ++it)
        record->setVariant(it.key(), it.value());
    m_table->appendRecord(record);
    return record;
}

void TestRixMemTableView::addRows(const QList<Row> &rows)
{
    for (const Row &row : rows)
        addRow(row);
}

IdList TestRixMemTableView::ids(const RixMemTableView &view)
{
    return ids(view.records());
}

IdList TestRixMemTableView::ids(const QList<RixMemRecord *> &records)
{
    IdList result;
    for (const RixMemRecord *record : records)
        result.append(record->asInteger(QStringLiteral("ID")));
    return result;
}

// Rows 1..n with the given values of one field (an invalid QVariant leaves the value null).
static QList<Row> column(const QString &field, const QVariantList &values)
{
    QList<Row> rows;
    for (int i = 0; i < values.size(); ++i) {
        Row row { { QStringLiteral("ID"), i + 1 } };
        if (values.at(i).isValid())
            row.insert(field, values.at(i));
        rows.append(row);
    }
    return rows;
}

void TestRixMemTableView::conditionFilter_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<QVariant>("given");
    QTest::addColumn<int>("type");
    QTest::addColumn<IdList>("kept");

    const QVariantList counts { 5, 10, 20, QVariant() };
    QTest::newRow("greater keeps the values below the given one")
        << "Count" << counts << QVariant(10) << 0 << IdList { 1, 4 };
    QTest::newRow("greater-equal keeps the values up to the given one")
        << "Count" << counts << QVariant(10) << 1 << IdList { 1, 2, 4 };
    QTest::newRow("less keeps the values above the given one")
        << "Count" << counts << QVariant(10) << 2 << IdList { 3, 4 };
    QTest::newRow("less-equal keeps the values from the given one on")
        << "Count" << counts << QVariant(10) << 3 << IdList { 2, 3, 4 };
    QTest::newRow("type outside the enum keeps only null values")
        << "Count" << counts << QVariant(10) << 4 << IdList { 4 };
    QTest::newRow("unknown field changes nothing")
        << "Missing" << counts << QVariant(10) << 0 << IdList { 1, 2, 3, 4 };
    QTest::newRow("int field against a double given value")
        << "Count" << counts << QVariant(10.5) << 0 << IdList { 1, 2, 4 };

    const QVariantList sums { 0.1 + 0.2, 0.3, 0.3 + 2e-12 };
    QTest::newRow("double field: greater-equal within the tolerance")
        << "Width" << sums << QVariant(0.3) << 1 << IdList { 1, 2 };
    QTest::newRow("double field: less-equal within the tolerance")
        << "Width" << sums << QVariant(0.3) << 3 << IdList { 1, 2, 3 };
    QTest::newRow("double field: the other direction")
        << "Width" << sums << QVariant(0.1 + 0.2) << 1 << IdList { 1, 2 };
    QTest::newRow("double field: greater needs more than the tolerance")
        << "Width" << QVariantList { 0.3 - 2e-12, 0.3 - 1e-13 } << QVariant(0.3) << 0 << IdList { 1 };
    QTest::newRow("double field: a text given value reads as a double")
        << "Width" << QVariantList { 1.5, 2.5 } << QVariant(QStringLiteral("2")) << 0 << IdList { 1 };

    // Texts follow QVariant ordering: case-insensitive, and a case variant is "greater" both ways.
    QTest::newRow("text field: a case variant is greater, not equal")
        << "Name"
        << QVariantList { QStringLiteral("a"), QStringLiteral("B"), QStringLiteral("c"), QStringLiteral("b") }
        << QVariant(QStringLiteral("b")) << 0 << IdList { 1, 2 };
    QTest::newRow("text field: greater-equal keeps the case variant and the equal text")
        << "Name" << QVariantList { QStringLiteral("B"), QStringLiteral("b"), QStringLiteral("c") }
        << QVariant(QStringLiteral("b")) << 1 << IdList { 1, 2 };
}

void TestRixMemTableView::conditionFilter()
{
    QFETCH(QString, field);
    QFETCH(QVariantList, values);
    QFETCH(QVariant, given);
    QFETCH(int, type);
    QFETCH(IdList, kept);

    addRows(column(field, values));
    RixMemTableView view(m_table.get());
    view.applyFilterForCondition(field, given, RixMemTableView::ConditionType(type));
    QCOMPARE(ids(view), kept);
    QCOMPARE(m_table->recordCount(), values.size());
}

void TestRixMemTableView::conditionOperatorText_data()
{
    QTest::addColumn<QString>("op");
    QTest::addColumn<IdList>("kept");

    QTest::newRow(">") << ">" << IdList { 1 };
    QTest::newRow(">=") << ">=" << IdList { 1, 2 };
    QTest::newRow("<") << "<" << IdList { 3 };
    QTest::newRow("<=") << "<=" << IdList { 2, 3 };
    QTest::newRow("≥ is not an operator text here") << "≥" << IdList { 1, 2, 3 };
    QTest::newRow("= is not an operator text") << "=" << IdList { 1, 2, 3 };
    QTest::newRow("blanks are not trimmed") << " >" << IdList { 1, 2, 3 };
}

void TestRixMemTableView::conditionOperatorText()
{
    QFETCH(QString, op);
    QFETCH(IdList, kept);

    addRows(column(QStringLiteral("Count"), { 5, 10, 20 }));
    RixMemTableView view(m_table.get());
    view.applyFilterForCondition(QStringLiteral("count"), 10, op);
    QCOMPARE(ids(view), kept);
}

void TestRixMemTableView::equalFilter_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<QVariant>("given");
    QTest::addColumn<IdList>("kept");

    QTest::newRow("equal and null values stay")
        << "Count" << QVariantList { 5, 10, QVariant(), 10 } << QVariant(10) << IdList { 2, 3, 4 };
    QTest::newRow("a text equal after conversion stays")
        << "Count" << QVariantList { 5, 10 } << QVariant(QStringLiteral("10")) << IdList { 2 };
    QTest::newRow("texts are equal only in the same case")
        << "Name" << QVariantList { QStringLiteral("A"), QStringLiteral("a") }
        << QVariant(QStringLiteral("A")) << IdList { 1 };
    QTest::newRow("doubles equal within QVariant's fuzziness")
        << "Width" << QVariantList { 1.0, 1.0 + 1e-13, 1.0 + 1e-9 } << QVariant(1.0) << IdList { 1, 2 };
    QTest::newRow("unknown field compares nulls and keeps everything")
        << "Missing" << QVariantList { 5, 10 } << QVariant(10) << IdList { 1, 2 };
}

void TestRixMemTableView::equalFilter()
{
    QFETCH(QString, field);
    QFETCH(QVariantList, values);
    QFETCH(QVariant, given);
    QFETCH(IdList, kept);

    addRows(column(field == QLatin1String("Missing") ? QStringLiteral("Count") : field, values));
    RixMemTableView view(m_table.get());
    view.applyFilterForEqual(field, given);
    QCOMPARE(ids(view), kept);
}

void TestRixMemTableView::functionFilter()
{
    addRows(column(QStringLiteral("Count"), { 1, 2, 3, 4 }));
    RixMemTableView view(m_table.get());
    IdList asked;
    view.applyFilter(QStringLiteral("even"), [&asked](RixMemRecord *record, bool &keep) {
        const int count = record->asInteger(QStringLiteral("Count"));
        asked.append(count);
        if (count % 2 == 0)
            keep = true;
    });
    QCOMPARE(asked, (IdList { 4, 3, 2, 1 })); // last to first
    QCOMPARE(ids(view), (IdList { 2, 4 })); // order kept

    view.applyFilter(QString(), nullptr);
    QCOMPARE(view.recordCount(), 2);
    view.applyFilter(QString(), [](RixMemRecord *, bool &) {});
    QVERIFY(view.isEmpty()); // the flag starts false
}

void TestRixMemTableView::firstOneAndLeastOne_data()
{
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<QVariant>("given");
    QTest::addColumn<bool>("firstAnswer");
    QTest::addColumn<IdList>("firstKept");
    QTest::addColumn<bool>("leastAnswer");
    QTest::addColumn<IdList>("leastKept");

    const QVariantList values { 20, 5, 10, QVariant(), 20 };
    QTest::newRow("between values: the next one up")
        << values << QVariant(12) << true << IdList { 1, 4, 5 } << true << IdList { 1, 4, 5 };
    QTest::newRow("on a value: that value")
        << values << QVariant(10) << true << IdList { 3, 4 } << true << IdList { 3, 4 };
    QTest::newRow("below all: the smallest")
        << values << QVariant(-1) << true << IdList { 2, 4 } << true << IdList { 2, 4 };
    QTest::newRow("above all: first one fails, least one takes the largest")
        << values << QVariant(25) << false << IdList { 1, 2, 3, 4, 5 } << true << IdList { 1, 4, 5 };
    QTest::newRow("no values: both leave the view") << QVariantList { QVariant(), QVariant() } << QVariant(1)
                                                    << false << IdList { 1, 2 } << true << IdList { 1, 2 };
    QTest::newRow("a case variant is greater, so the next text up is taken")
        << QVariantList { QStringLiteral("b"), QStringLiteral("D"), QStringLiteral("c") }
        << QVariant(QStringLiteral("C")) << true << IdList { 2 } << true << IdList { 2 };
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
    addRows(column(field, values));
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

    QTest::newRow("equal then least one")
        << QVariant(QStringLiteral("A")) << QVariant(12) << true << IdList { 3 };
    QTest::newRow("least one above all keeps the largest")
        << QVariant(QStringLiteral("A")) << QVariant(99) << true << IdList { 3 };
    QTest::newRow("rules without a value are left out")
        << QVariant() << QVariant() << true << IdList { 1, 2, 3, 4 };
    QTest::newRow("no record left answers false")
        << QVariant(QStringLiteral("Z")) << QVariant(1) << false << IdList {};
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
    addRows(column(QStringLiteral("Count"), { 5, 10 }));
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

    QTest::newRow("ints ascending without repeats or nulls")
        << "Count" << QVariantList { 3, 1, QVariant(), 3, 2, 1 } << QVariantList { 1, 2, 3 };
    QTest::newRow("texts ascending case-insensitively")
        << "Name"
        << QVariantList { QStringLiteral("b"), QStringLiteral("C"), QStringLiteral("a"), QStringLiteral("b") }
        << QVariantList { QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("C") };
    QTest::newRow("doubles within QVariant's fuzziness are one value")
        << "Width" << QVariantList { 2.0, 1.0 + 1e-13, 1.0, -0.0, 0.0 }
        << QVariantList { -0.0, 1.0 + 1e-13, 2.0 };
    QTest::newRow("a text equal to a number after conversion is a repeat")
        << "Count" << QVariantList { 7, QStringLiteral("7"), 8 } << QVariantList { 7, 8 };
    QTest::newRow("no values") << "Count" << QVariantList { QVariant(), QVariant() } << QVariantList {};
    QTest::newRow("unknown field") << "Missing" << QVariantList { 1 } << QVariantList {};
}

void TestRixMemTableView::uniqueValues()
{
    QFETCH(QString, field);
    QFETCH(QVariantList, values);
    QFETCH(QVariantList, unique);

    // Values are stored as given, so that a text can sit in a number field.
    for (int i = 0; i < values.size(); ++i) {
        RixMemRecord *record = addRow({ { "ID", i + 1 } });
        if (values.at(i).isValid() && field != QLatin1String("Missing")) {
            QVector<QVariant> stored = record->getValues();
            stored[m_table->filedIndex(field)] = values.at(i);
            record->setValues(stored);
        }
    }
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

    addRows(column(QStringLiteral("Count"), values));
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
    addRows(column(QStringLiteral("Width"), { 2.5, QVariant(), 3.0 }));
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

    const int index = m_table->filedIndex(QStringLiteral("Name"));
    auto store = [&](int id, const QVariant &value) {
        RixMemRecord *record = addRow({ { "ID", id } });
        QVector<QVariant> values = record->getValues();
        values[index] = value;
        record->setValues(values);
    };
    store(1, a);
    store(2, b);
    const bool aIsNull = a.isNull();
    const bool bIsNull = b.isNull();

    RixMemTableView ascending(m_table.get());
    ascending.sort(QStringLiteral("Name"));
    // The sort asks whether the later record goes first; a tie answers yes.
    const IdList expected = VariantReference::qtCompare(b, a) <= 0 ? IdList { 2, 1 } : IdList { 1, 2 };
    QCOMPARE(ids(ascending), expected);

    RixMemTableView equal(m_table.get());
    equal.applyFilterForEqual(QStringLiteral("Name"), a);
    QCOMPARE(equal.indexOf(m_table->items(1)) >= 0, bIsNull || b == a);

    if (!aIsNull && !bIsNull) {
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

void TestRixMemTableView::fieldCondition_data()
{
    QTest::addColumn<QString>("condition");
    QTest::addColumn<IdList>("kept");

    // The operator reads "condition-value op record-value", as the comparison filters do.
    QTest::newRow("≤3.5 keeps the widths from 3.5 up") << "H≤3.5" << IdList { 2, 3 };
    QTest::newRow(">3.5 keeps the widths below 3.5") << ">3.5" << IdList { 1 };
    QTest::newRow("unreadable condition changes nothing") << "H" << IdList { 1, 2, 3 };
}

void TestRixMemTableView::fieldCondition()
{
    QFETCH(QString, condition);
    QFETCH(IdList, kept);

    addRows(column(QStringLiteral("Width"), { 2.0, 3.5, 5.0 }));
    RixMemTableView view(m_table.get());
    view.applyFilterByFieldCondition(QStringLiteral("Width"), condition);
    QCOMPARE(ids(view), kept);
}

void TestRixMemTableView::intervalSearch_data()
{
    QTest::addColumn<QStringList>("limits");
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("found");

    const QStringList steps { "[0,3]", "[3,5)", "[5, ∞)" };
    QTest::newRow("closed upper bound admits itself") << steps << 3.0 << 1;
    QTest::newRow("inside the second interval") << steps << 4.0 << 2;
    QTest::newRow("open upper bound excludes itself") << steps << 5.0 << 3;
    QTest::newRow("lower bound is not tested") << steps << -10.0 << 1;
    QTest::newRow("∞ is the largest double") << steps << 1e308 << 3;
    QTest::newRow("nothing above the largest double") << steps << largest << 0;
    QTest::newRow("closed bound within the tolerance")
        << QStringList { "[0,3]", "[3,9]" } << 3.0 + 1e-13 << 1;
    QTest::newRow("only [ opens an interval") << QStringList { "(0,3]", "[0,4]" } << 1.0 << 2;
    QTest::newRow("unreadable bound fails the row") << QStringList { "[a,3]", "[-∞,3]", "[0,3]" } << 1.0 << 3;
    QTest::newRow("∞ as the lower bound") << QStringList { "[∞,3]" } << 2.0 << 1;
    QTest::newRow("empty and comma-less texts fail") << QStringList { "", "[3]", "[,]", "[0,3]" } << 1.0 << 4;
}

void TestRixMemTableView::intervalSearch()
{
    QFETCH(QStringList, limits);
    QFETCH(double, value);
    QFETCH(int, found);

    QVariantList values;
    for (const QString &limit : limits)
        values.append(limit);
    addRows(column(QStringLiteral("Limit"), values));
    RixMemTableView view(m_table.get());
    RixMemRecord *record = view.findRecordByIntervalCondition(QStringLiteral("limit"), value);
    QCOMPARE(record ? record->asInteger(QStringLiteral("ID")) : 0, found);
}

void TestRixMemTableView::conditionSearch_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("found");

    // Rows: 1 "", 2 "W", 3 ">10", 4 "<6", 5 "≤3.5", 6 "≥8"
    QTest::newRow("≤3.5 admits up to 3.5") << 3.5 << 4;
    QTest::newRow("<6 admits below 6") << 5.0 << 4;
    QTest::newRow("<6 excludes 6") << 6.0 << 0;
    QTest::newRow(">10 admits above 10") << 10.5 << 3;
    QTest::newRow("≥8 admits 8") << 8.0 << 6;
    QTest::newRow("≥8 within the tolerance") << 8.0 - 1e-13 << 6;
}

void TestRixMemTableView::conditionSearch()
{
    QFETCH(double, value);
    QFETCH(int, found);

    addRows(column(QStringLiteral("Limit"),
        { QStringLiteral(""), QStringLiteral("W"), QStringLiteral(">10"), QStringLiteral("<6"),
            QStringLiteral("≤3.5"), QStringLiteral("≥8") }));
    RixMemTableView view(m_table.get());
    RixMemRecord *record = view.findRecordByIntervalConditionEx(QStringLiteral("Limit"), value);
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

    addRows(column(QStringLiteral("Count"), { 1, 2, 2, 3 }));
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

    addRows(column(QStringLiteral("Count"), { 1, 2, 3 }));
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

void TestRixMemTableView::recordsDeletedByAFilterFunction()
{
    addRows(column(QStringLiteral("Count"), { 1, 2, 3, 4 }));
    RixMemTableView view(m_table.get());
    IdList asked;
    view.applyFilter(QStringLiteral("deletes"), [&](RixMemRecord *record, bool &keep) {
        const int id = record->asInteger(QStringLiteral("ID"));
        asked.append(id);
        if (id == 4)
            m_table->deleteRecord(1); // record 2, not asked yet
        keep = true;
    });
    QCOMPARE(asked, (IdList { 4, 3, 1 }));
    QCOMPARE(ids(view), (IdList { 1, 3, 4 }));

    RixMemRecord *found = view.findRecord([&](RixMemRecord *record, bool &pass) {
        m_table->clear();
        pass = record != nullptr;
    });
    QVERIFY(!found);
    QVERIFY(view.isEmpty());
}

// The view reads ahead of the filter function in a long list; the records the function deletes
// there must never be read again (the address sanitizer build catches a read).
void TestRixMemTableView::longViewWhoseFilterDeletesRecordsAhead()
{
    QList<QVariant> counts;
    for (int i = 1; i <= 60; ++i)
        counts.append(i);
    addRows(column(QStringLiteral("Count"), counts));
    RixMemTableView view(m_table.get());
    IdList asked;
    IdList remaining;
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
    IdList expectedAsked;
    for (int id = 60; id >= 1; --id) {
        if (id == 60 || id % 2 == 0)
            expectedAsked.append(id);
    }
    for (int i = expectedAsked.size() - 1; i >= 0; --i) {
        if (expectedAsked[i] % 3 != 0)
            remaining.append(expectedAsked[i]);
    }
    QCOMPARE(asked, expectedAsked);
    QCOMPARE(ids(view), remaining);
}

void TestRixMemTableView::viewOutlivesItsTable()
{
    addRows(column(QStringLiteral("Count"), { 1, 2 }));
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
    addRows(column(QStringLiteral("Count"), { 1, 2, 3 }));
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
