#include "hyntranslations.h"

HynTranslations *HynTranslations::getInstance()
{
    static HynTranslations *const instance = new HynTranslations;
    return instance;
}

int HynTranslations::getCurrentLanguageId() const
{
    return m_languageId.load();
}

void HynTranslations::setCurrentLanguageId(int id)
{
    m_languageId.store(id);
}
