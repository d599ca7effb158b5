#pragma once

#include "FakeTaskState.h"
#include "ICard.h"

#include <QList>
#include <QMutex>
#include <QSemaphore>
#include <QThread>
#include <QString>
#include <QVariant>

#include <atomic>
#include <functional>

// A card that records every function that reaches it. It can be held inside
// a call (m_bHoldCalls) until Release(), to see who gets in meanwhile.
class FakeCard : public ICard
{
public:
    struct Call
    {
        QString strName;
        QVariant arg;
        bool bQuery;
        QThread* pThread;   // the thread the call came from
    };

    int GetState() override;
    ITaskState* GetTaskState() override;
    int CallFunction(const char* szName, const QVariant& arg) override;
    int QueryFunction(const char* szName, QVariant& inOut) override;

    QList<Call> Calls() const;
    // Lets one held call out.
    void Release();
    // Stops holding calls and lets every held one out (also on a test's
    // failure path, so that a failing test never hangs).
    void ReleaseAll();
    // Waits until a call is inside the card.
    bool WaitEntered(int nMilliseconds);

    std::atomic<int> m_nState{ICard::StateReady};
    std::atomic<int> m_nResult{0};
    std::atomic<bool> m_bHoldCalls{false};
    std::atomic<int> m_nInside{0};
    std::atomic<int> m_nMaxInside{0};
    FakeTaskState m_taskState;
    // Runs inside every call that reaches the card (on the caller's thread).
    std::function<void(const QString&)> m_onCall;
    // Answered to "CurrentCardType".
    std::atomic<int> m_nCardType{8};
    // Written into a CardInfo handed to "GetCardInfo".
    QByteArray m_firmwareVersion = "FW-1.0";
    std::atomic<int> m_nWorkTime{3661};

private:
    int Enter(const char* szName, const QVariant& arg, bool bQuery);

    mutable QMutex m_mutex;
    QList<Call> m_calls;
    QSemaphore m_entered;
    QSemaphore m_release;
};
