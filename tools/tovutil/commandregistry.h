#pragma once

#include <QString>
#include <QStringList>
#include <QTextStream>

#include <functional>
#include <vector>

// The commands of tovutil. A command gets its own arguments (the command name first, as
// QCommandLineParser expects) and returns the process exit code.
struct TovUtilCommand
{
    QString name;
    QString summary;
    std::function<int(const QStringList &arguments)> run;
};

class TovUtilCommands
{
public:
    static std::vector<TovUtilCommand> &all();
    static const TovUtilCommand *find(const QString &name);
    static bool add(TovUtilCommand command);
};

QTextStream &tovOut();
QTextStream &tovErr();
// Prints "tovutil: <message>" on stderr and returns the failure exit code.
int tovFail(const QString &message);
// Directory of the sample data shipped with the tool (installed copy first, then source tree).
QString tovDataDir();

#define TOVUTIL_CONCAT_INNER(a, b) a##b
#define TOVUTIL_CONCAT(a, b) TOVUTIL_CONCAT_INNER(a, b)
#define TOVUTIL_COMMAND(name, summary, function)                                                             \
    static const bool TOVUTIL_CONCAT(tovutilRegistered, __LINE__)                                            \
        = TovUtilCommands::add({ QStringLiteral(name), QStringLiteral(summary), function })
