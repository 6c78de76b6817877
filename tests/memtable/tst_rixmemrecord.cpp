#include <rixmemfield.h>
#include <rixmemfields.h>
#include <rixmemrecord.h>
#include <rixmemtable.h>

#include <QPointer>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

class TestRixMemRecord : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void newRecordHasNullValuesSizedToFields();
    void referenceRecordWrites_data();
    void referenceRecordWrites();
    void referenceChainIsFollowed();
    void readsOutOfRangeAndUnknown();
    void setAsString_data();
    void setAsString();
    void isNullValues_data();
    void isNullValues();
    void assignAndAssignValues();
    void destructorTakesRecordOutOfItsTable();
    void tableAndIndex();

private:
    std::unique_ptr<RixMemTable> m_table;
};

void TestRixMemRecord::init()
{
    m_table = std::make_unique<RixMemTable>();
    m_table->addField(QStringLiteral("ID"), QString(), QVariant::Int);
    m_table->addField(QStringLiteral("Width"), QStringLiteral("宽度"), QVariant::Double);
    m_table->addField(QStringLiteral("Name"), QString(), QVariant::String);
    m_table->addField(QStringLiteral("Paved"), QString(), QVariant::Bool);
}

void TestRixMemRecord::newRecordHasNullValuesSizedToFields()
{
    RixMemRecord record(m_table.get());
    QCOMPARE(record.getValues().size(), 4);
    QVERIFY(record.isNullValues());
    // Fields added later do not grow existing records.
    m_table->addField(QStringLiteral("Later"), QString(), QVariant::String);
    QCOMPARE(record.getValues().size(), 4);
    QVERIFY(record.getVariant(QStringLiteral("Later")).isNull());
}

void TestRixMemRecord::referenceRecordWrites_data()
{
    QTest::addColumn<QVariant>("refValue");
    QTest::addColumn<QVariant>("written");
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QVariant>("effective");

    const auto row = [](const char *name, const QVariant &refValue, const QVariant &written,
                         const QVariant &stored, const QVariant &effective) {
        QTest::newRow(name) << refValue << written << stored << effective;
    };
    row("equal to the reference: null stored", 5, 5, QVariant(), 5);
    row("equal after conversion: null stored", 5, "5", QVariant(), 5);
    row("different: stored", 5, 6, 6, 6);
    row("null: reference shows through", 5, QVariant(), QVariant(), 5);
    row("reference null: stored", QVariant(), 7, 7, 7);
}

void TestRixMemRecord::referenceRecordWrites()
{
    QFETCH(QVariant, refValue);
    QFETCH(QVariant, written);
    QFETCH(QVariant, stored);
    QFETCH(QVariant, effective);

    RixMemRecord ref(m_table.get());
    ref.setVariant(QStringLiteral("Width"), refValue);
    RixMemRecord record(m_table.get());
    record.setVariant(QStringLiteral("Width"), 99); // stored before, replaced by the write below
    record.setRefRecord(&ref);
    record.setVariant(QStringLiteral("width"), written);
    QCOMPARE(record.getValues().at(1), stored);
    QCOMPARE(record.getVariant(QStringLiteral("WIDTH")), effective);
    QCOMPARE(record.getVariant(1), effective);
}

void TestRixMemRecord::referenceChainIsFollowed()
{
    RixMemRecord base(m_table.get());
    base.setVariant(QStringLiteral("Name"), QStringLiteral("边沟"));
    base.setVariant(QStringLiteral("Width"), 0.5);
    RixMemRecord middle(m_table.get());
    middle.setRefRecord(&base);
    middle.setVariant(QStringLiteral("Width"), 0.6);
    RixMemRecord top(m_table.get());
    top.setRefRecord(&middle);
    QCOMPARE(top.asString(QStringLiteral("Name")), QStringLiteral("边沟"));
    QCOMPARE(top.asDouble(QStringLiteral("Width")), 0.6);
    QCOMPARE(top.asString(L"name"), QStringLiteral("边沟"));
}

void TestRixMemRecord::readsOutOfRangeAndUnknown()
{
    RixMemRecord ref(m_table.get());
    ref.setVariant(QStringLiteral("ID"), 3);
    RixMemRecord record(m_table.get());
    record.setRefRecord(&ref);
    QVERIFY(record.getVariant(-1).isNull());
    QVERIFY(record.getVariant(4).isNull());
    QVERIFY(!record.getVariant(QStringLiteral("Missing")).isValid());
    QCOMPARE(record.asString(QStringLiteral("Missing")), QString());
    QCOMPARE(record.asInteger(QStringLiteral("Missing")), 0);
    QCOMPARE(record.asDouble(L"Missing"), 0.0);
    QCOMPARE(record.asBoolean(QStringLiteral("Missing")), false);
    QCOMPARE(record.asInteger(L"id"), 3);

    record.setVariant(QStringLiteral("Missing"), 1);
    record.setAsString(L"Missing", QStringLiteral("x"), true);
    QCOMPARE(record.getValues(), QVector<QVariant>(4));
}

void TestRixMemRecord::setAsString_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QVariant>("refValue"); // invalid: no reference record
    QTest::addColumn<QVariant>("preset"); // invalid: nothing stored before
    QTest::addColumn<bool>("needConvert");
    QTest::addColumn<bool>("check");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVariant>("stored"); // invalid: null
    const auto row = [](const char *name, const char *field, const QVariant &refValue, const QVariant &preset,
                         bool needConvert, bool check, const char *text, const QVariant &stored) {
        QTest::newRow(name) << field << refValue << preset << needConvert << check << text << stored;
    };
    const QVariant none;
    row("double field converts 2.5", "Width", none, none, true, false, "2.5", 2.5);
    row("without needConvert the text is stored", "Width", none, none, false, false, "2.5", "2.5");
    row("int field converts 12", "ID", none, none, true, false, "12", 12);
    row("text that does not convert stays text", "ID", none, none, true, false, "abc", "abc");
    row("bool field converts true", "Paved", none, none, true, false, "true", true);
    row("string field keeps text", "Name", none, none, true, false, "路肩", "路肩");
    row("same text as stored: nothing stored, the double stays", "Width", none, 2.5, false, false, "2.5",
        2.5);
    row("different text: stored as text without needConvert", "Width", none, 2.5, false, false, "3", "3");
    row("unchanged empty entry: not stored unchecked", "Name", none, none, false, false, "", none);
    row("unchanged empty entry: stored when a check is asked for", "Name", none, none, false, true, "",
        QString(""));
    row("over a reference: another value is stored", "Width", 2.5, none, true, false, "3.5", 3.5);
    row("over a reference: typing its value back stores null", "Width", 2.5, 3.5, true, false, "2.5", none);
}

void TestRixMemRecord::setAsString()
{
    QFETCH(QString, field);
    QFETCH(QVariant, refValue);
    QFETCH(QVariant, preset);
    QFETCH(bool, needConvert);
    QFETCH(bool, check);
    QFETCH(QString, text);
    QFETCH(QVariant, stored);

    RixMemRecord ref(m_table.get());
    ref.setVariant(field, refValue);
    RixMemRecord record(m_table.get());
    if (refValue.isValid())
        record.setRefRecord(&ref);
    if (preset.isValid())
        record.setVariant(field, preset);
    record.setNeedConvert(needConvert);
    record.setAsString(field, text, check);
    const QVariant value = record.getValues().at(m_table->filedIndex(field));
    if (stored.isValid()) {
        QCOMPARE(value.userType(), stored.userType());
        QCOMPARE(value, stored);
    } else {
        QVERIFY(value.isNull());
    }
    QCOMPARE(record.asString(field), text);
}

void TestRixMemRecord::isNullValues_data()
{
    QTest::addColumn<bool>("withRef");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("isNull");
    QTest::newRow("all null") << false << QVariant() << true;
    QTest::newRow("one value") << false << QVariant(1) << false;
    QTest::newRow("null string counts as null") << false << QVariant(QString()) << true;
    QTest::newRow("empty string is a value") << false << QVariant(QStringLiteral("")) << false;
    QTest::newRow("reference record, own values null") << true << QVariant() << false;
}

void TestRixMemRecord::isNullValues()
{
    QFETCH(bool, withRef);
    QFETCH(QVariant, value);
    QFETCH(bool, isNull);
    RixMemRecord ref(m_table.get());
    RixMemRecord record(m_table.get());
    if (withRef)
        record.setRefRecord(&ref);
    record.setVariant(QStringLiteral("Name"), value);
    QCOMPARE(record.isNullValues(), isNull);

    RixMemTable noFields;
    RixMemRecord bare(&noFields);
    QVERIFY(bare.isNullValues());
}

void TestRixMemRecord::assignAndAssignValues()
{
    RixMemRecord ref(m_table.get());
    ref.setVariant(QStringLiteral("Name"), QStringLiteral("路面"));
    ref.setVariant(QStringLiteral("Width"), 7.5);
    RixMemRecord source(m_table.get());
    source.setRefRecord(&ref);
    source.setVariant(QStringLiteral("Width"), 8.0);

    RixMemRecord copy(m_table.get());
    copy.assign(&source);
    QCOMPARE(copy.refRecord(), &ref);
    QVERIFY(copy.getValues().at(2).isNull());
    QCOMPARE(copy.asString(QStringLiteral("Name")), QStringLiteral("路面"));

    RixMemRecord flat(m_table.get());
    flat.assignValues(&source);
    QCOMPARE(flat.refRecord(), nullptr);
    QCOMPARE(flat.getValues().at(2), QVariant(QStringLiteral("路面")));
    QCOMPARE(flat.getValues().at(1), QVariant(8.0));
    ref.setVariant(QStringLiteral("Name"), QStringLiteral("changed"));
    QCOMPARE(flat.asString(QStringLiteral("Name")), QStringLiteral("路面"));
}

void TestRixMemRecord::destructorTakesRecordOutOfItsTable()
{
    QSignalSpy before(m_table.get(), &RixMemTable::onBeforeRemove);
    QSignalSpy after(m_table.get(), &RixMemTable::onAfterRemove);
    RixMemRecord *record = m_table->newRecord();
    m_table->appendRecord(record);
    m_table->appendRecord(record); // twice: every occurrence goes
    RixMemRecord *other = m_table->newRecord();
    m_table->appendRecord(other);
    int countSeenBefore = -1;
    connect(m_table.get(), &RixMemTable::onBeforeRemove, this,
        [&](RixMemRecord *r) { countSeenBefore = r->table()->recordCount(); });
    delete record;
    QCOMPARE(before.count(), 1);
    QCOMPARE(after.count(), 1);
    QCOMPARE(countSeenBefore, 3);
    QCOMPARE(m_table->recordCount(), 1);
    QCOMPARE(m_table->items(0), other);
}

void TestRixMemRecord::tableAndIndex()
{
    RixMemTable other;
    RixMemRecord *record = new RixMemRecord(&other);
    QCOMPARE(record->table(), &other);
    QCOMPARE(record->index(), -1);
    m_table->appendRecord(m_table->newRecord());
    m_table->appendRecord(record);
    QCOMPARE(record->table(), m_table.get());
    QCOMPARE(record->index(), 1);
    m_table->removeRecord(record);
    // removeRecord leaves the owner set: the record is no longer found in it.
    QCOMPARE(record->table(), m_table.get());
    QCOMPARE(record->index(), -1);
    delete record;
    QCOMPARE(m_table->recordCount(), 1);
}

QTEST_GUILESS_MAIN(TestRixMemRecord)
#include "tst_rixmemrecord.moc"
