#include "PluginLoader.h"

#include "CTipsBox.h"
#include "ILog.h"

#include <QCoreApplication>
#include <QGlobalStatic>
#include <QLibrary>
#include <QThread>

#include <utility>

namespace {
void ReleaseAll(PluginRegistry& records);

// Made on first use, destroyed when the module is unloaded or the process
// ends. What is still registered then is released: the libraries stay loaded
// until their records release them, so their release functions are still
// there. A dialog or host object destroyed later finds the registry gone
// (Q_GLOBAL_STATIC tells) and has nothing left to release.
struct ModuleRegistry
{
    ~ModuleRegistry() { ReleaseAll(records); }
    PluginRegistry records;
};
Q_GLOBAL_STATIC(ModuleRegistry, g_registry)

// pRecord has been taken out of records already.
void ReleaseRecord(PluginLibraryRecord* pRecord, PluginRegistry& records)
{
    // A library that is gone all the same is not called into.
    if (pRecord->pfnRelease && pRecord->pInterface && pRecord->pLibrary->isLoaded())
        pRecord->pfnRelease(pRecord->pInterface);
    // The load that keeps the library open goes over to a record still using
    // it, so the library closes with the last record and not before.
    if (pRecord->bOwnsLoad) {
        for (PluginLibraryRecord* pOther : records) {
            if (!pOther->bOwnsLoad && pOther->pLibrary->fileName() == pRecord->pLibrary->fileName()) {
                std::swap(pRecord->pLibrary, pOther->pLibrary);
                std::swap(pRecord->bOwnsLoad, pOther->bOwnsLoad);
                break;
            }
        }
    }
    if (pRecord->bOwnsLoad)
        pRecord->pLibrary->unload();
}

void FreeRecord(PluginLibraryRecord* pRecord)
{
    delete pRecord->pLibrary;
    delete pRecord;
}

void ReleaseAll(PluginRegistry& records)
{
    while (!records.isEmpty()) {
        PluginLibraryRecord* pRecord = records.takeLast();
        ReleaseRecord(pRecord, records);
        FreeRecord(pRecord);
    }
}

void ReportFailure(const char* szMessage, const QString& strName, const QLibrary& library)
{
    const QString strText = QString::fromLatin1(szMessage).arg(strName);
    QCoreApplication* pApp = QCoreApplication::instance();
    if (pApp && QThread::currentThread() == pApp->thread())
        CTipsBox::Show(nullptr, QStringLiteral("Tips"), strText, QStringLiteral("OK"));
    ILog_WriteLog(1, library.errorString().toLocal8Bit().constData());
}
}

void* LoadPluginInterface(const QString& strName, bool bReportFailure, PluginRegistry* pTarget)
{
    if (!pTarget && g_registry.isDestroyed())
        return nullptr;

    auto* pRecord = new PluginLibraryRecord;
    pRecord->pLibrary = new QLibrary(strName);
    // Qt 6.4 shows a library another QLibrary has open as loaded already.
    pRecord->bOwnsLoad = !pRecord->pLibrary->isLoaded();

    const char* szFailure = nullptr;
    if (!pRecord->pLibrary->load()) {
        szFailure = "Load %1 failed! \n";
    } else if (!(pRecord->pfnCreate = reinterpret_cast<void* (*)()>(pRecord->pLibrary->resolve("NewInterface")))) {
        szFailure = "Load %1 faile2! \n";
    } else if (!(pRecord->pfnRelease
                 = reinterpret_cast<void (*)(void*)>(pRecord->pLibrary->resolve("ReleaseInterface")))) {
        szFailure = "Load %1 faile3! \n";
    }
    if (szFailure) {
        if (bReportFailure)
            ReportFailure(szFailure, strName, *pRecord->pLibrary);
        if (pRecord->bOwnsLoad)
            pRecord->pLibrary->unload();
        FreeRecord(pRecord);
        return nullptr;
    }

    pRecord->pInterface = pRecord->pfnCreate();
    (pTarget ? pTarget : &g_registry()->records)->append(pRecord);
    return pRecord->pInterface;
}

bool ReleasePluginInterface(void* pInterface)
{
    if (!g_registry.exists())
        return true;
    PluginRegistry& records = g_registry()->records;
    for (qsizetype i = records.size() - 1; i >= 0; --i) {
        if (records[i]->pInterface == pInterface) {
            PluginLibraryRecord* pRecord = records.takeAt(i);
            ReleaseRecord(pRecord, records);
            FreeRecord(pRecord);
            break;
        }
    }
    return true;
}

void ReleaseAllPluginInterfaces()
{
    if (g_registry.exists())
        ReleaseAll(g_registry()->records);
}

PluginRegistry ModulePluginRegistry()
{
    return g_registry.exists() ? g_registry()->records : PluginRegistry();
}
