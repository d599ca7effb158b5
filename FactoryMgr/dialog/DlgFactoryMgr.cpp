#include "DlgFactoryMgr.h"

#include "CFactoryMgrApp.h"
#include "CLaserTab.h"
#include "CMachineTab.h"
#include "CMotorTab.h"
#include "CSpeedTab.h"
#include "CSystemTab.h"
#include "CPropertyTable.h"
#include "CThemeTab.h"
#include "CTipsBox.h"
#include "ComboBox.h"
#include "Wording.h"
#include "FactoryParamFile.h"
#include "FactoryParamKeys.h"
#include "ILog.h"
#include "ParamsEqual.h"
#include "PluginLoader.h"
#include "ui_DlgFactoryMgr.h"

#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QKeyEvent>
#include <QMap>
#include <QPointer>
#include <QSignalBlocker>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {
void SetHeaders(QTableWidget* pTable, const QStringList& headers)
{
    for (int c = 0; c < headers.size() && c < pTable->columnCount(); ++c) {
        QTableWidgetItem* pItem = pTable->horizontalHeaderItem(c);
        if (!pItem) {
            pItem = new QTableWidgetItem;
            pTable->setHorizontalHeaderItem(c, pItem);
        }
        pItem->setText(Wording(headers[c].toUtf8().constData()));
    }
}

void SetRowLabels(QTableWidget* pTable, const QStringList& labels)
{
    for (int r = 0; r < labels.size() && r < pTable->rowCount(); ++r) {
        QTableWidgetItem* pItem = pTable->item(r, 0);
        if (!pItem) {
            pItem = new QTableWidgetItem;
            pTable->setItem(r, 0, pItem);
        }
        pItem->setText(Wording(labels[r].toUtf8().constData()));
    }
}

// Each row's label is the label of the field it shows; a row without a
// field (a sub-heading) has its own.
void SetFieldLabels(QTableWidget* pTable, FactoryParamKey::Table table, const QMap<int, const char*>& others = {})
{
    QStringList labels;
    for (int r = 0; r < pTable->rowCount(); ++r) {
        const FactoryParamKey* pKey = FactoryParamKey::AtCell(table, r, 1);
        labels << QString::fromUtf8(pKey ? pKey->szLabel : others.value(r, ""));
    }
    SetRowLabels(pTable, labels);
}
}

DlgFactoryMgr::DlgFactoryMgr(FactoryParams* pRecord, QWidget* parent)
    : BaseDialog(parent)
    , ui(new Ui::DlgFactoryMgr)
    , m_pRecord(pRecord)
    , m_pResolution(nullptr)
    , m_bHomepageFilled(false)
{
    ui->setupUi(this);
    m_pMotorTab = std::make_unique<CMotorTab>(this, ui->tableWidget_motor, &m_displayParams);
    m_pLaserTab = std::make_unique<CLaserTab>(this, ui, &m_displayParams);
    m_pMachineTab = std::make_unique<CMachineTab>(this, ui->tableWidget_machine, &m_displayParams);
    m_pSpeedTab = std::make_unique<CSpeedTab>(this, ui->tableWidget_speed, &m_displayParams);
    m_pSystemTab = std::make_unique<CSystemTab>(this, ui->tableWidget_system);
    RetranslateTexts();
    if (m_pRecord) {
        m_snapshotParams = *m_pRecord;
        m_workParams = *m_pRecord;
    }
    InitDialog();
}

DlgFactoryMgr::~DlgFactoryMgr()
{
    // The cell editors go with the QWidget base, after this part of the dialog:
    // a line edit that has the focus would report "editing finished" into a
    // dialog that is no longer there.
    for (ComboBox* pCell : findChildren<ComboBox*>()) {
        if (pCell->lineEdit())
            pCell->lineEdit()->disconnect(this);
        if (pCell->comboBox())
            pCell->comboBox()->disconnect(this);
    }
    delete ui;
    // Every dialog loads the sibling plug-in anew; its record goes with it, or
    // a host that opens the settings again and again would pile them up.
    if (m_pResolution)
        ReleasePluginInterface(m_pResolution);
}

IResolution* DlgFactoryMgr::Resolution() const
{
    return m_pResolution;
}

int DlgFactoryMgr::SetParams(const FactoryParams& params)
{
    m_workParams = params;
    return 0;
}

int DlgFactoryMgr::GetParams(FactoryParams& params) const
{
    params = m_workParams;
    return 0;
}

int DlgFactoryMgr::GetSnapshotParams(FactoryParams& params) const
{
    params = m_snapshotParams;
    return 0;
}

void DlgFactoryMgr::RetranslateTexts()
{
    setWindowTitle(Wording("Machine Settings"));
    QTabWidget* pTabs = ui->tabWidget;
    pTabs->setTabText(pTabs->indexOf(ui->tab), Wording("Motor"));
    pTabs->setTabText(pTabs->indexOf(ui->widget1), Wording("Laser"));
    pTabs->setTabText(pTabs->indexOf(ui->tab_5), Wording("Processing"));
    pTabs->setTabText(pTabs->indexOf(ui->widget2), Wording("Machine"));
    pTabs->setTabText(pTabs->indexOf(ui->tab_2), Wording("System"));
    pTabs->setTabText(pTabs->indexOf(ui->tab_theme), Wording("Theme"));

    SetHeaders(ui->tableWidget_motor, {"Property", "X", "Y", "Z", "U"});
    SetFieldLabels(ui->tableWidget_motor, FactoryParamKey::TableMotor, {{8, "Motor Speed Limit"}});

    SetHeaders(ui->tableWidget_laser, {"Property", "Laser"});
    ui->label->setText(Wording("Laser tube configuration"));
    ui->radioButton_laserSingle->setText(Wording("Single laser"));
    ui->radioButton_laserDouble->setText(Wording("Multi-laser"));
    ui->label_2->setText(Wording("Laser tube configuration"));
    ui->radioButton_tubeSingle->setText(Wording("Single tube"));
    ui->radioButton_tubeDouble->setText(Wording("Multi-tube"));

    SetHeaders(ui->tableWidget_speed, {"Property", "Value"});
    SetFieldLabels(ui->tableWidget_speed, FactoryParamKey::TableSpeed);

    SetHeaders(ui->tableWidget_machine, {"Property", "Value"});
    SetFieldLabels(ui->tableWidget_machine, FactoryParamKey::TableMachine);

    SetHeaders(ui->tableWidget_system, {"Property", "Value"});
    SetRowLabels(ui->tableWidget_system, {"Firmware Version", "Panel Version", "Total Work Time",
                                          "Total job processing time", "Total X-axis Movement", "Total Y-axis Movement"});
    ui->pushButton_mainboardUpgrade->setText(Wording("MainboardUpgrade"));
    ui->pushButton_panelUpgrade->setText(Wording("PanelUpgrade"));
    // The buttons' own words are terse; their tooltips say what they do.
    ui->pushButton_mainboardUpgrade->setToolTip(Wording("Upgrade the mainboard's firmware from an .upd file"));
    ui->pushButton_panelUpgrade->setToolTip(Wording("Upgrade the control panel's firmware from an .hmt or .hmi file"));
    ui->pushButton_clear->setText(Wording("Clear"));

    ui->label_DlgFactoryMgr1->setText(Wording("Customize Homepage"));
    SetHeaders(ui->tableWidget_customHomepage, {"Title Bar", "Website Link"});
    SetRowLabels(ui->tableWidget_customHomepage,
                 {"Start", "Navigation", "Gallery", "Device", "Community", "Knowledge Base", "Official Support",
                  "Navigation", "Online Gallery", "Advanced Tutorial"});

    ui->pushButton_correctXyStep->setText(Wording("Calibrate XY step"));
    ui->pushButton_read->setText(Wording("Read"));
    ui->pushButton_upload->setText(Wording("Upload"));
}

void DlgFactoryMgr::InitDialog()
{
    // Without the sibling plug-in the tables keep their design sizes.
    m_pResolution = static_cast<IResolution*>(LoadPluginInterface(QStringLiteral("Resolution"), true, nullptr));
    // Values are edited in the cell editors only: an item editor opened by a
    // double click would take typing that never reaches the record.
    for (QTableWidget* pTable : {ui->tableWidget_motor, ui->tableWidget_laser, ui->tableWidget_speed,
                                 ui->tableWidget_machine})
        pTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    CopyRecordToDisplay();
    FillAllTables();
    ui->tabWidget->setCurrentIndex(0);
}

void DlgFactoryMgr::FillAllTables()
{
    CPropertyTable::Format(ui->tableWidget_motor, m_pResolution);
    m_pMotorTab->FillMotorTable();
    m_pLaserTab->RefreshLaserTab();
    m_pMachineTab->FillMachineTable();
    CPropertyTable::Format(ui->tableWidget_machine, m_pResolution);
    m_pSpeedTab->FillSpeedTable();
    CPropertyTable::Format(ui->tableWidget_speed, m_pResolution);
}

void DlgFactoryMgr::CopyRecordToDisplay()
{
    m_displayParams = m_workParams;
}

void DlgFactoryMgr::CopyDisplayToRecord()
{
    m_workParams = m_displayParams;
}

FactoryParams& DlgFactoryMgr::DisplayParams()
{
    return m_displayParams;
}

int DlgFactoryMgr::LaserRowOfId(int nId) const
{
    return m_pLaserTab->RowOfId(nId);
}

void DlgFactoryMgr::RefillLaserColumns()
{
    m_pLaserTab->RefillColumns();
}

void DlgFactoryMgr::DataToCtrlSlot(bool bDataToCtrl)
{
    if (bDataToCtrl) {
        CopyRecordToDisplay();
        m_pMotorTab->FillMotorTable();
        m_pLaserTab->RefillColumns();
        m_pMachineTab->FillMachineTable();
        m_pSpeedTab->FillSpeedTable();
        return;
    }
    ForceOutgoingFields(m_displayParams);
    m_pLaserTab->CollectLaserSection();
    // An address table that was never shown holds nothing to store.
    if (m_bHomepageFilled)
        CThemeTab::Store(ui->tableWidget_customHomepage);
    CopyDisplayToRecord();
}

void DlgFactoryMgr::ForceOutgoingFields(FactoryParams& params)
{
    // These two have no row in the Motor table: every record that leaves the
    // dialog carries hard-limit protection on and limit polarity 0.
    for (MotorParams& motor : params.motor) {
        motor.hardLimitProtect = true;
        motor.limitPolar = 0;
    }
}

bool DlgFactoryMgr::IsEdited() const
{
    if (!m_pRecord)
        return false;
    return !ParamsEqual(Collected(), *m_pRecord);
}

FactoryParams DlgFactoryMgr::Collected() const
{
    FactoryParams collected = m_displayParams;
    ForceOutgoingFields(collected);
    m_pLaserTab->CollectInto(collected.laser);
    return collected;
}

QByteArray DlgFactoryMgr::CollectedParams() const
{
    const FactoryParams collected = Collected();
    return QByteArray(reinterpret_cast<const char*>(&collected), sizeof(FactoryParams));
}

void DlgFactoryMgr::ImportParams()
{
    ILog_WriteLogF(0, "pushButton_import was clicked.");
    // The file dialog, and the box that refuses a file, run loops in which
    // the host may delete this dialog.
    const QPointer<DlgFactoryMgr> pAlive(this);
    const QString strPath = QFileDialog::getOpenFileName(this, Wording("Open"), QString(), "files (*.ini);");
    if (strPath.isNull() || !pAlive)
        return;
    // A file that cannot be opened at all is said so here; what is in a file
    // the reader judges, with its own box.
    const QFileInfo file(strPath);
    const QString strWhy = !file.exists()   ? Wording("it does not exist")
        : !file.isFile()                    ? Wording("it is not a file")
        : !file.isReadable()                ? Wording("permission denied")
                                            : QString();
    if (!strWhy.isEmpty()) {
        ILog_WriteLogF(1, "Import of %s failed: %s.", QFile::encodeName(strPath).constData(), strWhy.toUtf8().constData());
        CTipsBox::Show(this, Wording("Tips"), Wording("Import failed: %1 cannot be read (%2).").arg(strPath, strWhy),
                       Wording("OK"));
        return;
    }
    LoadFactoryParams(m_workParams, strPath);
    if (!pAlive)
        return;
    if (m_pRecord)
        *m_pRecord = m_workParams;
    DataToCtrlSlot(true);
}

void DlgFactoryMgr::ExportParams()
{
    ILog_WriteLogF(0, "pushButton_export was clicked.");
    const QPointer<DlgFactoryMgr> pAlive(this);
    // A name typed without a suffix gets the ".ini" the filter names, before
    // the file dialog asks whether to replace an existing file of that name.
    const QPointer<QFileDialog> pFiles = new QFileDialog(this, Wording("Save As"), QString(), "files (*.ini);");
    pFiles->setAcceptMode(QFileDialog::AcceptSave);
    pFiles->setDefaultSuffix(QStringLiteral("ini"));
    const bool bChosen = pFiles->exec() == QDialog::Accepted;
    if (!pAlive || !pFiles)
        return;
    const QString strPath = pFiles->selectedFiles().value(0);
    delete pFiles;
    if (!bChosen || strPath.isEmpty())
        return;
    DataToCtrlSlot(false);
    QString strWhy;
    if (!SaveFactoryParams(m_workParams, strPath, &strWhy) && pAlive)
        CTipsBox::Show(this, Wording("Tips"), Wording("Export failed: %1 could not be written (%2).").arg(strPath, strWhy),
                       Wording("OK"));
}

void DlgFactoryMgr::ApplyXyStepRatio(double dRatioW, double dRatioH)
{
    // Both steps or neither: a calibration applied to one axis only is worse
    // than none. A ratio must be a positive number, and the steps stay finite.
    const double dStepX = m_workParams.motor[0].pulsePerMm * dRatioW;
    const double dStepY = m_workParams.motor[1].pulsePerMm * dRatioH;
    const auto usable = [](double dRatio, double dStep) {
        return dRatio > 0.0 && std::isfinite(dRatio) && std::isfinite(dStep);
    };
    if (!usable(dRatioW, dStepX) || !usable(dRatioH, dStepY)) {
        ILog_WriteLogF(1, "XY step calibration not applied: the ratios (X %g, Y %g) must be positive numbers "
                          "that give finite steps; both steps are unchanged.", dRatioW, dRatioH);
        return;
    }
    m_workParams.motor[0].pulsePerMm = dStepX;
    m_workParams.motor[1].pulsePerMm = dStepY;
    std::copy(std::begin(m_workParams.motor), std::end(m_workParams.motor), std::begin(m_displayParams.motor));
    DataToCtrlSlot(true);
}

void DlgFactoryMgr::ResetCellEditors()
{
    CPropertyTable::ShowCellsAsText(ui->tableWidget_motor);
    CPropertyTable::ShowCellsAsText(ui->tableWidget_machine);
}

void DlgFactoryMgr::on_pushButton_clear_clicked()
{
    m_pSystemTab->Clear();
}

void DlgFactoryMgr::on_pushButton_mainboardUpgrade_clicked()
{
    m_pSystemTab->Upgrade(CFactoryMgrApp::TaskCardUpgrade);
}

void DlgFactoryMgr::on_pushButton_panelUpgrade_clicked()
{
    m_pSystemTab->Upgrade(CFactoryMgrApp::TaskPanelUpgrade);
}

void DlgFactoryMgr::ClearInvalidMarks()
{
    for (int nTable = FactoryParamKey::TableMotor; nTable <= FactoryParamKey::TableMachine; ++nTable) {
        QTableWidget* pTable = PropertyTable(nTable);
        for (int r = 0; r < pTable->rowCount(); ++r)
            for (int c = 1; c < pTable->columnCount(); ++c)
                CPropertyTable::ClearMark(pTable, r, c);
        pTable->viewport()->update();
    }
}

QTableWidget* DlgFactoryMgr::PropertyTable(int nTable) const
{
    switch (nTable) {
    case FactoryParamKey::TableMotor: return ui->tableWidget_motor;
    case FactoryParamKey::TableLaser: return ui->tableWidget_laser;
    case FactoryParamKey::TableSpeed: return ui->tableWidget_speed;
    case FactoryParamKey::TableMachine: return ui->tableWidget_machine;
    default: return nullptr;
    }
}

void DlgFactoryMgr::MarkInvalidCell(int nTableKind, int nRow, int nColumn, double dValue)
{
    QTableWidget* pTable = PropertyTable(nTableKind);
    if (!pTable)
        return;
    const auto table = FactoryParamKey::Table(nTableKind);
    const bool bLaser = table == FactoryParamKey::TableLaser;
    // The Motor and Laser tables have a column per axis or laser; the others
    // store the value whatever column they are given.
    const FactoryParamKey* pKey = FactoryParamKey::AtCell(
        table, bLaser ? m_pLaserTab->RowId(nRow) : nRow,
        table == FactoryParamKey::TableMotor || bLaser ? nColumn : 1);
    const bool bList = pKey && pKey->editor == FactoryParamKey::EditorList;
    // A cell that shows no field is marked in the Laser table only; a Motor
    // list is never marked, a Laser list marked without taking the value.
    if ((!pKey && !bLaser) || (bList && table == FactoryParamKey::TableMotor))
        return;
    if (pKey && !(bList && bLaser)) {
        // The value comes as the record keeps it; whole-number fields take it
        // truncated, within their range.
        pKey->SetValue(m_displayParams, pKey->type == FactoryParamKey::TypeInt ? CPropertyTable::ToInt(dValue) : dValue);
        // A list shows the put-back choice (a list's field holds a whole number).
        ComboBox* pCell = bList ? CPropertyTable::Cell(pTable, nRow, nColumn) : nullptr;
        const int nChoice = bList ? int(pKey->Value(m_displayParams)) : -1;
        if (pCell && pCell->comboBox() && nChoice >= 0) {
            const QSignalBlocker block(pCell->comboBox());
            pCell->setCurrentIndex(nChoice);
        }
    }
    CPropertyTable::MarkCell(pTable, nRow, nColumn,
                             FactoryParamKey::Fixed2(pKey && !bList ? pKey->ToShown(dValue) : dValue));
    pTable->viewport()->update();
}

void DlgFactoryMgr::on_tableWidget_motor_clicked(const QModelIndex& index)
{
    m_pMotorTab->Clicked(index);
}

void DlgFactoryMgr::on_MotorSelchangeComboValue(int nIndex)
{
    m_pMotorTab->ComboChanged(sender(), nIndex);
}

void DlgFactoryMgr::on_MotorKillfocusEditValue()
{
    m_pMotorTab->EditFinished();
}

void DlgFactoryMgr::on_radioButton_laserSingle_toggled(bool checked)
{
    ILog_WriteLogF(0, "radioButton_laserSingle was toggled.");
    if (checked)
        m_pLaserTab->SetCount(1);
}

void DlgFactoryMgr::on_radioButton_laserDouble_toggled(bool checked)
{
    ILog_WriteLogF(0, "radioButton_laserTubeGlass was toggled.");
    if (checked)
        m_pLaserTab->SetCount(2);
}

void DlgFactoryMgr::on_radioButton_tubeSingle_toggled(bool checked)
{
    ILog_WriteLogF(0, "radioButton_tubeSingle was toggled.");
    if (checked)
        m_pLaserTab->SetCount(1);
}

void DlgFactoryMgr::on_radioButton_tubeDouble_toggled(bool checked)
{
    ILog_WriteLogF(0, "radioButton_tubeDouble was toggled.");
    if (checked)
        m_pLaserTab->SetCount(2);
}

void DlgFactoryMgr::on_tableWidget_laser_clicked(const QModelIndex& index)
{
    m_pLaserTab->Clicked(index);
}

void DlgFactoryMgr::SelectLaserCell(int nRow, int nColumn)
{
    m_pLaserTab->SelectCell(nRow, nColumn);
}

void DlgFactoryMgr::on_LaserSelchangeComboValue(int nIndex)
{
    m_pLaserTab->ComboChanged(nIndex);
}

void DlgFactoryMgr::on_LaserKillfocusEditValue()
{
    m_pLaserTab->EditFinished();
}

void DlgFactoryMgr::on_tableWidget_machine_clicked(const QModelIndex& index)
{
    m_pMachineTab->Clicked(index);
}

void DlgFactoryMgr::on_MachineSelchangeComboValue(int nIndex)
{
    m_pMachineTab->ComboChanged(nIndex);
}

void DlgFactoryMgr::on_MachineKillfocusEditValue()
{
    m_pMachineTab->EditFinished();
}

void DlgFactoryMgr::on_tableWidget_speed_clicked(const QModelIndex& index)
{
    m_pSpeedTab->Clicked(index);
}

void DlgFactoryMgr::on_SpeedKillfocusEditValue()
{
    m_pSpeedTab->EditFinished();
}

int DlgFactoryMgr::RunTask(int nTask, void* pParam)
{
    Q_UNUSED(pParam)
    switch (nTask) {
    case TaskReadFromDevice: return CFactoryMgrApp::GetInstance()->ReadFactoryParams(&m_workParams);
    case TaskWriteToDevice: return CFactoryMgrApp::GetInstance()->WriteFactoryParams(&m_workParams);
    default: return 0;
    }
}

void DlgFactoryMgr::on_tabWidget_currentChanged(int index)
{
    ILog_WriteLogF(0, "tabWidget was changed.");
    QWidget* pPage = ui->tabWidget->widget(index);
    if (pPage == ui->tab_theme && !m_bHomepageFilled) {
        m_bHomepageFilled = true;
        CThemeTab::Fill(ui->tableWidget_customHomepage, m_pResolution);
    } else if (pPage == ui->tab_2) {
        m_pSystemTab->Shown();
    }
}

void DlgFactoryMgr::on_pushButton_correctXyStep_clicked()
{
    emit CorrectXyStepSignal();
}

void DlgFactoryMgr::on_pushButton_read_clicked()
{
    emit ReadCurParamsFromDeviceSignal();
}

void DlgFactoryMgr::on_pushButton_upload_clicked()
{
    emit UploadCurParamsToDeviceSignal();
}

void DlgFactoryMgr::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        // Closing runs the host's handlers, which may ask in a box of their
        // own and delete this dialog meanwhile.
        const QPointer<DlgFactoryMgr> pAlive(this);
        close();
        if (!pAlive)
            return;
        // The host embeds the dialog three widget levels deep; its window goes too.
        QWidget* pAncestor = parentWidget();
        for (int i = 1; i < 3 && pAncestor; ++i)
            pAncestor = pAncestor->parentWidget();
        if (pAncestor)
            pAncestor->close();
        if (!pAlive)
            return;
    }
    BaseDialog::keyPressEvent(event);
}

void DlgFactoryMgr::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange) {
        RetranslateTexts();
        FillAllTables();
        return;
    }
    BaseDialog::changeEvent(event);
}
