#include "toveffifileoperator.h"

#include "tovtimetracker.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTextStream>

class TovEffiFileOperatorPrivate
{
public:
    bool enabled = false;
    QString logPath;
    QStringList lines;
};

namespace {

TovEffiFileOperator *effiInstance = nullptr;

std::string defaultLine(const std::string &name, stWorkRecord &record)
{
    return name + std::to_string(qint32(record.total));
}

} // namespace

TovEffiFileOperator::TovEffiFileOperator()
    : d(new TovEffiFileOperatorPrivate)
{
    const QString appDir = QCoreApplication::applicationDirPath();
    QSettings ini(appDir + QStringLiteral("/DebugConfig.ini"), QSettings::IniFormat);
    ini.beginGroup(QStringLiteral("EffiOptions"));
    d->enabled = ini.value(QStringLiteral("IsEffi"), false).toBool();
    if (!d->enabled)
        return;
    d->logPath = ini.value(QStringLiteral("LogPath")).toString();
    if (d->logPath.isEmpty())
        d->logPath = appDir;
    d->logPath += QLatin1Char('/');
    QDir dir(d->logPath);
    if (!dir.exists())
        dir.mkpath(QStringLiteral("."));
}

TovEffiFileOperator::~TovEffiFileOperator() = default;

TovEffiFileOperator *TovEffiFileOperator::getInstance()
{
    if (!effiInstance)
        effiInstance = new TovEffiFileOperator;
    return effiInstance;
}

void TovEffiFileOperator::releaseInstance()
{
    delete effiInstance;
    effiInstance = nullptr;
}

bool TovEffiFileOperator::isEnabled() const
{
    return d->enabled;
}

QString TovEffiFileOperator::logPath() const
{
    return d->logPath;
}

QStringList TovEffiFileOperator::lines() const
{
    return d->lines;
}

void TovEffiFileOperator::startLogWork(const std::string &name)
{
    if (d->enabled)
        TovTimeTracker::getInstance()->startTrackWork(name, 0);
}

void TovEffiFileOperator::stopLogWork(const std::string &name)
{
    stopLogWork(name, defaultLine);
}

void TovEffiFileOperator::stopLogWork(const std::string &name, Formatter formatter)
{
    if (!d->enabled)
        return;
    TovTimeTracker::getInstance()->stopTrackWork(name, [this, &name, &formatter](stWorkRecord &record) {
        d->lines.append(QString::fromStdString(formatter(name, record)));
    });
}

void TovEffiFileOperator::saveToFile()
{
    if (!d->enabled || d->lines.isEmpty())
        return;
    QFile file(d->logPath + QStringLiteral("Efficient.txt"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text))
        return;
    QTextStream out(&file);
    for (const QString &line : qAsConst(d->lines))
        out << line << "\r\n";
}
