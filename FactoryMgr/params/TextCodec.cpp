#include "TextCodec.h"

#include <QTextCodec>

#include <cstring>

namespace {
QTextCodec* Codec(const char* szName)
{
    // Both codecs ship with Qt; fall back to UTF-8 rather than crash if a
    // stripped-down Qt lacks one.
    QTextCodec* pCodec = QTextCodec::codecForName(szName);
    return pCodec ? pCodec : QTextCodec::codecForName("UTF-8");
}
}

QByteArray StringToUtf8(const QString& strText)
{
    return Codec("utf-8")->fromUnicode(strText);
}

QString Utf8ToString(const QByteArray& bytes)
{
    return Codec("utf-8")->toUnicode(bytes);
}

QByteArray StringToGbk(const QString& strText)
{
    return Codec("GBK")->fromUnicode(strText);
}

QString GbkToString(const QByteArray& bytes)
{
    return Codec("GBK")->toUnicode(bytes);
}

QByteArray StringToLocal8Bit(const QString& strText)
{
    return strText.toLocal8Bit();
}

QString Local8BitToString(const QByteArray& bytes)
{
    return QString::fromLocal8Bit(bytes);
}

bool CopyToBuffer(char* pDest, std::size_t nDestSize, const char* szSource)
{
    if (!pDest || !szSource || nDestSize == 0)
        return false;
    std::memset(pDest, 0, nDestSize);
    const std::size_t nLength = std::strlen(szSource);
    std::memcpy(pDest, szSource, nLength < nDestSize ? nLength : nDestSize - 1);
    return true;
}
