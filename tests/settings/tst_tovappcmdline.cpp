#include "settingsprobe.h"

#include <QtTest>

// Each row runs the probe as its own process: the command line is read once per process.
class TestTovAppCmdLine : public QObject
{
    Q_OBJECT

private slots:
    void parse_data();
    void parse();
};

namespace {

QStringList expected(bool automation, bool efficiency, bool config, bool logTime, const QString &logTimePath,
    const QString &outputPath)
{
    return { QStringLiteral("automation=%1").arg(int(automation)),
        QStringLiteral("efficiency=%1").arg(int(efficiency)), QStringLiteral("config=%1").arg(int(config)),
        QStringLiteral("logTime=%1").arg(int(logTime)), QStringLiteral("logTimePath=") + logTimePath,
        QStringLiteral("outputPath=") + outputPath };
}

} // namespace

void TestTovAppCmdLine::parse_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("no arguments: all off") << QStringList() << expected(false, false, false, false, "", "");
    QTest::newRow("-ef sets only efficiency mode")
        << QStringList { "-ef" } << expected(false, true, false, false, "", "");
    QTest::newRow("-time with path appends slash")
        << QStringList { "-time=D:/logs" } << expected(false, false, false, true, "D:/logs/", "");
    QTest::newRow("-time alone: timings with empty path")
        << QStringList { "-time" } << expected(false, false, false, true, "", "");
    QTest::newRow("-time= empty value: no slash")
        << QStringList { "-time=" } << expected(false, false, false, true, "", "");
    QTest::newRow("value keeps everything after the first equals")
        << QStringList { "-time=a=b" } << expected(false, false, false, true, "a=b/", "");
    QTest::newRow("-outputPath with value")
        << QStringList { "-outputPath=/tmp/out" } << expected(false, false, false, false, "", "/tmp/out/");
    QTest::newRow("-outputPath= empty value: no slash")
        << QStringList { "-outputPath=" } << expected(false, false, false, false, "", "");
    QTest::newRow("--time is not the time option")
        << QStringList { "--time=x" } << expected(false, false, false, false, "", "");
    QTest::newRow("names are case-sensitive")
        << QStringList { "-E", "-Config", "-outputpath=x" } << expected(false, false, false, false, "", "");
    QTest::newRow("a flag given a value still counts")
        << QStringList { "-e=0" } << expected(true, false, false, false, "", "");
    QTest::newRow("arguments without dash are ignored")
        << QStringList { "e", "time=x", "project.prj" } << expected(false, false, false, false, "", "");
    QTest::newRow("repeated option overwrites") << QStringList { "-time=first", "-time=second",
        "-outputPath=a", "-outputPath=" } << expected(false, false, false, true, "second/", "");
    QTest::newRow("path already ending in slash gets another")
        << QStringList { "-outputPath=out/" } << expected(false, false, false, false, "", "out//");
    QTest::newRow("all together with unknown options")
        << QStringList { "-x", "-e", "-ef", "-config", "-time=t", "-outputPath=输出", "-unknown=1" }
        << expected(true, true, true, true, "t/", QStringLiteral("输出/"));
}

void TestTovAppCmdLine::parse()
{
    QFETCH(QStringList, arguments);
    QFETCH(QStringList, expected);
    QCOMPARE(runProbe(QStringLiteral(TOV_CMDLINE_PROBE), arguments), expected);
}

QTEST_GUILESS_MAIN(TestTovAppCmdLine)
#include "tst_tovappcmdline.moc"
