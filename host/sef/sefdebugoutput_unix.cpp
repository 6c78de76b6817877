#include "sefdebugoutput.h"

#include <QDebug>

void SefDebugOutput::writePlatform(const QString &line)
{
    qDebug().noquote() << line;
}
