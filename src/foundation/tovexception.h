#pragma once

#include "tovgeneralutility_export.h"

#include <sefexception.h>

// The library's general failure type: caller-input failures of the table engine and property
// sets, with a translated message and code -1 unless told otherwise.
class TOVGENERALUTILITY_EXPORT TovException : public SefException
{
public:
    TovException();
    explicit TovException(const QString &message);
    TovException(const QString &message, int code);
    // The move forms copy: the source keeps its text and code.
    TovException(const TovException &other);
    TovException(TovException &&other);
    TovException &operator=(const TovException &other);
    TovException &operator=(TovException &&other);
    ~TovException() override;
};
