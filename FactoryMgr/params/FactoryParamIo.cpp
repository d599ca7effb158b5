#include "FactoryParamIo.h"
#include "ParamWording.h"

#include "CParamFileLock.h"
#include "CSettingsFile.h"
#include "FactoryParamKeys.h"
#include "FactoryParams.h"
#include "IniValue.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSettings>

#include <sys/stat.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <optional>

namespace {
const QString kHeader = QStringLiteral("FACTORY_PARAM");
const QString kMarkerKey = QStringLiteral("FILE_FLAG");
const QString kMarker = QStringLiteral("__FACTORY_PARAM__");
const QString kTimeKey = QStringLiteral("CREATE_TIME");
}

namespace {
// What stat says of strPath: only a regular file counts (a directory or a
// pipe in its place is no parameter file, and a pipe must not block the
// reader). QFileInfo says "no file" for a file the user may not read, which
// must still fail the marker check, so the type comes from stat.
ParamFileStatus KindByStat(const QString& strPath)
{
    struct stat status {};
    if (::stat(QFile::encodeName(strPath).constData(), &status) != 0 || !S_ISREG(status.st_mode))
        return ParamFileStatus::NoFile;
    if (status.st_size > kMaxParamFileSize)
        return ParamFileStatus::TooLarge;
    return ParamFileStatus::Loaded;
}

bool HasMarker(const QSettings& file)
{
    return file.value(kHeader + "/" + kMarkerKey).toString() == kMarker;
}
}

ParamFileStatus ParamFileKind(const QString& strPath)
{
    const ParamFileStatus status = KindByStat(strPath);
    if (status != ParamFileStatus::Loaded)
        return status;
    CSettingsFile file(strPath, kMaxParamFileSize);
    return HasMarker(file.Settings()) ? ParamFileStatus::Loaded : ParamFileStatus::WrongMarker;
}

QString ParamFileProblem(const QString& strPath, ParamFileStatus status)
{
    if (status == ParamFileStatus::Loaded)
        return QString();
    struct stat info {};
    if (::stat(QFile::encodeName(strPath).constData(), &info) != 0)
        return errno == EACCES ? ParamWording("permission denied") : ParamWording("no such file");
    if (S_ISDIR(info.st_mode))
        return ParamWording("a folder, not a parameter file");
    if (!S_ISREG(info.st_mode))
        return ParamWording("not a regular file");
    if (status == ParamFileStatus::TooLarge)
        return ParamWording("larger than %1 bytes: not a parameter file").arg(kMaxParamFileSize);
    if (::access(QFile::encodeName(strPath).constData(), R_OK) != 0)
        return errno == EACCES ? ParamWording("permission denied") : QString::fromLocal8Bit(std::strerror(errno));
    return ParamWording("not a parameter file (no %1=%2 in [%3])").arg(kMarkerKey, kMarker, kHeader);
}

ParamFileStatus ReadFactoryParamFile(FactoryParams& record, const QString& strPath, QSet<QString>* pMissing)
{
    // Not in the middle of another process's save: a save at work holds the
    // lock, and the reader waits for it. Without a lock file no save is at
    // work, and as a save puts its complete file in place in one rename, the
    // file is read whole without a lock file of the reader's own (making one
    // costs a disk sync per file, which a fleet of 100,000 feels). A writer
    // that holds the lock for ten seconds is stuck: the file is whole, and
    // read as it stands.
    std::optional<CParamFileLock> lock;
    if (::access(QFile::encodeName(strPath + QStringLiteral(".lock")).constData(), F_OK) == 0)
        lock.emplace(strPath);
    const ParamFileStatus status = KindByStat(strPath);
    if (status != ParamFileStatus::Loaded)
        return status;
    // Read into a copy so that the record changes only as a whole, and every
    // value (the marker too) from one reading of the file.
    // A value in the settings layer's own encoding is read as the text it is.
    // (A file that cannot be read at all reads as empty: no marker.)
    CSettingsFile guarded(strPath, kMaxParamFileSize);
    const QSettings& file = guarded.Settings();
    if (!HasMarker(file))
        return ParamFileStatus::WrongMarker;
    for (const FactoryParamKey& key : FactoryParamKey::File()) {
        const QVariant value = file.value(key.strSection + "/" + key.strKey);
        key.SetFromSettings(record, value.isValid() ? value : QVariant(key.dMissing));
        if (pMissing && !value.isValid())
            pMissing->insert(key.strKey);
    }
    return ParamFileStatus::Loaded;
}

namespace {
// Whether the file at strPath holds exactly what was written. The settings
// layer does not notice a short write (a full disk, a file size limit), so the
// new file is read back before it may replace the old one. strPath must be a
// name the settings layer has not seen in this process: its cache would
// otherwise answer with the values it meant to write.
bool HoldsExactly(const QString& strPath, const FactoryParams& values, const QString& strTime)
{
    QSettings written(strPath, QSettings::IniFormat);
    const QString strHeader = kHeader + "/";
    if (written.status() != QSettings::NoError || written.value(strHeader + kMarkerKey).toString() != kMarker
        || written.value(strHeader + kTimeKey).toString() != strTime)
        return false;
    const QVector<FactoryParamKey>& keys = FactoryParamKey::File();
    if (written.allKeys().size() != keys.size() + 2)
        return false;
    for (const FactoryParamKey& key : keys) {
        const QVariant value = written.value(key.strSection + "/" + key.strKey);
        // A NaN read from a hand-written file must save and read back as NaN.
        const double dValue = key.Value(values);
        const bool bSame = key.IsDouble() ? (value.toDouble() == dValue || (std::isnan(value.toDouble()) && std::isnan(dValue)))
                                          : value.toInt() == int(dValue);
        if (!value.isValid() || !bSame)
            return false;
    }
    return true;
}

// The working files of a save: short, whatever the target's name (a name
// near the file system's limit must save as a direct write would), and new
// to the settings layer.
const QRegularExpression kWorkingName(QStringLiteral("^\\.fmp-[a-z0-9]{8}\\.(saving|check)$"));
// What saves of earlier versions left: ".<target>.<32 hex digits>.saving".
const QRegularExpression kOldWorkingName(QStringLiteral("^\\..+\\.[0-9a-f]{32}\\.(saving|check)$"));
constexpr int kLeftoverAgeSeconds = 60;

QString NewWorkingName()
{
    static const char kDigits[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    QString strName = QStringLiteral(".fmp-");
    for (int i = 0; i < 8; ++i)
        strName += QLatin1Char(kDigits[QRandomGenerator::global()->bounded(36)]);
    return strName;
}

// What a copy into the backups leaves when it is killed half-way.
const QRegularExpression kCopyName(QStringLiteral("^qt_temp\\.[A-Za-z0-9]{6}$"));
}

void RemoveSaveLeftovers(const QString& strDir)
{
    // Working files older than a minute belong to no save still running; a
    // lock file is gone once its process is (QLockFile tells, and removes it).
    const QDateTime oldest = QDateTime::currentDateTime().addSecs(-kLeftoverAgeSeconds);
    const QFileInfoList files = QDir(strDir).entryInfoList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QFileInfo& file : files) {
        const QString strName = file.fileName();
        if (file.lastModified() >= oldest)
            continue;
        if (kWorkingName.match(strName).hasMatch() || kOldWorkingName.match(strName).hasMatch()
            || kCopyName.match(strName).hasMatch()) {
            QFile::remove(file.absoluteFilePath());
        } else if (strName.endsWith(QLatin1String(".ini.lock"))) {
            QLockFile lock(file.absoluteFilePath());
            lock.setStaleLockTime(0);
            if (lock.tryLock(0))
                lock.unlock();
        }
    }
}

namespace {
bool RenameOver(const QString& strFrom, const QString& strTo)
{
    // POSIX rename replaces the target in one step; QFile::rename will not replace.
    return std::rename(QFile::encodeName(strFrom).constData(), QFile::encodeName(strTo).constData()) == 0;
}
}

bool WriteFactoryParamFile(const FactoryParams& record, const QString& strFile, QString* pError)
{
    // The new file is written in full beside the old one, checked, and only
    // then renamed over it in one step: a save that fails at any point leaves
    // the previous file whole. A fresh file never carries stale keys.
    const auto fail = [&](const QString& strWhy) {
        if (pError)
            *pError = strWhy;
        return false;
    };
    const QFileInfo info(strFile);
    if (info.isDir())
        return fail(ParamWording("a folder stands where the file belongs"));
    // One writer at a time, and no reader in the middle of it.
    const CParamFileLock lock(strFile);
    if (!lock.Taken())
        return fail(ParamWording("%1 has been saving it for 10 s").arg(lock.Holder()));
    RemoveSaveLeftovers(info.absolutePath());
    const QString strStem = info.absolutePath() + "/" + NewWorkingName();
    const QString strNew = strStem + ".saving";
    const QString strCheck = strStem + ".check";
    {
        QFile probe(strNew);
        if (!probe.open(QIODevice::ReadWrite))
            return fail(ParamWording("no file can be made in %1: %2").arg(info.absolutePath(), probe.errorString()));
    }

    const QString strTime = QDateTime::currentDateTime().toString("yyyyMMddHHmmss");
    BeginBatchWrite(strNew);
    WriteIniString(kHeader, kMarkerKey, kMarker, strNew);
    WriteIniString(kHeader, kTimeKey, strTime, strNew);
    for (const FactoryParamKey& key : FactoryParamKey::File()) {
        if (key.IsDouble())
            WriteIniDouble(key.strSection, key.strKey, key.Value(record), strNew);
        else
            WriteIniInt(key.strSection, key.strKey, int(key.Value(record)), strNew);
    }
    const bool bWritten = EndBatchWrite();

    QString strWhy;
    if (!bWritten)
        strWhy = ParamWording("the file could not be written in full (a full disk, or a size limit)");
    else if (!RenameOver(strNew, strCheck) || !HoldsExactly(strCheck, record, strTime))
        strWhy = ParamWording("read back, the new file does not hold the values written");
    else if (!RenameOver(strCheck, strFile))
        strWhy = ParamWording("it could not be put in place of the old file: %1").arg(QString::fromLocal8Bit(std::strerror(errno)));
    else
        return true;
    QFile::remove(strNew);
    QFile::remove(strCheck);
    return fail(strWhy);
}

bool ReplaceParamFileBytes(const QString& strFile, const QByteArray& bytes, QString* pError)
{
    const auto fail = [&](const QString& strWhy) {
        if (pError)
            *pError = strWhy;
        return false;
    };
    const QFileInfo link(strFile);
    const QString strTarget = link.isSymLink() ? link.canonicalFilePath() : link.absoluteFilePath();
    struct stat old {};
    if (strTarget.isEmpty() || ::stat(QFile::encodeName(strTarget).constData(), &old) != 0 || !S_ISREG(old.st_mode))
        return fail(ParamWording("no such file"));
    const QString strDir = QFileInfo(strTarget).absolutePath();
    RemoveSaveLeftovers(strDir);
    const QByteArray working = QFile::encodeName(strDir + "/" + NewWorkingName() + ".saving");
    const int nFd = ::open(working.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (nFd < 0)
        return fail(ParamWording("no file can be made in %1: %2").arg(strDir, QString::fromLocal8Bit(std::strerror(errno))));
    QString strWhy;
    qsizetype nDone = 0;
    while (nDone < bytes.size()) {
        const ssize_t n = ::write(nFd, bytes.constData() + nDone, size_t(bytes.size() - nDone));
        if (n <= 0)
            break;
        nDone += n;
    }
    if (nDone != bytes.size() || ::fsync(nFd) != 0)
        strWhy = ParamWording("the file could not be written in full (a full disk, or a size limit)");
    else if ((old.st_uid != ::geteuid() || old.st_gid != ::getegid()) && ::fchown(nFd, old.st_uid, old.st_gid) != 0)
        strWhy = ParamWording("its owner could not be kept (%1)").arg(QString::fromLocal8Bit(std::strerror(errno)));
    else if (::fchmod(nFd, old.st_mode & 07777) != 0)
        strWhy = ParamWording("its mode could not be kept (%1)").arg(QString::fromLocal8Bit(std::strerror(errno)));
    ::close(nFd);
    if (strWhy.isEmpty()) {
        QFile check(QFile::decodeName(working));
        if (!check.open(QIODevice::ReadOnly) || check.readAll() != bytes)
            strWhy = ParamWording("read back, the new file does not hold what was written");
        else if (!RenameOver(QFile::decodeName(working), strTarget))
            strWhy = ParamWording("it could not be put in place of the old file: %1")
                         .arg(QString::fromLocal8Bit(std::strerror(errno)));
        else
            return true;
    }
    ::unlink(working.constData());
    return fail(strWhy);
}
