// Prints what TovAppCmdLine made of this process's command line, one "name=value" per line.
#include <tovappcmdline.h>

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const TovAppCmdLine *cmdLine = TovAppCmdLine::instance();
    if (cmdLine != TovAppCmdLine::instance())
        return 2;
    const TovAppCmdLine copy = *cmdLine;
    QTextStream out(stdout);
    out.setCodec("UTF-8");
    out << "automation=" << copy.isAutomation() << '\n'
        << "efficiency=" << copy.isEfficiengMode() << '\n'
        << "config=" << copy.isConfig() << '\n'
        << "logTime=" << copy.isLogTime() << '\n'
        << "logTimePath=" << copy.logTimePath() << '\n'
        << "outputPath=" << copy.outputPath() << '\n';
    return 0;
}
