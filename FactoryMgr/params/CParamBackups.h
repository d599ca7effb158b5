#pragma once

#include <QDateTime>
#include <QList>
#include <QString>

struct FactoryParams;

// Earlier states of a parameter file, kept beside it in "Backups/": a copy of
// the file before each save replaces it, and what the controller held before
// an Upload or a firmware upgrade. A backup is made only when its content
// (the time stamp aside) differs from the newest one. Names carry a sequence
// number, the time and the reason ("FactoryParam-000042-20261123-142501123-
// save.ini"); the order is the sequence's, whatever the clock did, and the
// newest kKept of a file are kept, older ones removed. Qt Core only.
class CParamBackups
{
public:
    enum Reason
    {
        ReasonSave,
        ReasonBeforeUpload,
        ReasonBeforeUpgrade
    };
    static constexpr int kKept = 50;

    struct Entry
    {
        QString strPath;
        QDateTime when;
        Reason reason;
        qint64 nSequence = 0;   // 0 for the names of earlier versions
    };

    // "<directory of strFile>/Backups"
    static QString Directory(const QString& strFile);
    // Copies strFile, as it is, into its backups. True when it was kept, or
    // when there is nothing new to keep (no file, or the newest backup has
    // its content); otherwise pError says why.
    static bool KeepFile(const QString& strFile, Reason reason, QString* pError = nullptr);
    // Writes record, as a parameter file, into strFile's backups (unless the
    // newest backup holds the same values).
    static bool KeepRecord(const FactoryParams& record, const QString& strFile, Reason reason,
                           QString* pError = nullptr);
    // strFile's backups, newest first.
    static QList<Entry> List(const QString& strFile);
    // "save", "before upload", "before upgrade": wording keys.
    static const char* ReasonText(Reason reason);

private:
    // A new, unused name in strFile's backups (the directory is made); empty
    // with pError set when it cannot be.
    static QString NewPath(const QString& strFile, Reason reason, QString* pError);
    static void Prune(const QString& strFile);
};
