#pragma once

#include "tovgeneralutility_export.h"

#include <QString>

// A database session over one file.
class TOVGENERALUTILITY_EXPORT ITovDBSession
{
public:
    virtual ~ITovDBSession();

    // The file name as given at construction.
    virtual QString fileName() const = 0;
};
