#include "tovexception.h"

TovException::TovException()
    : SefException(QString(), -1)
{ }

TovException::TovException(const QString &message)
    : SefException(message, -1)
{ }

TovException::TovException(const QString &message, int code)
    : SefException(message, code)
{ }

TovException::TovException(const TovException &other) = default;

TovException::TovException(TovException &&other)
    : SefException(other)
{ }

TovException &TovException::operator=(const TovException &other) = default;

TovException &TovException::operator=(TovException &&other)
{
    SefException::operator=(other);
    return *this;
}

TovException::~TovException() = default;
