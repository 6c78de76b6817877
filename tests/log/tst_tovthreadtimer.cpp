#include <seftickcount.h>
#include <tovthreadtimer.h>

#include <QElapsedTimer>
#include <QtTest>

#include <atomic>

class TestTovThreadTimer : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void fireOrStop_data();
    void fireOrStop();
    void firesAgainAfterANewStart();
    void destructorStopsTheWait();
};

void TestTovThreadTimer::cleanup()
{
    SefTickCount::setOffset(0);
}

void TestTovThreadTimer::fireOrStop_data()
{
    QTest::addColumn<int>("interval");
    QTest::addColumn<int>("stopAfter"); // -1: let it run
    QTest::addColumn<bool>("nearWrap");
    QTest::addColumn<bool>("fires");
    QTest::newRow("fires once after the interval") << 150 << -1 << false << true;
    QTest::newRow("interval 0 fires at once") << 0 << -1 << false << true;
    QTest::newRow("stop before the interval: not called") << 2000 << 50 << false << false;
    QTest::newRow("the wait survives the tick's wrap") << 200 << -1 << true << true;
}

void TestTovThreadTimer::fireOrStop()
{
    QFETCH(int, interval);
    QFETCH(int, stopAfter);
    QFETCH(bool, nearWrap);
    QFETCH(bool, fires);
    if (nearWrap)
        SefTickCount::setOffset(quint32(0xFFFFFFFFu - 50u) - SefTickCount::now());

    std::atomic<int> calls { 0 };
    std::atomic<qint64> firedAt { -1 };
    QElapsedTimer clock;
    TovThreadTimer timer;
    timer.setTimeOutFunc([&] {
        firedAt = clock.elapsed();
        ++calls;
    });
    clock.start();
    timer.startTimer(interval);
    if (stopAfter >= 0) {
        QThread::msleep(stopAfter);
        timer.stopTimer();
        QVERIFY(!timer.isRunning());
        QThread::msleep(100);
    } else {
        QVERIFY(timer.wait(interval + 10000));
    }
    QCOMPARE(calls.load(), fires ? 1 : 0);
    if (fires) {
        QVERIFY2(firedAt >= interval - 1, qPrintable(QString::number(firedAt)));
        QVERIFY2(firedAt <= interval + 5000, qPrintable(QString::number(firedAt)));
    }
}

void TestTovThreadTimer::firesAgainAfterANewStart()
{
    std::atomic<int> calls { 0 };
    TovThreadTimer timer;
    timer.setTimeOutFunc([&calls] { ++calls; });
    for (int round = 1; round <= 3; ++round) {
        timer.startTimer(10);
        QVERIFY(timer.wait(10000));
        QCOMPARE(calls.load(), round);
    }
}

void TestTovThreadTimer::destructorStopsTheWait()
{
    std::atomic<int> calls { 0 };
    {
        TovThreadTimer timer;
        timer.setTimeOutFunc([&calls] { ++calls; });
        timer.startTimer(60000);
    }
    QCOMPARE(calls.load(), 0);
}

QTEST_GUILESS_MAIN(TestTovThreadTimer)
#include "tst_tovthreadtimer.moc"
