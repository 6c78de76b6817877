#pragma once

#include <QChar>
#include <QString>

// What a property set hands to its calculator for one item of an expression value.
struct TovMemPropertyExprCalcArgs
{
    // One semicolon-separated part of the property's value.
    QString expr;
    // The caller's argument text, passed through unchanged; its meaning belongs to the calculator.
    QString args;
    // Passed through unchanged: the separator of an item's components, null for a single value.
    QChar separator;
};
