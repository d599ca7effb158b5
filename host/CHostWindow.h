#pragma once

#include <QMainWindow>

class CActivityPanel;
class CHostSession;
class QAction;
class QLabel;
class QPushButton;

// The reference host's main window: menus for everything the plug-in's
// interface offers, the simulated controller's state, the last report and
// the activity panel. It draws; the session does the work.
class CHostWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit CHostWindow(QWidget* parent = nullptr);
    ~CHostWindow() override;

    // Starts the session; false, with a message box, when the plug-in cannot be used.
    bool Start(const QString& strPlugin = QString());

    CHostSession& Session() const { return *m_pSession; }
    CActivityPanel* Activity() const { return m_pActivity; }

    // What Help > About says: the host, the project's version, Qt's version.
    static QString AboutText();

public slots:
    void SetLanguage(const QString& strLanguage);
    void ShowAbout();

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void BuildMenus();
    void RetranslateUi();
    void RefreshStatus();
    void ShowReport(const QString& strText);

    CHostSession* m_pSession;
    CActivityPanel* m_pActivity = nullptr;
    QLabel* m_pStatus = nullptr;
    QLabel* m_pAccount = nullptr;
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
