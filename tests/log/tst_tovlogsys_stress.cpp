#include "logtestutil.h"

#include <tovlogsys.h>
#include <tovmessagelogger.h>

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <vector>

// Several threads log at once into one project database ("TovLog.ini" beside this executable:
// OpenLog, every level, FuncDataLog). Run under ThreadSanitizer with the "threads" label.
class TestTovLogSysStress : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void threadsLogConcurrently_data();
    void threadsLogConcurrently();

private:
    QTemporaryDir m_project;
    QTemporaryDir m_funcData;
};

namespace {

const int threadCount = 8;
const int perThread = 2000;

// Message i of a thread: level i % 4, its own EdoID when i % 3 == 0, FuncData when i % 10 == 0.
// Messages come in groups nested 1 to 5 deep; within a group each message encloses the next.
qint64 ownEdo(int t, int i)
{
    return i % 3 == 0 ? qint64(t) * 1000000 + i : -1;
}

void logThread(int t)
{
    const TovMessageLogger logger("stress.cpp", t, "logThread");
    TovLogSys *sys = TovLogSys::instance();
    int i = 0;
    for (int group = 0; i < perThread; ++group) {
        const int depth = qMin(1 + (group + t) % 5, perThread - i);
        logger.startOutputTime(QStringLiteral("group"));
        for (int k = 0; k < depth; ++k, ++i) {
            const TovLogSys::LogMsgType type = TovLogSys::LogMsgType(1 << (i % 4));
            TovMessageLogData data
                = logger.startLogMessage(type, QStringLiteral("t%1 n%2 k%3").arg(t).arg(i).arg(k));
            data.setCategory(QStringLiteral("stress"));
            if (ownEdo(t, i) != -1)
                data.setEdoId(ownEdo(t, i));
            if (i % 10 == 0)
                logger.funcData() << "fd" << t << i;
            logger.startOutputTime(QStringLiteral("inner"));
            logger.stopOutputTime();
        }
        sys->lastEdoID();
        for (int k = 0; k < depth; ++k)
            logger.stopLog();
        logger.stopOutputTime();
    }
}

} // namespace

void TestTovLogSysStress::initTestCase()
{
    QVERIFY(m_project.isValid() && m_funcData.isValid());
    TovLogSys::instance()->setFuncDataPath(m_funcData.path());
}

void TestTovLogSysStress::cleanupTestCase()
{
    TovLogSys::instance()->onProjectBeforeClose();
}

void TestTovLogSysStress::threadsLogConcurrently_data()
{
    QTest::addColumn<bool>("inTransaction");
    QTest::newRow("autocommit") << false;
    QTest::newRow("one transaction") << true;
}

void TestTovLogSysStress::threadsLogConcurrently()
{
    QFETCH(bool, inTransaction);
    TovLogSys *sys = TovLogSys::instance();
    const QString db = m_project.filePath(QStringLiteral("TovLog.db"));
    QFile::remove(db);
    QDir(m_funcData.path()).removeRecursively();
    sys->onProjectAfterOpen(m_project.path());
    QVERIFY(sys->dbSession());
    if (inTransaction)
        sys->startTransaction();

    std::vector<QThread *> threads;
    for (int t = 0; t < threadCount; ++t) {
        threads.push_back(QThread::create(logThread, t));
        threads.back()->start();
    }
    for (QThread *thread : threads) {
        QVERIFY(thread->wait(600000));
        delete thread;
    }
    if (inTransaction)
        sys->commitTransaction();

    const QVector<LogRow> rows = readLogRows(db, QStringLiteral("ID"));
    QCOMPARE(rows.size(), threadCount * perThread);
    QHash<int, const LogRow *> byId;
    QHash<QPair<int, int>, const LogRow *> byMessage;
    const QRegularExpression msg(QStringLiteral("^t(\\d) n(\\d+) k(\\d)$"));
    for (const LogRow &r : rows) {
        QVERIFY2(!byId.contains(r.id), "IDs are unique");
        byId.insert(r.id, &r);
        const QRegularExpressionMatch m = msg.match(r.msg);
        QVERIFY2(m.hasMatch(), qPrintable(r.msg));
        byMessage.insert(qMakePair(m.captured(1).toInt(), m.captured(2).toInt()), &r);
    }
    QCOMPARE(byMessage.size(), threadCount * perThread);

    int funcDataCount = 0;
    for (auto it = byMessage.cbegin(); it != byMessage.cend(); ++it) {
        const int t = it.key().first, i = it.key().second;
        const LogRow &r = *it.value();
        const int k = msg.match(r.msg).captured(3).toInt();
        QCOMPARE(r.level, i % 4);
        QCOMPARE(r.line, t);
        QCOMPARE(r.category, QStringLiteral("stress"));
        // The PID names the enclosing message of the same thread's chain.
        const LogRow *parent = k == 0 ? nullptr : byMessage.value(qMakePair(t, i - 1));
        if (k == 0) {
            QCOMPARE(r.pid, -1);
        } else {
            QVERIFY2(parent && byId.value(r.pid) == parent, qPrintable(r.msg));
            QVERIFY(parent->id < r.id);
        }
        // An unset EdoID comes from the nearest enclosing message that has one.
        const qint64 expectedEdo = ownEdo(t, i) != -1 ? ownEdo(t, i) : (parent ? parent->edoId : -1);
        QCOMPARE(r.edoId, expectedEdo);
        const QString fd = i % 10 == 0 ? QStringLiteral("fd %1 %2 ").arg(t).arg(i) : QString();
        QCOMPARE(r.funcData, fd);
        funcDataCount += fd.isEmpty() ? 0 : 1;
    }
    QCOMPARE(QDir(m_funcData.path()).entryList(QDir::Files).size(), funcDataCount);

    // Clearing empties the table; IDs keep counting.
    sys->clearLogData();
    QCOMPARE(readLogRows(db).size(), 0);
    const TovMessageLogger logger("stress.cpp", 0, "after");
    QCOMPARE(logger.infoStart(QStringLiteral("after")).id(), rows.last().id + 1);
    logger.stopLog();
    QCOMPARE(readLogRows(db).size(), 1);
    sys->onProjectBeforeClose();
}

QTEST_GUILESS_MAIN(TestTovLogSysStress)
#include "tst_tovlogsys_stress.moc"
