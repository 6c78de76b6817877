// A host module's round: fields with constraints, rows from JSON, entries typed in and checked,
// a view filtered on the edited field.
#include <rixmemfield.h>
#include <rixmemrecord.h>
#include <rixmemrecordexprparser.h>
#include <rixmemtable.h>
#include <rixmemtableview.h>
#include <tovexception.h>
#include <tovtestutil.h>

#include <QtTest>

#include <memory>

class TestRixMemTableRoad : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void typedEntry_data();
    void typedEntry();
    void viewFollowsAcceptedEntries();

private:
    RixMemRecord *lane(const QString &code) const;

    std::unique_ptr<RixMemTable> m_table;
};

void TestRixMemTableRoad::init()
{
    m_table = std::make_unique<RixMemTable>();
    m_table->setTableName(QStringLiteral("Lanes"));
    m_table->addField(QStringLiteral("ID"), QString(), QVariant::Int);
    m_table->addField(QStringLiteral("Code"), QStringLiteral("编号"), QVariant::String);
    RixMemField *width = m_table->addField(QStringLiteral("Width"), QStringLiteral("宽度"), QVariant::Double);
    width->setConstraintExpr(QStringLiteral("#>0 and #<=Limit"));
    width->setConstraintMsg(QStringLiteral("宽度应大于0且不超过限宽"));
    RixMemField *kind = m_table->addField(QStringLiteral("Kind"), QStringLiteral("类型"), QVariant::String);
    kind->setConstraintExpr(QStringLiteral("#=\"A\" or #=\"B\""));
    RixMemField *layers = m_table->addField(QStringLiteral("Layers"), QStringLiteral("层数"), QVariant::Int);
    layers->setConstraintExpr(QStringLiteral("layers>=1 and layers<=4"));
    m_table->addField(QStringLiteral("Limit"), QStringLiteral("限宽"), QVariant::Double);

    m_table->loadFromJson(QByteArrayLiteral(R"([
        {"ID": 1, "Code": "L1", "Width": 3.5,  "Kind": "A", "Layers": 2, "Limit": 4},
        {"ID": 2, "Code": "L2", "Width": 2.75, "Kind": "A", "Layers": 3, "Limit": 4},
        {"ID": 3, "Code": "L3", "Width": 3.75, "Kind": "B", "Layers": 1, "Limit": 6},
        {"ID": 4, "Code": "L4", "Width": 5,    "Kind": "A", "Layers": 2, "Limit": 6}
    ])"));
    for (int i = 0; i < m_table->recordCount(); ++i)
        m_table->items(i)->setNeedConvert(true);
}

RixMemRecord *TestRixMemTableRoad::lane(const QString &code) const
{
    return m_table->findRecord(QStringLiteral("Code"), code);
}

void TestRixMemTableRoad::typedEntry_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("error");
    QTest::addColumn<QVariant>("stored");

    const auto row
        = [](const char *name, const char *code, const char *field, const char *text, const char *error,
              const QVariant &stored) { QTest::newRow(name) << code << field << text << error << stored; };
    const char *widthMessage = "宽度应大于0且不超过限宽";
    row("width above the row's limit: field message", "L2", "Width", "4.5", widthMessage, 2.75);
    row("width within another row's limit is stored as a double", "L3", "Width", "4.5", "", 4.5);
    row("width that is no number: field message", "L1", "Width", "3,5", widthMessage, 3.5);
    row("kind outside the list: default message", "L1", "Kind", "C", "属性值[C]非法", "A");
    row("kind in the list is stored", "L1", "Kind", "B", "", "B");
    row("layers checked by the field's own name, stored as an integer", "L2", "Layers", "4", "", 4);
    row("too many layers: default message", "L2", "Layers", "5", "属性值[5]非法", 3);
}

void TestRixMemTableRoad::typedEntry()
{
    QFETCH(QString, code);
    QFETCH(QString, field);
    QFETCH(QString, text);
    QFETCH(QString, error);
    QFETCH(QVariant, stored);

    RixMemRecord *record = lane(code);
    QVERIFY(record);
    const QVector<QVariant> before = record->getValues();
    if (error.isEmpty()) {
        record->setAsString(field, text, true);
    } else {
        TOV_VERIFY_THROWS(record->setAsString(field, text, true), TovException, error, -1);
        QCOMPARE(record->getValues(), before);
    }
    const QVariant value = record->getVariant(field);
    QCOMPARE(value, stored);
    QCOMPARE(value.type(), stored.type());
}

void TestRixMemTableRoad::viewFollowsAcceptedEntries()
{
    RixMemRecordExprParser parser(m_table->fields());
    parser.setExpression(QStringLiteral("Width>3 and Kind=\"A\""));
    auto filter = [&parser](RixMemRecord *record, bool &keep) { keep = parser.accept(record); };

    std::unique_ptr<RixMemTableView> before(m_table->createView(QStringLiteral("wide A"), filter));
    QCOMPARE(before->join(QStringLiteral("Code"), QStringLiteral(",")), QStringLiteral("L1,L4"));

    // A rejected entry changes nothing; accepted ones move rows in and out of the next view.
    QVERIFY_EXCEPTION_THROWN(
        lane(QStringLiteral("L2"))->setAsString(QStringLiteral("Width"), QStringLiteral("9"), true),
        TovException);
    lane(QStringLiteral("L2"))->setAsString(QStringLiteral("Width"), QStringLiteral("3.25"), true);
    lane(QStringLiteral("L4"))->setAsString(QStringLiteral("Kind"), QStringLiteral("B"), true);
    std::unique_ptr<RixMemTableView> after(m_table->createView(QStringLiteral("wide A"), filter));
    QCOMPARE(after->join(QStringLiteral("Code"), QStringLiteral(",")), QStringLiteral("L1,L2"));

    // The same field narrowed further by the view's own comparison (given > record).
    after->applyFilterForCondition(QStringLiteral("Width"), 3.4, RixMemTableView::ConditionType(0));
    QCOMPARE(after->join(QStringLiteral("Code"), QStringLiteral(",")), QStringLiteral("L2"));
}

QTEST_GUILESS_MAIN(TestRixMemTableRoad)
#include "tst_rixmemtableroad.moc"
