#include "CFactoryMgrIns.h"
#include "ILog.h"

#include <QCoreApplication>
#include <QMutex>
#include <QSet>

#include <new>

namespace {
// The service objects NewInterface made and ReleaseInterface has not yet
// destroyed: a second release of one, or a pointer that never was one, is
// refused instead of being deleted.
QMutex& LiveMutex()
{
    static QMutex s_mutex;
    return s_mutex;
}

QSet<IFactoryMgr*>& Live()
{
    static QSet<IFactoryMgr*> s_live;
    return s_live;
}
}

int FactoryMgrVersion(int* pnMajor, int* pnMinor, int* pnPatch) noexcept
{
    if (pnMajor)
        *pnMajor = FACTORYMGR_VERSION_MAJOR;
    if (pnMinor)
        *pnMinor = FACTORYMGR_VERSION_MINOR;
    if (pnPatch)
        *pnPatch = FACTORYMGR_VERSION_PATCH;
    return FACTORYMGR_INTERFACE_REVISION;
}

IFactoryMgr* NewInterface() noexcept
{
    // Without the application there is no configuration directory to read
    // the parameter file from, nor a GUI thread for the dialogs. Not even the
    // log is written: its folder is in that directory.
    if (!QCoreApplication::instance()) {
        qWarning("FactoryMgr: NewInterface was called before the QApplication exists; it returns null");
        return nullptr;
    }
    try {
        CFactoryMgrIns* pIns = new (std::nothrow) CFactoryMgrIns;
        if (!pIns)
            return nullptr;
        QMutexLocker locker(&LiveMutex());
        Live().insert(pIns);
        return pIns;
    } catch (...) {
        ILog_WriteLog(1, "NewInterface: the FactoryMgr service object could not be made");
        return nullptr;
    }
}

QWidget* FactoryMgrCalibrateWizard(IFactoryMgr* pInterface) noexcept
{
    QMutexLocker locker(&LiveMutex());
    if (!pInterface || !Live().contains(pInterface))
        return nullptr;
    return static_cast<CFactoryMgrIns*>(pInterface)->CalibrateWizard();
}

void ReleaseInterface(IFactoryMgr* pInterface) noexcept
{
    if (!pInterface)
        return;
    {
        QMutexLocker locker(&LiveMutex());
        if (!Live().remove(pInterface)) {
            ILog_WriteLogF(1, "ReleaseInterface: %p is no live FactoryMgr service object (released already?); "
                              "it is left alone",
                           static_cast<void*>(pInterface));
            return;
        }
    }
    try {
        delete pInterface;
    } catch (...) {
        ILog_WriteLog(1, "ReleaseInterface: the FactoryMgr service object failed to go away cleanly");
    }
}
