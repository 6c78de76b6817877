#include "commandregistry.h"

#include <QCoreApplication>

#include <vector>

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
    // QCommandLineParser names the program by the first argument in its usage line; make that
    // "tovutil <command>" rather than the executable's path.
    QByteArray programName("tovutil");
    if (argc > 1 && argv[1][0] != '-')
        programName += ' ' + QByteArray(argv[1]);
    std::vector<char *> arguments0(argv, argv + argc);
    arguments0[0] = programName.data();
    QCoreApplication app(argc, arguments0.data());
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
