#include <hyntranslations.h>
#include <tovdbtranslations.h>

#include <QtTest>

// The process-wide instance is never loaded here: each row works on a fresh copy of it.
class TestTovDBTranslations : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void loadConfig_data();
    void loadConfig();
};

void TestTovDBTranslations::initTestCase()
{
    QVERIFY(!QFINDTESTDATA("../data/settings/contexts_abc.xml").isEmpty());
}

void TestTovDBTranslations::cleanup()
{
    HynTranslations::getInstance()->setCurrentLanguageId(0);
}

namespace {

struct Load
{
    QString file;
    int languageId;
    bool ok;
};

} // namespace
Q_DECLARE_METATYPE(QVector<Load>)

void TestTovDBTranslations::loadConfig_data()
{
    QTest::addColumn<QVector<Load>>("loads");
    QTest::addColumn<QStringList>("present");
    QTest::addColumn<QStringList>("absent");
    QTest::addColumn<bool>("needTranslate");

    QTest::newRow("three contexts, source language: no translation")
        << QVector<Load> { { "contexts_abc.xml", 0, true } } << QStringList { "A", "B", "C" }
        << QStringList { "a", "", "D" } << false;
    QTest::newRow("three contexts, language 1: translation")
        << QVector<Load> { { "contexts_abc.xml", 1, true } } << QStringList { "A", "B", "C" }
        << QStringList { "a" } << true;
    QTest::newRow("root without children: true, flag stays off")
        << QVector<Load> { { "contexts_empty_root.xml", 1, true } } << QStringList() << QStringList { "" }
        << false;
    // The flag follows the whole set, not the file just read.
    QTest::newRow("root without children after earlier contexts recomputes the flag")
        << QVector<Load> { { "contexts_abc.xml", 1, true }, { "contexts_empty_root.xml", 0, true } }
        << QStringList { "A" } << QStringList() << false;
    QTest::newRow("second file keeps the first one's contexts and resets the flag")
        << QVector<Load> { { "contexts_abc.xml", 1, true }, { "contexts_project.xml", 0, true } }
        << QStringList { "A", "C", "Proj_CalcItem_CalcItemName", "Proj_Element_Name",
               QStringLiteral("路面_表_名称") }
        << QStringList { "Context", "Other", "Proj_" } << false;
    QTest::newRow("missing file: false, nothing changes")
        << QVector<Load> { { "contexts_abc.xml", 1, true }, { "no_such_file.xml", 0, false } }
        << QStringList { "A" } << QStringList() << true;
    QTest::newRow("malformed file: false, not even its early contexts")
        << QVector<Load> { { "contexts_malformed.xml", 1, false } } << QStringList()
        << QStringList { "Early", "" } << false;
    QTest::newRow("a comment child adds an empty context and sets the flag")
        << QVector<Load> { { "contexts_comment_child.xml", 2, true } } << QStringList { "" } << QStringList()
        << true;
}

void TestTovDBTranslations::loadConfig()
{
    QFETCH(QVector<Load>, loads);
    QFETCH(QStringList, present);
    QFETCH(QStringList, absent);
    QFETCH(bool, needTranslate);

    TovDBTranslations translations = *TovDBTranslations::getInstance();
    QVERIFY(!translations.isNeedTranslate());
    const QString dir = QFileInfo(QFINDTESTDATA("../data/settings/contexts_abc.xml")).absolutePath();
    for (const Load &load : qAsConst(loads)) {
        HynTranslations::getInstance()->setCurrentLanguageId(load.languageId);
        QCOMPARE(translations.loadConfig(dir + QLatin1Char('/') + load.file), load.ok);
    }
    for (const QString &context : qAsConst(present))
        QVERIFY2(translations.isContextExist(context), qPrintable(context));
    for (const QString &context : qAsConst(absent))
        QVERIFY2(!translations.isContextExist(context), qPrintable(context));
    QCOMPARE(translations.isNeedTranslate(), needTranslate);
}

QTEST_GUILESS_MAIN(TestTovDBTranslations)
#include "tst_tovdbtranslations.moc"
