#pragma once

#include "SHomePageUrls.h"

// Every address the host knows: the home page entries first, in the same
// order, then the addresses that only the host itself uses.
struct SUrls : SHomePageUrls
{
    QString strPrivacyPolicy;      // 12
    QString strUserAgreement;      // 13
};
