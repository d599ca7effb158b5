#include "CSettingsFile.h"

#include "SafeFile.h"

#include <QFile>
#include <QTemporaryDir>

namespace {
bool IsSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool IsBreak(char c)
{
    return c == '\n' || c == '\r';
}

struct Line
{
    qsizetype nStart = 0;
    qsizetype nEnd = 0;
    qsizetype nEquals = -1;
};

// The next line from nPos, split as the settings layer splits an INI file:
// blank lines and comment lines (";" first) are skipped, a ';' outside quotes
// ends the line (its comment then reads as the next, skipped, line), a line
// break inside quotes or after a backslash does not end it, and the first
// '=' outside quotes separates the key from the value.
bool NextLine(const QByteArray& data, qsizetype& nPos, Line& line)
{
    const qsizetype n = data.size();
    bool bQuoted = false;
    line.nEquals = -1;
    qsizetype nStart = nPos;
    while (nStart < n && IsSpace(data[nStart]))
        ++nStart;
    qsizetype i = nStart;
    while (i < n) {
        const char c = data[i++];
        if (c == '=') {
            if (!bQuoted && line.nEquals < 0)
                line.nEquals = i - 1;
        } else if (IsBreak(c)) {
            if (i == nStart + 1) {
                ++nStart;
            } else if (!bQuoted) {
                --i;
                break;
            }
        } else if (c == '\\') {
            if (i < n) {
                const char escaped = data[i++];
                if (i < n && IsBreak(escaped) && IsBreak(data[i]) && data[i] != escaped)
                    ++i;
            }
        } else if (c == '"') {
            bQuoted = !bQuoted;
        } else if (c == ';') {
            if (i == nStart + 1) {
                while (i < n && !IsBreak(data[i]))
                    ++i;
                while (i < n && IsSpace(data[i]))
                    ++i;
                nStart = i;
            } else if (!bQuoted) {
                --i;
                break;
            }
        }
    }
    nPos = i;
    line.nStart = nStart;
    line.nEnd = i;
    return i > nStart;
}

int HexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

int OctDigit(char c)
{
    return c >= '0' && c <= '7' ? c - '0' : -1;
}

char16_t Escaped(char c)
{
    switch (c) {
    case 'a': return u'\a';
    case 'b': return u'\b';
    case 'f': return u'\f';
    case 'n': return u'\n';
    case 'r': return u'\r';
    case 't': return u'\t';
    case 'v': return u'\v';
    case '"': return u'"';
    case '?': return u'?';
    case '\'': return u'\'';
    case '\\': return u'\\';
    default: return 0;
    }
}

// How each element of a value begins once the settings layer has unescaped
// it: quotes dropped, escapes resolved (a numeric escape wraps at 16 bits as
// the layer's does), leading blanks skipped, and split at commas outside
// quotes. Only the beginning matters, so each is cut at kPrefix characters.
// A well-formed UTF-8 sequence produces a character (which is not '@')
// whatever came before it. Any other byte above 0x7F produces none here: the
// layer may hold one back while it waits for the rest of a sequence, and a
// character that is not there cannot hide an '@' behind it.
constexpr qsizetype kPrefix = 24;

// The length of the well-formed UTF-8 sequence at nAt, or 0 when there is none.
qsizetype Utf8SequenceAt(const QByteArray& data, qsizetype nAt, qsizetype nTo)
{
    const uchar lead = uchar(data[nAt]);
    qsizetype nLength = 0;
    uchar secondLow = 0x80;
    uchar secondHigh = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        nLength = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        nLength = 3;
        if (lead == 0xE0)
            secondLow = 0xA0;
        else if (lead == 0xED)
            secondHigh = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        nLength = 4;
        if (lead == 0xF0)
            secondLow = 0x90;
        else if (lead == 0xF4)
            secondHigh = 0x8F;
    } else {
        return 0;
    }
    if (nAt + nLength > nTo)
        return 0;
    for (qsizetype k = 1; k < nLength; ++k) {
        const uchar c = uchar(data[nAt + k]);
        const uchar low = k == 1 ? secondLow : uchar(0x80);
        const uchar high = k == 1 ? secondHigh : uchar(0xBF);
        if (c < low || c > high)
            return 0;
    }
    return nLength;
}

QList<QString> ElementBeginnings(const QByteArray& data, qsizetype nFrom, qsizetype nTo)
{
    QList<QString> elements{QString()};
    const auto add = [&elements](char16_t c) {
        if (elements.last().size() < kPrefix)
            elements.last() += QChar(c);
    };
    const auto skipBlanks = [&](qsizetype i) {
        while (i < nTo && (data[i] == ' ' || data[i] == '\t'))
            ++i;
        return i;
    };
    bool bQuoted = false;
    qsizetype i = skipBlanks(nFrom);
    while (i < nTo) {
        const char c = data[i];
        if (c == '\\') {
            if (++i >= nTo)
                break;
            const char e = data[i++];
            if (const char16_t mapped = Escaped(e)) {
                add(mapped);
            } else if (e == 'x') {
                if (i < nTo && HexDigit(data[i]) >= 0) {
                    char16_t value = 0;
                    while (i < nTo && HexDigit(data[i]) >= 0)
                        value = char16_t((value << 4) + HexDigit(data[i++]));
                    add(value);
                }
            } else if (OctDigit(e) >= 0) {
                char16_t value = char16_t(OctDigit(e));
                while (i < nTo && OctDigit(data[i]) >= 0)
                    value = char16_t((value << 3) + OctDigit(data[i++]));
                add(value);
            } else if (IsBreak(e)) {
                if (i < nTo && IsBreak(data[i]) && data[i] != e)
                    ++i;
            }
        } else if (c == '"') {
            ++i;
            bQuoted = !bQuoted;
            if (!bQuoted)
                i = skipBlanks(i);
        } else if (c == ',' && !bQuoted) {
            elements << QString();
            i = skipBlanks(i + 1);
        } else if (uchar(c) < 0x80) {
            add(char16_t(uchar(c)));
            ++i;
        } else if (const qsizetype nSequence = Utf8SequenceAt(data, i, nTo)) {
            add(u'\uFFFD');
            i += nSequence;
        } else {
            ++i;
        }
    }
    return elements;
}

// The encoding's name when the layer would deserialise an element that
// begins so; empty when it reads the element as a text or a byte array.
QString EncodingOf(const QString& strBeginning)
{
    if (!strBeginning.startsWith(u'@') || strBeginning.startsWith(QLatin1String("@@"))
        || strBeginning.startsWith(QLatin1String("@ByteArray(")) || strBeginning.startsWith(QLatin1String("@String(")))
        return QString();
    const qsizetype nParen = strBeginning.indexOf(u'(');
    const QString strName = strBeginning.mid(1, nParen - 1);
    for (const QChar c : strName)
        if (!(c.unicode() < 0x80 && c.isLetter()))
            return QStringLiteral("@Encoded");
    return nParen > 1 ? u'@' + strName : QStringLiteral("@Encoded");
}
}

QList<CSettingsFile::EncodedValue> CSettingsFile::EncodedValues(const QByteArray& bytes)
{
    QList<EncodedValue> found;
    qsizetype nPos = bytes.startsWith("\xef\xbb\xbf") ? 3 : 0;
    Line line;
    qsizetype nCounted = 0;
    int nLine = 1;
    while (NextLine(bytes, nPos, line)) {
        if (bytes[line.nStart] == '[' || line.nEquals < 0)
            continue;
        for (const QString& strElement : ElementBeginnings(bytes, line.nEquals + 1, line.nEnd)) {
            const QString strEncoding = EncodingOf(strElement);
            if (strEncoding.isEmpty())
                continue;
            EncodedValue value;
            nLine += int(QByteArrayView(bytes).sliced(nCounted, line.nStart - nCounted).count('\n'));
            nCounted = line.nStart;
            value.nLine = nLine;
            value.key = bytes.mid(line.nStart, line.nEquals - line.nStart).trimmed();
            value.strEncoding = strEncoding;
            value.nValueStart = line.nEquals + 1;
            value.nValueEnd = line.nEnd;
            found << value;
            break;
        }
    }
    return found;
}

QByteArray CSettingsFile::Defused(const QByteArray& bytes, const QList<EncodedValue>& values)
{
    QByteArray result;
    qsizetype nCopied = 0;
    for (const EncodedValue& value : values) {
        result += bytes.mid(nCopied, value.nValueStart - nCopied);
        result += '@' + value.strEncoding.toLatin1() + "(...)";
        nCopied = value.nValueEnd;
    }
    result += bytes.mid(nCopied);
    return result;
}

CSettingsFile::CSettingsFile(const QString& strPath, qint64 nMaxSize)
    : m_strPath(strPath)
{
    QByteArray bytes;
    QString strWhy;
    const bool bAbsent = SafeFile::Check(strPath, nMaxSize) == SafeFile::Kind::Absent;
    if (bAbsent || SafeFile::ReadAll(strPath, nMaxSize, &bytes, &strWhy)) {
        const QList<EncodedValue> encoded = bAbsent ? QList<EncodedValue>() : EncodedValues(bytes);
        if (encoded.isEmpty()) {
            m_pSettings = std::make_unique<QSettings>(strPath, QSettings::IniFormat);
            return;
        }
        const EncodedValue& first = encoded.first();
        m_strProblem = QStringLiteral("%1: line %2 (%3) holds a value in the settings layer's own encoding (%4),"
                                      " read as plain text")
                           .arg(strPath)
                           .arg(first.nLine)
                           .arg(QString::fromUtf8(first.key), first.strEncoding);
        if (encoded.size() > 1)
            m_strProblem += QStringLiteral(" (and %1 more)").arg(encoded.size() - 1);
        bytes = Defused(bytes, encoded);
    } else {
        m_bRefused = true;
        m_strProblem = QStringLiteral("%1: %2, not read").arg(strPath, strWhy);
        bytes.clear();
    }
    // What may be read goes to a private copy, which the layer reads instead.
    m_pCopyDir = std::make_unique<QTemporaryDir>();
    const QString strCopy = m_pCopyDir->filePath(QStringLiteral("settings.ini"));
    QFile copy(strCopy);
    if (m_pCopyDir->isValid() && copy.open(QIODevice::WriteOnly))
        copy.write(bytes);
    copy.close();
    m_pSettings = std::make_unique<QSettings>(strCopy, QSettings::IniFormat);
}

CSettingsFile::~CSettingsFile() = default;

QSettings& CSettingsFile::Settings()
{
    return *m_pSettings;
}

QSettings* CSettingsFile::Writable()
{
    return m_strProblem.isEmpty() ? m_pSettings.get() : nullptr;
}

QString CSettingsFile::Problem() const
{
    return m_strProblem;
}

bool CSettingsFile::IsRefused() const
{
    return m_bRefused;
}
