#pragma once

#include <QtGlobal>

// Calculation state of a property's cached value; stored as its integer in the JSON form.
enum class TovMemPropertyExprState : qint32
{
    NotCalculated = 0, // the cached value is not valid
    Calculated = 1, // the cached value holds the items
    Failed = 2, // the error message holds the reason; reads rethrow it until reset
};
