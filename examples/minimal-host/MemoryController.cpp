#include "MemoryController.h"

#include <QVariant>

#include <cstring>

namespace {
// The card's answer to a function it does not have.
constexpr int kUnknownFunction = 1;
}

ICard* MemoryController::GetCurrentCard()
{
    return this;
}

int MemoryController::WriteFactoryParams(FactoryParams* pParams)
{
    if (!pParams)
        return kUnknownFunction;
    ++nWrites;
    std::memcpy(static_cast<void*>(&held), pParams, sizeof(FactoryParams));
    if (held.motor[0].speedMax > kSpeedMaxLimit)
        held.motor[0].speedMax = kSpeedMaxLimit;
    return 0;
}

int MemoryController::ReadFactoryParams(FactoryParams* pParams)
{
    if (!pParams)
        return kUnknownFunction;
    ++nReads;
    std::memcpy(static_cast<void*>(pParams), &held, sizeof(FactoryParams));
    return 0;
}

int MemoryController::GetState()
{
    return StateReady;
}

ITaskState* MemoryController::GetTaskState()
{
    return this;
}

int MemoryController::CallFunction(const char* szName, const QVariant& arg)
{
    Q_UNUSED(arg)
    functions << QString::fromLatin1(szName);
    return kUnknownFunction;
}

int MemoryController::QueryFunction(const char* szName, QVariant& inOut)
{
    functions << QString::fromLatin1(szName);
    if (std::strcmp(szName, "GetCardInfo") == 0) {
        auto* pInfo = static_cast<CardInfo*>(inOut.value<void*>());
        if (!pInfo)
            return kUnknownFunction;
        *pInfo = CardInfo{};
        std::strcpy(pInfo->firmwareVersion, "memory 1.0");
        return 0;
    }
    return kUnknownFunction;
}

int MemoryController::IsBusy()
{
    return 0;
}

int CodeCollector::ShowErrorCode(int nCode, int nReserved)
{
    Q_UNUSED(nReserved)
    codes << nCode;
    return 0;
}
