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

// QVariant::isNull() without the call through the type handler for the types that records hold
// most; the same answer for every type.
inline bool rixIsNull(const QVariant &value)
{
    const QVariant::Private &d = value.data_ptr();
    switch (d.type) {
    case QMetaType::Double:
    case QMetaType::Int:
    case QMetaType::Bool:
    case QMetaType::LongLong:
        return d.is_null;
    case QMetaType::QString:
        return d.is_null || static_cast<const QString *>(value.constData())->isNull();
    case QMetaType::UnknownType:
        return true;
    default:
        return value.isNull();
    }
}
