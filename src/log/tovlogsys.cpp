#include "tovlogsys.h"

#include "tovlogsys_p.h"
#include "tovmessagelogcontext.h"
#include "tovmessagelogmanager.h"

#include <sefdebugoutput.h>
#include <tovappcmdline.h>
#include <tovsqldbsession.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSettings>
#include <QTextStream>
#include <QThread>
#include <QUuid>

namespace {

const QString logDbName = QStringLiteral("TovLog.db");
const QString logTable = QStringLiteral("LogData");

TovLogSys *logSysInstance = nullptr;

// The stored level: 0..3 for Debug..Error, 0 for anything else.
int storedLevel(TovLogSys::LogMsgType type)
{
    switch (type) {
    case TovLogSys::Info:
        return 1;
    case TovLogSys::Warning:
        return 2;
    case TovLogSys::Error:
        return 3;
    default:
        return 0;
    }
}

// The host passes project directories with or without a trailing separator.
QString projectLogFile(const QString &projectDir)
{
    if (projectDir.endsWith(QLatin1Char('/')) || projectDir.endsWith(QLatin1Char('\\')))
        return projectDir + logDbName;
    return projectDir + QLatin1Char('/') + logDbName;
}

// The text the SQLite driver makes of a date-time, Qt::ISODateWithMs, written digit by digit for
// the local times of the log's rows: Qt's general formatter costs more than the row's insert.
// Other time specs, invalid stamps and years Qt does not write as four digits go to Qt.
QString timeStampText(const QDateTime &stamp)
{
    if (stamp.timeSpec() != Qt::LocalTime || !stamp.isValid())
        return stamp.toString(Qt::ISODateWithMs);
    int year = 0;
    int month = 0;
    int day = 0;
    stamp.date().getDate(&year, &month, &day);
    if (year < 0 || year > 9999)
        return stamp.toString(Qt::ISODateWithMs);
    int ms = stamp.time().msecsSinceStartOfDay();
    const int second = ms / 1000 % 60;
    const int minute = ms / 60000 % 60;
    const int hour = ms / 3600000;
    ms %= 1000;
    QChar text[23];
    const auto put = [&text](int at, int value, int digits) {
        for (int i = at + digits - 1; i >= at; --i, value /= 10)
            text[i] = QChar(u'0' + value % 10);
    };
    put(0, year, 4);
    text[4] = QLatin1Char('-');
    put(5, month, 2);
    text[7] = QLatin1Char('-');
    put(8, day, 2);
    text[10] = QLatin1Char('T');
    put(11, hour, 2);
    text[13] = QLatin1Char(':');
    put(14, minute, 2);
    text[16] = QLatin1Char(':');
    put(17, second, 2);
    text[19] = QLatin1Char('.');
    put(20, ms, 3);
    return QString(text, 23);
}

void closeAtExit()
{
    if (logSysInstance)
        logSysInstance->onProjectBeforeClose();
}

} // namespace

const QStringList &tovLogDataColumns()
{
    static const QStringList columns { QStringLiteral("ID"), QStringLiteral("PID"), QStringLiteral("Level"),
        QStringLiteral("Msg"), QStringLiteral("File"), QStringLiteral("Func"), QStringLiteral("Line"),
        QStringLiteral("EdoID"), QStringLiteral("Category"), QStringLiteral("FuncData"),
        QStringLiteral("TimeStamp"), QStringLiteral("Time") };
    return columns;
}

QString tovLogDataSchema()
{
    return QStringLiteral(
        "CREATE TABLE LogData (ID INTEGER PRIMARY KEY, PID INTEGER, Level INTEGER, Msg TEXT, "
        "File TEXT, Func TEXT, Line INTEGER, EdoID INTEGER, Category TEXT, FuncData TEXT, "
        "TimeStamp DATETIME, Time REAL)");
}

// ---------------------------------------------------------------------------------------------
// TovLogSysPrivate

TovLogSysPrivate::~TovLogSysPrivate() = default;

void TovLogSysPrivate::readConfig()
{
    QSettings ini(
        QCoreApplication::applicationDirPath() + QStringLiteral("/TovLog.ini"), QSettings::IniFormat);
    ini.beginGroup(QStringLiteral("Options"));
    openLog = ini.value(QStringLiteral("OpenLog"), false).toBool();
    funcDataLog = ini.value(QStringLiteral("FuncDataLog"), false).toBool();
    funcDataPath = ini.value(QStringLiteral("FuncDataPath")).toString();
    ini.endGroup();

    ini.beginGroup(QStringLiteral("LogLevel"));
    static const struct
    {
        const char *key;
        TovLogSys::LogMsgType bit;
    } levels[] = { { "Debug", TovLogSys::Debug }, { "Info", TovLogSys::Info },
        { "Warning", TovLogSys::Warning }, { "Error", TovLogSys::Error } };
    for (const auto &level : levels) {
        if (ini.value(QLatin1String(level.key), false).toBool())
            levelMask |= level.bit;
    }
    ini.endGroup();

    ini.beginGroup(QStringLiteral("CheckOptions"));
    const QStringList keys = ini.childKeys();
    for (const QString &key : keys) {
        if (ini.value(key, false).toBool())
            checkOptions.insert(key.toUpper());
    }
    ini.endGroup();
}

bool TovLogSysPrivate::copyTemplate(const QString &target)
{
    const QString appDir = QCoreApplication::applicationDirPath();
    const QString templateFile = appDir + QLatin1Char('/') + logDbName;
    if (!QFile::exists(templateFile)) {
        // Made under a private name and renamed, so no process ever copies a half-made template.
        const QString scratch = appDir + QStringLiteral("/TovLog.")
            + QUuid::createUuid().toString(QUuid::Id128) + QStringLiteral(".db");
        {
            TovSqlDBSession db(scratch, TovSqlDBSession::SQLite);
            if (db.open()) {
                QSqlQuery query(db.database());
                db.execSQL(query, tovLogDataSchema());
            }
        }
        if (!QFile::rename(scratch, templateFile))
            QFile::remove(scratch);
    }
    if (QFile::exists(templateFile))
        return QFile::copy(templateFile, target);
    if (QFile::exists(target))
        return false;
    TovSqlDBSession db(target, TovSqlDBSession::SQLite);
    if (!db.open())
        return false;
    QSqlQuery query(db.database());
    return db.execSQL(query, tovLogDataSchema());
}

void TovLogSysPrivate::openSession(const QString &fileName)
{
    auto newSession = std::make_shared<TovSqlDBSession>(fileName, TovSqlDBSession::SQLite);
    std::lock_guard<std::mutex> lock(dbMutex);
    insertQuery.reset();
    session = newSession;
    if (!session->open()) {
        session.reset();
        hasSession = false;
        return;
    }
    nextId.storeRelaxed(session->queryMaxValue(logTable, QStringLiteral("ID")) + 1);
    insertQuery.reset(new QSqlQuery(session->database()));
    hasSession = true;
}

void TovLogSysPrivate::closeSession()
{
    std::lock_guard<std::mutex> lock(dbMutex);
    hasSession = false;
    insertQuery.reset();
    if (session)
        session->close();
    session.reset();
}

void TovLogSysPrivate::commitLogData(TovLogSys::LogData *data)
{
    if (!hasSession)
        return;
    // The record belongs to the calling thread: its row is built before taking the lock, which
    // every thread's rows queue for.
    // Moved into place: a braced list would copy every value once more.
    QVector<QVariant> values;
    values.reserve(12);
    values.append(QVariant(data->ID));
    values.append(QVariant(data->PID));
    values.append(QVariant(storedLevel(data->Level)));
    values.append(QVariant(data->Msg));
    values.append(QVariant(data->File));
    values.append(QVariant(data->Func));
    values.append(QVariant(data->Line));
    values.append(QVariant(data->EdoID));
    values.append(QVariant(data->Category));
    values.append(QVariant(data->FuncData));
    values.append(QVariant(timeStampText(data->TimeStamp)));
    values.append(QVariant(data->Time / 1000.0));
    std::lock_guard<std::mutex> lock(dbMutex);
    if (!session)
        return;
    session->insertData(*insertQuery, logTable, tovLogDataColumns(), values);
    if (funcDataLog && !funcDataPath.isEmpty() && !data->FuncData.isEmpty())
        writeFuncDataFile(*data);
}

void TovLogSysPrivate::writeFuncDataFile(const TovLogSys::LogData &data)
{
    static const QRegularExpression unsafe(QStringLiteral("[\\\\/:*?\"<>|]"));
    QDir dir(funcDataPath);
    if (!dir.exists())
        dir.mkpath(QStringLiteral("."));
    const QString name = QStringLiteral("%1.").arg(data.ID)
        + QString(data.FullName).replace(unsafe, QStringLiteral("~")) + QStringLiteral("[%1]").arg(data.EdoID)
        + QStringLiteral(".txt");
    QFile file(dir.filePath(name));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return;
    file.write(data.FuncData.toUtf8());
}

void TovLogSysPrivate::commitTimeData(TovLogSys::LogData *data)
{
    const TovAppCmdLine *cmdLine = TovAppCmdLine::instance();
    std::lock_guard<std::mutex> lock(dbMutex);
    QString fileName;
    if (!cmdLine->logTimePath().isEmpty()) {
        fileName = cmdLine->logTimePath()
            + (projectFileName.isEmpty() ? QStringLiteral("RixReport")
                                         : QFileInfo(projectFileName).fileName());
    } else {
        fileName = projectFileName;
    }
    if (fileName.isEmpty())
        return;
    fileName += QStringLiteral(".time");

    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text))
        return;
    QTextStream out(&file);
    out.setCodec("UTF-8");
    if (file.size() == 0 && !cmdLine->isAutomation())
        out << QStringLiteral("操作时间,功能名称,用时(秒)") << '\n';
    const QString stamp = data->TimeStamp.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    const QString seconds = QString::number(data->Time / 1000.0, 'g', 6);
    out << QStringLiteral("%1,%2,%3\n").arg(stamp, data->Msg, seconds);
    out.flush();
    SefDebugOutput::write(
        stamp + QLatin1Char(' ') + data->Msg + QLatin1Char(' ') + seconds + QStringLiteral("秒"));
}

// ---------------------------------------------------------------------------------------------
// TovLogSys

TovLogSys::TovLogSys()
    : d(new TovLogSysPrivate)
{
    d->readConfig();
}

TovLogSys::~TovLogSys()
{
    d->closeSession();
    qDeleteAll(d->managers);
}

TovLogSys *TovLogSys::instance()
{
    // Never destroyed: threads may log during static destruction. The database is closed with
    // the application object instead.
    static TovLogSys *const sys = [] {
        logSysInstance = new TovLogSys;
        qAddPostRoutine(closeAtExit);
        return logSysInstance;
    }();
    return sys;
}

bool TovLogSys::isLogEnabled() const
{
    return d->openLog;
}

bool TovLogSys::isLogEnabled(LogMsgType t) const
{
    if (!d->openLog || (int(t) & ~d->levelMask) != 0)
        return false;
    return t != 0 || d->levelMask == 0;
}

bool TovLogSys::isDebugEnabled() const
{
    return d->openLog && (d->levelMask & Debug);
}

bool TovLogSys::isInfoEnabled() const
{
    return d->openLog && (d->levelMask & Info);
}

bool TovLogSys::isWarningEnabled() const
{
    return d->openLog && (d->levelMask & Warning);
}

bool TovLogSys::isErrorEnabled() const
{
    return d->openLog && (d->levelMask & Error);
}

bool TovLogSys::isLogFuncData() const
{
    return d->funcDataLog && d->hasSession;
}

bool TovLogSys::hasCheckOption(const QString &name) const
{
    std::lock_guard<std::mutex> lock(d->optionsMutex);
    return d->checkOptions.contains(name.toUpper());
}

void TovLogSys::setCheckOption(const QString &name, bool on)
{
    std::lock_guard<std::mutex> lock(d->optionsMutex);
    if (on)
        d->checkOptions.insert(name.toUpper());
    else
        d->checkOptions.remove(name.toUpper());
}

QString TovLogSys::funcDataPath() const
{
    std::lock_guard<std::mutex> lock(d->dbMutex);
    return d->funcDataPath;
}

void TovLogSys::setFuncDataPath(const QString &path)
{
    std::lock_guard<std::mutex> lock(d->dbMutex);
    d->funcDataPath = path;
}

void TovLogSys::setProjectFileName(const QString &fileName)
{
    std::lock_guard<std::mutex> lock(d->dbMutex);
    d->projectFileName = fileName;
}

std::shared_ptr<TovSqlDBSession> TovLogSys::dbSession() const
{
    std::lock_guard<std::mutex> lock(d->dbMutex);
    return d->session;
}

void TovLogSys::onProjectAfterNew(const QString &projectDir)
{
    d->copyTemplate(projectLogFile(projectDir));
}

void TovLogSys::onProjectAfterOpen(const QString &projectDir)
{
    const QString fileName = projectLogFile(projectDir);
    if (!QFile::exists(fileName))
        d->copyTemplate(fileName);
    d->openSession(fileName);
}

void TovLogSys::onProjectBeforeClose()
{
    d->closeSession();
}

void TovLogSys::startTransaction()
{
    std::lock_guard<std::mutex> lock(d->dbMutex);
    if (d->session)
        d->session->transaction();
}

void TovLogSys::commitTransaction()
{
    std::lock_guard<std::mutex> lock(d->dbMutex);
    if (d->session)
        d->session->commit();
}

void TovLogSys::rollbackTransaction()
{
    std::lock_guard<std::mutex> lock(d->dbMutex);
    if (d->session)
        d->session->rollback();
}

void TovLogSys::clearLogData()
{
    std::lock_guard<std::mutex> lock(d->dbMutex);
    if (!d->session)
        return;
    QSqlQuery query(d->session->database());
    d->session->execSQL(query, d->session->deleteSqlStatement(logTable, QStringList()));
}

TovMessageLogManager *TovLogSys::currentLogManager(bool isTime)
{
    if (isTime) {
        if (!TovAppCmdLine::instance()->isLogTime())
            return nullptr;
    } else if (!d->openLog || !d->hasSession) {
        return nullptr;
    }
    const Qt::HANDLE thread = QThread::currentThreadId();
    std::lock_guard<std::mutex> lock(d->managerMutex);
    TovMessageLogManager *&manager = d->managers[thread];
    if (!manager)
        manager = new TovMessageLogManager(thread);
    return manager;
}

TovMessageLogManager *TovLogSys::findLogManager() const
{
    std::lock_guard<std::mutex> lock(d->managerMutex);
    return d->managers.value(QThread::currentThreadId());
}

void TovLogSys::removeLogManager(TovMessageLogManager *manager)
{
    if (!manager)
        return;
    {
        std::lock_guard<std::mutex> lock(d->managerMutex);
        const auto it = d->managers.constFind(manager->threadId());
        if (it == d->managers.cend() || it.value() != manager)
            return;
        d->managers.erase(it);
    }
    delete manager;
}

qint64 TovLogSys::lastEdoID() const
{
    if (!d->openLog)
        return -1;
    const TovMessageLogManager *manager = findLogManager();
    return manager ? manager->lastEdoID() : -1;
}

QString TovLogSys::lastLogTimeName() const
{
    const TovMessageLogManager *manager = findLogManager();
    return manager ? manager->lastLogTimeName() : QString();
}

QString TovLogSys::getProjectAddFile(const QString &projectDir) const
{
    return QFile::exists(projectLogFile(projectDir)) ? logDbName : QString();
}

TovLogSys::LogData *TovLogSys::newLogData(
    int pid, LogMsgType type, const TovMessageLogContext &context, const QString &msg)
{
    auto *data = new LogData;
    data->ID = d->nextId.fetchAndAddRelaxed(1);
    data->PID = pid;
    data->Level = type;
    data->File = context.file;
    data->Func = context.function;
    data->Line = context.line;
    data->Msg = msg;
    data->TimeStamp = QDateTime::currentDateTime();
    return data;
}

void TovLogSys::commitLogData(LogData *data)
{
    d->commitLogData(data);
}

void TovLogSys::commitTimeData(LogData *data)
{
    d->commitTimeData(data);
}
