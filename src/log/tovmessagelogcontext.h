#pragma once

#include "tovgeneralutility_export.h"

#include <QString>

// Where a log message comes from: source file, function and line.
class TOVGENERALUTILITY_EXPORT TovMessageLogContext
{
public:
    TovMessageLogContext() = default;
    TovMessageLogContext(const char *fileName, int line, const char *functionName);

    void copy(const TovMessageLogContext &other);

    int line = 0;
    QString file;
    QString function;
};
