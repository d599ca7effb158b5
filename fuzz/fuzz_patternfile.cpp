// Arbitrary bytes as a pattern (LCPX) or job (TL) file: whatever reads,
// writes and reads back the same.
#include "CShapeFile.h"

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
    const QString strPath = g_pDir->filePath(QStringLiteral("input"));
    {
        QFile file(strPath);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            std::abort();
        file.write(reinterpret_cast<const char*>(pData), qint64(nSize));
    }
    for (const char* szMagic : {"LCPX", "TL"}) {
        const QByteArray magic(szMagic);
        CShapeFile shape;
        QString strError;
        if (!shape.Read(strPath, magic, strError)) {
            if (strError.isEmpty())
                std::abort();
            continue;
        }
        const QString strCopy = g_pDir->filePath(QStringLiteral("copy"));
        if (!shape.Write(strCopy, magic))
            std::abort();
        CShapeFile again;
        if (!again.Read(strCopy, magic, strError) || again.shapes.size() != shape.shapes.size()
            || again.fields.keys() != shape.fields.keys())
            std::abort();
    }
    return 0;
}
