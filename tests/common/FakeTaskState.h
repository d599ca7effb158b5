#pragma once

#include "ITaskState.h"

#include <atomic>

class FakeTaskState : public ITaskState
{
public:
    int IsBusy() override
    {
        ++m_nAsked;
        return m_bBusy ? 1 : 0;
    }

    std::atomic<bool> m_bBusy{false};
    std::atomic<int> m_nAsked{0};
};
