#include "commandregistry.h"

#include <QCoreApplication>

namespace {

int printUsage(QTextStream &stream)
{
    stream << "Usage: tovutil <command> [options]\n"
              "       tovutil <command> --help\n\n"
              "A command-line tool over the TovGeneralUtility library. Without a command it runs "
              "the demo.\n\nCommands:\n";
    for (const TovUtilCommand &command : TovUtilCommands::all())
        stream << "  " << command.name.leftJustified(10) << command.summary << '\n';
    stream.flush();
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tovutil"));
    QCoreApplication::setApplicationVersion(QStringLiteral("0.1.0"));

    QStringList arguments = QCoreApplication::arguments();
    arguments.removeFirst();
    if (arguments.isEmpty())
        arguments << QStringLiteral("demo");
    const QString name = arguments.first();
    if (name == QLatin1String("--help") || name == QLatin1String("-h") || name == QLatin1String("help"))
        return printUsage(tovOut());
    if (name == QLatin1String("--version")) {
        tovOut() << "tovutil 0.1.0" << Qt::endl;
        return 0;
    }
    const TovUtilCommand *command = TovUtilCommands::find(name);
    if (!command) {
        tovFail(QStringLiteral("unknown command \"%1\"").arg(name));
        printUsage(tovErr());
        return 2;
    }
    const int rc = command->run(arguments);
    tovOut().flush();
    tovErr().flush();
    return rc;
}
