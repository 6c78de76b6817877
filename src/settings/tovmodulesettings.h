#pragma once

#include "tovgeneralutility_export.h"

#include <QMap>
#include <QString>
#include <QVariant>

// Module settings from "ModuleSetting.ini" in the executable's directory, read once when
// instance() is first called into a group -> key -> value table; later changes of the file have
// no effect. A missing or unreadable file gives an empty table.
class TOVGENERALUTILITY_EXPORT TovModuleSettings
{
public:
    // Built on first use; thread-safe. getValue() is not: call it from one thread.
    static TovModuleSettings *instance();

    TovModuleSettings(const TovModuleSettings &other) = default;
    TovModuleSettings &operator=(const TovModuleSettings &other) = default;
    virtual ~TovModuleSettings();

    // An invalid QVariant for an unknown group or key. Asking for an unknown key of a known group
    // leaves an empty entry for it.
    QVariant getValue(const QString &group, const QString &key);

protected:
    TovModuleSettings();
    void loadSettings();

private:
    QMap<QString, QMap<QString, QVariant>> m_settings;
};
