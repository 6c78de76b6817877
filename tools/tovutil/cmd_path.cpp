// tovutil path: reads a small text graph and runs the heaviest-path search on it.
//
// Graph file, one item per line ("#" starts a comment, blank lines are skipped):
//   key1 side1 key2 side2 [weight]   an edge; sides are "in" or "out", the weight defaults to 0
//   node key weight                  a node's weight; nodes weigh 1 unless a line says otherwise
#include "commandregistry.h"

#include <tovgraphedge.h>
#include <tovgraphnode.h>
#include <tovgraphstruct.h>
#include <tovpathsearcher.h>

#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTextStream>

#include <climits>

namespace {

bool parseInt(const QString &text, int &value)
{
    bool ok = false;
    value = text.toInt(&ok);
    return ok;
}

bool parseSide(const QString &text, bool &isIn)
{
    if (text == QLatin1String("in") || text == QLatin1String("out")) {
        isIn = text == QLatin1String("in");
        return true;
    }
    return false;
}

// Fills graph from the file; answers an error text ("FILE:LINE: ...") or an empty one.
QString loadGraph(const QString &path, TovGraphStruct &graph)
{
    QFile file(path);
    if (!QFileInfo(path).isFile())
        return QStringLiteral("%1: no such file").arg(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return QStringLiteral("%1: cannot read: %2").arg(path, file.errorString());
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    QMap<int, int> weights;
    static const QRegularExpression spaces(QStringLiteral("\\s+"));
    for (int lineNumber = 1; !stream.atEnd(); ++lineNumber) {
        QString line = stream.readLine();
        const int comment = line.indexOf(QLatin1Char('#'));
        if (comment >= 0)
            line.truncate(comment);
        const QStringList words = line.split(spaces, Qt::SkipEmptyParts);
        if (words.isEmpty())
            continue;
        const auto fail = [&](const QString &message) {
            return QStringLiteral("%1:%2: %3").arg(path).arg(lineNumber).arg(message);
        };
        if (words.first() == QLatin1String("node")) {
            int key = 0;
            int weight = 0;
            if (words.size() != 3 || !parseInt(words.at(1), key) || !parseInt(words.at(2), weight))
                return fail(QStringLiteral("expected \"node KEY WEIGHT\""));
            weights.insert(key, weight);
            graph.addNode(key);
            continue;
        }
        int key1 = 0;
        int key2 = 0;
        int weight = 0;
        bool in1 = false;
        bool in2 = false;
        if (words.size() < 4 || words.size() > 5 || !parseInt(words.at(0), key1)
            || !parseInt(words.at(2), key2) || (words.size() == 5 && !parseInt(words.at(4), weight)))
            return fail(QStringLiteral("expected \"KEY1 SIDE1 KEY2 SIDE2 [WEIGHT]\" or \"node KEY WEIGHT\""));
        if (!parseSide(words.at(1), in1) || !parseSide(words.at(3), in2))
            return fail(QStringLiteral("a side is \"in\" or \"out\""));
        if (key1 == key2)
            return fail(QStringLiteral("an edge cannot join node %1 to itself").arg(key1));
        const TovGraphNode *node1 = graph.findNode(key1);
        if (node1 && (node1->existEdge(key2, true) || node1->existEdge(key2, false)))
            return fail(QStringLiteral("nodes %1 and %2 are already joined").arg(key1).arg(key2));
        graph.addEdge(key1, key2, in1, in2)->setWeight(weight);
    }
    for (TovGraphNode *node : graph.getNodes())
        node->setWeight(weights.value(node->getKey(), 1));
    return QString();
}

bool parseKeys(const QString &text, QList<int> &keys)
{
    for (const QString &word : text.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        int key = 0;
        if (!parseInt(word.trimmed(), key))
            return false;
        keys << key;
    }
    return !keys.isEmpty();
}

int runPath(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Searches a graph file for the heaviest simple path: between two nodes (--from, --to), as far as "
        "it runs from one node (--start), or over as many of a list of keys as it can (--keys; the keys "
        "then weigh 1 and every other node 0, and the keys are preferred at every fork).\n\n"
        "Graph file: one edge a line, \"KEY1 SIDE1 KEY2 SIDE2 [WEIGHT]\" with sides in or out; "
        "\"node KEY WEIGHT\" sets a node's weight (default 1); \"#\" starts a comment."));
    const QCommandLineOption helpOption(
        QStringList { QStringLiteral("h"), QStringLiteral("help") }, QStringLiteral("Shows this help."));
    const QCommandLineOption fromOption(
        QStringLiteral("from"), QStringLiteral("Start node of a two-node search."), QStringLiteral("key"));
    const QCommandLineOption toOption(
        QStringLiteral("to"), QStringLiteral("End node of a two-node search."), QStringLiteral("key"));
    const QCommandLineOption stopOption(QStringLiteral("stop"),
        QStringLiteral("Stop weight of a two-node search (default: none)."), QStringLiteral("weight"));
    const QCommandLineOption startOption(
        QStringLiteral("start"), QStringLiteral("Start node of a one-node search."), QStringLiteral("key"));
    const QCommandLineOption bothWaysOption(
        QStringLiteral("both-ways"), QStringLiteral("One-node search: run through the start both ways."));
    const QCommandLineOption keysOption(QStringLiteral("keys"),
        QStringLiteral("Key-list search over these comma-separated keys."), QStringLiteral("keys"));
    const QCommandLineOption byRegionOption(
        QStringLiteral("by-region"), QStringLiteral("Key-list search: search region by region."));
    const QCommandLineOption timeoutOption(QStringLiteral("timeout"),
        QStringLiteral("Time limit in milliseconds (default: none)."), QStringLiteral("ms"));
    const QCommandLineOption dumpOption(QStringLiteral("dump"),
        QStringLiteral("Also writes the graph's text dump to this file."), QStringLiteral("file"));
    for (const QCommandLineOption *option : { &helpOption, &fromOption, &toOption, &stopOption, &startOption,
             &bothWaysOption, &keysOption, &byRegionOption, &timeoutOption, &dumpOption })
        parser.addOption(*option);
    parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("The graph file."));
    if (!parser.parse(arguments))
        return tovFail(parser.errorText());
    if (parser.isSet(helpOption)) {
        QString help = parser.helpText();
        help.replace(0, help.indexOf(QLatin1Char('\n')),
            QStringLiteral("Usage: tovutil path file (--from A --to B [--stop W] | --start A [--both-ways] "
                           "| --keys A,B,C [--by-region]) [--timeout MS] [--dump FILE]"));
        tovOut() << help;
        tovOut().flush();
        return 0;
    }
    const QStringList files = parser.positionalArguments();
    if (files.size() != 1)
        return tovFail(QStringLiteral("path needs exactly one FILE (see tovutil path --help)"));
    const bool twoNode = parser.isSet(fromOption) || parser.isSet(toOption);
    const bool oneNode = parser.isSet(startOption);
    const bool keyList = parser.isSet(keysOption);
    if (int(twoNode) + int(oneNode) + int(keyList) != 1)
        return tovFail(QStringLiteral("give one of --from and --to, --start or --keys"));
    if (twoNode && !(parser.isSet(fromOption) && parser.isSet(toOption)))
        return tovFail(QStringLiteral("--from and --to go together"));

    int from = 0;
    int to = 0;
    int start = 0;
    int stop = INT_MAX;
    int timeout = 0;
    QList<int> keys;
    if (twoNode && (!parseInt(parser.value(fromOption), from) || !parseInt(parser.value(toOption), to)))
        return tovFail(QStringLiteral("--from and --to take integer keys"));
    if (parser.isSet(stopOption) && !parseInt(parser.value(stopOption), stop))
        return tovFail(QStringLiteral("--stop takes an integer weight"));
    if (oneNode && !parseInt(parser.value(startOption), start))
        return tovFail(QStringLiteral("--start takes an integer key"));
    if (keyList && !parseKeys(parser.value(keysOption), keys))
        return tovFail(QStringLiteral("--keys takes comma-separated integer keys"));
    if (parser.isSet(timeoutOption) && !parseInt(parser.value(timeoutOption), timeout))
        return tovFail(QStringLiteral("--timeout takes milliseconds"));

    const QString path = files.first();
    TovGraphStruct graph;
    const QString error = loadGraph(path, graph);
    if (!error.isEmpty())
        return tovFail(error);
    for (int key : twoNode ? QList<int> { from, to } : oneNode ? QList<int> { start } : QList<int>()) {
        if (!graph.existNode(key))
            return tovFail(QStringLiteral("%1: no node %2").arg(path).arg(key));
    }

    if (keyList) {
        // The key-list searches count covered keys: their stop weight is the number of keys.
        for (TovGraphNode *node : graph.getNodes())
            node->setWeight(keys.contains(node->getKey()) ? 1 : 0);
    }
    if (parser.isSet(dumpOption)) {
        // The dump itself reports nothing: check first that the file can be written.
        const QString dumpPath = parser.value(dumpOption);
        QFile probe(dumpPath);
        if (!probe.open(QIODevice::ReadWrite))
            return tovFail(QStringLiteral("%1: cannot write: %2").arg(dumpPath, probe.errorString()));
        probe.close();
        graph.saveToFile(dumpPath);
    }

    TovPathSearcher searcher;
    searcher.setTimeout(timeout);
    std::vector<int> result;
    int weight = 0;
    QElapsedTimer clock;
    clock.start();
    if (twoNode) {
        searcher.searchPath(result, weight, &graph, from, to, stop);
    } else if (oneNode) {
        searcher.searchPath(result, weight, &graph, start, parser.isSet(bothWaysOption));
    } else {
        if (parser.isSet(byRegionOption))
            searcher.searchPathByRegion(keys, result, &graph, true);
        else
            searcher.searchPath(keys, result, &graph, true);
        for (int key : result)
            weight += graph.existNode(key) ? graph.findNode(key)->getWeight() : 0;
    }
    const double ms = clock.nsecsElapsed() / 1e6;

    QStringList pathKeys;
    for (int key : result)
        pathKeys << QString::number(key);
    tovOut() << "path: " << (pathKeys.isEmpty() ? QStringLiteral("(none)") : pathKeys.join(QLatin1Char(' ')))
             << '\n'
             << "weight: " << weight << '\n'
             << "time: " << QString::number(ms, 'f', 3) << " ms" << Qt::endl;
    return 0;
}

} // namespace

TOVUTIL_COMMAND("path", "Searches a graph file for the heaviest path", runPath);
