#pragma once

#include <QString>

// The home page entries the host opens, in the order the permissions service
// stores them. A settings page may address them by position (1 = first).
struct SHomePageUrls
{
    QString strNavigationGlobal;   // 1
    QString strNavigation;         // 2
    QString strGallery;            // 3
    QString strDevice;             // 4
    QString strCommunity;          // 5
    QString strKnowledgeBase;      // 6
    QString strOfficialSupport;    // 7
    QString strSoftwareUpdate;     // 8
    QString strFeedback;           // 9
    QString strAdvancedTutorial;   // 10
    QString strOnlineGallery;      // 11

    static constexpr int kCount = 11;

    // Member at 1-based position nIndex, or null outside 1..kCount.
    QString* At(int nIndex);
    const QString* At(int nIndex) const;
};
