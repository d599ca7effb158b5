#include "CHostWindow.h"

#include "CActivityPanel.h"
#include "CDeviceRecorder.h"
#include "CHostPaths.h"
#include "CParamDiff.h"
#include "CPatternConverter.h"
#include "CRestoreDialog.h"
#include "CSettingsWindow.h"
#include "CSimController.h"
#include "CTranslator.h"
#include "CUploadReport.h"
#include "CUiPermissionsManager.h"
#include "FactoryParams.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QTabWidget>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <cstring>

namespace {
QString Wording(const char* szText)
{
    return CTranslator::GetInstance()->GetWording(QString::fromUtf8(szText));
}

QString UserDataDirectory()
{
    return CHostPaths::UserDataDirectory(CUiPermissionsManager::GetInstance()->GetThemeName());
}

// The plug-in's parameter file at its default place.
QString ParameterFile()
{
    return UserDataDirectory() + "/Data/FactoryParam.ini";
}

// When the plug-in's parameter file was last written, to tell whether a save
// took place; invalid while there is no file.
QDateTime ParameterFileWritten()
{
    return QFileInfo(ParameterFile()).lastModified();
}
}

CHostWindow::CHostWindow(QWidget* parent)
    : QMainWindow(parent)
{
    setObjectName(QStringLiteral("hostWindow"));
    m_pSim = new CSimController(UserDataDirectory() + "/Sim/controller.ini", this);
    connect(m_pSim, &CSimController::StateChanged, this, &CHostWindow::RefreshStatus, Qt::QueuedConnection);
    connect(m_pSim, &CSimController::JobCut, this, &CHostWindow::OnJobCut, Qt::QueuedConnection);
    m_pRecorder = new CDeviceRecorder(m_pSim, this);
    m_pRecorder->SetBackupFile(ParameterFile());
    m_pActivity = new CActivityPanel(this);
    addDockWidget(Qt::BottomDockWidgetArea, m_pActivity);
    connect(m_pRecorder, &CDeviceRecorder::Called, m_pActivity, &CActivityPanel::AddDeviceCall, Qt::DirectConnection);

    auto* pCentral = new QWidget(this);
    pCentral->setObjectName(QStringLiteral("homePage"));
    auto* pLayout = new QVBoxLayout(pCentral);
    m_pStatus = new QLabel(pCentral);
    m_pStatus->setObjectName(QStringLiteral("label_status"));
    m_pStatus->setTextFormat(Qt::PlainText);
    m_pReport = new QLabel(pCentral);
    m_pReport->setObjectName(QStringLiteral("label_report"));
    m_pReport->setWordWrap(true);
    m_pOpenButton = new QPushButton(pCentral);
    m_pOpenButton->setObjectName(QStringLiteral("pushButton_openSettings"));
    m_pCalibrateButton = new QPushButton(pCentral);
    m_pCalibrateButton->setObjectName(QStringLiteral("pushButton_calibrate"));
    pLayout->addWidget(m_pStatus);
    pLayout->addWidget(m_pOpenButton);
    pLayout->addWidget(m_pCalibrateButton);
    pLayout->addWidget(m_pReport);
    pLayout->addStretch();
    setCentralWidget(pCentral);
    connect(m_pOpenButton, &QPushButton::clicked, this, &CHostWindow::OpenSettings);
    connect(m_pCalibrateButton, &QPushButton::clicked, this, &CHostWindow::CalibrateXyStep);

    BuildMenus();
    const QSettings host(HostSettingsPath(), QSettings::IniFormat);
    m_nUnit = host.value("HOST/UNIT", 1).toInt();
    CTranslator::GetInstance()->SetLanguage(host.value("HOST/LANGUAGE", "en").toString());
    RetranslateUi();
    resize(900, 640);
    // Where the person left the window, and its panel, last time.
    restoreGeometry(host.value("HOST/GEOMETRY").toByteArray());
    restoreState(host.value("HOST/STATE").toByteArray());
}

CHostWindow::~CHostWindow()
{
    delete m_pSettings;
}

QString CHostWindow::HostSettingsPath() const
{
    return UserDataDirectory() + "/Data/Host.ini";
}

bool CHostWindow::Start(const QString& strPlugin)
{
    if (!m_plugin.Load(strPlugin.isEmpty() ? QCoreApplication::applicationDirPath() + "/libFactoryMgr.so" : strPlugin)) {
        QMessageBox::critical(this, Wording("Error"), m_plugin.ErrorString());
        return false;
    }
    IFactoryMgr* pMgr = m_plugin.Mgr();
    pMgr->Init(m_pRecorder, &m_notifier);
    pMgr->SetUnit(m_nUnit);
    pMgr->SetFactoryFlag(true);
    // The wizard, made by Init, hands its ratios to the plug-in's settings
    // dialog; the host listens too, to put them into the record it keeps.
    for (QWidget* pWidget : QApplication::topLevelWidgets())
        if (QByteArray(pWidget->metaObject()->className()) == "CDlgCalibrateXyStep")
            connect(pWidget, SIGNAL(CalibrateXyStepSignal(double, double)), this, SLOT(OnStepRatios(double, double)),
                    Qt::UniqueConnection);
    RefreshStatus();
    return true;
}

CSimController* CHostWindow::Simulator() const
{
    return m_pSim;
}

IFactoryMgr* CHostWindow::Mgr() const
{
    return m_plugin.Mgr();
}

CSettingsWindow* CHostWindow::SettingsWindow() const
{
    return m_pSettings;
}

const CHostNotifier& CHostWindow::Notifier() const
{
    return m_notifier;
}

void CHostWindow::BuildMenus()
{
    const auto addAction = [this](QMenu* pMenu, const char* szText, const char* szName, auto slot) {
        QAction* pAction = pMenu->addAction(QString());
        pAction->setObjectName(QString::fromLatin1(szName));
        m_actions << qMakePair(pAction, szText);
        connect(pAction, &QAction::triggered, this, slot);
        return pAction;
    };
    const auto addMenu = [this](QMenu* pParent, const char* szText, const char* szName) {
        QMenu* pMenu = pParent ? pParent->addMenu(QString()) : menuBar()->addMenu(QString());
        pMenu->setObjectName(QString::fromLatin1(szName));
        m_menus << qMakePair(pMenu, szText);
        return pMenu;
    };

    QMenu* pFile = addMenu(nullptr, "&File", "menu_file");
    addAction(pFile, "Machine Settings...", "action_openSettings", &CHostWindow::OpenSettings)->setShortcut(Qt::CTRL | Qt::Key_M);
    pFile->addSeparator();
    addAction(pFile, "Import Parameters...", "action_import", &CHostWindow::ImportParameters);
    addAction(pFile, "Export Parameters...", "action_export", &CHostWindow::ExportParameters);
    addAction(pFile, "Save Parameters", "action_save", &CHostWindow::SaveParameters)->setShortcut(QKeySequence::Save);
    addAction(pFile, "Reload Parameters", "action_reload", &CHostWindow::ReloadParameters);
    addAction(pFile, "Restore...", "action_restore", &CHostWindow::RestoreParameters);
    pFile->addSeparator();
    addAction(pFile, "Quit", "action_quit", &QWidget::close)->setShortcut(QKeySequence::Quit);

    QMenu* pTools = addMenu(nullptr, "&Tools", "menu_tools");
    addAction(pTools, "Calibrate XY Step...", "action_calibrate", &CHostWindow::CalibrateXyStep);

    QMenu* pView = addMenu(nullptr, "&View", "menu_view");
    QAction* pActivity = m_pActivity->toggleViewAction();
    pActivity->setObjectName(QStringLiteral("action_activity"));
    pView->addAction(pActivity);
    QMenu* pUnits = addMenu(pView, "Display Unit", "menu_units");
    auto* pUnitGroup = new QActionGroup(this);
    m_pMillimetres = addAction(pUnits, "Millimetres", "action_millimetres", [this] { SetUnit(1); });
    m_pInches = addAction(pUnits, "Inches", "action_inches", [this] { SetUnit(0); });
    QMenu* pLanguage = addMenu(pView, "Language", "menu_language");
    auto* pLanguageGroup = new QActionGroup(this);
    m_pEnglish = addAction(pLanguage, "English", "action_english", [this] { SetLanguage("en"); });
    m_pChinese = addAction(pLanguage, "Simplified Chinese", "action_chinese", [this] { SetLanguage("zh_CN"); });
    for (QAction* pAction : {m_pMillimetres, m_pInches})
        pUnitGroup->addAction(pAction)->setCheckable(true);
    for (QAction* pAction : {m_pEnglish, m_pChinese})
        pLanguageGroup->addAction(pAction)->setCheckable(true);

    // Which home page entries the Theme tab offers depends on the theme's name
    // and edition; the choice holds for this run of the host.
    QMenu* pTheme = addMenu(pView, "Theme", "menu_theme");
    auto* pThemeGroup = new QActionGroup(this);
    const auto setTheme = [](const char* szName, const char* szVersion) {
        CUiPermissionsManager::GetInstance()->SetThemeOverride(QString::fromLatin1(szName), QString::fromLatin1(szVersion));
    };
    QAction* pQuorvane = addAction(pTheme, "Quorvane", "action_themeQuorvane", [=] { setTheme("Quorvane", "2.1"); });
    QAction* pGlobal = addAction(pTheme, "Quorvane Global", "action_themeQuorvaneGlobal",
                                 [=] { setTheme("Quorvane", "2.1 Global"); });
    QAction* pTessiflow = addAction(pTheme, "Tessiflow", "action_themeTessiflow", [=] { setTheme("Tessiflow", "1.0"); });
    for (QAction* pAction : {pQuorvane, pGlobal, pTessiflow})
        pThemeGroup->addAction(pAction)->setCheckable(true);
    const QString strTheme = CUiPermissionsManager::GetInstance()->GetThemeName();
    (strTheme != "Quorvane" ? pTessiflow
         : CUiPermissionsManager::GetInstance()->GetThemeVersion().contains("Global") ? pGlobal
                                                                                       : pQuorvane)
        ->setChecked(true);

    QMenu* pDevice = addMenu(nullptr, "&Device", "menu_device");
    m_pConnected = addAction(pDevice, "Connected", "action_connected", [this](bool b) { m_pSim->SetConnected(b); });
    m_pInformationOnly = addAction(pDevice, "Information Only (State 3)", "action_informationOnly",
                                   [this](bool b) { m_pSim->SetInformationOnly(b); });
    m_pBusy = addAction(pDevice, "Busy with a Job", "action_busy", [this](bool b) { m_pSim->SetBusy(b); });
    for (QAction* pAction : {m_pConnected, m_pInformationOnly, m_pBusy})
        pAction->setCheckable(true);
    // Faults a real controller has, made to happen once, on the next operation they concern.
    QMenu* pFaults = addMenu(pDevice, "Make a Fault Happen", "menu_faults");
    const QList<QPair<CSimController::Fault, const char*>> faults{
        {CSimController::FaultDropOnWrite, "Link Drops During the Next Write"},
        {CSimController::FaultDropOnRead, "Link Drops During the Next Read"},
        {CSimController::FaultDropOnUpgrade, "Link Drops During the Next Upgrade"},
        {CSimController::FaultDropOnCut, "Link Drops During the Next Cut"},
        {CSimController::FaultFlashError, "Flash Error on the Next Write"},
        {CSimController::FaultCorruptRead, "Garbled Value on the Next Read"},
        {CSimController::FaultNoAnswer, "No Answer for a While"}};
    for (const auto& fault : faults)
        addAction(pFaults, fault.second, qPrintable("action_fault_" + CSimController::FaultName(fault.first)),
                  [this, kind = fault.first] { m_pSim->ArmFault(kind); });
    QMenu* pCard = addMenu(pDevice, "Card Type", "menu_cardType");
    auto* pCardGroup = new QActionGroup(this);
    m_pCardType8 = addAction(pCard, "Type 8 (laser sources)", "action_cardType8", [this] { m_pSim->SetCardType(8); });
    m_pCardTypeOther = addAction(pCard, "Type 5 (laser tubes)", "action_cardType5", [this] { m_pSim->SetCardType(5); });
    for (QAction* pAction : {m_pCardType8, m_pCardTypeOther})
        pCardGroup->addAction(pAction)->setCheckable(true);

    QMenu* pHelp = addMenu(nullptr, "&Help", "menu_help");
    addAction(pHelp, "About", "action_about", &CHostWindow::ShowAbout);
}

QString CHostWindow::AboutText()
{
    return Wording("Quorvane Reference Host") + " " + QStringLiteral(FACTORYMGR_VERSION) + "\n\n"
        + Wording("The FactoryMgr plug-in on a simulated controller.") + "\n" + Wording("Qt %1").arg(qVersion());
}

void CHostWindow::ShowAbout()
{
    QMessageBox box(QMessageBox::Information, Wording("About"), AboutText(), QMessageBox::Ok, this);
    box.setObjectName(QStringLiteral("aboutBox"));
    box.exec();
}

void CHostWindow::RetranslateUi()
{
    setWindowTitle(Wording("Quorvane Reference Host"));
    for (const auto& menu : m_menus)
        menu.first->setTitle(Wording(menu.second));
    for (const auto& action : m_actions)
        action.first->setText(Wording(action.second));
    m_pOpenButton->setText(Wording("Machine Settings..."));
    m_pCalibrateButton->setText(Wording("Calibrate XY Step..."));
    RefreshStatus();
}

void CHostWindow::RefreshStatus()
{
    const bool bConnected = m_pSim->IsConnected();
    m_pConnected->setChecked(bConnected);
    m_pInformationOnly->setChecked(m_pSim->IsInformationOnly());
    m_pBusy->setChecked(m_pSim->IsBusy() != 0);
    (m_pSim->CardType() == 8 ? m_pCardType8 : m_pCardTypeOther)->setChecked(true);
    (m_nUnit == 0 || m_nUnit == 2 ? m_pInches : m_pMillimetres)->setChecked(true);
    (CTranslator::GetInstance()->GetLanguage() == "zh_CN" ? m_pChinese : m_pEnglish)->setChecked(true);

    const CardInfo info = m_pSim->Info();
    QStringList lines;
    lines << Wording("Simulated controller:") + " "
            + (!bConnected                    ? Wording("not connected")
                   : m_pSim->IsInformationOnly() ? Wording("connected, information only (state 3)")
                                                 : Wording("connected and ready (state 2)"))
            + (m_pSim->IsBusy() ? ", " + Wording("busy") : QString());
    lines << Wording("Card type:") + " " + QString::number(m_pSim->CardType());
    lines << Wording("Firmware Version") + ": " + QString::fromUtf8(info.firmwareVersion);
    lines << Wording("Panel Version") + ": " + QString::fromUtf8(info.panelVersion);
    const QSizeF cut = m_pSim->LastCut();
    if (!cut.isEmpty())
        lines << Wording("Last cut:") + QStringLiteral(" %1 mm x %2 mm").arg(cut.width(), 0, 'f', 2).arg(cut.height(), 0, 'f', 2);
    m_pStatus->setText(lines.join('\n'));
}

void CHostWindow::Report(const QString& strText)
{
    m_pReport->setText(strText);
    m_pActivity->AddReport(strText);
    emit Reported(strText);
}

void CHostWindow::OpenSettings()
{
    if (!Mgr())
        return;
    // A new dialog replaces the one with the edits.
    // (Saved values stay in the record: the new dialog shows them.)
    if (m_pDialog && !AskBeforeLosingEdits(Wording("Open new settings anyway?"), false))
        return;
    CloseSettings();
    if (QDialog* pDialog = TakeSettingsDialog()) {
        m_pSettings = new CSettingsWindow(pDialog);
        m_pSettings->installEventFilter(this);
        m_pSettings->show();
    }
}

QDialog* CHostWindow::TakeSettingsDialog()
{
    // Without the access file the plug-in says so in a box of its own and
    // hands over a dialog it does not keep: nothing to show, the host's to delete.
    const bool bAdmitted = QFileInfo::exists(CHostPaths::ResourceDirectory() + "/Data/FactoryPsw.ini");
    QDialog* pDialog = FactoryDialog(Mgr()->ShowFactoryDlg(&CPatternConverter::ConvertPattern));
    if (!bAdmitted) {
        delete pDialog;
        Report(Wording("The machine settings are not available on this computer: the access file is missing."));
        return nullptr;
    }
    if (!pDialog)
        return nullptr;
    m_pDialog = pDialog;
    connect(pDialog, SIGNAL(ReadCurParamsFromDeviceSignal()), this, SLOT(ReadFromController()));
    connect(pDialog, SIGNAL(UploadCurParamsToDeviceSignal()), this, SLOT(UploadToController()));
    connect(pDialog, SIGNAL(CorrectXyStepSignal()), this, SLOT(CalibrateXyStep()));
    return pDialog;
}

void CHostWindow::CloseSettings()
{
    if (!m_pSettings)
        return;
    m_pSettings->removeEventFilter(this);
    // The dialog belongs to the plug-in, which deletes it when it makes the
    // next one: take it out of the window before the window goes.
    if (m_pDialog) {
        m_pDialog->hide();
        m_pDialog->setParent(nullptr);
    }
    delete m_pSettings;
}

void CHostWindow::ReadFromController()
{
    IFactoryMgr* pMgr = Mgr();
    if (!AskBeforeLosingEdits(Wording("Read the controller's values over them?")))
        return;
    FactoryParams before;
    pMgr->GetFactoryParams(&before);
    const int nResult = pMgr->ReadParamsFromDevice();
    if (nResult != 0) {
        m_notifier.ShowErrorCode(nResult, 0);
        Report(Wording("Nothing was read: %1").arg(CHostNotifier::Describe(nResult)));
        return;
    }
    // The controller answers a second time, and the two answers must agree:
    // a value garbled on the line would otherwise go into the dialog and the
    // parameter file (which the plug-in writes on every read) as if it were true.
    FactoryParams read;
    pMgr->GetFactoryParams(&read);
    FactoryParams again;
    const int nAgain = m_pRecorder->ReadFactoryParams(&again);
    if (nAgain != 0 || std::memcmp(&read, &again, sizeof(FactoryParams)) != 0) {
        RestoreRecord(before);
        if (nAgain != 0)
            m_notifier.ShowErrorCode(nAgain, 0);
        Report(nAgain != 0 ? Wording("Nothing was read: %1").arg(CHostNotifier::Describe(nAgain))
                           : Wording("Nothing was read: the controller's answers did not agree, so a value was "
                                     "garbled on the way. Read again."));
        return;
    }
    // What the controller holds replaces any correction not yet uploaded.
    m_bStepsPending = false;
    m_bNotUploaded = false;
    // Into the open dialog, and into the parameter file.
    pMgr->SetFactoryParams(&read);
    if (m_pDialog)
        QMetaObject::invokeMethod(m_pDialog, "DataToCtrlSlot", Q_ARG(bool, true));
    Report(Wording("The parameters were read from the controller."));
}

void CHostWindow::UploadToController()
{
    IFactoryMgr* pMgr = Mgr();
    const int nResult = pMgr->UploadParamsToDevice();
    if (nResult != 0) {
        m_notifier.ShowErrorCode(nResult, 0);
        Report(Wording("The Upload failed: %1 Nothing was saved.").arg(CHostNotifier::Describe(nResult)));
        return;
    }
    m_bStepsPending = false;
    m_bNotUploaded = false;
    FactoryParams sent;
    pMgr->GetFactoryParams(&sent);
    // What the controller kept, read by the host itself: it tells the report
    // the kept values, and whether the check could read back at all.
    quint32 nFlags = 0;
    bool bKept = pMgr->CheckDeviceParams(&nFlags);
    FactoryParams kept;
    const int nKept = m_pRecorder->ReadFactoryParams(&kept);
    if (nKept != 0) {
        m_notifier.ShowErrorCode(nKept, 0);
        Report(Wording("The values were sent, but what the controller kept could not be read back: %1 "
                       "Nothing was saved.")
                   .arg(CHostNotifier::Describe(nKept)));
        return;
    }
    // A check that found differences where the controller holds every value
    // as sent read a garbled answer, and put garbled values into the dialog.
    // The values sent go back, and the check is made once more.
    QStringList lines = PutBackLines(sent, kept);
    const bool bGarbled = nFlags != 0 && lines.isEmpty();
    if (bGarbled) {
        RestoreRecord(sent);
        bKept = pMgr->CheckDeviceParams(&nFlags);
        lines = PutBackLines(sent, kept);
        if (nFlags != 0 && lines.isEmpty()) {
            RestoreRecord(sent);
            Report(Wording("The controller's answers did not agree twice, so the check cannot tell what it kept, and "
                           "its red marks cannot be trusted. The dialog and the parameter file hold the values sent. "
                           "Upload again to check them."));
            return;
        }
    }
    const QString strText = CUploadReport::Text(bKept, nFlags, lines, Save(true));
    Report(bGarbled ? Wording("The first answer to the check came garbled; the check was made again.") + "\n" + strText
                    : strText);
}

QStringList CHostWindow::PutBackLines(const FactoryParams& sent, const FactoryParams& kept)
{
    FactoryParams putBack;
    Mgr()->GetFactoryParams(&putBack);
    return CUploadReport::PutBackLines(sent, kept, putBack);
}

void CHostWindow::RestoreRecord(const FactoryParams& params)
{
    Mgr()->SetFactoryParams(&params);
    if (m_pDialog)
        QMetaObject::invokeMethod(m_pDialog, "DataToCtrlSlot", Q_ARG(bool, true));
}

bool CHostWindow::Save(bool bFromDialog)
{
    const QDateTime before = ParameterFileWritten();
    Mgr()->SaveToFile(bFromDialog);
    const QDateTime after = ParameterFileWritten();
    return after.isValid() && after != before;
}

void CHostWindow::RestoreParameters()
{
    IFactoryMgr* pMgr = Mgr();
    if (!pMgr || !AskBeforeLosingEdits(Wording("Restore a backup over them?"), false))
        return;
    FactoryParams current;
    pMgr->GetFactoryParams(&current);
    CRestoreDialog dialog(ParameterFile(), current, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const qsizetype nChanges = CParamDiff::Compare(current, dialog.Record()).size();
    // Through the plug-in: the record, the parameter file (whose current
    // content goes to the backups first) and the open dialog.
    RestoreRecord(dialog.Record());
    m_bStepsPending = false;
    m_bNotUploaded = nChanges > 0 || m_bNotUploaded;
    Report(Wording("Restored %1: %2 value(s) changed. They are saved, and go to the controller with the next Upload.")
               .arg(dialog.ChosenText())
               .arg(nChanges));
}

void CHostWindow::CalibrateXyStep()
{
    IFactoryMgr* pMgr = Mgr();
    if (!pMgr || !UploadPendingStepsFirst())
        return;
    // The plug-in takes the host's pattern converter, and hands the wizard's
    // result on, only with a settings dialog: one is made, unseen, if none is open.
    if (!m_pDialog && !TakeSettingsDialog())
        return;
    FactoryParams before;
    pMgr->GetFactoryParams(&before);
    m_bRatiosArrived = false;
    pMgr->ShowCalibrateXyStepDlg();
    if (!m_bRatiosArrived)
        return;
    m_bRatiosArrived = false;

    // Into the record and the parameter file, whatever becomes of the dialog.
    FactoryParams corrected = before;
    corrected.motor[0].pulsePerMm *= m_dRatioW;
    corrected.motor[1].pulsePerMm *= m_dRatioH;
    pMgr->SetFactoryParams(&corrected);
    m_bStepsPending = true;
    const QString strSteps = Wording("The X step changes from %1 to %2, the Y step from %3 to %4.")
                                 .arg(before.motor[0].pulsePerMm, 0, 'f', 5)
                                 .arg(corrected.motor[0].pulsePerMm, 0, 'f', 5)
                                 .arg(before.motor[1].pulsePerMm, 0, 'f', 5)
                                 .arg(corrected.motor[1].pulsePerMm, 0, 'f', 5);
    Report(strSteps + " " + Wording("They are saved, and go to the controller with the next Upload."));
    QMessageBox box(QMessageBox::Question, Wording("Calibrate XY Step"),
                    strSteps + "\n\n" + Wording("Upload the corrected steps to the controller now?"),
                    QMessageBox::Yes | QMessageBox::No, this);
    box.setObjectName(QStringLiteral("uploadStepsBox"));
    box.button(QMessageBox::Yes)->setText(Wording("Upload"));
    box.button(QMessageBox::No)->setText(Wording("Later"));
    if (box.exec() == QMessageBox::Yes)
        UploadToController();
}

bool CHostWindow::UploadPendingStepsFirst()
{
    if (!m_bStepsPending)
        return true;
    // The controller still cuts with its old steps: measured against them, a
    // new cut would correct the corrected steps once more.
    QMessageBox box(QMessageBox::Warning, Wording("Calibrate XY Step"),
                    Wording("The steps corrected by the last calibration are not on the controller yet. It still "
                            "cuts with its old steps, so a new calibration would correct the steps twice.")
                        + "\n\n" + Wording("Upload the corrected steps before cutting again?"),
                    QMessageBox::Yes | QMessageBox::Cancel, this);
    box.setObjectName(QStringLiteral("pendingStepsBox"));
    box.button(QMessageBox::Yes)->setText(Wording("Upload"));
    if (box.exec() != QMessageBox::Yes) {
        Report(Wording("Calibration cancelled: the corrected steps are not uploaded yet."));
        return false;
    }
    UploadToController();
    return !m_bStepsPending;
}

void CHostWindow::OnStepRatios(double dRatioW, double dRatioH)
{
    m_dRatioW = dRatioW;
    m_dRatioH = dRatioH;
    m_bRatiosArrived = true;
}

void CHostWindow::OnJobCut(double dWidth, double dHeight)
{
    RefreshStatus();
    // In the unit the wizard asks in.
    const bool bInch = m_nUnit == 0 || m_nUnit == 2;
    const double dScale = bInch ? 1.0 / 25.4 : 1.0;
    const QString strUnit = bInch ? Wording("in") : Wording("mm");
    Report(Wording("The machine cut the calibration square at %1 %3 x %2 %3. Enter these as the measured width and height.")
               .arg(dWidth * dScale, 0, 'f', 2)
               .arg(dHeight * dScale, 0, 'f', 2)
               .arg(strUnit));
}

void CHostWindow::ImportParameters()
{
    if (!m_pSettings)
        OpenSettings();
    Mgr()->ImportParams(m_pSettings);
    // An import goes into the record, not to the controller.
    m_bNotUploaded = true;
}

void CHostWindow::ExportParameters()
{
    if (!m_pSettings)
        OpenSettings();
    Mgr()->ExportParams(m_pSettings);
}

void CHostWindow::SaveParameters()
{
    const bool bEdited = IsDialogEdited();
    const bool bSaved = Save(m_pSettings != nullptr);
    m_bNotUploaded = m_bNotUploaded || (bSaved && bEdited);
    Report(bSaved ? Wording("The parameters are saved.") : Wording("The parameter file could not be saved."));
}

bool CHostWindow::IsDialogEdited() const
{
    bool bEdited = false;
    if (m_pDialog)
        QMetaObject::invokeMethod(m_pDialog, "IsEdited", Q_RETURN_ARG(bool, bEdited));
    return bEdited;
}

bool CHostWindow::AskBeforeLosingEdits(const QString& strWhat, bool bNotUploadedToo)
{
    const bool bEdited = IsDialogEdited();
    if ((!bEdited && !(bNotUploadedToo && (m_bNotUploaded || m_bStepsPending))) || m_bAsking)
        return true;
    m_bAsking = true;
    QMessageBox box(QMessageBox::Warning, Wording("Machine Settings"),
                    (bEdited ? Wording("The machine settings have changes that are not saved.")
                             : Wording("The machine settings are saved, but not uploaded to the controller."))
                        + "\n\n" + strWhat,
                    QMessageBox::NoButton, m_pSettings ? static_cast<QWidget*>(m_pSettings) : this);
    box.setObjectName(QStringLiteral("unsavedBox"));
    QPushButton* pSave = bEdited ? box.addButton(Wording("Save"), QMessageBox::AcceptRole) : nullptr;
    QPushButton* pUpload = box.addButton(Wording("Upload"), QMessageBox::AcceptRole);
    QPushButton* pDiscard = box.addButton(Wording("Discard"), QMessageBox::DestructiveRole);
    QPushButton* pCancel = box.addButton(Wording("Cancel"), QMessageBox::RejectRole);
    box.setDefaultButton(pCancel);
    box.exec();
    m_bAsking = false;
    QAbstractButton* pChosen = box.clickedButton();
    if (pChosen == pDiscard)
        return true;
    if (pSave && pChosen == pSave) {
        SaveParameters();
        return !IsDialogEdited();
    }
    if (pChosen == pUpload) {
        UploadToController();
        return !m_bNotUploaded && !m_bStepsPending && !IsDialogEdited();
    }
    return false;
}

bool CHostWindow::eventFilter(QObject* pWatched, QEvent* event)
{
    // Closing the settings window with edits: asked first; cancelled, the
    // window and its dialog stay (Escape in the dialog has hidden the dialog).
    // (The event's type first: while the window is destroyed it is no
    // CSettingsWindow any more, and the guarded pointer may not be read.)
    if (event->type() == QEvent::Close && pWatched == m_pSettings
        && !AskBeforeLosingEdits(Wording("Close the settings anyway?"))) {
        event->ignore();
        if (m_pDialog)
            m_pDialog->show();
        return true;
    }
    return QMainWindow::eventFilter(pWatched, event);
}

void CHostWindow::ReloadParameters()
{
    // The plug-in reloads only into a settings dialog it keeps.
    if (!m_pDialog) {
        Report(Wording("Nothing was reloaded: open the machine settings first."));
        return;
    }
    Mgr()->ReloadFromFile();
    Report(Wording("The parameters were reloaded from the parameter file."));
}

void CHostWindow::SetUnit(int nUnit)
{
    m_nUnit = nUnit;
    if (IFactoryMgr* pMgr = Mgr())
        pMgr->SetUnit(nUnit);
    QSettings(HostSettingsPath(), QSettings::IniFormat).setValue("HOST/UNIT", nUnit);
    RefreshStatus();
}

void CHostWindow::SetLanguage(const QString& strLanguage)
{
    CTranslator::GetInstance()->SetLanguage(strLanguage);
    QSettings(HostSettingsPath(), QSettings::IniFormat).setValue("HOST/LANGUAGE", CTranslator::GetInstance()->GetLanguage());
}

void CHostWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        RetranslateUi();
    QMainWindow::changeEvent(event);
}

void CHostWindow::closeEvent(QCloseEvent* event)
{
    // An open settings window asks as it closes; otherwise the host asks here.
    const bool bSettingsOpen = m_pSettings && m_pSettings->isVisible();
    if (bSettingsOpen ? !m_pSettings->close() : !AskBeforeLosingEdits(Wording("Quit anyway?"))) {
        event->ignore();
        return;
    }
    QSettings host(HostSettingsPath(), QSettings::IniFormat);
    host.setValue("HOST/GEOMETRY", saveGeometry());
    host.setValue("HOST/STATE", saveState());
    QMainWindow::closeEvent(event);
}

bool CHostWindow::SaveScreenshots(const QString& strDir)
{
    if (!QDir().mkpath(strDir))
        return false;
    show();
    QApplication::processEvents();
    bool bOk = grab().save(strDir + "/main-window.png");
    OpenSettings();
    if (!m_pSettings || !m_pDialog)
        return false;
    QApplication::processEvents();
    auto* pTabs = m_pDialog->findChild<QTabWidget*>(QStringLiteral("tabWidget"));
    for (int i = 0; pTabs && i < pTabs->count(); ++i) {
        pTabs->setCurrentIndex(i);
        QApplication::processEvents();
        bOk = m_pSettings->grab().save(QStringLiteral("%1/settings-%2.png").arg(strDir, pTabs->widget(i)->objectName()))
            && bOk;
    }
    bOk = SaveRefusedUploadScreenshot(strDir + "/settings-motor-refused.png") && bOk;
    // A fault handled, as the activity panel shows it: a read whose answer
    // came garbled is refused, and nothing is taken.
    m_pSim->ArmFault(CSimController::FaultCorruptRead);
    ReadFromController();
    QApplication::processEvents();
    bOk = grab().save(strDir + "/activity.png") && bOk;
    // The wizard runs modally: its pages are taken from inside its own run.
    bool bWizard = false;
    QTimer::singleShot(0, this, [&] {
        QWidget* pWizard = QApplication::activeModalWidget();
        auto* pNext = pWizard ? pWizard->findChild<QPushButton*>(QStringLiteral("pushButton_nextStep")) : nullptr;
        if (!pNext)
            return;
        QApplication::processEvents();
        bWizard = pWizard->grab().save(strDir + "/wizard-page1.png");
        pNext->click();
        QApplication::processEvents();
        bWizard = pWizard->grab().save(strDir + "/wizard-page2.png") && bWizard;
        pWizard->close();
    });
    CalibrateXyStep();
    // The backups the saves and Uploads above have kept, as File > Restore... lists them.
    FactoryParams current;
    Mgr()->GetFactoryParams(&current);
    CRestoreDialog restore(ParameterFile(), current, this);
    restore.show();
    // The first backup that differs from now, with its differences.
    if (auto* pList = restore.findChild<QTreeWidget*>(QStringLiteral("treeWidget_backups"))) {
        for (int i = 0; i < pList->topLevelItemCount(); ++i) {
            if (pList->topLevelItem(i)->text(2) != QLatin1String("0")) {
                pList->setCurrentItem(pList->topLevelItem(i));
                break;
            }
        }
    }
    QApplication::processEvents();
    bOk = restore.grab().save(strDir + "/restore.png") && bOk;
    return bOk && bWizard;
}

bool CHostWindow::SaveRefusedUploadScreenshot(const QString& strPath)
{
    IFactoryMgr* pMgr = Mgr();
    auto* pTabs = m_pDialog->findChild<QTabWidget*>(QStringLiteral("tabWidget"));
    auto* pMotor = m_pDialog->findChild<QWidget*>(QStringLiteral("tab"));
    auto* pUpload = m_pDialog->findChild<QPushButton*>(QStringLiteral("pushButton_upload"));
    FactoryParams record;
    FactoryParams device;
    if (!pTabs || !pMotor || !pUpload || pMgr->GetFactoryParams(&record) != 0 || m_pSim->ReadFactoryParams(&device) != 0)
        return false;

    // Two values beyond what the simulated machine can drive go into the
    // dialog, and its Upload button runs the host's Upload: the controller
    // keeps the nearest values it can take, and the plug-in's check marks the
    // two cells it did not keep.
    FactoryParams typed = record;
    typed.motor[0].speedMax = 1800.0;   // X takes at most 1,500 mm/s
    typed.motor[1].accMax = 45000.0;    // Y at most 30,000 mm/s²
    pMgr->SetFactoryParams(&typed);
    QMetaObject::invokeMethod(m_pDialog, "DataToCtrlSlot", Q_ARG(bool, true));
    pTabs->setCurrentWidget(pMotor);
    QApplication::processEvents();
    pUpload->click();
    QApplication::processEvents();
    const bool bRefused = m_pSim->LastLimitedCount() >= 2;
    const bool bSaved = m_pSettings && m_pSettings->grab().save(strPath);

    // The controller's flash, the record and the parameter file go back to
    // what they held, so that taking screenshots leaves no trace of this.
    m_pSim->WriteFactoryParams(&device);
    pMgr->SetFactoryParams(&record);
    if (m_pDialog)
        QMetaObject::invokeMethod(m_pDialog, "DataToCtrlSlot", Q_ARG(bool, true));
    return bRefused && bSaved;
}
