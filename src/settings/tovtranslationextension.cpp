#include "tovtranslationextension.h"

#include <hyndbtranslations.h>

#include <QCoreApplication>

QString TovTranslationExtension::translate(const QString &text)
{
    const QString context = QStringLiteral("TovTranslationExtension_VectorDrawingTrans_VisibleStr");
    HynDBTranslations *translations = HynDBTranslations::getInstance();
    if (!translations->isNeedTranslate())
        return text;
    if (!translations->isContextExist(context))
        return text;
    return QCoreApplication::translate(context.toUtf8().constData(), text.toUtf8().constData(), nullptr, -1);
}
