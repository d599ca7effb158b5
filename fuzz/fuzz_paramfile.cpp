// Arbitrary bytes as a parameter file, through the real reader.
#include "FactoryParamFile.h"
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
    // A console application: a wrong marker is logged, not shown in a box.
    g_pDir = FuzzSetUp(pArgc, pArgv, true);
    // FUZZ_WRITE_SEED=<path>: write a parameter file with the project's own
    // writer, for the seed corpus, and stop.
    const QString strSeed = qEnvironmentVariable("FUZZ_WRITE_SEED");
    if (!strSeed.isEmpty()) {
        FactoryParams record;
        record.laser.laserCount = 2;
        record.motor[1].speedMax = 812.5;
        std::exit(SaveFactoryParams(record, strSeed) ? 0 : 1);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize)
{
    const QString strPath = g_pDir->path() + "/input.ini";
    {
        QFile file(strPath);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            std::abort();
        file.write(reinterpret_cast<const char*>(pData), qint64(nSize));
    }
    FactoryParams record;
    if (LoadFactoryParams(record, strPath)) {
        // Whatever loaded saves and loads back the same.
        const QString strCopy = g_pDir->path() + "/copy.ini";
        if (!SaveFactoryParams(record, strCopy))
            std::abort();
        FactoryParams again;
        if (!LoadFactoryParams(again, strCopy))
            std::abort();
    }
    return 0;
}
