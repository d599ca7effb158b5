#include "CMotorTab.h"

#include "CPropertyTable.h"
#include "CTranslator.h"
#include "ComboBox.h"
#include "DlgFactoryMgr.h"
#include "FactoryParams.h"
#include "ILog.h"

#include <QComboBox>
#include <QLineEdit>
#include <QTableWidget>

namespace {
const int kHeadingRow = 8;

QStringList Choices(std::initializer_list<const char*> texts)
{
    QStringList choices;
    for (const char* szText : texts)
        choices << CTranslator::GetInstance()->GetWording(QString::fromUtf8(szText));
    return choices;
}

// The list rows: their choices (list index = stored value) and fields.
struct ListRow
{
    QStringList choices;
    int nValue;
};

ListRow ListRowOf(const MotorParams& block, int nRow)
{
    switch (nRow) {
    // "Negative" first here, "Positive" first for the keypad: the stored
    // value is the list index in both.
    case 0: return {Choices({"Negative", "Positive"}), block.directionPolar};
    case 1: return {Choices({"Pulse+Direction", "Double pulse"}), block.controlType};
    case 2: return {Choices({"Descending Edge", "Rising Edge"}), block.pwmEdge};
    case 3: return {Choices({"Positive", "Negative"}), block.keyDirection};
    default: return {Choices({"No", "Yes"}), block.startupReset ? 1 : 0};
    }
}
}

double* CMotorTab::NumberField(MotorParams& block, int nRow)
{
    switch (nRow) {
    case 5: return &block.pulsePerMm;
    case 6: return &block.size;
    case 7: return &block.zeroOffset;
    case 9: return &block.speedJump;
    case 10: return &block.speedMax;
    case 11: return &block.accMax;
    case 12: return &block.accUrgentStop;
    case 13: return &block.accKey;
    case 14: return &block.speedKeyJump;
    default: return nullptr;
    }
}

CMotorTab::CMotorTab(DlgFactoryMgr* pDialog, QTableWidget* pTable, MotorParams* pBlocks)
    : m_pDialog(pDialog)
    , m_pTable(pTable)
    , m_pBlocks(pBlocks)
{
}

MotorParams* CMotorTab::AxisBlockForColumn(int nColumn) const
{
    return nColumn >= 1 && nColumn <= 4 ? &m_pBlocks[nColumn - 1] : nullptr;
}

void CMotorTab::FillMotorTable()
{
    for (int c = 1; c <= 4; ++c)
        FillMotorColumn(c);
}

void CMotorTab::FillMotorColumn(int nColumn)
{
    MotorParams* pBlock = AxisBlockForColumn(nColumn);
    if (!pBlock)
        return;
    for (int r = 0; r <= 14; ++r) {
        if (r <= 4) {
            const ListRow row = ListRowOf(*pBlock, r);
            ComboBox* pCell = CPropertyTable::MakeListCell(m_pTable, r, nColumn, row.choices, row.nValue,
                                                           row.choices.value(row.nValue));
            // Connected only now, so the initial selection tells the dialog nothing.
            QObject::connect(pCell->comboBox(), &QComboBox::currentIndexChanged, m_pDialog,
                             &DlgFactoryMgr::on_MotorSelchangeComboValue);
        } else if (r == kHeadingRow) {
            m_pTable->removeCellWidget(r, nColumn);
            auto* pItem = new QTableWidgetItem;
            pItem->setFlags(Qt::NoItemFlags);
            m_pTable->setItem(r, nColumn, pItem);
        } else {
            ComboBox* pCell
                = CPropertyTable::MakeNumberCell(m_pTable, r, nColumn, CPropertyTable::Fixed2(*NumberField(*pBlock, r)));
            QObject::connect(pCell->lineEdit(), &QLineEdit::editingFinished, m_pDialog,
                             &DlgFactoryMgr::on_MotorKillfocusEditValue);
        }
    }
}

void CMotorTab::Clicked(const QModelIndex& index)
{
    ILog_WriteLogF(0, "tableWidget_motor was clicked.");
    if (index.row() == kHeadingRow)
        return;
    // What was typed into the open cell belongs to that cell, which is still current.
    CPropertyTable::CommitTyping(m_pTable);
    m_nRow = index.row();
    m_nColumn = index.column();
    CPropertyTable::ShowCellsAsText(m_pTable);
    CPropertyTable::OpenCellEditor(m_pTable, m_nRow, m_nColumn);
    m_nPrevRow = m_nRow;
    m_nPrevColumn = m_nColumn;
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
    MotorParams* pBlock = AxisBlockForColumn(m_nColumn);
    if (!pBlock)
        return;
    switch (m_nRow) {
    case 0: pBlock->directionPolar = nIndex; break;
    case 1: pBlock->controlType = nIndex; break;
    case 2: pBlock->pwmEdge = nIndex; break;
    case 3: pBlock->keyDirection = nIndex; break;
    case 4: pBlock->startupReset = nIndex != 0; break;
    default: break;
    }
    FillMotorColumn(m_nColumn);
}

void CMotorTab::EditFinished()
{
    ComboBox* pCell = CPropertyTable::Cell(m_pTable, m_nRow, m_nColumn);
    QString strTyped;
    double dValue = 0.0;
    if (!CPropertyTable::TakeTypedText(pCell, strTyped) || !CPropertyTable::ParseNumber(strTyped, dValue))
        return;
    MotorParams* pBlock = AxisBlockForColumn(m_nColumn);
    if (!pBlock)
        return;
    dValue = CPropertyTable::Round3(dValue);
    if (!(dValue > 0.0))
        dValue = 0.0;   // negative, zero and not-a-number alike

    double* pField = NumberField(*pBlock, m_nRow);
    if (!pField)
        return;
    // Only X and Y have caps; Z and U keep what is stored, on purpose.
    bool bAccepted = true;
    if (m_nRow == 10)
        bAccepted = (m_nColumn == 1 && dValue <= 2000.0) || (m_nColumn == 2 && dValue <= 500.0);
    else if (m_nRow == 11)
        bAccepted = (m_nColumn == 1 && dValue <= 60000.0) || (m_nColumn == 2 && dValue <= 10000.0);
    if (bAccepted)
        *pField = dValue;
    else
        dValue = *pField;

    const QString strShown = CPropertyTable::Fixed2(dValue);
    if (QTableWidgetItem* pItem = m_pTable->item(m_nRow, m_nColumn)) {
        pItem->setText(strShown);
        pItem->setBackground(Qt::white);
    }
    if (pCell)
        pCell->setText(strShown);
    // The edit replaces a refused value: the editor's red goes too.
    CPropertyTable::ClearMark(m_pTable, m_nRow, m_nColumn);
    CPropertyTable::ShowCellsAsText(m_pTable);
    m_pTable->viewport()->update();
}
