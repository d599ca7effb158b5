#include "CHostSettings.h"

#include "CHostPaths.h"
#include "CUiPermissionsManager.h"

#include <QSettings>

namespace {
QVariant Value(const QString& strKey, const QVariant& fallback = QVariant())
{
    return QSettings(CHostSettings::Path(), QSettings::IniFormat).value(strKey, fallback);
}

void SetValue(const QString& strKey, const QVariant& value)
{
    QSettings(CHostSettings::Path(), QSettings::IniFormat).setValue(strKey, value);
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
