#include "CParamBackups.h"

#include "FactoryParamIo.h"

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

// "<base>-<time>[-<n>]-<tag>.ini", base being the file's name without ".ini".
QRegularExpression NamePattern(const QString& strFile)
{
    return QRegularExpression(QStringLiteral("^%1-(\\d{8}-\\d{9})(?:-(\\d+))?-(save|upload|upgrade)\\.ini$")
                                  .arg(QRegularExpression::escape(QFileInfo(strFile).completeBaseName())));
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
        SetError(pError, QStringLiteral("cannot make the folder %1").arg(strDir));
        return QString();
    }
    const QString strStem = strDir + "/" + QFileInfo(strFile).completeBaseName() + "-"
        + QDateTime::currentDateTime().toString(kTimeFormat);
    // Names of the same millisecond get a counter, whatever their reason, so
    // that the order of the names is the order of the backups.
    const auto path = [&strStem](int n, const char* szTag) {
        return n < 2 ? QStringLiteral("%1-%2.ini").arg(strStem, QLatin1String(szTag))
                     : QStringLiteral("%1-%2-%3.ini").arg(strStem).arg(n).arg(QLatin1String(szTag));
    };
    int n = 1;
    while (std::any_of(std::begin(kTags), std::end(kTags), [&](const char* szTag) { return QFileInfo::exists(path(n, szTag)); }))
        ++n;
    return path(n, kTags[reason]);
}

bool CParamBackups::KeepFile(const QString& strFile, Reason reason, QString* pError)
{
    if (!QFileInfo(strFile).isFile())
        return true;
    const QString strPath = NewPath(strFile, reason, pError);
    if (strPath.isEmpty())
        return false;
    QFile file(strFile);
    if (!file.copy(strPath)) {
        SetError(pError, QStringLiteral("cannot copy %1 to %2: %3").arg(strFile, strPath, file.errorString()));
        return false;
    }
    Prune(strFile);
    return true;
}

bool CParamBackups::KeepRecord(const FactoryParams& record, const QString& strFile, Reason reason, QString* pError)
{
    const QString strPath = NewPath(strFile, reason, pError);
    if (strPath.isEmpty())
        return false;
    if (!WriteFactoryParamFile(record, strPath)) {
        SetError(pError, QStringLiteral("cannot write %1").arg(strPath));
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
        QString strOrder;   // time, then the counter of same-millisecond names
    };
    QList<Found> found;
    const QDir dir(Directory(strFile));
    for (const QString& strName : dir.entryList(QDir::Files)) {
        const QRegularExpressionMatch match = pattern.match(strName);
        if (!match.hasMatch())
            continue;
        const QString strTag = match.captured(3);
        const Reason reason = strTag == "upload" ? ReasonBeforeUpload
            : strTag == "upgrade"                ? ReasonBeforeUpgrade
                                                 : ReasonSave;
        found << Found{{dir.filePath(strName), QDateTime::fromString(match.captured(1), kTimeFormat), reason},
                       match.captured(1) + QStringLiteral("-%1").arg(match.captured(2).toInt(), 6, 10, QChar('0'))};
    }
    std::sort(found.begin(), found.end(), [](const Found& a, const Found& b) { return a.strOrder > b.strOrder; });
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
