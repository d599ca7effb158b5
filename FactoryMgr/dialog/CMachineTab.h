#pragma once

#include "CPropertyTab.h"

// The Machine tab: five fixed rows, editors in column 1. Its slots act on the
// cell recorded by the last click on the table; a typed distance stays shown
// as typed until the table is refilled.
class CMachineTab : public CPropertyTab
{
public:
    CMachineTab(DlgFactoryMgr* pDialog, QTableWidget* pTable, FactoryParams* pShown);

    void FillMachineTable();
    void ComboChanged(int nIndex);

protected:
    void StoreTyped() override;
};
