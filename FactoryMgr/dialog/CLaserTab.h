#pragma once

#include <QModelIndex>
#include <QString>

class DlgFactoryMgr;
class QTableWidget;
struct LaserParams;
struct LaserSection;
namespace Ui {
class DlgFactoryMgr;
}

// The Laser tab: one or two laser columns, ten rows told apart by the row
// identifier (0..9) in their label item, a radio pair for the laser count
// whose wording follows the controller card type.
class CLaserTab
{
public:
    CLaserTab(DlgFactoryMgr* pDialog, Ui::DlgFactoryMgr* pUi, LaserSection* pSection);

    // Radio state, table rebuild and fill, formatting.
    void RefreshLaserTab();
    // After new data: refill only the columns there are.
    void RefillColumns();
    void BuildLaserTable();
    void FillLaserColumn(const LaserParams& laser, int nColumn);
    void SetCount(int nCount);
    void Clicked(const QModelIndex& index);
    void SelectLaserCell(int nRow, int nColumn);
    void ComboChanged(int nIndex);
    void EditFinished();
    void CollectLaserSection();
    // What collecting makes of a section: the count from the radio buttons,
    // the reserved word, both sources enabled.
    void CollectInto(LaserSection& section) const;
    LaserParams* LaserForColumn(int nColumn) const;
    static QString LaserTypeText(int nType);

    int SelectedCount() const { return m_nCount; }
    // The row identifier of a row, or -1; the row of an identifier, or -1.
    int RowId(int nRow) const;
    int RowOfId(int nId) const;

private:
    DlgFactoryMgr* m_pDialog;
    Ui::DlgFactoryMgr* ui;
    LaserSection* m_pSection;
    int m_nCount = 1;
    int m_nRow = -1;
    int m_nColumn = -1;
    int m_nReserved = 0;   // the laser row shift that collecting hands on; nothing sets it
};
