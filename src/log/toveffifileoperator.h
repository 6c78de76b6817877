#pragma once

#include "tovgeneralutility_export.h"

#include "stworkrecord.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <string>

class TovEffiFileOperatorPrivate;

// The switchable front of TovTimeTracker that collects one line per finished work and writes
// them to "Efficient.txt". Process-wide, for one thread. "DebugConfig.ini" in the application
// directory (group "EffiOptions": "IsEffi", "LogPath") is read once, when the instance is made;
// while "IsEffi" is off every call is ignored.
class TOVGENERALUTILITY_EXPORT TovEffiFileOperator
{
public:
    using Formatter = std::function<std::string(const std::string &, stWorkRecord &)>;

    static TovEffiFileOperator *getInstance();
    static void releaseInstance();

    bool isEnabled() const;
    // The log directory, ending in "/"; empty while disabled.
    QString logPath() const;
    QStringList lines() const;

    void startLogWork(const std::string &name);
    // Stops the work and collects the line "<name><total>" (total as a signed 32-bit number).
    void stopLogWork(const std::string &name);
    // Stops the work and collects formatter(name, record), read as UTF-8.
    void stopLogWork(const std::string &name, Formatter formatter);
    // Writes every collected line, each ended by "\r\n", to logPath() + "Efficient.txt",
    // replacing its content; the lines are kept. Nothing is written without lines.
    void saveToFile();

private:
    TovEffiFileOperator();
    ~TovEffiFileOperator();
    TovEffiFileOperator(const TovEffiFileOperator &) = delete;
    TovEffiFileOperator &operator=(const TovEffiFileOperator &) = delete;

    std::unique_ptr<TovEffiFileOperatorPrivate> const d;
};
