// Arbitrary bytes as an INI file (and as the value of every kind of setting
// the system reads), through the guard in front of the settings layer.
// Whatever the guard lets through, the layer must not have deserialised; a
// file the guard passes untouched must decode nothing read straight through
// the layer either; and a defused file must hold nothing left to defuse.
#include "CSettingsFile.h"
#include "HostileFiles.h"
#include "FactoryParamIo.h"
#include "FactoryParams.h"

#include "FuzzSetUp.h"

#include <QCoreApplication>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

namespace {
QTemporaryDir* g_pDir = nullptr;
int g_nFile = 0;

// A name the settings layer has not cached yet.
QString Write(const QByteArray& bytes)
{
    const QString strPath = g_pDir->filePath(QStringLiteral("f%1.ini").arg(++g_nFile));
    QFile file(strPath);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        std::abort();
    return strPath;
}

void CheckNothingDecoded(QSettings& settings)
{
    for (const QString& strKey : settings.allKeys())
        if (HostileFiles::Decoded(settings.value(strKey)))
            std::abort();
}

// The settings each kind of file holds that a reader looks up: the value goes to each.
const char* const kHeaders[] = {
    "[FACTORY_PARAM]\nFILE_FLAG=__FACTORY_PARAM__\n[FACTORY_PARAM_MOTOR]\nMOTOR_SPEED_MAX_1=",
    "[HOST]\nUNIT=", "[HOST]\nGEOMETRY=", "[CONTROLLER]\nPARAMS=", "[CONTROLLER]\nWORK_SECONDS=",
    "[HOMEPAGE_URLS]\nURL_1=", "[CALIBRATE]\nPOWER=", "[THEME]\nNAME="};
}

extern "C" int LLVMFuzzerInitialize(int* pArgc, char*** pArgv)
{
    g_pDir = FuzzSetUp(pArgc, pArgv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize)
{
    if (nSize == 0)
        return 0;
    // The first byte chooses: the whole input as a file, or the rest as the
    // value of one of the settings the system reads.
    const QByteArray rest(reinterpret_cast<const char*>(pData) + 1, qsizetype(nSize - 1));
    const size_t nKind = pData[0] % (std::size(kHeaders) + 1);
    const QByteArray bytes = nKind == 0 ? rest : QByteArray(kHeaders[nKind - 1]) + rest + "\nZ=1\n";

    const QList<CSettingsFile::EncodedValue> found = CSettingsFile::EncodedValues(bytes);
    if (!CSettingsFile::EncodedValues(CSettingsFile::Defused(bytes, found)).isEmpty())
        std::abort();
    const QString strPath = Write(bytes);
    {
        CSettingsFile guarded(strPath);
        CheckNothingDecoded(guarded.Settings());
        if (found.isEmpty() != guarded.Problem().isEmpty())
            std::abort();
    }
    if (found.isEmpty()) {
        // Passed as it stands: the layer reads it straight, and decodes nothing.
        QSettings direct(strPath, QSettings::IniFormat);
        CheckNothingDecoded(direct);
    }
    // The record's reader takes it whole or not at all.
    FactoryParams record;
    ReadFactoryParamFile(record, strPath);
    QFile::remove(strPath);
    return 0;
}
