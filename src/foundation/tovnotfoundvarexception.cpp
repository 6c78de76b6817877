#include "tovnotfoundvarexception.h"

TovNotFoundVarException::TovNotFoundVarException(const QString &message)
    : SefException(message, -1)
{ }

TovNotFoundVarException::TovNotFoundVarException(const TovNotFoundVarException &other) = default;

TovNotFoundVarException::TovNotFoundVarException(TovNotFoundVarException &&other)
    : SefException(other)
{ }

TovNotFoundVarException &TovNotFoundVarException::operator=(const TovNotFoundVarException &other) = default;

TovNotFoundVarException &TovNotFoundVarException::operator=(TovNotFoundVarException &&other)
{
    SefException::operator=(other);
    return *this;
}

TovNotFoundVarException::~TovNotFoundVarException() = default;
