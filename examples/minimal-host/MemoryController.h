#pragma once

#include <CardInfo.h>
#include <FactoryParams.h>
#include <ICard.h>
#include <IDevice.h>
#include <IErrorNotifier.h>
#include <ITaskState.h>

#include <QList>
#include <QStringList>

// A controller that lives in memory: the device, its one card and the card's
// task state in one object. It keeps the parameter record it is sent, except
// an X axis maximum speed above its limit, which it stores as the limit.
class MemoryController : public IDevice, public ICard, public ITaskState
{
public:
    static constexpr double kSpeedMaxLimit = 1500.0;

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

    FactoryParams held;          // what the controller holds
    int nWrites = 0;
    int nReads = 0;
    QStringList functions;       // card functions called, in order
};

// Keeps the codes the plug-in would show to the person.
class CodeCollector : public IErrorNotifier
{
public:
    int ShowErrorCode(int nCode, int nReserved) override;
    QList<int> codes;
};
