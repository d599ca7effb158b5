#pragma once

#include "CHostNotifier.h"
#include "CPluginHost.h"

#include <QMainWindow>
#include <QPointer>

class CActivityPanel;
class CDeviceRecorder;
class CSettingsWindow;
class CSimController;
class QAction;
class QActionGroup;
class QDialog;
class QLabel;
class QPushButton;

// The reference host: what a real host does with the FactoryMgr plug-in, on
// the simulated controller. Menus for everything the interface offers, a
// status page for the controller.
class CHostWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit CHostWindow(QWidget* parent = nullptr);
    ~CHostWindow() override;

    // Loads the plug-in (by default the one beside the executable) and hands
    // it the simulated controller. False, with a message box, when the
    // plug-in cannot be used.
    bool Start(const QString& strPlugin = QString());
    // Renders the main window, every tab of the settings dialog, the Motor tab
    // after an Upload the controller partly refused, and the calibration
    // wizard's pages to PNG files.
    bool SaveScreenshots(const QString& strDir);

    CSimController* Simulator() const;
    CActivityPanel* Activity() const { return m_pActivity; }
    IFactoryMgr* Mgr() const;
    CSettingsWindow* SettingsWindow() const;
    const CHostNotifier& Notifier() const;

    bool StepsPending() const { return m_bStepsPending; }
    // What Help > About says: the host, the project's version, Qt's version.
    static QString AboutText();

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
    void SetLanguage(const QString& strLanguage);
    void ShowAbout();

signals:
    // A sentence for the user about what the last action did.
    void Reported(const QString& strText);

private slots:
    // The ratios the calibration wizard hands out on OK.
    void OnStepRatios(double dRatioW, double dRatioH);

protected:
    bool eventFilter(QObject* pWatched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    // Saves the parameter file through the plug-in; true when it was written.
    bool Save(bool bFromDialog);
    // The Upload report's lines: what the plug-in's record now holds against
    // what was sent and what the controller kept.
    QStringList PutBackLines(const FactoryParams& sent, const FactoryParams& kept);
    // Puts the record, the parameter file and the open dialog back to params.
    void RestoreRecord(const FactoryParams& params);
    void BuildMenus();
    void RetranslateUi();
    void RefreshStatus();
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
    bool SaveRefusedUploadScreenshot(const QString& strPath);
    QString HostSettingsPath() const;

    CPluginHost m_plugin;
    CSimController* m_pSim = nullptr;
    // What the plug-in is handed as device, card and task state: the
    // simulator, each call recorded for the activity panel.
    CDeviceRecorder* m_pRecorder = nullptr;
    CActivityPanel* m_pActivity = nullptr;
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

    QLabel* m_pStatus = nullptr;
    QLabel* m_pReport = nullptr;
    QPushButton* m_pOpenButton = nullptr;
    QPushButton* m_pCalibrateButton = nullptr;
    QList<QPair<QAction*, const char*>> m_actions;   // action and its English text
    QList<QPair<QMenu*, const char*>> m_menus;
    QAction* m_pConnected = nullptr;
    QAction* m_pInformationOnly = nullptr;
    QAction* m_pBusy = nullptr;
    QAction* m_pCardType8 = nullptr;
    QAction* m_pCardTypeOther = nullptr;
    QAction* m_pMillimetres = nullptr;
    QAction* m_pInches = nullptr;
    QAction* m_pEnglish = nullptr;
    QAction* m_pChinese = nullptr;
};
