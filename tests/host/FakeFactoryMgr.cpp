// A library that stands where libFactoryMgr.so belongs but is not the one a
// host was built for: with FAKE_REVISION it answers FactoryMgrVersion with
// that revision; without it, it exports no FactoryMgrVersion at all. Its
// NewInterface and ReleaseInterface end the process: a host must never call
// them once the revision check has failed.
#include "IFactoryMgr.h"

#include <cstdlib>

#ifdef FAKE_REVISION
int FactoryMgrVersion(int* pnMajor, int* pnMinor, int* pnPatch) noexcept
{
    if (pnMajor)
        *pnMajor = 0;
    if (pnMinor)
        *pnMinor = 9;
    if (pnPatch)
        *pnPatch = 4;
    return FAKE_REVISION;
}
#endif

IFactoryMgr* NewInterface() noexcept
{
    std::abort();
}

void ReleaseInterface(IFactoryMgr*) noexcept
{
    std::abort();
}
