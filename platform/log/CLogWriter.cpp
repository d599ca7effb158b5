#include "CLogWriter.h"

#include "CHostPaths.h"
#include "CUiPermissionsManager.h"
#include "SafeFile.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QMutexLocker>

#include <cstdio>

CLogWriter* CLogWriter::GetInstance()
{
    static CLogWriter s_writer;
    return &s_writer;
}

CLogWriter::CLogWriter()
    : m_bToStderr(qEnvironmentVariableIntValue("QUORVANE_LOG_STDERR") != 0)
{
}

CLogWriter::~CLogWriter() = default;

void CLogWriter::SetDirectory(const QString& strDir)
{
    QMutexLocker locker(&m_mutex);
    m_file.close();
    m_strDir = strDir;
}

void CLogWriter::SetListener(std::function<void(const QByteArray& line)> listener)
{
    QMutexLocker locker(&m_mutex);
    m_listener = std::move(listener);
}

void CLogWriter::SetMaxFileSize(qint64 nBytes)
{
    QMutexLocker locker(&m_mutex);
    m_nMaxFileSize = qMax<qint64>(1, nBytes);
}

void CLogWriter::SetKeptFiles(int nCount)
{
    QMutexLocker locker(&m_mutex);
    m_nKeptFiles = qMax(0, nCount);
}

QString CLogWriter::FilePath() const
{
    QMutexLocker locker(&m_mutex);
    return FilePathLocked();
}

QString CLogWriter::FilePathLocked() const
{
    const QString strDir = m_strDir.isEmpty()
        ? CHostPaths::UserDataDirectory(CUiPermissionsManager::GetInstance()->GetThemeName()) + "/Log"
        : m_strDir;
    return strDir + "/Quorvane.log";
}

void CLogWriter::RotateLocked()
{
    const QString strPath = m_file.fileName();
    m_file.close();
    QFile::remove(QStringLiteral("%1.%2").arg(strPath).arg(m_nKeptFiles));
    for (int i = m_nKeptFiles - 1; i >= 1; --i)
        QFile::rename(QStringLiteral("%1.%2").arg(strPath).arg(i), QStringLiteral("%1.%2").arg(strPath).arg(i + 1));
    if (m_nKeptFiles > 0)
        QFile::rename(strPath, strPath + ".1");
    else
        QFile::remove(strPath);
}

bool CLogWriter::OpenLocked()
{
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Append))
        return false;
    // Whatever a process writes into a file begins with the version that wrote it.
    m_file.write(QDateTime::currentDateTime().toString("yyyy-MM-dd HH:mm:ss.zzz").toLatin1()
                 + " [0] FactoryMgr " FACTORYMGR_VERSION ", process "
                 + QByteArray::number(QCoreApplication::applicationPid()) + '\n');
    return true;
}

void CLogWriter::Write(int nLevel, const QByteArray& text)
{
    QByteArray line = QDateTime::currentDateTime().toString("yyyy-MM-dd HH:mm:ss.zzz").toLatin1();
    line += " [" + QByteArray::number(nLevel) + "] " + text;
    if (!line.endsWith('\n'))
        line += '\n';

    QMutexLocker locker(&m_mutex);
    if (m_listener)
        m_listener(line.trimmed());
    if (m_bToStderr) {
        std::fwrite(line.constData(), 1, size_t(line.size()), stderr);
        std::fflush(stderr);
    }
    if (!m_file.isOpen()) {
        const QString strPath = FilePathLocked();
        // Opening a FIFO to write waits for a reader that may never come; the
        // log goes only to the listener then, and says so once.
        const QString strProblem = SafeFile::Problem(strPath);
        if (!strProblem.isEmpty()) {
            if (m_strRefusedPath != strPath) {
                m_strRefusedPath = strPath;
                const QByteArray notice = "The log is not written to " + QFile::encodeName(strPath) + ": "
                    + strProblem.toUtf8();
                if (m_listener)
                    m_listener(notice);
                std::fprintf(stderr, "%s\n", notice.constData());
            }
            return;
        }
        QDir().mkpath(QFileInfo(strPath).absolutePath());
        m_file.setFileName(strPath);
        if (!OpenLocked())
            return;   // nowhere to write: the log is best effort
    }
    if (m_file.size() > 0 && m_file.size() + line.size() > m_nMaxFileSize) {
        RotateLocked();
        if (!OpenLocked())
            return;
    }
    m_file.write(line);
    m_file.flush();
}
