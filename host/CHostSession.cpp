#include "CHostSession.h"

#include "CDeviceRecorder.h"
#include "CHostPaths.h"
#include "CHostSettings.h"
#include "CParamDiff.h"
#include "CPatternConverter.h"
#include "CRestoreDialog.h"
#include "CSettingsWindow.h"
#include "CSimController.h"
#include "CTranslator.h"
#include "CUploadReport.h"
#include "CUiPermissionsManager.h"
#include "FactoryParams.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>

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

// When the plug-in's parameter file was last written, to tell whether a save
// took place; invalid while there is no file.
QDateTime ParameterFileWritten()
{
    return QFileInfo(CHostSession::ParameterFile()).lastModified();
}
}

CHostSession::CHostSession(QWidget* pWindow)
    : QObject(pWindow)
    , m_pWindow(pWindow)
{
    setObjectName(QStringLiteral("hostSession"));
    m_pSim = new CSimController(UserDataDirectory() + "/Sim/controller.ini", this);
    connect(m_pSim, &CSimController::JobCut, this, &CHostSession::OnJobCut, Qt::QueuedConnection);
    m_pRecorder = new CDeviceRecorder(m_pSim, this);
    m_pRecorder->SetBackupFile(ParameterFile());
    m_nUnit = CHostSettings::Unit();
}

CHostSession::~CHostSession()
{
    delete m_pSettings;
}

QString CHostSession::ParameterFile()
{
    return UserDataDirectory() + "/Data/FactoryParam.ini";
}

bool CHostSession::Start(const QString& strPlugin)
{
    if (!m_plugin.Load(strPlugin.isEmpty() ? QCoreApplication::applicationDirPath() + "/libFactoryMgr.so" : strPlugin))
        return false;
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
    return true;
}

QString CHostSession::ErrorString() const
{
    return m_plugin.ErrorString();
}

IFactoryMgr* CHostSession::Mgr() const
{
    return m_plugin.Mgr();
}

CSettingsWindow* CHostSession::SettingsWindow() const
{
    return m_pSettings;
}

QDialog* CHostSession::Dialog() const
{
    return m_pDialog;
}

QWidget* CHostSession::BoxParent() const
{
    return m_pSettings ? static_cast<QWidget*>(m_pSettings) : m_pWindow;
}

void CHostSession::Report(const QString& strText)
{
    emit Reported(strText);
}

void CHostSession::OpenSettings()
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

QDialog* CHostSession::TakeSettingsDialog()
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

void CHostSession::CloseSettings()
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

void CHostSession::ReadFromController()
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

void CHostSession::UploadToController()
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

QStringList CHostSession::PutBackLines(const FactoryParams& sent, const FactoryParams& kept)
{
    FactoryParams putBack;
    Mgr()->GetFactoryParams(&putBack);
    return CUploadReport::PutBackLines(sent, kept, putBack);
}

void CHostSession::RestoreRecord(const FactoryParams& params)
{
    Mgr()->SetFactoryParams(&params);
    if (m_pDialog)
        QMetaObject::invokeMethod(m_pDialog, "DataToCtrlSlot", Q_ARG(bool, true));
}

bool CHostSession::Save(bool bFromDialog)
{
    const QDateTime before = ParameterFileWritten();
    Mgr()->SaveToFile(bFromDialog);
    const QDateTime after = ParameterFileWritten();
    return after.isValid() && after != before;
}

void CHostSession::RestoreParameters()
{
    IFactoryMgr* pMgr = Mgr();
    if (!pMgr || !AskBeforeLosingEdits(Wording("Restore a backup over them?"), false))
        return;
    FactoryParams current;
    pMgr->GetFactoryParams(&current);
    CRestoreDialog dialog(ParameterFile(), current, m_pWindow);
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

void CHostSession::CalibrateXyStep()
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
                    QMessageBox::Yes | QMessageBox::No, BoxParent());
    box.setObjectName(QStringLiteral("uploadStepsBox"));
    box.button(QMessageBox::Yes)->setText(Wording("Upload"));
    box.button(QMessageBox::No)->setText(Wording("Later"));
    if (box.exec() == QMessageBox::Yes)
        UploadToController();
}

bool CHostSession::UploadPendingStepsFirst()
{
    if (!m_bStepsPending)
        return true;
    // The controller still cuts with its old steps: measured against them, a
    // new cut would correct the corrected steps once more.
    QMessageBox box(QMessageBox::Warning, Wording("Calibrate XY Step"),
                    Wording("The steps corrected by the last calibration are not on the controller yet. It still "
                            "cuts with its old steps, so a new calibration would correct the steps twice.")
                        + "\n\n" + Wording("Upload the corrected steps before cutting again?"),
                    QMessageBox::Yes | QMessageBox::Cancel, BoxParent());
    box.setObjectName(QStringLiteral("pendingStepsBox"));
    box.button(QMessageBox::Yes)->setText(Wording("Upload"));
    if (box.exec() != QMessageBox::Yes) {
        Report(Wording("Calibration cancelled: the corrected steps are not uploaded yet."));
        return false;
    }
    UploadToController();
    return !m_bStepsPending;
}

void CHostSession::OnStepRatios(double dRatioW, double dRatioH)
{
    m_dRatioW = dRatioW;
    m_dRatioH = dRatioH;
    m_bRatiosArrived = true;
}

void CHostSession::OnJobCut(double dWidth, double dHeight)
{
    // In the unit the wizard asks in.
    const bool bInch = m_nUnit == 0 || m_nUnit == 2;
    const double dScale = bInch ? 1.0 / 25.4 : 1.0;
    const QString strUnit = bInch ? Wording("in") : Wording("mm");
    Report(Wording("The machine cut the calibration square at %1 %3 x %2 %3. Enter these as the measured width and height.")
               .arg(dWidth * dScale, 0, 'f', 2)
               .arg(dHeight * dScale, 0, 'f', 2)
               .arg(strUnit));
}

void CHostSession::ImportParameters()
{
    if (!m_pSettings)
        OpenSettings();
    Mgr()->ImportParams(m_pSettings);
    // An import goes into the record, not to the controller.
    m_bNotUploaded = true;
}

void CHostSession::ExportParameters()
{
    if (!m_pSettings)
        OpenSettings();
    Mgr()->ExportParams(m_pSettings);
}

void CHostSession::SaveParameters()
{
    const bool bEdited = IsDialogEdited();
    const bool bSaved = Save(m_pSettings != nullptr);
    m_bNotUploaded = m_bNotUploaded || (bSaved && bEdited);
    Report(bSaved ? Wording("The parameters are saved.") : Wording("The parameter file could not be saved."));
}

bool CHostSession::IsDialogEdited() const
{
    bool bEdited = false;
    if (m_pDialog)
        QMetaObject::invokeMethod(m_pDialog, "IsEdited", Q_RETURN_ARG(bool, bEdited));
    return bEdited;
}

bool CHostSession::AskBeforeLosingEdits(const QString& strWhat, bool bNotUploadedToo)
{
    const bool bEdited = IsDialogEdited();
    if ((!bEdited && !(bNotUploadedToo && (m_bNotUploaded || m_bStepsPending))) || m_bAsking)
        return true;
    m_bAsking = true;
    QMessageBox box(QMessageBox::Warning, Wording("Machine Settings"),
                    (bEdited ? Wording("The machine settings have changes that are not saved.")
                             : Wording("The machine settings are saved, but not uploaded to the controller."))
                        + "\n\n" + strWhat,
                    QMessageBox::NoButton, BoxParent());
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

bool CHostSession::eventFilter(QObject* pWatched, QEvent* event)
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
    return QObject::eventFilter(pWatched, event);
}

void CHostSession::ReloadParameters()
{
    // The plug-in reloads only into a settings dialog it keeps.
    if (!m_pDialog) {
        Report(Wording("Nothing was reloaded: open the machine settings first."));
        return;
    }
    Mgr()->ReloadFromFile();
    Report(Wording("The parameters were reloaded from the parameter file."));
}

void CHostSession::SetUnit(int nUnit)
{
    m_nUnit = nUnit;
    if (IFactoryMgr* pMgr = Mgr())
        pMgr->SetUnit(nUnit);
    CHostSettings::SetUnit(nUnit);
}

bool CHostSession::AskBeforeQuit()
{
    // An open settings window asks as it closes; otherwise the host asks here.
    const bool bSettingsOpen = m_pSettings && m_pSettings->isVisible();
    return bSettingsOpen ? m_pSettings->close() : AskBeforeLosingEdits(Wording("Quit anyway?"));
}
