#include <hyndbtranslations.h>
#include <hynsystemoptions.h>

#include <QtTest>

#include <thread>
#include <vector>

class TestHynServices : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void optionsRoundTrip_data();
    void optionsRoundTrip();
    void optionsConcurrentWritersKeepEveryKey();

    void dbContexts_data();
    void dbContexts();
};

void TestHynServices::init()
{
    HynSystemOptions::getInstance()->clear();
    HynDBTranslations::getInstance()->clear();
}

void TestHynServices::optionsRoundTrip_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("integer counter") << "modelInterPro" << QVariant(-1);
    QTest::newRow("boolean flag") << "tovSectionEdit" << QVariant(true);
    QTest::newRow("text") << QStringLiteral("路面") << QVariant(QStringLiteral("值"));
    QTest::newRow("empty key") << "" << QVariant(3.5);
}

void TestHynServices::optionsRoundTrip()
{
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    HynSystemOptions *options = HynSystemOptions::getInstance();
    QCOMPARE(options, HynSystemOptions::getInstance());
    options->setSysOption(key, value, false);
    QCOMPARE(options->getSysOption(key), value);
    QCOMPARE(options->getSysOption(key).userType(), value.userType());
    options->setSysOption(key, QVariant(7), true);
    QCOMPARE(options->getSysOption(key), QVariant(7));
    options->setSysOption(QStringLiteral("mergeRSEdo"), 1, false);
    QVERIFY(options->getSysOption(QStringLiteral("never")).isNull());
    // Keys are exact: another case is another key.
    QVERIFY(options->getSysOption(QStringLiteral("MERGERSEDO")).isNull());
}

void TestHynServices::optionsConcurrentWritersKeepEveryKey()
{
    HynSystemOptions *options = HynSystemOptions::getInstance();
    const int threads = 4;
    const int perThread = 500;
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t) {
        workers.emplace_back([options, t] {
            for (int i = 0; i < perThread; ++i) {
                options->setSysOption(QStringLiteral("k%1_%2").arg(t).arg(i), i, false);
                options->getSysOption(QStringLiteral("k0_0"));
            }
        });
    }
    for (std::thread &w : workers)
        w.join();
    for (int t = 0; t < threads; ++t)
        QCOMPARE(options->getSysOption(QStringLiteral("k%1_%2").arg(t).arg(perThread - 1)),
            QVariant(perThread - 1));
}

void TestHynServices::dbContexts_data()
{
    QTest::addColumn<QString>("added");
    QTest::addColumn<QString>("asked");
    QTest::addColumn<bool>("exists");
    QTest::newRow("same text") << "Proj_Table_Name" << QStringLiteral("Proj_Table_Name") << true;
    QTest::newRow("other case is another context")
        << "Proj_Table_Name" << QStringLiteral("proj_table_name") << false;
    QTest::newRow("prefix is not enough") << "Proj_Table_Name" << QStringLiteral("Proj_Table") << false;
    QTest::newRow("chinese") << QStringLiteral("构件") << QStringLiteral("构件") << true;
}

void TestHynServices::dbContexts()
{
    QFETCH(QString, added);
    QFETCH(QString, asked);
    QFETCH(bool, exists);
    HynDBTranslations *tr = HynDBTranslations::getInstance();
    QVERIFY(!tr->isContextExist(asked));
    tr->addContext(added);
    QCOMPARE(tr->isContextExist(asked), exists);
    // Clearing drops the contexts and the flag.
    QVERIFY(!tr->isNeedTranslate());
    tr->setNeedTranslate(true);
    tr->clear();
    QVERIFY(!tr->isNeedTranslate());
    QVERIFY(!tr->isContextExist(added));
}

QTEST_GUILESS_MAIN(TestHynServices)
#include "tst_hynservices.moc"
