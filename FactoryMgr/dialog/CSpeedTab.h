#pragma once

#include <QModelIndex>

class DlgFactoryMgr;
class QTableWidget;
struct SpeedSection;

// The Processing tab: eleven speeds and accelerations, never below zero. The
// table's row order is not the record's: SpeedField maps one to the other.
class CSpeedTab
{
public:
    CSpeedTab(DlgFactoryMgr* pDialog, QTableWidget* pTable, SpeedSection* pSection);

    void FillSpeedTable();
    void Clicked(const QModelIndex& index);
    void SelectSpeedCell(int nRow, int nColumn);
    void EditFinished();
    // Stores v (0 when not above 0) into the row's field and hands the stored value back.
    static void StoreSpeedValue(SpeedSection& section, int nRow, double& dValue);
    static double* SpeedField(SpeedSection& section, int nRow);

private:
    DlgFactoryMgr* m_pDialog;
    QTableWidget* m_pTable;
    SpeedSection* m_pSection;
    int m_nRow = -1;
    int m_nColumn = -1;
};
