#include "cstring.h"

namespace hln {

CString::CString(const QString &text)
    : m_text(text)
{ }

CStringPtr CString::create(const QString &text)
{
    return std::make_shared<CString>(text);
}

} // namespace hln
