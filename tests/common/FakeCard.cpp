#include "FakeCard.h"

#include "CardInfo.h"

#include <cstring>

int FakeCard::GetState()
{
    return m_nState;
}

ITaskState* FakeCard::GetTaskState()
{
    return &m_taskState;
}

int FakeCard::CallFunction(const char* szName, const QVariant& arg)
{
    return Enter(szName, arg, false);
}

int FakeCard::QueryFunction(const char* szName, QVariant& inOut)
{
    if (qstrcmp(szName, "GetCardInfo") == 0 && inOut.metaType().id() == QMetaType::VoidStar) {
        if (auto* pInfo = static_cast<CardInfo*>(inOut.value<void*>())) {
            pInfo->totalWorkTime = m_nWorkTime;
            pInfo->totalJobTime = 59;
            pInfo->totalXMove = 123456;
            pInfo->totalYMove = -7;
            std::strncpy(pInfo->panelVersion, "PN-0.9", sizeof(pInfo->panelVersion) - 1);
            std::strncpy(pInfo->firmwareVersion, m_firmwareVersion.constData(), sizeof(pInfo->firmwareVersion) - 1);
        }
    }
    if (qstrcmp(szName, "CurrentCardType") == 0)
        inOut = QVariant(int(m_nCardType));
    return Enter(szName, inOut, true);
}

int FakeCard::Enter(const char* szName, const QVariant& arg, bool bQuery)
{
    const int nInside = ++m_nInside;
    int nMax = m_nMaxInside;
    while (nInside > nMax && !m_nMaxInside.compare_exchange_weak(nMax, nInside)) {
    }
    {
        QMutexLocker locker(&m_mutex);
        m_calls.append({QString::fromLatin1(szName), arg, bQuery, QThread::currentThread()});
    }
    m_entered.release();
    if (m_onCall)
        m_onCall(QString::fromLatin1(szName));
    if (m_bHoldCalls)
        m_release.acquire();
    --m_nInside;
    return m_nResult;
}

QList<FakeCard::Call> FakeCard::Calls() const
{
    QMutexLocker locker(&m_mutex);
    return m_calls;
}

void FakeCard::Release()
{
    m_release.release();
}

void FakeCard::ReleaseAll()
{
    m_bHoldCalls = false;
    m_release.release(64);
}

bool FakeCard::WaitEntered(int nMilliseconds)
{
    return m_entered.tryAcquire(1, nMilliseconds);
}
