#include "CMachineTab.h"

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
QString Wording(const char* szText)
{
    return CTranslator::GetInstance()->GetWording(QString::fromUtf8(szText));
}
}

CMachineTab::CMachineTab(DlgFactoryMgr* pDialog, QTableWidget* pTable, MachineSection* pSection)
    : m_pDialog(pDialog)
    , m_pTable(pTable)
    , m_pSection(pSection)
{
}

void CMachineTab::FillMachineTable()
{
    const QStringList drives{Wording("Belt Stepping"), Wording("Belt Servo"), Wording("Screw Stepper"),
                             Wording("Screw Servo")};
    const QStringList corners{Wording("Top Left"), Wording("Top Right")};
    const QStringList noYes{Wording("No"), Wording("Yes")};
    const MachineSection& s = *m_pSection;

    QList<ComboBox*> lists;
    lists << CPropertyTable::MakeListCell(m_pTable, 0, 1, drives, s.motiveMode, drives.value(s.motiveMode));
    ComboBox* pDistance = CPropertyTable::MakeNumberCell(m_pTable, 1, 1, CPropertyTable::Fixed2(s.laserSpace));
    lists << CPropertyTable::MakeListCell(m_pTable, 2, 1, corners, s.machineZero, corners[s.machineZero == 1 ? 1 : 0]);
    lists << CPropertyTable::MakeListCell(m_pTable, 3, 1, noYes, s.openProject ? 1 : 0, noYes[s.openProject ? 1 : 0]);
    lists << CPropertyTable::MakeListCell(m_pTable, 4, 1, noYes, s.blow ? 1 : 0, noYes[s.blow ? 1 : 0]);

    for (ComboBox* pList : lists)
        QObject::connect(pList->comboBox(), &QComboBox::currentIndexChanged, m_pDialog,
                         &DlgFactoryMgr::on_MachineSelchangeComboValue);
    QObject::connect(pDistance->lineEdit(), &QLineEdit::editingFinished, m_pDialog,
                     &DlgFactoryMgr::on_MachineKillfocusEditValue);
}

void CMachineTab::Clicked(const QModelIndex& index)
{
    ILog_WriteLogF(0, "tableWidget_machine was clicked.");
    CPropertyTable::ShowCellsAsText(m_pTable);
    SelectMachineCell(index.row(), index.column());
}

void CMachineTab::SelectMachineCell(int nRow, int nColumn)
{
    m_nRow = nRow;
    m_nColumn = nColumn;
    if (nRow >= 0 && nColumn == 1)
        CPropertyTable::OpenCellEditor(m_pTable, nRow, nColumn);
}

void CMachineTab::ComboChanged(int nIndex)
{
    // The row of the last click decides the meaning, not the list that fired.
    bool bWritten = true;
    switch (m_nRow) {
    case 0: m_pSection->motiveMode = nIndex; break;
    case 2: m_pSection->machineZero = nIndex; break;
    case 3: m_pSection->openProject = nIndex != 0; break;
    case 4: m_pSection->blow = nIndex != 0; break;
    default: bWritten = false; break;
    }
    // A choice replaces a refused value: its cell is no longer red.
    if (bWritten)
        CPropertyTable::ClearMark(m_pTable, m_nRow, 1);
    FillMachineTable();
}

void CMachineTab::EditFinished()
{
    ComboBox* pCell = CPropertyTable::Cell(m_pTable, m_nRow, m_nColumn);
    QString strTyped;
    if (m_nRow < 0 || m_nColumn != 1 || !CPropertyTable::TakeTypedText(pCell, strTyped))
        return;
    double dValue = 0.0;
    if (!CPropertyTable::ParseNumber(strTyped, dValue))
        dValue = 0.0;   // a text that is no number counts as 0
    dValue = CPropertyTable::Round3(dValue);
    // The cell keeps the text as typed until the table is refilled.
    QTableWidgetItem* pItem = m_pTable->item(m_nRow, m_nColumn);
    if (!pItem) {
        pItem = new QTableWidgetItem;
        m_pTable->setItem(m_nRow, m_nColumn, pItem);
    }
    pItem->setText(strTyped);
    // The label shows what the line edit keeps, as typed, until a refill.
    pCell->setText(strTyped);
    if (m_nRow == 1) {
        m_pSection->laserSpace = dValue > 0.0 ? dValue : 0.0;
        CPropertyTable::ClearMark(m_pTable, m_nRow, m_nColumn);
    }
    CPropertyTable::Describe(m_pTable, m_nRow, m_nColumn);
    CPropertyTable::ShowCellsAsText(m_pTable);
    m_pTable->viewport()->update();
}
