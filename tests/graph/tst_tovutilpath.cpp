#include <tovtestutil.h>

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

// The "path" command of tovutil, run as a process: sample graphs, dumps and the error lines.

class TestTovUtilPath : public QObject
{
    Q_OBJECT

private slots:
    void searches_data();
    void searches();
    void failures_data();
    void failures();
    void dumpMatchesFixture();

private:
    struct Result
    {
        int exitCode;
        QString out;
        QString err;
    };
    static Result run(const QStringList &arguments);
    static QString sample(const QString &name) { return QStringLiteral(TOVUTIL_GRAPHS "/") + name; }
};

TestTovUtilPath::Result TestTovUtilPath::run(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(TOVUTIL_EXE), QStringList { QStringLiteral("path") } + arguments);
    if (!process.waitForFinished(60000))
        return { -1, QString(), QStringLiteral("tovutil did not finish") };
    return { process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
        QString::fromUtf8(process.readAllStandardError()) };
}

void TestTovUtilPath::searches_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("weight");

    row("two-node search along the chain", QStringList { sample("chain.txt"), "--from", "1", "--to", "5" },
        "1 2 3 4 5", "5");
    row("one-node search takes the cheaper of equal branches",
        QStringList { sample("chain.txt"), "--start", "3" }, "3 4 5", "3");
    row("one-node search both ways", QStringList { sample("chain.txt"), "--start", "3", "--both-ways" },
        "1 2 3 4 5", "5");
    row("stop weight cuts the costlier branch",
        QStringList { sample("chain.txt"), "--from", "3", "--to", "7", "--stop", "3" }, "3 6 7", "3");
    row("key-list search counts the keys covered", QStringList { sample("roads.txt"), "--keys", "1,4,13,16" },
        "1 2 3 4 8 7 11 10 9 13 14 15 16", "4");
    row("region search takes the larger group",
        QStringList { sample("regions.txt"), "--keys", "1,4,10,11,12", "--by-region" }, "10 11 12", "3");
    row("no path between the keys: the first key", QStringList { sample("regions.txt"), "--keys", "4,10" },
        "4", "1");
    row("two-node search without a path",
        QStringList { sample("regions.txt"), "--from", "4", "--to", "10", "--timeout", "1000" }, "(none)",
        "0");
    row("backwards along the sides", QStringList { sample("regions.txt"), "--from", "4", "--to", "1" },
        "4 3 2 1", "4");
}

void TestTovUtilPath::searches()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, path);
    QFETCH(QString, weight);
    const Result result = run(arguments);
    QCOMPARE(result.err, QString());
    QCOMPARE(result.exitCode, 0);
    const QStringList lines = result.out.split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 4); // path, weight, time, and the final end of line
    QCOMPARE(lines.at(0), QStringLiteral("path: ") + path);
    QCOMPARE(lines.at(1), QStringLiteral("weight: ") + weight);
    QVERIFY2(QRegularExpression(QStringLiteral("^time: \\d+\\.\\d{3} ms$")).match(lines.at(2)).hasMatch(),
        qPrintable(lines.at(2)));
}

void TestTovUtilPath::failures_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>(
        "graph"); // when given: written to a file, searched from node 1 ("%1" in the error)
    QTest::addColumn<QString>("error");

    row("no search given", QStringList { sample("chain.txt") }, QString(),
        "give one of --from and --to, --start or --keys");
    row("two searches given", QStringList { sample("chain.txt"), "--start", "1", "--keys", "1,2" }, QString(),
        "give one of --from and --to, --start or --keys");
    row("from without to", QStringList { sample("chain.txt"), "--from", "1" }, QString(),
        "--from and --to go together");
    row("keys not numbers", QStringList { sample("chain.txt"), "--keys", "1,b" }, QString(),
        "--keys takes comma-separated integer keys");
    row("unknown start node", QStringList { sample("chain.txt"), "--start", "99" }, QString(),
        sample("chain.txt") + ": no node 99");
    row("missing file", QStringList { sample("none.txt"), "--start", "1" }, QString(),
        sample("none.txt") + ": no such file");
    row("no file", QStringList { "--start", "1" }, QString(),
        "path needs exactly one FILE (see tovutil path --help)");
    row("unknown side", QStringList(), "# roads\n1 out 2 in\n\n2 up 3 in\n",
        "%1:4: a side is \"in\" or \"out\"");
    row("too few words", QStringList(), "1 out 2\n",
        "%1:1: expected \"KEY1 SIDE1 KEY2 SIDE2 [WEIGHT]\" or \"node KEY WEIGHT\"");
    row("weight not a number", QStringList(), "1 out 2 in 2\n1 in 3 out heavy\n",
        "%1:2: expected \"KEY1 SIDE1 KEY2 SIDE2 [WEIGHT]\" or \"node KEY WEIGHT\"");
    row("bad node line", QStringList(), "1 out 2 in\nnode 1\n", "%1:2: expected \"node KEY WEIGHT\"");
    row("self-loop", QStringList(), "5 out 5 in\n", "%1:1: an edge cannot join node 5 to itself");
    row("nodes joined twice", QStringList(), "1 out 2 in\n2 in 1 in # again\n",
        "%1:2: nodes 2 and 1 are already joined");
}

void TestTovUtilPath::failures()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, graph);
    QFETCH(QString, error);
    QTemporaryDir dir;
    if (!graph.isEmpty()) {
        const QString file = dir.filePath(QStringLiteral("graph.txt"));
        QFile out(file);
        QVERIFY(out.open(QIODevice::WriteOnly));
        out.write(graph.toUtf8());
        out.close();
        arguments = QStringList { file, QStringLiteral("--start"), QStringLiteral("1") };
        error = error.arg(file);
    }
    const Result result = run(arguments);
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.out, QString());
    QCOMPARE(result.err, QStringLiteral("tovutil: ") + error + QLatin1Char('\n'));
}

void TestTovUtilPath::dumpMatchesFixture()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString dump = dir.filePath(QStringLiteral("chain.dump"));
    const Result result = run({ sample(QStringLiteral("chain.txt")), QStringLiteral("--start"),
        QStringLiteral("1"), QStringLiteral("--dump"), dump });
    QCOMPARE(result.exitCode, 0);
    QFile got(dump);
    QFile expected(QFINDTESTDATA("../data/graph/chain.dump"));
    QVERIFY(got.open(QIODevice::ReadOnly));
    QVERIFY(expected.open(QIODevice::ReadOnly));
    QCOMPARE(got.readAll(), expected.readAll());
}

QTEST_GUILESS_MAIN(TestTovUtilPath)
#include "tst_tovutilpath.moc"
