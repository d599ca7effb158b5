#pragma once

#include "CHostNotifier.h"
#include "CPluginHost.h"

#include <QMainWindow>
#include <QPointer>

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
    IFactoryMgr* Mgr() const;
    CSettingsWindow* SettingsWindow() const;
    const CHostNotifier& Notifier() const;

public slots:
    void OpenSettings();
    void ReadFromController();
    void UploadToController();
    void CalibrateXyStep();
    void ImportParameters();
    void ExportParameters();
    void SaveParameters();
    void ReloadParameters();
    void SetUnit(int nUnit);
    void SetLanguage(const QString& strLanguage);

signals:
    // A sentence for the user about what the last action did.
    void Reported(const QString& strText);

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    // Saves the parameter file through the plug-in; true when it was written.
    bool Save(bool bFromDialog);
    void BuildMenus();
    void RetranslateUi();
    void RefreshStatus();
    void Report(const QString& strText);
    void OnJobCut(double dWidth, double dHeight);
    void CloseSettings();
    bool SaveRefusedUploadScreenshot(const QString& strPath);
    QString HostSettingsPath() const;

    CPluginHost m_plugin;
    CSimController* m_pSim = nullptr;
    CHostNotifier m_notifier;
    QPointer<CSettingsWindow> m_pSettings;
    QPointer<QDialog> m_pDialog;
    int m_nUnit = 1;

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
