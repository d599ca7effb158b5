#pragma once

#include <QList>
#include <QString>

class QLibrary;

// Loads sibling plug-ins the way the host loads this one: by name, through
// their exported "NewInterface" and "ReleaseInterface".

// One successfully loaded library and the interface it made.
struct PluginLibraryRecord
{
    QLibrary* pLibrary = nullptr;           // owned
    // Whether the library counts this record's load, so that its unload is
    // due: Qt 6.4 does not count a load of a library that another QLibrary
    // has open already, yet every unload takes one off.
    bool bOwnsLoad = false;
    void* (*pfnCreate)() = nullptr;         // "NewInterface"
    void (*pfnRelease)(void*) = nullptr;    // "ReleaseInterface"
    void* pInterface = nullptr;
};

// Records in the order of loading. The module keeps one for the libraries it
// loads; a caller may keep its own, and then releases a record itself:
// pfnRelease, unload() when bOwnsLoad, delete.
typedef QList<PluginLibraryRecord*> PluginRegistry;

// Loads library strName as QLibrary finds it (no directory, no suffix) and
// returns the interface its "NewInterface" made, appending the record to
// pTarget (null: the module-wide registry). Null on failure; with
// bReportFailure a failure is shown in a "Tips" box (GUI thread only) and the
// library's error text goes to the log. Into the module-wide registry nothing
// is loaded once the module has ended: nothing would release it.
void* LoadPluginInterface(const QString& strName, bool bReportFailure, PluginRegistry* pTarget);

// Releases the latest record of the module-wide registry holding pInterface.
// The library is unloaded with the last record using it. Always true, also
// when there is none or the module has already ended.
bool ReleasePluginInterface(void* pInterface);

// Releases every record of the module-wide registry, the last loaded first.
void ReleaseAllPluginInterfaces();

// A copy of the module-wide registry, for inspection; empty once the module has ended.
PluginRegistry ModulePluginRegistry();
