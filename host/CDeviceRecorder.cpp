#include "CDeviceRecorder.h"

#include "CHostNotifier.h"
#include "CTaskProgressDialog.h"
#include "ILog.h"
#include "Wording.h"
#include "ThreadDialogRun.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QThread>
#include <QTimer>
#include <QVariant>

#include <memory>
#include <thread>

namespace {
enum Task
{
    TaskRead = 0,
    TaskWrite = 1
};

// A card function that has not answered by then gets a progress dialog.
constexpr int kQuietWaitMs = 250;

bool OnGuiThread()
{
    auto* pApp = qobject_cast<QApplication*>(QCoreApplication::instance());
    return pApp && QThread::currentThread() == pApp->thread();
}
}

CDeviceRecorder::CDeviceRecorder(IDevice* pDevice, QObject* parent)
    : QObject(parent)
    , m_pDevice(pDevice)
{
}

template <typename Fn>
int CDeviceRecorder::Record(const QString& strOperation, const QString& strArgument, Fn call)
{
    QElapsedTimer timer;
    timer.start();
    const int nResult = call();
    emit Called(strOperation, strArgument, nResult, timer.nsecsElapsed() / 1000);
    return nResult;
}

ICard* CDeviceRecorder::GetCurrentCard()
{
    ICard* pCard = nullptr;
    Record("GetCurrentCard", QString(), [&] {
        pCard = m_pDevice->GetCurrentCard();
        return pCard ? 1 : 0;
    });
    // The plug-in talks to the card through this object too.
    return pCard ? static_cast<ICard*>(this) : nullptr;
}

int CDeviceRecorder::WriteFactoryParams(FactoryParams* pParams)
{
    return Record("WriteFactoryParams", QString(), [&] {
        return Transfer(TaskWrite, pParams, Wording("Writing the parameters to the controller..."));
    });
}

int CDeviceRecorder::ReadFactoryParams(FactoryParams* pParams)
{
    return Record("ReadFactoryParams", QString(), [&] {
        return Transfer(TaskRead, pParams, Wording("Reading the parameters from the controller..."));
    });
}

int CDeviceRecorder::Transfer(int nTask, FactoryParams* pParams, const QString& strText)
{
    if (!OnGuiThread())
        return RunTask(nTask, pParams);
    return ThreadDialogRun(this, nTask, pParams, 0, strText);
}

int CDeviceRecorder::RunTask(int nTask, void* pParam)
{
    auto* pParams = static_cast<FactoryParams*>(pParam);
    if (nTask == TaskRead) {
        const int nResult = m_pDevice->ReadFactoryParams(pParams);
        if (nResult == 0)
            SetHeld(pParams);
        return nResult;
    }
    KeepHeld(CParamBackups::ReasonBeforeUpload);
    SetHeld(nullptr);
    return m_pDevice->WriteFactoryParams(pParams);
}

void CDeviceRecorder::SetBackupFile(const QString& strParameterFile)
{
    QMutexLocker locker(&m_heldMutex);
    m_strBackupFile = strParameterFile;
}

void CDeviceRecorder::SetHeld(const FactoryParams* pParams)
{
    QMutexLocker locker(&m_heldMutex);
    m_bHeldKnown = pParams != nullptr;
    if (pParams)
        m_held = *pParams;
}

void CDeviceRecorder::KeepHeld(CParamBackups::Reason reason)
{
    QMutexLocker locker(&m_heldMutex);
    if (m_strBackupFile.isEmpty())
        return;
    FactoryParams held = m_held;
    if (!m_bHeldKnown) {
        locker.unlock();
        const int nResult = Record("ReadFactoryParams", QStringLiteral("for the backup"),
                                   [&] { return m_pDevice->ReadFactoryParams(&held); });
        locker.relock();
        if (nResult != 0) {
            ILog_WriteLogF(1, "No backup of the controller's parameters was kept %s: the read answered %d.",
                           CParamBackups::ReasonText(reason), nResult);
            return;
        }
    }
    QString strError;
    if (!CParamBackups::KeepRecord(held, m_strBackupFile, reason, &strError))
        ILog_WriteLogF(1, "No backup of the controller's parameters was kept %s: %s", CParamBackups::ReasonText(reason),
                       strError.toUtf8().constData());
}

int CDeviceRecorder::GetState()
{
    ICard* pCard = m_pDevice->GetCurrentCard();
    return Record("GetState", QString(), [&] { return pCard ? pCard->GetState() : 0; });
}

ITaskState* CDeviceRecorder::GetTaskState()
{
    return this;
}

int CDeviceRecorder::CallFunction(const char* szName, const QVariant& arg)
{
    ICard* pCard = m_pDevice->GetCurrentCard();
    const QByteArray name(szName ? szName : "");
    const bool bUpgrade = name == "CardUpgrade" || name == "PanelUpgrade";
    return Record(QString::fromLatin1(name), arg.toString(), [&] {
        return Waited([&] {
            if (bUpgrade && pCard) {
                KeepHeld(CParamBackups::ReasonBeforeUpgrade);
                // A new firmware may hold the parameters otherwise.
                SetHeld(nullptr);
            }
            const int nResult = pCard ? pCard->CallFunction(szName, arg) : 1001;
            // Whoever shows the upgrade's result can say why it failed.
            if (bUpgrade && nResult != 0)
                ThreadDialogReportFailure(Wording("%1 (code %2)").arg(CHostNotifier::Describe(nResult)).arg(nResult));
            return nResult;
        });
    });
}

int CDeviceRecorder::QueryFunction(const char* szName, QVariant& inOut)
{
    ICard* pCard = m_pDevice->GetCurrentCard();
    return Record(QString::fromLatin1(szName ? szName : ""), QString(),
                  [&] { return Waited([&] { return pCard ? pCard->QueryFunction(szName, inOut) : 1001; }); });
}

template <typename Fn>
int CDeviceRecorder::Waited(Fn call)
{
    if (!OnGuiThread())
        return call();
    // The card answers on a worker while this thread keeps painting. Input
    // waits until the answer is in: the plug-in is inside its call and must
    // not be called again from here. A quick answer shows nothing; a slow one
    // gets a progress dialog.
    int nResult = 0;
    QEventLoop loop;
    std::unique_ptr<CTaskProgressDialog> pProgress;
    QTimer slow;
    slow.setSingleShot(true);
    connect(&slow, &QTimer::timeout, &loop, [&] {
        pProgress = std::make_unique<CTaskProgressDialog>(Wording("Waiting for the controller..."), false,
                                                          QApplication::activeWindow());
        pProgress->show();
    });
    slow.start(kQuietWaitMs);
    std::thread worker([&] {
        nResult = call();
        QCoreApplication::postEvent(&loop, new QEvent(QEvent::Quit));
    });
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    worker.join();
    slow.stop();
    if (pProgress) {
        pProgress->SetFinished();
        pProgress->close();
    }
    return nResult;
}

int CDeviceRecorder::IsBusy()
{
    ICard* pCard = m_pDevice->GetCurrentCard();
    ITaskState* pTask = pCard ? pCard->GetTaskState() : nullptr;
    return Record("IsBusy", QString(), [&] { return pTask ? pTask->IsBusy() : 0; });
}
