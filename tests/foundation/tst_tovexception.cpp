#include <tovexception.h>
#include <tovnotfoundvarexception.h>
#include <tovtestutil.h>

#include <QtTest>

class TestTovException : public QObject
{
    Q_OBJECT

private slots:
    void constructors_data();
    void constructors();
    void moveLeavesSourceIntact();
    void whatHasNoText_data();
    void whatHasNoText();
    void catchSites();
};

void TestTovException::constructors_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("code");
    QTest::newRow("default: empty text, code -1") << 0 << QString() << -1;
    QTest::newRow("text alone: code -1") << 1 << QStringLiteral("坏值") << -1;
    QTest::newRow("text and 0: code 0") << 2 << QStringLiteral("x") << 0;
    QTest::newRow("text and 42") << 2 << QStringLiteral("y") << 42;
}

void TestTovException::constructors()
{
    QFETCH(int, kind);
    QFETCH(QString, message);
    QFETCH(int, code);
    const TovException e = kind == 0 ? TovException()
        : kind == 1                  ? TovException(message)
                                     : TovException(message, code);
    QCOMPARE(e.message(), message);
    QCOMPARE(e.code(), code);
    const TovException copy(e);
    QCOMPARE(copy.message(), message);
    QCOMPARE(copy.code(), code);
}

void TestTovException::moveLeavesSourceIntact()
{
    TovException source(QStringLiteral("原文"), 7);
    TovException moved(std::move(source));
    QCOMPARE(moved.message(), QStringLiteral("原文"));
    QCOMPARE(source.message(), QStringLiteral("原文")); // NOLINT: the source stays intact on purpose
    QCOMPARE(source.code(), 7);

    TovException target;
    target = std::move(moved);
    QCOMPARE(target.code(), 7);
    QCOMPARE(moved.message(), QStringLiteral("原文")); // NOLINT

    TovNotFoundVarException nf(QStringLiteral("[W]变量没有找到!"));
    TovNotFoundVarException nfMoved(std::move(nf));
    QCOMPARE(nf.message(), nfMoved.message()); // NOLINT
    QCOMPARE(nfMoved.code(), -1);
}

void TestTovException::whatHasNoText_data()
{
    QTest::addColumn<QString>("message");
    QTest::newRow("empty") << QString();
    QTest::newRow("chinese") << QStringLiteral("属性值[3]非法");
}

void TestTovException::whatHasNoText()
{
    QFETCH(QString, message);
    QCOMPARE(QByteArray(SefException(message).what()), QByteArray("Unknown exception"));
    QCOMPARE(QByteArray(TovException(message).what()), QByteArray("Unknown exception"));
    QCOMPARE(QByteArray(TovNotFoundVarException(message).what()), QByteArray("Unknown exception"));
}

void TestTovException::catchSites()
{
    bool caughtAsBase = false;
    try {
        throw TovNotFoundVarException(QStringLiteral("n"));
    } catch (const TovException &) {
        QFAIL("a TovException handler must not catch TovNotFoundVarException");
    } catch (const SefException &e) {
        caughtAsBase = e.message() == QLatin1String("n");
    }
    QVERIFY(caughtAsBase);

    TOV_VERIFY_THROWS(throw TovException(QStringLiteral("m")), TovException, "m", -1);
    TOV_VERIFY_THROWS(throw TovNotFoundVarException(QStringLiteral("v")), TovNotFoundVarException, "v", -1);
}

QTEST_GUILESS_MAIN(TestTovException)
#include "tst_tovexception.moc"
