#include "CHostWindow.h"

#include "CActivityPanel.h"
#include "CDeviceRecorder.h"
#include "CDisplayUnit.h"
#include "CHostSession.h"
#include "CHostSettings.h"
#include "CParamAccount.h"
#include "CSimController.h"
#include "CTranslator.h"
#include "Wording.h"
#include "CUiPermissionsManager.h"
#include "HostRules.h"
#include "ILog.h"
#include "ScreenFit.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
// Switches the wording to strLanguage; a table that cannot be used is logged.
bool UseLanguage(const QString& strLanguage)
{
    if (CTranslator::GetInstance()->SetLanguage(strLanguage))
        return true;
    ILog_WriteLogF(1, "The wording table cannot be used: %s", qUtf8Printable(CTranslator::GetInstance()->Problem()));
    return false;
}
}

CHostWindow::CHostWindow(QWidget* parent)
    : QMainWindow(parent)
    , m_pSession(new CHostSession(this))
{
    setObjectName(QStringLiteral("hostWindow"));
    CSimController* pSim = m_pSession->Simulator();
    connect(pSim, &CSimController::StateChanged, this, &CHostWindow::RefreshStatus, Qt::QueuedConnection);
    connect(pSim, &CSimController::JobCut, this, &CHostWindow::RefreshStatus, Qt::QueuedConnection);
    connect(m_pSession, &CHostSession::Reported, this, &CHostWindow::ShowReport);
    connect(&m_pSession->Account(), &CParamAccount::Changed, this,
            [this] { m_pAccount->setText(m_pSession->Account().Sentence()); });
    m_pActivity = new CActivityPanel(this);
    addDockWidget(Qt::BottomDockWidgetArea, m_pActivity);
    connect(m_pSession->Recorder(), &CDeviceRecorder::Called, m_pActivity, &CActivityPanel::AddDeviceCall,
            Qt::DirectConnection);

    auto* pCentral = new QWidget(this);
    pCentral->setObjectName(QStringLiteral("homePage"));
    auto* pLayout = new QVBoxLayout(pCentral);
    m_pStatus = new QLabel(pCentral);
    m_pStatus->setObjectName(QStringLiteral("label_status"));
    m_pStatus->setTextFormat(Qt::PlainText);
    // The three places the parameters live, side by side, in one sentence.
    m_pAccount = new QLabel(pCentral);
    m_pAccount->setObjectName(QStringLiteral("label_account"));
    m_pAccount->setTextFormat(Qt::PlainText);
    m_pAccount->setWordWrap(true);
    m_pReport = new QLabel(pCentral);
    m_pReport->setObjectName(QStringLiteral("label_report"));
    m_pReport->setWordWrap(true);
    m_pOpenButton = new QPushButton(pCentral);
    m_pOpenButton->setObjectName(QStringLiteral("pushButton_openSettings"));
    m_pCalibrateButton = new QPushButton(pCentral);
    m_pCalibrateButton->setObjectName(QStringLiteral("pushButton_calibrate"));
    pLayout->addWidget(m_pStatus);
    pLayout->addWidget(m_pAccount);
    pLayout->addWidget(m_pOpenButton);
    pLayout->addWidget(m_pCalibrateButton);
    pLayout->addWidget(m_pReport);
    pLayout->addStretch();
    setCentralWidget(pCentral);
    connect(m_pOpenButton, &QPushButton::clicked, m_pSession, [this] { m_pSession->OpenSettings(); });
    connect(m_pCalibrateButton, &QPushButton::clicked, m_pSession, [this] { m_pSession->CalibrateXyStep(); });

    BuildMenus();
    UseLanguage(CHostSettings::Language());
    RetranslateUi();
    resize(900, 640);
    // Where the person left the window, and its panel, last time.
    restoreGeometry(CHostSettings::Geometry(QStringLiteral("main")));
    restoreState(CHostSettings::State());
    ScreenFit::Fit(this);
}

CHostWindow::~CHostWindow()
{
    // The session goes first, while this window can still take what it says
    // on its way out.
    delete m_pSession;
}

bool CHostWindow::Start(const QString& strPlugin)
{
    if (!m_pSession->Start(strPlugin)) {
        QMessageBox::critical(this, Wording("Error"), m_pSession->ErrorString());
        return false;
    }
    // What changes the factory parameters needs the access file, as the
    // settings do: without it the commands are off, and say why.
    const bool bAdmitted = CHostSession::IsAdmitted();
    for (const auto& [szName, szCommand] : {std::pair{"action_restore", "Restore"}, std::pair{"action_import", "Import"},
                                            std::pair{"action_calibrate", "Calibration"}}) {
        if (auto* pAction = findChild<QAction*>(QString::fromLatin1(szName))) {
            pAction->setEnabled(bAdmitted);
            const QString strWhy = bAdmitted ? QString() : CHostSession::NotAdmittedText(Wording(szCommand));
            pAction->setToolTip(strWhy);
            pAction->setStatusTip(strWhy);
        }
    }
    m_pCalibrateButton->setEnabled(bAdmitted);
    m_pCalibrateButton->setToolTip(bAdmitted ? QString() : CHostSession::NotAdmittedText(Wording("Calibration")));
    RefreshStatus();
    return true;
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
    // An item that is off says why where the pointer rests on it.
    pFile->setToolTipsVisible(true);
    addAction(pFile, "Machine Settings...", "action_openSettings", [this] { m_pSession->OpenSettings(); })->setShortcut(Qt::CTRL | Qt::Key_M);
    pFile->addSeparator();
    addAction(pFile, "Import Parameters...", "action_import", [this] { m_pSession->ImportParameters(); });
    addAction(pFile, "Export Parameters...", "action_export", [this] { m_pSession->ExportParameters(); });
    addAction(pFile, "Save Parameters", "action_save", [this] { m_pSession->SaveParameters(); })->setShortcut(QKeySequence::Save);
    addAction(pFile, "Reload Parameters", "action_reload", [this] { m_pSession->ReloadParameters(); });
    addAction(pFile, "Restore...", "action_restore", [this] { m_pSession->RestoreParameters(); });
    pFile->addSeparator();
    addAction(pFile, "Quit", "action_quit", [this] {
        // From the event loop, not inside the menu's action: the question
        // asked before quitting must not hold up whoever triggered it (an
        // assistive technology waits for the action's reply).
        QMetaObject::invokeMethod(this, &QWidget::close, Qt::QueuedConnection);
    })->setShortcut(QKeySequence::Quit);

    QMenu* pTools = addMenu(nullptr, "&Tools", "menu_tools");
    pTools->setToolTipsVisible(true);
    addAction(pTools, "Calibrate XY Step...", "action_calibrate", [this] { m_pSession->CalibrateXyStep(); });
    // The shortcuts work wherever the person is: in the settings window as in
    // this one (a modal box still keeps them to itself).
    for (const auto& action : std::as_const(m_actions))
        if (!action.first->shortcut().isEmpty())
            action.first->setShortcutContext(Qt::ApplicationShortcut);

    QMenu* pView = addMenu(nullptr, "&View", "menu_view");
    QAction* pActivity = m_pActivity->toggleViewAction();
    pActivity->setObjectName(QStringLiteral("action_activity"));
    pView->addAction(pActivity);
    QMenu* pUnits = addMenu(pView, "Display Unit", "menu_units");
    auto* pUnitGroup = new QActionGroup(this);
    m_pMillimetres = addAction(pUnits, "Millimetres", "action_millimetres", [this] { m_pSession->SetUnit(1); RefreshStatus(); });
    m_pInches = addAction(pUnits, "Inches", "action_inches", [this] { m_pSession->SetUnit(0); RefreshStatus(); });
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
    m_pConnected = addAction(pDevice, "Connected", "action_connected", [this](bool b) { m_pSession->SetConnected(b); });
    m_pInformationOnly = addAction(pDevice, "Information Only (State 3)", "action_informationOnly",
                                   [this](bool b) { m_pSession->Simulator()->SetInformationOnly(b); });
    m_pBusy = addAction(pDevice, "Busy with a Job", "action_busy", [this](bool b) { m_pSession->Simulator()->SetBusy(b); });
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
                  [this, kind = fault.first] { m_pSession->Simulator()->ArmFault(kind); });
    QMenu* pCard = addMenu(pDevice, "Card Type", "menu_cardType");
    auto* pCardGroup = new QActionGroup(this);
    m_pCardType8 = addAction(pCard, "Type 8 (laser sources)", "action_cardType8", [this] { m_pSession->Simulator()->SetCardType(8); });
    m_pCardTypeOther = addAction(pCard, "Type 5 (laser tubes)", "action_cardType5", [this] { m_pSession->Simulator()->SetCardType(5); });
    for (QAction* pAction : {m_pCardType8, m_pCardTypeOther})
        pCardGroup->addAction(pAction)->setCheckable(true);

    QMenu* pHelp = addMenu(nullptr, "&Help", "menu_help");
    addAction(pHelp, "About", "action_about", [this] { ShowAbout(); });
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
    m_pAccount->setText(m_pSession->Account().Sentence());
    RefreshStatus();
}

void CHostWindow::RefreshStatus()
{
    const bool bConnected = m_pSession->Simulator()->IsConnected();
    m_pConnected->setChecked(bConnected);
    m_pInformationOnly->setChecked(m_pSession->Simulator()->IsInformationOnly());
    m_pBusy->setChecked(m_pSession->Simulator()->IsBusy() != 0);
    (m_pSession->Simulator()->CardType() == 8 ? m_pCardType8 : m_pCardTypeOther)->setChecked(true);
    (HostRules::IsInch(m_pSession->Unit()) ? m_pInches : m_pMillimetres)->setChecked(true);
    (CTranslator::GetInstance()->GetLanguage() == "zh_CN" ? m_pChinese : m_pEnglish)->setChecked(true);

    const CardInfo info = m_pSession->Simulator()->Info();
    QStringList lines;
    lines << Wording("Simulated controller:") + " "
            + (!bConnected                    ? Wording("not connected")
                   : m_pSession->Simulator()->IsInformationOnly() ? Wording("connected, information only (state 3)")
                                                 : Wording("connected and ready (state 2)"))
            + (m_pSession->Simulator()->IsBusy() ? ", " + Wording("busy") : QString());
    lines << Wording("Card type:") + " " + QString::number(m_pSession->Simulator()->CardType());
    lines << Wording("Firmware Version") + ": " + QString::fromUtf8(info.firmwareVersion);
    lines << Wording("Panel Version") + ": " + QString::fromUtf8(info.panelVersion);
    const QSizeF cut = m_pSession->Simulator()->LastCut();
    if (!cut.isEmpty())
        lines << Wording("Last cut:")
                + QStringLiteral(" %1 %3 x %2 %3")
                      .arg(CDisplayUnit::Convert(cut.width(), QStringLiteral("mm"), m_pSession->Unit()), 0, 'f', 2)
                      .arg(CDisplayUnit::Convert(cut.height(), QStringLiteral("mm"), m_pSession->Unit()), 0, 'f', 2)
                      .arg(CDisplayUnit::Unit(QStringLiteral("mm"), m_pSession->Unit()));
    m_pStatus->setText(lines.join('\n'));
}

void CHostWindow::ShowReport(const QString& strText)
{
    m_pReport->setText(strText);
    m_pActivity->AddReport(strText);
}

void CHostWindow::SetLanguage(const QString& strLanguage)
{
    if (!UseLanguage(strLanguage))
        ShowReport(Wording("The language stays English: %1.").arg(CTranslator::GetInstance()->Problem()));
    CHostSettings::SetLanguage(CTranslator::GetInstance()->GetLanguage());
}

void CHostWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        RetranslateUi();
    QMainWindow::changeEvent(event);
}

void CHostWindow::closeEvent(QCloseEvent* event)
{
    // Not in the middle of a flow: the window closes once it has ended.
    if (m_pSession->IsBusy()) {
        event->ignore();
        connect(m_pSession, &CHostSession::Idle, this, &QWidget::close,
                static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
        return;
    }
    if (!m_pSession->AskBeforeQuit()) {
        event->ignore();
        return;
    }
    CHostSettings::SetGeometry(QStringLiteral("main"), saveGeometry());
    CHostSettings::SetState(saveState());
    QMainWindow::closeEvent(event);
}
