#pragma once

/// \file IFactoryMgr.h
/// \brief The service interface of the FactoryMgr plug-in and its two exported entry points.
///
/// What a host compiles against to use the FactoryMgr plug-in. The host loads libFactoryMgr.so
/// by file name at run time (it never links it), resolves the two C entry points NewInterface()
/// and ReleaseInterface(), and talks to the service object only through IFactoryMgr. The order of
/// the virtual functions is a binary contract and is kept exactly.
///
/// Calling order:
/// 1. NewInterface(): makes the service object, which loads the parameter file.
/// 2. IFactoryMgr::Init() once, before anything that reaches the device or the calibration wizard.
/// 3. IFactoryMgr::SetUnit() and IFactoryMgr::SetFactoryFlag() whenever the host's settings change.
/// 4. IFactoryMgr::ShowFactoryDlg() each time the user opens the machine settings; then the other
///    operations as needed.
/// 5. ReleaseInterface() last.
///
/// Threading: every operation declared here is called by the host on its GUI thread, the thread of
/// the QApplication, which must exist before NewInterface() is called (FactoryMgrVersion() is the
/// exception: any thread, any time). The plug-in calls the host back on a worker thread, the
/// progress dialog's (ThreadDialogRun), for its long tasks: during a firmware upgrade
/// IDevice::GetCurrentCard(), ICard::GetState(), ICard::GetTaskState(), ITaskState::IsBusy() and
/// ICard::CallFunction(); during the calibration cut the host's pattern converter
/// (IFactoryMgr::PfnConvertPattern) and then the same card calls. Everything else reaches the host
/// on the GUI thread.
///
/// Directories: the resource directory, which holds what ships with the host, is the
/// application's directory followed by "/../Resources". The user data directory, where the
/// plug-in writes, is the per-user configuration directory (QStandardPaths::AppConfigLocation)
/// followed by "/../Quorvane/Resources", or by "/../Tessiflow/Resources" when the host
/// platform's theme name is not "Quorvane" (a missing Theme/Theme.ini, or an empty name, counts
/// as "Quorvane"); it is made when missing. Everything the plug-in writes is under it.

#include <QtGlobal>

class DlgFactoryMgr;
class IDevice;
class IErrorNotifier;
class QDialog;
class QWidget;
struct FactoryParams;

/// \brief The factory parameter service of the plug-in.
///
/// Made by NewInterface() and destroyed by ReleaseInterface(); the host never deletes it itself.
/// The object holds the plug-in's record (FactoryParams, loaded from the parameter file
/// "<user data directory>/Data/FactoryParam.ini" when the object is made), the current machine
/// settings dialog and the XY step calibration wizard. It never talks to the controller itself:
/// every device operation goes to the IDevice handed in by Init(), serialised by the plug-in's
/// one device mutex (see IDevice).
///
/// No exception leaves an operation. A failure inside the plug-in is written to the host's log
/// and answered with -1, false, null or nothing, as each operation says.
class IFactoryMgr
{
public:
    /// \brief Host callback that turns a pattern file into a machine job file.
    ///
    /// Handed to ShowFactoryDlg(); the calibration wizard calls it when the user cuts the
    /// standard pattern. Arguments: the pattern path ("<resource directory>/Data/adjustpulse.lcpx"),
    /// the job path to write ("<user data directory>/cache/adjustpulse.tl"), both UTF-8, and the
    /// cutting power the user set in the wizard, percent (0 to 100). The result is ignored: the
    /// plug-in only checks afterwards that the job file exists, hands it to the card function
    /// "BacklashAdjust" and deletes it.
    ///
    /// Called on the progress dialog's worker thread, not on the GUI thread; it may block until
    /// the job file is written and must not touch widgets.
    typedef int (*PfnConvertPattern)(const char* szPatternPath, const char* szJobPath, double dPower);

    /// \brief The sections CheckDeviceParams() reports as having a field set back, or'ed.
    enum CheckFlag : quint32
    {
        CheckFlagMotor = 1,    ///< a MotorParams field of any axis
        CheckFlagLaser = 2,    ///< a LaserParams field of either source
        CheckFlagSpeed = 4,    ///< a SpeedSection field (the Processing tab)
        CheckFlagMachine = 8   ///< a MachineSection field
    };

    /// \brief Destroys the object. Hosts call ReleaseInterface() instead of deleting it.
    virtual ~IFactoryMgr() = default;

    /// \brief Slot 1. Hands in the host's device and error notifier and makes the calibration wizard.
    ///
    /// Call once after NewInterface() and before ShowFactoryDlg(), ShowCalibrateXyStepDlg(),
    /// ReadParamsFromDevice(), UploadParamsToDevice() and CheckDeviceParams(). Both pointers are
    /// kept module-wide (a later Init() of any service object replaces them) and are never
    /// deleted by the plug-in; they must stay valid for as long as a plug-in dialog can still be
    /// used. Init() also forgets the current settings dialog (without deleting it) and clears the
    /// second value of SetHostContext().
    ///
    /// The wizard is made by the first call only, with no parent. It is deleted, storing its
    /// cutting power, when the application emits QCoreApplication::aboutToQuit or when the
    /// library is unloaded, whichever comes first; not by ReleaseInterface().
    ///
    /// \param pDevice The host's device. Null is accepted; the device operations then answer 1001.
    /// \param pNotifier The host's error notifier. Null is accepted; nothing is then reported.
    /// \return 0, or -1 when the plug-in failed internally.
    virtual int Init(IDevice* pDevice, IErrorNotifier* pNotifier) = 0;

    /// \brief Slot 2. Makes a new machine settings dialog over the plug-in's record, for the host to show.
    ///
    /// Schedules the previous settings dialog for deletion (QObject::deleteLater()), keeps
    /// \p pfnConvertPattern for the calibration wizard, and makes a new dialog with no parent.
    /// The dialog is not shown: the host shows it (modal or not) or embeds it.
    ///
    /// The new dialog shows the record as it is. When the access file
    /// "<resource directory>/Data/FactoryPsw.ini" exists (only its existence counts), the dialog
    /// is kept as the current dialog and connected to the wizard's step ratios. Otherwise the
    /// plug-in first shows a modal "Tips" box "Config file damaged or not exist, please contact
    /// the supplier!" and then returns the new dialog all the same, not kept: the host deletes it
    /// and does not call the operations that need a dialog.
    ///
    /// The dialog is a QDialog (see FactoryDialog()). When the user presses Read, Upload or
    /// Calibrate it emits the signals ReadCurParamsFromDeviceSignal(),
    /// UploadCurParamsToDeviceSignal() and CorrectXyStepSignal(); the host connects them by name
    /// (SIGNAL()) to its own slots, which call ReadParamsFromDevice(), UploadParamsToDevice() and
    /// ShowCalibrateXyStepDlg(). Its public slot DataToCtrlSlot(bool) with true shows the dialog's
    /// working record in its controls; a host calls it by name (QMetaObject::invokeMethod()).
    /// Collecting the controls (UploadParamsToDevice(), SaveToFile(true), ExportParams()) also
    /// hands the Theme tab's home page addresses to the host platform's UI permissions service,
    /// once that tab has been opened.
    ///
    /// Ownership: a kept dialog belongs to the plug-in, which deletes it later when the next
    /// ShowFactoryDlg() makes a new one; ReleaseInterface() does not delete it. A host may delete
    /// it earlier itself (the plug-in notices). A dialog that was not kept belongs to the host.
    ///
    /// \param pfnConvertPattern The host's pattern converter, or null (the calibration cut then
    ///        finds no job and ends with result 11).
    /// \return The new dialog, or null when the plug-in failed internally.
    virtual DlgFactoryMgr* ShowFactoryDlg(PfnConvertPattern pfnConvertPattern) = 0;

    /// \brief Slot 3. Runs the XY step calibration wizard modally and returns when it closes.
    ///
    /// The wizard's first page cuts the standard pattern: the host's pattern converter makes the
    /// job, then the card function "BacklashAdjust" runs it, both on a worker thread behind the
    /// progress dialog, and the cut's result code (0 included) goes to the error notifier. The
    /// second page takes the size the user measured, in the unit of SetUnit(); OK emits the
    /// ratios measured / 150 mm for X and Y, and a kept settings dialog multiplies its X and Y
    /// steps (MotorParams::pulsePerMm of axes X and Y) by them. The wizard does not change the
    /// plug-in's record or the parameter file itself.
    ///
    /// \return What the wizard's QDialog::exec() returned. The wizard closes itself with close(),
    ///         for which Qt returns QDialog::Rejected (0), also after OK. 0 before Init() or when
    ///         the plug-in failed internally.
    virtual int ShowCalibrateXyStepDlg() = 0;

    /// \brief Slot 4. The number of laser sources in the record.
    /// \return LaserSection::laserCount as stored, not checked (1 or 2 when the settings dialog
    ///         wrote it; a parameter file may hold any value).
    virtual int GetLaserCount() = 0;

    /// \brief Slot 5. Replaces the plug-in's record with a copy of \p pParams and saves the parameter file.
    ///
    /// Copies all 720 bytes, saves the parameter file from the new record (as SaveToFile(false))
    /// and, when a settings dialog is kept, hands the record to the dialog as its working record.
    /// The dialog's controls show it once the host calls the dialog's DataToCtrlSlot(true).
    /// Whether the file could be saved is not reported.
    ///
    /// \param pParams The record to copy; the caller keeps it.
    /// \return 0; -2 when \p pParams is null; -1 when the plug-in failed internally.
    virtual int SetFactoryParams(const FactoryParams* pParams) = 0;

    /// \brief Slot 6. Copies the plug-in's 720-byte record out.
    ///
    /// Values edited in the settings dialog's controls reach the record only through
    /// UploadParamsToDevice() and SaveToFile(true).
    ///
    /// \param pParams Receives the copy; the caller owns it.
    /// \return 0; -2 when \p pParams is null.
    virtual int GetFactoryParams(FactoryParams* pParams) = 0;

    /// \brief Slot 7. Reads the record from the device.
    ///
    /// Calls IDevice::ReadFactoryParams() with a pointer to the plug-in's own record, on the
    /// calling (GUI) thread, holding the plug-in's device mutex for the whole call. Neither the
    /// settings dialog nor the parameter file changes; a host that wants both passes the record
    /// on with GetFactoryParams() and SetFactoryParams() and then calls the dialog's
    /// DataToCtrlSlot(true).
    ///
    /// \return The device's result code (0 is success), unchanged; 1001 when no device was
    ///         handed in; -1 when the plug-in failed internally.
    virtual int ReadParamsFromDevice() = 0;

    /// \brief Slot 8. Sends the settings dialog's values to the device.
    ///
    /// With a kept settings dialog, its controls are first collected into its working record and
    /// that is copied into the plug-in's record; collecting sets MotorParams::hardLimitProtect
    /// to true and MotorParams::limitPolar to 0 on every axis, both LaserParams::enabled to true
    /// and LaserSection::reserved to 0. Without a kept dialog the record goes as the host last set
    /// it. Then IDevice::WriteFactoryParams() gets a pointer to the plug-in's record, on the
    /// calling (GUI) thread, under the plug-in's device mutex. The parameter file is not saved.
    ///
    /// \return The device's result code (0 is success), unchanged; 1001 when no device was
    ///         handed in; -1 when the plug-in failed internally.
    virtual int UploadParamsToDevice() = 0;

    /// \brief Slot 9. Stores two values of the host's own; the plug-in never reads them.
    /// \param pContext1 Kept as given.
    /// \param pContext2 Kept as given; Init() sets it back to null.
    virtual void SetHostContext(void* pContext1, void* pContext2) = 0;

    /// \brief Slot 10. Loads the parameter file again into the record and the kept settings dialog.
    ///
    /// Only with a kept dialog: the file is loaded into the record, the record is handed to the
    /// dialog and its controls show it. A missing file leaves the record as it was; a file whose
    /// marker is wrong does too, after a modal "Tips" box "File ID is incorrect!". Without a
    /// kept dialog nothing happens, even when the file has changed.
    virtual void ReloadFromFile() = 0;

    /// \brief Slot 11. Saves the parameter file.
    ///
    /// The file, "<user data directory>/Data/FactoryParam.ini", is written complete under a
    /// temporary name beside the old one, read back, and only then renamed over it, so a save
    /// that fails leaves the previous file whole. Whether it succeeded is not reported (a host
    /// can compare the file's modification time).
    ///
    /// \param bFromDialog true: the kept settings dialog's controls are first collected into the
    ///        record (as in UploadParamsToDevice()); without a kept dialog nothing is saved.
    ///        false: the record is saved as it is.
    virtual void SaveToFile(bool bFromDialog) = 0;

    /// \brief Slot 12. Reads the record back from the device and puts back what the device did not keep.
    ///
    /// Meant for right after a successful UploadParamsToDevice(). Reads the record as
    /// ReadParamsFromDevice() does (that call's result code is not passed on) and compares it with
    /// the record before the read: whole numbers and booleans exactly, doubles within 0.0001.
    /// With a kept settings dialog, the dialog's red marks are cleared first; then, when the two
    /// differ, every checked field that differs is set back, in the record and in the dialog, to
    /// the value the record had when the dialog was made, and its cell, where it has one, is
    /// marked red. The checked fields are the double fields of MotorParams and LaserParams and
    /// every field of SpeedSection and MachineSection; other fields keep the value read back.
    /// Without a kept dialog the record keeps what was read. The parameter file is not saved.
    ///
    /// \param pFlags If not null, receives which sections had a field set back, CheckFlag values
    ///        or'ed: 1 motor, 2 laser, 4 processing speeds, 8 machine; 0 when nothing was set back
    ///        or no dialog is kept.
    /// \return true when the record read back equals the record before the read; false when it
    ///         differs or the plug-in failed internally.
    virtual bool CheckDeviceParams(quint32* pFlags) = 0;

    /// \brief Slot 13. Imports an .ini parameter file into the kept settings dialog.
    ///
    /// Asks for the file with a modal file dialog, loads it (same format as the parameter file)
    /// into the dialog's working record, copies that into the plug-in's record and shows it in
    /// the controls, replacing what they held. A file whose marker is wrong is refused with a
    /// modal "Tips" box "File ID is incorrect!". The parameter file is not saved. Without a kept
    /// dialog nothing happens.
    ///
    /// \param pParent Not used: the file dialog's parent is the settings dialog.
    virtual void ImportParams(QWidget* pParent) = 0;

    /// \brief Slot 14. Exports the kept settings dialog's values to an .ini file.
    ///
    /// Asks for the file name with a modal file dialog, collects the controls into the dialog's
    /// working record and writes it in the parameter file's format. The plug-in's record is not
    /// changed. Without a kept dialog nothing happens.
    ///
    /// \param pParent Not used: the file dialog's parent is the settings dialog.
    virtual void ExportParams(QWidget* pParent) = 0;

    /// \brief Slot 15. Stores a flag of the host's own; nothing in the plug-in reads it.
    /// \param bFactoryFlag Kept as given.
    virtual void SetFactoryFlag(bool bFactoryFlag) = 0;

    /// \brief Slot 16. Sets the host's display unit, which the calibration wizard uses.
    ///
    /// The record always holds millimetres; only the wizard shows and takes lengths in this unit,
    /// converted with 25.4 and rounded to two decimals. The wizard reads the unit each time it is
    /// shown.
    ///
    /// \param nUnit 0 and 2 are inch; every other value is millimetres.
    virtual void SetUnit(int nUnit) = 0;
};

/// \brief The settings dialog that IFactoryMgr::ShowFactoryDlg() returns, as a QDialog.
///
/// The dialog's class is declared only inside the plug-in. It derives from QDialog through its
/// first base class, so with the Itanium C++ ABI that GCC and Clang use on Linux its QDialog part
/// starts at the object's own address (the plug-in's tests check this); this function only
/// changes the pointer's type. The result is null when \p pDialog is null.
///
/// \param pDialog A dialog from IFactoryMgr::ShowFactoryDlg(), or null.
/// \return The same object as a QDialog.
inline QDialog* FactoryDialog(DlgFactoryMgr* pDialog) { return reinterpret_cast<QDialog*>(pDialog); }

/// \brief The revision of the binary interface this header describes.
///
/// It counts changes to anything a host's compiled code depends on: the order and signatures of
/// IFactoryMgr's virtual functions, the layout of FactoryParams and CardInfo, the host objects'
/// interfaces and the entry points. A plug-in of another revision must not be used by this host.
#define FACTORYMGR_INTERFACE_REVISION 1

/// \brief Type of FactoryMgrVersion(), for resolving it with QLibrary::resolve() or dlsym().
typedef int (*PfnFactoryMgrVersion)(int* pnMajor, int* pnMinor, int* pnPatch);
/// \brief Type of FactoryMgrCalibrateWizard(), for resolving it with QLibrary::resolve() or dlsym().
typedef QWidget* (*PfnFactoryMgrCalibrateWizard)(IFactoryMgr* pInterface);
/// \brief Type of NewInterface(), for resolving it with QLibrary::resolve() or dlsym().
typedef IFactoryMgr* (*PfnNewInterface)();
/// \brief Type of ReleaseInterface(), for resolving it with QLibrary::resolve() or dlsym().
typedef void (*PfnReleaseInterface)(IFactoryMgr* pInterface);

extern "C" {
/// \brief The plug-in's version and the interface revision it implements.
///
/// Exported with C linkage under the undecorated name "FactoryMgrVersion". It needs no
/// QApplication, touches no file and may be called from any thread at any time. A host calls it
/// after loading the library and before NewInterface(), and compares its answer with
/// FACTORYMGR_INTERFACE_REVISION of the header it was built with: when they differ, or when the
/// library does not export the function (a plug-in older than the revision), the host must not
/// call NewInterface() and should say which plug-in it found and which revision it needs. A
/// different version with the same revision is compatible.
///
/// \param pnMajor Receives the plug-in's major version; may be null.
/// \param pnMinor Receives the minor version; may be null.
/// \param pnPatch Receives the patch version; may be null.
/// \return The interface revision the plug-in implements.
__attribute__((visibility("default"))) int FactoryMgrVersion(int* pnMajor, int* pnMinor, int* pnPatch) noexcept;

/// \brief Makes a new service object.
///
/// Exported with C linkage under the undecorated name "NewInterface". Call it on the GUI
/// thread once the QApplication exists: the new object loads the parameter file, and a file
/// with a wrong marker shows a modal "Tips" box "File ID is incorrect!" (the record then keeps
/// its defaults).
///
/// \return The new object, owned by the caller until it is handed to ReleaseInterface(); null
///         when it cannot be made, and null (with nothing made on disk) when no QApplication
///         exists yet.
__attribute__((visibility("default"))) IFactoryMgr* NewInterface() noexcept;

/// \brief The calibration wizard of a service object, for connecting to its signal.
///
/// Exported with C linkage under the undecorated name "FactoryMgrCalibrateWizard". The wizard is
/// a top-level QWidget made by IFactoryMgr::Init(); it emits CalibrateXyStepSignal(double, double)
/// (measured / target for X and Y) when the person accepts a calibration, which a host that wants
/// the ratios connects to by name (SIGNAL()). The wizard stays the plug-in's. Call it on the GUI
/// thread.
///
/// \param pInterface A live service object from NewInterface().
/// \return The wizard; null before Init(), after the application quit, or when \p pInterface is
///         not a live service object.
__attribute__((visibility("default"))) QWidget* FactoryMgrCalibrateWizard(IFactoryMgr* pInterface) noexcept;

/// \brief Destroys a service object made by NewInterface().
///
/// Exported with C linkage under the undecorated name "ReleaseInterface". Call it last, on the
/// GUI thread. It deletes neither the settings dialog nor the calibration wizard and does not
/// forget the device and notifier handed to IFactoryMgr::Init(). The wizard stays until the
/// application quits or the library is unloaded, whichever comes first: releasing, unloading and
/// quitting are safe in any order. A settings dialog the host still holds must be deleted before
/// the library is unloaded, since its code goes with the library.
///
/// An object that is not alive (released already, or never made by NewInterface()) is left alone
/// and the call is logged. Calling any operation of an object after releasing it is not
/// detected: the host must forget its pointer.
///
/// \param pInterface The object to destroy; null is ignored.
__attribute__((visibility("default"))) void ReleaseInterface(IFactoryMgr* pInterface) noexcept;
}
