#pragma once

#include "tovhost_export.h"

#include <atomic>

// The host's language service: which language the user interface shows.
class TOVHOST_EXPORT HynTranslations
{
public:
    // Created on first use, never destroyed.
    static HynTranslations *getInstance();

    // 0 is the source language (the texts as stored); other languages count from 1.
    int getCurrentLanguageId() const;
    // Setup.
    void setCurrentLanguageId(int id);

private:
    HynTranslations() = default;
    HynTranslations(const HynTranslations &) = delete;
    HynTranslations &operator=(const HynTranslations &) = delete;

    std::atomic<int> m_languageId { 0 };
};
