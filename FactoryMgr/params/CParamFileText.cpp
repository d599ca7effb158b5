#include "CParamFileText.h"

#include <QHash>

namespace {
const QString kGeneral = QStringLiteral("General");
}

CParamFileText::CParamFileText(const QByteArray& bytes)
{
    QString strSection = kGeneral;
    qsizetype nStart = 0;
    while (nStart < bytes.size()) {
        qsizetype nEnd = bytes.indexOf('\n', nStart);
        SLine line;
        if (nEnd < 0) {
            line.text = bytes.mid(nStart);
            nEnd = bytes.size();
        } else {
            line.text = bytes.mid(nStart, nEnd - nStart);
            line.ending = "\n";
            ++nEnd;
        }
        if (line.text.endsWith('\r')) {
            line.text.chop(1);
            line.ending.prepend('\r');
        }
        nStart = nEnd;
        const QByteArray trimmed = line.text.trimmed();
        if (trimmed.startsWith('[') && trimmed.endsWith(']')) {
            strSection = QString::fromUtf8(trimmed.mid(1, trimmed.size() - 2).trimmed());
            line.bHeader = true;
        } else if (!trimmed.isEmpty() && !trimmed.startsWith(';') && !trimmed.startsWith('#')
                   && trimmed.contains('=')) {
            line.strKey = QString::fromUtf8(trimmed.left(trimmed.indexOf('=')).trimmed());
        }
        line.strSection = strSection;
        m_lines << line;
    }
}

QList<QPair<QString, int>> CParamFileText::RepeatedKeys() const
{
    QHash<QString, int> counts;
    QStringList order;
    for (const SLine& line : m_lines) {
        if (line.strKey.isEmpty())
            continue;
        const QString strName = line.strSection + "/" + line.strKey;
        if (++counts[strName] == 2)
            order << strName;
    }
    QList<QPair<QString, int>> repeated;
    for (const QString& strName : order)
        repeated << qMakePair(strName, counts.value(strName));
    return repeated;
}

QList<QPair<QString, int>> CParamFileText::RepeatedSections() const
{
    QHash<QString, int> counts;
    QStringList order;
    for (const SLine& line : m_lines)
        if (line.bHeader && ++counts[line.strSection] == 2)
            order << line.strSection;
    QList<QPair<QString, int>> repeated;
    for (const QString& strName : order)
        repeated << qMakePair(strName, counts.value(strName));
    return repeated;
}

bool CParamFileText::HasComments() const
{
    for (const SLine& line : m_lines) {
        const QByteArray trimmed = line.text.trimmed();
        if (trimmed.startsWith(';') || trimmed.startsWith('#'))
            return true;
    }
    return false;
}

bool CParamFileText::Has(const QString& strSection, const QString& strKey) const
{
    return LastLineOf(strSection, strKey) >= 0;
}

int CParamFileText::LastLineOf(const QString& strSection, const QString& strKey) const
{
    for (int i = int(m_lines.size()) - 1; i >= 0; --i)
        if (m_lines[i].strKey == strKey && m_lines[i].strSection == strSection)
            return i;
    return -1;
}

QByteArray CParamFileText::Ending() const
{
    for (const SLine& line : m_lines)
        if (!line.ending.isEmpty())
            return line.ending;
    return "\n";
}

void CParamFileText::Set(const QString& strSection, const QString& strKey, const QString& strValue)
{
    const QByteArray text = strKey.toUtf8() + "=" + strValue.toUtf8();
    if (const int nLine = LastLineOf(strSection, strKey); nLine >= 0) {
        // The key's own indentation stays.
        const QByteArray& old = m_lines[nLine].text;
        qsizetype nIndent = 0;
        while (nIndent < old.size() && (old[nIndent] == ' ' || old[nIndent] == '\t'))
            ++nIndent;
        m_lines[nLine].text = old.left(nIndent) + text;
        return;
    }
    // After the last key line of the section's last block.
    int nAfter = -1;
    for (int i = 0; i < m_lines.size(); ++i)
        if (m_lines[i].strSection == strSection && (m_lines[i].bHeader || !m_lines[i].strKey.isEmpty()))
            nAfter = i;
    const QByteArray ending = Ending();
    if (!m_lines.isEmpty() && m_lines.last().ending.isEmpty())
        m_lines.last().ending = ending;
    SLine line;
    line.text = text;
    line.ending = ending;
    line.strSection = strSection;
    line.strKey = strKey;
    if (nAfter >= 0) {
        m_lines.insert(nAfter + 1, line);
        return;
    }
    SLine header;
    header.text = "[" + strSection.toUtf8() + "]";
    header.ending = ending;
    header.strSection = strSection;
    header.bHeader = true;
    m_lines << header << line;
}

void CParamFileText::DropRepeatedKeys()
{
    QHash<QString, int> last;
    for (int i = 0; i < m_lines.size(); ++i)
        if (!m_lines[i].strKey.isEmpty())
            last.insert(m_lines[i].strSection + "/" + m_lines[i].strKey, i);
    QList<SLine> kept;
    for (int i = 0; i < m_lines.size(); ++i)
        if (m_lines[i].strKey.isEmpty() || last.value(m_lines[i].strSection + "/" + m_lines[i].strKey) == i)
            kept << m_lines[i];
    m_lines = kept;
}

QByteArray CParamFileText::Bytes() const
{
    QByteArray bytes;
    for (const SLine& line : m_lines)
        bytes += line.text + line.ending;
    return bytes;
}
