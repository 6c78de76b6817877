#include <toveffifileoperator.h>
#include <tovtimetracker.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

// Built once per "DebugConfig.ini" beside the executable, since the operator reads it once:
//   TOV_EFFI_OFF       no ini file
//   TOV_EFFI_APPDIR    IsEffi=true, no LogPath
//   TOV_EFFI_LOGPATH   IsEffi=true, LogPath=effi/logs (relative: resolved in the working folder)
class TestTovEffiFileOperator : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void configuration();
    void collectsLines_data();
    void collectsLines();
    void saveReplacesAndKeepsLines();

private:
    QString expectedLogPath() const;
    QTemporaryDir m_workDir;
};

void TestTovEffiFileOperator::initTestCase()
{
    QVERIFY(m_workDir.isValid());
    QVERIFY(QDir::setCurrent(m_workDir.path()));
    QFile::remove(QCoreApplication::applicationDirPath() + QStringLiteral("/Efficient.txt"));
}

void TestTovEffiFileOperator::cleanup()
{
    TovEffiFileOperator::releaseInstance();
    TovTimeTracker::releaseInstance();
    QFile::remove(QCoreApplication::applicationDirPath() + QStringLiteral("/Efficient.txt"));
    QFile::remove(m_workDir.filePath(QStringLiteral("effi/logs/Efficient.txt")));
}

QString TestTovEffiFileOperator::expectedLogPath() const
{
#if defined(TOV_EFFI_APPDIR)
    return QCoreApplication::applicationDirPath() + QLatin1Char('/');
#elif defined(TOV_EFFI_LOGPATH)
    return QStringLiteral("effi/logs/");
#else
    return QString();
#endif
}

void TestTovEffiFileOperator::configuration()
{
    TovEffiFileOperator *op = TovEffiFileOperator::getInstance();
#if defined(TOV_EFFI_OFF)
    QVERIFY(!op->isEnabled());
#else
    QVERIFY(op->isEnabled());
    QVERIFY2(QDir(expectedLogPath()).exists(), "the log directory is made at construction");
#endif
    QCOMPARE(op->logPath(), expectedLogPath());
    QCOMPARE(TovEffiFileOperator::getInstance(), op);
}

void TestTovEffiFileOperator::collectsLines_data()
{
    QTest::addColumn<qlonglong>("offset");
    QTest::addColumn<bool>("custom");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<int>("low");
    QTest::newRow("default line: name then total, no separator")
        << 1520ll << false << "^load(-?\\d+)$" << 1520;
    QTest::newRow("default line reads the total as signed") << -100ll << false << "^load(-?\\d+)$" << -100;
    QTest::newRow("formatter line, read as UTF-8")
        << 30ll << true << QStringLiteral("^装载 load: (-?\\d+) ms$") << 30;
}

void TestTovEffiFileOperator::collectsLines()
{
    QFETCH(qlonglong, offset);
    QFETCH(bool, custom);
    QFETCH(QString, pattern);
    QFETCH(int, low);
    TovEffiFileOperator *op = TovEffiFileOperator::getInstance();
    TovTimeTracker *tracker = TovTimeTracker::getInstance();
    const std::string name = "load";
    op->startLogWork(name);
    QCOMPARE(tracker->hasTrackWork(name), op->isEnabled());
    // The operator starts with offset 0; give the stretch its offset through the tracker.
    tracker->startTrackWork(name, offset);
    if (custom) {
        op->stopLogWork(name, [](const std::string &n, stWorkRecord &r) {
            return std::string("\xe8\xa3\x85\xe8\xbd\xbd ") + n + ": " + std::to_string(r.total) + " ms";
        });
    } else {
        op->stopLogWork(name);
    }
    op->stopLogWork("never started");

    const QStringList lines = op->lines();
    if (!op->isEnabled()) {
        QVERIFY(lines.isEmpty());
        return;
    }
    QCOMPARE(lines.size(), 1);
    const QRegularExpressionMatch match = QRegularExpression(pattern).match(lines.first());
    QVERIFY2(match.hasMatch(), qPrintable(lines.first()));
    const int value = match.captured(1).toInt();
    QVERIFY2(value >= low && value <= low + 400, qPrintable(lines.first()));
}

void TestTovEffiFileOperator::saveReplacesAndKeepsLines()
{
    TovEffiFileOperator *op = TovEffiFileOperator::getInstance();
    const QString file = expectedLogPath() + QStringLiteral("Efficient.txt");
    op->saveToFile();
    QVERIFY2(!QFile::exists(file), "nothing collected, nothing written");

    auto fixedTotal = [](const std::string &n, stWorkRecord &) { return n; };
    op->startLogWork("a");
    op->stopLogWork("a", fixedTotal);
    op->saveToFile();
    op->startLogWork("b");
    op->stopLogWork("b", fixedTotal);
    op->saveToFile();

#if defined(TOV_EFFI_OFF)
    QVERIFY(!QFile::exists(QCoreApplication::applicationDirPath() + QStringLiteral("/Efficient.txt")));
    QVERIFY(!QFile::exists(m_workDir.filePath(QStringLiteral("Efficient.txt"))));
    QVERIFY(!TovTimeTracker::getInstance()->hasTrackWork("a"));
#else
    QFile f(file);
    QVERIFY(f.open(QIODevice::ReadOnly));
    QCOMPARE(f.readAll(), QByteArray("a\r\nb\r\n"));
    QCOMPARE(op->lines(), QStringList({ QStringLiteral("a"), QStringLiteral("b") }));
#endif
}

QTEST_GUILESS_MAIN(TestTovEffiFileOperator)
#include "tst_toveffifileoperator.moc"
