#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

// What is at a path, looked at before it is opened: only a regular file is
// opened. A FIFO would block the open (or the first read) until another
// process came along, a device may never end, and a socket cannot be opened
// at all; each is refused with a reason instead.
namespace SafeFile
{
enum class Kind
{
    Absent,       // nothing at the path
    Regular,      // a regular file (a link to one counts)
    NotRegular,   // a folder, a FIFO, a device or a socket
    TooLarge,     // a regular file above the size limit
    Unreadable    // there, but stat or open fails (permissions)
};

// What is at strPath; nMaxBytes < 0 means no size limit.
Kind Check(const QString& strPath, qint64 nMaxBytes = -1);

// A few words on why strPath is not read: "a FIFO, not a regular file",
// "larger than 1048576 bytes", "permission denied". Empty for Absent and Regular.
QString Problem(const QString& strPath, qint64 nMaxBytes = -1);

// Reads the whole regular file at strPath without ever blocking on what is
// there (the file is opened non-blocking and checked once open, so nothing
// swapped in between is read either). False, with the reason in pProblem,
// when nothing is at the path or it is refused.
bool ReadAll(const QString& strPath, qint64 nMaxBytes, QByteArray* pBytes, QString* pProblem);
}
