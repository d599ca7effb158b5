#pragma once

#include "CParamBackups.h"
#include "FactoryParams.h"

#include <QDialog>
#include <QList>

class QLabel;
class QPushButton;
class QTreeWidget;

// File > Restore...: the backups of the parameter file, newest first, each
// with when it was kept, why, and how many fields differ from the current
// parameters; the differences of the one selected; and Restore, which asks
// before it accepts. The caller then puts Record() in place.
class CRestoreDialog : public QDialog
{
    Q_OBJECT
public:
    // nUnit: the display unit lengths are shown in.
    CRestoreDialog(const QString& strParameterFile, const FactoryParams& current, int nUnit, QWidget* parent = nullptr);

    // The record of the backup chosen; valid after the dialog was accepted.
    const FactoryParams& Record() const { return m_chosen; }
    // When the chosen backup was kept, and why, for the person.
    QString ChosenText() const;
    // Whether every backup listed has been read (the newest kFirstRead at
    // once, any beyond them a batch at a time while the window goes on).
    bool AllRead() const { return m_nRead == m_backups.size(); }

    // Pruning keeps 50 backups; a folder may hold more that someone copied there.
    static constexpr int kFirstRead = 50;

private:
    void ReadBatch(int nCount);
    void ShowDifferences();
    void Restore();

    struct Backup
    {
        CParamBackups::Entry entry;
        bool bReadable = false;
        FactoryParams record;
    };
    FactoryParams m_current;
    int m_nUnit;
    QList<Backup> m_backups;
    FactoryParams m_chosen;
    int m_nChosen = -1;
    int m_nRead = 0;   // the backups up to here have been read
    QTreeWidget* m_pList;
    QTreeWidget* m_pDifferences;
    QLabel* m_pCaption;
    QPushButton* m_pRestore;
};
