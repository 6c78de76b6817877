// Runs timings under a command line of the test's choosing, since the log system reads the
// command line once per process. Arguments besides the host's options:
//   project=<file>    setProjectFileName(file)
//   logdir=<dir>      opens dir's log database for the run (needs TovLog.ini beside the probe)
//   threads=<n>       runs the script on n threads at once, names suffixed "#<thread>"
//   repeat=<n>        runs the script n times on each thread
//   script=<steps>    "+name" starts a timing, "." stops one, "r" resets the innermost one's
//                     clock, "w<ms>" waits, "?" prints "name:" and lastLogTimeName(),
//                     "<name" starts an info message, ">" stops one
#include <tovlogsys.h>
#include <tovmessagelogger.h>

#include <QCoreApplication>
#include <QThread>

#include <cstdio>
#include <vector>

namespace {

void runSteps(const QString &script, const QString &suffix)
{
    const TovMessageLogger logger("probe.cpp", 1, "runScript");
    for (const QString &step : script.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        if (step.startsWith(QLatin1Char('+'))) {
            logger.startOutputTime(step.mid(1) + suffix);
        } else if (step == QLatin1String(".")) {
            logger.stopOutputTime();
        } else if (step == QLatin1String("r")) {
            logger.resetStartTime();
        } else if (step.startsWith(QLatin1Char('w'))) {
            QThread::msleep(step.mid(1).toULong());
        } else if (step.startsWith(QLatin1Char('<'))) {
            logger.infoStart(step.mid(1) + suffix);
        } else if (step == QLatin1String(">")) {
            logger.stopLog();
        } else if (step == QLatin1String("?")) {
            std::printf("name:%s\n", TovLogSys::instance()->lastLogTimeName().toUtf8().constData());
        }
    }
}

void runScript(const QString &script, const QString &suffix, int repeat)
{
    for (int i = 0; i < repeat; ++i)
        runSteps(script, suffix);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QString script;
    QString logDir;
    int threads = 0;
    int repeat = 1;
    for (const QString &arg : QCoreApplication::arguments().mid(1)) {
        const QString key = arg.section(QLatin1Char('='), 0, 0);
        const QString value = arg.section(QLatin1Char('='), 1);
        if (key == QLatin1String("project"))
            TovLogSys::instance()->setProjectFileName(value);
        else if (key == QLatin1String("threads"))
            threads = value.toInt();
        else if (key == QLatin1String("repeat"))
            repeat = value.toInt();
        else if (key == QLatin1String("logdir"))
            logDir = value;
        else if (key == QLatin1String("script"))
            script = value;
    }
    if (!logDir.isEmpty())
        TovLogSys::instance()->onProjectAfterOpen(logDir);
    if (threads == 0) {
        runScript(script, QString(), repeat);
        TovLogSys::instance()->onProjectBeforeClose();
        return 0;
    }
    std::vector<QThread *> workers;
    for (int t = 0; t < threads; ++t) {
        workers.push_back(QThread::create(runScript, script, QStringLiteral("#%1").arg(t), repeat));
        workers.back()->start();
    }
    for (QThread *worker : workers) {
        worker->wait();
        delete worker;
    }
    TovLogSys::instance()->onProjectBeforeClose();
    return 0;
}
