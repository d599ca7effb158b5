// Arbitrary bytes as a wording table: the language either loads or is
// refused, and every wording asked for is a text (the key itself when the
// table has none).
#include "CHostPaths.h"
#include "CTranslator.h"

#include "FuzzSetUp.h"

#include <QCoreApplication>
#include <QDir>
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
    QDir().mkpath(g_pDir->filePath("Wording"));
    CHostPaths::SetResourceDirectory(g_pDir->path());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize)
{
    {
        QFile file(g_pDir->filePath("Wording/xx.json"));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            std::abort();
        file.write(reinterpret_cast<const char*>(pData), qint64(nSize));
    }
    CTranslator* pTranslator = CTranslator::GetInstance();
    const bool bLoaded = pTranslator->SetLanguage(QStringLiteral("xx"));
    if (pTranslator->GetLanguage() != (bLoaded ? QStringLiteral("xx") : QStringLiteral("en")))
        std::abort();
    for (const QString& strKey : {QStringLiteral("Upload"), QStringLiteral("File ID is incorrect!"), QString()})
        if (!bLoaded && pTranslator->GetWording(strKey) != strKey)
            std::abort();
    pTranslator->SetLanguage(QStringLiteral("en"));
    return 0;
}
