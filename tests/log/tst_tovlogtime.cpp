#include "logtestutil.h"

#include <QDateTime>
#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

// The ".time" report depends on the command line, read once per process: each row runs the
// probe program under its own command line.
class TestTovLogTime : public QObject
{
    Q_OBJECT

private slots:
    void report_data();
    void report();
    void threadsKeepTheirOrder();
    void resetAndLastName();
    void messagesAndTimingsOnThreads();
};

namespace {

const QString header = QStringLiteral("操作时间,功能名称,用时(秒)");

struct ProbeResult
{
    QStringList out;
    QStringList err;
};

// "$T" in an argument stands for the temporary folder.
ProbeResult runProbe(const QStringList &arguments, const QString &temp)
{
    QStringList args;
    for (const QString &a : arguments)
        args << QString(a).replace(QStringLiteral("$T"), temp);
    QProcess process;
    process.start(QStringLiteral(TOV_LOG_PROBE), args);
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit
        || process.exitCode() != 0) {
        QTest::qFail(
            qPrintable(QStringLiteral("probe failed: ") + QString::fromUtf8(process.readAllStandardError())),
            __FILE__, __LINE__);
        return {};
    }
    return { QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts),
        QString::fromUtf8(process.readAllStandardError()).split(QLatin1Char('\n'), Qt::SkipEmptyParts) };
}

QStringList readLines(const QString &file)
{
    QFile f(file);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(f.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QStringList timeFiles(const QString &dir)
{
    QStringList found;
    QDirIterator it(dir, { QStringLiteral("*.time") }, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        found << QDir(dir).relativeFilePath(it.next());
    found.sort();
    return found;
}

const QRegularExpression reportLine(
    QStringLiteral("^(\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d),([^,]*),(\\S+)$"));

} // namespace

void TestTovLogTime::report_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("existing"); // content of the report before the run; "-" = no file
    QTest::addColumn<QString>("file"); // the report, relative to the temporary folder
    QTest::addColumn<QStringList>("lines"); // "H" = the header, else the timing's name

    const QString script = QStringLiteral("script=+A +B . .");
    QTest::newRow("-time=folder: named after the project file")
        << QStringList { "-time=$T/rep", "project=$T/proj/road.tov", script } << "-"
        << "rep/road.tov.time" << QStringList { "H", "A", "B" };
    QTest::newRow("-time alone: beside the project file")
        << QStringList { "-time", "project=$T/proj/road.tov", script } << "-"
        << "proj/road.tov.time" << QStringList { "H", "A", "B" };
    QTest::newRow("-time=folder without project: RixReport")
        << QStringList { "-time=$T/rep", script } << "-"
        << "rep/RixReport.time" << QStringList { "H", "A", "B" };
    QTest::newRow("-time alone without project: nothing") << QStringList { "-time", script } << "-"
                                                          << "" << QStringList {};
    QTest::newRow("no -time: nothing") << QStringList { "project=$T/proj/road.tov", script } << "-"
                                       << "" << QStringList {};
    QTest::newRow("automation: no header") << QStringList { "-time=$T/rep", "-e", script } << "-"
                                           << "rep/RixReport.time" << QStringList { "A", "B" };
    QTest::newRow("an existing report gets no second header")
        << QStringList { "-time=$T/rep", script } << "earlier\n"
        << "rep/RixReport.time" << QStringList { "earlier", "A", "B" };
    QTest::newRow("an existing empty report gets the header")
        << QStringList { "-time=$T/rep", script } << ""
        << "rep/RixReport.time" << QStringList { "H", "A", "B" };
    QTest::newRow("outermost first, inner ones in reverse order of completion")
        << QStringList { "-time=$T/rep", "script=+A +B . +C +D . . ." } << "-"
        << "rep/RixReport.time" << QStringList { "H", "A", "C", "D", "B" };
    QTest::newRow("each outermost timing writes at its stop")
        << QStringList { "-time=$T/rep", "script=+A . +B +C . ." } << "-"
        << "rep/RixReport.time" << QStringList { "H", "A", "B", "C" };
    QTest::newRow("stops without a timing do nothing")
        << QStringList { "-time=$T/rep", "script=. +A . ." } << "-"
        << "rep/RixReport.time" << QStringList { "H", "A" };
    QTest::newRow("a missing report folder: nothing") << QStringList { "-time=$T/none/deeper", script } << "-"
                                                      << "" << QStringList {};
}

void TestTovLogTime::report()
{
    QFETCH(QStringList, args);
    QFETCH(QString, existing);
    QFETCH(QString, file);
    QFETCH(QStringList, lines);
    QTemporaryDir temp;
    QVERIFY(
        QDir(temp.path()).mkpath(QStringLiteral("rep")) && QDir(temp.path()).mkpath(QStringLiteral("proj")));
    if (existing != QLatin1String("-")) {
        QFile f(temp.filePath(file));
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(existing.toUtf8());
    }
    const QDateTime start = QDateTime::currentDateTime().addSecs(-1);
    const ProbeResult result = runProbe(args, temp.path());
    QCOMPARE(timeFiles(temp.path()), file.isEmpty() ? QStringList() : QStringList(file));
    if (file.isEmpty())
        return;

    const QStringList got = readLines(temp.filePath(file));
    QCOMPARE(got.size(), lines.size());
    QStringList debugLines;
    for (int i = 0; i < lines.size(); ++i) {
        if (lines[i] == QLatin1String("H")) {
            QCOMPARE(got[i], header);
            continue;
        }
        if (lines[i] == QLatin1String("earlier")) {
            QCOMPARE(got[i], lines[i]);
            continue;
        }
        const QRegularExpressionMatch m = reportLine.match(got[i]);
        QVERIFY2(m.hasMatch(), qPrintable(got[i]));
        QCOMPARE(m.captured(2), lines[i]);
        const QDateTime stamp = QDateTime::fromString(m.captured(1), QStringLiteral("yyyy-MM-dd hh:mm:ss"));
        QVERIFY(stamp >= start && stamp <= QDateTime::currentDateTime());
        bool ok = false;
        const double seconds = m.captured(3).toDouble(&ok);
        QVERIFY(ok && seconds >= 0 && seconds < 30);
        debugLines << m.captured(1) + QLatin1Char(' ') + lines[i] + QLatin1Char(' ') + m.captured(3)
                + QStringLiteral("秒");
    }
    // The same lines go to the debug output (standard error of the probe), in the same order.
    QStringList echoed;
    for (const QString &line : result.err) {
        if (line.endsWith(QStringLiteral("秒")))
            echoed << line;
    }
    QCOMPARE(echoed, debugLines);
}

void TestTovLogTime::threadsKeepTheirOrder()
{
    QTemporaryDir temp;
    runProbe({ "-time=$T/", "threads=8", "script=+A +B w5 . +C . . +A . +A +B . ." }, temp.path());
    const QStringList got = readLines(temp.filePath(QStringLiteral("RixReport.time")));
    QCOMPARE(got.size(), 1 + 8 * 6);
    QCOMPARE(got.first(), header);
    QHash<QString, QStringList> perThread;
    for (const QString &line : got.mid(1)) {
        const QRegularExpressionMatch m = reportLine.match(line);
        QVERIFY2(m.hasMatch(), qPrintable(line));
        const QString name = m.captured(2);
        perThread[name.section(QLatin1Char('#'), 1)] << name.section(QLatin1Char('#'), 0, 0);
    }
    QCOMPARE(perThread.size(), 8);
    for (const QStringList &names : qAsConst(perThread))
        QCOMPARE(names, QStringList({ "A", "C", "B", "A", "A", "B" }));
}

void TestTovLogTime::resetAndLastName()
{
    QTemporaryDir temp;
    const ProbeResult result
        = runProbe({ "-time=$T/", "script=? +outer ? +inner ? . ? w400 r . ? +kept w300 ." }, temp.path());
    QCOMPARE(result.out, QStringList({ "name:", "name:outer", "name:inner", "name:outer", "name:" }));
    const QStringList got = readLines(temp.filePath(QStringLiteral("RixReport.time")));
    QCOMPARE(got.size(), 4);
    QHash<QString, double> seconds;
    for (const QString &line : got.mid(1)) {
        const QRegularExpressionMatch m = reportLine.match(line);
        QVERIFY2(m.hasMatch(), qPrintable(line));
        seconds.insert(m.captured(2), m.captured(3).toDouble());
    }
    QVERIFY2(seconds.value(QStringLiteral("outer")) < 0.3, "the reset restarted the outer timing");
    QVERIFY(seconds.value(QStringLiteral("kept")) >= 0.299);
}

void TestTovLogTime::messagesAndTimingsOnThreads()
{
    // Eight threads interleave nested messages and nested timings: both channels share the
    // database mutex and each thread's manager.
    QTemporaryDir temp;
    const int threads = 8, repeat = 250;
    runProbe({ "-time=$T/", "logdir=$T", QStringLiteral("threads=%1").arg(threads),
                 QStringLiteral("repeat=%1").arg(repeat), "script=+A <m +B <n > . > ." },
        temp.path());

    const QStringList lines = readLines(temp.filePath(QStringLiteral("RixReport.time")));
    QCOMPARE(lines.size(), 1 + threads * repeat * 2);
    QHash<QString, QStringList> perThread;
    for (const QString &line : lines.mid(1)) {
        const QString name = reportLine.match(line).captured(2);
        perThread[name.section(QLatin1Char('#'), 1)] << name.section(QLatin1Char('#'), 0, 0);
    }
    QCOMPARE(perThread.size(), threads);
    for (const QStringList &names : qAsConst(perThread)) {
        QCOMPARE(names.size(), repeat * 2);
        QCOMPARE(names.count(QStringLiteral("A")), repeat);
        for (int i = 0; i < names.size(); i += 2)
            QCOMPARE(names.mid(i, 2), QStringList({ "A", "B" }));
    }

    const QVector<LogRow> rows = readLogRows(temp.filePath(QStringLiteral("TovLog.db")));
    QCOMPARE(rows.size(), threads * repeat * 2);
    QHash<int, const LogRow *> byId;
    for (const LogRow &r : rows)
        byId.insert(r.id, &r);
    QCOMPARE(byId.size(), rows.size());
    for (const LogRow &r : rows) {
        if (r.msg.startsWith(QLatin1Char('m'))) {
            QCOMPARE(r.pid, -1);
            continue;
        }
        const LogRow *parent = byId.value(r.pid);
        QVERIFY2(parent && parent->msg == QLatin1Char('m') + r.msg.mid(1), qPrintable(r.msg));
    }
}

QTEST_GUILESS_MAIN(TestTovLogTime)
#include "tst_tovlogtime.moc"
