#include "CUiPermissionsManager.h"

#include "CHostPaths.h"
#include "CSettingsFile.h"

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
    CSettingsFile theme(ThemeFilePath());
    const QString strName = theme.Settings().value("THEME/NAME").toString().trimmed();
    return strName.isEmpty() ? QString::fromLatin1(kDefaultThemeName) : strName;
}

QString CUiPermissionsManager::GetThemeVersion() const
{
    {
        QMutexLocker locker(&m_mutex);
        if (!m_strNameOverride.isEmpty())
            return m_strVersionOverride;
    }
    CSettingsFile theme(ThemeFilePath());
    return theme.Settings().value("THEME/VERSION").toString().trimmed();
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
    CSettingsFile storedFile(UrlsFilePath());
    CSettingsFile themeFile(ThemeFilePath());
    QSettings& stored = storedFile.Settings();
    QSettings& theme = themeFile.Settings();
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
    // A file that is not one this platform wrote stays as it is.
    CSettingsFile file(UrlsFilePath());
    QSettings* pStored = file.Writable();
    if (!pStored)
        return false;
    pStored->beginGroup(kUrlsGroup);
    for (int i = 1; i <= SHomePageUrls::kCount; ++i)
        pStored->setValue(UrlKey(i), *urls.At(i));
    pStored->endGroup();
    pStored->sync();
    return pStored->status() == QSettings::NoError;
}
