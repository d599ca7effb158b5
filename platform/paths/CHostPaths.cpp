#include "CHostPaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QMutex>
#include <QMutexLocker>
#include <QStandardPaths>

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
    return QDir(QCoreApplication::applicationDirPath()).absolutePath() + "/../Resources";
}

void CHostPaths::SetResourceDirectory(const QString& strDir)
{
    QMutexLocker locker(&g_mutex);
    g_strResourceOverride = strDir;
}

QString CHostPaths::UserDataDirectory(const QString& strThemeName)
{
    const QString strEdition = strThemeName == QLatin1String("Quorvane") ? QStringLiteral("Quorvane")
                                                                          : QStringLiteral("Tessiflow");
    const QString strPath = QDir::cleanPath(QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation)
                                            + "/../" + strEdition + "/Resources");
    QDir().mkpath(strPath);
    return strPath;
}
