#pragma once

#include "CHostNotifier.h"
#include "CParamAccount.h"
#include "CPluginHost.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <QPointer>

#include <memory>

class CDeviceRecorder;
class CSettingsWindow;
class CSimController;
class QDialog;
class QLockFile;
class QWidget;

// One run of the reference host with the plug-in: it owns the plug-in, the
// simulated controller it is handed, the account of what the settings
// dialog, the parameter file and the controller hold, and the flows a person
// starts (read, upload, save, reload, import, export, restore, calibrate).
// Every sentence it reports comes from the account and from results it
// checked. The main window only draws.
class CHostSession : public QObject
{
    Q_OBJECT
public:
    // pWindow: the main window, parent of the boxes the flows ask.
    explicit CHostSession(QWidget* pWindow);
    ~CHostSession() override;

    // Loads the plug-in (by default the one beside the executable) and hands
    // it the simulated controller. False, with the reason in ErrorString(),
    // also when another host is using the same user data directory.
    bool Start(const QString& strPlugin = QString());
    QString ErrorString() const;

    CSimController* Simulator() const { return m_pSim; }
    CDeviceRecorder* Recorder() const { return m_pRecorder; }
    IFactoryMgr* Mgr() const;
    CSettingsWindow* SettingsWindow() const;
    QDialog* Dialog() const;
    const CHostNotifier& Notifier() const { return m_notifier; }
    const CParamAccount& Account() const { return m_account; }
    int Unit() const { return m_nUnit; }
    bool StepsPending() const { return m_bStepsPending; }

    // Something other than the session changed the controller or the file
    // (the screenshot tour puts things back behind it): what the account
    // knew of the controller is forgotten, the file and dialog read again.
    void ForgetWhatChangedElsewhere();
    // The parameter file changed on disk: when another program changed it
    // (factoryparams set, an editor), the person is told which fields, and
    // the account compares the settings with what the file holds now.
    void OnFileChangedOnDisk();
    // Connects or disconnects the simulated controller and says so. A
    // controller connected again may hold anything: what it was last known to
    // hold is forgotten.
    void SetConnected(bool bConnected);

    // A flow is under way (its progress dialog or a question may be up):
    // the host does not quit in the middle of one.
    bool IsBusy() const { return m_nBusy > 0; }

    // Before quitting: with an open settings window, it is closed (and asks);
    // otherwise asks when something would be lost. False when the person cancelled.
    bool AskBeforeQuit();

    // The plug-in's parameter file at its default place.
    static QString ParameterFile();
    // The access file that admits the machine settings; it admits every
    // command that changes the factory parameters too.
    static QString AccessFile();
    static bool IsAdmitted();
    // Why a command that changes the factory parameters is not available here.
    static QString NotAdmittedText(const QString& strCommand);

public slots:
    void OpenSettings();
    void ReadFromController();
    void UploadToController();
    void CalibrateXyStep();
    void ImportParameters();
    void ExportParameters();
    void SaveParameters();
    void ReloadParameters();
    // File > Restore...: a backup of the parameter file, chosen and confirmed, put back.
    void RestoreParameters();
    void SetUnit(int nUnit);

signals:
    // A sentence for the person about what the last action did.
    void Reported(const QString& strText);
    // The last flow under way has ended.
    void Idle();

private slots:
    // The ratios the calibration wizard hands out on OK.
    void OnStepRatios(double dRatioW, double dRatioH);
    // The person's choice after an Upload the controller partly refused:
    // 0 keeps the dialog's values, 1 takes the controller's.
    void OnRefusalChoice(int nChoice);

protected:
    bool eventFilter(QObject* pWatched, QEvent* event) override;

private:
    // Marks a flow under way for as long as it lives.
    class Busy
    {
    public:
        explicit Busy(CHostSession& session);
        ~Busy();
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;

    private:
        CHostSession& m_session;
    };

    // Saves the parameter file through the plug-in. True when the file was
    // written and, read back, holds the plug-in's record; otherwise false,
    // with the reason in pWhy (also logged).
    bool Save(bool bFromDialog, QString* pWhy);
    // Hands params to the plug-in (its record, the parameter file and the
    // open dialog, whose marks go). False, with the reason, when the file
    // does not hold them afterwards.
    bool PutInPlace(const FactoryParams& params, QString* pWhy);
    // Reads the parameter file back into the account; its written time before.
    void RefreshFile();
    // The dialog's values into the account.
    void RefreshDialog();
    // Whether the file, read back, holds record and was written after before.
    bool FileHolds(const FactoryParams& record, const QDateTime& before, QString* pWhy);
    // The Upload report's lines: what the plug-in's record now holds against
    // what was sent and what the controller kept.
    QStringList PutBackLines(const FactoryParams& sent, const FactoryParams& kept);
    void Report(const QString& strText);
    void OnJobCut(double dWidth, double dHeight);
    // Names in the log each file of the session that cannot be read as it stands.
    void LogUnreadableFiles() const;
    void CloseSettings();
    // A settings dialog from the plug-in, its signals connected; null, with a
    // report, when the plug-in does not admit the settings here.
    QDialog* TakeSettingsDialog();
    // Shows pDialog in a new settings window (the first time beside the main window).
    void ShowInSettingsWindow(QDialog* pDialog);
    // Makes the dialog anew when the record holds another number of lasers
    // than the dialog was made for (after a Read, a Reload, an Import).
    void FollowLaserCount();
    // Asks before a calibration that would correct steps not yet uploaded;
    // false when the calibration is not to go ahead.
    bool UploadPendingStepsFirst();
    // Before something replaces or closes the settings (strWhat says what):
    // when the dialog holds values the file does not, or the file holds
    // values the controller does not, asks to save, upload, discard or
    // cancel. False when the person cancelled, or the save or upload chosen
    // did not go through. bNotUploadedToo: values not on the controller are
    // at stake too. Discard makes the dialog anew from the file.
    bool AskBeforeLosingEdits(const QString& strWhat, bool bNotUploadedToo = true);
    bool IsDialogEdited() const;
    // The file holds values the controller does not (as far as the host knows).
    bool IsNotUploaded() const;
    // True, with a report, when strCommand is not available without the access file.
    bool RefusedWithoutAccess(const QString& strCommand);
    // Nothing may be written over a parameter file that cannot be read: true
    // (with a report) when one is there.
    bool RefusedOverUnreadableFile(const QString& strWhat);
    // The parent of the boxes the flows ask: the settings window when it is open.
    QWidget* BoxParent() const;
    // The open dialog shows the plug-in's record again.
    void ShowRecordInDialog();
    // Escape in the settings dialog: ends a cell edit in progress; otherwise
    // asks (while the dialog is still in its window) and closes the window.
    void OnEscape();

    QWidget* m_pWindow;
    // Held while this host uses the user data directory.
    std::unique_ptr<QLockFile> m_pHostLock;
    QString m_strError;
    CPluginHost m_plugin;
    CSimController* m_pSim = nullptr;
    // What the plug-in is handed as device, card and task state: the
    // simulator, each call recorded for the activity panel.
    CDeviceRecorder* m_pRecorder = nullptr;
    CHostNotifier m_notifier;
    CParamAccount m_account;
    QPointer<CSettingsWindow> m_pSettings;
    QPointer<QDialog> m_pDialog;
    // The laser count of the record the dialog was made over: the dialog's
    // columns follow it until it is made anew.
    int m_nDialogLaserCount = 0;
    int m_nUnit = 1;
    // The last OK of the calibration wizard, until the host has taken it.
    bool m_bRatiosArrived = false;
    double m_dRatioW = 1.0;
    double m_dRatioH = 1.0;
    // Corrected steps are in the record and the file, not yet on the controller.
    bool m_bStepsPending = false;
    bool m_bAsking = false;
    // Saves put a new file in place by renaming it, so the folder is watched.
    QFileSystemWatcher m_fileWatcher;
    // The settings window is closing because the host quits: its question is
    // about quitting.
    bool m_bQuitting = false;
    int m_nBusy = 0;
};
