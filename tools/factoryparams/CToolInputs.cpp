#include "CToolInputs.h"
#include "ParamWording.h"

#include "FactoryParamIo.h"

#include <QFile>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {
// A name as a person reads it: its bytes as UTF-8, and each byte that is no
// UTF-8 as \xNN.
QString Printable(const QByteArray& bytes)
{
    const QString strName = QString::fromUtf8(bytes);
    if (strName.toUtf8() == bytes)
        return strName;
    QString strPrintable;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        strPrintable += byte < 0x80 ? QString(QLatin1Char(c)) : QStringLiteral("\\x%1").arg(byte, 2, 16, QLatin1Char('0'));
    }
    return strPrintable;
}

QString Reason(int nError)
{
    switch (nError) {
    case ENOENT: return ParamWording("no such file");
    case EACCES: return ParamWording("permission denied");
    default: return QString::fromLocal8Bit(std::strerror(nError));
    }
}
}

void CToolInputs::Add(const QString& strArgument, bool bFolders)
{
    if (strArgument == QLatin1String("-")) {
        if (m_bStandardInputTaken) {
            m_inputs << SInput{QStringLiteral("-"), QString(), ParamWording("standard input is read only once")};
            return;
        }
        m_bStandardInputTaken = true;
        m_inputs << Copy(QByteArray(), QStringLiteral("-"));
        return;
    }
    const QByteArray path = QFile::encodeName(strArgument);
    struct stat info {};
    if (::stat(path.constData(), &info) != 0) {
        m_inputs << SInput{strArgument, strArgument, Reason(errno)};
        return;
    }
    if (S_ISDIR(info.st_mode) && bFolders) {
        const qsizetype nBefore = m_inputs.size();
        AddFolder(path, strArgument);
        // A folder given by name that holds nothing to read is said, not passed over.
        if (m_inputs.size() == nBefore)
            m_inputs << SInput{strArgument, strArgument, ParamWording("a folder with no .ini file in it")};
        return;
    }
    // A pipe or a terminal: read once, as it can be read only once.
    if (S_ISFIFO(info.st_mode) || S_ISCHR(info.st_mode)) {
        m_inputs << Copy(path, strArgument);
        return;
    }
    m_inputs << SInput{strArgument, strArgument, QString()};
}

void CToolInputs::AddFolder(const QByteArray& folder, const QString& strName)
{
    DIR* pDir = ::opendir(folder.constData());
    if (!pDir) {
        m_inputs << SInput{strName, QFile::decodeName(folder), ParamWording("a folder that cannot be read: %1").arg(Reason(errno))};
        return;
    }
    QList<QByteArray> names;
    while (const dirent* pEntry = ::readdir(pDir)) {
        const QByteArray name(pEntry->d_name);
        if (name != "." && name != "..")
            names << name;
    }
    ::closedir(pDir);
    std::sort(names.begin(), names.end());
    const QByteArray prefix = folder.endsWith('/') ? folder : folder + '/';
    const QString strPrefix = strName.endsWith('/') ? strName : strName + '/';
    for (const QByteArray& name : names) {
        const QByteArray path = prefix + name;
        const QString strChild = strPrefix + Printable(name);
        struct stat info {};
        if (::lstat(path.constData(), &info) != 0)
            continue;
        if (S_ISLNK(info.st_mode) && ::stat(path.constData(), &info) != 0) {
            if (name.endsWith(".ini"))
                m_inputs << SInput{strChild, QString(), ParamWording("a link to nothing")};
            continue;
        }
        if (S_ISDIR(info.st_mode)) {
            if (name != "Backups")
                AddFolder(path, strChild);
            continue;
        }
        if (!name.endsWith(".ini"))
            continue;
        // A name the settings layer cannot spell back is read through a copy.
        if (QFile::encodeName(QFile::decodeName(path)) != path)
            m_inputs << Copy(path, strChild);
        else
            m_inputs << SInput{strChild, QFile::decodeName(path), QString()};
    }
}

CToolInputs::SInput CToolInputs::Copy(const QByteArray& path, const QString& strName)
{
    // A pipe named on the command line (the shell's <(...)) is read; the open
    // never waits for a writer, and a FIFO that nobody writes to reads as
    // empty at once instead of hanging the tool.
    const int nFd = path.isEmpty() ? STDIN_FILENO : ::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (nFd < 0)
        return SInput{strName, QString(), Reason(errno)};
    if (!path.isEmpty())
        ::fcntl(nFd, F_SETFL, ::fcntl(nFd, F_GETFL) & ~O_NONBLOCK);
    // One byte past the limit is enough to know a file is too large.
    QByteArray bytes;
    char buffer[65536];
    ssize_t nRead = 0;
    while (bytes.size() <= kMaxParamFileSize && (nRead = ::read(nFd, buffer, sizeof buffer)) > 0)
        bytes.append(buffer, nRead);
    const int nError = errno;
    if (!path.isEmpty())
        ::close(nFd);
    if (nRead < 0)
        return SInput{strName, QString(), Reason(nError)};
    if (!m_pCopies)
        m_pCopies = std::make_unique<QTemporaryDir>();
    QFile copy(m_pCopies->filePath(QStringLiteral("%1.ini").arg(++m_nCopies)));
    if (!m_pCopies->isValid() || !copy.open(QIODevice::WriteOnly) || copy.write(bytes) != bytes.size())
        return SInput{strName, QString(), ParamWording("no private copy could be made to read it")};
    return SInput{strName, copy.fileName(), QString(), true};
}

bool CToolInputs::AddListFrom(const QString& strList, QString* pWhy)
{
    // As a named input: a pipe (the shell's <(...)) is read, and a FIFO that
    // nobody writes to is an empty list at once rather than a hang.
    const bool bStandardInput = strList == QLatin1String("-");
    const int nFd = bStandardInput ? STDIN_FILENO : ::open(QFile::encodeName(strList).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (nFd < 0) {
        *pWhy = QStringLiteral("%1: %2").arg(strList, Reason(errno));
        return false;
    }
    if (!bStandardInput)
        ::fcntl(nFd, F_SETFL, ::fcntl(nFd, F_GETFL) & ~O_NONBLOCK);
    QFile list;
    if (!list.open(nFd, QIODevice::ReadOnly, bStandardInput ? QFileDevice::DontCloseHandle : QFileDevice::AutoCloseHandle)) {
        *pWhy = QStringLiteral("%1: %2").arg(strList, list.errorString());
        if (!bStandardInput)
            ::close(nFd);
        return false;
    }
    if (strList == QLatin1String("-"))
        m_bStandardInputTaken = true;
    // Until the end of the input: a pipe's writer may still be on its way.
    for (QByteArray line = list.readLine(); !line.isEmpty(); line = list.readLine()) {
        if (line.endsWith('\n'))
            line.chop(1);
        if (!line.isEmpty())
            Add(QFile::decodeName(line), true);
    }
    return true;
}
