#pragma once

#include "CPropertyTab.h"

struct LaserSection;
namespace Ui {
class DlgFactoryMgr;
}

// The Laser tab: one or two laser columns, ten rows told apart by the row
// identifier (0..9) in their label item, a radio pair for the laser count
// whose wording follows the controller card type. Its rules: the type list
// (RF written as 2), the rated power list, the rows each type opens, and the
// bounds of each number row.
class CLaserTab : public CPropertyTab
{
public:
    CLaserTab(DlgFactoryMgr* pDialog, Ui::DlgFactoryMgr* pUi, FactoryParams* pShown);

    // Radio state, table rebuild and fill, formatting.
    void RefreshLaserTab();
    // After new data: refill only the columns there are.
    void RefillColumns();
    void BuildLaserTable();
    void FillLaserColumn(int nColumn);
    void SetCount(int nCount);
    void ComboChanged(int nIndex);
    void CollectLaserSection();
    // What collecting makes of a section: the count from the radio buttons,
    // the reserved word, both sources enabled.
    void CollectInto(LaserSection& section) const;

    int SelectedCount() const { return m_nCount; }
    // The row identifier of a row, or -1; the row of an identifier, or -1.
    int RowId(int nRow) const;
    int RowOfId(int nId) const;

protected:
    void StoreTyped() override;
    bool Opens(int nRow, int nColumn) const override;
    int RowKey(int nRow) const override { return RowId(nRow); }
    bool Bounds(const FactoryParamKey& key, double& dMin, double& dMax) const override;

private:
    LaserSection& Section() const;

    Ui::DlgFactoryMgr* ui;
    int m_nCount = 1;
    int m_nReserved = 0;   // the laser row shift that collecting hands on; nothing sets it
};
