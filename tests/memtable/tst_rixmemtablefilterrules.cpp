#include <rixmemtablefilterrule.h>
#include <rixmemtablefilterrules.h>

#include <QtTest>

class TestRixMemTableFilterRules : public QObject
{
    Q_OBJECT

private slots:
    void lookupsByName_data();
    void lookupsByName();
    void removal_data();
    void removal();
    void toString_data();
    void toString();
};

void TestRixMemTableFilterRules::lookupsByName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("index");

    QTest::newRow("as spelled") << "Kind" << 0;
    QTest::newRow("in another case") << "WIDTH" << 1;
    QTest::newRow("of two rules with one name the first") << "kind" << 0;
    QTest::newRow("unknown") << "Height" << -1;
}

void TestRixMemTableFilterRules::lookupsByName()
{
    QFETCH(QString, name);
    QFETCH(int, index);

    RixMemTableFilterRules rules;
    rules.add(QStringLiteral("Kind"), RixMemTableFilterRule::Equal, QStringLiteral("A"));
    rules.add(QStringLiteral("Width"), RixMemTableFilterRule::LeastOne);
    rules.add(QStringLiteral("KIND"), RixMemTableFilterRule::LeastOne, 3);
    QCOMPARE(rules.indexOf(name), index);
    QCOMPARE(rules.exists(name), index >= 0);
    QCOMPARE(rules.find(name), index >= 0 ? rules.at(index) : nullptr);
    QCOMPARE(rules.getValue(name), index >= 0 ? rules.at(index)->fieldValue() : QVariant());

    rules.setValue(name, 7);
    QCOMPARE(rules.count(), 3); // an unknown name is not added
    if (index >= 0)
        QCOMPARE(rules.at(index)->fieldValue(), QVariant(7));
    QCOMPARE(rules.at(2)->fieldValue(), QVariant(3));
}

void TestRixMemTableFilterRules::removal_data()
{
    QTest::addColumn<QString>("byName");
    QTest::addColumn<int>("byIndex");
    QTest::addColumn<QStringList>("left");

    QTest::newRow("by name, first of two") << "b" << -2 << QStringList { "A", "C", "B" };
    QTest::newRow("by unknown name") << "X" << -2 << QStringList { "A", "B", "C", "B" };
    QTest::newRow("by index") << "" << 2 << QStringList { "A", "B", "B" };
    QTest::newRow("index -1 ignored") << "" << -1 << QStringList { "A", "B", "C", "B" };
    QTest::newRow("index past the end ignored") << "" << 4 << QStringList { "A", "B", "C", "B" };
}

void TestRixMemTableFilterRules::removal()
{
    QFETCH(QString, byName);
    QFETCH(int, byIndex);
    QFETCH(QStringList, left);

    RixMemTableFilterRules rules;
    for (const char *name : { "A", "B", "C", "B" })
        rules.add(QString::fromLatin1(name), RixMemTableFilterRule::Equal);
    if (byIndex == -2)
        rules.remove(byName);
    else
        rules.removeAt(byIndex);
    QStringList names;
    for (int i = 0; i < rules.count(); ++i)
        names.append(rules.at(i)->fieldName());
    QCOMPARE(names, left);
}

void TestRixMemTableFilterRules::toString_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("text");

    QTest::newRow("text") << QVariant(QStringLiteral("边沟")) << "Kind=边沟;Width=2.5";
    QTest::newRow("number in the shortest form")
        << QVariant(0.1 + 0.2) << "Kind=0.30000000000000004;Width=2.5";
    QTest::newRow("null value as empty text") << QVariant() << "Kind=;Width=2.5";
}

void TestRixMemTableFilterRules::toString()
{
    QFETCH(QVariant, value);
    QFETCH(QString, text);

    RixMemTableFilterRules rules;
    rules.add(QStringLiteral("Kind"), RixMemTableFilterRule::Equal, value);
    rules.add(QStringLiteral("Width"), RixMemTableFilterRule::LeastOne, 2.5);
    QCOMPARE(rules.toString(), text);
    rules.clear();
    QCOMPARE(rules.toString(), QString());
}

QTEST_GUILESS_MAIN(TestRixMemTableFilterRules)
#include "tst_rixmemtablefilterrules.moc"
