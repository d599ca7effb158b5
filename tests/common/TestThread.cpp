#include "TestThread.h"

#include <QDeadlineTimer>
#include <QThread>

TestThread::TestThread(std::function<void()> work)
    : m_work(std::move(work))
{
}

TestThread::~TestThread()
{
    Wait();
}

void TestThread::Start()
{
    m_thread = std::thread([this] {
        m_work();
        m_bFinished = true;
    });
}

bool TestThread::Wait(int nMs)
{
    if (!m_thread.joinable())
        return m_bFinished;
    if (nMs >= 0) {
        const QDeadlineTimer deadline(nMs);
        while (!m_bFinished && !deadline.hasExpired())
            QThread::msleep(1);
        if (!m_bFinished)
            return false;
    }
    m_thread.join();
    return true;
}
