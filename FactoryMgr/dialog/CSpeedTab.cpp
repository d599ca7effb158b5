#include "CSpeedTab.h"

#include "CPropertyTable.h"
#include "ComboBox.h"
#include "DlgFactoryMgr.h"
#include "FactoryParams.h"
#include "ILog.h"

#include <QLineEdit>
#include <QTableWidget>

CSpeedTab::CSpeedTab(DlgFactoryMgr* pDialog, QTableWidget* pTable, SpeedSection* pSection)
    : m_pDialog(pDialog)
    , m_pTable(pTable)
    , m_pSection(pSection)
{
}

double* CSpeedTab::SpeedField(SpeedSection& section, int nRow)
{
    switch (nRow) {
    case 0: return &section.cutSpeedSpace;
    case 1: return &section.cutSpeedCorner;
    case 2: return &section.cutAccSpace;
    case 3: return &section.cutAccCorner;
    case 4: return &section.cutAccWork;
    case 5: return &section.sweepSpeedXStart;
    case 6: return &section.sweepSpeedYStart;
    case 7: return &section.sweepSpeedNewline;
    case 8: return &section.sweepAccX;
    case 9: return &section.sweepAccY;
    case 10: return &section.panelSpeedReset;
    default: return nullptr;
    }
}

void CSpeedTab::StoreSpeedValue(SpeedSection& section, int nRow, double& dValue)
{
    if (!(dValue > 0.0))
        dValue = 0.0;
    if (double* pField = SpeedField(section, nRow))
        *pField = dValue;
}

void CSpeedTab::FillSpeedTable()
{
    for (int r = 0; r <= 10 && r < m_pTable->rowCount(); ++r) {
        ComboBox* pCell
            = CPropertyTable::MakeNumberCell(m_pTable, r, 1, CPropertyTable::Fixed2(*SpeedField(*m_pSection, r)));
        QObject::connect(pCell->lineEdit(), &QLineEdit::editingFinished, m_pDialog,
                         &DlgFactoryMgr::on_SpeedKillfocusEditValue);
    }
}

void CSpeedTab::Clicked(const QModelIndex& index)
{
    ILog_WriteLogF(0, "tableWidget_speed was clicked.");
    CPropertyTable::ShowCellsAsText(m_pTable);
    SelectSpeedCell(index.row(), index.column());
}

void CSpeedTab::SelectSpeedCell(int nRow, int nColumn)
{
    m_nRow = nRow;
    m_nColumn = nColumn;
    if (nRow >= 0 && nColumn == 1)
        CPropertyTable::OpenCellEditor(m_pTable, nRow, nColumn);
}

void CSpeedTab::EditFinished()
{
    if (m_nRow < 0 || m_nColumn != 1)
        return;
    ComboBox* pCell = CPropertyTable::Cell(m_pTable, m_nRow, m_nColumn);
    QString strTyped;
    if (!CPropertyTable::TakeTypedText(pCell, strTyped))
        return;
    double dValue = 0.0;
    if (!CPropertyTable::ParseNumber(strTyped, dValue))
        dValue = 0.0;   // a text that is no number counts as 0
    dValue = CPropertyTable::Round3(dValue);
    StoreSpeedValue(*m_pSection, m_nRow, dValue);

    const QString strShown = CPropertyTable::Fixed2(dValue);
    QTableWidgetItem* pItem = m_pTable->item(m_nRow, m_nColumn);
    if (!pItem) {
        pItem = new QTableWidgetItem;
        m_pTable->setItem(m_nRow, m_nColumn, pItem);
    }
    pItem->setText(strShown);
    if (pCell)
        pCell->setText(strShown);
    CPropertyTable::ShowCellsAsText(m_pTable);
    // Only the editor's label shows the value; the item beneath stays blank and white.
    pItem->setText(QString());
    CPropertyTable::ClearMark(m_pTable, m_nRow, m_nColumn);
    pItem->setBackground(Qt::white);
    m_pTable->viewport()->update();
}
