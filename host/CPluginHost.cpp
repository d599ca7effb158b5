#include "CPluginHost.h"

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
    auto pfnNew = reinterpret_cast<PfnNewInterface>(m_library.resolve("NewInterface"));
    m_pfnRelease = reinterpret_cast<PfnReleaseInterface>(m_library.resolve("ReleaseInterface"));
    if (!pfnNew || !m_pfnRelease) {
        m_strError = QStringLiteral("%1 does not export NewInterface and ReleaseInterface").arg(strPath);
        return false;
    }
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
