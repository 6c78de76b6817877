#pragma once

#include "rixmemfields.h"

#include <QList>
#include <QString>

#include <memory>

class RixMemRecord;
class RixMemTable;

class RixMemTablePrivate
{
public:
    // Null while a reference table is set.
    std::unique_ptr<RixMemFields> fields = std::make_unique<RixMemFields>();
    QList<RixMemRecord *> records;
    int nextID = 1;
    QString tableName;
    RixMemTable *refTable = nullptr;
};
