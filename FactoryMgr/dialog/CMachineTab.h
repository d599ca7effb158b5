#pragma once

#include <QModelIndex>

class DlgFactoryMgr;
class QTableWidget;
struct MachineSection;

// The Machine tab: five fixed rows, editors in column 1. Its slots act on the
// cell recorded by the last click on the table.
class CMachineTab
{
public:
    CMachineTab(DlgFactoryMgr* pDialog, QTableWidget* pTable, MachineSection* pSection);

    void FillMachineTable();
    void Clicked(const QModelIndex& index);
    void SelectMachineCell(int nRow, int nColumn);
    void ComboChanged(int nIndex);
    void EditFinished();

private:
    DlgFactoryMgr* m_pDialog;
    QTableWidget* m_pTable;
    MachineSection* m_pSection;
    int m_nRow = -1;
    int m_nColumn = -1;
};
