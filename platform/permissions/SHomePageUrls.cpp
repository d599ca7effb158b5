#include "SHomePageUrls.h"

QString* SHomePageUrls::At(int nIndex)
{
    return const_cast<QString*>(static_cast<const SHomePageUrls*>(this)->At(nIndex));
}

const QString* SHomePageUrls::At(int nIndex) const
{
    switch (nIndex) {
    case 1: return &strNavigationGlobal;
    case 2: return &strNavigation;
    case 3: return &strGallery;
    case 4: return &strDevice;
    case 5: return &strCommunity;
    case 6: return &strKnowledgeBase;
    case 7: return &strOfficialSupport;
    case 8: return &strSoftwareUpdate;
    case 9: return &strFeedback;
    case 10: return &strAdvancedTutorial;
    case 11: return &strOnlineGallery;
    default: return nullptr;
    }
}
