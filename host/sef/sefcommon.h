#pragma once

#include "tovhost_export.h"

#include <QString>
#include <QVariant>

// Text and number helpers of the host's base library.
namespace SefCommon {

// True when the trimmed text is a plain decimal number: optional sign, digits with an optional
// fraction ("12", "-3.5", ".5", "5."), optional exponent ("1e3"). No grouping, no other digits.
TOVHOST_EXPORT bool isNumeric(const QString &text);
// The number when isNumeric(text), else def.
TOVHOST_EXPORT double strToFloatDef(const QString &text, double def);
// true/yes/y/1/是/真 and false/no/n/0/否/假 in any case; another number is true when non-zero;
// anything else answers def.
TOVHOST_EXPORT bool strToBoolDef(const QString &text, bool def);
TOVHOST_EXPORT bool strToBool(const QString &text);
// Empty for null and invalid values, "true"/"false", integers in decimal, doubles in the shortest
// form that reads back to the same double, dates and times in ISO 8601.
TOVHOST_EXPORT QString variantToString(const QVariant &value);
// 1-based position of the first occurrence of sub in text; 0 when absent or sub is empty.
TOVHOST_EXPORT int pos(const QString &sub, const QString &text);
TOVHOST_EXPORT QString trim(const QString &text);

} // namespace SefCommon
