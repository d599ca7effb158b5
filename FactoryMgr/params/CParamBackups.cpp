#include "CParamBackups.h"
#include "ParamWording.h"

#include "CParamDiff.h"
#include "FactoryParamIo.h"
#include "FactoryParams.h"
#include "SafeFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace {
const char* const kTags[] = {"save", "upload", "upgrade"};
const QString kTimeFormat = QStringLiteral("yyyyMMdd-HHmmsszzz");

void SetError(QString* pError, const QString& strText)
{
    if (pError)
        *pError = strText;
}

// "<base>-<sequence>-<time>-<tag>.ini", base being the file's name without
// ".ini". Earlier versions wrote "<base>-<time>[-<n>]-<tag>.ini": those count
// as older than every numbered one.
QRegularExpression NamePattern(const QString& strFile)
{
    return QRegularExpression(
        QStringLiteral("^%1-(?:(\\d{6,})-)?(\\d{8}-\\d{9})(?:-(\\d+))?-(save|upload|upgrade)\\.ini$")
            .arg(QRegularExpression::escape(QFileInfo(strFile).completeBaseName())));
}

// A file's text without its time stamp: two saves of the same values are the same content.
QByteArray Content(const QString& strPath)
{
    QByteArray bytes;
    if (!SafeFile::ReadAll(strPath, kMaxParamFileSize, &bytes, nullptr))
        return QByteArray();
    QByteArray content;
    for (const QByteArray& line : bytes.split('\n'))
        if (!line.trimmed().startsWith("CREATE_TIME="))
            content += line + '\n';
    return content;
}
}

QString CParamBackups::Directory(const QString& strFile)
{
    return QFileInfo(strFile).absolutePath() + "/Backups";
}

const char* CParamBackups::ReasonText(Reason reason)
{
    switch (reason) {
    case ReasonBeforeUpload: return "before upload";
    case ReasonBeforeUpgrade: return "before upgrade";
    default: return "save";
    }
}

QString CParamBackups::NewPath(const QString& strFile, Reason reason, QString* pError)
{
    const QString strDir = Directory(strFile);
    if (!QDir().mkpath(strDir)) {
        SetError(pError, ParamWording("cannot make the folder %1").arg(strDir));
        return QString();
    }
    RemoveSaveLeftovers(strDir);
    // The order of the backups is their sequence number, not the clock: a
    // clock set back must never make the newest backup the first one pruned.
    const QList<Entry> entries = List(strFile);
    const qint64 nNext = entries.isEmpty() ? 1 : entries.first().nSequence + 1;
    return QStringLiteral("%1/%2-%3-%4-%5.ini")
        .arg(strDir, QFileInfo(strFile).completeBaseName())
        .arg(nNext, 6, 10, QLatin1Char('0'))
        .arg(QDateTime::currentDateTime().toString(kTimeFormat), QLatin1String(kTags[reason]));
}

bool CParamBackups::KeepFile(const QString& strFile, Reason reason, QString* pError)
{
    if (!QFileInfo(strFile).isFile())
        return true;
    // Nothing new to keep: the newest backup holds this content already.
    const QList<Entry> entries = List(strFile);
    if (!entries.isEmpty() && Content(entries.first().strPath) == Content(strFile))
        return true;
    const QString strPath = NewPath(strFile, reason, pError);
    if (strPath.isEmpty())
        return false;
    QFile file(strFile);
    if (!file.copy(strPath)) {
        SetError(pError, ParamWording("cannot copy %1 to %2: %3").arg(strFile, strPath, file.errorString()));
        return false;
    }
    Prune(strFile);
    return true;
}

bool CParamBackups::KeepRecord(const FactoryParams& record, const QString& strFile, Reason reason, QString* pError)
{
    const QList<Entry> entries = List(strFile);
    if (!entries.isEmpty()) {
        FactoryParams newest;
        QSet<QString> missing;
        if (ReadFactoryParamFile(newest, entries.first().strPath, &missing) == ParamFileStatus::Loaded
            && missing.isEmpty() && CParamDiff::Compare(newest, record).isEmpty())
            return true;
    }
    const QString strPath = NewPath(strFile, reason, pError);
    if (strPath.isEmpty())
        return false;
    if (!WriteFactoryParamFile(record, strPath)) {
        SetError(pError, ParamWording("cannot write %1").arg(strPath));
        return false;
    }
    Prune(strFile);
    return true;
}

QList<CParamBackups::Entry> CParamBackups::List(const QString& strFile)
{
    const QRegularExpression pattern = NamePattern(strFile);
    struct Found
    {
        Entry entry;
        QString strOrder;   // the time and counter of the names of earlier versions
    };
    QList<Found> found;
    const QDir dir(Directory(strFile));
    for (const QString& strName : dir.entryList(QDir::Files)) {
        const QRegularExpressionMatch match = pattern.match(strName);
        if (!match.hasMatch())
            continue;
        const QString strTag = match.captured(4);
        const Reason reason = strTag == "upload" ? ReasonBeforeUpload
            : strTag == "upgrade"                ? ReasonBeforeUpgrade
                                                 : ReasonSave;
        found << Found{{dir.filePath(strName), QDateTime::fromString(match.captured(2), kTimeFormat), reason,
                        match.captured(1).toLongLong()},
                       match.captured(2) + QStringLiteral("-%1").arg(match.captured(3).toInt(), 6, 10, QChar('0'))};
    }
    std::sort(found.begin(), found.end(), [](const Found& a, const Found& b) {
        return a.entry.nSequence != b.entry.nSequence ? a.entry.nSequence > b.entry.nSequence : a.strOrder > b.strOrder;
    });
    QList<Entry> entries;
    for (const Found& f : found)
        entries << f.entry;
    return entries;
}

void CParamBackups::Prune(const QString& strFile)
{
    const QList<Entry> entries = List(strFile);
    for (int i = kKept; i < entries.size(); ++i)
        QFile::remove(entries[i].strPath);
}
