#pragma once

#include <QProcess>
#include <QStringList>
#include <QTest>

// Runs a probe program with arguments and answers its standard output as lines; fails the
// current test when the probe does not finish normally.
inline QStringList runProbe(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.start(program, arguments);
    if (!process.waitForFinished(60000)) {
        QTest::qFail("probe did not finish", __FILE__, __LINE__);
        return {};
    }
    const QByteArray err = process.readAllStandardError();
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        QTest::qFail(QByteArray(QByteArray("probe failed: ") + err).constData(), __FILE__, __LINE__);
        return {};
    }
    return QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}
