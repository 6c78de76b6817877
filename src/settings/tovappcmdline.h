#pragma once

#include "tovgeneralutility_export.h"

#include <QString>
#include <QStringList>

// The process's start-up switches, read once from the application's command line when
// instance() is first called; later changes have no effect. Options are "-name" or
// "-name=value", names case-sensitive: "e" (automation), "ef" (efficiency mode), "config",
// "time[=path]" (write operation timings), "outputPath=path". Other arguments are ignored.
class TOVGENERALUTILITY_EXPORT TovAppCmdLine
{
public:
    // Built on first use from QCoreApplication::arguments(); thread-safe.
    static TovAppCmdLine *instance();

    TovAppCmdLine(const TovAppCmdLine &other) = default;
    TovAppCmdLine &operator=(const TovAppCmdLine &other) = default;

    bool isAutomation() const { return m_isAutomation; }
    bool isEfficiengMode() const { return m_isEfficiengMode; }
    bool isConfig() const { return m_isConfig; }
    bool isLogTime() const { return m_isLogTime; }
    // The "-time=" value with "/" appended, or empty.
    QString logTimePath() const { return m_logTimePath; }
    // The "-outputPath=" value with "/" appended, or empty.
    QString outputPath() const { return m_outputPath; }

private:
    TovAppCmdLine();

    void parse(const QStringList &arguments);
    void parseOption(const QString &name, const QString &argument);
    QString parseOptionValue(const QString &argument);

    bool m_isAutomation = false;
    bool m_isEfficiengMode = false;
    bool m_isConfig = false;
    bool m_isLogTime = false;
    QString m_logTimePath;
    QString m_outputPath;
};
