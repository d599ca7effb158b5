#include "CMotorTab.h"

#include "CPropertyTable.h"
#include "ComboBox.h"
#include "DlgFactoryMgr.h"
#include "FactoryParams.h"

#include <QTableWidget>

namespace {
// "Motor Speed Limit": a sub-heading, no value.
const int kHeadingRow = 8;

const int kMaxSpeedRow = 10;
const int kMaxAccRow = 11;
}

CMotorTab::CMotorTab(DlgFactoryMgr* pDialog, QTableWidget* pTable, FactoryParams* pShown)
    : CPropertyTab(pDialog, pTable, FactoryParamKey::TableMotor, pShown)
{
}

void CMotorTab::FillMotorTable()
{
    for (int c = 1; c <= 4; ++c)
        FillMotorColumn(c);
}

void CMotorTab::FillMotorColumn(int nColumn)
{
    FillColumn(nColumn, &DlgFactoryMgr::on_MotorSelchangeComboValue, &DlgFactoryMgr::on_MotorKillfocusEditValue);
    if (nColumn >= 1 && nColumn <= 4) {
        m_pTable->removeCellWidget(kHeadingRow, nColumn);
        auto* pItem = new QTableWidgetItem;
        pItem->setFlags(Qt::NoItemFlags);
        m_pTable->setItem(kHeadingRow, nColumn, pItem);
    }
}

void CMotorTab::ClickedCell(int nRow, int nColumn)
{
    if (nRow == kHeadingRow)
        return;
    // What was typed into the open cell belongs to that cell, which is still current.
    CPropertyTable::CommitTyping(m_pTable);
    CPropertyTab::ClickedCell(nRow, nColumn);
}

bool CMotorTab::Bounds(const FactoryParamKey& key, double& dMin, double& dMax) const
{
    CPropertyTab::Bounds(key, dMin, dMax);
    // Only X and Y have caps on their maximum speed and acceleration; Z and U
    // keep what is stored, on purpose.
    const int nAxis = key.nIndex;
    if (key.nRow == kMaxSpeedRow)
        dMax = nAxis == 0 ? 2000.0 : 500.0;
    else if (key.nRow == kMaxAccRow)
        dMax = nAxis == 0 ? 60000.0 : 10000.0;
    return !((key.nRow == kMaxSpeedRow || key.nRow == kMaxAccRow) && nAxis >= 2);
}

bool CMotorTab::Opens(int nRow, int nColumn) const
{
    return nRow >= 0 && nColumn >= 0;
}

void CMotorTab::ComboChanged(QObject* pSender, int nIndex)
{
    // A list changed by wheel or keyboard, without a click on its cell, is
    // still written to its own cell.
    if (auto* pWidget = qobject_cast<QWidget*>(pSender)) {
        QWidget* pCell = qobject_cast<ComboBox*>(pWidget) ? pWidget : pWidget->parentWidget();
        if (qobject_cast<ComboBox*>(pCell) && pCell->parentWidget() == m_pTable->viewport()) {
            const QModelIndex index = m_pTable->indexAt(pCell->geometry().center());
            if (index.isValid()) {
                m_nRow = index.row();
                m_nColumn = index.column();
            }
        }
    }
    const FactoryParamKey* pKey = KeyAt(m_nRow, m_nColumn);
    if (!pKey)
        return;
    if (pKey->editor == FactoryParamKey::EditorList)
        pKey->SetValue(*m_pShown, nIndex);
    FillMotorColumn(m_nColumn);
}

void CMotorTab::StoreTyped()
{
    double dValue = 0.0;
    if (!TakeTypedNumber(dValue, NoNumberRefused))
        return;
    const FactoryParamKey* pKey = KeyAt(m_nRow, m_nColumn);
    if (!pKey || pKey->editor != FactoryParamKey::EditorNumber)
        return;
    if (!(dValue > 0.0))
        dValue = 0.0;   // negative, zero and not-a-number alike
    double dMin = 0.0;
    double dMax = 0.0;
    if (Bounds(*pKey, dMin, dMax) && dValue <= dMax)
        pKey->SetValue(*m_pShown, dValue);
    else
        dValue = pKey->Value(*m_pShown);

    const QString strShown = FactoryParamKey::Fixed2(dValue);
    if (QTableWidgetItem* pItem = m_pTable->item(m_nRow, m_nColumn)) {
        pItem->setText(strShown);
        pItem->setBackground(Qt::white);
    }
    if (ComboBox* pCell = CPropertyTable::Cell(m_pTable, m_nRow, m_nColumn))
        pCell->setText(strShown);
    // The edit replaces a refused value: the editor's red goes too.
    CPropertyTable::ClearMark(m_pTable, m_nRow, m_nColumn);
    CPropertyTable::ShowCellsAsText(m_pTable);
    m_pTable->viewport()->update();
}
