#include "ThreadDialogRun.h"

#include "CTaskProgressDialog.h"

#include <QApplication>
#include <QEventLoop>
#include <QTimer>

#include <thread>

int ThreadDialogRun(IThreadDialogOwner* pOwner, int nTask, void* pParam, int nReserved, const QString& strText)
{
    Q_UNUSED(nReserved)
    if (!pOwner)
        return -1;

    // The worker is joined before its result is read: the join is what makes
    // everything the task wrote visible here, and a race detector sees it as
    // such (the end of a QThread is announced through Qt's internal lock).
    int nResult = 0;

    // Without a widget application (a console tool, a test of the tasks alone)
    // the task still runs on its own thread; there is just nothing to show.
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) {
        std::thread([&] { nResult = pOwner->RunTask(nTask, pParam); }).join();
        return nResult;
    }

    CTaskProgressDialog dialog(strText, pOwner->IsTaskCancelable(nTask) != 0, QApplication::activeWindow());
    QObject::connect(&dialog, &QProgressDialog::canceled, &dialog, [&] {
        pOwner->CancelTask(nTask, 0, 0);
        dialog.setLabelText(strText + "\n" + CTaskProgressDialog::tr("Cancelling..."));
    });

    QTimer poll;
    poll.setInterval(100);
    QObject::connect(&poll, &QTimer::timeout, &dialog, [&] {
        const double dProgress = pOwner->GetTaskProgress(nTask);
        if (dProgress > 0.0) {
            dialog.setMaximum(1000);
            dialog.setValue(int(qBound(0.0, dProgress, 1.0) * 1000));
        }
    });

    QEventLoop loop;
    dialog.show();
    poll.start();
    std::thread worker([&] {
        nResult = pOwner->RunTask(nTask, pParam);
        // Posted, so the loop ends even when the task ends before it runs. A
        // plain event that Qt deletes: a race detector cannot follow Qt's
        // queue, and a queued functor would be freed by our code on this side.
        QCoreApplication::postEvent(&loop, new QEvent(QEvent::Quit));
    });
    loop.exec();
    worker.join();
    poll.stop();
    dialog.SetFinished();
    dialog.close();
    return nResult;
}
