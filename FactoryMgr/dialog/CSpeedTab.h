#pragma once

#include "CPropertyTab.h"

// The Processing tab: eleven speeds and accelerations in column 1, never
// below zero; text that is no number counts as 0.
class CSpeedTab : public CPropertyTab
{
public:
    CSpeedTab(DlgFactoryMgr* pDialog, QTableWidget* pTable, FactoryParams* pShown);

    void FillSpeedTable();

protected:
    void StoreTyped() override;
};
