#pragma once

// What a host compiles against to use the FactoryMgr plug-in. The host loads
// libFactoryMgr by file name, resolves the two C entry points below, and
// talks to the service object only through IFactoryMgr. The order of the
// operations is a binary contract and is kept exactly.

#include <QtGlobal>

class DlgFactoryMgr;
class IDevice;
class IErrorNotifier;
class QWidget;
struct FactoryParams;

class IFactoryMgr
{
public:
    // Host callback that turns a pattern file into a machine job file:
    // (pattern path, job path, both UTF-8; cutting power). Its result is ignored.
    typedef int (*PfnConvertPattern)(const char* szPatternPath, const char* szJobPath, double dPower);

    virtual ~IFactoryMgr() = default;

    // 1. Hands in the host's device and notifier; creates the calibration wizard. Returns 0.
    virtual int Init(IDevice* pDevice, IErrorNotifier* pNotifier) = 0;
    // 2. A new settings dialog over the module's record, for the host to show.
    virtual DlgFactoryMgr* ShowFactoryDlg(PfnConvertPattern pfnConvertPattern) = 0;
    // 3. Runs the XY step calibration wizard modally; its result.
    virtual int ShowCalibrateXyStepDlg() = 0;
    // 4. Number of laser sources of the module's record.
    virtual int GetLaserCount() = 0;
    // 5. Copies the 720-byte record in and saves the parameter file. Returns 0.
    virtual int SetFactoryParams(const FactoryParams* pParams) = 0;
    // 6. Copies the module's 720-byte record out. Returns 0.
    virtual int GetFactoryParams(FactoryParams* pParams) = 0;
    // 7. Reads the record from the device; the device's result code.
    virtual int ReadParamsFromDevice() = 0;
    // 8. Sends the dialog's values to the device; the device's result code.
    virtual int UploadParamsToDevice() = 0;
    // 9. Two values of the host's own; the module only keeps them.
    virtual void SetHostContext(void* pContext1, void* pContext2) = 0;
    // 10. Reloads the parameter file into the open dialog.
    virtual void ReloadFromFile() = 0;
    // 11. Saves the parameter file, from the open dialog's controls or from the record as it is.
    virtual void SaveToFile(bool bFromDialog) = 0;
    // 12. Reads the record back from the device and puts back what it did not keep.
    virtual bool CheckDeviceParams(quint32* pFlags) = 0;
    // 13. Imports an .ini file into the open dialog.
    virtual void ImportParams(QWidget* pParent) = 0;
    // 14. Exports the open dialog's values to an .ini file.
    virtual void ExportParams(QWidget* pParent) = 0;
    // 15. A flag of the host's own; the module only keeps it.
    virtual void SetFactoryFlag(bool bFactoryFlag) = 0;
    // 16. The host's display unit: 0 and 2 are inch, anything else millimetres.
    virtual void SetUnit(int nUnit) = 0;
};

// The library's two entry points (C linkage, undecorated names).
typedef IFactoryMgr* (*PfnNewInterface)();
typedef void (*PfnReleaseInterface)(IFactoryMgr* pInterface);

extern "C" {
// A new service object, or null when it cannot be made.
__attribute__((visibility("default"))) IFactoryMgr* NewInterface() noexcept;
// Destroys an object from NewInterface; null is ignored.
__attribute__((visibility("default"))) void ReleaseInterface(IFactoryMgr* pInterface) noexcept;
}
