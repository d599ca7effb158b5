// A long run: cycles of what a machine builder does all day (open the
// settings, edit, upload, check, save, reload) against the simulated
// controller with its link timing at zero, in one process. Resident memory,
// open file descriptors and threads after the run are printed beside their
// values after the first 100 cycles. Run with scripts/bench (release build).
//
//   factorymgr_soak [cycles]     10000 by default

#include "CSimController.h"
#include "DlgFactoryMgr.h"
#include "IFactoryMgr.h"
#include "ResidentSize.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <unistd.h>

namespace {
long OpenFiles()
{
    return long(QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size());
}

long Threads()
{
    // A /proc file has no size: it is read to its end, not asked for it.
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("Threads:"))
            return line.mid(8).trimmed().toLong();
    return -1;
}

struct Sample
{
    long nResidentKb;
    long nFiles;
    long nThreads;
};

Sample Take()
{
    return {ResidentKb(), OpenFiles(), Threads()};
}
}

int main(int argc, char** argv)
{
    // Files in memory where there is such a place: every save syncs its file
    // to the disk, and the run is about what stays behind, not about the disk.
    QTemporaryDir home(QDir(QStringLiteral("/dev/shm")).exists() ? QStringLiteral("/dev/shm/factorymgr-soak-XXXXXX")
                                                                  : QDir::tempPath() + "/factorymgr-soak-XXXXXX");
    qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toLocal8Bit());
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int nCycles = argc > 1 ? QByteArray(argv[1]).toInt() : 10000;

    CSimController controller(home.path() + "/controller.ini");
    controller.SetTaskDuration(0);
    controller.SetRestartDuration(0);
    IFactoryMgr* pMgr = NewInterface();
    pMgr->Init(&controller, nullptr);

    Sample baseline{};
    QElapsedTimer timer;
    timer.start();
    int nFailures = 0;
    for (int i = 1; i <= nCycles; ++i) {
        // Open the settings (the previous dialog goes), edit a value as the
        // host hands one in, upload, check, save from the dialog, reload.
        DlgFactoryMgr* pDialog = pMgr->ShowFactoryDlg(nullptr);
        FactoryParams record;
        pMgr->GetFactoryParams(&record);
        record.motor[0].speedMax = 800.0 + i % 200;
        record.laser.lasers[0].powerMax = 60.0 + i % 40;
        pMgr->SetFactoryParams(&record);
        pDialog->DataToCtrlSlot(true);
        quint32 nFlags = 0;
        if (pMgr->UploadParamsToDevice() != 0 || !pMgr->CheckDeviceParams(&nFlags) || nFlags != 0)
            ++nFailures;
        pMgr->SaveToFile(true);
        pMgr->ReloadFromFile();
        // The host's event loop runs between two cycles.
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (i == qMin(100, nCycles))
            baseline = Take();
    }
    const double dSeconds = timer.nsecsElapsed() / 1e9;
    const Sample after = Take();
    ReleaseInterface(pMgr);

    std::printf("%d cycles in %.1f s (%.2f ms each), %d failed\n", nCycles, dSeconds, dSeconds * 1000.0 / nCycles,
                nFailures);
    std::printf("%-28s %12s %18s %10s   %-10s %s\n", "after the run", "value", "after 100 cycles", "growth", "allowed",
                "met");
    const auto row = [](const char* szWhat, long nAfter, long nBase, long nAllowed) {
        std::printf("%-28s %12ld %18ld %10ld   %-10ld %s\n", szWhat, nAfter, nBase, nAfter - nBase, nAllowed,
                    nAfter - nBase <= nAllowed ? "yes" : "NO");
        return nAfter - nBase <= nAllowed;
    };
    bool bMet = row("resident KiB", after.nResidentKb, baseline.nResidentKb, 2048);
    bMet = row("open file descriptors", after.nFiles, baseline.nFiles, 0) && bMet;
    bMet = row("threads", after.nThreads, baseline.nThreads, 0) && bMet;
    return bMet && nFailures == 0 ? 0 : 1;
}
