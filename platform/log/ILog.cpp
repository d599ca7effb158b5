#include "ILog.h"

#include "CLogWriter.h"

#include <QByteArray>

#include <cstdarg>
#include <cstdio>

void ILog_WriteLogF(int nLevel, const char* szFormat, ...)
{
    if (!szFormat)
        return;
    va_list args;
    va_start(args, szFormat);
    va_list argsCopy;
    va_copy(argsCopy, args);
    const int nLength = std::vsnprintf(nullptr, 0, szFormat, args);
    va_end(args);
    if (nLength < 0) {
        va_end(argsCopy);
        return;
    }
    QByteArray text(nLength + 1, '\0');
    std::vsnprintf(text.data(), size_t(text.size()), szFormat, argsCopy);
    va_end(argsCopy);
    text.chop(1);
    CLogWriter::GetInstance()->Write(nLevel, text);
}

void ILog_WriteLog(int nLevel, const char* szText)
{
    CLogWriter::GetInstance()->Write(nLevel, QByteArray(szText ? szText : ""));
}
