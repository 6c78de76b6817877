#pragma once

#include "ihynelevstrtranslator.h"
#include "tovhost_export.h"

#include <memory>

// The host's calculation model, as far as this library needs it.
class TOVHOST_EXPORT IHynModel
{
public:
    virtual ~IHynModel();

    // The elevation-text translator for the identifier pair (as yielded by IHynElementDrawObj and
    // IHynProperty); null when the model has none for that pair.
    virtual std::shared_ptr<IHynElevStrTranslator> getElevStrTranslator(long long first, long long second)
        = 0;
};
