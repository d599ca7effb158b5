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

private:
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
    QTreeWidget* m_pList;
    QTreeWidget* m_pDifferences;
    QLabel* m_pCaption;
    QPushButton* m_pRestore;
};
