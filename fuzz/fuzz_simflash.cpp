// Arbitrary bytes as the simulated controller's flash file: it starts, reads
// what it can, answers, and never writes over a file it did not write.
#include "CSettingsFile.h"
#include "CSimController.h"
#include "FactoryParams.h"

#include "FuzzSetUp.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

namespace {
QTemporaryDir* g_pDir = nullptr;
}

extern "C" int LLVMFuzzerInitialize(int* pArgc, char*** pArgv)
{
    g_pDir = FuzzSetUp(pArgc, pArgv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize)
{
    static int s_nFile = 0;
    const QString strPath = g_pDir->filePath(QStringLiteral("controller%1.ini").arg(++s_nFile));
    const QByteArray bytes(reinterpret_cast<const char*>(pData), qsizetype(nSize));
    {
        QFile file(strPath);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            std::abort();
    }
    {
        CSimController sim(strPath);
        sim.SetTaskDuration(0);
        // Faults armed in the file are the file's to arm; they are not what is checked here.
        sim.ArmFault(CSimController::FaultNone, 0);
        FactoryParams record;
        const int nRead = sim.ReadFactoryParams(&record);
        if (nRead != 0 && nRead != CSimController::CodeFirmwareIncomplete)
            std::abort();
        const CardInfo info = sim.Info();
        if (info.totalWorkTime < 0 || info.totalJobTime < 0)
            std::abort();
        // Nothing reaches a flash file it would not take, and the write says so.
        if (!sim.FlashProblem().isEmpty() && sim.WriteFactoryParams(&record) == 0)
            std::abort();
    }
    // A file it would not take is left exactly as it was.
    QFile file(strPath);
    if (file.open(QIODevice::ReadOnly) && CSettingsFile(strPath).Problem().isEmpty() == false
        && file.readAll() != bytes)
        std::abort();
    file.close();
    QFile::remove(strPath);
    return 0;
}
