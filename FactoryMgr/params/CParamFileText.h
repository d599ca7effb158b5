#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

// A parameter file as its lines of text: which section and key each line
// holds. It lets a change keep everything it was not asked to change (keys
// and sections nobody knows, comments, blank lines, the order, the line
// endings) byte for byte, and it shows what the settings layer hides: a key
// or a section given twice. Values are never interpreted here; the settings
// layer reads them, and whoever changes a file reads it back through it.
// Qt Core only.
class CParamFileText
{
public:
    explicit CParamFileText(const QByteArray& bytes);

    // "SECTION/KEY" of every key given more than once, with how often.
    QList<QPair<QString, int>> RepeatedKeys() const;
    // Every section header given more than once, with how often.
    QList<QPair<QString, int>> RepeatedSections() const;
    // Whether some line gives section/key a value.
    bool Has(const QString& strSection, const QString& strKey) const;
    // Whether any line is a comment (";" or "#").
    bool HasComments() const;

    // Gives section/key the value text strValue: on the line the settings
    // layer reads (the last one with that key), or on a new line at the end
    // of the section's last block (the section is added at the end of the
    // file when it has none).
    void Set(const QString& strSection, const QString& strKey, const QString& strValue);
    // Leaves only the last line of every repeated key.
    void DropRepeatedKeys();

    QByteArray Bytes() const;

private:
    struct SLine
    {
        QByteArray text;      // without its line ending
        QByteArray ending;    // "\n", "\r\n" or empty on the last line
        QString strSection;   // the section the line is in ("General" before any header)
        QString strKey;       // the key it gives a value; empty for any other line
        bool bHeader = false;
    };
    int LastLineOf(const QString& strSection, const QString& strKey) const;
    QByteArray Ending() const;

    QList<SLine> m_lines;
};
