#include "FakeDevice.h"

#include "FakeCard.h"

#include <cstring>
#include <stdexcept>

ICard* FakeDevice::GetCurrentCard()
{
    ++m_nCardAsked;
    return m_pCard;
}

int FakeDevice::WriteFactoryParams(FactoryParams* pParams)
{
    ++m_nWrites;
    if (m_bThrow)
        throw std::runtime_error("device write failed");
    m_pLastWritten = pParams;
    if (pParams)
        std::memcpy(static_cast<void*>(&m_stored), pParams, sizeof(FactoryParams));
    return m_nResult;
}

int FakeDevice::ReadFactoryParams(FactoryParams* pParams)
{
    ++m_nReads;
    if (m_bThrow)
        throw std::runtime_error("device read failed");
    m_pLastRead = pParams;
    if (pParams)
        std::memcpy(static_cast<void*>(pParams), &m_stored, sizeof(FactoryParams));
    return m_nResult;
}
