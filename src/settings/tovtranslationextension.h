#pragma once

#include "tovgeneralutility_export.h"

#include <QString>

// Translates the visible texts of vector drawings, in the context
// "TovTranslationExtension_VectorDrawingTrans_VisibleStr", when the host's database translation
// service wants translation and knows that context.
class TOVGENERALUTILITY_EXPORT TovTranslationExtension
{
public:
    // The installed translation of text, or text itself.
    static QString translate(const QString &text);
};
