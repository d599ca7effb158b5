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
#include <cmath>
#include <limits>

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
    ComboBox* pCell = nullptr;
    if (key.editor == FactoryParamKey::EditorNumber) {
        pCell = CPropertyTable::MakeNumberCell(m_pTable, nRow, key.Column(), key.Shown(*m_pShown));
    } else {
        QStringList choices;
        for (const QString& strChoice : key.choices)
            choices << CTranslator::GetInstance()->GetWording(strChoice);
        const int nValue = int(key.Value(*m_pShown));
        pCell = CPropertyTable::MakeListCell(m_pTable, nRow, key.Column(), choices, nValue, choices.value(nValue));
    }
    ExplainCell(key, nRow);
    return pCell;
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

bool CPropertyTab::Bounds(const FactoryParamKey&, double& dMin, double& dMax) const
{
    dMin = 0.0;
    dMax = std::numeric_limits<double>::infinity();
    return true;
}

void CPropertyTab::ExplainCell(const FactoryParamKey& key, int nRow) const
{
    const auto wording = [](const QString& strText) { return CTranslator::GetInstance()->GetWording(strText); };
    QString strName = wording(QString::fromUtf8(key.szLabel));
    if (!key.Where().isEmpty())
        strName += ", " + wording(key.Where());
    QString strTip;
    double dMin = 0.0;
    double dMax = 0.0;
    if (key.editor == FactoryParamKey::EditorList) {
        QStringList choices;
        for (const QString& strChoice : key.choices)
            choices << wording(strChoice);
        strTip = wording(QStringLiteral("%1: one of %2")).arg(strName, choices.join(QStringLiteral(" / ")));
    } else if (!Bounds(key, dMin, dMax)) {
        strTip = wording(QStringLiteral("%1: kept as it is; this table does not change it")).arg(strName);
    } else {
        const QString strUnit = wording(QString::fromUtf8(key.szUnit));
        strTip = std::isinf(dMax)
            ? wording(QStringLiteral("%1: %2 %3 or more")).arg(strName, QString::number(dMin), strUnit)
            : wording(QStringLiteral("%1: from %2 to %3 %4")).arg(strName, QString::number(dMin), QString::number(dMax), strUnit);
    }
    CPropertyTable::SetExplanation(m_pTable, nRow, key.Column(), strTip.simplified());
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
