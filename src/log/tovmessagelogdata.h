#pragma once

#include "tovgeneralutility_export.h"

#include "tovlogsys.h"

// A handle to one open log message, returned when the message is started. The record stays
// owned by its thread's manager: use the handle on that thread, while the message is open.
// A null handle (logging off) accepts the setters and does nothing.
class TOVGENERALUTILITY_EXPORT TovMessageLogData
{
public:
    TovMessageLogData() = default;
    explicit TovMessageLogData(TovLogSys::LogData *data);
    TovMessageLogData(const TovMessageLogData &other) = default;
    TovMessageLogData &operator=(const TovMessageLogData &other) = default;

    TovMessageLogData &setCategory(const QString &category);
    // The model element the message concerns; -1 = not set (inherited from the enclosing
    // message at the stop).
    TovMessageLogData &setEdoId(qint64 edoId);
    void swap(TovMessageLogData &other);

    bool isNull() const { return m_data == nullptr; }
    // The record's ID, or -1 for a null handle.
    int id() const;

private:
    TovLogSys::LogData *m_data = nullptr;
};
