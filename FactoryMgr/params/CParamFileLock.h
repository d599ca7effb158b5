#pragma once

#include <QLockFile>
#include <QString>

// The lock under which a parameter file is read or written, so that two
// processes (two hosts, a host and the command-line tool) never read a file
// in the middle of a save or combine two saves. It is a QLockFile beside the
// file ("<file>.lock"); one left by a process that died is taken over.
//
// A thread that holds the lock already takes it again at once (a read in the
// middle of a change made under the lock).
//
// Where no lock file can be made (a folder the user may only read, one that
// does not exist), nobody can write the file there either: the caller goes on
// without the lock.
class CParamFileLock
{
public:
    // Waits up to nTimeoutMs for the lock of strFile.
    explicit CParamFileLock(const QString& strFile, int nTimeoutMs = 10000);
    ~CParamFileLock();
    CParamFileLock(const CParamFileLock&) = delete;
    CParamFileLock& operator=(const CParamFileLock&) = delete;

    // False when another process held the lock for the whole wait.
    bool Taken() const { return m_bTaken || m_bNested || m_bNoLockHere; }
    // Who held it, for a message: "process 1234 (factoryparams)".
    QString Holder() const;

private:
    QLockFile m_lock;
    QString m_strLockFile;
    bool m_bTaken = false;
    bool m_bNested = false;
    bool m_bNoLockHere = false;
};
