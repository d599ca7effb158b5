#include "CHostSession.h"

#include "CDeviceRecorder.h"
#include "CDisplayUnit.h"
#include "CHostPaths.h"
#include "CHostSettings.h"
#include "CParamDiff.h"
#include "CPatternConverter.h"
#include "CRestoreDialog.h"
#include "CSettingsFile.h"
#include "CSettingsWindow.h"
#include "CSimController.h"
#include "Wording.h"
#include "CUiPermissionsManager.h"
#include "CUploadReport.h"
#include "FactoryParamIo.h"
#include "FactoryParams.h"
#include "ILog.h"
#include "ScreenFit.h"
#include "ThreadDialogRun.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLineEdit>
#include <QLockFile>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QStorageInfo>
#include <QTimer>

#include <cstring>

namespace {
QString UserDataDirectory()
{
    return CHostPaths::UserDataDirectory(CUiPermissionsManager::GetInstance()->GetThemeName());
}

QDateTime Written(const QString& strPath)
{
    return QFileInfo(strPath).lastModified();
}

// Why the parameter file at strPath cannot be read; empty when it can (or is not there).
QString ReadProblem(const QString& strPath, ParamFileStatus status)
{
    const QFileInfo info(strPath);
    if (status == ParamFileStatus::Loaded || !info.exists())
        return QString();
    if (info.isDir())
        return Wording("a folder stands where the file belongs");
    if (!info.isFile())
        return Wording("it is not a regular file");
    if (!info.isReadable())
        return Wording("permission denied");
    if (status == ParamFileStatus::TooLarge)
        return Wording("it is larger than 1 MiB, so it is no parameter file");
    return Wording("it is not a parameter file (its marker is wrong)");
}

// Why a file could not be written at strPath, as far as the host can tell.
QString WriteProblem(const QString& strPath)
{
    const QFileInfo info(strPath);
    const QFileInfo folder(info.absolutePath());
    if (info.isDir())
        return Wording("a folder stands where the file belongs");
    if (!folder.isDir())
        return Wording("the folder %1 does not exist").arg(folder.absoluteFilePath());
    if (!folder.isWritable())
        return Wording("the folder %1 cannot be written").arg(folder.absoluteFilePath());
    if (info.exists() && !info.isWritable())
        return Wording("the file is read-only");
    const QStorageInfo storage(folder.absoluteFilePath());
    if (storage.isValid() && storage.bytesAvailable() < 64 * 1024)
        return Wording("the disk is full");
    return Wording("the write did not go through (the log says more)");
}

// Codes with which the controller refused before it took anything.
bool RefusedBeforeWriting(int nCode)
{
    return nCode == 1001 || nCode == 1005 || nCode == CSimController::CodeNotConnected;
}
}

CHostSession::Busy::Busy(CHostSession& session)
    : m_session(session)
{
    ++m_session.m_nBusy;
}

CHostSession::Busy::~Busy()
{
    if (--m_session.m_nBusy == 0)
        emit m_session.Idle();
}

CHostSession::CHostSession(QWidget* pWindow)
    : QObject(pWindow)
    , m_pWindow(pWindow)
{
    setObjectName(QStringLiteral("hostSession"));
    m_pSim = new CSimController(UserDataDirectory() + "/Sim/controller.ini", this);
    LogUnreadableFiles();
    connect(m_pSim, &CSimController::JobCut, this, &CHostSession::OnJobCut, Qt::QueuedConnection);
    // An upgrade's stages reach the progress dialog in front of the person, from the upgrading thread.
    connect(
        m_pSim, &CSimController::Progress, this,
        [](double dFraction, const QString& strStage) { ThreadDialogReport(dFraction, Wording(qUtf8Printable(strStage))); },
        Qt::DirectConnection);
    m_pRecorder = new CDeviceRecorder(m_pSim, this);
    m_pRecorder->SetBackupFile(ParameterFile());
    m_nUnit = CHostSettings::Unit();
    m_account.SetUnit(m_nUnit);
    // What the dialog's controls hold changes with every keystroke and click
    // in them; the account follows a little behind, without any signal from
    // the plug-in.
    auto* pDialogWatch = new QTimer(this);
    connect(pDialogWatch, &QTimer::timeout, this, [this] {
        if (m_pDialog)
            RefreshDialog();
    });
    pDialogWatch->start(300);
}

void CHostSession::LogUnreadableFiles() const
{
    // Each of these is read as far as it can be (a pipe or a huge file not at
    // all) and the session goes on; the person learns from the log why a
    // setting came up as its default.
    const CUiPermissionsManager* pPermissions = CUiPermissionsManager::GetInstance();
    const QStringList files{pPermissions->UrlsFilePath(), UserDataDirectory() + "/Data/UserParam.ini"};
    for (const QString& strPath : files) {
        const CSettingsFile file(strPath);
        if (!file.Problem().isEmpty())
            ILog_WriteLogF(1, "%s", qUtf8Printable(file.Problem()));
    }
    if (!m_pSim->FlashProblem().isEmpty())
        ILog_WriteLogF(1, "The simulated controller's flash: %s", qUtf8Printable(m_pSim->FlashProblem()));
}

CHostSession::~CHostSession()
{
    CloseSettings();
    // The device, card and notifier the plug-in was handed go with this
    // session: it forgets them (a dialog it made earlier would otherwise
    // reach for them), and the dialog it made for this session goes too.
    if (IFactoryMgr* pMgr = Mgr())
        pMgr->Init(nullptr, nullptr);
    delete m_pDialog.data();
}

QString CHostSession::ParameterFile()
{
    return UserDataDirectory() + "/Data/FactoryParam.ini";
}

QString CHostSession::AccessFile()
{
    return CHostPaths::ResourceDirectory() + "/Data/FactoryPsw.ini";
}

bool CHostSession::IsAdmitted()
{
    return QFileInfo::exists(AccessFile());
}

QString CHostSession::NotAdmittedText(const QString& strCommand)
{
    return Wording("%1 needs the access file %2, as the machine settings do: without it nothing on this computer "
                   "changes the factory parameters.")
        .arg(strCommand, QDir::toNativeSeparators(AccessFile()));
}

bool CHostSession::RefusedWithoutAccess(const QString& strCommand)
{
    if (IsAdmitted())
        return false;
    Report(NotAdmittedText(strCommand));
    return true;
}

bool CHostSession::Start(const QString& strPlugin)
{
    // One host at a time on a user data directory: two would write the same
    // parameter file, backups and controller flash behind each other's back.
    // (The lock of a host that died is taken over; a running host's lock
    // never goes stale, however long it runs.)
    QDir().mkpath(UserDataDirectory() + "/Data");
    m_pHostLock = std::make_unique<QLockFile>(UserDataDirectory() + "/Data/Host.lock");
    m_pHostLock->setStaleLockTime(0);
    if (!m_pHostLock->tryLock(0) && m_pHostLock->error() == QLockFile::LockFailedError) {
        qint64 nPid = 0;
        QString strHost;
        QString strApplication;
        m_pHostLock->getLockInfo(&nPid, &strHost, &strApplication);
        m_strError = Wording("Another host (%1, process %2) is using %3. Close it first: two hosts would write the same "
                             "parameter file.")
                         .arg(strApplication)
                         .arg(nPid)
                         .arg(QDir::toNativeSeparators(UserDataDirectory()));
        m_pHostLock.reset();
        return false;
    }
    if (!m_plugin.Load(strPlugin.isEmpty() ? QCoreApplication::applicationDirPath() + "/libFactoryMgr.so" : strPlugin)) {
        m_strError = m_plugin.ErrorString();
        return false;
    }
    IFactoryMgr* pMgr = m_plugin.Mgr();
    pMgr->Init(m_pRecorder, &m_notifier);
    pMgr->SetUnit(m_nUnit);
    pMgr->SetFactoryFlag(true);
    // The wizard, made by Init, hands its ratios to the plug-in's settings
    // dialog; the host listens too, to put them into the record it keeps.
    if (QWidget* pWizard = m_plugin.CalibrateWizard())
        connect(pWizard, SIGNAL(CalibrateXyStepSignal(double, double)), this, SLOT(OnStepRatios(double, double)),
                Qt::UniqueConnection);
    RefreshFile();
    m_fileWatcher.addPath(QFileInfo(ParameterFile()).absolutePath());
    connect(&m_fileWatcher, &QFileSystemWatcher::directoryChanged, this, &CHostSession::OnFileChangedOnDisk,
            Qt::UniqueConnection);
    if (m_account.IsFileUnreadable())
        Report(Wording("The parameter file %1 cannot be read: %2. Nothing will be written over it; Save asks where to "
                       "save instead.")
                   .arg(QDir::toNativeSeparators(ParameterFile()), m_account.FileProblem()));
    return true;
}

QString CHostSession::ErrorString() const
{
    return m_strError;
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
    // Said where the person is looking: in the settings window when it is
    // open (the main window keeps the history).
    if (m_pSettings)
        m_pSettings->ShowReport(strText);
    emit Reported(strText);
}

void CHostSession::RefreshFile()
{
    const QString strPath = ParameterFile();
    FactoryParams record;
    const ParamFileStatus status = ReadFactoryParamFile(record, strPath);
    if (status == ParamFileStatus::Loaded)
        m_account.SetFile(record, Written(strPath));
    else if (QFileInfo::exists(strPath))
        m_account.SetFileUnreadable(ReadProblem(strPath, status));
    else
        m_account.SetFileMissing();
}

void CHostSession::RefreshDialog()
{
    // Open is what the person sees: the settings window on the screen.
    QByteArray collected;
    if (!m_pDialog || !m_pSettings || !m_pSettings->isVisible()
        || !QMetaObject::invokeMethod(m_pDialog, "CollectedParams", Q_RETURN_ARG(QByteArray, collected))
        || collected.size() != int(sizeof(FactoryParams))) {
        if (m_account.IsDialogOpen())
            m_account.SetDialogClosed();
        return;
    }
    FactoryParams values;
    std::memcpy(static_cast<void*>(&values), collected.constData(), sizeof(FactoryParams));
    if (!m_account.IsDialogOpen() || !CParamDiff::Compare(values, m_account.DialogRecord()).isEmpty())
        m_account.SetDialog(values);
}

bool CHostSession::FileHolds(const FactoryParams& record, const QDateTime& before, QString* pWhy)
{
    RefreshFile();
    const QString strPath = ParameterFile();
    QString strWhy;
    if (!m_account.HasFile())
        strWhy = m_account.IsFileUnreadable() ? m_account.FileProblem() : WriteProblem(strPath);
    else if (before.isValid() && Written(strPath) == before)
        strWhy = WriteProblem(strPath);
    else if (!CParamDiff::Compare(m_account.FileRecord(), record).isEmpty())
        strWhy = Wording("read back, it does not hold the values");
    if (strWhy.isEmpty())
        return true;
    ILog_WriteLogF(1, "The parameter file %s was not saved: %s.", qPrintable(strPath), qPrintable(strWhy));
    if (pWhy)
        *pWhy = strWhy;
    return false;
}

bool CHostSession::Save(bool bFromDialog, QString* pWhy)
{
    if (m_account.IsFileUnreadable()) {
        *pWhy = Wording("the parameter file cannot be read (%1), and nothing is written over it")
                    .arg(m_account.FileProblem());
        return false;
    }
    const QDateTime before = Written(ParameterFile());
    Mgr()->SaveToFile(bFromDialog);
    FactoryParams record;
    Mgr()->GetFactoryParams(&record);
    const bool bSaved = FileHolds(record, before, pWhy);
    RefreshDialog();
    return bSaved;
}

bool CHostSession::PutInPlace(const FactoryParams& params, QString* pWhy)
{
    const QDateTime before = Written(ParameterFile());
    Mgr()->SetFactoryParams(&params);
    ShowRecordInDialog();
    return FileHolds(params, before, pWhy);
}

void CHostSession::ShowRecordInDialog()
{
    if (!m_pDialog)
        return;
    QMetaObject::invokeMethod(m_pDialog, "DataToCtrlSlot", Q_ARG(bool, true));
    // Values the host has just put in place are not the ones a check marked.
    QMetaObject::invokeMethod(m_pDialog, "ClearInvalidMarks");
    RefreshDialog();
}

bool CHostSession::RefusedOverUnreadableFile(const QString& strWhat)
{
    RefreshFile();
    if (!m_account.IsFileUnreadable())
        return false;
    Report(Wording("%1: the parameter file %2 cannot be read (%3), and nothing is written over it. Move it away or "
                   "fix it first.")
               .arg(strWhat, QDir::toNativeSeparators(ParameterFile()), m_account.FileProblem()));
    return true;
}

void CHostSession::OpenSettings()
{
    const Busy busy(*this);
    if (!Mgr())
        return;
    // A new dialog replaces the one with the edits.
    // (Saved values stay in the record: the new dialog shows them.)
    if (m_pDialog && !AskBeforeLosingEdits(Wording("Open new settings anyway?"), false))
        return;
    CloseSettings();
    if (QDialog* pDialog = TakeSettingsDialog())
        ShowInSettingsWindow(pDialog);
}

void CHostSession::ShowInSettingsWindow(QDialog* pDialog)
{
    m_pSettings = new CSettingsWindow(pDialog);
    m_pSettings->installEventFilter(this);
    connect(m_pSettings, &CSettingsWindow::Chosen, this, &CHostSession::OnRefusalChoice);
    // The first time, beside the main window rather than over its report.
    if (CHostSettings::Geometry(QStringLiteral("settings")).isEmpty()) {
        const QRect available = m_pWindow->screen()->availableGeometry();
        const QRect main = m_pWindow->frameGeometry();
        QRect place(QPoint(main.right() + 8, main.top()), ScreenFit::Framed(m_pSettings->size()));
        if (!available.contains(place))
            place.moveTopLeft(QPoint(main.left(), main.bottom() + 8));
        if (available.contains(place))
            m_pSettings->move(place.topLeft());
    }
    m_pSettings->show();
    RefreshDialog();
}

void CHostSession::FollowLaserCount()
{
    // A dialog made for another number of lasers than the record now holds
    // has no cells for some of its values, and its Upload would not send
    // them: it is made anew over the record.
    FactoryParams record;
    Mgr()->GetFactoryParams(&record);
    if (!m_pDialog || record.laser.laserCount == m_nDialogLaserCount)
        return;
    const bool bShown = m_pSettings && m_pSettings->isVisible();
    CloseSettings();
    QDialog* pDialog = TakeSettingsDialog();
    if (pDialog && bShown)
        ShowInSettingsWindow(pDialog);
}

QDialog* CHostSession::TakeSettingsDialog()
{
    // Without the access file the plug-in says so in a box of its own and
    // hands over a dialog it does not keep: nothing to show, the host's to delete.
    const bool bAdmitted = IsAdmitted();
    QDialog* pDialog = FactoryDialog(Mgr()->ShowFactoryDlg(&CPatternConverter::ConvertPattern));
    if (!bAdmitted) {
        delete pDialog;
        Report(Wording("The machine settings are not available on this computer: the access file is missing."));
        return nullptr;
    }
    if (!pDialog)
        return nullptr;
    m_pDialog = pDialog;
    FactoryParams record;
    Mgr()->GetFactoryParams(&record);
    m_nDialogLaserCount = record.laser.laserCount;
    pDialog->installEventFilter(this);
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
        m_pDialog->removeEventFilter(this);
        m_pDialog->hide();
        m_pDialog->setParent(nullptr);
    }
    delete m_pSettings;
    RefreshDialog();
}

void CHostSession::ReadFromController()
{
    const Busy busy(*this);
    if (!Mgr() || !AskBeforeLosingEdits(Wording("Read the controller's values over them?")))
        return;
    if (RefusedOverUnreadableFile(Wording("Nothing was read")))
        return;
    // The controller answers twice, and the two answers must agree: a value
    // garbled on the line would otherwise go into the dialog and the
    // parameter file as if it were true. Nothing changes until they do.
    FactoryParams read;
    FactoryParams again;
    int nResult = m_pRecorder->ReadFactoryParams(&read);
    if (nResult == 0)
        nResult = m_pRecorder->ReadFactoryParams(&again);
    if (nResult != 0) {
        m_notifier.ShowErrorCode(nResult, 0);
        Report(Wording("Nothing was read: %1").arg(CHostNotifier::Describe(nResult)));
        return;
    }
    if (!CParamDiff::Compare(read, again).isEmpty()) {
        Report(Wording("Nothing was read: the controller's answers did not agree, so a value was garbled on the way. "
                       "Read again."));
        return;
    }
    m_account.SetController(read);
    // What the controller holds replaces any correction not yet uploaded.
    m_bStepsPending = false;
    QString strWhy;
    const bool bSaved = PutInPlace(read, &strWhy);
    FollowLaserCount();
    Report(bSaved ? Wording("The parameters were read from the controller. They are saved.")
                  : Wording("The parameters were read from the controller into the settings, but the parameter file "
                            "could not be written: %1.")
                        .arg(strWhy));
}

void CHostSession::UploadToController()
{
    const Busy busy(*this);
    IFactoryMgr* pMgr = Mgr();
    const int nResult = pMgr->UploadParamsToDevice();
    if (nResult != 0) {
        // A write that broke off may have left anything on the controller.
        if (!RefusedBeforeWriting(nResult))
            m_account.SetControllerUnknown();
        m_notifier.ShowErrorCode(nResult, 0);
        Report(Wording("The Upload failed: %1 Nothing was saved.").arg(CHostNotifier::Describe(nResult)));
        RefreshDialog();
        return;
    }
    m_bStepsPending = false;
    FactoryParams sent;
    pMgr->GetFactoryParams(&sent);
    // What the controller kept, read by the host itself: it tells the report
    // the kept values, and whether the check could read back at all.
    quint32 nFlags = 0;
    bool bKept = pMgr->CheckDeviceParams(&nFlags);
    FactoryParams kept;
    const int nKept = m_pRecorder->ReadFactoryParams(&kept);
    if (nKept != 0) {
        m_account.SetControllerUnknown();
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
        Mgr()->SetFactoryParams(&sent);
        ShowRecordInDialog();
        bKept = pMgr->CheckDeviceParams(&nFlags);
        lines = PutBackLines(sent, kept);
        if (nFlags != 0 && lines.isEmpty()) {
            Mgr()->SetFactoryParams(&sent);
            ShowRecordInDialog();
            m_account.SetController(kept);
            RefreshFile();
            Report(Wording("The controller's answers did not agree twice, so the check cannot tell what it kept, and "
                           "its red marks cannot be trusted. The dialog and the parameter file hold the values sent. "
                           "Upload again to check them."));
            return;
        }
    }
    m_account.SetController(kept);
    QString strWhy;
    const bool bSaved = Save(true, &strWhy);
    const QString strText = CUploadReport::Text(bKept, nFlags, lines, bSaved ? QString() : strWhy);
    const QString strReport
        = bGarbled ? Wording("The first answer to the check came garbled; the check was made again.") + "\n" + strText
                   : strText;
    if (!lines.isEmpty() && m_pSettings && m_pSettings->isVisible()) {
        // The person decides: keep the values the dialog had (the controller
        // still differs in those fields) or take the controller's.
        m_pSettings->ShowReport(strReport, Wording("Keep the dialog's values"), Wording("Take the controller's values"));
        emit Reported(strReport);
        return;
    }
    Report(strReport);
}

void CHostSession::OnRefusalChoice(int nChoice)
{
    const Busy busy(*this);
    if (!m_pSettings)
        return;
    m_pSettings->EndChoice();
    RefreshFile();
    if (nChoice == 0) {
        QStringList fields;
        for (const SParamDifference& difference : m_account.ControllerDifferences())
            fields << m_account.Describe(difference, Wording("file"), Wording("controller"));
        Report(fields.isEmpty() ? Wording("The dialog's values are kept; the controller holds them too.")
                                : Wording("The dialog's values are kept and saved. The controller still differs in "
                                          "%1 field(s): %2.")
                                      .arg(fields.size())
                                      .arg(fields.join(QStringLiteral("; "))));
        return;
    }
    if (!m_account.IsControllerKnown())
        return;
    QString strWhy;
    const bool bSaved = PutInPlace(m_account.ControllerRecord(), &strWhy);
    Report(bSaved ? Wording("The controller's values are in the dialog and saved: all three agree.")
                  : Wording("The controller's values are in the dialog, but the parameter file could not be written: "
                            "%1.")
                        .arg(strWhy));
}

QStringList CHostSession::PutBackLines(const FactoryParams& sent, const FactoryParams& kept)
{
    FactoryParams putBack;
    Mgr()->GetFactoryParams(&putBack);
    return CUploadReport::PutBackLines(sent, kept, putBack, m_nUnit);
}

void CHostSession::RestoreParameters()
{
    const Busy busy(*this);
    IFactoryMgr* pMgr = Mgr();
    if (!pMgr || RefusedWithoutAccess(Wording("Restore"))
        || !AskBeforeLosingEdits(Wording("Restore a backup over them?"), false))
        return;
    if (RefusedOverUnreadableFile(Wording("Nothing was restored")))
        return;
    FactoryParams current;
    pMgr->GetFactoryParams(&current);
    CRestoreDialog dialog(ParameterFile(), current, m_nUnit, m_pWindow);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const qsizetype nChanges = CParamDiff::Compare(current, dialog.Record()).size();
    // Through the plug-in: the record, the parameter file (whose current
    // content goes to the backups first) and the open dialog.
    QString strWhy;
    const bool bSaved = PutInPlace(dialog.Record(), &strWhy);
    m_bStepsPending = false;
    if (nChanges > 0 && !m_account.IsControllerKnown())
        m_account.SetChangedSinceController(true);
    Report(bSaved ? Wording("Restored %1: %2 value(s) changed. They are saved, and go to the controller with the next "
                            "Upload.")
                        .arg(dialog.ChosenText())
                        .arg(nChanges)
                  : Wording("Restored %1 into the settings (%2 value(s) changed), but the parameter file could not be "
                            "written: %3. Nothing is saved.")
                        .arg(dialog.ChosenText())
                        .arg(nChanges)
                        .arg(strWhy));
}

void CHostSession::CalibrateXyStep()
{
    const Busy busy(*this);
    IFactoryMgr* pMgr = Mgr();
    if (!pMgr || RefusedWithoutAccess(Wording("Calibration")) || !UploadPendingStepsFirst())
        return;
    if (RefusedOverUnreadableFile(Wording("No calibration")))
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
    QString strWhy;
    const bool bSaved = PutInPlace(corrected, &strWhy);
    m_bStepsPending = true;
    if (!m_account.IsControllerKnown())
        m_account.SetChangedSinceController(true);
    const QString strSteps = Wording("The X step changes from %1 to %2, the Y step from %3 to %4.")
                                 .arg(before.motor[0].pulsePerMm, 0, 'f', 5)
                                 .arg(corrected.motor[0].pulsePerMm, 0, 'f', 5)
                                 .arg(before.motor[1].pulsePerMm, 0, 'f', 5)
                                 .arg(corrected.motor[1].pulsePerMm, 0, 'f', 5);
    Report(strSteps + " "
           + (bSaved ? Wording("They are saved, and go to the controller with the next Upload.")
                     : Wording("The parameter file could not be written: %1.").arg(strWhy)));
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
    // In the unit the wizard asks in, with the two decimals it takes.
    const QString strMm = QStringLiteral("mm");
    Report(Wording("The machine cut the calibration square at %1 %3 x %2 %3. Enter these as the measured width and height.")
               .arg(CDisplayUnit::Convert(dWidth, strMm, m_nUnit), 0, 'f', 2)
               .arg(CDisplayUnit::Convert(dHeight, strMm, m_nUnit), 0, 'f', 2)
               .arg(Wording(qPrintable(CDisplayUnit::Unit(strMm, m_nUnit)))));
}

void CHostSession::ImportParameters()
{
    const Busy busy(*this);
    if (RefusedWithoutAccess(Wording("Import")))
        return;
    if (!m_pSettings)
        OpenSettings();
    if (!m_pDialog)
        return;
    // An import goes into the dialog and the record, not into the file nor to the controller.
    Mgr()->ImportParams(m_pSettings);
    if (m_pDialog)
        QMetaObject::invokeMethod(m_pDialog, "ClearInvalidMarks");
    FollowLaserCount();
    RefreshDialog();
}

void CHostSession::ExportParameters()
{
    const Busy busy(*this);
    if (!m_pSettings)
        OpenSettings();
    if (m_pDialog)
        Mgr()->ExportParams(m_pSettings);
}

void CHostSession::SaveParameters()
{
    const Busy busy(*this);
    RefreshFile();
    if (m_account.IsFileUnreadable()) {
        // Nothing goes over a file that cannot be read: the person says where
        // the values are to go instead.
        const QString strPath = QFileDialog::getSaveFileName(
            BoxParent(),
            Wording("The parameter file cannot be read (%1): save the values where?").arg(m_account.FileProblem()),
            QFileInfo(ParameterFile()).absolutePath() + "/FactoryParam-saved.ini", Wording("Parameter files (*.ini)"));
        if (strPath.isEmpty()) {
            Report(Wording("Nothing was saved: the parameter file cannot be read (%1).").arg(m_account.FileProblem()));
            return;
        }
        FactoryParams values;
        if (m_account.IsDialogOpen())
            values = m_account.DialogRecord();
        else
            Mgr()->GetFactoryParams(&values);
        FactoryParams back;
        const bool bWritten = WriteFactoryParamFile(values, strPath)
            && ReadFactoryParamFile(back, strPath) == ParamFileStatus::Loaded && CParamDiff::Compare(back, values).isEmpty();
        if (!bWritten)
            ILog_WriteLogF(1, "The parameters were not saved to %s: %s.", qPrintable(strPath),
                           qPrintable(WriteProblem(strPath)));
        Report(bWritten ? Wording("The parameters are saved to %1.").arg(QDir::toNativeSeparators(strPath))
                        : Wording("The parameters could not be saved to %1: %2.")
                              .arg(QDir::toNativeSeparators(strPath), WriteProblem(strPath)));
        return;
    }
    const bool bChanges = !m_account.UnsavedChanges().isEmpty() || IsDialogEdited();
    QString strWhy;
    const bool bSaved = Save(m_pSettings != nullptr, &strWhy);
    if (bSaved && bChanges && !m_account.IsControllerKnown())
        m_account.SetChangedSinceController(true);
    Report(bSaved ? Wording("The parameters are saved.")
                  : Wording("The parameter file could not be saved: %1.").arg(strWhy));
}

bool CHostSession::IsDialogEdited() const
{
    bool bEdited = false;
    if (m_pDialog)
        QMetaObject::invokeMethod(m_pDialog, "IsEdited", Q_RETURN_ARG(bool, bEdited));
    return bEdited;
}

bool CHostSession::IsNotUploaded() const
{
    if (m_bStepsPending)
        return true;
    return m_account.IsControllerKnown() ? !m_account.ControllerDifferences().isEmpty()
                                         : m_account.IsChangedSinceController();
}

bool CHostSession::AskBeforeLosingEdits(const QString& strWhat, bool bNotUploadedToo)
{
    if (m_bAsking || !Mgr())
        return true;
    RefreshFile();
    RefreshDialog();
    // Values the file does not hold: the person's edits in the dialog, or the
    // plug-in's record when a save did not go through. What the dialog put
    // right by itself as it opened is no edit to lose.
    FactoryParams record;
    Mgr()->GetFactoryParams(&record);
    const bool bEdits = !m_account.IsDialogOpen() || m_account.IsDialogChangedSinceOpened();
    const bool bUnsaved = (bEdits && (IsDialogEdited() || !m_account.UnsavedChanges().isEmpty()))
        || (m_account.HasFile() && !CParamDiff::Compare(m_account.FileRecord(), record).isEmpty());
    const bool bNotUploaded = bNotUploadedToo && IsNotUploaded();
    if (!bUnsaved && !bNotUploaded)
        return true;
    m_bAsking = true;
    QMessageBox box(QMessageBox::Warning, Wording("Machine Settings"),
                    (bUnsaved ? Wording("The machine settings have changes that are not saved.")
                              : Wording("The machine settings are saved, but not uploaded to the controller."))
                        + "\n\n" + strWhat,
                    QMessageBox::NoButton, BoxParent());
    box.setObjectName(QStringLiteral("unsavedBox"));
    QPushButton* pSave = bUnsaved && !m_account.IsFileUnreadable() ? box.addButton(Wording("Save"), QMessageBox::AcceptRole)
                                                                    : nullptr;
    QPushButton* pUpload = box.addButton(Wording("Upload"), QMessageBox::AcceptRole);
    QPushButton* pDiscard = box.addButton(Wording("Discard"), QMessageBox::DestructiveRole);
    QPushButton* pCancel = box.addButton(Wording("Cancel"), QMessageBox::RejectRole);
    box.setDefaultButton(pCancel);
    box.exec();
    m_bAsking = false;
    QAbstractButton* pChosen = box.clickedButton();
    if (pChosen == pDiscard) {
        // The dialog is made anew from the file: what was discarded is gone,
        // and nothing asks about it again.
        if (m_pDialog && m_account.HasFile()) {
            Mgr()->ReloadFromFile();
            QMetaObject::invokeMethod(m_pDialog, "ClearInvalidMarks");
        }
        RefreshDialog();
        return true;
    }
    if (pSave && pChosen == pSave) {
        SaveParameters();
        RefreshFile();
        Mgr()->GetFactoryParams(&record);
        return !IsDialogEdited() && m_account.HasFile() && CParamDiff::Compare(m_account.FileRecord(), record).isEmpty();
    }
    if (pChosen == pUpload) {
        UploadToController();
        RefreshFile();
        Mgr()->GetFactoryParams(&record);
        return !IsNotUploaded() && !IsDialogEdited() && m_account.HasFile()
            && CParamDiff::Compare(m_account.FileRecord(), record).isEmpty();
    }
    return false;
}

void CHostSession::OnEscape()
{
    const Busy busy(*this);
    // A cell being edited: Escape ends the edit (the value goes in as with
    // Return), and goes no further.
    QWidget* pFocus = QApplication::focusWidget();
    if (qobject_cast<QLineEdit*>(pFocus) && pFocus->isVisible() && m_pDialog && m_pDialog->isAncestorOf(pFocus)) {
        // The keyboard stays in the table the cell belongs to.
        QWidget* pTable = pFocus->parentWidget();
        while (pTable && !qobject_cast<QAbstractItemView*>(pTable))
            pTable = pTable->parentWidget();
        if (pTable)
            pTable->setFocus(Qt::OtherFocusReason);
        else
            pFocus->clearFocus();
        RefreshDialog();
        return;
    }
    // Otherwise the settings close: asked first, while the dialog is still
    // in its window; cancelled, everything stays as it was.
    if (AskBeforeLosingEdits(Wording("Close the settings anyway?")))
        CloseSettings();
}

bool CHostSession::eventFilter(QObject* pWatched, QEvent* event)
{
    // Escape in the settings window is the host's: the plug-in would take the
    // dialog out of its window before anyone could ask. (The window sees it
    // when nothing in the dialog has the keyboard.)
    if (event->type() == QEvent::KeyPress && (pWatched == m_pDialog || pWatched == m_pSettings)
        && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        OnEscape();
        return true;
    }
    // Closing the settings window: asked first; cancelled, the window and its
    // dialog stay. (The event's type first: while the window is destroyed it
    // is no CSettingsWindow any more, and the guarded pointer may not be read.)
    if (event->type() == QEvent::Close && pWatched == m_pSettings) {
        if (!AskBeforeLosingEdits(m_bQuitting ? Wording("Quit anyway?") : Wording("Close the settings anyway?"))) {
            event->ignore();
            return true;
        }
        // Closed: the account no longer counts the dialog as open.
        QTimer::singleShot(0, this, [this] { RefreshDialog(); });
    }
    return QObject::eventFilter(pWatched, event);
}

void CHostSession::ReloadParameters()
{
    const Busy busy(*this);
    // The plug-in reloads only into a settings dialog it keeps.
    if (!m_pDialog) {
        Report(Wording("Nothing was reloaded: open the machine settings first."));
        return;
    }
    RefreshFile();
    if (!m_account.HasFile()) {
        Report(m_account.IsFileUnreadable()
                   ? Wording("Nothing was reloaded: the parameter file cannot be read (%1).").arg(m_account.FileProblem())
                   : Wording("Nothing was reloaded: there is no parameter file yet."));
        return;
    }
    Mgr()->ReloadFromFile();
    QMetaObject::invokeMethod(m_pDialog, "ClearInvalidMarks");
    FollowLaserCount();
    RefreshDialog();
    Report(Wording("The parameters were reloaded from the parameter file."));
}

void CHostSession::SetUnit(int nUnit)
{
    m_nUnit = nUnit;
    if (IFactoryMgr* pMgr = Mgr())
        pMgr->SetUnit(nUnit);
    m_account.SetUnit(nUnit);
    CHostSettings::SetUnit(nUnit);
}

void CHostSession::ForgetWhatChangedElsewhere()
{
    m_account.SetControllerUnknown();
    m_account.SetChangedSinceController(false);
    RefreshFile();
    RefreshDialog();
}

void CHostSession::OnFileChangedOnDisk()
{
    // The host's own flows read the file again when they end.
    if (IsBusy() || !m_account.HasFile())
        return;
    FactoryParams record;
    if (ReadFactoryParamFile(record, ParameterFile()) != ParamFileStatus::Loaded)
        return;
    const QList<SParamDifference> differences = CParamDiff::Compare(m_account.FileRecord(), record);
    if (differences.isEmpty())
        return;
    // What the plug-in holds is what it saved itself (its dialog's own save):
    // nothing of anybody's was overwritten.
    FactoryParams held;
    Mgr()->GetFactoryParams(&held);
    if (CParamDiff::Compare(held, record).isEmpty()) {
        RefreshFile();
        RefreshDialog();
        return;
    }
    QStringList named;
    for (const SParamDifference& difference : differences.mid(0, 5))
        named << CParamDiff::Describe(difference);
    if (differences.size() > 5)
        named << Wording("and %1 more").arg(differences.size() - 5);
    RefreshFile();
    RefreshDialog();
    Report(Wording("Another program changed the parameter file: %1. The settings still hold what they held; saving "
                   "them would write over that change.")
               .arg(named.join(QStringLiteral("; "))));
}

void CHostSession::SetConnected(bool bConnected)
{
    if (m_pSim->IsConnected() == bConnected)
        return;
    m_pSim->SetConnected(bConnected);
    if (bConnected)
        m_account.SetControllerUnknown();
    Report(bConnected ? Wording("The controller is connected. Read to see what it holds.")
                      : Wording("The controller is not connected."));
}

bool CHostSession::AskBeforeQuit()
{
    // An open settings window asks as it closes; otherwise the host asks here.
    if (!m_pSettings || !m_pSettings->isVisible())
        return AskBeforeLosingEdits(Wording("Quit anyway?"));
    m_bQuitting = true;
    const bool bClosed = m_pSettings->close();
    m_bQuitting = false;
    return bClosed;
}
