#include "CUiPermissionsManager.h"

#include "CHostPaths.h"

#include <QMutexLocker>
#include <QSettings>

namespace {
const char* const kDefaultThemeName = "Quorvane";
const char* const kUrlsGroup = "HOMEPAGE_URLS";

QString UrlKey(int nIndex)
{
    return QStringLiteral("URL_%1").arg(nIndex);
}
}

CUiPermissionsManager::CUiPermissionsManager() = default;

CUiPermissionsManager* CUiPermissionsManager::GetInstance()
{
    static CUiPermissionsManager s_instance;
    return &s_instance;
}

QString CUiPermissionsManager::ThemeFilePath() const
{
    return CHostPaths::ResourceDirectory() + "/Theme/Theme.ini";
}

QString CUiPermissionsManager::GetThemeName() const
{
    {
        QMutexLocker locker(&m_mutex);
        if (!m_strNameOverride.isEmpty())
            return m_strNameOverride;
    }
    // A missing or unreadable file reads as empty, and the host runs as Quorvane.
    const QString strName = QSettings(ThemeFilePath(), QSettings::IniFormat).value("THEME/NAME").toString().trimmed();
    return strName.isEmpty() ? QString::fromLatin1(kDefaultThemeName) : strName;
}

QString CUiPermissionsManager::GetThemeVersion() const
{
    {
        QMutexLocker locker(&m_mutex);
        if (!m_strNameOverride.isEmpty())
            return m_strVersionOverride;
    }
    return QSettings(ThemeFilePath(), QSettings::IniFormat).value("THEME/VERSION").toString().trimmed();
}

void CUiPermissionsManager::SetThemeOverride(const QString& strName, const QString& strVersion)
{
    QMutexLocker locker(&m_mutex);
    m_strNameOverride = strName;
    m_strVersionOverride = strVersion;
}

QString CUiPermissionsManager::UrlsFilePath() const
{
    return CHostPaths::UserDataDirectory(GetThemeName()) + "/Data/HomepageUrls.ini";
}

SUrls CUiPermissionsManager::GetUrls() const
{
    // Stored addresses win; the theme file supplies the edition's defaults.
    QSettings stored(UrlsFilePath(), QSettings::IniFormat);
    QSettings theme(ThemeFilePath(), QSettings::IniFormat);
    stored.beginGroup(kUrlsGroup);
    theme.beginGroup(kUrlsGroup);
    SUrls urls;
    for (int i = 1; i <= SHomePageUrls::kCount; ++i)
        *urls.At(i) = stored.value(UrlKey(i), theme.value(UrlKey(i))).toString();
    urls.strPrivacyPolicy = theme.value("PRIVACY_POLICY").toString();
    urls.strUserAgreement = theme.value("USER_AGREEMENT").toString();
    return urls;
}

bool CUiPermissionsManager::SetHomepageUrls(const SHomePageUrls& urls)
{
    QSettings stored(UrlsFilePath(), QSettings::IniFormat);
    stored.beginGroup(kUrlsGroup);
    for (int i = 1; i <= SHomePageUrls::kCount; ++i)
        stored.setValue(UrlKey(i), *urls.At(i));
    stored.endGroup();
    stored.sync();
    return stored.status() == QSettings::NoError;
}
