#pragma once

#include "tovgeneralutility_export.h"

#include <QString>

#include <atomic>
#include <memory>

class IHynElementDrawObj;
class IHynModel;
class IHynProperty;

// Converts elevation texts of properties between their stored and displayed forms through the
// host model's translators. Without a model (or without a translator for the identifier pair)
// every text comes back unchanged.
class TOVGENERALUTILITY_EXPORT TovElevStrTranslations
{
public:
    // Created on first use; safe to call from several threads.
    static TovElevStrTranslations *instance();

    // The model is borrowed: reset it (null) before the model goes away.
    void setModel(IHynModel *model);

    // The displayed form of a stored text.
    QString trElevString(long long first, long long second, const QString &text);
    // The stored form of a displayed text.
    QString unTrElevString(long long first, long long second, const QString &text);
    // The same, with the identifier pair of the drawing object (text unchanged for null).
    QString unTrElevString(IHynElementDrawObj *object, const QString &text);
    // The same, with the identifier pair of the property's definition (text unchanged for null).
    QString unTrElevString(std::shared_ptr<IHynProperty> property, const QString &text);

private:
    TovElevStrTranslations() = default;
    TovElevStrTranslations(const TovElevStrTranslations &) = delete;
    TovElevStrTranslations &operator=(const TovElevStrTranslations &) = delete;

    std::atomic<IHynModel *> m_model { nullptr };
};
