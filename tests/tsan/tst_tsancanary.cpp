// The race detector's own check: a deliberate data race in instrumented code,
// on a thread that Qt starts, under the suppressions the test step uses. CTest
// passes this test only when ThreadSanitizer reports the race, so a suppression
// that hid our own code would fail the run.

#include <QCoreApplication>
#include <QThread>

#include <atomic>
#include <cstdio>
#include <memory>

namespace {
int g_nShared = 0;
// Relaxed: tells the main thread the worker has written, without ordering
// anything, so the two writes stay unordered.
std::atomic<bool> g_bWritten{false};
}

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    std::unique_ptr<QThread> worker(QThread::create([] {
        g_nShared = 1;
        g_bWritten.store(true, std::memory_order_relaxed);
    }));
    worker->start();
    while (!g_bWritten.load(std::memory_order_relaxed))
        QThread::yieldCurrentThread();
    g_nShared = 2;
    worker->wait();
    std::printf("shared value %d\n", g_nShared);
    return 0;
}
