#include <hyndbtranslations.h>
#include <tovtranslationextension.h>

#include <QTranslator>
#include <QtTest>

namespace {

const char visibleStr[] = "TovTranslationExtension_VectorDrawingTrans_VisibleStr";

// Translates from a fixed table, by context.
class MapTranslator : public QTranslator
{
public:
    QHash<QPair<QString, QString>, QString> texts;

    QString translate(const char *context, const char *sourceText, const char *, int) const override
    {
        return texts.value({ QString::fromUtf8(context), QString::fromUtf8(sourceText) });
    }
    bool isEmpty() const override { return false; }
};

} // namespace

class TestTovTranslationExtension : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void translate_data();
    void translate();

private:
    MapTranslator m_translator;
};

void TestTovTranslationExtension::initTestCase()
{
    m_translator.texts.insert(
        { QString::fromLatin1(visibleStr), QStringLiteral("桩号") }, QStringLiteral("Station"));
    m_translator.texts.insert(
        { QStringLiteral("Other"), QStringLiteral("标高") }, QStringLiteral("Elevation"));
    QVERIFY(QCoreApplication::installTranslator(&m_translator));
}

void TestTovTranslationExtension::cleanupTestCase()
{
    QCoreApplication::removeTranslator(&m_translator);
}

void TestTovTranslationExtension::init()
{
    HynDBTranslations::getInstance()->clear();
}

void TestTovTranslationExtension::translate_data()
{
    QTest::addColumn<bool>("needTranslate");
    QTest::addColumn<QStringList>("contexts");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const QStringList all { QString::fromLatin1(visibleStr), QStringLiteral("Other") };
    QTest::newRow("translated when wanted and the context exists")
        << true << all << QStringLiteral("桩号") << QStringLiteral("Station");
    QTest::newRow("no translation wanted: unchanged whatever the contexts")
        << false << all << QStringLiteral("桩号") << QStringLiteral("桩号");
    QTest::newRow("context unknown to the host: unchanged")
        << true << QStringList { QStringLiteral("Other") } << QStringLiteral("桩号")
        << QStringLiteral("桩号");
    QTest::newRow("context lookup is case-sensitive")
        << true << QStringList { QString::fromLatin1(visibleStr).toLower() } << QStringLiteral("桩号")
        << QStringLiteral("桩号");
    QTest::newRow("text without translation: unchanged")
        << true << all << QStringLiteral("里程") << QStringLiteral("里程");
    QTest::newRow("translation of another context is not used")
        << true << all << QStringLiteral("标高") << QStringLiteral("标高");
}

void TestTovTranslationExtension::translate()
{
    QFETCH(bool, needTranslate);
    QFETCH(QStringList, contexts);
    QFETCH(QString, text);
    QFETCH(QString, expected);
    HynDBTranslations *host = HynDBTranslations::getInstance();
    host->setNeedTranslate(needTranslate);
    for (const QString &context : qAsConst(contexts))
        host->addContext(context);
    QCOMPARE(TovTranslationExtension::translate(text), expected);
}

QTEST_GUILESS_MAIN(TestTovTranslationExtension)
#include "tst_tovtranslationextension.moc"
