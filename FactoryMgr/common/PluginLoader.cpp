#include "PluginLoader.h"

#include "CTipsBox.h"
#include "ILog.h"

#include <QCoreApplication>
#include <QLibrary>
#include <QThread>

namespace {
void ReleaseAll(PluginRegistry& records);

// Created when the module is loaded, destroyed when it is unloaded. What is
// still registered then is released: the libraries stay loaded until their
// records release them, so their release functions are still there.
struct ModuleRegistry
{
    ~ModuleRegistry() { ReleaseAll(records); }
    PluginRegistry records;
};
ModuleRegistry g_registry;

// Whether a record still in the registry uses the same library file.
bool LibraryInUse(const QLibrary& library, const PluginRegistry& records)
{
    for (const PluginLibraryRecord* pOther : records)
        if (pOther->pLibrary && pOther->pLibrary->fileName() == library.fileName())
            return true;
    return false;
}

// pRecord has been taken out of records already.
void ReleaseRecord(PluginLibraryRecord* pRecord, const PluginRegistry& records)
{
    // QLibrary::unload closes the library for every QLibrary on the same
    // file, so it waits for the last record of that library; a library that
    // is gone all the same is not called into.
    if (pRecord->pLibrary && pRecord->pfnRelease && pRecord->pInterface && pRecord->pLibrary->isLoaded()) {
        pRecord->pfnRelease(pRecord->pInterface);
        if (!LibraryInUse(*pRecord->pLibrary, records))
            pRecord->pLibrary->unload();
    }
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
    auto* pRecord = new PluginLibraryRecord;
    pRecord->pLibrary = new QLibrary(strName);

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
        FreeRecord(pRecord);
        return nullptr;
    }

    pRecord->pInterface = pRecord->pfnCreate();
    (pTarget ? pTarget : &g_registry.records)->append(pRecord);
    return pRecord->pInterface;
}

bool ReleasePluginInterface(void* pInterface)
{
    PluginRegistry& records = g_registry.records;
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
    ReleaseAll(g_registry.records);
}

const PluginRegistry& ModulePluginRegistry()
{
    return g_registry.records;
}
