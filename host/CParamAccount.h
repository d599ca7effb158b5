#pragma once

#include "CParamDiff.h"
#include "FactoryParams.h"

#include <QDateTime>
#include <QObject>
#include <QString>

// What the host knows of the three places the factory parameters are kept:
// the settings dialog, the parameter file and the controller. Each fact is
// set from a result the host checked (the dialog's own values, the parameter
// file read back from the disk, the controller's answer to a read), never
// from an assumption; Sentence() says all three to the person in one line.
class CParamAccount : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    // The settings dialog: closed, or open with these values in its controls.
    void SetDialogClosed();
    void SetDialog(const FactoryParams& values);
    // The parameter file as read back: what it holds and when it was written;
    // missing; or there but unreadable, and why.
    void SetFile(const FactoryParams& record, const QDateTime& written);
    void SetFileMissing();
    void SetFileUnreadable(const QString& strWhy);
    // What the controller holds, from an answer it gave; or not known.
    void SetController(const FactoryParams& record);
    void SetControllerUnknown();
    // While the controller's values are not known: the person has saved,
    // imported or restored values since the last Upload or Read.
    void SetChangedSinceController(bool bChanged);
    // Lengths in the sentence are shown in the display unit (0 and 2 inch).
    void SetUnit(int nUnit);

    bool IsDialogOpen() const { return m_bDialogOpen; }
    const FactoryParams& DialogRecord() const { return m_dialog; }
    bool HasFile() const { return m_file == File::Held; }
    bool IsFileUnreadable() const { return m_file == File::Unreadable; }
    QString FileProblem() const { return m_strFileProblem; }
    const FactoryParams& FileRecord() const { return m_fileRecord; }
    bool IsControllerKnown() const { return m_bControllerKnown; }
    const FactoryParams& ControllerRecord() const { return m_controller; }
    bool IsChangedSinceController() const { return m_bChangedSinceController; }

    // The fields in which the dialog's values differ from the file: what a
    // save would change. Empty when the dialog is closed or there is no
    // file to compare with.
    QList<SParamDifference> UnsavedChanges() const;
    // Whether the dialog's values changed since it opened: values it put right
    // itself as it opened (a key the file lacks, a value out of range) are
    // not a change of the person's.
    bool IsDialogChangedSinceOpened() const;
    // The fields in which the controller differs from the file; empty when
    // either is not known.
    QList<SParamDifference> ControllerDifferences() const;
    // A difference as the person reads it, lengths in the display unit:
    // "Max Speed(mm/s), X: file 1000, controller 1500".
    QString Describe(const SParamDifference& difference, const QString& strA, const QString& strB) const;

    // "Settings: 2 changes not saved · File: saved 14:02 · Controller:
    // differs in 1 field (Max Speed(mm/s), X: file 1000, controller 1500)".
    QString Sentence() const;

signals:
    void Changed();

private:
    enum class File
    {
        Unknown,
        Held,
        Missing,
        Unreadable
    };

    bool m_bDialogOpen = false;
    FactoryParams m_dialog;
    FactoryParams m_dialogOpened;   // the dialog's values when it opened
    File m_file = File::Unknown;
    FactoryParams m_fileRecord;
    QDateTime m_fileWritten;
    QString m_strFileProblem;
    bool m_bControllerKnown = false;
    FactoryParams m_controller;
    bool m_bChangedSinceController = false;
    int m_nUnit = 1;
};
