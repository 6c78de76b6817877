#pragma once

#include <QString>

// The debugger's output: OutputDebugStringW on Windows, the host's debug sink elsewhere.
void rixWriteDebuggerOutput(const QString &text);
