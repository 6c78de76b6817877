#include "tovappcmdline.h"

#include <QCoreApplication>

TovAppCmdLine *TovAppCmdLine::instance()
{
    static TovAppCmdLine *const cmdLine = new TovAppCmdLine;
    return cmdLine;
}

TovAppCmdLine::TovAppCmdLine()
{
    parse(QCoreApplication::arguments());
}

void TovAppCmdLine::parse(const QStringList &arguments)
{
    for (int i = 1; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (!argument.startsWith(QLatin1Char('-')))
            continue;
        const int equals = argument.indexOf(QLatin1Char('='));
        const QString name = argument.mid(1, equals < 0 ? -1 : equals - 1);
        parseOption(name, argument);
    }
}

void TovAppCmdLine::parseOption(const QString &name, const QString &argument)
{
    if (name == QLatin1String("e")) {
        m_isAutomation = true;
    } else if (name == QLatin1String("ef")) {
        m_isEfficiengMode = true;
    } else if (name == QLatin1String("config")) {
        m_isConfig = true;
    } else if (name == QLatin1String("time")) {
        m_isLogTime = true;
        m_logTimePath = parseOptionValue(argument);
        if (!m_logTimePath.isEmpty())
            m_logTimePath += QLatin1Char('/');
    } else if (name == QLatin1String("outputPath")) {
        m_outputPath = parseOptionValue(argument);
        if (!m_outputPath.isEmpty())
            m_outputPath += QLatin1Char('/');
    }
}

QString TovAppCmdLine::parseOptionValue(const QString &argument)
{
    const int equals = argument.indexOf(QLatin1Char('='));
    return equals < 0 ? QString() : argument.mid(equals + 1);
}
