#include "rixtraceoperation.h"

#include "rixtraceoperation_p.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTextStream>

#include <mutex>

namespace {

// Process-wide state of the handler, beside the singleton.
struct TraceState
{
    std::mutex mutex;
    bool outputDebugString = false;
    QString filePath;
    QFile file;
    QtMessageHandler previous = nullptr;
};

// Never destroyed: Qt may report messages through the handler during static destruction.
TraceState &traceState()
{
    static TraceState *const state = new TraceState;
    return *state;
}

// Set while this thread is inside the handler: a sink that reports through Qt's messages
// (the debug output off Windows) must not come back into it.
thread_local bool insideHandler = false;

const char lineFormat[] = "%1:%2 %3[%4] %5\t";

} // namespace

RixTraceOperation::RixTraceOperation()
{
    readConfig();
}

RixTraceOperation *RixTraceOperation::instance()
{
    static RixTraceOperation operation;
    return &operation;
}

RixTraceOperation &RixTraceOperation::operator=(const RixTraceOperation &other) = default;

void RixTraceOperation::readConfig()
{
    QSettings ini(
        QCoreApplication::applicationDirPath() + QStringLiteral("/TovTracing.ini"), QSettings::IniFormat);
    ini.beginGroup(QStringLiteral("Options"));
    m_openLog = ini.value(QStringLiteral("OpenLog"), false).toBool();

    TraceState &state = traceState();
    std::lock_guard<std::mutex> lock(state.mutex);
    state.outputDebugString = ini.value(QStringLiteral("OutputDebugString"), false).toBool();
    state.filePath = QDir::tempPath() + QStringLiteral("/TovTracing.txt");
    if (QFile::exists(state.filePath))
        QFile::remove(state.filePath);
}

void RixTraceOperation::initialise()
{
    TraceState &state = traceState();
    {
        std::lock_guard<std::mutex> lock(state.mutex);
        if (!m_openLog || state.filePath.isEmpty())
            return;
        if (!state.file.isOpen())
            state.file.setFileName(state.filePath);
    }
    QtMessageHandler previous = qInstallMessageHandler(tracingInfo);
    if (previous != tracingInfo) {
        std::lock_guard<std::mutex> lock(state.mutex);
        state.previous = previous;
    }
}

QString RixTraceOperation::tracingFile() const
{
    TraceState &state = traceState();
    std::lock_guard<std::mutex> lock(state.mutex);
    return state.filePath;
}

void RixTraceOperation::tracingInfo(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    TraceState &state = traceState();
    if (insideHandler) {
        if (state.previous)
            state.previous(type, context, message);
        return;
    }
    insideHandler = true;
    std::lock_guard<std::mutex> lock(state.mutex);
    if (message.isEmpty() || type < QtInfoMsg) {
        if (state.outputDebugString)
            rixWriteDebuggerOutput(qFormatLogMessage(type, context, message));
    } else {
        const QString line
            = QString::fromLatin1(lineFormat)
                  .arg(type == QtInfoMsg ? QStringLiteral("Info") : QStringLiteral("Unkown"),
                      QDateTime::currentDateTime().toString(QStringLiteral("[ yyyy-MM-dd HH:mm:ss ]")),
                      QString::fromUtf8(context.function), QString::number(context.line), message);
        if (state.file.isOpen() || state.file.open(QIODevice::ReadWrite | QIODevice::Append)) {
            QTextStream out(&state.file);
            out.setCodec("UTF-8");
            out << line << '\n';
            out.flush();
            state.file.flush();
        }
    }
    insideHandler = false;
}
