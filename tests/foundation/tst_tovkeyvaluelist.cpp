#include <tovkeyvaluelist.h>

#include <QtTest>

class TestTovKeyValueList : public QObject
{
    Q_OBJECT

private slots:
    void loadFromString_data();
    void loadFromString();
    void loadEmptiesButKeepsValidity();
    void copiesShareAssignCopies();
    void typedReaders_data();
    void typedReaders();
    void isEqual_data();
    void isEqual();
    void saveAppends_data();
    void saveAppends();
    void mergeRemoveAndBuilders();
};

static QString saved(const TovKeyValueList &list, QChar separator = QLatin1Char(';'))
{
    QString text;
    list.saveToString(text, separator);
    return text;
}

// "-": no map; "0": a map emptied by clear(); otherwise the entries loaded with ';'.
static TovKeyValueList makeList(const QString &entries)
{
    TovKeyValueList list;
    if (entries == QLatin1String("0")) {
        list.setValue(QStringLiteral("x"), 1);
        list.clear();
    } else if (entries != QLatin1String("-")) {
        list.loadFromString(entries, QLatin1Char(';'));
    }
    return list;
}

void TestTovKeyValueList::loadFromString_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QChar>("separator");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<QString>("savedText");

    const QChar semi(';');
    QTest::newRow("parts sorted, empty part and part without = skipped")
        << "b=2;a=1;;c" << semi << true << "a=1;b=2";
    QTest::newRow("value keeps further =") << "k=x=y" << semi << true << "k=x=y";
    QTest::newRow("empty key") << "=5" << semi << true << "=5";
    QTest::newRow("empty value") << "a=" << semi << true << "a=";
    QTest::newRow("later equal key replaces") << "a=1;a=2" << semi << true << "a=2";
    QTest::newRow("keys compared case-sensitively") << "a=1;A=2" << semi << true << "A=2;a=1";
    QTest::newRow("nothing trimmed") << " a = 1 " << semi << true << " a = 1 ";
    QTest::newRow("empty text leaves no map") << "" << semi << false << "";
    QTest::newRow("only parts without = leave no map") << "x;y;" << semi << false << "";
    QTest::newRow("caller's separator") << "b=2|a=1;c=3" << QChar('|') << true << "a=1;c=3;b=2";
    QTest::newRow("chinese keys and values") << "名称=边坡;坡率=1.5" << semi << true << "名称=边坡;坡率=1.5";
}

void TestTovKeyValueList::loadFromString()
{
    QFETCH(QString, text);
    QFETCH(QChar, separator);
    QFETCH(bool, valid);
    QFETCH(QString, savedText);

    TovKeyValueList list;
    list.loadFromString(text, separator);
    QCOMPARE(list.isValid(), valid);
    QCOMPARE(saved(list), savedText);
    if (valid) // loaded values are texts, whatever they look like
        QCOMPARE(
            list.getValue(savedText.section(QLatin1Char('='), 0, 0)).userType(), int(QMetaType::QString));
}

void TestTovKeyValueList::loadEmptiesButKeepsValidity()
{
    TovKeyValueList list(QStringLiteral("a=1"));
    QVERIFY(list.exists(QStringLiteral("a")));
    list.loadFromString(QString(), QLatin1Char(';'));
    QVERIFY(list.isValid());
    QVERIFY(!list.exists(QStringLiteral("a")));

    list.setValue(QStringLiteral("b"), 2);
    list.loadFromString(QStringLiteral("c=3"), QLatin1Char(';'));
    QCOMPARE(saved(list), QStringLiteral("c=3"));
}

void TestTovKeyValueList::copiesShareAssignCopies()
{
    TovKeyValueList first;
    TovKeyValueList copy(first);
    TovKeyValueList assigned;
    assigned = first;
    TovKeyValueList deep;
    deep.assign(first);

    first.setValue(QStringLiteral("k"), 1);
    QVERIFY(copy.isValid());
    QCOMPARE(copy.getValue(QStringLiteral("k")), QVariant(1));
    QCOMPARE(assigned.getValue(QStringLiteral("k")), QVariant(1));
    QVERIFY(!deep.exists(QStringLiteral("k")));

    copy.remove(QStringLiteral("k"));
    QVERIFY(!first.exists(QStringLiteral("k")));

    deep.assign(first);
    first.setValue(QStringLiteral("later"), 2);
    QVERIFY(!deep.exists(QStringLiteral("later")));

    first = first;
    QCOMPARE(first.getValue(QStringLiteral("later")), QVariant(2));

    // assign() and merge() from a list sharing the same entries keep them.
    TovKeyValueList list(QStringLiteral("a=1;b=2"));
    const TovKeyValueList sameEntries(list);
    list.assign(sameEntries);
    list.merge(sameEntries);
    QCOMPARE(saved(list), QStringLiteral("a=1;b=2"));
}

void TestTovKeyValueList::typedReaders_data()
{
    QTest::addColumn<QVariant>("stored"); // invalid: key absent
    QTest::addColumn<int>("asInteger");
    QTest::addColumn<qint64>("asInt64");
    QTest::addColumn<bool>("asBoolean");
    QTest::addColumn<QString>("asString");

    // Defaults used: 7, 70, true, "def".
    QTest::newRow("absent key gives defaults") << QVariant() << 7 << qint64(70) << true << "def";
    QTest::newRow("text abc: integer defaults, boolean converts")
        << QVariant("abc") << 7 << qint64(70) << true << "abc";
    QTest::newRow("text 12") << QVariant("12") << 12 << qint64(12) << true << "12";
    QTest::newRow("text false converts to false") << QVariant("false") << 7 << qint64(70) << false << "false";
    QTest::newRow("empty text is valid: no default") << QVariant("") << 7 << qint64(70) << false << "";
    QTest::newRow("int64 beyond int")
        << QVariant(qint64(5000000000)) << 7 << qint64(5000000000) << true << "5000000000";
    QTest::newRow("bool false") << QVariant(false) << 0 << qint64(0) << false << "false";
    QTest::newRow("double") << QVariant(2.5) << 3 << qint64(3) << true << "2.5";
}

void TestTovKeyValueList::typedReaders()
{
    QFETCH(QVariant, stored);
    QFETCH(int, asInteger);
    QFETCH(qint64, asInt64);
    QFETCH(bool, asBoolean);
    QFETCH(QString, asString);

    TovKeyValueList list;
    const QString key = QStringLiteral("n");
    if (stored.isValid())
        list.setValue(key, stored);
    QCOMPARE(list.asInteger(key, 7), asInteger);
    QCOMPARE(list.asInt64(key, 70), asInt64);
    QCOMPARE(list.asBoolean(key, true), asBoolean);
    QCOMPARE(list.asString(key, QStringLiteral("def")), asString);
}

void TestTovKeyValueList::isEqual_data()
{
    QTest::addColumn<QString>("left");
    QTest::addColumn<QString>("right");
    QTest::addColumn<bool>("equal");
    const auto row = [](const char *name, const char *left, const char *right, bool equal) {
        QTest::newRow(name) << QString::fromUtf8(left) << QString::fromUtf8(right) << equal;
    };
    row("both without map", "-", "-", true);
    row("cleared and new", "0", "-", true);
    row("new and cleared", "-", "0", true);
    row("new and filled", "-", "a=1", false);
    row("filled and new", "a=1", "-", false);
    row("same entries", "a=1;b=2", "b=2;a=1", true);
    row("different value", "a=1;b=2", "a=1;b=3", false);
    row("different key count", "a=1", "a=1;b=2", false);
    row("different key, same count", "a=1", "b=1", false);
}

void TestTovKeyValueList::isEqual()
{
    QFETCH(QString, left);
    QFETCH(QString, right);
    QFETCH(bool, equal);
    QCOMPARE(makeList(left).isEqual(makeList(right)), equal);
}

void TestTovKeyValueList::saveAppends_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("entries");
    QTest::addColumn<QString>("other");
    QTest::addColumn<QString>("full");
    QTest::addColumn<QString>("diff");
    const auto row
        = [](const char *name, const char *before, const char *entries, const char *other, const char *full,
              const char *diff) { QTest::newRow(name) << before << entries << other << full << diff; };
    row("no separator before the first entry", "x", "a=1;b=2", "-", "xa=1;b=2", "xa=1;b=2");
    row("identical lists: no difference", "", "a=1;b=2", "a=1;b=2", "a=1;b=2", "");
    row("changed and missing keys differ", "", "a=1;b=2;c=3", "a=1;b=9", "a=1;b=2;c=3", "b=2;c=3");
    row("no map appends nothing", "x", "-", "a=1", "x", "x");
}

void TestTovKeyValueList::saveAppends()
{
    QFETCH(QString, before);
    QFETCH(QString, entries);
    QFETCH(QString, other);
    QFETCH(QString, full);
    QFETCH(QString, diff);

    const TovKeyValueList list = makeList(entries);
    QString text = before;
    list.saveToString(text, QLatin1Char(';'));
    QCOMPARE(text, full);
    text = before;
    list.saveToDiffString(text, makeList(other));
    QCOMPARE(text, diff);
}

void TestTovKeyValueList::mergeRemoveAndBuilders()
{
    TovKeyValueList list(QStringLiteral("a=1;b=2"));
    list.merge(TovKeyValueList(QStringLiteral("b=3;c=4")));
    QCOMPARE(saved(list), QStringLiteral("a=1;b=3;c=4"));

    TovKeyValueList empty;
    empty.merge(TovKeyValueList());
    QVERIFY2(!empty.isValid(), "merging a list without map must not create one");

    list.remove(QStringLiteral("b"));
    list.remove(QStringLiteral("missing"));
    QCOMPARE(saved(list, QLatin1Char(',')), QStringLiteral("a=1,c=4"));

    TovKeyValueList never;
    never.remove(QStringLiteral("a"));
    never.clear();
    QVERIFY(!never.isValid());

    const TovKeyValueList init { { QStringLiteral("b"), 1 }, { QStringLiteral("a"), true },
        { QStringLiteral("b"), 0.1 } };
    QCOMPARE(saved(init), QStringLiteral("a=true;b=0.1"));
    TovKeyValueList chained;
    chained.add(QStringLiteral("x"), 1).addVal(QStringLiteral("y"), QStringLiteral("z"));
    QCOMPARE(saved(chained), QStringLiteral("x=1;y=z"));
}

QTEST_GUILESS_MAIN(TestTovKeyValueList)
#include "tst_tovkeyvaluelist.moc"
