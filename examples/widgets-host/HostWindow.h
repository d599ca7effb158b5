#pragma once

#include <QMainWindow>

class IFactoryMgr;
class MemoryController;
class QAction;
class QDialog;
class QLabel;

// The host's main window with the plug-in's settings dialog embedded in it.
// The dialog's Read, Upload and Calibrate buttons trigger the window's
// actions of the same names (also in its Machine menu), which reach the
// plug-in; the line under the dialog says what each did. It needs no moc:
// the dialog's signals, connected by name, go to QAction::trigger().
class HostWindow : public QMainWindow
{
public:
    HostWindow(IFactoryMgr* pMgr, MemoryController* pController);
    ~HostWindow() override;

    // The embedded settings dialog; null when the plug-in refused it.
    QDialog* Dialog() const { return m_pDialog; }
    // What the line under the dialog says.
    QString Said() const;

private:
    void Read();
    void Upload();
    void Calibrate();
    void Save();
    void Say(const QString& strText);
    QString SaveFile(bool bFromDialog);
    bool ShowRecordInDialog();

    IFactoryMgr* m_pMgr;
    MemoryController* m_pController;
    QDialog* m_pDialog = nullptr;
    QLabel* m_pLine = nullptr;
};
