#pragma once

#include "ICard.h"
#include "IDevice.h"
#include "ITaskState.h"

#include <QObject>
#include <QString>

// The host objects the plug-in is handed: every call goes on to the real
// device (here the simulated controller) and is told, with its argument, its
// result and how long it took, to whoever listens. Calls come from the GUI
// thread and from the progress dialog's worker thread alike; Called is
// emitted on the calling thread.
class CDeviceRecorder : public QObject, public IDevice, public ICard, public ITaskState
{
    Q_OBJECT
public:
    CDeviceRecorder(IDevice* pDevice, QObject* parent = nullptr);

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

signals:
    // strResult: the number the call returned; for a card function, its code.
    void Called(const QString& strOperation, const QString& strArgument, int nResult, qint64 nMicroseconds);

private:
    template <typename Fn>
    int Record(const QString& strOperation, const QString& strArgument, Fn call);

    IDevice* m_pDevice;
};
