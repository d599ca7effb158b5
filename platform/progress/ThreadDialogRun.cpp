#include "ThreadDialogRun.h"

#include "CTaskProgressDialog.h"

#include <QApplication>
#include <QEventLoop>
#include <QMutex>
#include <QPointer>
#include <QTimer>

#include <thread>

namespace {
// What the host last said about the running task.
struct Report
{
    QMutex mutex;
    double dFraction = -1.0;
    QString strStage;
    QString strFailure;
};

Report& LastReport()
{
    static Report s_report;
    return s_report;
}

void ClearReport()
{
    Report& report = LastReport();
    QMutexLocker locker(&report.mutex);
    report.dFraction = -1.0;
    report.strStage.clear();
    report.strFailure.clear();
}
}

void ThreadDialogReport(double dFraction, const QString& strStage)
{
    Report& report = LastReport();
    QMutexLocker locker(&report.mutex);
    report.dFraction = dFraction;
    report.strStage = strStage;
}

QString ThreadDialogLastStage()
{
    Report& report = LastReport();
    QMutexLocker locker(&report.mutex);
    return report.strStage;
}

void ThreadDialogReportFailure(const QString& strWhy)
{
    Report& report = LastReport();
    QMutexLocker locker(&report.mutex);
    report.strFailure = strWhy;
}

QString ThreadDialogFailure()
{
    Report& report = LastReport();
    QMutexLocker locker(&report.mutex);
    return report.strFailure;
}

int ThreadDialogRun(IThreadDialogOwner* pOwner, int nTask, void* pParam, int nReserved, const QString& strText)
{
    Q_UNUSED(nReserved)
    if (!pOwner)
        return -1;
    ClearReport();

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
    // The text, what the host says the task is doing, and a cancel under way.
    QString strShownStage;
    bool bCancelling = false;
    const auto label = [&] {
        QStringList lines{strText};
        if (!strShownStage.isEmpty())
            lines << strShownStage;
        if (bCancelling)
            lines << CTaskProgressDialog::tr("Cancelling...");
        return lines.join(u'\n');
    };
    QObject::connect(pDialog, &QProgressDialog::canceled, pDialog, [&] {
        pOwner->CancelTask(nTask, 0, 0);
        bCancelling = true;
        pDialog->setLabelText(label());
    });

    QTimer poll;
    poll.setInterval(100);
    QObject::connect(&poll, &QTimer::timeout, pDialog, [&] {
        double dProgress = pOwner->GetTaskProgress(nTask);
        QString strStage;
        {
            Report& report = LastReport();
            QMutexLocker locker(&report.mutex);
            if (dProgress <= 0.0)
                dProgress = report.dFraction;
            strStage = report.strStage;
        }
        if (dProgress >= 0.0) {
            pDialog->setMaximum(1000);
            pDialog->setValue(int(qBound(0.0, dProgress, 1.0) * 1000));
        }
        if (strStage != strShownStage) {
            strShownStage = strStage;
            pDialog->setLabelText(label());
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
