// Arbitrary bytes as a firmware file: the header check names a version only
// for a file it accepts, and a file made for a board is accepted for it.
#include "CFirmwareFile.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize)
{
    const QByteArray content(reinterpret_cast<const char*>(pData), qsizetype(nSize));
    for (const char* szBoard : {CFirmwareFile::kMainboard, CFirmwareFile::kPanel}) {
        QString strVersion;
        const CFirmwareFile::Check check = CFirmwareFile::Parse(content, QString::fromLatin1(szBoard), strVersion);
        if (check == CFirmwareFile::Valid && strVersion.isEmpty())
            std::abort();
    }
    // The input as a payload: made into a file, it checks as valid.
    const QByteArray made = CFirmwareFile::Make(CFirmwareFile::kMainboard, QStringLiteral("QV-MB 1.0.0"), content);
    QString strVersion;
    if (CFirmwareFile::Parse(made, CFirmwareFile::kMainboard, strVersion) != CFirmwareFile::Valid
        || CFirmwareFile::Parse(made, CFirmwareFile::kPanel, strVersion) != CFirmwareFile::WrongBoard)
        std::abort();
    return 0;
}
