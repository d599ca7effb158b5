// ThreadDialogRun without a widget application: the task still runs on a
// worker thread of its own and its result comes back; nothing is shown.

#include "ThreadDialogRun.h"

#include <QTest>
#include <QThread>

namespace {
class WritingOwner : public IThreadDialogOwner
{
public:
    int RunTask(int nTask, void* pParam) override
    {
        m_pTaskThread = QThread::currentThread();
        // Written on the worker, read by the test after ThreadDialogRun returns.
        *static_cast<int*>(pParam) = nTask * 2;
        return nTask + 1;
    }
    int IsTaskCancelable(int) override { return 0; }
    int CancelTask(int, qintptr, qintptr) override { return 0; }
    double GetTaskProgress(int) override { return 0.0; }

    QThread* m_pTaskThread = nullptr;
};
}

class TestThreadDialogConsole : public QObject
{
    Q_OBJECT
private slots:
    void taskRunsOnAWorkerAndItsWritesAreSeen();
};

void TestThreadDialogConsole::taskRunsOnAWorkerAndItsWritesAreSeen()
{
    WritingOwner owner;
    int nWritten = 0;
    QCOMPARE(ThreadDialogRun(&owner, 21, &nWritten, 0, "Processing..."), 22);
    QCOMPARE(nWritten, 42);
    QVERIFY(owner.m_pTaskThread);
    QVERIFY(owner.m_pTaskThread != QThread::currentThread());
    QCOMPARE(ThreadDialogRun(nullptr, 1, nullptr, 0, "Processing..."), -1);
}

QTEST_GUILESS_MAIN(TestThreadDialogConsole)
#include "tst_threaddialogconsole.moc"
