#include "ILog.h"

#include "CLogWriter.h"

#include <QByteArray>
#include <QString>

#include <cstdarg>

void ILog_WriteLogF(int nLevel, const char* szFormat, ...)
{
    if (!szFormat)
        return;
    // Qt's formatting writes numbers the same way in every locale: a log read
    // by support shows "1.50" whether the machine runs in English or German.
    va_list args;
    va_start(args, szFormat);
    const QString strText = QString::vasprintf(szFormat, args);
    va_end(args);
    CLogWriter::GetInstance()->Write(nLevel, strText.toUtf8());
}

void ILog_WriteLog(int nLevel, const char* szText)
{
    CLogWriter::GetInstance()->Write(nLevel, QByteArray(szText ? szText : ""));
}
