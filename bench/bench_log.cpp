// Log rows written by 8 threads at once, each iteration one chain of messages nested 1 to 5 deep
// (3 rows on average). "tov" logs through TovMessageLogger into the project's TovLog.db; "raw"
// writes the same rows (IDs, parents, inherited EdoIDs, time stamps, durations) through one
// prepared SQLite statement behind one mutex. Both run with synchronous writes off, either
// autocommitting every row or inside one transaction.
#include <tovlogsys.h>
#include <tovmessagelogger.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <atomic>
#include <memory>
#include <mutex>

namespace {

const int threads = 8;

const QString &message(int depth)
{
    static const QString texts[] = { QStringLiteral("计算道路"), QStringLiteral("计算路面"),
        QStringLiteral("计算侧石"), QStringLiteral("计算结构层"), QStringLiteral("汇总工程量") };
    return texts[depth];
}

const TovLogSys::LogMsgType levels[]
    = { TovLogSys::Info, TovLogSys::Debug, TovLogSys::Debug, TovLogSys::Warning, TovLogSys::Debug };
const char benchFile[] = "bench_log.cpp";
const char benchFunc[] = "void chain()";

std::unique_ptr<QTemporaryDir> projectDir;

void logSystem(benchmark::State &state, bool transaction)
{
    TovLogSys *sys = TovLogSys::instance();
    if (state.thread_index() == 0) {
        projectDir.reset(new QTemporaryDir);
        sys->onProjectAfterNew(projectDir->path());
        sys->onProjectAfterOpen(projectDir->path());
        if (!sys->dbSession())
            state.SkipWithError("cannot open the log database");
        if (transaction)
            sys->startTransaction();
    }
    const TovMessageLogger logger(benchFile, 42, benchFunc);
    qint64 rows = 0;
    int n = 0;
    for (auto _ : state) {
        const int depth = 1 + (n++ + state.thread_index()) % 5;
        for (int k = 0; k < depth; ++k) {
            TovMessageLogData data = logger.startLogMessage(levels[k], message(k));
            if (k == 0)
                data.setEdoId(1000 + n);
        }
        for (int k = 0; k < depth; ++k)
            logger.stopLog();
        rows += depth;
    }
    state.SetItemsProcessed(rows);
    if (state.thread_index() == 0) {
        if (transaction)
            sys->commitTransaction();
        sys->onProjectBeforeClose();
        projectDir.reset();
    }
}

// The peer: the same rows, bound by hand.
struct RawDb
{
    sqlite3 *db = nullptr;
    sqlite3_stmt *insert = nullptr;
    std::mutex mutex;
    std::atomic<int> nextId { 1 };
};
RawDb raw;

struct RawRow
{
    int id;
    int pid;
    int level;
    qint64 edoId;
    QDateTime start;
    QElapsedTimer clock;
};

int storedLevel(TovLogSys::LogMsgType type)
{
    return type == TovLogSys::Info ? 1 : type == TovLogSys::Warning ? 2 : type == TovLogSys::Error ? 3 : 0;
}

// A null text is bound as NULL, as Qt's driver does.
void bindText(sqlite3_stmt *stmt, int column, const QString &text)
{
    if (text.isNull()) {
        sqlite3_bind_null(stmt, column);
        return;
    }
    sqlite3_bind_text16(stmt, column, text.utf16(), text.size() * 2, SQLITE_TRANSIENT);
}

void rawSqlite(benchmark::State &state, bool transaction)
{
    if (state.thread_index() == 0) {
        projectDir.reset(new QTemporaryDir);
        const QByteArray file = QFile::encodeName(projectDir->filePath(QStringLiteral("TovLog.db")));
        if (sqlite3_open(file.constData(), &raw.db) != SQLITE_OK)
            state.SkipWithError("cannot open the database");
        sqlite3_exec(raw.db,
            "CREATE TABLE LogData (ID INTEGER PRIMARY KEY, PID INTEGER, Level INTEGER, Msg TEXT, "
            "File TEXT, Func TEXT, Line INTEGER, EdoID INTEGER, Category TEXT, FuncData TEXT, "
            "TimeStamp DATETIME, Time REAL);"
            "PRAGMA foreign_keys = 1; PRAGMA synchronous = OFF;",
            nullptr, nullptr, nullptr);
        sqlite3_prepare_v2(raw.db,
            "INSERT INTO LogData (ID, PID, Level, Msg, File, Func, Line, EdoID, Category, FuncData, "
            "TimeStamp, Time) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
            -1, &raw.insert, nullptr);
        if (transaction)
            sqlite3_exec(raw.db, "BEGIN", nullptr, nullptr, nullptr);
    }
    const QString file = QString::fromUtf8(benchFile);
    const QString func = QString::fromUtf8(benchFunc);
    RawRow stack[5];
    qint64 rows = 0;
    int n = 0;
    for (auto _ : state) {
        const int depth = 1 + (n++ + state.thread_index()) % 5;
        for (int k = 0; k < depth; ++k) {
            RawRow &row = stack[k];
            row.id = raw.nextId.fetch_add(1);
            row.pid = k == 0 ? -1 : stack[k - 1].id;
            row.level = storedLevel(levels[k]);
            row.edoId = k == 0 ? qint64(1000 + n) : qint64(-1);
            row.start = QDateTime::currentDateTime();
            row.clock.start();
        }
        for (int k = depth - 1; k >= 0; --k) {
            RawRow &row = stack[k];
            for (int up = k - 1; row.edoId == -1 && up >= 0; --up)
                row.edoId = stack[up].edoId;
            const double seconds = row.clock.elapsed() / 1000.0;
            std::lock_guard<std::mutex> lock(raw.mutex);
            sqlite3_stmt *s = raw.insert;
            sqlite3_bind_int(s, 1, row.id);
            sqlite3_bind_int(s, 2, row.pid);
            sqlite3_bind_int(s, 3, row.level);
            bindText(s, 4, message(k));
            bindText(s, 5, file);
            bindText(s, 6, func);
            sqlite3_bind_int(s, 7, 42);
            sqlite3_bind_int64(s, 8, row.edoId);
            bindText(s, 9, QString());
            bindText(s, 10, QString());
            bindText(s, 11, row.start.toString(Qt::ISODateWithMs));
            sqlite3_bind_double(s, 12, seconds);
            if (sqlite3_step(s) != SQLITE_DONE)
                state.SkipWithError(sqlite3_errmsg(raw.db));
            sqlite3_reset(s);
        }
        rows += depth;
    }
    state.SetItemsProcessed(rows);
    if (state.thread_index() == 0) {
        if (transaction)
            sqlite3_exec(raw.db, "COMMIT", nullptr, nullptr, nullptr);
        sqlite3_finalize(raw.insert);
        sqlite3_close(raw.db);
        raw.insert = nullptr;
        raw.db = nullptr;
        raw.nextId = 1;
        projectDir.reset();
    }
}

void Autocommit_tov(benchmark::State &state)
{
    logSystem(state, false);
}
void Autocommit_raw(benchmark::State &state)
{
    rawSqlite(state, false);
}
void Transaction_tov(benchmark::State &state)
{
    logSystem(state, true);
}
void Transaction_raw(benchmark::State &state)
{
    rawSqlite(state, true);
}

} // namespace

BENCHMARK(Autocommit_tov)->Name("Autocommit/tov")->Threads(threads)->UseRealTime();
BENCHMARK(Autocommit_raw)->Name("Autocommit/raw")->Threads(threads)->UseRealTime();
BENCHMARK(Transaction_tov)->Name("Transaction/tov")->Threads(threads)->UseRealTime();
BENCHMARK(Transaction_raw)->Name("Transaction/raw")->Threads(threads)->UseRealTime();

int main(int argc, char **argv)
{
    // The log system finds TovLog.ini through the application object.
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
