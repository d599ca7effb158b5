#include "FakeDevice.h"

#include "FakeCard.h"

#include <cstring>

ICard* FakeDevice::GetCurrentCard()
{
    ++m_nCardAsked;
    return m_pCard;
}

int FakeDevice::WriteFactoryParams(FactoryParams* pParams)
{
    ++m_nWrites;
    m_pLastWritten = pParams;
    if (pParams)
        std::memcpy(static_cast<void*>(&m_stored), pParams, sizeof(FactoryParams));
    return m_nResult;
}

int FakeDevice::ReadFactoryParams(FactoryParams* pParams)
{
    ++m_nReads;
    m_pLastRead = pParams;
    if (pParams)
        std::memcpy(static_cast<void*>(pParams), &m_stored, sizeof(FactoryParams));
    return m_nResult;
}
