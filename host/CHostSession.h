#pragma once

#include "CHostNotifier.h"
#include "CPluginHost.h"

#include <QObject>
#include <QPointer>

class CDeviceRecorder;
class CSettingsWindow;
class CSimController;
class QDialog;
class QWidget;

// One run of the reference host with the plug-in: it owns the plug-in, the
// simulated controller it is handed, and the flows a person starts (read,
// upload, save, reload, import, export, restore, calibrate). It says what
// each flow did through Reported; the main window only draws.
class CHostSession : public QObject
{
    Q_OBJECT
public:
    // pWindow: the main window, parent of the boxes the flows ask.
    explicit CHostSession(QWidget* pWindow);
    ~CHostSession() override;

    // Loads the plug-in (by default the one beside the executable) and hands
    // it the simulated controller. False, with the reason in ErrorString().
    bool Start(const QString& strPlugin = QString());
    QString ErrorString() const;

    CSimController* Simulator() const { return m_pSim; }
    CDeviceRecorder* Recorder() const { return m_pRecorder; }
    IFactoryMgr* Mgr() const;
    CSettingsWindow* SettingsWindow() const;
    QDialog* Dialog() const;
    const CHostNotifier& Notifier() const { return m_notifier; }
    int Unit() const { return m_nUnit; }
    bool StepsPending() const { return m_bStepsPending; }

    // Before quitting: with an open settings window, it is closed (and asks);
    // otherwise asks when something would be lost. False when the person cancelled.
    bool AskBeforeQuit();

    // The plug-in's parameter file at its default place.
    static QString ParameterFile();

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

private slots:
    // The ratios the calibration wizard hands out on OK.
    void OnStepRatios(double dRatioW, double dRatioH);

protected:
    bool eventFilter(QObject* pWatched, QEvent* event) override;

private:
    // Saves the parameter file through the plug-in; true when it was written.
    bool Save(bool bFromDialog);
    // The Upload report's lines: what the plug-in's record now holds against
    // what was sent and what the controller kept.
    QStringList PutBackLines(const FactoryParams& sent, const FactoryParams& kept);
    // Puts the record, the parameter file and the open dialog back to params.
    void RestoreRecord(const FactoryParams& params);
    void Report(const QString& strText);
    void OnJobCut(double dWidth, double dHeight);
    void CloseSettings();
    // A settings dialog from the plug-in, its signals connected; null, with a
    // report, when the plug-in does not admit the settings here.
    QDialog* TakeSettingsDialog();
    // Asks before a calibration that would correct steps not yet uploaded;
    // false when the calibration is not to go ahead.
    bool UploadPendingStepsFirst();
    // Before something replaces or closes the settings (strWhat says what):
    // when edits are not saved, or saved values not uploaded, asks to save,
    // upload, discard or cancel. False when the person cancelled, or the save
    // or upload chosen did not go through.
    // bNotUploadedToo: values saved but not on the controller are at stake too.
    bool AskBeforeLosingEdits(const QString& strWhat, bool bNotUploadedToo = true);
    bool IsDialogEdited() const;
    // The parent of the boxes the flows ask: the settings window when it is open.
    QWidget* BoxParent() const;

    QWidget* m_pWindow;
    CPluginHost m_plugin;
    CSimController* m_pSim = nullptr;
    // What the plug-in is handed as device, card and task state: the
    // simulator, each call recorded for the activity panel.
    CDeviceRecorder* m_pRecorder = nullptr;
    CHostNotifier m_notifier;
    QPointer<CSettingsWindow> m_pSettings;
    QPointer<QDialog> m_pDialog;
    int m_nUnit = 1;
    // The last OK of the calibration wizard, until the host has taken it.
    bool m_bRatiosArrived = false;
    double m_dRatioW = 1.0;
    double m_dRatioH = 1.0;
    // Corrected steps are in the record and the file, not yet on the controller.
    bool m_bStepsPending = false;
    // Values saved or imported since the last Upload or Read: not on the controller.
    bool m_bNotUploaded = false;
    bool m_bAsking = false;
};
