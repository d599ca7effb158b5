#pragma once

#include "CPropertyTab.h"

// The Motor tab: fifteen rows, one column per axis (1 X, 2 Y, 3 Z, 4 U), each
// column editing one axis block of the dialog's display record. Its rules: the
// sub-heading row, and the caps on the maximum speed and acceleration.
class CMotorTab : public CPropertyTab
{
public:
    CMotorTab(DlgFactoryMgr* pDialog, QTableWidget* pTable, FactoryParams* pShown);

    void FillMotorTable();
    void FillMotorColumn(int nColumn);
    void ComboChanged(QObject* pSender, int nIndex);

protected:
    void StoreTyped() override;
    void ClickedCell(int nRow, int nColumn) override;
    bool Opens(int nRow, int nColumn) const override;
    bool Bounds(const FactoryParamKey& key, double& dMin, double& dMax) const override;
};
