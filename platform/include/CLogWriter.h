#pragma once

#include <functional>

#include <QFile>
#include <QMutex>
#include <QString>

// Writes timestamped log lines to "<user data directory>/Log/Quorvane.log",
// starting a new file when the current one reaches its size limit (the older
// ones are kept as .1 .. .N). Each time a process opens a log file, its
// lines there begin with one naming the project's version and the process. With QUORVANE_LOG_STDERR=1 in the environment
// every line also goes to stderr.
class CLogWriter
{
public:
    static CLogWriter* GetInstance();

    CLogWriter();
    ~CLogWriter();

    void Write(int nLevel, const QByteArray& text);

    // An empty directory means the user data directory's "Log" folder.
    void SetDirectory(const QString& strDir);
    void SetMaxFileSize(qint64 nBytes);
    void SetKeptFiles(int nCount);
    QString FilePath() const;
    // Called with every line as it is written (from whatever thread wrote
    // it, in order); an empty function stops it.
    void SetListener(std::function<void(const QByteArray& line)> listener);

private:
    QString FilePathLocked() const;
    void RotateLocked();
    // Opens m_file to append, and writes the version line.
    bool OpenLocked();

    mutable QMutex m_mutex;
    QFile m_file;
    QString m_strDir;
    QString m_strRefusedPath;   // the log file path found to be no regular file
    qint64 m_nMaxFileSize = 2 * 1024 * 1024;
    int m_nKeptFiles = 3;
    bool m_bToStderr = false;
    std::function<void(const QByteArray& line)> m_listener;
};
