#pragma once

#include "FactoryParams.h"
#include "IDevice.h"

#include <atomic>

class FakeCard;

// A device whose card can be plugged in and out, and which keeps the last
// record written to it and answers reads with m_stored.
class FakeDevice : public IDevice
{
public:
    ICard* GetCurrentCard() override;
    int WriteFactoryParams(FactoryParams* pParams) override;
    int ReadFactoryParams(FactoryParams* pParams) override;

    FakeCard* m_pCard = nullptr;
    FactoryParams m_stored;
    FactoryParams* m_pLastWritten = nullptr;
    FactoryParams* m_pLastRead = nullptr;
    std::atomic<int> m_nResult{0};
    std::atomic<int> m_nCardAsked{0};
    std::atomic<int> m_nWrites{0};
    std::atomic<int> m_nReads{0};
    // Makes both transfers throw, as a misbehaving host object might.
    std::atomic<bool> m_bThrow{false};
};
