#pragma once

#include "tovgeneralutility_export.h"

#include <QString>
#include <QtGlobal>

class QMessageLogContext;

// Process-wide hook on Qt's messages. "TovTracing.ini" in the application directory (group
// "Options": "OpenLog", "OutputDebugString") is read once, when the instance is made, and the
// trace file "TovTracing.txt" in the temporary directory is deleted then, so every run starts a
// fresh trace. After initialise() with "OpenLog" on, every informational message of the process
// is appended to the trace file; with "OutputDebugString" on, the other messages go to the
// debugger output (the host's debug sink off Windows).
class TOVGENERALUTILITY_EXPORT RixTraceOperation
{
public:
    static RixTraceOperation *instance();

    // Installs the message handler when "OpenLog" is on; otherwise does nothing.
    void initialise();
    QString tracingFile() const;

    RixTraceOperation &operator=(const RixTraceOperation &other);

private:
    RixTraceOperation();
    RixTraceOperation(const RixTraceOperation &) = delete;

    void readConfig();
    static void tracingInfo(QtMsgType type, const QMessageLogContext &context, const QString &message);

    bool m_openLog = false;
};
