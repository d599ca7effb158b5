#include "CParamFileLock.h"
#include "ParamWording.h"

#include <QDeadlineTimer>
#include <QHash>
#include <QThread>

namespace {
// The locks this thread holds, by lock file, with how deeply each is taken:
// a read inside a change that already holds the lock (the tool's set reads,
// changes and writes under one lock) must not wait for itself.
thread_local QHash<QString, int> tHeld;
}

CParamFileLock::CParamFileLock(const QString& strFile, int nTimeoutMs)
    : m_lock(strFile + QStringLiteral(".lock"))
    , m_strLockFile(strFile + QStringLiteral(".lock"))
{
    if (int& nDepth = tHeld[m_strLockFile]; nDepth > 0) {
        ++nDepth;
        m_bNested = true;
        return;
    }
    tHeld.remove(m_strLockFile);
    // Asked again every 10 ms: QLockFile's own waits double up to seconds,
    // and a save would then wait long after a short read had let go.
    QDeadlineTimer deadline(nTimeoutMs);
    while (!(m_bTaken = m_lock.tryLock(0)) && m_lock.error() == QLockFile::LockFailedError && !deadline.hasExpired())
        QThread::msleep(10);
    // Only another process's lock stops the caller: where no lock file can be
    // made at all, the file's own open says why, if anything goes wrong.
    m_bNoLockHere = !m_bTaken && m_lock.error() != QLockFile::LockFailedError;
    if (m_bTaken)
        tHeld.insert(m_strLockFile, 1);
}

CParamFileLock::~CParamFileLock()
{
    if (m_bNested) {
        --tHeld[m_strLockFile];
        return;
    }
    if (m_bTaken) {
        tHeld.remove(m_strLockFile);
        m_lock.unlock();
    }
}

QString CParamFileLock::Holder() const
{
    qint64 nPid = 0;
    QString strHost;
    QString strApplication;
    if (!m_lock.getLockInfo(&nPid, &strHost, &strApplication))
        return ParamWording("another process");
    return ParamWording("process %1 (%2)").arg(nPid).arg(strApplication);
}
