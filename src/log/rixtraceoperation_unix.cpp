#include "rixtraceoperation_p.h"

#include <sefdebugoutput.h>

void rixWriteDebuggerOutput(const QString &text)
{
    // The sink is line-based: it ends the line itself.
    SefDebugOutput::write(text);
}
