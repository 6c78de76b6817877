#include <seftickcount.h>
#include <tovtimetracker.h>

#include <QThread>
#include <QtTest>

// Scripts: "s<offset>" starts the work, "w<ms>" waits, "p" stops it, "r" resets its total.
class TestTovTimeTracker : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void stretches_data();
    void stretches();
    void unknownWorks_data();
    void unknownWorks();
    void stopCallsBackWithACopy();
    void stretchAcrossTickWrap();
    void totalWrapsModulo32Bits();
};

namespace {

const std::string work = "work";

void runScript(const QString &script)
{
    TovTimeTracker *tracker = TovTimeTracker::getInstance();
    for (const QString &step : script.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const QChar op = step.at(0);
        const long long arg = step.mid(1).toLongLong();
        if (op == QLatin1Char('s'))
            tracker->startTrackWork(work, arg);
        else if (op == QLatin1Char('w'))
            QThread::msleep(arg);
        else if (op == QLatin1Char('p'))
            tracker->stopTrackWork(work);
        else if (op == QLatin1Char('r'))
            tracker->resetTime(work);
    }
}

// Measured durations: never shorter than the sleeps (less one tick of rounding), and at most
// a generous margin longer on a loaded machine.
#define TOV_VERIFY_ABOUT(actual, expected)                                                                   \
    do {                                                                                                     \
        const qint64 tovActual = qint64(actual);                                                             \
        QVERIFY2(tovActual >= qint64(expected) - 2 && tovActual <= qint64(expected) + 400,                   \
            qPrintable(QStringLiteral("%1 is not about %2").arg(tovActual).arg(expected)));                  \
    } while (false)

} // namespace

void TestTovTimeTracker::init()
{
    SefTickCount::setOffset(0);
    TovTimeTracker::releaseInstance();
}

void TestTovTimeTracker::cleanup()
{
    SefTickCount::setOffset(0);
    TovTimeTracker::releaseInstance();
}

void TestTovTimeTracker::stretches_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("total");
    QTest::addColumn<int>("current");
    QTest::newRow("two stretches add up, current is the last") << "s0 w100 p s0 w50 p" << 150 << 50;
    QTest::newRow("offset 1000 stopped at once") << "s1000 p" << 1000 << 1000;
    QTest::newRow("offset counts once, for the next stretch") << "s200 w30 p s0 w30 p" << 260 << 30;
    QTest::newRow("restart drops the running stretch") << "s0 w100 s0 w50 p" << 50 << 50;
    QTest::newRow("stopping a stopped work changes nothing") << "s0 w50 p w60 p" << 50 << 50;
    QTest::newRow("reset clears total, keeps current") << "s0 w60 p r" << 0 << 60;
    QTest::newRow("reset between stretches") << "s0 w60 p r s0 w30 p" << 30 << 30;
    QTest::newRow("negative offset shortens the stretch") << "s-40 w100 p" << 60 << 60;
}

void TestTovTimeTracker::stretches()
{
    QFETCH(QString, script);
    QFETCH(int, total);
    QFETCH(int, current);
    runScript(script);
    TovTimeTracker *tracker = TovTimeTracker::getInstance();
    TOV_VERIFY_ABOUT(tracker->getTime(work), total);
    TOV_VERIFY_ABOUT(tracker->getCurTime(work), current);
}

void TestTovTimeTracker::unknownWorks_data()
{
    QTest::addColumn<int>("reader");
    QTest::addColumn<bool>("inserted");
    QTest::newRow("stop of a never started work creates nothing") << 0 << false;
    QTest::newRow("remove of an unknown work creates nothing") << 1 << false;
    QTest::newRow("getTime inserts a zero record") << 2 << true;
    QTest::newRow("getCurTime inserts a zero record") << 3 << true;
    QTest::newRow("resetTime inserts a zero record") << 4 << true;
    QTest::newRow("getWorkingTime inserts a zero record") << 5 << true;
}

void TestTovTimeTracker::unknownWorks()
{
    QFETCH(int, reader);
    QFETCH(bool, inserted);
    TovTimeTracker *tracker = TovTimeTracker::getInstance();
    bool called = false;
    switch (reader) {
    case 0:
        tracker->stopTrackWork(work, [&called](stWorkRecord &) { called = true; });
        break;
    case 1:
        tracker->removeTrackWork(work);
        break;
    case 2:
        QCOMPARE(tracker->getTime(work), 0ul);
        break;
    case 3:
        QCOMPARE(tracker->getCurTime(work), 0ul);
        break;
    case 4:
        tracker->resetTime(work);
        break;
    case 5: {
        // A zero record: begin 0, so the working time is the tick itself.
        const long long before = SefTickCount::now();
        const long long working = tracker->getWorkingTime(work);
        QVERIFY(working >= before && working <= (long long)SefTickCount::now());
        break;
    }
    }
    QVERIFY(!called);
    QCOMPARE(tracker->hasTrackWork(work), inserted);
    if (inserted) {
        QCOMPARE(tracker->getTime(work), 0ul);
        QCOMPARE(tracker->getCurTime(work), 0ul);
    }
}

void TestTovTimeTracker::stopCallsBackWithACopy()
{
    TovTimeTracker *tracker = TovTimeTracker::getInstance();
    tracker->startTrackWork(work, 7);
    QVERIFY(tracker->hasTrackWork(work));
    stWorkRecord seen;
    int calls = 0;
    tracker->stopTrackWork(work, [&](stWorkRecord &record) {
        seen = record;
        ++calls;
        record.total = 999999; // a copy: the tracker keeps its own
    });
    tracker->stopTrackWork(work, [&](stWorkRecord &) { ++calls; });
    QCOMPARE(calls, 1);
    QVERIFY(!seen.running);
    QCOMPARE(seen.offset, 7ll);
    QCOMPARE(seen.current, seen.total);
    QCOMPARE(seen.current, quint32(7) + (seen.stop - seen.begin));
    QCOMPARE(tracker->getTime(work), (unsigned long)seen.total);

    tracker->removeTrackWork(work);
    QVERIFY(!tracker->hasTrackWork(work));
}

void TestTovTimeTracker::stretchAcrossTickWrap()
{
    // Put the counter 40 ms before its wrap.
    SefTickCount::setOffset(0);
    SefTickCount::setOffset(quint32(0xFFFFFFFFu - 40u) - SefTickCount::now());
    TovTimeTracker *tracker = TovTimeTracker::getInstance();
    tracker->startTrackWork(work, 0);
    QThread::msleep(100);
    TOV_VERIFY_ABOUT(tracker->getBeginToNowTime(work), 100);
    TOV_VERIFY_ABOUT(tracker->getWorkingTime(work), 100);
    stWorkRecord seen;
    tracker->stopTrackWork(work, [&seen](stWorkRecord &record) { seen = record; });
    QVERIFY2(seen.stop < seen.begin, "the counter did not wrap during the stretch");
    TOV_VERIFY_ABOUT(seen.current, 100);
    TOV_VERIFY_ABOUT(tracker->getTime(work), 100);
}

void TestTovTimeTracker::totalWrapsModulo32Bits()
{
    TovTimeTracker *tracker = TovTimeTracker::getInstance();
    // Only the offset's low 32 bits take part: 2^32 + 5 counts as 5.
    tracker->startTrackWork(work, (1ll << 32) + 5);
    tracker->stopTrackWork(work);
    TOV_VERIFY_ABOUT(tracker->getCurTime(work), 5);
    tracker->resetTime(work);
    tracker->startTrackWork(work, 0xFFFFFFF0ll);
    tracker->stopTrackWork(work);
    tracker->startTrackWork(work, 0x20);
    tracker->stopTrackWork(work);
    TOV_VERIFY_ABOUT(tracker->getTime(work), 0x10);
}

QTEST_GUILESS_MAIN(TestTovTimeTracker)
#include "tst_tovtimetracker.moc"
