#include "CHostPaths.h"

#include "HostRules.h"

#include <QCoreApplication>
#include <QMutex>
#include <QMutexLocker>

namespace {
QMutex g_mutex;
QString g_strResourceOverride;
}

QString CHostPaths::ResourceDirectory()
{
    {
        QMutexLocker locker(&g_mutex);
        if (!g_strResourceOverride.isEmpty())
            return g_strResourceOverride;
    }
    return HostRules::ResourceDirectoryOf(QCoreApplication::applicationDirPath());
}

void CHostPaths::SetResourceDirectory(const QString& strDir)
{
    QMutexLocker locker(&g_mutex);
    g_strResourceOverride = strDir;
}

QString CHostPaths::UserDataDirectory(const QString& strThemeName)
{
    return HostRules::UserDataDirectory(strThemeName);
}
