#pragma once

#include <QDir>
#include <QStandardPaths>
#include <QString>

// Rules of the host platform that the plug-in, the platform libraries, the
// host and the tool all follow, each written once, here.
namespace HostRules {

// Display units 0 and 2 are inch; every other value is millimetres.
inline bool IsInch(int nUnit)
{
    return nUnit == 0 || nUnit == 2;
}

// Where a host keeps what it ships: "Resources" beside the directory of its
// executable, strAppDir.
inline QString ResourceDirectoryOf(const QString& strAppDir)
{
    return QDir(strAppDir).absolutePath() + "/../Resources";
}

// Where a host writes per user: the per-user configuration directory +
// "/../<edition>/Resources", the edition "Quorvane" for the theme of that
// name and "Tessiflow" for any other. Made with its parents when missing;
// returned cleaned.
inline QString UserDataDirectory(const QString& strThemeName)
{
    const QString strEdition = strThemeName == QLatin1String("Quorvane") ? QStringLiteral("Quorvane")
                                                                          : QStringLiteral("Tessiflow");
    const QString strPath = QDir::cleanPath(QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation)
                                            + "/../" + strEdition + "/Resources");
    QDir().mkpath(strPath);
    return strPath;
}

}
