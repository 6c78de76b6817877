#include <ihynelementdrawobj.h>
#include <ihynmodel.h>
#include <ihynproperty.h>
#include <tovelevstrtranslations.h>

#include <QtTest>

namespace {

// Shows stored elevations as "+<text> m" and stores displayed ones back without the decoration;
// each translator tags its output with its identifier pair.
class MetreTranslator : public IHynElevStrTranslator
{
public:
    MetreTranslator(long long first, long long second)
        : m_tag(QStringLiteral("%1/%2:").arg(first).arg(second))
    { }
    QString trString(const QString &text) const override
    {
        return m_tag + QLatin1Char('+') + text + QLatin1String(" m");
    }
    QString unTrString(const QString &text) const override
    {
        QString stored = text;
        stored.remove(QLatin1String(" m")).remove(QLatin1Char('+'));
        return m_tag + stored;
    }

private:
    QString m_tag;
};

// Has translators for every pair except those with a negative first identifier.
class Model : public IHynModel
{
public:
    std::shared_ptr<IHynElevStrTranslator> getElevStrTranslator(long long first, long long second) override
    {
        if (first < 0)
            return nullptr;
        return std::make_shared<MetreTranslator>(first, second);
    }
};

class DrawObj : public IHynElementDrawObj
{
public:
    std::pair<long long, long long> elevStrIds() const override { return { 3, 4 }; }
};

class Property : public IHynProperty
{
public:
    std::pair<long long, long long> definitionIds() const override { return { 5, 6000000000LL }; }
};

} // namespace

// The instance is process-wide: the slot that needs no model runs first (declaration order).
class TestTovElevStrTranslations : public QObject
{
    Q_OBJECT

private slots:
    void unchangedBeforeSetModel();
    void byIdentifiers_data();
    void byIdentifiers();
    void byObjectAndProperty();
    void propertyReleasedOnReturn();
    void cleanupTestCase();

private:
    Model m_model;
};

void TestTovElevStrTranslations::unchangedBeforeSetModel()
{
    TovElevStrTranslations *tr = TovElevStrTranslations::instance();
    const QString text = QStringLiteral("12.500");
    QCOMPARE(tr->trElevString(1, 2, text), text);
    QCOMPARE(tr->unTrElevString(1, 2, text), text);
    DrawObj object;
    QCOMPARE(tr->unTrElevString(&object, text), text);
    QCOMPARE(tr->unTrElevString(std::make_shared<Property>(), text), text);
}

void TestTovElevStrTranslations::byIdentifiers_data()
{
    QTest::addColumn<qint64>("first");
    QTest::addColumn<qint64>("second");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("displayed");
    QTest::addColumn<QString>("stored");
    QTest::newRow("pair passed through") << qint64(1) << qint64(2) << QStringLiteral("12.5")
                                         << QStringLiteral("1/2:+12.5 m") << QStringLiteral("1/2:12.5");
    QTest::newRow("64-bit identifiers kept")
        << qint64(1) << qint64(6000000000LL) << QStringLiteral("0") << QStringLiteral("1/6000000000:+0 m")
        << QStringLiteral("1/6000000000:0");
    QTest::newRow("no translator for the pair: unchanged")
        << qint64(-1) << qint64(2) << QStringLiteral("+3 m") << QStringLiteral("+3 m")
        << QStringLiteral("+3 m");
}

void TestTovElevStrTranslations::byIdentifiers()
{
    QFETCH(qint64, first);
    QFETCH(qint64, second);
    QFETCH(QString, text);
    QFETCH(QString, displayed);
    QFETCH(QString, stored);
    TovElevStrTranslations *tr = TovElevStrTranslations::instance();
    tr->setModel(&m_model);
    QCOMPARE(tr->trElevString(first, second, text), displayed);
    QCOMPARE(tr->unTrElevString(first, second, text), stored);
}

void TestTovElevStrTranslations::byObjectAndProperty()
{
    TovElevStrTranslations *tr = TovElevStrTranslations::instance();
    tr->setModel(&m_model);
    DrawObj object;
    QCOMPARE(tr->unTrElevString(&object, QStringLiteral("+7 m")), QStringLiteral("3/4:7"));
    QCOMPARE(tr->unTrElevString(static_cast<IHynElementDrawObj *>(nullptr), QStringLiteral("+7 m")),
        QStringLiteral("+7 m"));
    QCOMPARE(tr->unTrElevString(std::make_shared<Property>(), QStringLiteral("+8 m")),
        QStringLiteral("5/6000000000:8"));
    QCOMPARE(
        tr->unTrElevString(std::shared_ptr<IHynProperty>(), QStringLiteral("+8 m")), QStringLiteral("+8 m"));
}

void TestTovElevStrTranslations::propertyReleasedOnReturn()
{
    TovElevStrTranslations::instance()->setModel(&m_model);
    auto property = std::make_shared<Property>();
    std::weak_ptr<Property> watch = property;
    TovElevStrTranslations::instance()->unTrElevString(std::move(property), QStringLiteral("1"));
    QVERIFY(watch.expired());
}

void TestTovElevStrTranslations::cleanupTestCase()
{
    TovElevStrTranslations::instance()->setModel(nullptr);
}

QTEST_GUILESS_MAIN(TestTovElevStrTranslations)
#include "tst_tovelevstrtranslations.moc"
