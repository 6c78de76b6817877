#pragma once

#include "tovhost_export.h"

#include <QString>

// Converts elevation texts of one kind of property between the form stored in the model and the
// form shown to the user. Supplied by the host's model (IHynModel).
class TOVHOST_EXPORT IHynElevStrTranslator
{
public:
    virtual ~IHynElevStrTranslator();

    // The displayed form of a stored text.
    virtual QString trString(const QString &text) const = 0;
    // The stored form of a displayed text.
    virtual QString unTrString(const QString &text) const = 0;
};
