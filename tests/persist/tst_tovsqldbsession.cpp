#include "odbctestenv.h"

#include <tovsqldbsession.h>
#include <tovtestutil.h>

#include <QSqlQuery>
#include <QSqlRecord>
#include <QtTest>

// Every database test runs once over "QSQLITE" and once over "QODBC" with the SQLite ODBC
// driver: the same body, rows prefixed by the driver.
class TestTovSqlDBSession : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void statements_data();
    void statements();
    void connectionTemplate();

    void openAndPragmas_data();
    void openAndPragmas();
    void insertAndQuery_data();
    void insertAndQuery();
    void updateSaveDelete_data();
    void updateSaveDelete();
    void repeatedInsertStoresEachValue_data();
    void repeatedInsertStoresEachValue();
    void preparedStatements_data();
    void preparedStatements();
    void failures_data();
    void failures();
    void importRows_data();
    void importRows();
    void transactions_data();
    void transactions();
    void queryMaxValue_data();
    void queryMaxValue();

private:
    template<typename... Values>
    void addDriverRow(const char *caseName, const Values &...values);
    bool skipUnavailable(int type);
    std::unique_ptr<TovSqlDBSession> openItems(int type);
    int countRows(TovSqlDBSession &session, const QString &where = QString());

    OdbcTestEnv m_odbc;
    bool m_odbcAvailable = false;
    QTemporaryDir m_dir;
    QString m_file;
    int m_fileCounter = 0;
};

namespace {

const char *driverName(int type)
{
    return type == TovSqlDBSession::Access ? "QODBC" : "QSQLITE";
}

const int driverTypes[] = { TovSqlDBSession::SQLite, TovSqlDBSession::Access };

// Runs sql and fails the test with the session's error when it does not succeed.
#define TOV_EXEC(session, query, sql)                                                                        \
    QVERIFY2((session).execSQL((query), (sql)), qPrintable((session).lastError().text() + " in: " + (sql)))

} // namespace

void TestTovSqlDBSession::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_odbcAvailable = m_odbc.setUp();
    if (!m_odbcAvailable)
        qWarning("SQLite ODBC driver not found: the QODBC rows are skipped");
}

void TestTovSqlDBSession::init()
{
    m_file = m_dir.filePath(QStringLiteral("test%1.db").arg(++m_fileCounter));
}

void TestTovSqlDBSession::cleanup()
{
    QFile::remove(m_file);
}

template<typename... Values>
void TestTovSqlDBSession::addDriverRow(const char *caseName, const Values &...values)
{
    for (int type : driverTypes)
        ((QTest::addRow("%s: %s", driverName(type), caseName) << type) << ... << values);
}

bool TestTovSqlDBSession::skipUnavailable(int type)
{
    return type == TovSqlDBSession::Access && !m_odbcAvailable;
}

#define TOV_FETCH_DRIVER()                                                                                   \
    QFETCH(int, type);                                                                                       \
    if (skipUnavailable(type))                                                                               \
    QSKIP("SQLite ODBC driver not installed")

std::unique_ptr<TovSqlDBSession> TestTovSqlDBSession::openItems(int type)
{
    auto session = std::make_unique<TovSqlDBSession>(m_file, TovSqlDBSession::DatabaseType(type));
    if (!session->open()) {
        QTest::qFail(
            qPrintable(QLatin1String("open failed: ") + session->lastError().text()), __FILE__, __LINE__);
        return nullptr;
    }
    QSqlQuery query(session->database());
    if (!session->execSQL(query,
            QStringLiteral("CREATE TABLE Items (ID INTEGER PRIMARY KEY, Name TEXT, Qty REAL, "
                           "Code TEXT UNIQUE)"))) {
        QTest::qFail(qPrintable(session->lastError().text()), __FILE__, __LINE__);
        return nullptr;
    }
    return session;
}

int TestTovSqlDBSession::countRows(TovSqlDBSession &session, const QString &where)
{
    QSqlQuery query(session.database());
    if (!session.execSQL(query, QLatin1String("SELECT COUNT(*) FROM Items") + where) || !query.next())
        return -1;
    return query.value(0).toInt();
}

void TestTovSqlDBSession::statements_data()
{
    QTest::addColumn<QString>("statement");
    QTest::addColumn<QString>("expected");
    const TovSqlDBSession s(QStringLiteral("unused.db"), TovSqlDBSession::SQLite);
    const QString t = QStringLiteral("T");
    const QStringList ab { QStringLiteral("a"), QStringLiteral("b") };
    const QStringList none;

    QTest::newRow("condition of two fields")
        << s.sqlStatement(TovSqlDBSession::Condition, t, ab) << "WHERE a = ? AND b = ?";
    QTest::newRow("condition of no field is empty")
        << s.sqlStatement(TovSqlDBSession::Condition, t, none) << "";
    QTest::newRow("select of two fields")
        << s.sqlStatement(TovSqlDBSession::Select, t, ab) << "SELECT a, b FROM T";
    QTest::newRow("select of no field selects star")
        << s.sqlStatement(TovSqlDBSession::Select, t, none) << "SELECT * FROM T";
    QTest::newRow("insert of two fields")
        << s.sqlStatement(TovSqlDBSession::Insert, t, ab) << "INSERT INTO T (a, b) VALUES (?, ?)";
    QTest::newRow("insert of no field is empty") << s.insertSqlStatement(t, none) << "";
    QTest::newRow("update without spaces around =")
        << s.sqlStatement(TovSqlDBSession::Update, t, ab) << "UPDATE T SET a=?, b=?";
    QTest::newRow("update of no field is empty") << s.sqlStatement(TovSqlDBSession::Update, t, none) << "";
    QTest::newRow("delete with where")
        << s.deleteSqlStatement(t, { QStringLiteral("ID") }) << "DELETE FROM T WHERE ID = ?";
    QTest::newRow("update with where")
        << s.updateSqlStatement(t, ab, { QStringLiteral("ID") }) << "UPDATE T SET a=?, b=? WHERE ID = ?";
    QTest::newRow("update without set fields stays empty despite where")
        << s.updateSqlStatement(t, none, { QStringLiteral("ID") }) << "";
    QTest::newRow("select list where and order") << s.selectSqlStatement(t, { QStringLiteral("a") }, ab,
        QStringLiteral("a DESC")) << "SELECT a FROM T WHERE a = ? AND b = ? Order By a DESC";
    QTest::newRow("select list with empty where and order is the select alone")
        << s.selectSqlStatement(t, ab, none, QString()) << "SELECT a, b FROM T";
    QTest::newRow("select with condition text")
        << s.selectSqlStatement(t, none, QStringLiteral("a > 1"), QString()) << "SELECT * FROM T Where a > 1";
    QTest::newRow("select with empty condition text and order")
        << s.selectSqlStatement(t, ab, QString(), QStringLiteral("ID")) << "SELECT a, b FROM T Order By ID";
}

void TestTovSqlDBSession::statements()
{
    QFETCH(QString, statement);
    QFETCH(QString, expected);
    QCOMPARE(statement, expected);
    QCOMPARE(statement.isNull(), expected.isEmpty());
}

void TestTovSqlDBSession::connectionTemplate()
{
    const QString access
        = QStringLiteral("DRIVER={Microsoft Access Driver (*.mdb, *.accdb)};FIL={MS Access};dbq=%1");
    const QByteArray savedEnvironment = qgetenv("TOV_ODBC_CONNECTION_TEMPLATE");
    TovSqlDBSession::setOdbcConnectionTemplate(QString());
    qunsetenv("TOV_ODBC_CONNECTION_TEMPLATE");
    QCOMPARE(TovSqlDBSession::odbcConnectionTemplate(), access);
    qputenv("TOV_ODBC_CONNECTION_TEMPLATE", "DRIVER={X};Database=%1");
    QCOMPARE(TovSqlDBSession::odbcConnectionTemplate(), QStringLiteral("DRIVER={X};Database=%1"));
    TovSqlDBSession::setOdbcConnectionTemplate(QStringLiteral("DRIVER={Y};dbq=%1"));
    QCOMPARE(TovSqlDBSession::odbcConnectionTemplate(), QStringLiteral("DRIVER={Y};dbq=%1"));
    TovSqlDBSession::setOdbcConnectionTemplate(QString());
    QCOMPARE(TovSqlDBSession::odbcConnectionTemplate(), QStringLiteral("DRIVER={X};Database=%1"));

    if (savedEnvironment.isNull())
        qunsetenv("TOV_ODBC_CONNECTION_TEMPLATE");
    else
        qputenv("TOV_ODBC_CONNECTION_TEMPLATE", savedEnvironment);
    if (m_odbcAvailable)
        TovSqlDBSession::setOdbcConnectionTemplate(OdbcTestEnv::connectionTemplate());
}

void TestTovSqlDBSession::openAndPragmas_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("foreignKeys");
    // The pragmas belong to SQLite sessions; an ODBC session leaves the driver's defaults.
    QTest::newRow("QSQLITE: foreign keys on, synchronous off; missing folder fails")
        << int(TovSqlDBSession::SQLite) << 1;
    QTest::newRow("QODBC: no pragmas on open; missing folder fails") << int(TovSqlDBSession::Access) << 0;
}

void TestTovSqlDBSession::openAndPragmas()
{
    TOV_FETCH_DRIVER();
    QFETCH(int, foreignKeys);
    TovSqlDBSession session(m_file, TovSqlDBSession::DatabaseType(type));
    QVERIFY2(session.open(), qPrintable(session.lastError().text()));
    QVERIFY(session.isOpen());
    QCOMPARE(session.lastError().type(), QSqlError::NoError);

    auto pragma = [&session](const char *name) {
        QSqlQuery query(session.database());
        return session.execSQL(query, QStringLiteral("PRAGMA %1").arg(QLatin1String(name))) && query.next()
            ? query.value(0).toInt()
            : -1;
    };
    QCOMPARE(pragma("foreign_keys"), foreignKeys);
    if (type == TovSqlDBSession::SQLite)
        QCOMPARE(pragma("synchronous"), 0);
    session.close_foreignKeys();
    QCOMPARE(pragma("foreign_keys"), 0);
    session.open_foreignKeys();
    QCOMPARE(pragma("foreign_keys"), 1);

    session.close();
    QVERIFY(!session.isOpen());

    // A file in a missing directory cannot be opened: the error goes to the debug output.
    DebugCapture capture;
    TovSqlDBSession missing(
        m_dir.filePath(QStringLiteral("missing/dir/x.db")), TovSqlDBSession::DatabaseType(type));
    QVERIFY(!missing.open());
    QVERIFY(!missing.isOpen());
    QVERIFY(missing.lastError().type() != QSqlError::NoError);
    QCOMPARE(capture.lines(), QStringList { missing.lastError().text() });
}

void TestTovSqlDBSession::insertAndQuery_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("name");
    QTest::addColumn<double>("qty");
    addDriverRow("ascii text", QStringLiteral("kerb"), 2.5);
    addDriverRow("chinese text", QStringLiteral("路缘石"), -0.125);
    addDriverRow("empty text", QStringLiteral(""), 0.0);
}

void TestTovSqlDBSession::insertAndQuery()
{
    TOV_FETCH_DRIVER();
    QFETCH(QString, name);
    QFETCH(double, qty);
    auto session = openItems(type);
    QVERIFY(session);
    session->setIsOutputSql(true);
    const QStringList fields { QStringLiteral("Name"), QStringLiteral("Qty"), QStringLiteral("Code") };
    DebugCapture capture;
    {
        QSqlQuery query(session->database());
        QVERIFY2(
            session->insertData(query, QStringLiteral("Items"), fields, { name, qty, QStringLiteral("A") }),
            qPrintable(session->lastError().text()));
        QVERIFY2(session->insertData(query, QStringLiteral("Items"), fields,
                     { QStringLiteral("other"), 1.0, QStringLiteral("B") }),
            qPrintable(session->lastError().text()));
    }
    const QString insert = QStringLiteral("INSERT INTO Items (Name, Qty, Code) VALUES (?, ?, ?)");
    QCOMPARE(capture.lines(),
        (QStringList { insert, QStringLiteral("lastInsertId:1"), insert, QStringLiteral("lastInsertId:2") }));

    capture.clear();
    QSqlQuery query(session->database());
    QVERIFY(session->queryData(query, QStringLiteral("Items"),
        { QStringLiteral("ID"), QStringLiteral("Name"), QStringLiteral("Qty") }, { QStringLiteral("Code") },
        { QStringLiteral("A") }, QStringLiteral("ID")));
    QCOMPARE(capture.lines(),
        QStringList { QStringLiteral("SELECT ID, Name, Qty FROM Items WHERE Code = ? Order By ID") });
    QVERIFY(query.next());
    QCOMPARE(query.value(0).toInt(), 1);
    QCOMPARE(query.value(1).toString(), name);
    QCOMPARE(query.value(2).toDouble(), qty);
    QVERIFY(!query.next());

    session->setIsOutputSql(false);
    capture.clear();
    QVERIFY(session->queryData(query, QStringLiteral("Items"), QStringLiteral("Qty >= 1 ORDER BY ID DESC")));
    QVERIFY(query.next());
    QCOMPARE(query.record().count(), 4);
    QCOMPARE(query.value(QStringLiteral("Code")).toString(), QStringLiteral("B"));
    QVERIFY(capture.lines().isEmpty());
}

void TestTovSqlDBSession::updateSaveDelete_data()
{
    QTest::addColumn<int>("type");
    addDriverRow("rows changed by key");
}

void TestTovSqlDBSession::updateSaveDelete()
{
    TOV_FETCH_DRIVER();
    auto session = openItems(type);
    QVERIFY(session);
    const QString items = QStringLiteral("Items");
    const QStringList id { QStringLiteral("ID") };
    QSqlQuery query(session->database());
    QVERIFY(session->saveData(query, true, items, { QStringLiteral("ID"), QStringLiteral("Name") }, id,
        { 5, QStringLiteral("a") }));
    QVERIFY(session->saveData(query, true, items, { QStringLiteral("ID"), QStringLiteral("Name") }, id,
        { 6, QStringLiteral("b") }));
    QVERIFY(session->saveData(query, false, items, { QStringLiteral("Name"), QStringLiteral("Qty") }, id,
        { QStringLiteral("桥"), 3.0, 5 }));
    QCOMPARE(countRows(*session, QStringLiteral(" WHERE ID = 5 AND Name = '桥' AND Qty = 3")), 1);
    QCOMPARE(countRows(*session, QStringLiteral(" WHERE ID = 6 AND Name = 'b'")), 1);

    QVERIFY(session->updateData(query, items, { QStringLiteral("Qty") }, QStringList(), { 7.0 }));
    QCOMPARE(countRows(*session, QStringLiteral(" WHERE Qty = 7")), 2);

    QVERIFY(session->deleteData(query, items, id, { 6 }));
    QCOMPARE(countRows(*session), 1);
    QVERIFY(session->deleteData(query, items, QStringList(), {}));
    QCOMPARE(countRows(*session), 0);
}

void TestTovSqlDBSession::repeatedInsertStoresEachValue_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QVariant>("first");
    QTest::addColumn<QVariant>("second");
    QTest::addColumn<QString>("stored");
    addDriverRow("same text again", QVariant(QStringLiteral("路")), QVariant(QStringLiteral("路")),
        QStringLiteral("text '路'"));
    addDriverRow("same integer again", QVariant(7), QVariant(7), QStringLiteral("integer 7"));
    addDriverRow("same real again", QVariant(0.5), QVariant(0.5), QStringLiteral("real 0.5"));
    addDriverRow("other text", QVariant(QStringLiteral("a")), QVariant(QStringLiteral("b")),
        QStringLiteral("text 'b'"));
    addDriverRow("null text after empty text", QVariant(QLatin1String("")), QVariant(QString()),
        QStringLiteral("null NULL"));
    addDriverRow("empty text after null text", QVariant(QString()), QVariant(QLatin1String("")),
        QStringLiteral("text ''"));
    addDriverRow(
        "text of the integer before", QVariant(7), QVariant(QStringLiteral("7")), QStringLiteral("text '7'"));
    addDriverRow("integer of the text before", QVariant(QStringLiteral("7")), QVariant(7),
        QStringLiteral("integer 7"));
    addDriverRow("real equal to the integer before", QVariant(2), QVariant(2.0), QStringLiteral("real 2.0"));
    addDriverRow(
        "null integer after zero", QVariant(0), QVariant(QVariant::Int), QStringLiteral("null NULL"));
    addDriverRow(
        "zero after null integer", QVariant(QVariant::Int), QVariant(0), QStringLiteral("integer 0"));
}

void TestTovSqlDBSession::repeatedInsertStoresEachValue()
{
    TOV_FETCH_DRIVER();
    QFETCH(QVariant, first);
    QFETCH(QVariant, second);
    QFETCH(QString, stored);
    auto session = openItems(type);
    QVERIFY(session);
    QSqlQuery query(session->database());
    // No declared type: the column keeps the type each value was bound with.
    TOV_EXEC(*session, query, QStringLiteral("CREATE TABLE Kept (k INTEGER, v)"));
    const QStringList fields { QStringLiteral("k"), QStringLiteral("v") };
    QVERIFY2(session->insertData(query, QStringLiteral("Kept"), fields, { 1, first }),
        qPrintable(session->lastError().text()));
    QVERIFY2(session->insertData(query, QStringLiteral("Kept"), fields, { 2, second }),
        qPrintable(session->lastError().text()));
    QSqlQuery check(session->database());
    TOV_EXEC(*session, check, QStringLiteral("SELECT k, typeof(v) || ' ' || quote(v) FROM Kept ORDER BY k"));
    QVERIFY(check.next() && check.next());
    QCOMPARE(check.value(0).toInt(), 2);
    QCOMPARE(check.value(1).toString(), stored);
}

void TestTovSqlDBSession::preparedStatements_data()
{
    QTest::addColumn<int>("type");
    addDriverRow("reused while the text stays, redone when it changes or failed");
}

void TestTovSqlDBSession::preparedStatements()
{
    TOV_FETCH_DRIVER();
    auto session = openItems(type);
    QVERIFY(session);
    {
        QSqlQuery query(session->database());
        const QString insert = QStringLiteral("INSERT INTO Items (Name, Code) VALUES (?, ?)");
        // A fresh prepare clears the query's bound values; a reused statement still holds the last ones.
        QList<int> boundBefore;
        int counter = 0;
        auto binder = [&] {
            boundBefore.append(query.boundValues().size());
            query.addBindValue(QStringLiteral("n%1").arg(counter));
            query.addBindValue(QStringLiteral("c%1").arg(counter++));
        };
        QVERIFY(session->execSQL(query, insert, binder, true));
        QVERIFY(session->execSQL(query, insert, binder, true));
        QVERIFY(session->execSQL(query, insert, binder, true));
        const QString update = QStringLiteral("UPDATE Items SET Name=? WHERE Code = ?");
        QVERIFY(session->execSQL(query, update, binder, true));
        QCOMPARE(boundBefore, (QList<int> { 0, 2, 2, 0 }));
        QCOMPARE(query.lastQuery(), update);
        QCOMPARE(countRows(*session), 3);
        QCOMPARE(countRows(*session, QStringLiteral(" WHERE Code = 'c3'")), 0);
    }
    {
        QSqlQuery create(session->database());
        TOV_EXEC(*session, create, QStringLiteral("CREATE TABLE Other (Code TEXT)"));
        session->setIsOutputSql(true);
        QStringList fields { QStringLiteral("Name") };
        DebugCapture capture;
        QSqlQuery query(session->database());
        QVERIFY(session->insertData(query, QStringLiteral("Items"), fields, { QStringLiteral("a") }));
        fields[0] = QStringLiteral("Code");
        QVERIFY(session->insertData(query, QStringLiteral("Items"), fields, { QStringLiteral("b") }));
        QVERIFY(session->insertData(query, QStringLiteral("Other"), fields, { QStringLiteral("c") }));
        QVERIFY(session->insertData(query, QStringLiteral("Items"), fields, { QStringLiteral("d") }));
        QStringList statements = capture.lines().filter(QStringLiteral("INSERT"));
        QCOMPARE(statements,
            QStringList({ "INSERT INTO Items (Name) VALUES (?)", "INSERT INTO Items (Code) VALUES (?)",
                "INSERT INTO Other (Code) VALUES (?)", "INSERT INTO Items (Code) VALUES (?)" }));
        QCOMPARE(countRows(*session, QStringLiteral(" WHERE Name = 'a' OR Code IN ('b', 'd')")), 3);
        session->setIsOutputSql(false);
    }
    // A statement that failed to prepare is prepared again on the next call.
    QSqlQuery retried(session->database());
    DebugCapture capture;
    QVERIFY(!session->insertData(retried, QStringLiteral("Later"), { QStringLiteral("a") }, { 1 }));
    QCOMPARE(capture.lines().size(), 1);
    QSqlQuery other(session->database());
    TOV_EXEC(*session, other, QStringLiteral("CREATE TABLE Later (a INTEGER)"));
    QVERIFY2(session->insertData(retried, QStringLiteral("Later"), { QStringLiteral("a") }, { 1 }),
        qPrintable(session->lastError().text()));
    QVERIFY(session->execSQL(other, QStringLiteral("SELECT a FROM Later")) && other.next());
    QCOMPARE(other.value(0).toInt(), 1);
}

void TestTovSqlDBSession::failures_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("errorPart");
    addDriverRow("empty statement", 0, QStringLiteral("empty statement"));
    addDriverRow("update without set fields", 1, QStringLiteral("empty statement"));
    addDriverRow("insert into a missing table", 2, QStringLiteral("no such table"));
    addDriverRow("direct execution of a missing table", 3, QStringLiteral("no such table"));
    addDriverRow("unique violation on execution", 4, QStringLiteral("UNIQUE"));
    addDriverRow("query of a missing column", 5, QStringLiteral("no such column"));
}

void TestTovSqlDBSession::failures()
{
    TOV_FETCH_DRIVER();
    QFETCH(int, kind);
    QFETCH(QString, errorPart);
    auto session = openItems(type);
    QVERIFY(session);
    QSqlQuery query(session->database());
    QVERIFY(session->insertData(
        query, QStringLiteral("Items"), { QStringLiteral("Code") }, { QStringLiteral("A") }));
    session->setIsOutputSql(true);

    DebugCapture capture;
    bool ok = true;
    QStringList expectedSql;
    switch (kind) {
    case 0:
        ok = session->execSQL(
            query, QString(), [] {}, true);
        break;
    case 1:
        ok = session->updateData(
            query, QStringLiteral("Items"), QStringList(), { QStringLiteral("ID") }, { 1 });
        break;
    case 2:
        ok = session->insertData(query, QStringLiteral("Nowhere"), { QStringLiteral("a") }, { 1 });
        if (type == TovSqlDBSession::Access) // this driver defers the table check to execution
            expectedSql << QStringLiteral("INSERT INTO Nowhere (a) VALUES (?)");
        break;
    case 3:
        ok = session->queryData(query, QStringLiteral("Nowhere"), QString());
        expectedSql << QStringLiteral("SELECT * FROM Nowhere");
        break;
    case 4:
        ok = session->insertData(
            query, QStringLiteral("Items"), { QStringLiteral("Code") }, { QStringLiteral("A") });
        expectedSql << QStringLiteral("INSERT INTO Items (Code) VALUES (?)");
        break;
    case 5:
        ok = session->queryData(
            query, QStringLiteral("Items"), { QStringLiteral("Missing") }, QStringList(), {});
        break;
    }
    QVERIFY(!ok);
    const QSqlError error = session->lastError();
    QVERIFY(error.type() != QSqlError::NoError);
    QVERIFY2(error.text().contains(errorPart, Qt::CaseInsensitive), qPrintable(error.text()));
    QCOMPARE(capture.lines(), expectedSql + QStringList { error.text() });
    if (kind <= 1)
        QCOMPARE(error.text(), QStringLiteral("empty statement"));
}

void TestTovSqlDBSession::importRows_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QList<QStringList>>("rows");
    QTest::addColumn<int>("form"); // 0 list, 1 list with a converter, 2 row source
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("error"); // empty: success; "*": the driver's error

    QList<QStringList> many;
    for (int i = 0; i < 1000; ++i)
        many.append({ QStringLiteral("码%1").arg(i), QStringLiteral("%1.5").arg(i) });
    QList<QStringList> duplicate = many.mid(0, 300);
    duplicate[250][0] = duplicate[1][0];
    addDriverRow("thousand rows from a list", many, 0, 1000, QString());
    addDriverRow("thousand rows from a source", many, 2, 1000, QString());
    addDriverRow("no rows is success", QList<QStringList>(), 2, 0, QString());
    addDriverRow("short row rolls back every row",
        QList<QStringList> { { "a", "1" }, { "b", "2" }, { "c" }, { "d", "4" } }, 0, 0,
        QStringLiteral("row 3 has 1 values for 2 fields"));
    addDriverRow("converter rejecting a row rolls back", QList<QStringList> { { "a", "1" }, { "b", "bad" } },
        1, 0, QStringLiteral("row 2 rejected"));
    addDriverRow(
        "converter binds typed values", QList<QStringList> { { "a", "1.5" }, { "b", "2" } }, 1, 2, QString());
    addDriverRow("duplicate key midway rolls back every row", duplicate, 2, 0, QStringLiteral("*"));
}

void TestTovSqlDBSession::importRows()
{
    TOV_FETCH_DRIVER();
    QFETCH(QList<QStringList>, rows);
    QFETCH(int, form);
    QFETCH(int, count);
    QFETCH(QString, error);
    auto session = openItems(type);
    QVERIFY(session);
    const QStringList fields { QStringLiteral("Code"), QStringLiteral("Qty") };
    QSqlQuery query(session->database());
    DebugCapture capture;
    bool ok = false;
    if (form == 2) {
        int next = 0;
        ok = session->importData(
            query, QStringLiteral("Items"), fields, TovSqlDBSession::RowSource([&](QStringList &row) {
                if (next == rows.size())
                    return false;
                row = rows.at(next++);
                return true;
            }));
    } else {
        TovSqlDBSession::RowConverter convert;
        if (form == 1) {
            convert = [](const QStringList &row, QVector<QVariant> &values) {
                bool isNumber = false;
                values << row.value(0) << row.value(1).toDouble(&isNumber);
                return isNumber;
            };
        }
        ok = session->importData(query, QStringLiteral("Items"), fields, rows, convert);
    }
    QCOMPARE(ok, error.isEmpty());
    QCOMPARE(countRows(*session), count);
    if (ok) {
        QVERIFY(capture.lines().isEmpty());
        if (count > 0) {
            const QStringList &last = rows.last();
            QCOMPARE(
                countRows(*session, QStringLiteral(" WHERE Code = '%1' AND Qty = %2").arg(last[0], last[1])),
                1);
            // Texts are bound as they are; the column's affinity stores numbers.
            QCOMPARE(countRows(*session, QStringLiteral(" WHERE typeof(Qty) = 'real'")), count);
        }
    } else {
        if (error != QLatin1String("*"))
            QCOMPARE(session->lastError().text(), error);
        QCOMPARE(capture.lines(), QStringList { session->lastError().text() });
    }
    // No transaction is left open.
    QVERIFY(session->transaction());
    QVERIFY(session->commit());
}

void TestTovSqlDBSession::transactions_data()
{
    QTest::addColumn<int>("type");
    addDriverRow("caller's rollback drops imported rows, reopening drops uncommitted ones");
}

void TestTovSqlDBSession::transactions()
{
    TOV_FETCH_DRIVER();
    auto session = openItems(type);
    QVERIFY(session);
    {
        QSqlQuery query(session->database());
        QVERIFY(session->transaction());
        QVERIFY(session->importData(query, QStringLiteral("Items"), { QStringLiteral("Name") },
            QList<QStringList> { { "a" }, { "b" } }));
        QCOMPARE(countRows(*session), 2);
        QVERIFY(session->rollback());
        QCOMPARE(countRows(*session), 0);
        QVERIFY(session->transaction());
        QVERIFY(session->insertData(
            query, QStringLiteral("Items"), { QStringLiteral("Name") }, { QStringLiteral("x") }));
        QCOMPARE(countRows(*session), 1);
    }
    QVERIFY(session->open());
    QVERIFY(session->isOpen());
    QCOMPARE(countRows(*session), 0);
}

void TestTovSqlDBSession::queryMaxValue_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("table");
    QTest::addColumn<QString>("field");
    QTest::addColumn<int>("expected");
    QTest::addColumn<bool>("fails");
    addDriverRow("maximum of the column", QStringLiteral("Items"), QStringLiteral("ID"), 42, false);
    addDriverRow("real maximum rounded by the variant conversion", QStringLiteral("Items"),
        QStringLiteral("Qty"), 10, false);
    addDriverRow("empty table gives 0", QStringLiteral("Empty"), QStringLiteral("ID"), 0, false);
    addDriverRow(
        "missing table gives 0 and an error", QStringLiteral("Nowhere"), QStringLiteral("ID"), 0, true);
}

void TestTovSqlDBSession::queryMaxValue()
{
    TOV_FETCH_DRIVER();
    QFETCH(QString, table);
    QFETCH(QString, field);
    QFETCH(int, expected);
    QFETCH(bool, fails);
    auto session = openItems(type);
    QVERIFY(session);
    QSqlQuery query(session->database());
    TOV_EXEC(
        *session, query, QStringLiteral("INSERT INTO Items (ID, Qty) VALUES (3, 9.75), (42, 1), (7, -3)"));
    TOV_EXEC(*session, query, QStringLiteral("CREATE TABLE Empty (ID INTEGER)"));
    DebugCapture capture;
    QCOMPARE(session->queryMaxValue(table, field), expected);
    QCOMPARE(capture.lines().size(), fails ? 1 : 0);
    QCOMPARE(session->lastError().type() != QSqlError::NoError, fails);
}

QTEST_GUILESS_MAIN(TestTovSqlDBSession)
#include "tst_tovsqldbsession.moc"
