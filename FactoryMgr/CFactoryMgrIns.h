#pragma once

#include "FactoryParams.h"
#include "DlgFactoryMgr.h"
#include "IFactoryMgr.h"

#include <QObject>
#include <QPointer>

class CDlgCalibrateXyStep;

// The service object behind IFactoryMgr. It owns the module's parameter
// record (loaded from the parameter file when it is made), the current
// settings dialog and the calibration wizard, and hands device work to
// CFactoryMgrApp. No exception leaves any of its operations: a failure is
// logged and answered with ResultInternalError (or nothing, for the void ones).
class CFactoryMgrIns : public QObject, public IFactoryMgr
{
    Q_OBJECT
public:
    enum
    {
        ResultInternalError = -1,   // an operation failed inside the module
        ResultBadArgument = -2      // a null record pointer
    };

    CFactoryMgrIns();
    // Runs the bases' destructors only: the dialog and the wizard are not deleted here.
    ~CFactoryMgrIns() override;

    int Init(IDevice* pDevice, IErrorNotifier* pNotifier) override;
    DlgFactoryMgr* ShowFactoryDlg(PfnConvertPattern pfnConvertPattern) override;
    int ShowCalibrateXyStepDlg() override;
    int GetLaserCount() override;
    int SetFactoryParams(const FactoryParams* pParams) override;
    int GetFactoryParams(FactoryParams* pParams) override;
    int ReadParamsFromDevice() override;
    int UploadParamsToDevice() override;
    void SetHostContext(void* pContext1, void* pContext2) override;
    void ReloadFromFile() override;
    void SaveToFile(bool bFromDialog) override;
    bool CheckDeviceParams(quint32* pFlags) override;
    void ImportParams(QWidget* pParent) override;
    void ExportParams(QWidget* pParent) override;
    void SetFactoryFlag(bool bFactoryFlag) override;
    void SetUnit(int nUnit) override;

    // The calibration wizard Init made, or null (before Init, after the quit).
    QWidget* CalibrateWizard() const;

private:
    FactoryParams m_params;
    void* m_hostContext1;
    void* m_hostContext2;
    QPointer<DlgFactoryMgr> m_pDlgFactoryMgr;   // also clears itself if the host deletes the dialog
    QPointer<CDlgCalibrateXyStep> m_pDlgCalibrateXyStep;   // clears itself when the wizard goes at quit
};
