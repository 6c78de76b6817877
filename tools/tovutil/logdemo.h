#pragma once

#include <QString>

// Writes a small log of a few demo steps into projectDir's "TovLog.db" and prints its tree.
// Needs logging switched on ("TovLog.ini" beside tovutil); returns the exit code.
int tovRunLogDemo(const QString &projectDir);
