#pragma once

#include <QByteArray>
#include <QList>
#include <QSettings>
#include <QString>

#include <memory>

class QTemporaryDir;

// An INI file read (and written) through the settings layer, looked at
// before the layer sees it.
//
// The layer decodes a value written in its own encodings as it parses the
// file: "@Variant(...)" and "@DateTime(...)" are deserialised, and a value
// nested deep enough overflows the stack. No file of this system holds such
// a value where a setting is read, so:
// - what is no regular file, or is larger than its limit, is refused: it
//   reads as an empty file and is never written;
// - a value the layer would decode other than as a byte array or a text is
//   turned into the plain text "@<name>(...)" before the layer reads the file
//   (a reader that expects a number or a text then meets the invalid value
//   any other text would be), and such a file is never written through the
//   layer, so that it stays exactly as it is.
// Byte arrays ("@ByteArray(...)") and texts ("@String(...)", "@@...") decode
// without nesting and are read as they stand: the host keeps window
// geometry and the simulator its record that way.
class CSettingsFile
{
public:
    // Settings files of this system are a few kilobytes; above this one is refused.
    static constexpr qint64 kMaxSize = 1024 * 1024;

    explicit CSettingsFile(const QString& strPath, qint64 nMaxSize = kMaxSize);
    ~CSettingsFile();
    CSettingsFile(const CSettingsFile&) = delete;
    CSettingsFile& operator=(const CSettingsFile&) = delete;

    // The settings layer over what may be read of the file.
    QSettings& Settings();
    // The settings layer over the file itself when it may be written (it is
    // absent, or a regular file within its limit holding no encoded value);
    // otherwise nullptr, and Problem() says why.
    QSettings* Writable();
    // Why the file is not read as it stands, for a log: "<path>: a FIFO, not a
    // regular file", "<path>: line 4 (MOTOR_SPEED_MAX_1) holds a value in the
    // settings layer's own encoding (@Variant), read as plain text". Empty
    // when the file is read as it stands or is absent.
    QString Problem() const;
    // Whether the file was refused whole (not regular, too large, unreadable).
    bool IsRefused() const;

    // A value in a file's bytes that the layer would deserialise: the line it
    // is on, its key, the encoding's name, and where the value's text lies.
    struct EncodedValue
    {
        int nLine = 0;
        QByteArray key;
        QString strEncoding;
        qsizetype nValueStart = 0;
        qsizetype nValueEnd = 0;
    };
    // Every such value, found as the layer itself splits lines, keys and values.
    static QList<EncodedValue> EncodedValues(const QByteArray& bytes);
    // bytes with each of those values replaced by the plain text "@@<name>(...)".
    static QByteArray Defused(const QByteArray& bytes, const QList<EncodedValue>& values);

private:
    QString m_strPath;
    QString m_strProblem;
    bool m_bRefused = false;
    std::unique_ptr<QTemporaryDir> m_pCopyDir;
    std::unique_ptr<QSettings> m_pSettings;
};
