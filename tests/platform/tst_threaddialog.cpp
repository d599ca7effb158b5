#include "TestMain.h"

#include "CTaskProgressDialog.h"
#include "ThreadDialogRun.h"

#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <functional>

namespace {
// An owner whose task is a function of the test's.
class TaskOwner : public IThreadDialogOwner
{
public:
    int RunTask(int nTask, void* pParam) override
    {
        m_pTaskThread = QThread::currentThread();
        m_nTask = nTask;
        m_pParam = pParam;
        return m_task ? m_task() : 0;
    }
    int IsTaskCancelable(int) override { return m_bCancelable ? 1 : 0; }
    int CancelTask(int, qintptr, qintptr) override
    {
        m_pCancelThread = QThread::currentThread();
        m_bCancelled = true;
        return 0;
    }
    double GetTaskProgress(int) override { return m_dProgress; }

    std::function<int()> m_task;
    std::atomic<QThread*> m_pTaskThread{nullptr};
    QThread* m_pCancelThread = nullptr;
    int m_nTask = -1;
    void* m_pParam = nullptr;
    bool m_bCancelable = false;
    std::atomic<bool> m_bCancelled{false};
    std::atomic<double> m_dProgress{0.0};
};

// Waits on a worker thread until the flag is set, for at most 10 s.
bool WaitFor(const std::atomic<bool>& bFlag)
{
    QDeadlineTimer deadline(10000);
    while (!bFlag && !deadline.hasExpired())
        QThread::msleep(1);
    return bFlag;
}

CTaskProgressDialog* ProgressDialog()
{
    return qobject_cast<CTaskProgressDialog*>(QApplication::activeModalWidget());
}
}

class TestThreadDialog : public QObject
{
    Q_OBJECT
private slots:
    void taskRunsOffTheGuiThreadAndItsResultComesBack();
    void guiKeepsProcessingEventsWithTheDialogUp();
    void escapeDoesNotCloseTheDialogWhileTheTaskRuns();
    void progressOfTheTaskIsShown();
    void whatTheHostSaysOfTheTaskIsShownAndKept();
    void cancelAsksTheTaskToStop();
    void nullOwnerIsRefused();
    void theActiveWindowDeletedWhileTheTaskRuns();
};

void TestThreadDialog::theActiveWindowDeletedWhileTheTaskRuns()
{
    // The progress dialog's parent is the active window; a host deletes that
    // window (its deleteLater runs in the progress loop) before the task ends.
    auto* pWindow = new QWidget;
    pWindow->show();
    pWindow->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(pWindow));
    QPointer<QWidget> pGone(pWindow);
    std::atomic<bool> bDeleted{false};
    QTimer::singleShot(0, this, [&] {
        QVERIFY(ProgressDialog() && ProgressDialog()->parentWidget() == pWindow);
        pWindow->deleteLater();
    });
    QTimer watch;
    connect(&watch, &QTimer::timeout, this, [&] { bDeleted = pGone.isNull(); });
    watch.start(5);
    TaskOwner owner;
    owner.m_task = [&] { return WaitFor(bDeleted) ? 5 : -1; };
    QCOMPARE(ThreadDialogRun(&owner, 0, nullptr, 0, "Processing..."), 5);
    QVERIFY(pGone.isNull());
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void TestThreadDialog::taskRunsOffTheGuiThreadAndItsResultComesBack()
{
    TaskOwner owner;
    owner.m_task = [] { return 1234; };
    int nParam = 0;
    QCOMPARE(ThreadDialogRun(&owner, 7, &nParam, 0, "Processing..."), 1234);
    QVERIFY(owner.m_pTaskThread.load() != nullptr);
    QVERIFY(owner.m_pTaskThread.load() != QThread::currentThread());
    QCOMPARE(owner.m_nTask, 7);
    QCOMPARE(owner.m_pParam, static_cast<void*>(&nParam));
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void TestThreadDialog::guiKeepsProcessingEventsWithTheDialogUp()
{
    // The task ends only once the GUI thread has run a timer and seen the
    // progress dialog: that proves events were processed meanwhile.
    std::atomic<bool> bGuiRan{false};
    QString strShownText;
    bool bModal = false;
    QTimer::singleShot(0, this, [&] {
        if (CTaskProgressDialog* pDialog = ProgressDialog()) {
            strShownText = pDialog->labelText();
            bModal = pDialog->isVisible() && pDialog->isModal();
        }
        bGuiRan = true;
    });
    TaskOwner owner;
    owner.m_task = [&] { return WaitFor(bGuiRan) ? 1 : -1; };
    QCOMPARE(ThreadDialogRun(&owner, 0, nullptr, 0, "Processing..."), 1);
    QCOMPARE(strShownText, QStringLiteral("Processing..."));
    QVERIFY(bModal);
}

void TestThreadDialog::escapeDoesNotCloseTheDialogWhileTheTaskRuns()
{
    std::atomic<bool> bChecked{false};
    bool bStillVisible = false;
    QTimer::singleShot(0, this, [&] {
        if (CTaskProgressDialog* pDialog = ProgressDialog()) {
            QTest::keyClick(pDialog, Qt::Key_Escape);
            pDialog->close();
            bStillVisible = pDialog->isVisible();
        }
        bChecked = true;
    });
    TaskOwner owner;
    owner.m_task = [&] { return WaitFor(bChecked) ? 5 : -1; };
    QCOMPARE(ThreadDialogRun(&owner, 0, nullptr, 0, "Upgrading"), 5);
    QVERIFY(bStillVisible);
}

void TestThreadDialog::progressOfTheTaskIsShown()
{
    std::atomic<bool> bSeen{false};
    QTimer poll;
    connect(&poll, &QTimer::timeout, this, [&] {
        if (CTaskProgressDialog* pDialog = ProgressDialog())
            if (pDialog->maximum() == 1000 && pDialog->value() == 500)
                bSeen = true;
    });
    poll.start(10);
    TaskOwner owner;
    owner.m_dProgress = 0.5;
    owner.m_task = [&] { return WaitFor(bSeen) ? 0 : -1; };
    QCOMPARE(ThreadDialogRun(&owner, 0, nullptr, 0, "Half way"), 0);
}

void TestThreadDialog::whatTheHostSaysOfTheTaskIsShownAndKept()
{
    // Said before a run: the run starts with nothing said.
    ThreadDialogReport(0.9, QStringLiteral("left over"));
    ThreadDialogReportFailure(QStringLiteral("an old failure"));
    std::atomic<bool> bSeen{false};
    QString strLabel;
    int nValue = -1;
    QTimer poll;
    connect(&poll, &QTimer::timeout, this, [&] {
        if (CTaskProgressDialog* pDialog = ProgressDialog())
            if (pDialog->labelText().contains(QStringLiteral("Writing"))) {
                strLabel = pDialog->labelText();
                nValue = pDialog->value();
                bSeen = true;
            }
    });
    poll.start(10);
    TaskOwner owner;
    QString strAtStart;
    QString strFailureAtStart;
    owner.m_task = [&] {
        strAtStart = ThreadDialogLastStage();
        strFailureAtStart = ThreadDialogFailure();
        ThreadDialogReport(0.25, QStringLiteral("Writing"));
        const bool bShown = WaitFor(bSeen);
        ThreadDialogReport(0.5, QStringLiteral("Restarting"));
        ThreadDialogReportFailure(QStringLiteral("Not done: the card refused it (code 7)"));
        return bShown ? 7 : -1;
    };
    QCOMPARE(ThreadDialogRun(&owner, 0, nullptr, 0, "Processing..."), 7);
    QCOMPARE(strAtStart, QString());
    QCOMPARE(strFailureAtStart, QString());
    QCOMPARE(strLabel, QStringLiteral("Processing...\nWriting"));
    QCOMPARE(nValue, 250);
    // Once the run has ended, why it failed is there for whoever shows the result, apart from its last stage.
    QCOMPARE(ThreadDialogFailure(), QStringLiteral("Not done: the card refused it (code 7)"));
    QCOMPARE(ThreadDialogLastStage(), QStringLiteral("Restarting"));

    // A run that reports stages and no failure leaves no reason to show.
    owner.m_task = [&] {
        ThreadDialogReport(0.5, QStringLiteral("Writing the firmware"));
        return 9;
    };
    QCOMPARE(ThreadDialogRun(&owner, 0, nullptr, 0, "Processing..."), 9);
    QCOMPARE(ThreadDialogFailure(), QString());
    QCOMPARE(ThreadDialogLastStage(), QStringLiteral("Writing the firmware"));
}

void TestThreadDialog::cancelAsksTheTaskToStop()
{
    QTimer::singleShot(0, this, [&] {
        if (CTaskProgressDialog* pDialog = ProgressDialog())
            if (QPushButton* pButton = pDialog->findChild<QPushButton*>())
                pButton->click();
    });
    TaskOwner owner;
    owner.m_bCancelable = true;
    owner.m_task = [&] { return WaitFor(owner.m_bCancelled) ? 99 : -1; };
    QCOMPARE(ThreadDialogRun(&owner, 0, nullptr, 0, "Cancelable"), 99);
    QCOMPARE(owner.m_pCancelThread, QThread::currentThread());
}

void TestThreadDialog::nullOwnerIsRefused()
{
    QCOMPARE(ThreadDialogRun(nullptr, 0, nullptr, 0, "Nothing"), -1);
}

FACTORYMGR_TEST_MAIN(TestThreadDialog)
#include "tst_threaddialog.moc"
