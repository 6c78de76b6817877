#include <cdatabase.h>

#include <QSqlDatabase>
#include <QTemporaryDir>
#include <QtTest>

class TestCDatabase : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void openTable_data();
    void openTable();
    void findRecord_data();
    void findRecord();
    void readWriteText_data();
    void readWriteText();
    void query_data();
    void query();
    void connectionPerInstance();
    void openFailsForUnreachableFile();

private:
    void exec(const QString &sql);

    QTemporaryDir m_dir;
    QString m_file;
    std::unique_ptr<hln::CDatabase> m_db;
};

void TestCDatabase::exec(const QString &sql)
{
    QVERIFY2(m_db->execute(sql), qPrintable(sql + QLatin1String(": ") + m_db->lastError()));
}

void TestCDatabase::init()
{
    QVERIFY(m_dir.isValid());
    m_file = m_dir.filePath(QStringLiteral("%1.db").arg(QTest::currentTestFunction()));
    QFile::remove(m_file);
    m_db = std::make_unique<hln::CDatabase>();
    QVERIFY2(m_db->open(m_file), qPrintable(m_db->lastError()));
    exec(QStringLiteral("CREATE TABLE CmdStateTable (FieldName TEXT, ExtData TEXT)"));
    exec(QStringLiteral("INSERT INTO CmdStateTable VALUES ('Merge', 'a=1|'), ('Split', NULL), "
                        "('Merge', 'second|'), ('路面', 'b=2|')"));
    exec(QStringLiteral("CREATE TABLE CalcItem (CalcItemID INTEGER, CalcItemValue TEXT)"));
    exec(QStringLiteral("INSERT INTO CalcItem VALUES (22, '0;0'), (21, 'x'), (22, '1;0'), (7, '22')"));
}

void TestCDatabase::cleanup()
{
    m_db.reset();
}

void TestCDatabase::openTable_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expectedName");
    QTest::newRow("exact name") << "CmdStateTable" << QStringLiteral("CmdStateTable");
    QTest::newRow("other case finds the table") << "cmdstatetable" << QStringLiteral("CmdStateTable");
    QTest::newRow("missing table") << "NoSuchTable" << QString();
    QTest::newRow("empty name") << "" << QString();
}

void TestCDatabase::openTable()
{
    QFETCH(QString, name);
    QFETCH(QString, expectedName);
    const std::shared_ptr<hln::CTable> table = m_db->openTable(name);
    if (expectedName.isEmpty()) {
        QVERIFY(!table);
        QCOMPARE(m_db->lastError(), QStringLiteral("no such table: %1").arg(name));
    } else {
        QVERIFY(table);
        QCOMPARE(table->name(), expectedName);
    }
}

void TestCDatabase::findRecord_data()
{
    QTest::addColumn<QString>("column");
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("expected");
    QTest::newRow("first of two matches") << "FieldName" << QStringLiteral("Merge") << qint64(1);
    QTest::newRow("chinese text") << "FieldName" << QStringLiteral("路面") << qint64(4);
    QTest::newRow("text compares case-sensitively") << "FieldName" << QStringLiteral("merge") << qint64(-1);
    QTest::newRow("absent text") << "FieldName" << QStringLiteral("Nothing") << qint64(-1);
    QTest::newRow("missing column") << "NoColumn" << QStringLiteral("Merge") << qint64(-1);
}

void TestCDatabase::findRecord()
{
    QFETCH(QString, column);
    QFETCH(QString, text);
    QFETCH(qint64, expected);
    const std::shared_ptr<hln::CTable> table = m_db->openTable(QStringLiteral("CmdStateTable"));
    QVERIFY(table);
    QCOMPARE(table->findRecord(column, text), expected);
    if (column == QLatin1String("NoColumn"))
        QCOMPARE(m_db->lastError(), QStringLiteral("no such column: NoColumn"));
}

void TestCDatabase::readWriteText_data()
{
    QTest::addColumn<qint64>("record");
    QTest::addColumn<QString>("column");
    QTest::addColumn<bool>("readOk");
    QTest::addColumn<QString>("before");
    QTest::newRow("text value") << qint64(1) << "ExtData" << true << "a=1|";
    QTest::newRow("NULL reads as empty text") << qint64(2) << "ExtData" << true << "";
    QTest::newRow("no such record") << qint64(99) << "ExtData" << false << "";
    QTest::newRow("no such column") << qint64(1) << "Nope" << false << "";
}

void TestCDatabase::readWriteText()
{
    QFETCH(qint64, record);
    QFETCH(QString, column);
    QFETCH(bool, readOk);
    QFETCH(QString, before);
    const std::shared_ptr<hln::CTable> table = m_db->openTable(QStringLiteral("CmdStateTable"));
    QVERIFY(table);
    QString text = QStringLiteral("untouched");
    QCOMPARE(table->getText(record, column, text), readOk);
    QCOMPARE(text, readOk ? before : QStringLiteral("untouched"));

    const QString written = QStringLiteral("k=值|x=|");
    QCOMPARE(table->setText(record, column, written), readOk);
    if (!readOk)
        return;
    QVERIFY(table->getText(record, column, text));
    QCOMPARE(text, written);
    // The other record with the same name is untouched.
    if (record == 1) {
        QVERIFY(table->getText(3, column, text));
        QCOMPARE(text, QStringLiteral("second|"));
    }
}

void TestCDatabase::query_data()
{
    QTest::addColumn<QString>("column");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QVector<qint64>>("expected");
    QTest::newRow("two integer matches in order") << "CalcItemID" << QVariant(22) << QVector<qint64> { 1, 3 };
    QTest::newRow("number given as text matches by affinity")
        << "CalcItemID" << QVariant(QStringLiteral("22")) << QVector<qint64> { 1, 3 };
    QTest::newRow("one text match") << "CalcItemValue" << QVariant(QStringLiteral("0;0"))
                                    << QVector<qint64> { 1 };
    QTest::newRow("no match") << "CalcItemID" << QVariant(5) << QVector<qint64> {};
    QTest::newRow("missing column") << "Missing" << QVariant(22) << QVector<qint64> {};
}

void TestCDatabase::query()
{
    QFETCH(QString, column);
    QFETCH(QVariant, value);
    QFETCH(QVector<qint64>, expected);
    const std::shared_ptr<hln::CTable> table = m_db->openTable(QStringLiteral("CalcItem"));
    QVERIFY(table);
    QCOMPARE(table->query(column, value), expected);
}

void TestCDatabase::connectionPerInstance()
{
    QString firstName;
    {
        hln::CDatabase other;
        QVERIFY(other.open(m_file));
        firstName = other.connectionName();
        QVERIFY(firstName != m_db->connectionName());
        QVERIFY(QSqlDatabase::contains(firstName));
        // Both connections see the same file.
        QVERIFY(other.openTable(QStringLiteral("CalcItem")));
    }
    QVERIFY(!QSqlDatabase::contains(firstName));
    QVERIFY(m_db->openTable(QStringLiteral("CalcItem")));
}

void TestCDatabase::openFailsForUnreachableFile()
{
    hln::CDatabase db;
    QVERIFY(!db.open(m_dir.filePath(QStringLiteral("no/such/dir/x.db"))));
    QVERIFY(!db.lastError().isEmpty());
    QVERIFY(!db.isOpen());
    QVERIFY(!db.openTable(QStringLiteral("CalcItem")));
    QCOMPARE(db.lastError(), QStringLiteral("database is not open"));
}

QTEST_GUILESS_MAIN(TestCDatabase)
#include "tst_cdatabase.moc"
