#include "CPropertyTab.h"

#include "CPropertyTable.h"
#include "CTranslator.h"
#include "ComboBox.h"
#include "DlgFactoryMgr.h"
#include "FactoryParams.h"
#include "ILog.h"

#include <QComboBox>
#include <QLineEdit>
#include <QTableWidget>

#include <algorithm>

CPropertyTab::CPropertyTab(DlgFactoryMgr* pDialog, QTableWidget* pTable, FactoryParamKey::Table table,
                           FactoryParams* pShown)
    : m_pDialog(pDialog)
    , m_pTable(pTable)
    , m_table(table)
    , m_pShown(pShown)
{
}

void CPropertyTab::Clicked(const QModelIndex& index)
{
    ILog_WriteLogF(0, "%s was clicked.", m_pTable->objectName().toUtf8().constData());
    ClickedCell(index.row(), index.column());
}

void CPropertyTab::ClickedCell(int nRow, int nColumn)
{
    CPropertyTable::ShowCellsAsText(m_pTable);
    SelectCell(nRow, nColumn);
}

void CPropertyTab::SelectCell(int nRow, int nColumn)
{
    m_nRow = nRow;
    m_nColumn = nColumn;
    if (Opens(nRow, nColumn))
        CPropertyTable::OpenCellEditor(m_pTable, nRow, nColumn);
}

bool CPropertyTab::Opens(int nRow, int nColumn) const
{
    return nRow >= 0 && nColumn == 1;
}

const FactoryParamKey* CPropertyTab::KeyAt(int nRow, int nColumn) const
{
    return FactoryParamKey::AtCell(m_table, RowKey(nRow), nColumn);
}

QVector<const FactoryParamKey*> CPropertyTab::KeysOfColumn(int nColumn) const
{
    QVector<const FactoryParamKey*> keys;
    for (const FactoryParamKey& key : FactoryParamKey::All())
        if (key.table == m_table && key.Column() == nColumn)
            keys << &key;
    std::sort(keys.begin(), keys.end(), [](const FactoryParamKey* a, const FactoryParamKey* b) { return a->nRow < b->nRow; });
    return keys;
}

ComboBox* CPropertyTab::MakeCell(const FactoryParamKey& key, int nRow) const
{
    if (key.editor == FactoryParamKey::EditorNumber)
        return CPropertyTable::MakeNumberCell(m_pTable, nRow, key.Column(), key.Shown(*m_pShown));
    QStringList choices;
    for (const QString& strChoice : key.choices)
        choices << CTranslator::GetInstance()->GetWording(strChoice);
    const int nValue = int(key.Value(*m_pShown));
    return CPropertyTable::MakeListCell(m_pTable, nRow, key.Column(), choices, nValue, choices.value(nValue));
}

void CPropertyTab::FillColumn(int nColumn, ListSlot onList, EditSlot onEdit) const
{
    for (const FactoryParamKey* pKey : KeysOfColumn(nColumn)) {
        if (pKey->nRow >= m_pTable->rowCount())
            continue;
        ComboBox* pCell = MakeCell(*pKey, pKey->nRow);
        if (pCell->comboBox())
            QObject::connect(pCell->comboBox(), &QComboBox::currentIndexChanged, m_pDialog, onList);
        else
            QObject::connect(pCell->lineEdit(), &QLineEdit::editingFinished, m_pDialog, onEdit);
    }
}

bool CPropertyTab::TakeTypedNumber(double& dValue, NoNumber noNumber, QString* pTyped) const
{
    QString strTyped;
    if (!CPropertyTable::TakeTypedText(CPropertyTable::Cell(m_pTable, m_nRow, m_nColumn), strTyped))
        return false;
    if (!CPropertyTable::ParseNumber(strTyped, dValue)) {
        if (noNumber == NoNumberRefused)
            return false;
        dValue = 0.0;
    }
    dValue = CPropertyTable::Round3(dValue);
    if (pTyped)
        *pTyped = strTyped;
    return true;
}
