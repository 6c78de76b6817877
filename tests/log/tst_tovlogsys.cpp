#include "logtestutil.h"

#include <tovlogsys.h>
#include <tovmessagelogger.h>
#include <tovmessagelogmanager.h>
#include <tovsqldbsession.h>
#include <tovtestutil.h>

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

// "TovLog.ini" beside this executable: OpenLog, every level, FuncDataLog with FuncDataPath
// "funcdata" (relative: resolved in the working folder, a temporary one) and three
// CheckOptions. The log system reads it once, so this executable has it to itself.
class TestTovLogSys : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void configuration();
    void checkOptions_data();
    void checkOptions();
    void newProjectGetsTheTemplate();
    void openContinuesIds();
    void closedOrFailedProjectLogsNothing();
    void rows_data();
    void rows();
    void contextAndFormattedStarts();
    void durationAndTimeStamp();
    void storedTimeStampText_data();
    void storedTimeStampText();
    void funcDataFiles_data();
    void funcDataFiles();
    void funcDataWithoutMessageIsDebugOutput();
    void lastEdoIdAndManagers();
    void transactions_data();
    void transactions();

private:
    QString dbFile() const { return m_project.filePath(QStringLiteral("TovLog.db")); }
    QTemporaryDir m_work;
    QTemporaryDir m_project;
};

namespace {

const TovMessageLogger logger("walls.cpp", 12, "calcWalls");

// Runs a script: "D:x" / "I:x" / "W:x" / "E:x" start a message, "e:7" and "c:geom" set the
// EdoID and category of the innermost one, "f:text" appends to its FuncData, "." stops.
void runScript(const QString &script)
{
    QVector<TovMessageLogData> open;
    for (const QString &step : script.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const QString arg = step.mid(2);
        switch (step.at(0).toLatin1()) {
        case 'D':
            open.append(logger.debugStart(arg));
            break;
        case 'I':
            open.append(logger.infoStart(arg));
            break;
        case 'W':
            open.append(logger.warningStart(arg));
            break;
        case 'E':
            open.append(logger.errorStart(arg));
            break;
        case 'e':
            open.last().setEdoId(arg.toLongLong());
            break;
        case 'c':
            open.last().setCategory(arg);
            break;
        case 'f':
            logger.funcData() << arg.toUtf8().constData();
            break;
        case '.':
            logger.stopLog();
            if (!open.isEmpty())
                open.removeLast();
            break;
        }
    }
}

// "msg|parent msg or -|level|EdoID|category|FuncData", in ID order.
QStringList describe(const QVector<LogRow> &rows)
{
    QHash<int, QString> names;
    for (const LogRow &r : rows)
        names.insert(r.id, r.msg);
    QStringList out;
    for (const LogRow &r : rows) {
        out << QStringLiteral("%1|%2|%3|%4|%5|%6")
                   .arg(r.msg, r.pid == -1 ? QStringLiteral("-") : names.value(r.pid, QStringLiteral("?")))
                   .arg(r.level)
                   .arg(r.edoId)
                   .arg(r.category, r.funcData);
    }
    return out;
}

// Commits a record built by the test through the log system's protected hook.
struct CommitHook : TovLogSys
{
    static void commit(TovLogSys::LogData *data) { (instance()->*&CommitHook::commitLogData)(data); }
};

} // namespace

void TestTovLogSys::initTestCase()
{
    QVERIFY(m_work.isValid());
    QVERIFY(m_project.isValid());
    QVERIFY(QDir::setCurrent(m_work.path()));
    QFile::remove(QCoreApplication::applicationDirPath() + QStringLiteral("/TovLog.db"));
}

void TestTovLogSys::init()
{
    QFile::remove(dbFile());
    TovLogSys::instance()->onProjectAfterOpen(m_project.path());
    QVERIFY(TovLogSys::instance()->dbSession());
}

void TestTovLogSys::cleanup()
{
    TovLogSys::instance()->onProjectBeforeClose();
    TovLogSys::instance()->setFuncDataPath(QStringLiteral("funcdata"));
    QDir(m_work.filePath(QStringLiteral("funcdata"))).removeRecursively();
}

void TestTovLogSys::configuration()
{
    TovLogSys *sys = TovLogSys::instance();
    QVERIFY(sys->isLogEnabled());
    QVERIFY(
        sys->isDebugEnabled() && sys->isInfoEnabled() && sys->isWarningEnabled() && sys->isErrorEnabled());
    QVERIFY(sys->isLogEnabled(TovLogSys::LogMsgType(TovLogSys::Debug | TovLogSys::Error)));
    QVERIFY2(!sys->isLogEnabled(TovLogSys::LogMsgType(0)), "type 0 passes only an empty mask");
    QVERIFY2(!sys->isLogEnabled(TovLogSys::Timing), "the timing bit is never in the mask");
    QCOMPARE(sys->funcDataPath(), QStringLiteral("funcdata"));
    QVERIFY(sys->isLogFuncData());
    sys->onProjectBeforeClose();
    QVERIFY2(!sys->isLogFuncData(), "FuncData logging needs an open database");
    QVERIFY(!sys->dbSession());
}

void TestTovLogSys::checkOptions_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("present");
    row("true key, any case", "FastCalc", true);
    row("upper-case lookup", "FASTCALC", true);
    row("value 1 counts as true", "mixedcase", true);
    row("false key is not added", "SlowPath", false);
    row("unknown name", "other", false);
}

void TestTovLogSys::checkOptions()
{
    QFETCH(QString, name);
    QFETCH(bool, present);
    TovLogSys *sys = TovLogSys::instance();
    QCOMPARE(sys->hasCheckOption(name), present);
    sys->setCheckOption(name.toLower(), !present);
    QCOMPARE(sys->hasCheckOption(name.toUpper()), !present);
    sys->setCheckOption(name, present);
    QCOMPARE(sys->hasCheckOption(name), present);
}

void TestTovLogSys::newProjectGetsTheTemplate()
{
    TovLogSys *sys = TovLogSys::instance();
    QTemporaryDir fresh;
    QCOMPARE(sys->getProjectAddFile(fresh.path()), QString());
    sys->onProjectAfterNew(fresh.path());
    QCOMPARE(sys->getProjectAddFile(fresh.path()), QStringLiteral("TovLog.db"));
    QCOMPARE(sys->getProjectAddFile(fresh.path() + QLatin1Char('/')), QStringLiteral("TovLog.db"));
    QVERIFY2(QFile::exists(QCoreApplication::applicationDirPath() + QStringLiteral("/TovLog.db")),
        "the template is made in the application directory");

    QStringList columns;
    forEachRow(fresh.filePath(QStringLiteral("TovLog.db")), QStringLiteral("PRAGMA table_info(LogData)"),
        [&columns](
            QSqlQuery &q) { columns << q.value(1).toString() + QLatin1Char(' ') + q.value(2).toString(); });
    QCOMPARE(columns,
        QStringList({ "ID INTEGER", "PID INTEGER", "Level INTEGER", "Msg TEXT", "File TEXT", "Func TEXT",
            "Line INTEGER", "EdoID INTEGER", "Category TEXT", "FuncData TEXT", "TimeStamp DATETIME",
            "Time REAL" }));

    // A second "new" does not replace the project's database.
    sys->onProjectAfterOpen(fresh.path());
    runScript(QStringLiteral("I:kept ."));
    sys->onProjectBeforeClose();
    sys->onProjectAfterNew(fresh.path());
    QCOMPARE(readLogRows(fresh.filePath(QStringLiteral("TovLog.db"))).size(), 1);
}

void TestTovLogSys::openContinuesIds()
{
    TovLogSys *sys = TovLogSys::instance();
    runScript(QStringLiteral("I:a ."));
    QSqlQuery query(sys->dbSession()->database());
    QVERIFY(query.exec(QStringLiteral("UPDATE LogData SET ID = 41")));
    query.clear();
    sys->onProjectBeforeClose();
    sys->onProjectAfterOpen(m_project.path());
    QCOMPARE(logger.infoStart(QStringLiteral("b")).id(), 42);
    logger.stopLog();
    QCOMPARE(describe(readLogRows(dbFile())), QStringList({ "a|-|1|-1||", "b|-|1|-1||" }));
}

void TestTovLogSys::closedOrFailedProjectLogsNothing()
{
    TovLogSys *sys = TovLogSys::instance();
    runScript(QStringLiteral("I:open ."));
    sys->onProjectBeforeClose();
    QVERIFY(logger.infoStart(QStringLiteral("closed")).isNull());
    logger.stopLog();
    QCOMPARE(describe(readLogRows(dbFile())), QStringList({ "open|-|1|-1||" }));

    DebugCapture capture;
    sys->onProjectAfterOpen(m_project.filePath(QStringLiteral("missing/folder")));
    QVERIFY(!sys->dbSession());
    QVERIFY(!capture.lines().isEmpty());
    QVERIFY(!sys->currentLogManager(false));
    QVERIFY(logger.infoStart(QStringLiteral("x")).setEdoId(3).setCategory(QStringLiteral("c")).isNull());
    logger.stopLog();
    sys->startTransaction();
    sys->commitTransaction();
    sys->clearLogData();
}

void TestTovLogSys::rows_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QStringList>("rows");
    row("single info message", "I:calc .", QStringList { "calc|-|1|-1||" });
    row("info nested in debug: PID is the outer ID", "D:outer I:inner . .",
        QStringList { "outer|-|0|-1||", "inner|outer|1|-1||" });
    row("levels stored as 0 to 3", "D:d . I:i . W:w . E:e .",
        QStringList { "d|-|0|-1||", "i|-|1|-1||", "w|-|2|-1||", "e|-|3|-1||" });
    row("no EdoID inherits the parent's, which keeps it", "I:outer e:7 I:inner . .",
        QStringList { "outer|-|1|7||", "inner|outer|1|7||" });
    row("inherits from the nearest ancestor that has one", "I:a e:5 I:b e:9 I:c I:d . . . .",
        QStringList { "a|-|1|5||", "b|a|1|9||", "c|b|1|9||", "d|c|1|9||" });
    row("own EdoID wins", "I:a e:5 I:b e:6 . .", QStringList { "a|-|1|5||", "b|a|1|6||" });
    row("an inner EdoID does not flow outward", "I:a I:b e:3 . .", QStringList { "a|-|1|-1||", "b|a|1|3||" });
    // funcData() is a QDebug: a space follows every item.
    row("category and FuncData appended while open", "W:w c:geom f:height f:=2.5 .",
        QStringList { "w|-|2|-1|geom|height =2.5 " });
    row("FuncData goes to the innermost message", "I:a f:A I:b f:B . f:A2 .",
        QStringList { "a|-|1|-1||A A2 ", "b|a|1|-1||B " });
    row("stop on an empty stack does nothing", ". I:a . .", QStringList { "a|-|1|-1||" });
    row("sibling messages share the parent", "E:p I:x . I:y . .",
        QStringList { "p|-|3|-1||", "x|p|1|-1||", "y|p|1|-1||" });
}

void TestTovLogSys::rows()
{
    QFETCH(QString, script);
    QFETCH(QStringList, rows);
    TovLogSys::instance()->setFuncDataPath(QString());
    runScript(script);
    QCOMPARE(describe(readLogRows(dbFile(), QStringLiteral("ID"))), rows);
}

void TestTovLogSys::contextAndFormattedStarts()
{
    const TovMessageLogger here("src/roads.cpp", 345, "void Road::calc()");
    QCOMPARE(here.debugStart("%s %d", "seg", 1).isNull(), false);
    here.stopLog();
    here.infoStart("%s %d", "seg", 2);
    here.stopLog();
    here.warningStart("%s %d", "seg", 3);
    here.stopLog();
    here.errorStart("%s %.1f", "seg", 4.5);
    here.stopLog();
    here.startLogMessage(TovLogSys::Info, QStringLiteral("直接"));
    here.stopLog();
    TovMessageLogger().infoStart(QStringLiteral("empty context"));
    TovMessageLogger().stopLog();

    const QVector<LogRow> rows = readLogRows(dbFile(), QStringLiteral("ID"));
    QCOMPARE(rows.size(), 6);
    QStringList seen;
    for (const LogRow &r : rows)
        seen << QStringLiteral("%1|%2|%3|%4|%5").arg(r.msg).arg(r.level).arg(r.file, r.func).arg(r.line);
    QCOMPARE(seen,
        QStringList({ "seg 1|0|src/roads.cpp|void Road::calc()|345",
            "seg 2|1|src/roads.cpp|void Road::calc()|345", "seg 3|2|src/roads.cpp|void Road::calc()|345",
            "seg 4.5|3|src/roads.cpp|void Road::calc()|345", "直接|1|src/roads.cpp|void Road::calc()|345",
            "empty context|1|||0" }));
}

void TestTovLogSys::durationAndTimeStamp()
{
    const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
    logger.infoStart(QStringLiteral("slow"));
    QThread::msleep(150);
    logger.stopLog();
    const QVector<LogRow> rows = readLogRows(dbFile());
    QCOMPARE(rows.size(), 1);
    QVERIFY2(rows[0].time >= 0.149 && rows[0].time < 5.0, qPrintable(QString::number(rows[0].time)));
    const QDateTime stamp = QDateTime::fromString(rows[0].timeStamp, Qt::ISODateWithMs);
    QVERIFY2(stamp.isValid() && stamp >= before && stamp <= QDateTime::currentDateTime(),
        qPrintable(rows[0].timeStamp));
}

void TestTovLogSys::storedTimeStampText_data()
{
    QTest::addColumn<QDateTime>("stamp");
    QTest::addColumn<QString>("stored");
    const QDate day(2026, 3, 4);
    row("local time, every field padded", QDateTime(day, QTime(5, 6, 7, 8), Qt::LocalTime),
        "2026-03-04T05:06:07.008");
    row("local time, year 9999", QDateTime(QDate(9999, 11, 30), QTime(1, 2, 3, 40), Qt::LocalTime),
        "9999-11-30T01:02:03.040");
    row("local time past year 9999 has no text", QDateTime(QDate(10000, 1, 1), QTime(0, 0), Qt::LocalTime),
        "NULL");
    row("UTC keeps its Z", QDateTime(day, QTime(5, 6, 7, 8), Qt::UTC), "2026-03-04T05:06:07.008Z");
    row("offset from UTC keeps its offset", QDateTime(day, QTime(5, 6, 7, 8), Qt::OffsetFromUTC, 8 * 3600),
        "2026-03-04T05:06:07.008+08:00");
    row("invalid stamp has no text", QDateTime(), "NULL");
}

void TestTovLogSys::storedTimeStampText()
{
    QFETCH(QDateTime, stamp);
    QFETCH(QString, stored);
    // The text is the one Qt's SQLite driver makes of a bound date-time.
    QCOMPARE(stamp.toString(Qt::ISODateWithMs), stored == QLatin1String("NULL") ? QString() : stored);
    TovLogSys::LogData data;
    data.ID = 9000;
    data.Msg = QStringLiteral("stamped");
    data.TimeStamp = stamp;
    CommitHook::commit(&data);
    QStringList texts;
    forEachRow(dbFile(), QStringLiteral("SELECT ifnull(TimeStamp, 'NULL') FROM LogData"),
        [&texts](QSqlQuery &q) { texts << q.value(0).toString(); });
    QCOMPARE(texts, QStringList { stored });
}

void TestTovLogSys::funcDataFiles_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QString>("path");
    // "<Msg of the record>\t<file name after "<ID>.">\t<content>", one per file
    QTest::addColumn<QStringList>("files");
    row("FullName joins the nesting, EdoID in brackets", "I:Calc e:2045 I:Walls f:w1 . .", "funcdata",
        QStringList { "Walls\tCalc-Walls[2045].txt\tw1" });
    row("unset EdoID gives [-1]", "I:Calc f:x .", "funcdata", QStringList { "Calc\tCalc[-1].txt\tx" });
    row("unsafe characters become ~", "I:a/b:c*d?e\"f<g>h|i\\j f:x .", "funcdata",
        QStringList { "a/b:c*d?e\"f<g>h|i\\j\ta~b~c~d~e~f~g~h~i~j[-1].txt\tx" });
    row("empty FuncData writes no file", "I:a .", "funcdata", QStringList {});
    row("empty FuncDataPath writes no file", "I:a f:x .", "", QStringList {});
    row("missing folders are made", "I:a f:x .", "deep/er/funcdata", QStringList { "a\ta[-1].txt\tx" });
    row("one file per message, outer and inner", "I:o f:1 I:i f:2 . .", "funcdata",
        QStringList { "o\to[-1].txt\t1", "i\to-i[-1].txt\t2" });
}

void TestTovLogSys::funcDataFiles()
{
    QFETCH(QString, script);
    QFETCH(QString, path);
    QFETCH(QStringList, files);
    TovLogSys::instance()->setFuncDataPath(path);
    runScript(script);
    QHash<QString, int> ids;
    for (const LogRow &r : readLogRows(dbFile()))
        ids.insert(r.msg, r.id);
    const QDir dir(m_work.filePath(path.isEmpty() ? QStringLiteral("funcdata") : path));
    const QStringList found = dir.entryList(QDir::Files, QDir::Name);
    QStringList expected;
    for (const QString &f : files) {
        const QStringList parts = f.split(QLatin1Char('\t'));
        QVERIFY(ids.contains(parts[0]));
        const QString name = QString::number(ids.value(parts[0])) + QLatin1Char('.') + parts[1];
        expected << name;
        QFile file(dir.filePath(name));
        QVERIFY2(
            file.open(QIODevice::ReadOnly), qPrintable(name + QStringLiteral(" not in ") + found.join('|')));
        QCOMPARE(QString::fromUtf8(file.readAll()), parts[2] + QLatin1Char(' '));
    }
    expected.sort();
    QCOMPARE(found, expected);
}

void TestTovLogSys::funcDataWithoutMessageIsDebugOutput()
{
    QTest::ignoreMessage(QtDebugMsg, "loose text");
    logger.funcData() << "loose text";
    runScript(QStringLiteral("I:a ."));
    QCOMPARE(readLogRows(dbFile()).value(0).funcData, QString());
}

void TestTovLogSys::lastEdoIdAndManagers()
{
    TovLogSys *sys = TovLogSys::instance();
    QCOMPARE(sys->lastEdoID(), -1ll);
    TovMessageLogManager *manager = sys->currentLogManager(false);
    QVERIFY(manager);
    QCOMPARE(sys->currentLogManager(false), manager);
    TovMessageLogManager *other = nullptr;
    QThread *thread = QThread::create([&other, sys] { other = sys->currentLogManager(false); });
    thread->start();
    QVERIFY(thread->wait(10000));
    delete thread;
    QVERIFY(other && other != manager);
    sys->removeLogManager(other);

    logger.infoStart(QStringLiteral("a")).setEdoId(11);
    logger.infoStart(QStringLiteral("b"));
    QCOMPARE(sys->lastEdoID(), 11ll);
    logger.infoStart(QStringLiteral("c")).setEdoId(12);
    QCOMPARE(sys->lastEdoID(), 12ll);
    QVERIFY(!sys->currentLogManager(false)->isEmpty());
    logger.stopLog();
    logger.stopLog();
    QCOMPARE(sys->lastEdoID(), 11ll);
    logger.stopLog();
    QCOMPARE(sys->lastEdoID(), -1ll);
    QCOMPARE(sys->lastLogTimeName(), QString());
    QVERIFY2(!sys->currentLogManager(true), "timings need -time on the command line");
    logger.startOutputTime(QStringLiteral("t"));
    QCOMPARE(sys->lastLogTimeName(), QString());
}

void TestTovLogSys::transactions_data()
{
    QTest::addColumn<bool>("commit");
    QTest::addColumn<int>("rows");
    row("committed rows stay", true, 2);
    row("rolled back rows vanish, IDs do not come back", false, 0);
}

void TestTovLogSys::transactions()
{
    QFETCH(bool, commit);
    QFETCH(int, rows);
    TovLogSys *sys = TovLogSys::instance();
    sys->startTransaction();
    runScript(QStringLiteral("I:a I:b . ."));
    if (commit)
        sys->commitTransaction();
    else
        sys->rollbackTransaction();
    QCOMPARE(readLogRows(dbFile()).size(), rows);
    const int next = logger.infoStart(QStringLiteral("after")).id();
    logger.stopLog();
    QCOMPARE(readLogRows(dbFile(), QStringLiteral("ID")).last().id, next);
    QVERIFY(next >= 3);
}

QTEST_GUILESS_MAIN(TestTovLogSys)
#include "tst_tovlogsys.moc"
