#pragma once

#include "tovgeneralutility_export.h"

#include <sefexception.h>

// Thrown when an expression names a variable that no source knows. Always carries its text and
// code -1.
class TOVGENERALUTILITY_EXPORT TovNotFoundVarException : public SefException
{
public:
    explicit TovNotFoundVarException(const QString &message);
    // The move forms copy: the source keeps its text and code.
    TovNotFoundVarException(const TovNotFoundVarException &other);
    TovNotFoundVarException(TovNotFoundVarException &&other);
    TovNotFoundVarException &operator=(const TovNotFoundVarException &other);
    TovNotFoundVarException &operator=(TovNotFoundVarException &&other);
    ~TovNotFoundVarException() override;
};
