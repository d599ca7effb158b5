#include "CMachineTab.h"

#include "CPropertyTable.h"
#include "CTranslator.h"
#include "ComboBox.h"
#include "DlgFactoryMgr.h"
#include "FactoryParams.h"

#include <QTableWidget>

CMachineTab::CMachineTab(DlgFactoryMgr* pDialog, QTableWidget* pTable, FactoryParams* pShown)
    : CPropertyTab(pDialog, pTable, FactoryParamKey::TableMachine, pShown)
{
}

void CMachineTab::FillMachineTable()
{
    FillColumn(1, &DlgFactoryMgr::on_MachineSelchangeComboValue, &DlgFactoryMgr::on_MachineKillfocusEditValue);
    // A machine zero other than 1 reads as the top left corner beneath its list.
    const FactoryParamKey* pZero = FactoryParamKey::Find(QStringLiteral("MACHINE_ZERO"));
    if (pZero->Value(*m_pShown) != 1.0) {
        CPropertyTable::Item(m_pTable, pZero->nRow, 1)->setText(CTranslator::GetInstance()->GetWording(pZero->choices.first()));
        CPropertyTable::Describe(m_pTable, pZero->nRow, 1);
    }
}

void CMachineTab::ComboChanged(int nIndex)
{
    // The row of the last click decides the meaning, not the list that fired.
    const FactoryParamKey* pKey = KeyAt(m_nRow, 1);
    // A choice replaces a refused value: its cell is no longer red.
    if (pKey && pKey->editor == FactoryParamKey::EditorList) {
        pKey->SetValue(*m_pShown, nIndex);
        CPropertyTable::ClearMark(m_pTable, m_nRow, 1);
    }
    FillMachineTable();
}

void CMachineTab::StoreTyped()
{
    QString strTyped;
    double dValue = 0.0;
    if (m_nRow < 0 || m_nColumn != 1 || !TakeTypedNumber(dValue, NoNumberIsZero, &strTyped))
        return;
    // The cell keeps the text as typed until the table is refilled: the item
    // and the label of the line edit.
    CPropertyTable::Item(m_pTable, m_nRow, m_nColumn)->setText(strTyped);
    CPropertyTable::Cell(m_pTable, m_nRow, m_nColumn)->setText(strTyped);
    const FactoryParamKey* pKey = KeyAt(m_nRow, m_nColumn);
    if (pKey && pKey->editor == FactoryParamKey::EditorNumber) {
        pKey->SetValue(*m_pShown, dValue > 0.0 ? dValue : 0.0);
        CPropertyTable::ClearMark(m_pTable, m_nRow, m_nColumn);
    }
    CPropertyTable::Describe(m_pTable, m_nRow, m_nColumn);
    CPropertyTable::ShowCellsAsText(m_pTable);
    m_pTable->viewport()->update();
}
