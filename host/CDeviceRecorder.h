#pragma once

#include "ICard.h"
#include "IDevice.h"
#include "ITaskState.h"
#include "CBusyTaskOwner.h"

#include "CParamBackups.h"
#include "FactoryParams.h"

#include <QMutex>
#include <QObject>
#include <QString>

// The host objects the plug-in is handed: every call goes on to the real
// device (here the simulated controller) and is told, with its argument, its
// result and how long it took, to whoever listens. Calls come from the GUI
// thread and from the progress dialog's worker thread alike; Called is
// emitted on the calling thread.
//
// Reading and writing the parameters takes the link its time: asked on the
// GUI thread, the transfer runs on a worker behind the progress dialog, so the
// window keeps repainting and the person sees that something is under way.
// Card functions asked on the GUI thread wait for their answer the same way,
// with a progress dialog only when the controller is slow to answer.
//
// Before a write of the parameters and before a firmware upgrade, what the
// controller holds is kept as a backup of the parameter file: the record of
// the last read when nothing has been written or upgraded since, otherwise
// read afresh. A backup that cannot be made is logged and stops nothing.
class CDeviceRecorder : public QObject, public IDevice, public ICard, public ITaskState, public CBusyTaskOwner
{
    Q_OBJECT
public:
    CDeviceRecorder(IDevice* pDevice, QObject* parent = nullptr);

    // The parameter file whose backups get the controller's records; none when empty.
    void SetBackupFile(const QString& strParameterFile);

    // IDevice
    ICard* GetCurrentCard() override;
    int WriteFactoryParams(FactoryParams* pParams) override;
    int ReadFactoryParams(FactoryParams* pParams) override;
    // ICard
    int GetState() override;
    ITaskState* GetTaskState() override;
    int CallFunction(const char* szName, const QVariant& arg) override;
    int QueryFunction(const char* szName, QVariant& inOut) override;
    // ITaskState
    int IsBusy() override;
    // IThreadDialogOwner: task 0 reads the parameters, task 1 writes them.
    int RunTask(int nTask, void* pParam) override;

signals:
    // strResult: the number the call returned; for a card function, its code.
    void Called(const QString& strOperation, const QString& strArgument, int nResult, qint64 nMicroseconds);

private:
    template <typename Fn>
    int Record(const QString& strOperation, const QString& strArgument, Fn call);
    // The transfer, behind the progress dialog when asked on the GUI thread.
    int Transfer(int nTask, FactoryParams* pParams, const QString& strText);
    // A card call, off the GUI thread when asked on it.
    template <typename Fn>
    int Waited(Fn call);

    // Keeps what the controller holds as a backup, for reason.
    void KeepHeld(CParamBackups::Reason reason);
    void SetHeld(const FactoryParams* pParams);

    IDevice* m_pDevice;
    // What the controller held at the last read, while nothing has changed it since.
    QMutex m_heldMutex;
    FactoryParams m_held;
    bool m_bHeldKnown = false;
    QString m_strBackupFile;
};
