#include "settingsprobe.h"

#include <QTemporaryDir>
#include <QtTest>

// Each row is one configuration: the probe is copied into a temporary directory, with or without
// a "ModuleSetting.ini" beside it, and run as its own process (the file is read once per process).
class TestTovModuleSettings : public QObject
{
    Q_OBJECT

private slots:
    void getValue_data();
    void getValue();
};

void TestTovModuleSettings::getValue_data()
{
    QTest::addColumn<bool>("iniPresent");
    QTest::addColumn<QByteArray>("ini");
    QTest::addColumn<QStringList>("lookups");
    QTest::addColumn<QStringList>("expected");

    const QByteArray road = "[Road]\nWidth=3.5\nName=\xe8\xb7\xaf\xe9\x9d\xa2\nList=a, b\n"
                            "[Bridge]\nspan=20\nsub/depth=4\n";
    QTest::newRow("ini absent: every lookup invalid")
        << false << QByteArray() << QStringList { "Road:Width", ":" }
        << QStringList { "Road:Width=invalid", ":=invalid" };
    QTest::newRow("empty ini: unknown group invalid")
        << true << QByteArray() << QStringList { "Road:Width" } << QStringList { "Road:Width=invalid" };
    QTest::newRow("values are texts, UTF-8 read")
        << true << road << QStringList { "Road:Width", "Road:Name", "Bridge:span" }
        << QStringList { "Road:Width=QString:3.5", QStringLiteral("Road:Name=QString:路面"),
               "Bridge:span=QString:20" };
    QTest::newRow("comma-separated value is a list")
        << true << road << QStringList { "Road:List" } << QStringList { "Road:List=list:a|b" };
    QTest::newRow("nested key kept under its path")
        << true << road << QStringList { "Bridge:sub/depth", "Bridge:depth" }
        << QStringList { "Bridge:sub/depth=QString:4", "Bridge:depth=invalid" };
    QTest::newRow("unknown group and unknown key invalid, asked twice")
        << true << road << QStringList { "Tunnel:Width", "Road:Missing", "Road:Missing" }
        << QStringList { "Tunnel:Width=invalid", "Road:Missing=invalid", "Road:Missing=invalid" };
    QTest::newRow("group and key lookups are exact")
        << true << road << QStringList { "road:Width" } << QStringList { "road:Width=invalid" };
    QTest::newRow("keys before the first group are not read")
        << true << QByteArray("top=1\n[G]\nk=v\n") << QStringList { "General:top", ":top", "G:k" }
        << QStringList { "General:top=invalid", ":top=invalid", "G:k=QString:v" };
    QTest::newRow("file read once: a rewrite during the run has no effect")
        << true << road << QStringList { "Road:Width", "@rewrite", "Road:Width", "Rewritten:key" }
        << QStringList { "Road:Width=QString:3.5", "Road:Width=QString:3.5", "Rewritten:key=invalid" };
    QTest::newRow("not an ini file: empty table") << true << QByteArray("\x01\x02 garbage without groups")
                                                  << QStringList { "G:k" } << QStringList { "G:k=invalid" };
}

void TestTovModuleSettings::getValue()
{
    QFETCH(bool, iniPresent);
    QFETCH(QByteArray, ini);
    QFETCH(QStringList, lookups);
    QFETCH(QStringList, expected);

    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString probe = dir.filePath(QStringLiteral("modulesettings_probe"));
    QVERIFY(QFile::copy(QStringLiteral(TOV_MODULESETTINGS_PROBE), probe));
    QVERIFY(QFile::setPermissions(probe, QFile::permissions(probe) | QFile::ExeOwner));
    if (iniPresent) {
        QFile file(dir.filePath(QStringLiteral("ModuleSetting.ini")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(ini);
    }
    QCOMPARE(runProbe(probe, lookups), expected);
}

QTEST_GUILESS_MAIN(TestTovModuleSettings)
#include "tst_tovmodulesettings.moc"
