#include "CFactoryMgrIns.h"

#include "CDlgCalibrateXyStep.h"
#include "CFactoryMgrApp.h"
#include "CReadBackCheck.h"
#include "CTipsBox.h"
#include "DlgFactoryMgr.h"
#include "FactoryParamFile.h"
#include "ILog.h"
#include "ParamsEqual.h"

#include <QCoreApplication>
#include <QFile>
#include <QPointer>

#include <cstring>
#include <exception>

namespace {
void LogFailure(const char* szOperation, const char* szWhat)
{
    ILog_WriteLogF(1, "IFactoryMgr::%s failed: %s", szOperation, szWhat);
}

// Runs one interface operation so that no exception crosses to the host.
template <typename Result, typename Fn>
Result Guarded(const char* szOperation, Result fallback, Fn fn) noexcept
{
    try {
        return fn();
    } catch (const std::exception& e) {
        LogFailure(szOperation, e.what());
    } catch (...) {
        LogFailure(szOperation, "unknown exception");
    }
    return fallback;
}

template <typename Fn>
void Guarded(const char* szOperation, Fn fn) noexcept
{
    Guarded(szOperation, 0, [&] {
        fn();
        return 0;
    });
}
}

namespace {
// The service object deletes no wizard. A wizard goes, storing its cutting
// power, when the application quits or when this library is unloaded,
// whichever comes first: after either, nothing of the application may still
// call into the library (a connection to code of an unloaded library is a
// jump into unmapped memory).
class WizardShelf
{
public:
    ~WizardShelf()
    {
        // The library is being unloaded (or the process ends). Without an
        // application a widget cannot be deleted any more: it is left as it is.
        if (!QCoreApplication::instance())
            return;
        for (const QPointer<CDlgCalibrateXyStep>& pWizard : std::as_const(m_wizards))
            delete pWizard.data();
    }

    void Keep(CDlgCalibrateXyStep* pWizard)
    {
        m_wizards.removeAll(nullptr);
        m_wizards << pWizard;
        if (QCoreApplication* pApp = QCoreApplication::instance())
            // The wizard is the connection's context: deleting it, at quit or
            // at unload, takes the connection (and this code) out of Qt's hands.
            QObject::connect(pApp, &QCoreApplication::aboutToQuit, pWizard, [pWizard] { delete pWizard; });
    }

private:
    QList<QPointer<CDlgCalibrateXyStep>> m_wizards;
};
WizardShelf g_wizards;
}

CFactoryMgrIns::CFactoryMgrIns()
    : QObject(nullptr)
    , m_hostContext1(nullptr)
    , m_hostContext2(nullptr)
    , m_pDlgFactoryMgr(nullptr)
    , m_pDlgCalibrateXyStep(nullptr)
{
    LoadFactoryParams(m_params, QString());
}

CFactoryMgrIns::~CFactoryMgrIns() = default;

int CFactoryMgrIns::Init(IDevice* pDevice, IErrorNotifier* pNotifier)
{
    return Guarded("Init", int(ResultInternalError), [&] {
        m_hostContext2 = nullptr;
        m_pDlgFactoryMgr = nullptr;
        if (!m_pDlgCalibrateXyStep) {
            m_pDlgCalibrateXyStep = new CDlgCalibrateXyStep(nullptr);
            g_wizards.Keep(m_pDlgCalibrateXyStep.data());
        }
        CFactoryMgrApp* pApp = CFactoryMgrApp::GetInstance();
        pApp->SetNotifier(pNotifier);
        pApp->SetDevice(pDevice);
        return 0;
    });
}

DlgFactoryMgr* CFactoryMgrIns::ShowFactoryDlg(PfnConvertPattern pfnConvertPattern)
{
    return Guarded("ShowFactoryDlg", static_cast<DlgFactoryMgr*>(nullptr), [&] {
        if (m_pDlgFactoryMgr)
            m_pDlgFactoryMgr->deleteLater();
        auto* pDialog = new DlgFactoryMgr(&m_params, nullptr);
        pDialog->ClearCenterOnShow();
        CFactoryMgrApp::GetInstance()->SetConvertPatternCallback(pfnConvertPattern);

        const QString strAccessFile = QStringLiteral("%1/Data/FactoryPsw.ini").arg(CFactoryMgrApp::GetResourceDirectory());
        if (QFile::exists(strAccessFile)) {
            m_pDlgFactoryMgr = pDialog;
            m_pDlgFactoryMgr->SetParams(m_params);
            m_pDlgFactoryMgr->ResetCellEditors();
            if (m_pDlgCalibrateXyStep)
                connect(m_pDlgCalibrateXyStep.data(), &CDlgCalibrateXyStep::CalibrateXyStepSignal, pDialog,
                        &DlgFactoryMgr::ApplyXyStepRatio);
            return pDialog;
        }
        // The host always receives a dialog; only one made with the access
        // file present is kept and takes part in the dialog-bound operations.
        CTipsBox::Show(nullptr, tr("Tips"), tr("Config file damaged or not exist, please contact the supplier!"), tr("OK"));
        return pDialog;
    });
}

int CFactoryMgrIns::ShowCalibrateXyStepDlg()
{
    return Guarded("ShowCalibrateXyStepDlg", 0, [&] { return m_pDlgCalibrateXyStep ? m_pDlgCalibrateXyStep->exec() : 0; });
}

QWidget* CFactoryMgrIns::CalibrateWizard() const
{
    return m_pDlgCalibrateXyStep.data();
}

int CFactoryMgrIns::GetLaserCount()
{
    return m_params.laser.laserCount;
}

int CFactoryMgrIns::SetFactoryParams(const FactoryParams* pParams)
{
    if (!pParams)
        return ResultBadArgument;
    return Guarded("SetFactoryParams", int(ResultInternalError), [&] {
        std::memcpy(static_cast<void*>(&m_params), pParams, sizeof(FactoryParams));
        static_cast<IFactoryMgr*>(this)->SaveToFile(false);
        if (m_pDlgFactoryMgr)
            m_pDlgFactoryMgr->SetParams(m_params);
        return 0;
    });
}

int CFactoryMgrIns::GetFactoryParams(FactoryParams* pParams)
{
    if (!pParams)
        return ResultBadArgument;
    std::memcpy(static_cast<void*>(pParams), &m_params, sizeof(FactoryParams));
    return 0;
}

int CFactoryMgrIns::ReadParamsFromDevice()
{
    return Guarded("ReadParamsFromDevice", int(ResultInternalError),
                   [&] { return CFactoryMgrApp::GetInstance()->ReadFactoryParams(&m_params); });
}

int CFactoryMgrIns::UploadParamsToDevice()
{
    return Guarded("UploadParamsToDevice", int(ResultInternalError), [&] {
        // Without a dialog the record goes as the host last set it.
        if (m_pDlgFactoryMgr) {
            m_pDlgFactoryMgr->DataToCtrlSlot(false);
            m_pDlgFactoryMgr->GetParams(m_params);
        }
        return CFactoryMgrApp::GetInstance()->WriteFactoryParams(&m_params);
    });
}

void CFactoryMgrIns::SetHostContext(void* pContext1, void* pContext2)
{
    m_hostContext1 = pContext1;
    m_hostContext2 = pContext2;
}

void CFactoryMgrIns::ReloadFromFile()
{
    Guarded("ReloadFromFile", [&] {
        // Only an open dialog takes a reloaded record.
        if (!m_pDlgFactoryMgr)
            return;
        LoadFactoryParams(m_params, QString());
        m_pDlgFactoryMgr->SetParams(m_params);
        m_pDlgFactoryMgr->DataToCtrlSlot(true);
    });
}

void CFactoryMgrIns::SaveToFile(bool bFromDialog)
{
    Guarded("SaveToFile", [&] {
        if (bFromDialog) {
            if (!m_pDlgFactoryMgr)
                return;
            m_pDlgFactoryMgr->DataToCtrlSlot(false);
            m_pDlgFactoryMgr->GetParams(m_params);
        }
        SaveFactoryParams(m_params, QString());
    });
}

bool CFactoryMgrIns::CheckDeviceParams(quint32* pFlags)
{
    return Guarded("CheckDeviceParams", false, [&] {
        const FactoryParams before = m_params;
        static_cast<IFactoryMgr*>(this)->ReadParamsFromDevice();
        const bool bSame = ParamsEqual(before, m_params);
        quint32 nFlags = 0;
        if (m_pDlgFactoryMgr) {
            m_pDlgFactoryMgr->ClearInvalidMarks();
            if (!bSame) {
                FactoryParams snapshot;
                m_pDlgFactoryMgr->GetSnapshotParams(snapshot);
                nFlags = CReadBackCheck::PutBack(m_params, before, snapshot, *m_pDlgFactoryMgr);
            }
        }
        if (pFlags)
            *pFlags = nFlags;
        return bSame;
    });
}

void CFactoryMgrIns::ImportParams(QWidget* pParent)
{
    // The dialog is the file dialog's parent.
    Q_UNUSED(pParent)
    Guarded("ImportParams", [&] {
        if (m_pDlgFactoryMgr)
            m_pDlgFactoryMgr->ImportParams();
    });
}

void CFactoryMgrIns::ExportParams(QWidget* pParent)
{
    Q_UNUSED(pParent)
    Guarded("ExportParams", [&] {
        if (m_pDlgFactoryMgr)
            m_pDlgFactoryMgr->ExportParams();
    });
}

void CFactoryMgrIns::SetFactoryFlag(bool bFactoryFlag)
{
    CFactoryMgrApp::GetInstance()->SetFactoryFlag(bFactoryFlag);
}

void CFactoryMgrIns::SetUnit(int nUnit)
{
    CFactoryMgrApp::GetInstance()->SetUnit(nUnit);
}
