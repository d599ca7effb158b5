#include "CFirmwareFile.h"

#include <QList>

#include <zlib.h>

namespace {
const QByteArray kMagic("QVFW 1");
}

quint32 CFirmwareFile::Crc32(const QByteArray& data)
{
    uLong crc = crc32(0L, Z_NULL, 0);
    // zlib takes at most a uInt at a time.
    for (qsizetype nDone = 0; nDone < data.size();) {
        const uInt nChunk = uInt(qMin<qsizetype>(data.size() - nDone, 1 << 30));
        crc = crc32(crc, reinterpret_cast<const Bytef*>(data.constData() + nDone), nChunk);
        nDone += nChunk;
    }
    return quint32(crc);
}

QByteArray CFirmwareFile::Make(const QString& strBoard, const QString& strVersion, const QByteArray& payload)
{
    return kMagic + "\nBOARD " + strBoard.toUtf8() + "\nVERSION " + strVersion.toUtf8() + "\nCRC32 "
        + QByteArray::number(Crc32(payload), 16).rightJustified(8, '0') + "\n\n" + payload;
}

CFirmwareFile::Check CFirmwareFile::Parse(const QByteArray& content, const QString& strBoard, QString& strVersion)
{
    const qsizetype nEnd = content.indexOf("\n\n");
    if (!content.startsWith(kMagic + "\n") || nEnd < 0)
        return NoMagic;
    const QList<QByteArray> lines = content.left(nEnd).split('\n');
    QByteArray board;
    QByteArray version;
    QByteArray crc;
    for (const QByteArray& line : lines) {
        if (line.startsWith("BOARD "))
            board = line.mid(6).trimmed();
        else if (line.startsWith("VERSION "))
            version = line.mid(8).trimmed();
        else if (line.startsWith("CRC32 "))
            crc = line.mid(6).trimmed();
    }
    if (board != strBoard.toUtf8())
        return WrongBoard;
    bool bOk = false;
    const quint32 nExpected = crc.toUInt(&bOk, 16);
    if (!bOk || crc.size() != 8 || version.isEmpty() || nExpected != Crc32(content.mid(nEnd + 2)))
        return BadChecksum;
    strVersion = QString::fromUtf8(version).left(60);
    return Valid;
}
