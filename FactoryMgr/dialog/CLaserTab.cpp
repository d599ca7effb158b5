#include "CLaserTab.h"

#include "CCellMarks.h"
#include "CFactoryMgrApp.h"
#include "CPropertyTable.h"
#include "CTranslator.h"
#include "ComboBox.h"
#include "DlgFactoryMgr.h"
#include "FactoryParams.h"
#include "ICard.h"
#include "ILog.h"
#include "ui_DlgFactoryMgr.h"

#include <QComboBox>
#include <QLineEdit>
#include <QSignalBlocker>

#include <cmath>
#include <limits>

namespace {
const int kIdRole = Qt::UserRole + 1;
// The rows whose identifiers carry a rule.
const int kTypeRow = 0;
const int kSwitchRow = 2;
const int kBurningFrequencyRow = 7;
const int kBurningWidthRow = 8;
const int kPowerRow = 9;

QString Wording(const QString& strText)
{
    return CTranslator::GetInstance()->GetWording(strText);
}

// The type list shows types 1 and 2 as "RF", 3 as "Fiber", anything else as "Glass".
int TypeChoice(int nType)
{
    return nType == 1 || nType == 2 ? 1 : nType == 3 ? 2 : 0;
}

// The tab never writes type 1: RF is written as 2.
int TypeOfChoice(int nChoice)
{
    return nChoice == 0 ? 0 : nChoice == 1 ? 2 : 3;
}

// A typed number as the row keeps it, in the row's unit; laser: the source's other values.
double Bounded(int nId, double v, const LaserParams& laser)
{
    switch (nId) {
    case 3: v = std::min(std::trunc(v), laser.powerMax); return v > 0.0 ? v : 0.0;
    case 4: v = std::min(std::trunc(v), 100.0); return v > laser.powerMin ? v : laser.powerMin;
    case 5: v = std::min(std::trunc(v), 100.0); return v > 0.0 ? v : 0.0;
    // No scaling and no upper bound: the record's number as it is.
    case 6: return v > 0.0 ? v : 0.0;
    // Between 1 and 10 kHz.
    case kBurningFrequencyRow: v = std::min(v, 10.0); return v > 1.0 ? v : 1.0;
    case kBurningWidthRow:
        v = std::round(v * 10.0) / 10.0;
        v = std::min(std::max(v, 0.0), 100.0);
        return v > 0.0 ? v : 0.0;
    default: return v;
    }
}
}

CLaserTab::CLaserTab(DlgFactoryMgr* pDialog, Ui::DlgFactoryMgr* pUi, FactoryParams* pShown)
    : CPropertyTab(pDialog, pUi->tableWidget_laser, FactoryParamKey::TableLaser, pShown)
    , ui(pUi)
{
}

LaserSection& CLaserTab::Section() const
{
    return m_pShown->laser;
}

bool CLaserTab::Bounds(const FactoryParamKey& key, double& dMin, double& dMax) const
{
    const LaserParams& laser = Section().lasers[key.nIndex];
    dMin = 0.0;
    dMax = std::numeric_limits<double>::infinity();
    switch (key.nRow) {
    case 3: dMax = laser.powerMax; break;
    case 4: dMin = laser.powerMin; dMax = 100.0; break;
    case 5:
    case kBurningWidthRow: dMax = 100.0; break;
    case kBurningFrequencyRow: dMin = 1.0; dMax = 10.0; break;
    default: break;
    }
    return true;
}

bool CLaserTab::Opens(int nRow, int nColumn) const
{
    return nRow >= 0 && nColumn >= 0;
}

int CLaserTab::RowId(int nRow) const
{
    const QTableWidgetItem* pLabel = m_pTable->item(nRow, 0);
    return pLabel ? pLabel->data(kIdRole).toInt() : -1;
}

int CLaserTab::RowOfId(int nId) const
{
    for (int r = 0; r < m_pTable->rowCount(); ++r)
        if (RowId(r) == nId)
            return r;
    return -1;
}

void CLaserTab::RefreshLaserTab()
{
    LaserSection& section = Section();
    if (ICard* pCard = CFactoryMgrApp::GetInstance()->GetCurrentCard()) {
        QVariant cardType;
        pCard->QueryFunction("CurrentCardType", cardType);
        const bool bLaserWording = cardType.toInt() == 8;
        ui->widget_tubeconfiguration->setHidden(bLaserWording);
        ui->widget_laserConfiguration->setHidden(!bLaserWording);
        QRadioButton* pSingle = bLaserWording ? ui->radioButton_laserSingle : ui->radioButton_tubeSingle;
        QRadioButton* pMulti = bLaserWording ? ui->radioButton_laserDouble : ui->radioButton_tubeDouble;

        m_nCount = section.laserCount == 1 ? 1 : 2;
        // Two tubes are always of one type.
        if (!bLaserWording && m_nCount == 2)
            section.lasers[1].type = section.lasers[0].type;
        const QSignalBlocker blockSingle(pSingle);
        const QSignalBlocker blockMulti(pMulti);
        (m_nCount == 1 ? pSingle : pMulti)->setChecked(true);
    }
    BuildLaserTable();
    RefillColumns();
    CPropertyTable::Format(m_pTable, m_pDialog->Resolution());
}

void CLaserTab::RefillColumns()
{
    FillLaserColumn(1);
    if (Section().laserCount != 1)
        FillLaserColumn(2);
}

void CLaserTab::BuildLaserTable()
{
    QTableWidget* pTable = m_pTable;
    for (int c = pTable->columnCount() - 1; c >= 1; --c)
        pTable->removeColumn(c);
    for (int r = pTable->rowCount() - 1; r >= 0; --r)
        pTable->removeRow(r);
    // The rows are new: no mark is left on them.
    CCellMarks::Of(pTable)->Forget();
    pTable->insertColumn(1);
    pTable->setHorizontalHeaderItem(1, new QTableWidgetItem(Wording(QStringLiteral("Laser 1"))));
    if (m_nCount == 2) {
        pTable->insertColumn(2);
        pTable->setHorizontalHeaderItem(2, new QTableWidgetItem(Wording(QStringLiteral("Laser 2"))));
    }
    for (int nId = 0; nId <= kPowerRow; ++nId) {
        pTable->insertRow(nId);
        auto* pLabel = new QTableWidgetItem(Wording(QString::fromUtf8(FactoryParamKey::AtCell(m_table, nId, 1)->szLabel)));
        pLabel->setData(kIdRole, nId);
        if (nId == kSwitchRow)
            pLabel->setToolTip(Wording(QStringLiteral("Switch level: the signal level that turns a glass tube on")));
        pTable->setItem(nId, 0, pLabel);
    }
}

void CLaserTab::FillLaserColumn(int nColumn)
{
    QTableWidget* pTable = m_pTable;
    if (nColumn >= pTable->columnCount())
        return;
    for (int r = 0; r < pTable->rowCount(); ++r) {
        const FactoryParamKey* pKey = KeyAt(r, nColumn);
        if (!pKey)
            continue;
        const LaserParams& laser = Section().lasers[pKey->nIndex];
        const int nId = pKey->nRow;
        ComboBox* pCell = nullptr;
        if (nId == kTypeRow) {
            QStringList choices;
            for (const QString& strChoice : pKey->choices)
                choices << Wording(strChoice);
            const int nChoice = TypeChoice(laser.type);
            pCell = CPropertyTable::MakeListCell(pTable, r, nColumn, choices, nChoice, choices[nChoice]);
            ExplainCell(*pKey, r);
        } else if (nId == kPowerRow) {
            // The rated power is the item data, not the position; a power
            // that is none of them shows the first choice, record untouched.
            pCell = CPropertyTable::MakeListCell(pTable, r, nColumn, pKey->choices, -1, QString());
            int nIndex = 0;
            for (int i = 0; i < pKey->choices.size(); ++i) {
                pCell->setItemData(i, pKey->choices[i].toInt(), kIdRole);
                if (pKey->choices[i].toInt() == laser.power)
                    nIndex = i;
            }
            const QSignalBlocker block(pCell->comboBox());
            pCell->setCurrentIndex(nIndex);
            pTable->item(r, nColumn)->setText(pCell->comboBox()->currentText());
            ExplainCell(*pKey, r);
        } else {
            pCell = MakeCell(*pKey, r);
        }
        if (pCell->comboBox()) {
            DlgFactoryMgr* pDialog = m_pDialog;
            QObject::connect(pCell->comboBox(), &QComboBox::currentIndexChanged, pDialog,
                             [pDialog, r, nColumn](int nIndex) {
                                 pDialog->SelectLaserCell(r, nColumn);
                                 pDialog->on_LaserSelchangeComboValue(nIndex);
                             });
        } else {
            QObject::connect(pCell->lineEdit(), &QLineEdit::editingFinished, m_pDialog,
                             &DlgFactoryMgr::on_LaserKillfocusEditValue);
        }
        // The switch level is a glass tube's; pre-ignition is an RF source's.
        if (nId == kSwitchRow)
            pCell->setEnabled(laser.type == 0);
        else if (nId == kBurningFrequencyRow || nId == kBurningWidthRow)
            pCell->setEnabled(laser.type == 2);
    }
}

void CLaserTab::SetCount(int nCount)
{
    m_nCount = nCount;
    Section().laserCount = nCount;
    RefreshLaserTab();
}

void CLaserTab::ComboChanged(int nIndex)
{
    const FactoryParamKey* pKey = KeyAt(m_nRow, m_nColumn);
    if (!pKey)
        return;
    // A choice replaces whatever the cell showed: no red stays on it.
    CPropertyTable::ClearMark(m_pTable, m_nRow, m_nColumn);
    if (pKey->nRow == kPowerRow) {
        if (ComboBox* pCell = CPropertyTable::Cell(m_pTable, m_nRow, m_nColumn))
            pKey->SetValue(*m_pShown, pCell->itemData(nIndex, kIdRole).toInt());
    } else if (pKey->nRow == kTypeRow) {
        const int nType = TypeOfChoice(nIndex);
        // Tubes: both are always of one type.
        if (ui->widget_laserConfiguration->isHidden()) {
            Section().lasers[0].type = nType;
            Section().lasers[1].type = nType;
            FillLaserColumn(1);
            FillLaserColumn(2);
            return;
        }
        pKey->SetValue(*m_pShown, nType);
    } else if (pKey->editor == FactoryParamKey::EditorList) {
        pKey->SetValue(*m_pShown, nIndex);
    }
    FillLaserColumn(m_nColumn);
}

void CLaserTab::StoreTyped()
{
    const FactoryParamKey* pKey = KeyAt(m_nRow, m_nColumn);
    double v = 0.0;
    if (!pKey || !TakeTypedNumber(v, NoNumberRefused) || pKey->editor != FactoryParamKey::EditorNumber)
        return;
    pKey->SetValue(*m_pShown, pKey->FromShown(Bounded(pKey->nRow, v, Section().lasers[pKey->nIndex])));
    // The edit replaces the refused value: the refill shows no red here.
    CPropertyTable::ClearMark(m_pTable, m_nRow, m_nColumn);
    FillLaserColumn(m_nColumn);
}

void CLaserTab::CollectLaserSection()
{
    CollectInto(Section());
}

void CLaserTab::CollectInto(LaserSection& section) const
{
    section.laserCount = m_nCount == 1 ? 1 : 2;
    section.reserved = m_nReserved;
    section.lasers[0].enabled = true;
    section.lasers[1].enabled = true;
}
