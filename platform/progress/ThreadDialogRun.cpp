#include "ThreadDialogRun.h"

#include "CTaskProgressDialog.h"

#include <QApplication>
#include <QEventLoop>
#include <QPointer>
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

    // On the heap, parented to the active window: a host may delete that
    // window while the task runs (the loop below is where its deleteLater
    // runs), and the dialog then goes with it rather than being freed twice.
    QPointer<CTaskProgressDialog> pDialog =
        new CTaskProgressDialog(strText, pOwner->IsTaskCancelable(nTask) != 0, QApplication::activeWindow());
    QObject::connect(pDialog, &QProgressDialog::canceled, pDialog, [&] {
        pOwner->CancelTask(nTask, 0, 0);
        pDialog->setLabelText(strText + "\n" + CTaskProgressDialog::tr("Cancelling..."));
    });

    QTimer poll;
    poll.setInterval(100);
    QObject::connect(&poll, &QTimer::timeout, pDialog, [&] {
        const double dProgress = pOwner->GetTaskProgress(nTask);
        if (dProgress > 0.0) {
            pDialog->setMaximum(1000);
            pDialog->setValue(int(qBound(0.0, dProgress, 1.0) * 1000));
        }
    });

    QEventLoop loop;
    pDialog->show();
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
    if (pDialog) {
        pDialog->SetFinished();
        pDialog->close();
        delete pDialog;
    }
    return nResult;
}
