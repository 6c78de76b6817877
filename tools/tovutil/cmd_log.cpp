// tovutil log: reads a project's log database ("TovLog.db", table "LogData") and prints it as
// a list or a tree, or writes it as Chrome trace-event JSON. Also the log demo.
#include "commandregistry.h"
#include "logdemo.h"

#include <tovlogsys.h>
#include <tovmessagelogger.h>
#include <tovsqldbsession.h>

#include <QCommandLineParser>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QThread>

#include <algorithm>
#include <functional>

namespace {

struct LogRow
{
    int id = 0;
    int pid = -1;
    int level = 0;
    QString msg;
    QString file;
    QString func;
    int line = 0;
    qint64 edoId = -1;
    QString category;
    QString funcData;
    QDateTime timeStamp;
    double ms = 0;
    QVector<int> children; // indexes into the row list, in ID order
    int depth = 0;
};

const char *const levelNames[] = { "debug", "info", "warning", "error" };

QString levelName(int level)
{
    return QLatin1String(level >= 0 && level <= 3 ? levelNames[level] : "?");
}

// Reads every row in ID order; a row whose parent is not in the table is a root.
bool readRows(const QString &fileName, QVector<LogRow> &rows, QString &error)
{
    if (!QFileInfo(fileName).isFile()) {
        error = QStringLiteral("no such file: %1").arg(fileName);
        return false;
    }
    TovSqlDBSession session(fileName, TovSqlDBSession::SQLite);
    if (!session.open()) {
        error = QStringLiteral("cannot open %1: %2").arg(fileName, session.lastError().text());
        return false;
    }
    {
        QSqlQuery query(session.database());
        if (!session.queryData(query, QStringLiteral("LogData"), QString())) {
            error = QStringLiteral("cannot read LogData in %1: %2").arg(fileName, session.lastError().text());
            return false;
        }
        const QSqlRecord record = query.record();
        const int cols[] = { record.indexOf(QStringLiteral("ID")), record.indexOf(QStringLiteral("PID")),
            record.indexOf(QStringLiteral("Level")), record.indexOf(QStringLiteral("Msg")),
            record.indexOf(QStringLiteral("File")), record.indexOf(QStringLiteral("Func")),
            record.indexOf(QStringLiteral("Line")), record.indexOf(QStringLiteral("EdoID")),
            record.indexOf(QStringLiteral("Category")), record.indexOf(QStringLiteral("FuncData")),
            record.indexOf(QStringLiteral("TimeStamp")), record.indexOf(QStringLiteral("Time")) };
        if (std::find(std::begin(cols), std::end(cols), -1) != std::end(cols)) {
            error = QStringLiteral("%1: table LogData lacks a column").arg(fileName);
            return false;
        }
        while (query.next()) {
            LogRow r;
            r.id = query.value(cols[0]).toInt();
            r.pid = query.value(cols[1]).toInt();
            r.level = query.value(cols[2]).toInt();
            r.msg = query.value(cols[3]).toString();
            r.file = query.value(cols[4]).toString();
            r.func = query.value(cols[5]).toString();
            r.line = query.value(cols[6]).toInt();
            r.edoId = query.value(cols[7]).toLongLong();
            r.category = query.value(cols[8]).toString();
            r.funcData = query.value(cols[9]).toString();
            r.timeStamp = QDateTime::fromString(query.value(cols[10]).toString(), Qt::ISODateWithMs);
            r.ms = query.value(cols[11]).toDouble() * 1000.0;
            rows.append(r);
        }
    }
    std::sort(rows.begin(), rows.end(), [](const LogRow &a, const LogRow &b) { return a.id < b.id; });
    return true;
}

// Links children to parents; answers the roots.
QVector<int> linkTree(QVector<LogRow> &rows)
{
    QHash<int, int> index;
    for (int i = 0; i < rows.size(); ++i)
        index.insert(rows[i].id, i);
    QVector<int> roots;
    for (int i = 0; i < rows.size(); ++i) {
        const int parent = index.value(rows[i].pid, -1);
        if (parent >= 0 && parent != i)
            rows[parent].children.append(i);
        else
            roots.append(i);
    }
    std::function<void(int, int)> setDepth = [&](int i, int depth) {
        rows[i].depth = depth;
        for (int c : qAsConst(rows[i].children))
            setDepth(c, depth + 1);
    };
    for (int r : qAsConst(roots))
        setDepth(r, 0);
    return roots;
}

// Marks the rows to show: those that pass the filter, with their ancestors in tree mode.
QVector<bool> selectRows(const QVector<LogRow> &rows, const QVector<int> &roots, bool tree,
    const std::function<bool(const LogRow &)> &pass)
{
    QVector<bool> shown(rows.size(), false);
    if (!tree) {
        for (int i = 0; i < rows.size(); ++i)
            shown[i] = pass(rows[i]);
        return shown;
    }
    std::function<bool(int)> visit = [&](int i) {
        bool any = pass(rows[i]);
        for (int c : rows[i].children)
            any = visit(c) || any;
        shown[i] = any;
        return any;
    };
    for (int r : roots)
        visit(r);
    return shown;
}

QString describe(const LogRow &r)
{
    QString text = QStringLiteral("%1  %2 ms  %3").arg(r.msg).arg(r.ms, 0, 'f', 1).arg(levelName(r.level));
    if (r.edoId != -1)
        text += QStringLiteral("  edo %1").arg(r.edoId);
    if (!r.category.isEmpty())
        text += QStringLiteral("  [%1]").arg(r.category);
    return text;
}

void printRows(QTextStream &out, const QVector<LogRow> &rows, const QVector<int> &roots,
    const QVector<bool> &shown, bool tree)
{
    if (!tree) {
        for (int i = 0; i < rows.size(); ++i) {
            if (shown[i])
                out << QStringLiteral("%1 <- %2  ").arg(rows[i].id, 6).arg(rows[i].pid, 6)
                    << describe(rows[i]) << '\n';
        }
        return;
    }
    std::function<void(int)> print = [&](int i) {
        if (!shown[i])
            return;
        out << QString(rows[i].depth * 2, QLatin1Char(' ')) << describe(rows[i]) << '\n';
        for (int c : rows[i].children)
            print(c);
    };
    for (int r : roots)
        print(r);
}

// Chrome trace events ("X" complete events, microseconds). The table does not record threads:
// each root tree goes to the first lane free at its start, so lanes never overlap.
QJsonDocument traceDocument(
    const QVector<LogRow> &rows, const QVector<int> &roots, const QVector<bool> &shown)
{
    qint64 origin = std::numeric_limits<qint64>::max();
    for (const LogRow &r : rows) {
        if (r.timeStamp.isValid())
            origin = qMin(origin, r.timeStamp.toMSecsSinceEpoch());
    }
    auto startUs = [origin](const LogRow &r) {
        return r.timeStamp.isValid() ? double(r.timeStamp.toMSecsSinceEpoch() - origin) * 1000.0 : 0.0;
    };
    QVector<int> order = roots;
    std::sort(order.begin(), order.end(), [&](int a, int b) { return startUs(rows[a]) < startUs(rows[b]); });
    QVector<double> laneEnds;
    QJsonArray events;
    std::function<void(int, int)> emitRow = [&](int i, int lane) {
        const LogRow &r = rows[i];
        if (shown[i]) {
            QJsonObject args { { "id", r.id }, { "pid", r.pid }, { "level", levelName(r.level) },
                { "file", r.file }, { "func", r.func }, { "line", r.line } };
            if (r.edoId != -1)
                args.insert(QStringLiteral("edoId"), QString::number(r.edoId));
            if (!r.funcData.isEmpty())
                args.insert(QStringLiteral("funcData"), r.funcData);
            events.append(QJsonObject { { "name", r.msg },
                { "cat", r.category.isEmpty() ? levelName(r.level) : r.category }, { "ph", "X" },
                { "ts", startUs(r) }, { "dur", r.ms * 1000.0 }, { "pid", 1 }, { "tid", lane },
                { "args", args } });
        }
        for (int c : r.children)
            emitRow(c, lane);
    };
    for (int root : qAsConst(order)) {
        const double start = startUs(rows[root]);
        int lane = 0;
        while (lane < laneEnds.size() && laneEnds[lane] > start)
            ++lane;
        if (lane == laneEnds.size())
            laneEnds.append(0);
        laneEnds[lane] = start + rows[root].ms * 1000.0;
        emitRow(root, lane + 1);
    }
    return QJsonDocument(QJsonObject { { "traceEvents", events }, { "displayTimeUnit", "ms" } });
}

int runLog(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Prints a project's log database (TovLog.db): one line per message with its duration, "
                       "level, element (EdoID) and category; --tree indents each message under the one that "
                       "enclosed it."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("TOVLOG.DB"), QStringLiteral("The log database."));
    const QCommandLineOption treeOption(
        QStringLiteral("tree"), QStringLiteral("Print the messages as a tree."));
    const QCommandLineOption edoOption(QStringLiteral("edo"),
        QStringLiteral("Only messages about element ID (in a tree, with the "
                       "messages that enclose them)."),
        QStringLiteral("ID"));
    const QCommandLineOption minOption(QStringLiteral("min-ms"),
        QStringLiteral("Only messages that took at least N milliseconds."), QStringLiteral("N"));
    const QCommandLineOption traceOption(QStringLiteral("trace"),
        QStringLiteral("Write the messages as Chrome trace-event JSON to FILE "
                       "(open it in Perfetto or chrome://tracing)."),
        QStringLiteral("FILE.json"));
    parser.addOptions({ treeOption, edoOption, minOption, traceOption });
    if (!parser.parse(arguments))
        return tovFail(parser.errorText());
    if (parser.isSet(QStringLiteral("help"))) {
        tovOut() << parser.helpText();
        return 0;
    }
    const QStringList positional = parser.positionalArguments();
    if (positional.size() != 1)
        return tovFail(QStringLiteral("log: expected one TOVLOG.DB argument, got %1").arg(positional.size()));

    bool ok = true;
    const bool byEdo = parser.isSet(edoOption);
    const qint64 edo = byEdo ? parser.value(edoOption).toLongLong(&ok) : -1;
    if (!ok)
        return tovFail(
            QStringLiteral("log: --edo expects an integer, not \"%1\"").arg(parser.value(edoOption)));
    const double minMs = parser.isSet(minOption) ? parser.value(minOption).toDouble(&ok) : 0.0;
    if (!ok || minMs < 0)
        return tovFail(
            QStringLiteral("log: --min-ms expects a number >= 0, not \"%1\"").arg(parser.value(minOption)));

    QVector<LogRow> rows;
    QString error;
    if (!readRows(positional.first(), rows, error))
        return tovFail(QStringLiteral("log: ") + error);
    const bool tree = parser.isSet(treeOption);
    const QVector<int> roots = linkTree(rows);
    const QVector<bool> shown = selectRows(rows, roots, tree || parser.isSet(traceOption),
        [&](const LogRow &r) { return (!byEdo || r.edoId == edo) && r.ms >= minMs; });

    if (parser.isSet(traceOption)) {
        QFile file(parser.value(traceOption));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return tovFail(
                QStringLiteral("log: cannot write %1: %2").arg(file.fileName(), file.errorString()));
        file.write(traceDocument(rows, roots, shown).toJson(QJsonDocument::Indented));
        tovOut() << QStringLiteral("wrote %1 events to %2\n")
                        .arg(std::count(shown.begin(), shown.end(), true))
                        .arg(file.fileName());
        return 0;
    }
    printRows(tovOut(), rows, roots, shown, tree);
    return 0;
}

} // namespace

int tovRunLogDemo(const QString &projectDir)
{
    TovLogSys *sys = TovLogSys::instance();
    if (!sys->isLogEnabled())
        return tovFail(
            QStringLiteral("log demo: logging is off (TovLog.ini with [Options] OpenLog=true belongs "
                           "beside tovutil)"));
    if (!QDir().mkpath(projectDir))
        return tovFail(QStringLiteral("log demo: cannot make %1").arg(projectDir));
    sys->onProjectAfterNew(projectDir);
    sys->onProjectAfterOpen(projectDir);
    if (!sys->dbSession())
        return tovFail(QStringLiteral("log demo: cannot open the log database in %1").arg(projectDir));
    sys->clearLogData();

    const TovMessageLogger logger(__FILE__, __LINE__, Q_FUNC_INFO);
    logger.infoStart(QStringLiteral("打开项目 demo")).setCategory(QStringLiteral("project"));
    QThread::msleep(3);
    for (qint64 road : { 1001, 1002 }) {
        logger.infoStart("计算道路 %lld", road).setEdoId(road).setCategory(QStringLiteral("calc"));
        logger.debugStart(QStringLiteral("计算路面"));
        logger.funcData() << "width" << 7.5 << "layers" << 3;
        QThread::msleep(8);
        logger.stopLog();
        logger.debugStart(QStringLiteral("计算侧石"));
        QThread::msleep(4);
        if (road == 1002)
            logger.warningStart(QStringLiteral("侧石高度取默认值")).setCategory(QStringLiteral("check"));
        if (road == 1002)
            logger.stopLog();
        logger.stopLog();
        logger.stopLog();
    }
    logger.errorStart(QStringLiteral("缺少标高")).setEdoId(1003).setCategory(QStringLiteral("check"));
    logger.stopLog();
    logger.infoStart(QStringLiteral("汇总工程量")).setCategory(QStringLiteral("summary"));
    QThread::msleep(5);
    logger.stopLog();
    logger.stopLog();
    sys->onProjectBeforeClose();

    const QString dbFile = QDir(projectDir).filePath(QStringLiteral("TovLog.db"));
    tovOut() << QStringLiteral("Log written to %1:\n").arg(dbFile);
    return runLog({ QStringLiteral("log"), dbFile, QStringLiteral("--tree") });
}

TOVUTIL_COMMAND("log", "print a log database as a tree, filter it, or write a Chrome trace", runLog);
