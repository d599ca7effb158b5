// A minimal host of the FactoryMgr plug-in: it loads the installed plug-in by
// file name, hands it a controller that lives in memory, and runs one session
// a host runs: read, change a value, upload, check, save, reload. Each step
// prints "ok" or "FAIL" with what was expected; the exit code is the number of
// failed steps (0 when the plug-in did all it promises).
//
//   minimal-host [path of libFactoryMgr.so]
//
// Installed (cmake --install), it is a deployed host: the plug-in, the
// platform libraries and libResolution.so beside the executable, found
// through its $ORIGIN run path, and the resources in ../Resources, so the
// installed folder runs wherever it is moved.
#include "MemoryController.h"

#include <CTranslator.h>
#include <IFactoryMgr.h>
#include <ThreadDialogRun.h>

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLibrary>
#include <QStandardPaths>

#include <cstdio>
#include <tuple>

namespace {
int g_nFailed = 0;

void Step(const char* szWhat, bool bOk, const QString& strDetail = QString())
{
    std::printf("%-4s %s%s%s\n", bOk ? "ok" : "FAIL", szWhat, strDetail.isEmpty() ? "" : ": ",
                qPrintable(strDetail));
    if (!bOk)
        ++g_nFailed;
}

// Records are compared field by field: the bytes between the fields are
// padding that neither side sets, so comparing whole blocks of memory could
// find differences that are not there.
auto Fields(const MotorParams& m)
{
    return std::tie(m.directionPolar, m.limitPolar, m.controlType, m.pwmEdge, m.keyDirection, m.pulsePerMm, m.size,
                    m.zeroOffset, m.hardLimitProtect, m.resetEnable, m.startupReset, m.speedJump, m.speedMax, m.accMax,
                    m.accUrgentStop, m.accKey, m.speedKeyJump);
}

auto Fields(const LaserParams& l)
{
    return std::tie(l.enabled, l.powerMin, l.powerMax, l.power, l.powerReduction, l.frequency, l.burningFrequency,
                    l.burningWidth, l.switchSignal, l.waterProtect, l.type);
}

auto Fields(const MachineSection& m)
{
    return std::tie(m.machineType, m.motiveMode, m.feedMode, m.machineZero, m.openProject, m.blow, m.laserSpace,
                    m.outageDelay);
}

auto Fields(const SpeedSection& s)
{
    return std::tie(s.panelSpeedReset, s.sweepSpeedXStart, s.sweepSpeedYStart, s.sweepSpeedNewline, s.sweepAccX,
                    s.sweepAccY, s.cutSpeedSpace, s.cutSpeedCorner, s.cutAccSpace, s.cutAccCorner, s.cutAccWork);
}

bool Same(const FactoryParams& a, const FactoryParams& b)
{
    for (int i = 0; i < 4; ++i)
        if (Fields(a.motor[i]) != Fields(b.motor[i]))
            return false;
    for (int i = 0; i < 2; ++i)
        if (Fields(a.laser.lasers[i]) != Fields(b.laser.lasers[i]))
            return false;
    return a.laser.laserCount == b.laser.laserCount && a.laser.reserved == b.laser.reserved
        && a.laser.laserMachineType == b.laser.laserMachineType && Fields(a.machine) == Fields(b.machine)
        && Fields(a.speed) == Fields(b.speed);
}

// Where the plug-in keeps its parameter file: the user data directory, the
// per-user configuration directory + "/../Quorvane/Resources".
QString ParameterFile()
{
    return QDir::cleanPath(QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation)
                           + "/../Quorvane/Resources/Data/FactoryParam.ini");
}

QByteArray FileContent(const QString& strPath)
{
    QFile file(strPath);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool WriteFile(const QString& strPath, const QByteArray& content)
{
    QFile file(strPath);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(content) == content.size();
}

// What the dialog's controls show, and what the next Upload sends, is its
// working record: SetFactoryParams hands the dialog a new record, and the
// dialog's slot DataToCtrlSlot(true) puts it into the controls.
int SetAndShow(IFactoryMgr* pMgr, QDialog* pDialog, const FactoryParams& params)
{
    const int nResult = pMgr->SetFactoryParams(&params);
    QMetaObject::invokeMethod(pDialog, "DataToCtrlSlot", Q_ARG(bool, true));
    return nResult;
}

// A slow job of the host's own, run behind the platform's progress dialog.
class CountingTask : public IThreadDialogOwner
{
public:
    int RunTask(int nTask, void* pParam) override
    {
        ThreadDialogReport(0.5, QStringLiteral("Counting"));
        *static_cast<int*>(pParam) = nTask * 2;
        return 0;
    }
    int IsTaskCancelable(int) override { return 0; }
    int CancelTask(int, qintptr, qintptr) override { return 0; }
    double GetTaskProgress(int) override { return -1.0; }
};

// The host's pattern converter; this host never cuts.
int ConvertPattern(const char*, const char*, double)
{
    return 1;
}
}

int main(int argc, char** argv)
{
    // No display is needed: the settings dialog is made but never shown.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("minimal-host"));
    // The plug-in named on the command line; else the one shipped beside this executable, as a
    // deployed host has it; else the SDK's, where the build found it.
    const QString strBeside = QCoreApplication::applicationDirPath() + "/libFactoryMgr.so";
    const QString strPlugin = argc > 1                      ? QString::fromLocal8Bit(argv[1])
        : QFileInfo::exists(strBeside) ? strBeside
                                                            : QStringLiteral(FACTORYMGR_PLUGIN_PATH);

    QLibrary library(strPlugin);
    const bool bLoaded = library.load();
    Step("load the plug-in", bLoaded, bLoaded ? strPlugin : library.errorString());
    // The interface revision first: a plug-in built for another one must not be called.
    auto pfnVersion = reinterpret_cast<PfnFactoryMgrVersion>(library.resolve("FactoryMgrVersion"));
    int nMajor = 0;
    int nMinor = 0;
    int nPatch = 0;
    const int nRevision = pfnVersion ? pfnVersion(&nMajor, &nMinor, &nPatch) : -1;
    Step("the plug-in implements the interface revision this host was built for",
         nRevision == FACTORYMGR_INTERFACE_REVISION,
         pfnVersion ? QStringLiteral("FactoryMgr %1.%2.%3, revision %4; this host needs %5")
                          .arg(nMajor)
                          .arg(nMinor)
                          .arg(nPatch)
                          .arg(nRevision)
                          .arg(FACTORYMGR_INTERFACE_REVISION)
                    : QStringLiteral("it exports no FactoryMgrVersion"));
    if (nRevision != FACTORYMGR_INTERFACE_REVISION)
        return 1;
    auto pfnNew = reinterpret_cast<PfnNewInterface>(library.resolve("NewInterface"));
    auto pfnRelease = reinterpret_cast<PfnReleaseInterface>(library.resolve("ReleaseInterface"));
    Step("resolve NewInterface and ReleaseInterface", pfnNew && pfnRelease);
    if (!pfnNew || !pfnRelease)
        return 1;
    IFactoryMgr* pMgr = pfnNew();
    Step("NewInterface gives the service object", pMgr != nullptr);
    if (!pMgr)
        return 1;

    MemoryController controller;
    CodeCollector notifier;
    controller.held.motor[0].speedMax = 1200.0;
    controller.held.motor[1].pulsePerMm = 8.125;
    Step("Init", pMgr->Init(&controller, &notifier) == 0);
    QDialog* pDialog = FactoryDialog(pMgr->ShowFactoryDlg(&ConvertPattern));
    Step("ShowFactoryDlg gives the settings dialog", pDialog && pDialog->inherits("QDialog"));
    FactoryParams opened;
    pMgr->GetFactoryParams(&opened);

    // Read: the record is the controller's, byte for byte.
    Step("ReadParamsFromDevice", pMgr->ReadParamsFromDevice() == 0 && controller.nReads == 1);
    FactoryParams record;
    pMgr->GetFactoryParams(&record);
    Step("the record is what the controller holds", Same(record, controller.held));
    // What was read goes into the dialog too, as a host's Read does.
    SetAndShow(pMgr, pDialog, record);

    // Change a value: the record takes it, the parameter file keeps it.
    record.motor[0].speedMax = 1400.0;
    Step("SetFactoryParams", SetAndShow(pMgr, pDialog, record) == 0);
    FactoryParams changed;
    pMgr->GetFactoryParams(&changed);
    Step("the record holds the change", Same(changed, record));
    Step("the parameter file holds the change", FileContent(ParameterFile()).contains("MOTOR_SPEED_MAX_1=1400"),
         ParameterFile());

    // Upload and check: the controller keeps everything.
    Step("UploadParamsToDevice", pMgr->UploadParamsToDevice() == 0 && controller.nWrites == 1);
    Step("the controller holds the change", controller.held.motor[0].speedMax == 1400.0);
    quint32 nFlags = 0xffffffffu;
    const bool bAllKept = pMgr->CheckDeviceParams(&nFlags);
    Step("CheckDeviceParams: everything kept", bAllKept && nFlags == 0, QStringLiteral("flags %1").arg(nFlags));

    // A value the controller cannot take: the check says so, for the Motor
    // section, and puts the value the dialog opened with back into the record.
    record.motor[0].speedMax = MemoryController::kSpeedMaxLimit + 500.0;
    SetAndShow(pMgr, pDialog, record);
    Step("Upload of a value beyond the controller", pMgr->UploadParamsToDevice() == 0
                                                        && controller.held.motor[0].speedMax
                                                               == MemoryController::kSpeedMaxLimit);
    nFlags = 0;
    const bool bKept = pMgr->CheckDeviceParams(&nFlags);
    FactoryParams putBack;
    pMgr->GetFactoryParams(&putBack);
    Step("CheckDeviceParams: not kept, Motor flag", !bKept && nFlags == 1, QStringLiteral("flags %1").arg(nFlags));
    Step("the refused value is put back", putBack.motor[0].speedMax == opened.motor[0].speedMax,
         QString::number(putBack.motor[0].speedMax));

    // Save, then reload a parameter file that was saved earlier.
    pMgr->SaveToFile(false);
    const QByteArray saved = FileContent(ParameterFile());
    FactoryParams savedRecord;
    pMgr->GetFactoryParams(&savedRecord);
    Step("SaveToFile writes the parameter file", saved.contains("MOTOR_SPEED_MAX_1=")
                                                     && saved.contains("CREATE_TIME"));
    FactoryParams other = savedRecord;
    other.motor[1].pulsePerMm = 9.5;
    SetAndShow(pMgr, pDialog, other);
    Step("put the saved file back", WriteFile(ParameterFile(), saved));
    pMgr->ReloadFromFile();
    FactoryParams reloaded;
    pMgr->GetFactoryParams(&reloaded);
    Step("ReloadFromFile gives the saved record", Same(reloaded, savedRecord),
         QStringLiteral("Y step %1").arg(reloaded.motor[1].pulsePerMm));

    Step("nothing was shown to the person as an error", notifier.codes.isEmpty());

    // The platform services a host calls itself.
    CountingTask task;
    int nCounted = 0;
    Step("ThreadDialogRun runs the host's task and gives its result",
         ThreadDialogRun(&task, 21, &nCounted, 0, QStringLiteral("Counting...")) == 0 && nCounted == 42);
    CTranslator* pWording = CTranslator::GetInstance();
    Step("the wording service offers Simplified Chinese", pWording->AvailableLanguages().contains("zh_CN"),
         pWording->AvailableLanguages().join(", "));
    Step("the language can be chosen and set back", pWording->SetLanguage(QStringLiteral("zh_CN"))
                                                        && pWording->GetWording(QStringLiteral("Cancel")) != "Cancel"
                                                        && pWording->SetLanguage(QStringLiteral("en")),
         pWording->Problem());

    // The dialog the plug-in keeps is the plug-in's, which deletes it at the next ShowFactoryDlg();
    // a host may delete it earlier, as this one does before it gives the service object back.
    delete pDialog;
    pfnRelease(pMgr);
    std::printf("%s\n", g_nFailed == 0 ? "the session went as the contract says"
                                       : qPrintable(QStringLiteral("%1 step(s) failed").arg(g_nFailed)));
    return g_nFailed;
}
