#pragma once

#include <rukdata.h>

#include <QVariant>

// The engine type of a field or querier type; 0 (left to the engine) for any other type.
inline int rixEngineDataType(QVariant::Type type)
{
    switch (type) {
    case QVariant::Int:
        return RukData::Integer;
    case QVariant::Double:
        return RukData::Float;
    case QVariant::LongLong:
        return RukData::Int64;
    case QVariant::Bool:
        return RukData::Boolean;
    case QVariant::String:
        return RukData::String;
    default:
        return RukData::Unknown;
    }
}
