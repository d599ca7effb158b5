#include "CParamFileLock.h"

#include <QDeadlineTimer>
#include <QThread>

CParamFileLock::CParamFileLock(const QString& strFile, int nTimeoutMs)
    : m_lock(strFile + QStringLiteral(".lock"))
{
    // Asked again every 10 ms: QLockFile's own waits double up to seconds,
    // and a save would then wait long after a short read had let go.
    QDeadlineTimer deadline(nTimeoutMs);
    while (!(m_bTaken = m_lock.tryLock(0)) && m_lock.error() == QLockFile::LockFailedError && !deadline.hasExpired())
        QThread::msleep(10);
    // Only another process's lock stops the caller: where no lock file can be
    // made at all, the file's own open says why, if anything goes wrong.
    m_bNoLockHere = !m_bTaken && m_lock.error() != QLockFile::LockFailedError;
}

CParamFileLock::~CParamFileLock()
{
    if (m_bTaken)
        m_lock.unlock();
}

QString CParamFileLock::Holder() const
{
    qint64 nPid = 0;
    QString strHost;
    QString strApplication;
    if (!m_lock.getLockInfo(&nPid, &strHost, &strApplication))
        return QStringLiteral("another process");
    return QStringLiteral("process %1 (%2)").arg(nPid).arg(strApplication);
}
