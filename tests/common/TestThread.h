#pragma once

#include <atomic>
#include <functional>
#include <thread>

// A worker thread for tests that cross threads. It ends in a join, which every
// race detector sees as the point after which the worker's writes are visible;
// the end of a QThread is announced through Qt's internal lock, which a
// ThreadSanitizer build cannot see into unless Qt itself is instrumented.
class TestThread
{
public:
    explicit TestThread(std::function<void()> work);
    ~TestThread();   // waits for the work to end
    TestThread(const TestThread&) = delete;
    TestThread& operator=(const TestThread&) = delete;

    void Start();
    // True once the work has ended (the thread is then joined); false when
    // nMs milliseconds pass first. A negative nMs waits as long as it takes.
    bool Wait(int nMs = -1);
    bool IsFinished() const { return m_bFinished; }

private:
    std::function<void()> m_work;
    std::thread m_thread;
    std::atomic<bool> m_bFinished{false};
};
