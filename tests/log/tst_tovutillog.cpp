#include "logtestutil.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

// "tovutil log" over a log database written here row by row, so every figure is known.
class TestTovUtilLog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void output_data();
    void output();
    void trace();

private:
    QTemporaryDir m_dir;
    QString m_db;
};

namespace {

struct Run
{
    int code = -1;
    QString out;
    QString err;
};

Run tovutil(const QStringList &args)
{
    QProcess process;
    process.start(QStringLiteral(TOV_TOVUTIL), args);
    Run run;
    if (!process.waitForFinished(60000))
        return run;
    run.code = process.exitCode();
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}

} // namespace

void TestTovUtilLog::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_db = m_dir.filePath(QStringLiteral("TovLog.db"));
    const QString name = QStringLiteral("writer");
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(m_db);
        QVERIFY(db.open());
        QSqlQuery q(db);
        const char *const statements[] = {
            "CREATE TABLE LogData (ID INTEGER PRIMARY KEY, PID INTEGER, Level INTEGER, Msg TEXT, File TEXT, "
            "Func TEXT, Line INTEGER, EdoID INTEGER, Category TEXT, FuncData TEXT, TimeStamp DATETIME, Time "
            "REAL)",
            "INSERT INTO LogData VALUES (1, -1, 1, '打开', 'a.cpp', 'open', 10, -1, 'project', '', "
            "'2024-01-02T03:04:05.000', 0.040)",
            "INSERT INTO LogData VALUES (2, 1, 1, 'road', 'a.cpp', 'calc', 20, 1001, 'calc', '', "
            "'2024-01-02T03:04:05.005', 0.020)",
            "INSERT INTO LogData VALUES (3, 2, 0, 'surface', 'b.cpp', 'surf', 30, 1001, '', 'w 7', "
            "'2024-01-02T03:04:05.006', 0.008)",
            "INSERT INTO LogData VALUES (4, 1, 3, 'missing', 'b.cpp', 'check', 40, 1003, 'check', '', "
            "'2024-01-02T03:04:05.030', 0.0)",
            // Its parent was not stored (masked level): a root of its own, overlapping the first.
            "INSERT INTO LogData VALUES (6, 5, 2, 'orphan', 'c.cpp', 'o', 50, -1, '', '', "
            "'2024-01-02T03:04:05.010', 0.0125)",
        };
        for (const char *sql : statements)
            QVERIFY2(q.exec(QString::fromUtf8(sql)), qPrintable(q.lastError().text()));
    }
    QSqlDatabase::removeDatabase(name);
}

void TestTovUtilLog::output_data()
{
    QTest::addColumn<QStringList>("args"); // "$DB" stands for the database
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("out");
    QTest::addColumn<QString>("err");
    QTest::newRow("list in ID order") << QStringList { "$DB" } << 0
                                      << "     1 <-     -1  打开  40.0 ms  info  [project]\n"
                                         "     2 <-      1  road  20.0 ms  info  edo 1001  [calc]\n"
                                         "     3 <-      2  surface  8.0 ms  debug  edo 1001\n"
                                         "     4 <-      1  missing  0.0 ms  error  edo 1003  [check]\n"
                                         "     6 <-      5  orphan  12.5 ms  warning\n"
                                      << "";
    QTest::newRow("tree: nested by PID, orphans are roots") << QStringList { "$DB", "--tree" } << 0
                                                            << "打开  40.0 ms  info  [project]\n"
                                                               "  road  20.0 ms  info  edo 1001  [calc]\n"
                                                               "    surface  8.0 ms  debug  edo 1001\n"
                                                               "  missing  0.0 ms  error  edo 1003  [check]\n"
                                                               "orphan  12.5 ms  warning\n"
                                                            << "";
    QTest::newRow("--edo in a tree keeps the enclosing messages")
        << QStringList { "$DB", "--tree", "--edo", "1003" } << 0
        << "打开  40.0 ms  info  [project]\n"
           "  missing  0.0 ms  error  edo 1003  [check]\n"
        << "";
    QTest::newRow("--edo in a list shows the matches only")
        << QStringList { "$DB", "--edo", "1001" } << 0
        << "     2 <-      1  road  20.0 ms  info  edo 1001  [calc]\n"
           "     3 <-      2  surface  8.0 ms  debug  edo 1001\n"
        << "";
    QTest::newRow("--min-ms keeps the slow ones") << QStringList { "$DB", "--tree", "--min-ms", "10" } << 0
                                                  << "打开  40.0 ms  info  [project]\n"
                                                     "  road  20.0 ms  info  edo 1001  [calc]\n"
                                                     "orphan  12.5 ms  warning\n"
                                                  << "";
    QTest::newRow("filters combine") << QStringList { "$DB", "--edo", "1001", "--min-ms", "10" } << 0
                                     << "     2 <-      1  road  20.0 ms  info  edo 1001  [calc]\n"
                                     << "";
    QTest::newRow("missing file") << QStringList { "$DB.none" } << 1 << ""
                                  << "tovutil: log: no such file: $DB.none\n";
    QTest::newRow("no database argument") << QStringList {} << 1 << ""
                                          << "tovutil: log: expected one TOVLOG.DB argument, got 0\n";
    QTest::newRow("--edo needs an integer") << QStringList { "$DB", "--edo", "x1" } << 1 << ""
                                            << "tovutil: log: --edo expects an integer, not \"x1\"\n";
    QTest::newRow("--min-ms needs a number >= 0")
        << QStringList { "$DB", "--min-ms", "-1" } << 1 << ""
        << "tovutil: log: --min-ms expects a number >= 0, not \"-1\"\n";
    QTest::newRow("unknown option") << QStringList { "$DB", "--depth" } << 1 << ""
                                    << "tovutil: Unknown option 'depth'.\n";
}

void TestTovUtilLog::output()
{
    QFETCH(QStringList, args);
    QFETCH(int, code);
    QFETCH(QString, out);
    QFETCH(QString, err);
    QStringList full { QStringLiteral("log") };
    for (const QString &a : args)
        full << QString(a).replace(QStringLiteral("$DB"), m_db);
    const Run run = tovutil(full);
    QCOMPARE(run.err, QString(err).replace(QStringLiteral("$DB"), m_db));
    QCOMPARE(run.out, out);
    QCOMPARE(run.code, code);
}

void TestTovUtilLog::trace()
{
    const QString json = m_dir.filePath(QStringLiteral("trace.json"));
    const Run run = tovutil({ QStringLiteral("log"), m_db, QStringLiteral("--trace"), json });
    QCOMPARE(run.code, 0);
    QCOMPARE(run.out, QStringLiteral("wrote 5 events to %1\n").arg(json));
    QFile file(json);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(file.readAll(), &error);
    QCOMPARE(error.error, QJsonParseError::NoError);
    QStringList events;
    for (const QJsonValue &v : doc.object().value(QStringLiteral("traceEvents")).toArray()) {
        const QJsonObject e = v.toObject();
        QCOMPARE(e.value(QStringLiteral("ph")).toString(), QStringLiteral("X"));
        events
            << QStringLiteral("%1 ts=%2 dur=%3 tid=%4 cat=%5 edo=%6")
                   .arg(e.value(QStringLiteral("name")).toString())
                   .arg(e.value(QStringLiteral("ts")).toDouble())
                   .arg(e.value(QStringLiteral("dur")).toDouble())
                   .arg(e.value(QStringLiteral("tid")).toInt())
                   .arg(e.value(QStringLiteral("cat")).toString(),
                       e.value(QStringLiteral("args")).toObject().value(QStringLiteral("edoId")).toString());
    }
    // The orphan overlaps the first tree, so it gets a lane of its own.
    QCOMPARE(events,
        QStringList(
            { "打开 ts=0 dur=40000 tid=1 cat=project edo=", "road ts=5000 dur=20000 tid=1 cat=calc edo=1001",
                "surface ts=6000 dur=8000 tid=1 cat=debug edo=1001",
                "missing ts=30000 dur=0 tid=1 cat=check edo=1003",
                "orphan ts=10000 dur=12500 tid=2 cat=warning edo=" }));

    const Run bad = tovutil(
        { QStringLiteral("log"), m_db, QStringLiteral("--trace"), m_dir.filePath("no/dir/t.json") });
    QCOMPARE(bad.code, 1);
    QVERIFY2(
        bad.err.startsWith(QStringLiteral("tovutil: log: cannot write ") + m_dir.filePath("no/dir/t.json")),
        qPrintable(bad.err));
}

QTEST_GUILESS_MAIN(TestTovUtilLog)
#include "tst_tovutillog.moc"
