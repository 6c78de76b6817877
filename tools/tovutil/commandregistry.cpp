#include "commandregistry.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>

std::vector<TovUtilCommand> &TovUtilCommands::all()
{
    static std::vector<TovUtilCommand> commands;
    return commands;
}

const TovUtilCommand *TovUtilCommands::find(const QString &name)
{
    for (const TovUtilCommand &command : all()) {
        if (command.name == name)
            return &command;
    }
    return nullptr;
}

bool TovUtilCommands::add(TovUtilCommand command)
{
    auto &commands = all();
    commands.push_back(std::move(command));
    std::sort(commands.begin(), commands.end(),
        [](const TovUtilCommand &a, const TovUtilCommand &b) { return a.name < b.name; });
    return true;
}

QTextStream &tovOut()
{
    static QTextStream out(stdout);
    return out;
}

QTextStream &tovErr()
{
    static QTextStream err(stderr);
    return err;
}

int tovFail(const QString &message)
{
    tovOut().flush();
    tovErr() << "tovutil: " << message << Qt::endl;
    return 1;
}

QString tovDataDir()
{
    const QString installed
        = QDir(QCoreApplication::applicationDirPath()).absoluteFilePath(QStringLiteral("../share/tovutil"));
    if (QFileInfo(installed).isDir())
        return QDir::cleanPath(installed);
    return QStringLiteral(TOVUTIL_DATA_DIR);
}
