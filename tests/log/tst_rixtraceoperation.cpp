#include <rixtraceoperation.h>
#include <tovtestutil.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <vector>

// Built once per "TovTracing.ini" beside the executable, since the hook reads it once:
//   TOV_TRACE_OFF        no ini file
//   TOV_TRACE_FILE       OpenLog=true
//   TOV_TRACE_DEBUGGER   OpenLog=true, OutputDebugString=true
class TestRixTraceOperation : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void freshTraceAtStartUp();
    void messages_data();
    void messages();
    void manyThreadsKeepLinesWhole();

private:
    QStringList traceLines() const;
    QTemporaryDir m_tempDir;
};

void TestRixTraceOperation::initTestCase()
{
    QVERIFY(m_tempDir.isValid());
    qputenv("TMPDIR", QFile::encodeName(m_tempDir.path()));
    QFile stale(m_tempDir.filePath(QStringLiteral("TovTracing.txt")));
    QVERIFY(stale.open(QIODevice::WriteOnly));
    stale.write("left from an earlier run\n");
    stale.close();
}

QStringList TestRixTraceOperation::traceLines() const
{
    QFile file(RixTraceOperation::instance()->tracingFile());
    if (!file.open(QIODevice::ReadOnly))
        return QStringList();
    QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

void TestRixTraceOperation::freshTraceAtStartUp()
{
    RixTraceOperation *op = RixTraceOperation::instance();
    QCOMPARE(op->tracingFile(), m_tempDir.filePath(QStringLiteral("TovTracing.txt")));
    QVERIFY2(!QFile::exists(op->tracingFile()), "the trace of an earlier run is deleted");
    op->initialise();
    QVERIFY2(!QFile::exists(op->tracingFile()), "the file is made by the first line only");
}

void TestRixTraceOperation::messages_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("traced");
    QTest::addColumn<bool>("debugger");
#if defined(TOV_TRACE_OFF)
    const bool file = false, dbg = false;
#elif defined(TOV_TRACE_FILE)
    const bool file = true, dbg = false;
#else
    const bool file = true, dbg = true;
#endif
    QTest::newRow("info goes to the trace file") << int(QtInfoMsg) << "计算 done" << file << false;
    QTest::newRow("empty info is not traced") << int(QtInfoMsg) << QString() << false << dbg;
    QTest::newRow("debug goes to the debugger only") << int(QtDebugMsg) << "dbg text" << false << dbg;
    QTest::newRow("warning goes to the debugger only") << int(QtWarningMsg) << "careful" << false << dbg;
    QTest::newRow("critical goes to the debugger only") << int(QtCriticalMsg) << "broken" << false << dbg;
}

void TestRixTraceOperation::messages()
{
    QFETCH(int, type);
    QFETCH(QString, text);
    QFETCH(bool, traced);
    QFETCH(bool, debugger);
    RixTraceOperation::instance()->initialise();
    const int before = traceLines().size();
    const QDateTime start = QDateTime::currentDateTime().addSecs(-1);
    DebugCapture capture;
    {
        QMessageLogger logger("calc.cpp", 12, "f");
        const QByteArray utf8 = text.toUtf8();
        switch (type) {
        case QtInfoMsg:
            logger.info("%s", utf8.constData());
            break;
        case QtDebugMsg:
            logger.debug("%s", utf8.constData());
            break;
        case QtWarningMsg:
            logger.warning("%s", utf8.constData());
            break;
        default:
            logger.critical("%s", utf8.constData());
            break;
        }
    }
    const QDateTime end = QDateTime::currentDateTime().addSecs(1);

    QCOMPARE(capture.lines(), debugger ? QStringList(text) : QStringList());
    const QStringList lines = traceLines();
    QCOMPARE(lines.size(), before + (traced ? 1 : 0));
    if (!traced)
        return;
    const QRegularExpression format(QStringLiteral("^Info:\\[ (\\S+ \\S+) \\] f\\[12\\] (.*)\\t$"));
    const QRegularExpressionMatch match = format.match(lines.last());
    QVERIFY2(match.hasMatch(), qPrintable(lines.last()));
    QCOMPARE(match.captured(2), text);
    const QDateTime stamp = QDateTime::fromString(match.captured(1), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    QVERIFY2(stamp >= start.addMSecs(-start.time().msec()) && stamp <= end, qPrintable(match.captured(1)));
}

void TestRixTraceOperation::manyThreadsKeepLinesWhole()
{
    RixTraceOperation::instance()->initialise();
    const int before = traceLines().size();
    const int threads = 4, perThread = 200;
    std::vector<QThread *> workers;
    for (int t = 0; t < threads; ++t) {
        workers.push_back(QThread::create([t] {
            for (int i = 0; i < perThread; ++i)
                QMessageLogger("w.cpp", t, "worker").info("t%d m%d", t, i);
        }));
        workers.back()->start();
    }
    for (QThread *w : workers) {
        QVERIFY(w->wait(60000));
        delete w;
    }
    const QStringList lines = traceLines().mid(before);
#if defined(TOV_TRACE_OFF)
    QVERIFY(lines.isEmpty());
#else
    QCOMPARE(lines.size(), threads * perThread);
    QSet<QString> seen;
    const QRegularExpression format(
        QStringLiteral("^Info:\\[ .{19} \\] worker\\[(\\d)\\] t(\\d) m(\\d+)\\t$"));
    for (const QString &line : lines) {
        const QRegularExpressionMatch m = format.match(line);
        QVERIFY2(m.hasMatch() && m.captured(1) == m.captured(2), qPrintable(line));
        seen.insert(m.captured(2) + QLatin1Char(':') + m.captured(3));
    }
    QCOMPARE(seen.size(), threads * perThread);
#endif
}

QTEST_GUILESS_MAIN(TestRixTraceOperation)
#include "tst_rixtraceoperation.moc"
