#include "CParamFileLock.h"

CParamFileLock::CParamFileLock(const QString& strFile, int nTimeoutMs)
    : m_lock(strFile + QStringLiteral(".lock"))
{
    m_bTaken = m_lock.tryLock(nTimeoutMs);
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
