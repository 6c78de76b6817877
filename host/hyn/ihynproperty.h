#pragma once

#include "tovhost_export.h"

#include <utility>

// A property of an element of the host's model, as far as this library needs it.
class TOVHOST_EXPORT IHynProperty
{
public:
    virtual ~IHynProperty();

    // The identifier pair of the property's definition, under which the model keeps the
    // property's elevation-text translator.
    virtual std::pair<long long, long long> definitionIds() const = 0;
};
