#include "CHostSettings.h"

#include "CHostPaths.h"
#include "CUiPermissionsManager.h"

#include "CSettingsFile.h"
#include "ILog.h"

#include <QSet>
#include <QSettings>

namespace {
// A file the host cannot take is named in the log once, not at every value.
void Report(const QString& strProblem)
{
    static QSet<QString> reported;
    if (!strProblem.isEmpty() && !reported.contains(strProblem)) {
        reported.insert(strProblem);
        ILog_WriteLogF(1, "Host settings: %s", qUtf8Printable(strProblem));
    }
}

QVariant Value(const QString& strKey, const QVariant& fallback = QVariant())
{
    CSettingsFile file(CHostSettings::Path());
    Report(file.Problem());
    return file.Settings().value(strKey, fallback);
}

void SetValue(const QString& strKey, const QVariant& value)
{
    CSettingsFile file(CHostSettings::Path());
    if (QSettings* pSettings = file.Writable())
        pSettings->setValue(strKey, value);
    else
        Report(file.Problem() + QStringLiteral("; nothing is written to it"));
}

// The main window's key is the one earlier hosts wrote.
QString GeometryKey(const QString& strWindow)
{
    return strWindow == QLatin1String("main") ? QStringLiteral("HOST/GEOMETRY")
                                              : QStringLiteral("HOST/GEOMETRY_%1").arg(strWindow.toUpper());
}
}

QString CHostSettings::Path()
{
    return CHostPaths::UserDataDirectory(CUiPermissionsManager::GetInstance()->GetThemeName()) + "/Data/Host.ini";
}

int CHostSettings::Unit()
{
    return Value(QStringLiteral("HOST/UNIT"), 1).toInt();
}

void CHostSettings::SetUnit(int nUnit)
{
    SetValue(QStringLiteral("HOST/UNIT"), nUnit);
}

QString CHostSettings::Language()
{
    return Value(QStringLiteral("HOST/LANGUAGE"), QStringLiteral("en")).toString();
}

void CHostSettings::SetLanguage(const QString& strLanguage)
{
    SetValue(QStringLiteral("HOST/LANGUAGE"), strLanguage);
}

QByteArray CHostSettings::Geometry(const QString& strWindow)
{
    return Value(GeometryKey(strWindow)).toByteArray();
}

void CHostSettings::SetGeometry(const QString& strWindow, const QByteArray& geometry)
{
    SetValue(GeometryKey(strWindow), geometry);
}

QByteArray CHostSettings::State()
{
    return Value(QStringLiteral("HOST/STATE")).toByteArray();
}

void CHostSettings::SetState(const QByteArray& state)
{
    SetValue(QStringLiteral("HOST/STATE"), state);
}
