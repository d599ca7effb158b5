#pragma once

#include "SUrls.h"

#include <QMutex>
#include <QString>

// The host's theme and home page service. The theme name and version come
// from "Theme/Theme.ini" in the resource directory unless the host overrides
// them; the home page addresses persist in the user data directory.
class CUiPermissionsManager
{
public:
    CUiPermissionsManager();

    static CUiPermissionsManager* GetInstance();

    QString GetThemeName() const;
    QString GetThemeVersion() const;

    SUrls GetUrls() const;
    bool SetHomepageUrls(const SHomePageUrls& urls);

    // The host's own choice of edition, taking precedence over the theme file.
    // An empty name drops the override.
    void SetThemeOverride(const QString& strName, const QString& strVersion);

    // File in which the addresses persist, for the current theme.
    QString UrlsFilePath() const;

private:
    QString ThemeFilePath() const;

    mutable QMutex m_mutex;
    QString m_strNameOverride;
    QString m_strVersionOverride;
};
