// Runs timings under a command line of the test's choosing, since the log system reads the
// command line once per process. Arguments besides the host's options:
//   project=<file>    setProjectFileName(file)
//   threads=<n>       runs the script on n threads at once, names suffixed "#<thread>"
//   script=<steps>    "+name" starts a timing, "." stops one, "r" resets the innermost one's
//                     clock, "w<ms>" waits, "?" prints "name:" and lastLogTimeName()
#include <tovlogsys.h>
#include <tovmessagelogger.h>

#include <QCoreApplication>
#include <QThread>

#include <cstdio>
#include <vector>

namespace {

void runScript(const QString &script, const QString &suffix)
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
        } else if (step == QLatin1String("?")) {
            std::printf("name:%s\n", TovLogSys::instance()->lastLogTimeName().toUtf8().constData());
        }
    }
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QString script;
    int threads = 0;
    for (const QString &arg : QCoreApplication::arguments().mid(1)) {
        const QString key = arg.section(QLatin1Char('='), 0, 0);
        const QString value = arg.section(QLatin1Char('='), 1);
        if (key == QLatin1String("project"))
            TovLogSys::instance()->setProjectFileName(value);
        else if (key == QLatin1String("threads"))
            threads = value.toInt();
        else if (key == QLatin1String("script"))
            script = value;
    }
    if (threads == 0) {
        runScript(script, QString());
        return 0;
    }
    std::vector<QThread *> workers;
    for (int t = 0; t < threads; ++t) {
        workers.push_back(QThread::create(runScript, script, QStringLiteral("#%1").arg(t)));
        workers.back()->start();
    }
    for (QThread *worker : workers) {
        worker->wait();
        delete worker;
    }
    return 0;
}
