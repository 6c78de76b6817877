#pragma once

#include "sefexception.h"

// The host application's own failure type, thrown by its services (never by this library).
class TOVHOST_EXPORT HynCustomException : public SefException
{
public:
    using SefException::SefException;
    ~HynCustomException() override;
};
