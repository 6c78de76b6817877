#include <cstring.h>
#include <cvector2d.h>
#include <hlnglobals.h>

#include <QtTest>

class TestHlnGeometry : public QObject
{
    Q_OBJECT

private slots:
    void distEpsilon();
    void vectorIsEqual_data();
    void vectorIsEqual();
    void stringIsShared();
};

void TestHlnGeometry::distEpsilon()
{
    QCOMPARE(hln::g_DistEpsilon, 1e-6);
}

void TestHlnGeometry::vectorIsEqual_data()
{
    QTest::addColumn<double>("dx");
    QTest::addColumn<double>("dy");
    QTest::addColumn<bool>("equal");
    QTest::newRow("same point") << 0.0 << 0.0 << true;
    QTest::newRow("x off by half the tolerance") << 5e-7 << 0.0 << true;
    QTest::newRow("y off by twice the tolerance") << 0.0 << -2e-6 << false;
    QTest::newRow("x off by a millimetre") << 1e-3 << 0.0 << false;
}

void TestHlnGeometry::vectorIsEqual()
{
    QFETCH(double, dx);
    QFETCH(double, dy);
    QFETCH(bool, equal);
    const hln::CVector2d a(100.0, -20.0);
    const hln::CVector2d b(100.0 + dx, -20.0 + dy);
    QCOMPARE(a.isEqual(b), equal);
    QCOMPARE(b.isEqual(a), equal);
    QCOMPARE(a == b, dx == 0.0 && dy == 0.0);
    QCOMPARE(hln::CVector2d().x, 0.0);
}

void TestHlnGeometry::stringIsShared()
{
    const hln::CStringPtr text = hln::CString::create(QStringLiteral("路面"));
    const hln::CStringPtr other = text;
    other->setText(QStringLiteral("桥"));
    QCOMPARE(text->text(), QStringLiteral("桥"));
    QVERIFY(hln::CString::create()->isEmpty());
}

QTEST_GUILESS_MAIN(TestHlnGeometry)
#include "tst_hlngeometry.moc"
