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
    void cleanup();

    void newRecordHasNullValuesSizedToFields();
    void referenceRecordWrites_data();
    void referenceRecordWrites();
    void referenceChainIsFollowed();
    void readsOutOfRangeAndUnknown();
    void setAsStringConversion_data();
    void setAsStringConversion();
    void setAsStringUnchangedTextStoresNothing();
    void setAsStringOverReference();
    void unknownNameWritesAreIgnored();
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

void TestRixMemRecord::cleanup()
{
    m_table.reset();
}

void TestRixMemRecord::newRecordHasNullValuesSizedToFields()
{
    RixMemRecord record(m_table.get());
    QCOMPARE(record.getValues().size(), 4);
    QVERIFY(record.isNullValues());
    QCOMPARE(record.iD(), 0);
    QVERIFY(record.isValid());
    QVERIFY(!record.needConvert());
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

    QTest::newRow("equal to the reference: null stored")
        << QVariant(5) << QVariant(5) << QVariant() << QVariant(5);
    QTest::newRow("equal after conversion: null stored")
        << QVariant(5) << QVariant(QStringLiteral("5")) << QVariant() << QVariant(5);
    QTest::newRow("different: stored") << QVariant(5) << QVariant(6) << QVariant(6) << QVariant(6);
    QTest::newRow("null: reference shows through") << QVariant(5) << QVariant() << QVariant() << QVariant(5);
    QTest::newRow("reference null: stored") << QVariant() << QVariant(7) << QVariant(7) << QVariant(7);
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
}

void TestRixMemRecord::setAsStringConversion_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<bool>("needConvert");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVariant>("stored");

    QTest::newRow("double field converts 2.5") << "Width" << true << "2.5" << QVariant(2.5);
    QTest::newRow("without needConvert the text is stored")
        << "Width" << false << "2.5" << QVariant(QStringLiteral("2.5"));
    QTest::newRow("int field converts 12") << "ID" << true << "12" << QVariant(12);
    QTest::newRow("text that does not convert stays text")
        << "ID" << true << "abc" << QVariant(QStringLiteral("abc"));
    QTest::newRow("bool field converts true") << "Paved" << true << "true" << QVariant(true);
    QTest::newRow("string field keeps text") << "Name" << true << "路肩" << QVariant(QStringLiteral("路肩"));
}

void TestRixMemRecord::setAsStringConversion()
{
    QFETCH(QString, field);
    QFETCH(bool, needConvert);
    QFETCH(QString, text);
    QFETCH(QVariant, stored);

    RixMemRecord record(m_table.get());
    record.setNeedConvert(needConvert);
    record.setAsString(field, text, false);
    const QVariant value = record.getVariant(field);
    QCOMPARE(value.userType(), stored.userType());
    QCOMPARE(value, stored);
}

void TestRixMemRecord::setAsStringUnchangedTextStoresNothing()
{
    RixMemRecord record(m_table.get());
    record.setVariant(QStringLiteral("Width"), 2.5);
    // Same text: nothing stored, so the double stays a double.
    record.setAsString(QStringLiteral("Width"), QStringLiteral("2.5"), false);
    QCOMPARE(record.getVariant(QStringLiteral("Width")).userType(), int(QMetaType::Double));
    // Different text: stored as text without needConvert.
    record.setAsString(L"Width", QStringLiteral("3"), false);
    QCOMPARE(record.getVariant(QStringLiteral("Width")), QVariant(QStringLiteral("3")));

    // An unchanged empty entry is stored only when a check is requested.
    RixMemRecord empty(m_table.get());
    empty.setAsString(QStringLiteral("Name"), QStringLiteral(""), false);
    QVERIFY(!empty.getVariant(QStringLiteral("Name")).isValid());
    empty.setAsString(QStringLiteral("Name"), QStringLiteral(""), true);
    QCOMPARE(empty.getVariant(QStringLiteral("Name")).userType(), int(QMetaType::QString));
}

void TestRixMemRecord::setAsStringOverReference()
{
    RixMemRecord ref(m_table.get());
    ref.setVariant(QStringLiteral("Width"), 2.5);
    RixMemRecord record(m_table.get());
    record.setRefRecord(&ref);
    record.setNeedConvert(true);
    record.setAsString(QStringLiteral("Width"), QStringLiteral("3.5"), false);
    QCOMPARE(record.getValues().at(1), QVariant(3.5));
    record.setAsString(QStringLiteral("Width"), QStringLiteral("2.5"), false);
    QVERIFY2(record.getValues().at(1).isNull(), "typing the reference's value back stores null");
    QCOMPARE(record.asDouble(QStringLiteral("Width")), 2.5);
}

void TestRixMemRecord::unknownNameWritesAreIgnored()
{
    RixMemRecord record(m_table.get());
    record.setVariant(QStringLiteral("Missing"), 1);
    record.setAsString(QStringLiteral("Missing"), QStringLiteral("x"), true);
    QVERIFY(record.isNullValues());
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
