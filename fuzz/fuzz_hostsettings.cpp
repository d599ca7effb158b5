// Arbitrary bytes as the host's own settings file (Host.ini): every setting
// reads, a setting written to a file the host takes reads back, and a file
// it would not take is never written.
#include "CHostSettings.h"
#include "CSettingsFile.h"

#include "FuzzSetUp.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

namespace {
QTemporaryDir* g_pDir = nullptr;
}

extern "C" int LLVMFuzzerInitialize(int* pArgc, char*** pArgv)
{
    g_pDir = FuzzSetUp(pArgc, pArgv, true);
    QDir().mkpath(QFileInfo(CHostSettings::Path()).absolutePath());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize)
{
    const QByteArray bytes(reinterpret_cast<const char*>(pData), qsizetype(nSize));
    const QString strPath = CHostSettings::Path();
    QFile::remove(strPath);
    {
        QFile file(strPath);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            std::abort();
    }
    const bool bTaken = CSettingsFile(strPath).Problem().isEmpty();
    CHostSettings::Unit();
    CHostSettings::Language();
    CHostSettings::Geometry(QStringLiteral("main"));
    CHostSettings::State();
    // A unit that differs from any the file could hold as it stands.
    CHostSettings::SetUnit(7);
    if (bTaken && CHostSettings::Unit() != 7)
        std::abort();
    if (!bTaken) {
        QFile file(strPath);
        if (!file.open(QIODevice::ReadOnly) || file.readAll() != bytes)
            std::abort();
    }
    return 0;
}
