#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonValue>
#include <QVariant>

#include <functional>
#include <vector>

class RixMemFields;
class RixMemRecord;

// Reads the rows of a JSON array straight into records, without a document in between. It
// mirrors what QJsonDocument makes of the same bytes and declines whatever it does not mirror
// exactly (malformed or unusual text, a root that is not an array, deep nesting): the caller then
// loads the document instead.
class RixMemJsonReader
{
public:
    struct Row
    {
        RixMemRecord *record;
        int refId; // the object's "_RefID" as an integer, -1 when absent
    };

    // Makes the records and stores their values (the table's own access to them).
    struct Access
    {
        std::function<RixMemRecord *()> create;
        void (*setVariant)(RixMemRecord *record, int index, const QVariant &value);
    };

    // On success rows holds one record per array element, made by access.create and filled with
    // the values of the keys that name a field. On failure rows is empty and nothing is left.
    static bool read(
        const QByteArray &json, RixMemFields *fields, const Access &access, std::vector<Row> &rows);

    // json.toVariant(), converted to type when it converts.
    static QVariant toVariant(const QJsonValue &json, int type);
};
