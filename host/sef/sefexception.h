#pragma once

#include "tovhost_export.h"

#include <QString>

#include <exception>

// Base of every exception the host's libraries and this library throw. The text is read through
// message(); what() carries no text of its own and answers "Unknown exception".
class TOVHOST_EXPORT SefException : public std::exception
{
public:
    SefException() = default;
    explicit SefException(const QString &message, int code = -1);
    ~SefException() override;

    QString message() const { return m_message; }
    int code() const { return m_code; }
    const char *what() const noexcept override;

protected:
    QString m_message;
    int m_code = -1;
};
