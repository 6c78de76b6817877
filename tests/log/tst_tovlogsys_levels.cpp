#include "logtestutil.h"

#include <tovlogsys.h>
#include <tovmessagelogger.h>

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QtTest>

// Built once per "TovLog.ini" beside the executable, since the log system reads it once:
//   TOV_LOG_NOINI      no ini file: logging off
//   TOV_LOG_INFOONLY   OpenLog, LogLevel Info only
//   TOV_LOG_MASK0      OpenLog, FuncDataLog, no LogLevel key
class TestTovLogSysLevels : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void enabled_data();
    void enabled();
    void storedRows();

private:
    QTemporaryDir m_project;
};

void TestTovLogSysLevels::initTestCase()
{
    QVERIFY(m_project.isValid());
    TovLogSys::instance()->onProjectAfterOpen(m_project.path());
    QVERIFY2(TovLogSys::instance()->dbSession(), "the database opens whatever the ini says");
}

void TestTovLogSysLevels::enabled_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("enabled");
#if defined(TOV_LOG_INFOONLY)
    const bool info = true, zero = false;
#elif defined(TOV_LOG_MASK0)
    const bool info = false, zero = true;
#else
    const bool info = false, zero = false;
#endif
    QTest::newRow("debug") << int(TovLogSys::Debug) << false;
    QTest::newRow("info") << int(TovLogSys::Info) << info;
    QTest::newRow("warning") << int(TovLogSys::Warning) << false;
    QTest::newRow("error") << int(TovLogSys::Error) << false;
    QTest::newRow("info with debug: every bit must pass") << int(TovLogSys::Info | TovLogSys::Debug) << false;
    QTest::newRow("zero passes only an empty mask") << 0 << zero;
}

void TestTovLogSysLevels::enabled()
{
    QFETCH(int, type);
    QFETCH(bool, enabled);
    TovLogSys *sys = TovLogSys::instance();
    QCOMPARE(sys->isLogEnabled(TovLogSys::LogMsgType(type)), enabled);
    const bool one[]
        = { sys->isDebugEnabled(), sys->isInfoEnabled(), sys->isWarningEnabled(), sys->isErrorEnabled() };
    const int bits[] = { TovLogSys::Debug, TovLogSys::Info, TovLogSys::Warning, TovLogSys::Error };
    for (int i = 0; i < 4; ++i) {
        if (bits[i] == type)
            QCOMPARE(one[i], enabled);
    }
#if defined(TOV_LOG_NOINI)
    QVERIFY(!sys->isLogEnabled());
    QVERIFY(!sys->isLogFuncData());
#elif defined(TOV_LOG_MASK0)
    QVERIFY(sys->isLogEnabled());
    QVERIFY(sys->isLogFuncData());
#else
    QVERIFY(sys->isLogEnabled());
    QVERIFY(!sys->isLogFuncData());
#endif
}

void TestTovLogSysLevels::storedRows()
{
    const TovMessageLogger logger("levels.cpp", 1, "f");
    // A handle is valid while its message is open.
    const TovMessageLogData outer = logger.debugStart(QStringLiteral("outer"));
    const int outerId = outer.id();
    const bool outerNull = outer.isNull();
    logger.infoStart(QStringLiteral("inner")).setEdoId(4);
    logger.warningStart(QStringLiteral("w"));
    logger.stopLog();
    logger.errorStart(QStringLiteral("e"));
    logger.stopLog();
    logger.stopLog();
    logger.stopLog();

    const QVector<LogRow> rows = readLogRows(m_project.filePath(QStringLiteral("TovLog.db")));
#if defined(TOV_LOG_NOINI)
    QVERIFY2(outerNull, "logging off answers null handles");
    QCOMPARE(outerId, -1);
    QVERIFY(rows.isEmpty());
#elif defined(TOV_LOG_MASK0)
    QVERIFY2(!outerNull && outerId >= 1, "messages are kept open, only the store is masked");
    QVERIFY(rows.isEmpty());
#else
    QVERIFY(!outerNull);
    QCOMPARE(rows.size(), 1);
    QCOMPARE(rows[0].msg, QStringLiteral("inner"));
    QCOMPARE(rows[0].pid, outerId);
    QCOMPARE(rows[0].level, 1);
    QCOMPARE(rows[0].edoId, 4ll);
#endif
}

QTEST_GUILESS_MAIN(TestTovLogSysLevels)
#include "tst_tovlogsys_levels.moc"
