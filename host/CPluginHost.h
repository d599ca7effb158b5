#pragma once

#include "IFactoryMgr.h"

#include <QLibrary>
#include <QString>

// Loads libFactoryMgr by file name, as every host does, and holds the one
// service object it makes. The host reaches the plug-in through IFactoryMgr only.
class CPluginHost
{
public:
    CPluginHost();
    ~CPluginHost();

    // Loads the library from strPath and makes the service object; false,
    // with the reason in ErrorString, when either fails.
    bool Load(const QString& strPath);
    IFactoryMgr* Mgr() const;
    // The calibration wizard of the service object (after its Init), or null.
    QWidget* CalibrateWizard() const;
    QString ErrorString() const;
    // Gives the service object back and unloads the library.
    void Unload();

private:
    QLibrary m_library;
    PfnReleaseInterface m_pfnRelease = nullptr;
    PfnFactoryMgrCalibrateWizard m_pfnWizard = nullptr;
    IFactoryMgr* m_pMgr = nullptr;
    QString m_strError;
};
