#include "tovmessagelogcontext.h"

TovMessageLogContext::TovMessageLogContext(const char *fileName, int line, const char *functionName)
    : line(line)
    , file(QString::fromUtf8(fileName))
    , function(QString::fromUtf8(functionName))
{ }

void TovMessageLogContext::copy(const TovMessageLogContext &other)
{
    line = other.line;
    file = other.file;
    function = other.function;
}
