#include "CPropertyTab.h"

#include "CCellKeys.h"
#include "CCellNote.h"
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
    // The keyboard opens a cell as a click does, without the click's log line.
    CCellKeys::Of(pTable)->SetOpener([this](int nRow, int nColumn) { ClickedCell(nRow, nColumn); });
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
    if (nRow >= 0 && nColumn >= 0)
        CCellKeys::Of(m_pTable)->SetCurrent(nRow, nColumn);
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

bool CPropertyTab::TakeTypedNumber(double& dValue, NoNumber noNumber, QString* pTyped)
{
    QString strTyped;
    if (!CPropertyTable::TakeTypedText(CPropertyTable::Cell(m_pTable, m_nRow, m_nColumn), strTyped))
        return false;
    const bool bNumber = CPropertyTable::ParseNumber(strTyped, dValue);
    if (m_pTyped)
        *m_pTyped = {true, bNumber, noNumber, strTyped, dValue};
    if (!bNumber) {
        if (noNumber == NoNumberRefused)
            return false;
        dValue = 0.0;
    }
    dValue = CPropertyTable::Round3(dValue);
    if (pTyped)
        *pTyped = strTyped;
    return true;
}

void CPropertyTab::EditFinished()
{
    const int nRow = m_nRow;
    const int nColumn = m_nColumn;
    const FactoryParamKey* pKey = KeyAt(nRow, nColumn);
    const double dBefore = pKey ? pKey->ToShown(pKey->Value(*m_pShown)) : 0.0;
    // Storing may hide the line edit, whose losing the focus finishes an edit
    // again, inside this one: each call has its own record of what it took.
    Typed typed;
    Typed* pOuter = m_pTyped;
    m_pTyped = &typed;
    StoreTyped();
    m_pTyped = pOuter;
    if (!typed.bTaken || !pKey || pKey->editor != FactoryParamKey::EditorNumber)
        return;
    const double dNow = pKey->ToShown(pKey->Value(*m_pShown));
    // Text that is no number never stays shown as if it were taken.
    if (!typed.bNumber) {
        const QString strShown = FactoryParamKey::Fixed2(dNow);
        if (ComboBox* pCell = CPropertyTable::Cell(m_pTable, nRow, nColumn)) {
            pCell->setText(strShown);
            pCell->setEditing(false);
        }
        if (QTableWidgetItem* pItem = m_pTable->item(nRow, nColumn); pItem && !pItem->text().isEmpty())
            pItem->setText(strShown);
        CPropertyTable::Describe(m_pTable, nRow, nColumn);
    }
    CCellNote::Of(m_pTable)->Say(Why(*pKey, typed, dBefore, dNow));
}

QString CPropertyTab::FieldName(const FactoryParamKey& key)
{
    const auto wording = [](const QString& strText) { return CTranslator::GetInstance()->GetWording(strText); };
    QString strLabel = wording(QString::fromUtf8(key.szLabel));
    // The label's unit in brackets is said apart.
    int nBracket = strLabel.indexOf(QLatin1Char('('));
    if (nBracket < 0)
        nBracket = strLabel.indexOf(QChar(0xff08));   // a full-width bracket
    if (nBracket > 0)
        strLabel.truncate(nBracket);
    strLabel = strLabel.trimmed();
    return key.Where().isEmpty() ? strLabel : wording(key.Where()) + QLatin1Char(' ') + strLabel;
}

QString CPropertyTab::Why(const FactoryParamKey& key, const Typed& typed, double dBefore, double dNow) const
{
    const auto wording = [](const char* szText) { return CTranslator::GetInstance()->GetWording(QString::fromUtf8(szText)); };
    const auto same = [](double a, double b) { return std::fabs(a - b) <= 1e-9 * std::max(1.0, std::fabs(a)); };
    const QString strName = FieldName(key);
    const QString strNow = FactoryParamKey::Fixed2(dNow);
    const bool bKept = same(dNow, dBefore);
    if (!typed.bNumber)
        return (typed.noNumber == NoNumberRefused ? wording("%1 needs a number; kept %2")
                                                    : wording("%1 needs a number; set to %2"))
            .arg(strName, strNow);
    const double dTyped = typed.dValue;
    if (same(dNow, dTyped))
        return QString();
    double dMin = 0.0;
    double dMax = 0.0;
    if (!Bounds(key, dMin, dMax))
        return wording("%1 is not changed from this table; kept %2").arg(strName, strNow);
    const QString strUnit = CTranslator::GetInstance()->GetWording(QString::fromUtf8(key.szUnit));
    QString strNote;
    if (dTyped > dMax)
        strNote = (bKept ? wording("%1 takes at most %2 %3 here; kept %4") : wording("%1 takes at most %2 %3 here; set to %4"))
                      .arg(strName, QString::number(dMax), strUnit, strNow);
    else if (dTyped < dMin)
        strNote = (bKept ? wording("%1 takes at least %2 %3 here; kept %4") : wording("%1 takes at least %2 %3 here; set to %4"))
                      .arg(strName, QString::number(dMin), strUnit, strNow);
    else if (same(dNow, CPropertyTable::Round3(dTyped)))
        strNote = wording("%1 keeps 3 decimals; set to %2").arg(strName, QString::number(dNow, 'f', 3));
    else
        strNote = wording("%1 takes %2 as %3 here").arg(strName, typed.strText.trimmed(), strNow);
    return strNote.simplified();
}
