#include "CFactoryMgrIns.h"
#include "ILog.h"

#include <new>

IFactoryMgr* NewInterface() noexcept
{
    try {
        CFactoryMgrIns* pIns = new (std::nothrow) CFactoryMgrIns;
        return pIns ? static_cast<IFactoryMgr*>(pIns) : nullptr;
    } catch (...) {
        ILog_WriteLog(1, "NewInterface: the FactoryMgr service object could not be made");
        return nullptr;
    }
}

void ReleaseInterface(IFactoryMgr* pInterface) noexcept
{
    if (!pInterface)
        return;
    try {
        delete pInterface;
    } catch (...) {
        ILog_WriteLog(1, "ReleaseInterface: the FactoryMgr service object failed to go away cleanly");
    }
}
