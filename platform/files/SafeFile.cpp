#include "SafeFile.h"

#include <QFile>

#include <sys/stat.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <limits>

namespace {
QString TypeName(mode_t mode)
{
    if (S_ISDIR(mode))
        return QStringLiteral("a folder");
    if (S_ISFIFO(mode))
        return QStringLiteral("a FIFO");
    if (S_ISSOCK(mode))
        return QStringLiteral("a socket");
    if (S_ISCHR(mode) || S_ISBLK(mode))
        return QStringLiteral("a device");
    return QStringLiteral("something");
}

QString ErrorText(int nError)
{
    return nError == EACCES ? QStringLiteral("permission denied") : QString::fromLocal8Bit(std::strerror(nError));
}

SafeFile::Kind KindOf(const struct stat& status, qint64 nMaxBytes)
{
    if (!S_ISREG(status.st_mode))
        return SafeFile::Kind::NotRegular;
    if (nMaxBytes >= 0 && status.st_size > nMaxBytes)
        return SafeFile::Kind::TooLarge;
    return SafeFile::Kind::Regular;
}

QString ProblemOf(const struct stat& status, qint64 nMaxBytes)
{
    switch (KindOf(status, nMaxBytes)) {
    case SafeFile::Kind::NotRegular:
        return QStringLiteral("%1, not a regular file").arg(TypeName(status.st_mode));
    case SafeFile::Kind::TooLarge:
        return QStringLiteral("larger than %1 bytes").arg(nMaxBytes);
    default:
        return QString();
    }
}
}

SafeFile::Kind SafeFile::Check(const QString& strPath, qint64 nMaxBytes)
{
    struct stat status {};
    if (::stat(QFile::encodeName(strPath).constData(), &status) != 0)
        return errno == ENOENT || errno == ENOTDIR ? Kind::Absent : Kind::Unreadable;
    return KindOf(status, nMaxBytes);
}

QString SafeFile::Problem(const QString& strPath, qint64 nMaxBytes)
{
    struct stat status {};
    if (::stat(QFile::encodeName(strPath).constData(), &status) != 0)
        return errno == ENOENT || errno == ENOTDIR ? QString() : ErrorText(errno);
    return ProblemOf(status, nMaxBytes);
}

bool SafeFile::ReadAll(const QString& strPath, qint64 nMaxBytes, QByteArray* pBytes, QString* pProblem)
{
    const auto fail = [pProblem](const QString& strWhy) {
        if (pProblem)
            *pProblem = strWhy;
        return false;
    };
    const int nFd = ::open(QFile::encodeName(strPath).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (nFd < 0) {
        const int nError = errno;
        if (nError == ENOENT || nError == ENOTDIR)
            return fail(QStringLiteral("no such file"));
        // A socket cannot be opened at all: say what it is rather than what open said.
        const QString strKind = Problem(strPath, nMaxBytes);
        return fail(strKind.isEmpty() ? ErrorText(nError) : strKind);
    }
    struct stat status {};
    QString strWhy = ::fstat(nFd, &status) != 0 ? ErrorText(errno) : ProblemOf(status, nMaxBytes);
    QByteArray bytes;
    if (strWhy.isEmpty()) {
        // The size stat gave may be out of date: read to the end, but never past the limit.
        const qint64 nLimit = nMaxBytes >= 0 ? nMaxBytes : std::numeric_limits<qint64>::max() - 1;
        bytes.reserve(qsizetype(qMin<qint64>(status.st_size, nLimit)));
        char buffer[65536];
        for (;;) {
            const ssize_t nRead = ::read(nFd, buffer, sizeof buffer);
            if (nRead < 0 && errno == EINTR)
                continue;
            if (nRead < 0) {
                strWhy = ErrorText(errno);
                break;
            }
            if (nRead == 0)
                break;
            if (bytes.size() + nRead > nLimit) {
                strWhy = QStringLiteral("larger than %1 bytes").arg(nMaxBytes);
                break;
            }
            bytes.append(buffer, qsizetype(nRead));
        }
    }
    ::close(nFd);
    if (!strWhy.isEmpty())
        return fail(strWhy);
    if (pBytes)
        *pBytes = std::move(bytes);
    return true;
}
