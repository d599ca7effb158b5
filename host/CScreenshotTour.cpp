#include "CScreenshotTour.h"

#include "CHostSession.h"
#include "CHostWindow.h"
#include "CRestoreDialog.h"
#include "CSettingsWindow.h"
#include "CSimController.h"
#include "FactoryParams.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPointer>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QTimer>
#include <QTreeWidget>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

void CScreenshotTour::EndOnAnyQuestion(int nSeconds)
{
    auto* pWatch = new QTimer(qApp);
    QObject::connect(pWatch, &QTimer::timeout, qApp, [] {
        for (QWidget* pWidget : QApplication::topLevelWidgets()) {
            const auto* pBox = qobject_cast<QMessageBox*>(pWidget);
            if (pBox && pBox->isVisible()) {
                std::fprintf(stderr, "screenshots failed: a box asked \"%s\": %s\n", qUtf8Printable(pBox->windowTitle()),
                             qUtf8Printable(pBox->text()));
                std::fflush(stdout);
                std::fflush(stderr);
                std::_Exit(2);
            }
        }
    });
    pWatch->start(100);
    // A run stuck outside the event loop is ended all the same, by an alarm
    // rather than a thread of its own (a thread left sleeping at exit trips
    // the leak checker's tracer now and then).
    static char s_szStuck[96];
    std::snprintf(s_szStuck, sizeof s_szStuck, "screenshots failed: the run did not end within %d s\n", nSeconds);
    std::signal(SIGALRM, [](int) {
        const ssize_t nIgnored = ::write(STDERR_FILENO, s_szStuck, std::strlen(s_szStuck));
        (void)nIgnored;
        ::_exit(3);
    });
    ::alarm(static_cast<unsigned>(nSeconds));
}

CScreenshotTour::CScreenshotTour(CHostWindow& window)
    : m_window(window)
{
}

bool CScreenshotTour::Save(const QString& strDir)
{
    if (!QDir().mkpath(strDir))
        return false;
    m_window.show();
    QApplication::processEvents();
    bool bOk = m_window.grab().save(strDir + "/main-window.png");
    CHostSession& session = m_window.Session();
    session.OpenSettings();
    QPointer<QDialog> pDialog = session.Dialog();
    if (!session.SettingsWindow() || !pDialog)
        return false;
    QApplication::processEvents();
    auto* pTabs = pDialog->findChild<QTabWidget*>(QStringLiteral("tabWidget"));
    for (int i = 0; pTabs && i < pTabs->count(); ++i) {
        pTabs->setCurrentIndex(i);
        QApplication::processEvents();
        bOk = session.SettingsWindow()->grab().save(QStringLiteral("%1/settings-%2.png").arg(strDir, pTabs->widget(i)->objectName()))
            && bOk;
    }
    bOk = SaveTypedBeyondACap(strDir + "/settings-keyboard.png") && bOk;
    bOk = SaveRefusedUpload(strDir + "/settings-motor-refused.png") && bOk;
    // A fault handled, as the activity panel shows it: a read whose answer
    // came garbled is refused, and nothing is taken.
    session.Simulator()->ArmFault(CSimController::FaultCorruptRead);
    session.ReadFromController();
    QApplication::processEvents();
    bOk = m_window.grab().save(strDir + "/activity.png") && bOk;
    // The wizard runs modally: its pages are taken from inside its own run.
    bool bWizard = false;
    QTimer::singleShot(0, &m_window, [&] {
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
    session.CalibrateXyStep();
    // The backups the saves and Uploads above have kept, as File > Restore... lists them.
    FactoryParams current;
    session.Mgr()->GetFactoryParams(&current);
    CRestoreDialog restore(CHostSession::ParameterFile(), current, session.Unit(), &m_window);
    restore.show();
    while (!restore.AllRead())
        QApplication::processEvents();
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

bool CScreenshotTour::SaveTypedBeyondACap(const QString& strPath)
{
    CHostSession& session = m_window.Session();
    QDialog* pDialog = session.Dialog();
    auto* pTabs = pDialog ? pDialog->findChild<QTabWidget*>(QStringLiteral("tabWidget")) : nullptr;
    auto* pMotor = pDialog ? pDialog->findChild<QTableWidget*>(QStringLiteral("tableWidget_motor")) : nullptr;
    if (!pTabs || !pMotor || !session.SettingsWindow())
        return false;
    pTabs->setCurrentWidget(pDialog->findChild<QWidget*>(QStringLiteral("tab")));
    session.SettingsWindow()->activateWindow();
    QApplication::processEvents();
    // As a person does it: a click on Y Max Speed, 900 typed, Return. The
    // table takes at most 500 there and keeps what the cell held.
    const int nMaxSpeedRow = 10;
    const QPoint at = pMotor->visualRect(pMotor->model()->index(nMaxSpeedRow, 2)).center();
    for (QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        QMouseEvent click(type, at, pMotor->viewport()->mapToGlobal(at), Qt::LeftButton,
                          type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(pMotor->viewport(), &click);
    }
    QApplication::processEvents();
    for (const auto& key : {qMakePair(Qt::Key_9, QStringLiteral("9")), qMakePair(Qt::Key_0, QStringLiteral("0")),
                            qMakePair(Qt::Key_0, QStringLiteral("0")), qMakePair(Qt::Key_Return, QStringLiteral("\r"))}) {
        QWidget* pFocus = QApplication::focusWidget();
        if (!pFocus)
            return false;
        for (QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent press(type, key.first, Qt::NoModifier, key.second);
            QApplication::sendEvent(pFocus, &press);
        }
        QApplication::processEvents();
    }
    auto* pNote = pDialog->findChild<QLabel*>(QStringLiteral("tableWidget_motor_note"));
    return pNote && pNote->isVisible() && !pNote->text().isEmpty() && session.SettingsWindow()->grab().save(strPath);
}

bool CScreenshotTour::SaveRefusedUpload(const QString& strPath)
{
    CHostSession& session = m_window.Session();
    IFactoryMgr* pMgr = session.Mgr();
    QDialog* pDialog = session.Dialog();
    CSimController* pSim = session.Simulator();
    if (!pDialog)
        return false;
    auto* pTabs = pDialog->findChild<QTabWidget*>(QStringLiteral("tabWidget"));
    auto* pMotor = pDialog->findChild<QWidget*>(QStringLiteral("tab"));
    auto* pUpload = pDialog->findChild<QPushButton*>(QStringLiteral("pushButton_upload"));
    FactoryParams record;
    FactoryParams device;
    if (!pTabs || !pMotor || !pUpload || pMgr->GetFactoryParams(&record) != 0 || pSim->ReadFactoryParams(&device) != 0)
        return false;

    // Two values beyond what the simulated machine can drive go into the
    // dialog, and its Upload button runs the host's Upload: the controller
    // keeps the nearest values it can take, and the plug-in's check marks the
    // two cells it did not keep.
    FactoryParams typed = record;
    // Both are what a person can type into X's cells.
    typed.motor[0].speedMax = 1800.0;   // X takes at most 1,500 mm/s
    typed.motor[0].accMax = 45000.0;    // and at most 30,000 mm/s²
    pMgr->SetFactoryParams(&typed);
    QMetaObject::invokeMethod(pDialog, "DataToCtrlSlot", Q_ARG(bool, true));
    pTabs->setCurrentWidget(pMotor);
    QApplication::processEvents();
    pUpload->click();
    QApplication::processEvents();
    const bool bRefused = pSim->LastLimitedCount() >= 2;
    const bool bSaved = session.SettingsWindow() && session.SettingsWindow()->grab().save(strPath)
        && m_window.grab().save(QFileInfo(strPath).absolutePath() + "/main-window-account.png");

    // The controller's flash, the record and the parameter file go back to
    // what they held, so that taking screenshots leaves no trace of this.
    pSim->WriteFactoryParams(&device);
    pMgr->SetFactoryParams(&record);
    if (session.Dialog())
        QMetaObject::invokeMethod(session.Dialog(), "DataToCtrlSlot", Q_ARG(bool, true));
    session.ForgetWhatChangedElsewhere();
    return bRefused && bSaved;
}
