#include "CDeviceRecorder.h"

#include "CTranslator.h"
#include "ThreadDialogRun.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QThread>
#include <QVariant>

namespace {
enum Task
{
    TaskRead = 0,
    TaskWrite = 1
};

QString Wording(const char* szText)
{
    return CTranslator::GetInstance()->GetWording(QString::fromUtf8(szText));
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
    auto* pApp = qobject_cast<QApplication*>(QCoreApplication::instance());
    if (!pApp || QThread::currentThread() != pApp->thread())
        return RunTask(nTask, pParams);
    return ThreadDialogRun(this, nTask, pParams, 0, strText);
}

int CDeviceRecorder::RunTask(int nTask, void* pParam)
{
    auto* pParams = static_cast<FactoryParams*>(pParam);
    return nTask == TaskRead ? m_pDevice->ReadFactoryParams(pParams) : m_pDevice->WriteFactoryParams(pParams);
}

int CDeviceRecorder::IsTaskCancelable(int nTask)
{
    Q_UNUSED(nTask)
    return 0;
}

int CDeviceRecorder::CancelTask(int nTask, qintptr wParam, qintptr lParam)
{
    Q_UNUSED(nTask)
    Q_UNUSED(wParam)
    Q_UNUSED(lParam)
    return 0;
}

double CDeviceRecorder::GetTaskProgress(int nTask)
{
    Q_UNUSED(nTask)
    return 0.0;
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
    return Record(QString::fromLatin1(szName ? szName : ""), arg.toString(),
                  [&] { return pCard ? pCard->CallFunction(szName, arg) : 1001; });
}

int CDeviceRecorder::QueryFunction(const char* szName, QVariant& inOut)
{
    ICard* pCard = m_pDevice->GetCurrentCard();
    return Record(QString::fromLatin1(szName ? szName : ""), QString(),
                  [&] { return pCard ? pCard->QueryFunction(szName, inOut) : 1001; });
}

int CDeviceRecorder::IsBusy()
{
    ICard* pCard = m_pDevice->GetCurrentCard();
    ITaskState* pTask = pCard ? pCard->GetTaskState() : nullptr;
    return Record("IsBusy", QString(), [&] { return pTask ? pTask->IsBusy() : 0; });
}
