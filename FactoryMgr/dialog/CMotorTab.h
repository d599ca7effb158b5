#pragma once

#include <QModelIndex>

class DlgFactoryMgr;
class QObject;
class QTableWidget;
struct MotorParams;

// The Motor tab: fifteen rows, one column per axis (1 X, 2 Y, 3 Z, 4 U), each
// column editing one axis block of the dialog's display record.
class CMotorTab
{
public:
    CMotorTab(DlgFactoryMgr* pDialog, QTableWidget* pTable, MotorParams* pBlocks);

    void FillMotorTable();
    void FillMotorColumn(int nColumn);
    void Clicked(const QModelIndex& index);
    void ComboChanged(QObject* pSender, int nIndex);
    void EditFinished();
    // The number field a row edits (rows 5-7 and 9-14), or null.
    static double* NumberField(MotorParams& block, int nRow);
    // 1 gives X, 2 Y, 3 Z, 4 U; anything else none.
    MotorParams* AxisBlockForColumn(int nColumn) const;

    int CurrentRow() const { return m_nRow; }
    int CurrentColumn() const { return m_nColumn; }

private:
    DlgFactoryMgr* m_pDialog;
    QTableWidget* m_pTable;
    MotorParams* m_pBlocks;
    int m_nRow = -1;
    int m_nColumn = -1;
    int m_nPrevRow = -1;
    int m_nPrevColumn = -1;
};
