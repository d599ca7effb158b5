#include "CPluginHost.h"

#include "Wording.h"

CPluginHost::CPluginHost() = default;

CPluginHost::~CPluginHost()
{
    Unload();
}

bool CPluginHost::Load(const QString& strPath)
{
    m_library.setFileName(strPath);
    if (!m_library.load()) {
        m_strError = m_library.errorString();
        return false;
    }
    // The plug-in's interface revision first: a plug-in built for another one
    // would be called through the wrong table of functions.
    const auto pfnVersion = reinterpret_cast<PfnFactoryMgrVersion>(m_library.resolve("FactoryMgrVersion"));
    if (!pfnVersion) {
        m_strError = Wording("%1 does not say which interface revision it implements (it exports no FactoryMgrVersion); "
                             "this host needs revision %2.")
                         .arg(strPath)
                         .arg(FACTORYMGR_INTERFACE_REVISION);
        return false;
    }
    int nMajor = 0;
    int nMinor = 0;
    int nPatch = 0;
    const int nRevision = pfnVersion(&nMajor, &nMinor, &nPatch);
    if (nRevision != FACTORYMGR_INTERFACE_REVISION) {
        m_strError = Wording("%1 is FactoryMgr %2.%3.%4 with interface revision %5; this host needs revision %6.")
                         .arg(strPath)
                         .arg(nMajor)
                         .arg(nMinor)
                         .arg(nPatch)
                         .arg(nRevision)
                         .arg(FACTORYMGR_INTERFACE_REVISION);
        return false;
    }
    auto pfnNew = reinterpret_cast<PfnNewInterface>(m_library.resolve("NewInterface"));
    m_pfnRelease = reinterpret_cast<PfnReleaseInterface>(m_library.resolve("ReleaseInterface"));
    if (!pfnNew || !m_pfnRelease) {
        m_strError = QStringLiteral("%1 does not export NewInterface and ReleaseInterface").arg(strPath);
        return false;
    }
    m_pfnWizard = reinterpret_cast<PfnFactoryMgrCalibrateWizard>(m_library.resolve("FactoryMgrCalibrateWizard"));
    m_pMgr = pfnNew();
    if (!m_pMgr) {
        m_strError = QStringLiteral("NewInterface of %1 returned no service object").arg(strPath);
        return false;
    }
    return true;
}

IFactoryMgr* CPluginHost::Mgr() const
{
    return m_pMgr;
}

QWidget* CPluginHost::CalibrateWizard() const
{
    return m_pfnWizard && m_pMgr ? m_pfnWizard(m_pMgr) : nullptr;
}

QString CPluginHost::ErrorString() const
{
    return m_strError;
}

void CPluginHost::Unload()
{
    if (m_pMgr && m_pfnRelease)
        m_pfnRelease(m_pMgr);
    m_pMgr = nullptr;
    // The plug-in's dialogs may still exist (it does not delete them), so its
    // code stays mapped until the process ends.
}
