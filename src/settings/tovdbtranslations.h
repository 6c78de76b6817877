#pragma once

#include "tovgeneralutility_export.h"

#include <QSet>
#include <QString>

// Which translation contexts exist for texts stored in the project's databases, and whether
// those texts are translated at all. One process-wide instance, created on first use without a
// lock: call getInstance() and loadConfig() first from the user-interface thread at start-up.
class TOVGENERALUTILITY_EXPORT TovDBTranslations
{
public:
    static TovDBTranslations *getInstance();

    TovDBTranslations(const TovDBTranslations &other) = default;
    TovDBTranslations &operator=(const TovDBTranslations &other) = default;

    // Adds the text of every child of the root element of the XML file to the contexts (a child
    // that is not an element adds an empty context); when any context is known afterwards,
    // translation is needed exactly when the host's language is not the source language.
    // false, and nothing changed, when the file cannot be opened or is not well-formed XML.
    bool loadConfig(QString fileName);
    bool isNeedTranslate() const;
    // Exact, case-sensitive.
    bool isContextExist(QString context) const;

    static TovDBTranslations *m_instance;

private:
    TovDBTranslations() = default;

    bool m_needTranslate = false;
    QSet<QString> m_contexts;
};
