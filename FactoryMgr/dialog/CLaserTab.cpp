#include "CLaserTab.h"

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

namespace {
const int kIdRole = Qt::UserRole + 1;
const int kPowers[] = {30, 40, 50, 60, 80, 100, 130};
const char* const kLabels[] = {"Laser type", "Water Protection", "SwitchLevel", "Min power(%)", "Max power(%)",
                               "Laser Attenuation(%)", "Laser Frequency(kHz)", "Pre-burning frequency(kHz)",
                               "Pre-ignition pulse width(%)", "Laser power(W)"};

QString Wording(const char* szText)
{
    return CTranslator::GetInstance()->GetWording(QString::fromUtf8(szText));
}
}

CLaserTab::CLaserTab(DlgFactoryMgr* pDialog, Ui::DlgFactoryMgr* pUi, LaserSection* pSection)
    : m_pDialog(pDialog)
    , ui(pUi)
    , m_pSection(pSection)
{
}

QString CLaserTab::LaserTypeText(int nType)
{
    switch (nType) {
    case 1:
    case 2: return Wording("RF");
    case 3: return Wording("Fiber");
    default: return Wording("Glass");
    }
}

LaserParams* CLaserTab::LaserForColumn(int nColumn) const
{
    return nColumn == 1 || nColumn == 2 ? &m_pSection->lasers[nColumn - 1] : nullptr;
}

int CLaserTab::RowId(int nRow) const
{
    const QTableWidgetItem* pLabel = ui->tableWidget_laser->item(nRow, 0);
    return pLabel ? pLabel->data(kIdRole).toInt() : -1;
}

int CLaserTab::RowOfId(int nId) const
{
    for (int r = 0; r < ui->tableWidget_laser->rowCount(); ++r)
        if (RowId(r) == nId)
            return r;
    return -1;
}

void CLaserTab::RefreshLaserTab()
{
    if (ICard* pCard = CFactoryMgrApp::GetInstance()->GetCurrentCard()) {
        QVariant cardType;
        pCard->QueryFunction("CurrentCardType", cardType);
        const bool bLaserWording = cardType.toInt() == 8;
        ui->widget_tubeconfiguration->setHidden(bLaserWording);
        ui->widget_laserConfiguration->setHidden(!bLaserWording);
        QRadioButton* pSingle = bLaserWording ? ui->radioButton_laserSingle : ui->radioButton_tubeSingle;
        QRadioButton* pMulti = bLaserWording ? ui->radioButton_laserDouble : ui->radioButton_tubeDouble;

        m_nCount = m_pSection->laserCount == 1 ? 1 : 2;
        // Two tubes are always of one type.
        if (!bLaserWording && m_nCount == 2)
            m_pSection->lasers[1].type = m_pSection->lasers[0].type;
        const QSignalBlocker blockSingle(pSingle);
        const QSignalBlocker blockMulti(pMulti);
        (m_nCount == 1 ? pSingle : pMulti)->setChecked(true);
    }
    BuildLaserTable();
    FillLaserColumn(m_pSection->lasers[0], 1);
    if (m_pSection->laserCount != 1)
        FillLaserColumn(m_pSection->lasers[1], 2);
    CPropertyTable::Format(ui->tableWidget_laser, m_pDialog->Resolution());
}

void CLaserTab::RefillColumns()
{
    FillLaserColumn(m_pSection->lasers[0], 1);
    if (m_pSection->laserCount != 1)
        FillLaserColumn(m_pSection->lasers[1], 2);
}

void CLaserTab::BuildLaserTable()
{
    QTableWidget* pTable = ui->tableWidget_laser;
    for (int c = pTable->columnCount() - 1; c >= 1; --c)
        pTable->removeColumn(c);
    for (int r = pTable->rowCount() - 1; r >= 0; --r)
        pTable->removeRow(r);
    pTable->insertColumn(1);
    pTable->setHorizontalHeaderItem(1, new QTableWidgetItem(Wording("Laser 1")));
    if (m_nCount == 2) {
        pTable->insertColumn(2);
        pTable->setHorizontalHeaderItem(2, new QTableWidgetItem(Wording("Laser 2")));
    }
    for (int nId = 0; nId <= 9; ++nId) {
        pTable->insertRow(nId);
        auto* pLabel = new QTableWidgetItem(Wording(kLabels[nId]));
        pLabel->setData(kIdRole, nId);
        pTable->setItem(nId, 0, pLabel);
    }
}

void CLaserTab::FillLaserColumn(const LaserParams& laser, int nColumn)
{
    QTableWidget* pTable = ui->tableWidget_laser;
    if (nColumn >= pTable->columnCount())
        return;
    for (int r = 0; r < pTable->rowCount(); ++r) {
        const int nId = RowId(r);
        if (nId < 0 || nId > 9)
            continue;
        ComboBox* pCell = nullptr;
        if (nId == 0 || nId == 1 || nId == 2 || nId == 9) {
            QStringList choices;
            QString strCurrent;
            if (nId == 0) {
                choices = {Wording("Glass"), Wording("RF"), Wording("Fiber")};
                strCurrent = LaserTypeText(laser.type);
            } else if (nId == 1) {
                choices = {Wording("Close"), Wording("On")};
                strCurrent = choices[laser.waterProtect ? 1 : 0];
            } else if (nId == 2) {
                choices = {Wording("Low level"), Wording("High level")};
                strCurrent = choices.value(laser.switchSignal);
            } else {
                for (int nPower : kPowers)
                    choices << QString::number(nPower);
            }
            pCell = CPropertyTable::MakeListCell(pTable, r, nColumn, choices, choices.indexOf(strCurrent), strCurrent);
            if (nId == 9) {
                // The rated power is the item data, not the position; a power
                // that is none of them shows the first choice, record untouched.
                int nIndex = 0;
                for (int i = 0; i < int(sizeof(kPowers) / sizeof(kPowers[0])); ++i) {
                    pCell->setItemData(i, kPowers[i], kIdRole);
                    if (kPowers[i] == laser.power)
                        nIndex = i;
                }
                const QSignalBlocker block(pCell->comboBox());
                pCell->setCurrentIndex(nIndex);
                pTable->item(r, nColumn)->setText(pCell->comboBox()->currentText());
                CPropertyTable::Describe(pTable, r, nColumn);
            }
            DlgFactoryMgr* pDialog = m_pDialog;
            QObject::connect(pCell->comboBox(), &QComboBox::currentIndexChanged, pDialog,
                             [pDialog, r, nColumn](int nIndex) {
                                 pDialog->SelectLaserCell(r, nColumn);
                                 pDialog->on_LaserSelchangeComboValue(nIndex);
                             });
        } else {
            const double dValue = nId == 3   ? laser.powerMin
                : nId == 4                   ? laser.powerMax
                : nId == 5                   ? laser.powerReduction
                : nId == 6                   ? laser.frequency
                : nId == 7                   ? laser.burningFrequency / 1000.0
                                             : laser.burningWidth;
            pCell = CPropertyTable::MakeNumberCell(pTable, r, nColumn, CPropertyTable::Fixed2(dValue));
            QObject::connect(pCell->lineEdit(), &QLineEdit::editingFinished, m_pDialog,
                             &DlgFactoryMgr::on_LaserKillfocusEditValue);
        }
        // The switch level is a glass tube's; pre-ignition is an RF source's.
        if (nId == 2)
            pCell->setEnabled(laser.type == 0);
        else if (nId == 7 || nId == 8)
            pCell->setEnabled(laser.type == 2);
    }
}

void CLaserTab::SetCount(int nCount)
{
    m_nCount = nCount;
    m_pSection->laserCount = nCount;
    RefreshLaserTab();
}

void CLaserTab::Clicked(const QModelIndex& index)
{
    ILog_WriteLogF(0, "tableWidget_laser was clicked.");
    CPropertyTable::ShowCellsAsText(ui->tableWidget_laser);
    SelectLaserCell(index.row(), index.column());
}

void CLaserTab::SelectLaserCell(int nRow, int nColumn)
{
    m_nRow = nRow;
    m_nColumn = nColumn;
    CPropertyTable::OpenCellEditor(ui->tableWidget_laser, nRow, nColumn);
}

void CLaserTab::ComboChanged(int nIndex)
{
    LaserParams* pLaser = LaserForColumn(m_nColumn);
    if (!pLaser)
        return;
    // A choice replaces whatever the cell showed: no red stays on it.
    CPropertyTable::ClearMark(ui->tableWidget_laser, m_nRow, m_nColumn);
    const int nId = RowId(m_nRow);
    if (nId == 1) {
        pLaser->waterProtect = nIndex != 0;
    } else if (nId == 2) {
        pLaser->switchSignal = nIndex;
    } else if (nId == 9) {
        if (ComboBox* pCell = CPropertyTable::Cell(ui->tableWidget_laser, m_nRow, m_nColumn))
            pLaser->power = pCell->itemData(nIndex, kIdRole).toInt();
    } else if (nId == 0) {
        // The tab never writes type 1; RF is written as 2.
        const int nType = nIndex == 0 ? 0 : nIndex == 1 ? 2 : 3;
        if (ui->widget_laserConfiguration->isHidden()) {
            m_pSection->lasers[0].type = nType;
            m_pSection->lasers[1].type = nType;
            FillLaserColumn(m_pSection->lasers[0], 1);
            FillLaserColumn(m_pSection->lasers[1], 2);
            return;
        }
        pLaser->type = nType;
    }
    FillLaserColumn(*pLaser, m_nColumn);
}

void CLaserTab::EditFinished()
{
    LaserParams* pLaser = LaserForColumn(m_nColumn);
    if (!pLaser)
        return;
    ComboBox* pCell = CPropertyTable::Cell(ui->tableWidget_laser, m_nRow, m_nColumn);
    QString strTyped;
    double v = 0.0;
    if (!CPropertyTable::TakeTypedText(pCell, strTyped) || !CPropertyTable::ParseNumber(strTyped, v))
        return;
    v = CPropertyTable::Round3(v);
    switch (RowId(m_nRow)) {
    case 3:
        v = std::min(std::trunc(v), pLaser->powerMax);
        pLaser->powerMin = v > 0.0 ? v : 0.0;
        break;
    case 4:
        v = std::min(std::trunc(v), 100.0);
        pLaser->powerMax = v > pLaser->powerMin ? v : pLaser->powerMin;
        break;
    case 5:
        v = std::min(std::trunc(v), 100.0);
        pLaser->powerReduction = v > 0.0 ? v : 0.0;
        break;
    case 6:
        pLaser->frequency = v > 0.0 ? v : 0.0;
        break;
    case 7:
        // Shown in kHz, kept in Hz, between 1 and 10 kHz.
        v = std::min(v, 10.0);
        if (!(v > 1.0))
            v = 1.0;
        pLaser->burningFrequency = v * 1000.0;
        break;
    case 8:
        v = std::round(v * 10.0) / 10.0;
        v = std::min(std::max(v, 0.0), 100.0);
        pLaser->burningWidth = v > 0.0 ? v : 0.0;
        break;
    default:
        return;
    }
    // The edit replaces the refused value: the refill shows no red here.
    CPropertyTable::ClearMark(ui->tableWidget_laser, m_nRow, m_nColumn);
    FillLaserColumn(*pLaser, m_nColumn);
}

void CLaserTab::CollectLaserSection()
{
    CollectInto(*m_pSection);
}

void CLaserTab::CollectInto(LaserSection& section) const
{
    section.laserCount = m_nCount == 1 ? 1 : 2;
    section.reserved = m_nReserved;
    section.lasers[0].enabled = true;
    section.lasers[1].enabled = true;
}
