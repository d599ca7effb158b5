#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>

// Text conversions for paths and texts handed to the host and the controller.
QByteArray StringToUtf8(const QString& strText);
QString Utf8ToString(const QByteArray& bytes);
QByteArray StringToGbk(const QString& strText);
QString GbkToString(const QByteArray& bytes);
QByteArray StringToLocal8Bit(const QString& strText);
QString Local8BitToString(const QByteArray& bytes);

// Zero-fills the whole of pDest, then copies szSource into it: all of it when
// it is shorter than the buffer, otherwise one byte less than the buffer, so
// the copy is always NUL-terminated. False when either pointer is null or the
// buffer has no room at all.
bool CopyToBuffer(char* pDest, std::size_t nDestSize, const char* szSource);
