#pragma once

#include <QByteArray>
#include <QString>

// A firmware file of the simulated controller's boards. It begins with four
// text lines and a blank one, then the image itself (the payload):
//
//   QVFW 1                  the magic word and the format's version
//   BOARD QV-MB             the board it is for: QV-MB mainboard, QV-PN panel
//   VERSION QV-MB 3.3.0     the version the board reports after the upgrade
//   CRC32 1c291ca3          CRC-32 (as zlib and Ethernet compute it) of the payload, 8 hex digits
//   <blank line>
//   <payload bytes>
//
// Mainboard files end in .upd, panel files in .hmt or .hmi.
class CFirmwareFile
{
public:
    enum Check
    {
        Valid,
        NoMagic,        // not a firmware file at all
        WrongBoard,     // a file for the other board
        BadChecksum,    // the payload is damaged, or the header is
    };

    static constexpr const char* kMainboard = "QV-MB";
    static constexpr const char* kPanel = "QV-PN";

    // The file's bytes for a board, a version and a payload.
    static QByteArray Make(const QString& strBoard, const QString& strVersion, const QByteArray& payload);
    // Checks content for strBoard; strVersion receives the version it names.
    static Check Parse(const QByteArray& content, const QString& strBoard, QString& strVersion);
    static quint32 Crc32(const QByteArray& data);
};
