#include <rixmemfield.h>
#include <rixmemfields.h>
#include <tovkeyvaluelist.h>

#include <QtTest>

class TestRixMemFields : public QObject
{
    Q_OBJECT

private slots:
    void lookupIsCaseInsensitive_data();
    void lookupIsCaseInsensitive();
    void laterCaseVariantWinsLookupAndRemoval();
    void lookupMatchesLowerCaseForEveryCodePoint();
    void removeAt_data();
    void removeAt();
    void addFieldNull();
    void copiesHoldNewFields();
    void fieldAssign_data();
    void fieldAssign();
    void extData_data();
    void extData();
};

static QString names(RixMemFields &fields)
{
    return fields.fieldNames().join(QLatin1Char(','));
}

void TestRixMemFields::lookupIsCaseInsensitive_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("index");
    // Single letters fold as the code-point sweep below proves; these rows fold whole names.
    QTest::newRow("another case") << "NAME" << 1;
    QTest::newRow("latin-1 letters fold") << "ÄNDERUNG" << 3;
    QTest::newRow("greek letters fold") << "ΑΒΓ" << 4;
    QTest::newRow("chinese name") << "坡率" << 2;
    QTest::newRow("prefix is not a match") << "Nam" << -1;
    QTest::newRow("longer is not a match") << "Names" << -1;
    QTest::newRow("empty name") << "" << -1;
    QTest::newRow("unknown") << "Width" << -1;
}

void TestRixMemFields::lookupIsCaseInsensitive()
{
    QFETCH(QString, name);
    QFETCH(int, index);
    RixMemFields fields;
    for (const char *field : { "ID", "Name", "坡率", "änderung", "αβγ" })
        fields.addField(QString::fromUtf8(field), QString(), QVariant::String);
    QCOMPARE(fields.filedIndex(name), index);
    QCOMPARE(fields.findField(name) != nullptr, index >= 0);
    if (index >= 0)
        QCOMPARE(fields.findField(name)->fieldIndex(), index);
}

void TestRixMemFields::laterCaseVariantWinsLookupAndRemoval()
{
    RixMemFields fields;
    RixMemField *first = fields.addField(QStringLiteral("Name"), QString(), QVariant::String);
    QCOMPARE(fields.filedIndex(QStringLiteral("NAME")), 0);
    RixMemField *second = fields.addField(QStringLiteral("name"), QString(), QVariant::String);
    QCOMPARE(fields.count(), 2);
    QCOMPARE(fields.filedIndex(QStringLiteral("NAME")), 1);
    QCOMPARE(fields.findField(QStringLiteral("Name")), second);
    // fieldIndex() and indexOf() go through the name, so the first field reports the second's index
    // and removing it removes the second.
    QCOMPARE(first->fieldIndex(), 1);
    QCOMPARE(fields.indexOf(first), 1);
    fields.remove(first);
    QCOMPARE(names(fields), QStringLiteral("Name"));
    QCOMPARE(fields[0], first);
    QCOMPARE(fields.filedIndex(QStringLiteral("name")), -1);
    QCOMPARE(fields.indexOf(nullptr), -1);
}

// The index lowers names on the fly instead of calling toLower(); it must agree with toLower()
// for every character, or a lookup would miss a field that the toLower() key holds.
void TestRixMemFields::lookupMatchesLowerCaseForEveryCodePoint()
{
    QVector<uint> codePoints;
    for (uint cp = 1; cp < 0x10000; ++cp) {
        if (!QChar::isSurrogate(cp))
            codePoints.append(cp);
    }
    for (uint cp = 0x10400; cp < 0x10450; ++cp) // Deseret: letters with case outside the BMP
        codePoints.append(cp);
    for (uint cp = 0x1E900; cp < 0x1E944; ++cp) // Adlam
        codePoints.append(cp);

    RixMemFields fields;
    QHash<QString, int> expected;
    for (uint cp : codePoints) {
        const QString name = QStringLiteral("k") + QString::fromUcs4(&cp, 1);
        fields.addField(name, QString(), QVariant::String);
        expected.insert(name.toLower(), fields.count() - 1);
    }
    int checked = 0;
    for (uint cp : codePoints) {
        const QString name = QStringLiteral("k") + QString::fromUcs4(&cp, 1);
        for (const QString &probe : { name, name.toUpper(), name.toLower() }) {
            const int want = expected.value(probe.toLower(), -1);
            if (fields.filedIndex(probe) != want)
                QFAIL(qPrintable(QStringLiteral("U+%1 probe %2: %3 instead of %4")
                                     .arg(cp, 4, 16, QLatin1Char('0'))
                                     .arg(probe)
                                     .arg(fields.filedIndex(probe))
                                     .arg(want)));
            ++checked;
        }
    }
    QVERIFY(checked > 190000);
    // Names with lone surrogates follow toLower() as well, whatever it makes of them.
    const QChar high(0xD800);
    const QChar low(0xDC00);
    const QStringList malformed { QString(high) + QStringLiteral("X"),
        QStringLiteral("X") + low + QStringLiteral("Y"), QStringLiteral("AB") + high };
    for (const QString &name : malformed) {
        fields.addField(name, QString(), QVariant::String);
        QCOMPARE(fields.filedIndex(name), fields.count() - 1);
        QCOMPARE(fields.filedIndex(name.toLower()), fields.count() - 1);
    }
}

void TestRixMemFields::removeAt_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("lookups"); // name:index pairs checked after removal
    const auto row = [](const char *name, int index, const char *after, const char *lookups) {
        QTest::newRow(name) << index << after << lookups;
    };
    row("first of three: last takes its place", 0, "C,B", "c:0,b:1,a:-1");
    row("middle of three", 1, "A,C", "a:0,c:1,b:-1");
    row("last of three", 2, "A,B", "a:0,b:1,c:-1");
    row("-1 is ignored", -1, "A,B,C", "a:0,b:1,c:2");
    row("out of range is ignored", 3, "A,B,C", "a:0,b:1,c:2");
}

void TestRixMemFields::removeAt()
{
    QFETCH(int, index);
    QFETCH(QString, after);
    QFETCH(QString, lookups);

    RixMemFields fields;
    for (const char *name : { "A", "B", "C" })
        fields.addField(QLatin1String(name), QString(), QVariant::String);
    fields.removeAt(index);
    QCOMPARE(names(fields), after);
    for (const QString &pair : lookups.split(QLatin1Char(',')))
        QCOMPARE(fields.filedIndex(pair.section(QLatin1Char(':'), 0, 0)),
            pair.section(QLatin1Char(':'), 1).toInt());
    for (int i = 0; i < fields.count(); ++i)
        QCOMPARE(fields.items(i)->fieldIndex(), i);
}

void TestRixMemFields::addFieldNull()
{
    RixMemFields fields;
    QCOMPARE(fields.addField(nullptr), -1);
    QVERIFY(fields.isEmpty());
    auto *field = new RixMemField;
    QCOMPARE(field->fieldIndex(), -1);
    field->setFieldName(QStringLiteral("X"));
    QCOMPARE(fields.addField(field), 0);
    QCOMPARE(field->fieldIndex(), 0);
}

void TestRixMemFields::copiesHoldNewFields()
{
    RixMemFields fields;
    RixMemField *width = fields.addField(QStringLiteral("Width"), QStringLiteral("宽度"), QVariant::Double);
    width->setExtData(QStringLiteral("unit"), QStringLiteral("m"));
    fields.addField(QStringLiteral("Code"), QString(), QVariant::Int);

    const RixMemFields copy(fields);
    RixMemFields assigned;
    assigned.addField(QStringLiteral("Old"), QString(), QVariant::String);
    assigned = fields;
    for (const RixMemFields *other : { &copy, const_cast<const RixMemFields *>(&assigned) }) {
        QCOMPARE(other->count(), 2);
        QVERIFY(other->items(0) != width);
        QCOMPARE(other->items(0)->displayName(), QStringLiteral("宽度"));
        QCOMPARE(other->items(0)->extData(QStringLiteral("unit")), QStringLiteral("m"));
        QVERIFY(other->items(0)->extDataObj() != width->extDataObj());
        QCOMPARE(other->items(1)->fieldIndex(), 1);
        QCOMPARE(other->filedIndex(QStringLiteral("old")), -1);
    }
    width->setExtData(QStringLiteral("unit"), QStringLiteral("mm"));
    QCOMPARE(copy.items(0)->extData(QStringLiteral("unit")), QStringLiteral("m"));

    assigned.clear();
    QVERIFY(assigned.isEmpty());
    QCOMPARE(assigned.filedIndex(QStringLiteral("Width")), -1);
}

void TestRixMemFields::fieldAssign_data()
{
    QTest::addColumn<QString>("sourceExt"); // empty: the source has no extra attributes
    QTest::addColumn<QString>("targetExt");
    QTest::addColumn<QString>("afterExt");
    const auto row = [](const char *name, const char *source, const char *target, const char *after) {
        QTest::newRow(name) << source << target << after;
    };
    row("extra attributes deep-copied", "a=1;b=2", "", "a=1;b=2");
    row("target's own attributes replaced", "a=1", "z=9", "a=1");
    row("source without extras removes target's", "", "z=9", "");
}

void TestRixMemFields::fieldAssign()
{
    QFETCH(QString, sourceExt);
    QFETCH(QString, targetExt);
    QFETCH(QString, afterExt);

    RixMemFields owner;
    RixMemField *source = owner.addField(QStringLiteral("H"), QStringLiteral("高"), QVariant::Double);
    source->setVisible(false);
    source->setReadonly(true);
    source->setInputMode(3);
    source->setConstraintExpr(QStringLiteral("#>0"));
    source->setConstraintMsg(QStringLiteral("必须大于0"));
    source->setPickList(QStringLiteral("1;2"));
    source->setOrder(5);
    source->initExtData(sourceExt);

    RixMemField target;
    target.initExtData(targetExt);
    target.assign(source);
    const QStringList attributes { target.fieldName(), target.displayName(),
        QString::number(int(target.dataType())), QString::number(target.visible()),
        QString::number(target.readonly()), QString::number(target.inputMode()), target.constraintExpr(),
        target.constraintMsg(), target.pickList(), QString::number(target.order()),
        QString::number(target.fieldIndex()) }; // the owner is not copied
    QCOMPARE(attributes.join(QLatin1Char('|')), QStringLiteral("H|高|6|0|1|3|#>0|必须大于0|1;2|5|-1"));
    QCOMPARE(target.extDataToString(), afterExt);
    if (!sourceExt.isEmpty()) {
        source->setExtData(QStringLiteral("a"), QStringLiteral("changed"));
        QCOMPARE(target.extData(QStringLiteral("a")), QStringLiteral("1"));
    }
}

void TestRixMemFields::extData_data()
{
    QTest::addColumn<QString>("init");
    QTest::addColumn<QString>("saved");
    QTest::addColumn<QString>("unitValue");
    const auto row = [](const char *name, const char *init, const char *saved, const char *unit) {
        QTest::newRow(name) << init << saved << unit;
    };
    row("loaded with ; and saved in key order", "unit=m;digits=2", "digits=2;unit=m", "m");
    row("empty text removes the attributes", "", "", "");
    row("text without entries keeps an empty list", "nothing", "", "");
}

void TestRixMemFields::extData()
{
    QFETCH(QString, init);
    QFETCH(QString, saved);
    QFETCH(QString, unitValue);

    RixMemField field;
    QCOMPARE(field.extDataToString(), QString());
    field.setExtData(QStringLiteral("old"), 1);
    field.initExtData(init);
    QCOMPARE(field.extDataToString(), saved);
    QCOMPARE(field.extData(QStringLiteral("unit")), unitValue);
    QCOMPARE(field.extData(QStringLiteral("old")), QString());

    TovKeyValueList *list = field.extDataObj();
    QCOMPARE(field.extDataObj(), list);
    list->setValue(QStringLiteral("flag"), true);
    QCOMPARE(field.extData(QStringLiteral("flag")), QStringLiteral("true"));
}

QTEST_GUILESS_MAIN(TestRixMemFields)
#include "tst_rixmemfields.moc"
