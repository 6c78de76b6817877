#include "sefexception.h"

SefException::SefException(const QString &message, int code)
    : m_message(message)
    , m_code(code)
{ }

SefException::~SefException() = default;

const char *SefException::what() const noexcept
{
    // The host's runtime answers this for a standard exception built without text.
    return "Unknown exception";
}
