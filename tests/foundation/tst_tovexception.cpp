#include <tovexception.h>
#include <tovnotfoundvarexception.h>
#include <tovtestutil.h>

#include <QtTest>

class TestTovException : public QObject
{
    Q_OBJECT

private slots:
    void constructorsAndCopies();
    void moveLeavesSourceIntact();
    void whatHasNoText();
    void catchSites();
};

void TestTovException::constructorsAndCopies()
{
    QCOMPARE(TovException().code(), -1);
    QVERIFY(TovException().message().isEmpty());
    QCOMPARE(TovException(QStringLiteral("坏值")).code(), -1);
    const TovException zero(QStringLiteral("x"), 0);
    const TovException copy(zero);
    QCOMPARE(copy.message(), QStringLiteral("x"));
    QCOMPARE(copy.code(), 0);
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

void TestTovException::whatHasNoText()
{
    const QString message = QStringLiteral("属性值[3]非法");
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
