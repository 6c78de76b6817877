#pragma once

#include "tovhost_export.h"

#include <QString>

#include <memory>

namespace hln {

class CString;
using CStringPtr = std::shared_ptr<CString>;

// The geometry library's text object; always held by a std::shared_ptr (CStringPtr).
class TOVHOST_EXPORT CString
{
public:
    CString() = default;
    explicit CString(const QString &text);

    static CStringPtr create(const QString &text = QString());

    QString text() const { return m_text; }
    void setText(const QString &text) { m_text = text; }
    bool isEmpty() const { return m_text.isEmpty(); }

private:
    QString m_text;
};

} // namespace hln
