#pragma once

#include <map>
#include <string>
#include <vector>

class TovMemProperty;

class TovMemPropertiesPrivate
{
public:
    // Owned, in the order of adding.
    std::vector<TovMemProperty *> props;
    // Lower-cased name or alias -> position in props.
    std::map<std::wstring, int> nameIndex;

    // Character by character with the C library's wide lower-case mapping, as the index keys are.
    static std::wstring lowerName(const std::wstring &name);
};
