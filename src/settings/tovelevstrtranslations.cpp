#include "tovelevstrtranslations.h"

#include <ihynelementdrawobj.h>
#include <ihynmodel.h>
#include <ihynproperty.h>

TovElevStrTranslations *TovElevStrTranslations::instance()
{
    static TovElevStrTranslations *const translations = new TovElevStrTranslations;
    return translations;
}

void TovElevStrTranslations::setModel(IHynModel *model)
{
    m_model.store(model);
}

QString TovElevStrTranslations::trElevString(long long first, long long second, const QString &text)
{
    IHynModel *model = m_model.load();
    if (!model)
        return text;
    const std::shared_ptr<IHynElevStrTranslator> translator = model->getElevStrTranslator(first, second);
    return translator ? translator->trString(text) : text;
}

QString TovElevStrTranslations::unTrElevString(long long first, long long second, const QString &text)
{
    IHynModel *model = m_model.load();
    if (!model)
        return text;
    const std::shared_ptr<IHynElevStrTranslator> translator = model->getElevStrTranslator(first, second);
    return translator ? translator->unTrString(text) : text;
}

QString TovElevStrTranslations::unTrElevString(IHynElementDrawObj *object, const QString &text)
{
    if (!m_model.load() || !object)
        return text;
    const std::pair<long long, long long> ids = object->elevStrIds();
    return unTrElevString(ids.first, ids.second, text);
}

QString TovElevStrTranslations::unTrElevString(std::shared_ptr<IHynProperty> property, const QString &text)
{
    if (!m_model.load() || !property)
        return text;
    const std::pair<long long, long long> ids = property->definitionIds();
    return unTrElevString(ids.first, ids.second, text);
}
