#pragma once

#include "rixmemfields.h"
#include "rixmemrecordexprparser.h"

#include <QList>
#include <QString>

#include <memory>

class RixMemRecord;
class RixMemTable;

// Something that keeps pointers to a table's records (a view). clear() deletes records without
// the remove signals, so it tells the borrowers first.
class RixMemRecordBorrower
{
public:
    virtual void recordsDeleting(const QList<RixMemRecord *> &records) = 0;

protected:
    ~RixMemRecordBorrower() = default;
};

class RixMemTablePrivate
{
public:
    // Null while a reference table is set.
    std::unique_ptr<RixMemFields> fields = std::make_unique<RixMemFields>();
    QList<RixMemRecord *> records;
    int nextID = 1;
    QString tableName;
    RixMemTable *refTable = nullptr;
    QList<RixMemRecordBorrower *> borrowers;
    // Kept for reuse by calcExprVal; made over fields, and made again when fields changes.
    std::unique_ptr<RixMemRecordExprParser> exprParser;
    int calcDepth = 0;
};
