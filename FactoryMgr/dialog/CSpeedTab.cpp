#include "CSpeedTab.h"

#include "CPropertyTable.h"
#include "ComboBox.h"
#include "DlgFactoryMgr.h"

#include <QTableWidget>

CSpeedTab::CSpeedTab(DlgFactoryMgr* pDialog, QTableWidget* pTable, FactoryParams* pShown)
    : CPropertyTab(pDialog, pTable, FactoryParamKey::TableSpeed, pShown)
{
}

void CSpeedTab::FillSpeedTable()
{
    FillColumn(1, nullptr, &DlgFactoryMgr::on_SpeedKillfocusEditValue);
}

void CSpeedTab::StoreTyped()
{
    const FactoryParamKey* pKey = KeyAt(m_nRow, m_nColumn);
    double dValue = 0.0;
    if (!pKey || !TakeTypedNumber(dValue, NoNumberIsZero))
        return;
    if (!(dValue > 0.0))
        dValue = 0.0;
    pKey->SetValue(*m_pShown, dValue);

    const QString strShown = FactoryParamKey::Fixed2(dValue);
    QTableWidgetItem* pItem = CPropertyTable::Item(m_pTable, m_nRow, m_nColumn);
    pItem->setText(strShown);
    if (ComboBox* pCell = CPropertyTable::Cell(m_pTable, m_nRow, m_nColumn))
        pCell->setText(strShown);
    CPropertyTable::ShowCellsAsText(m_pTable);
    // Only the editor's label shows the value; the item beneath stays blank and white.
    pItem->setText(QString());
    CPropertyTable::ClearMark(m_pTable, m_nRow, m_nColumn);
    pItem->setBackground(Qt::white);
    m_pTable->viewport()->update();
}
