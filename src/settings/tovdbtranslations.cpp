#include "tovdbtranslations.h"

#include <hyntranslations.h>

#include <QFile>
#include <QStringList>
#include <QXmlStreamReader>

TovDBTranslations *TovDBTranslations::m_instance = nullptr;

namespace {

// The texts of the root element's child nodes in document order, as a DOM parser that drops
// white-space-only text would see them: an element gives its text content, any other node an
// empty text. false when the document is not well-formed.
bool readRootChildTexts(QIODevice *device, QStringList &texts)
{
    QXmlStreamReader xml(device);
    int depth = 0;
    QString current;
    while (!xml.atEnd()) {
        switch (xml.readNext()) {
        case QXmlStreamReader::StartElement:
            if (++depth == 2)
                current.clear();
            break;
        case QXmlStreamReader::EndElement:
            if (depth-- == 2)
                texts.append(current);
            break;
        case QXmlStreamReader::Characters:
            if (depth >= 2) {
                if (xml.isCDATA() || !xml.isWhitespace())
                    current += xml.text();
            } else if (depth == 1 && (xml.isCDATA() || !xml.isWhitespace())) {
                texts.append(QString());
            }
            break;
        case QXmlStreamReader::Comment:
        case QXmlStreamReader::ProcessingInstruction:
        case QXmlStreamReader::EntityReference:
            if (depth == 1)
                texts.append(QString());
            break;
        default:
            break;
        }
    }
    return !xml.hasError();
}

} // namespace

TovDBTranslations *TovDBTranslations::getInstance()
{
    if (!m_instance)
        m_instance = new TovDBTranslations;
    return m_instance;
}

bool TovDBTranslations::loadConfig(QString fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QStringList texts;
    if (!readRootChildTexts(&file, texts)) {
        file.close();
        return false;
    }
    for (const QString &text : qAsConst(texts))
        m_contexts.insert(text);
    if (!m_contexts.isEmpty())
        m_needTranslate = HynTranslations::getInstance()->getCurrentLanguageId() > 0;
    file.close();
    return true;
}

bool TovDBTranslations::isNeedTranslate() const
{
    return m_needTranslate;
}

bool TovDBTranslations::isContextExist(QString context) const
{
    return m_contexts.contains(context);
}
