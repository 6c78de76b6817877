#include "tovmodulesettings.h"

#include <QCoreApplication>
#include <QSettings>

TovModuleSettings *TovModuleSettings::instance()
{
    static TovModuleSettings *const settings = new TovModuleSettings;
    return settings;
}

TovModuleSettings::TovModuleSettings()
{
    loadSettings();
}

TovModuleSettings::~TovModuleSettings() = default;

QVariant TovModuleSettings::getValue(const QString &group, const QString &key)
{
    const auto found = m_settings.find(group);
    if (found == m_settings.end())
        return QVariant();
    return (*found)[key];
}

void TovModuleSettings::loadSettings()
{
    QSettings ini(
        QCoreApplication::applicationDirPath() + QLatin1String("/ModuleSetting.ini"), QSettings::IniFormat);
    // The modules write their names in Chinese: read the file as UTF-8, not Latin-1.
    ini.setIniCodec("UTF-8");
    const QStringList groups = ini.childGroups();
    for (const QString &group : groups) {
        ini.beginGroup(group);
        QMap<QString, QVariant> &values = m_settings[group];
        const QStringList keys = ini.allKeys();
        for (const QString &key : keys)
            values.insert(key, ini.value(key));
        ini.endGroup();
    }
}
