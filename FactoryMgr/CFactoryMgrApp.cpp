#include "CFactoryMgrApp.h"

#include "CUiPermissionsManager.h"
#include "HostRules.h"
#include "CardInfo.h"
#include "ICard.h"
#include "IDevice.h"
#include "IErrorNotifier.h"
#include "ITaskState.h"

#include <QCoreApplication>
#include <QDir>
#include <QMutex>
#include <QStandardPaths>
#include <QVariant>

namespace {
// Constructed when the library is loaded, destroyed when it is unloaded.
CFactoryMgrApp s_theApp;
}

CFactoryMgrApp::CFactoryMgrApp()
    : m_bFactoryFlag(false)
    , m_pfnConvertPattern(nullptr)
    , m_pNotifier(nullptr)
    , m_nUnit(0)
    , m_pMutex(new QMutex)
    , m_pDevice(nullptr)
{
}

CFactoryMgrApp::~CFactoryMgrApp()
{
    delete m_pMutex;
}

CFactoryMgrApp* CFactoryMgrApp::GetInstance()
{
    return &s_theApp;
}

void CFactoryMgrApp::SetDevice(IDevice* pDevice)
{
    m_pDevice = pDevice;
}

void CFactoryMgrApp::SetNotifier(IErrorNotifier* pNotifier)
{
    m_pNotifier = pNotifier;
}

void CFactoryMgrApp::SetConvertPatternCallback(PfnConvertPattern pfnConvertPattern)
{
    m_pfnConvertPattern = pfnConvertPattern;
}

void CFactoryMgrApp::SetUnit(int nUnit)
{
    m_nUnit = nUnit;
}

void CFactoryMgrApp::SetFactoryFlag(bool bFactoryFlag)
{
    m_bFactoryFlag = bFactoryFlag;
}

CFactoryMgrApp::PfnConvertPattern CFactoryMgrApp::GetConvertPatternCallback() const
{
    return m_pfnConvertPattern;
}

int CFactoryMgrApp::GetUnit() const
{
    return m_nUnit;
}

bool CFactoryMgrApp::GetFactoryFlag() const
{
    return m_bFactoryFlag;
}

ICard* CFactoryMgrApp::GetCurrentCard() const
{
    return m_pDevice ? m_pDevice->GetCurrentCard() : nullptr;
}

int CFactoryMgrApp::ReportError(int nCode)
{
    return m_pNotifier ? m_pNotifier->ShowErrorCode(nCode, 0) : 0;
}

int CFactoryMgrApp::ReadFactoryParams(FactoryParams* pParams)
{
    QMutexLocker locker(m_pMutex);
    // The host must call Init first; without a device there is nothing to read.
    return m_pDevice ? m_pDevice->ReadFactoryParams(pParams) : ResultNoCard;
}

int CFactoryMgrApp::WriteFactoryParams(FactoryParams* pParams)
{
    QMutexLocker locker(m_pMutex);
    return m_pDevice ? m_pDevice->WriteFactoryParams(pParams) : ResultNoCard;
}

int CFactoryMgrApp::CallCardFunction(const char* szName, QVariant& arg, bool bAllowInformationState, bool bQuery)
{
    int nResult = ResultBusy;
    // Checks and call under one lock: what is seen here cannot change under
    // another caller of the module before the card is called.
    QMutexLocker locker(m_pMutex);
    ICard* pCard = m_pDevice ? m_pDevice->GetCurrentCard() : nullptr;
    if (!pCard)
        return ResultNoCard;
    const int nState = pCard->GetState();
    if (nState != ICard::StateReady && !(bAllowInformationState && nState == ICard::StateInformationOnly))
        return ResultNoCard;
    ITaskState* pTaskState = pCard->GetTaskState();
    if (pTaskState && pTaskState->IsBusy() != 0)
        return ResultBusy;
    nResult = bQuery ? pCard->QueryFunction(szName, arg) : pCard->CallFunction(szName, arg);
    return nResult;
}

int CFactoryMgrApp::BacklashAdjust(const QString& strJobPath)
{
    QVariant arg(strJobPath);
    return CallCardFunction("BacklashAdjust", arg, false, false);
}

int CFactoryMgrApp::GetCardInfo(CardInfo* pInfo)
{
    QVariant arg = QVariant::fromValue(static_cast<void*>(pInfo));
    return CallCardFunction("GetCardInfo", arg, true, true);
}

int CFactoryMgrApp::ClearCardInfo()
{
    QVariant arg;
    return CallCardFunction("ClearCardInfo", arg, false, false);
}

int CFactoryMgrApp::CardUpgrade(const QString& strFilePath)
{
    QVariant arg(strFilePath);
    return CallCardFunction("CardUpgrade", arg, false, false);
}

int CFactoryMgrApp::PanelUpgrade(const QString& strFilePath)
{
    QVariant arg(strFilePath);
    return CallCardFunction("PanelUpgrade", arg, false, false);
}

int CFactoryMgrApp::RunTask(int nTask, void* pParam)
{
    const QString strPath = pParam ? *static_cast<const QString*>(pParam) : QString();
    switch (nTask) {
    case TaskPanelUpgrade: return PanelUpgrade(strPath);
    case TaskCardUpgrade: return CardUpgrade(strPath);
    default: return 0;
    }
}

QString CFactoryMgrApp::GetResourceDirectory()
{
    return HostRules::ResourceDirectoryOf(QCoreApplication::applicationDirPath());
}

QString CFactoryMgrApp::GetUserDataDirectory()
{
    return HostRules::UserDataDirectory(CUiPermissionsManager::GetInstance()->GetThemeName());
}
