#include "ThreadDialogRun.h"

#include "CTaskProgressDialog.h"

#include <QApplication>
#include <QEventLoop>
#include <QScopedPointer>
#include <QThread>
#include <QTimer>

int ThreadDialogRun(IThreadDialogOwner* pOwner, int nTask, void* pParam, int nReserved, const QString& strText)
{
    Q_UNUSED(nReserved)
    if (!pOwner)
        return -1;

    int nResult = 0;
    QScopedPointer<QThread> worker(QThread::create([&] { nResult = pOwner->RunTask(nTask, pParam); }));
    worker->setObjectName(QStringLiteral("ThreadDialogRun"));

    // Without a widget application (a console tool, a test of the tasks alone)
    // the task still runs on its own thread; there is just nothing to show.
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) {
        worker->start();
        worker->wait();
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
    QObject::connect(worker.data(), &QThread::finished, &loop, &QEventLoop::quit, Qt::QueuedConnection);
    dialog.show();
    poll.start();
    worker->start();
    if (!worker->isFinished())
        loop.exec();
    worker->wait();
    poll.stop();
    dialog.SetFinished();
    dialog.close();
    return nResult;
}
