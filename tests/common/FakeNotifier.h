#pragma once

#include "IErrorNotifier.h"

#include <QList>
#include <QPair>

class FakeNotifier : public IErrorNotifier
{
public:
    int ShowErrorCode(int nCode, int nReserved) override
    {
        m_calls.append({nCode, nReserved});
        return m_nAnswer;
    }

    QList<QPair<int, int>> m_calls;
    int m_nAnswer = 0;
};
