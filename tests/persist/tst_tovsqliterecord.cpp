#include "odbctestenv.h"

#include <hyntranslations.h>
#include <tovdbtranslations.h>
#include <tovsqldbsession.h>
#include <tovsqliterecordqt.h>
#include <tovsqliterecordraw.h>

#include <QSqlQuery>
#include <QTranslator>
#include <QtTest>

namespace {

// Translates from a fixed table, by context.
class MapTranslator : public QTranslator
{
public:
    QHash<QPair<QString, QString>, QString> texts;

    QString translate(const char *context, const char *sourceText, const char *, int) const override
    {
        return texts.value({ QString::fromUtf8(context), QString::fromUtf8(sourceText) });
    }
    bool isEmpty() const override { return false; }
};

const char *driverName(int type)
{
    return type == TovSqlDBSession::Access ? "QODBC" : "QSQLITE";
}

} // namespace

// The translation service is process-wide and loaded once: the slots that need it inactive run
// before the one that activates it (slots run in declaration order).
class TestTovSqliteRecord : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void getters_data();
    void getters();
    void stringsTranslatedByContext_data();
    void stringsTranslatedByContext();
    void rawRecordHoldsItsRow_data();
    void rawRecordHoldsItsRow();

private:
    void addDriverRows(const char *caseName);
    bool openFilled(int type, std::unique_ptr<TovSqlDBSession> &session);

    OdbcTestEnv m_odbc;
    bool m_odbcAvailable = false;
    MapTranslator m_translator;
    std::unique_ptr<QTemporaryDir> m_dir;
};

#define TOV_FETCH_DRIVER()                                                                                   \
    QFETCH(int, type);                                                                                       \
    if (type == TovSqlDBSession::Access && !m_odbcAvailable)                                                 \
    QSKIP("SQLite ODBC driver not installed")

void TestTovSqliteRecord::initTestCase()
{
    m_odbcAvailable = m_odbc.setUp();
    m_translator.texts.insert(
        { QStringLiteral("Proj.v2_Items_Name"), QStringLiteral("路缘石") }, QStringLiteral("Kerb"));
    m_translator.texts.insert(
        { QStringLiteral("Proj.v2_Items_Note"), QStringLiteral("备注") }, QStringLiteral("Note"));
    m_translator.texts.insert(
        { QStringLiteral("Proj_Items_Note"), QStringLiteral("备注") }, QStringLiteral("Note"));
    QVERIFY(QCoreApplication::installTranslator(&m_translator));
}

void TestTovSqliteRecord::cleanupTestCase()
{
    QCoreApplication::removeTranslator(&m_translator);
    HynTranslations::getInstance()->setCurrentLanguageId(0);
}

void TestTovSqliteRecord::addDriverRows(const char *caseName)
{
    for (int type : { int(TovSqlDBSession::SQLite), int(TovSqlDBSession::Access) })
        QTest::addRow("%s: %s", driverName(type), caseName) << type;
}

// A fresh "Proj.v2.db" with table Items and two rows.
bool TestTovSqliteRecord::openFilled(int type, std::unique_ptr<TovSqlDBSession> &session)
{
    m_dir = std::make_unique<QTemporaryDir>();
    session = std::make_unique<TovSqlDBSession>(
        m_dir->filePath(QStringLiteral("Proj.v2.db")), TovSqlDBSession::DatabaseType(type));
    if (!session->open())
        return false;
    QSqlQuery query(session->database());
    return session->execSQL(query,
               QStringLiteral("CREATE TABLE Items (ID INTEGER PRIMARY KEY, Name TEXT, Note TEXT, "
                              "Qty REAL, Flag INTEGER, Data BLOB, Empty TEXT)"))
        && session->insertData(query, QStringLiteral("Items"),
            { QStringLiteral("ID"), QStringLiteral("Name"), QStringLiteral("Note"), QStringLiteral("Qty"),
                QStringLiteral("Flag"), QStringLiteral("Data") },
            { 7, QStringLiteral("路缘石"), QStringLiteral("备注"), 2.75, 1, QByteArray("\x01\x02", 2) })
        && session->insertData(query, QStringLiteral("Items"),
            { QStringLiteral("ID"), QStringLiteral("Name") }, { 8, QStringLiteral("unknown") });
}

void TestTovSqliteRecord::getters_data()
{
    QTest::addColumn<int>("type");
    addDriverRows("typed getters by column name, texts untranslated while the service is inactive");
}

void TestTovSqliteRecord::getters()
{
    TOV_FETCH_DRIVER();
    HynTranslations::getInstance()->setCurrentLanguageId(0);
    QVERIFY(
        TovDBTranslations::getInstance()->loadConfig(QFINDTESTDATA("../data/persist/record_contexts.xml")));
    QVERIFY(!TovDBTranslations::getInstance()->isNeedTranslate());
    std::unique_ptr<TovSqlDBSession> session;
    QVERIFY2(openFilled(type, session), qPrintable(session->lastError().text()));
    QSqlQuery query(session->database());
    QVERIFY(session->queryData(query, QStringLiteral("Items"), QStringLiteral("ID >= 7 ORDER BY ID")));
    QVERIFY(query.next());
    const TovSqliteRecordQt record(session->fileName(), QStringLiteral("Items"), query);
    const ITovSqliteRecord &r = record;
    QCOMPARE(r.getInt(QStringLiteral("ID")), 7);
    QCOMPARE(r.getInt(QStringLiteral("id")), 7); // names are case-insensitive
    QCOMPARE(r.getDouble(QStringLiteral("Qty")), 2.75);
    QCOMPARE(r.getFloat(QStringLiteral("Qty")), 2.75f);
    QCOMPARE(r.getBool(QStringLiteral("Flag")), true);
    QCOMPARE(r.getByteArray(QStringLiteral("Data")), QByteArray("\x01\x02", 2));
    QCOMPARE(r.getString(QStringLiteral("Name")), QStringLiteral("路缘石"));
    QCOMPARE(r.getVariant(QStringLiteral("Name")), QVariant(QStringLiteral("路缘石")));
    QVERIFY(r.getVariant(QStringLiteral("Empty")).isNull());
    QCOMPARE(r.getString(QStringLiteral("Empty")), QString());
    // An unknown column reads as nothing, converted.
    QVERIFY(!r.getVariant(QStringLiteral("Missing")).isValid());
    QCOMPARE(r.getInt(QStringLiteral("Missing")), 0);
    QCOMPARE(r.getString(QStringLiteral("Missing")), QString());

    // The record shares the caller's query: it follows it to the next row.
    const TovSqliteRecordQt copy = record;
    QVERIFY(query.next());
    QCOMPARE(copy.getInt(QStringLiteral("ID")), 8);
    TovSqliteRecordQt moved(std::move(const_cast<TovSqliteRecordQt &>(copy)));
    QCOMPARE(moved.getString(QStringLiteral("Name")), QStringLiteral("unknown"));
}

void TestTovSqliteRecord::stringsTranslatedByContext_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<qint64>("id");
    QTest::addColumn<QString>("column");
    QTest::addColumn<QString>("expected");
    for (int type : { int(TovSqlDBSession::SQLite), int(TovSqlDBSession::Access) }) {
        const char *d = driverName(type);
        QTest::addRow("%s: context of complete base name, table and column", d)
            << type << qint64(7) << "Name" << QStringLiteral("Kerb");
        QTest::addRow("%s: text unknown to the translator stays", d)
            << type << qint64(8) << "Name" << QStringLiteral("unknown");
        QTest::addRow("%s: column without a context stays", d)
            << type << qint64(7) << "Note" << QStringLiteral("备注");
        QTest::addRow("%s: context taken from the name as asked", d)
            << type << qint64(7) << "name" << QStringLiteral("路缘石");
    }
}

void TestTovSqliteRecord::stringsTranslatedByContext()
{
    TOV_FETCH_DRIVER();
    QFETCH(qint64, id);
    QFETCH(QString, column);
    QFETCH(QString, expected);
    HynTranslations::getInstance()->setCurrentLanguageId(1);
    QVERIFY(
        TovDBTranslations::getInstance()->loadConfig(QFINDTESTDATA("../data/persist/record_contexts.xml")));
    QVERIFY(TovDBTranslations::getInstance()->isNeedTranslate());
    std::unique_ptr<TovSqlDBSession> session;
    QVERIFY2(openFilled(type, session), qPrintable(session->lastError().text()));
    QSqlQuery query(session->database());
    QVERIFY(session->queryData(query, QStringLiteral("Items"), QStringLiteral("ID = %1").arg(id)));
    QVERIFY(query.next());
    const TovSqliteRecordQt record(session->fileName(), QStringLiteral("Items"), query);
    QCOMPARE(record.getString(column), expected);
}

void TestTovSqliteRecord::rawRecordHoldsItsRow_data()
{
    QTest::addColumn<int>("type");
    addDriverRows("row copied out of the query, never translated");
}

void TestTovSqliteRecord::rawRecordHoldsItsRow()
{
    TOV_FETCH_DRIVER();
    QVERIFY(TovDBTranslations::getInstance()->isNeedTranslate());
    std::unique_ptr<TovSqlDBSession> session;
    QVERIFY2(openFilled(type, session), qPrintable(session->lastError().text()));
    QSqlQuery query(session->database());
    QVERIFY(session->queryData(query, QStringLiteral("Items"), QStringLiteral("1 = 1 ORDER BY ID")));
    QVERIFY(TovSqliteRecordRaw::fromQuery(query).names().isEmpty()); // not on a row yet
    QVERIFY(query.next());
    TovSqliteRecordRaw raw = TovSqliteRecordRaw::fromQuery(query);
    QVERIFY(query.next());
    QVERIFY(!query.next());
    QCOMPARE(raw.names(), (QStringList { "ID", "Name", "Note", "Qty", "Flag", "Data", "Empty" }));
    QCOMPARE(raw.getInt(QStringLiteral("id")), 7);
    QCOMPARE(raw.getString(QStringLiteral("Name")), QStringLiteral("路缘石"));
    QCOMPARE(raw.getDouble(QStringLiteral("QTY")), 2.75);
    QCOMPARE(raw.getByteArray(QStringLiteral("Data")), QByteArray("\x01\x02", 2));

    TovSqliteRecordRaw copy = raw;
    copy.setValue(QStringLiteral("NAME"), QStringLiteral("新"));
    copy.setValue(QStringLiteral("Extra"), true);
    QCOMPARE(raw.getString(QStringLiteral("Name")), QStringLiteral("路缘石"));
    QCOMPARE(copy.getString(QStringLiteral("name")), QStringLiteral("新"));
    QCOMPARE(copy.names().size(), 8);
    QVERIFY(copy.getBool(QStringLiteral("extra")));
    const TovSqliteRecordRaw moved(std::move(copy));
    QVERIFY(moved.contains(QStringLiteral("EXTRA")));
    QVERIFY(!moved.getVariant(QStringLiteral("Missing")).isValid());
    QCOMPARE(TovSqliteRecordRaw().getFloat(QStringLiteral("x")), 0.0f);
}

QTEST_GUILESS_MAIN(TestTovSqliteRecord)
#include "tst_tovsqliterecord.moc"
