#pragma once

#include "tovhost_export.h"

#include <utility>

// A drawing object of the host's model, as far as this library needs it.
class TOVHOST_EXPORT IHynElementDrawObj
{
public:
    virtual ~IHynElementDrawObj();

    // The identifier pair under which the model keeps the object's elevation-text translator.
    virtual std::pair<long long, long long> elevStrIds() const = 0;
};
