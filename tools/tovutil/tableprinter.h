#pragma once

#include <QString>

class QTextStream;
class RixMemTable;

// Prints a memory table as aligned text, CSV or JSON; shared by the tovutil commands.
namespace TovTablePrinter {

enum class Format
{
    Text,
    Csv,
    Json
};

// "text", "csv" or "json" (any case); false for anything else.
bool parseFormat(const QString &text, Format &format);

// Columns a text takes on a terminal: East Asian wide and full-width characters take two,
// combining marks none.
int displayWidth(const QString &text);

struct Options
{
    // Text: head the columns with the fields' display names where they have one.
    bool displayNames = false;
    // Text: mark with "*" the values a record stores itself while it has a reference record.
    bool markStored = false;
    // Text: a first column with the record identities.
    bool showIds = false;
};

// Text: a header, a rule and one line per record, columns padded by display width, numbers
// right-aligned. CSV: a header of field names, cells quoted where needed. JSON: an indented
// array of objects with every field's effective value.
void print(QTextStream &out, const RixMemTable &table, Format format, const Options &options = Options());

} // namespace TovTablePrinter
