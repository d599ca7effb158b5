// FactoryMgr benchmarks: each figure is the median of repeated runs, printed
// beside a baseline measured in the same run, with their ratio and target.
// Run with scripts/bench (a release build, offscreen).

#include "CFactoryMgrApp.h"
#include "DlgFactoryMgr.h"
#include "FactoryParamFile.h"
#include "FactoryParamIo.h"
#include "IDevice.h"
#include "IFactoryMgr.h"
#include "ResidentSize.h"
#include "ui_DlgFactoryMgr.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QProcess>
#include <QSettings>
#include <QTabWidget>
#include <QTableWidget>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {
double MedianMs(int nRuns, const std::function<void()>& run)
{
    std::vector<double> times;
    for (int i = 0; i < nRuns; ++i) {
        QElapsedTimer timer;
        timer.start();
        run();
        times.push_back(timer.nsecsElapsed() / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

struct Row
{
    const char* szWhat;
    double dMs;
    const char* szBaseline;
    double dBaselineMs;
    QString strTarget;
    bool bMet;
};
QList<Row> g_rows;

// Runs a program with its standard output into strOut and waits for it:
// its exit code, and its own peak resident size in KiB.
int RunMeasured(const QStringList& arguments, const QString& strOut, long* pPeakKb)
{
    std::vector<QByteArray> bytes;
    for (const QString& strArgument : arguments)
        bytes.push_back(QFile::encodeName(strArgument));
    std::vector<char*> argv;
    for (QByteArray& argument : bytes)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, QFile::encodeName(strOut).constData(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0644);
    pid_t nPid = 0;
    const int nSpawned = posix_spawn(&nPid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (nSpawned != 0)
        return -1;
    int nStatus = 0;
    rusage usage {};
    if (wait4(nPid, &nStatus, 0, &usage) != nPid)
        return -1;
    *pPeakKb = usage.ru_maxrss;
    return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -1;
}

void Report(const char* szWhat, double dMs, const char* szBaseline, double dBaselineMs, const QString& strTarget, bool bMet)
{
    g_rows << Row{szWhat, dMs, szBaseline, dBaselineMs, strTarget, bMet};
}

// A device that gives back every listed field changed, as a controller that
// limited everything would.
class ChangingDevice : public IDevice
{
public:
    ICard* GetCurrentCard() override { return nullptr; }
    int WriteFactoryParams(FactoryParams* pParams) override
    {
        std::memcpy(static_cast<void*>(&m_stored), pParams, sizeof(FactoryParams));
        return 0;
    }
    int ReadFactoryParams(FactoryParams* pParams) override
    {
        FactoryParams changed = m_stored;
        for (MotorParams& m : changed.motor)
            for (double* p : {&m.pulsePerMm, &m.size, &m.zeroOffset, &m.speedJump, &m.speedMax, &m.accMax,
                              &m.accUrgentStop, &m.accKey, &m.speedKeyJump})
                *p += 1.0;
        for (LaserParams& l : changed.laser.lasers)
            for (double* p : {&l.powerMin, &l.powerMax, &l.powerReduction, &l.frequency, &l.burningFrequency, &l.burningWidth})
                *p += 1.0;
        SpeedSection& s = changed.speed;
        for (double* p : {&s.panelSpeedReset, &s.sweepSpeedXStart, &s.sweepSpeedYStart, &s.sweepSpeedNewline, &s.sweepAccX,
                          &s.sweepAccY, &s.cutSpeedSpace, &s.cutSpeedCorner, &s.cutAccSpace, &s.cutAccCorner, &s.cutAccWork})
            *p += 1.0;
        changed.machine.motiveMode ^= 1;
        changed.machine.laserSpace += 1.0;
        changed.machine.outageDelay += 1;
        std::memcpy(static_cast<void*>(pParams), &changed, sizeof(FactoryParams));
        return 0;
    }
    FactoryParams m_stored;
};

void Repaint(QTableWidget* pTable)
{
    pTable->viewport()->repaint();
}

// What a host's event loop does after the handler of an edit returns: the
// events the edit posted (layout, update requests, editors deleted later)
// are delivered. Left undelivered they pile up, and every widget deleted
// after them pays for a scan of the whole queue.
void DeliverPosted()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

// One edit as the user makes it: the table repaints, then the posted events
// are delivered.
void Finish(QTableWidget* pTable)
{
    Repaint(pTable);
    DeliverPosted();
}

void TypeNumber(DlgFactoryMgr* pDialog, QTableWidget* pTable, int nRow, int nColumn, const QString& strText,
                void (DlgFactoryMgr::*clicked)(const QModelIndex&))
{
    (pDialog->*clicked)(pTable->model()->index(nRow, nColumn));
    QLineEdit* pEdit = pTable->cellWidget(nRow, nColumn)->findChild<QLineEdit*>();
    pEdit->setText(strText);
    pEdit->setModified(true);
    emit pEdit->editingFinished();
    Finish(pTable);
}

void Choose(DlgFactoryMgr* pDialog, QTableWidget* pTable, int nRow, int nColumn, int nIndex,
            void (DlgFactoryMgr::*clicked)(const QModelIndex&))
{
    (pDialog->*clicked)(pTable->model()->index(nRow, nColumn));
    pTable->cellWidget(nRow, nColumn)->findChild<QComboBox*>()->setCurrentIndex(nIndex);
    Finish(pTable);
}
}

int main(int argc, char** argv)
{
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.path().toLocal8Bit());
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int kRuns = 31;
    // BENCH_CYCLES=<n>: only open the settings n times and print the resident
    // size (for a heap profile, e.g. under heaptrack). BENCH_CYCLE_MODE: "bare"
    // the form alone, "dialog" the dialog made and deleted directly, "noinit" a
    // service object without Init (no wizard); otherwise ShowFactoryDlg.
    if (const int nCycles = qEnvironmentVariableIntValue("BENCH_CYCLES")) {
        const QByteArray mode = qgetenv("BENCH_CYCLE_MODE");
        IFactoryMgr* pMgr = NewInterface();
        if (mode != "noinit")
            pMgr->Init(nullptr, nullptr);
        FactoryParams params;
        for (int i = 0; i < nCycles; ++i) {
            if (mode == "bare") {
                QDialog bare;
                Ui::DlgFactoryMgr form;
                form.setupUi(&bare);
            } else if (mode == "dialog") {
                delete new DlgFactoryMgr(&params);

            } else {
                pMgr->ShowFactoryDlg(nullptr);
            }
            // A host's event loop runs between two openings.
            QCoreApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            if (i == 10 || i == nCycles - 1)
                std::printf("%s cycle %d: %ld KiB\n", mode.constData(), i, ResidentKb());
        }
        ReleaseInterface(pMgr);
        return 0;
    }

    // The parameter file.
    const QString strFile = home.path() + "/bench.ini";
    SaveFactoryParams(FactoryParams(), strFile);
    FactoryParams record;
    const double dLoad = MedianMs(kRuns, [&] { LoadFactoryParams(record, strFile); });
    const double dLoadBase = MedianMs(kRuns, [&] {
        QSettings settings(strFile, QSettings::IniFormat);
        double dSum = 0.0;
        for (const QString& strKey : settings.allKeys())
            dSum += settings.value(strKey).toDouble();
        (void)dSum;
    });
    Report("load FactoryParam.ini", dLoad, "one settings object, all keys", dLoadBase, "< 20 ms", dLoad < 20.0);

    const double dSave = MedianMs(kRuns, [&] { SaveFactoryParams(record, strFile); });
    const QString strPlain = home.path() + "/plain.ini";
    const QStringList keys = QSettings(strFile, QSettings::IniFormat).allKeys();
    const double dSaveBase = MedianMs(kRuns, [&] {
        QFile::remove(strPlain);
        QSettings settings(strPlain, QSettings::IniFormat);
        for (const QString& strKey : keys)
            settings.setValue(strKey, 1.5);
    });
    Report("save FactoryParam.ini", dSave, "plain write of the same keys", dSaveBase, "<= 2x baseline", dSave <= 2.0 * dSaveBase);

    // The dialog.
    ChangingDevice device;
    IFactoryMgr* pMgr = NewInterface();
    pMgr->Init(&device, nullptr);
    const double dOpen = MedianMs(11, [&] {
        DlgFactoryMgr* pDialog = pMgr->ShowFactoryDlg(nullptr);
        pDialog->show();
        pDialog->repaint();
        pDialog->hide();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    });
    const double dOpenBase = MedianMs(11, [&] {
        QDialog bare;
        Ui::DlgFactoryMgr form;
        form.setupUi(&bare);
        bare.show();
        bare.repaint();
    });
    Report("open the settings dialog", dOpen, "the bare form, no data", dOpenBase, "< 100 ms", dOpen < 100.0);

    DlgFactoryMgr* pDialog = pMgr->ShowFactoryDlg(nullptr);
    pDialog->show();
    QCoreApplication::processEvents();
    auto* pTabs = pDialog->findChild<QTabWidget*>("tabWidget");
    // A table paints only while its tab shows.
    const auto showTab = [&](const char* szPage) {
        pTabs->setCurrentWidget(pDialog->findChild<QWidget*>(szPage));
        QCoreApplication::processEvents();
    };
    auto* pMotor = pDialog->findChild<QTableWidget*>("tableWidget_motor");
    auto* pLaser = pDialog->findChild<QTableWidget*>("tableWidget_laser");
    auto* pSpeed = pDialog->findChild<QTableWidget*>("tableWidget_speed");
    const double dRepaint = MedianMs(kRuns, [&] { Repaint(pMotor); });
    int nFlip = 0;
    const double dMotorList = MedianMs(kRuns, [&] {
        Choose(pDialog, pMotor, 1, 1, ++nFlip % 2, &DlgFactoryMgr::on_tableWidget_motor_clicked);
    });
    Report("edit: Motor list choice", dMotorList, "repaint of the table", dRepaint, "< 4 ms", dMotorList < 4.0);
    const double dMotorNumber = MedianMs(kRuns, [&] {
        TypeNumber(pDialog, pMotor, 6, 2, QString::number(800 + ++nFlip), &DlgFactoryMgr::on_tableWidget_motor_clicked);
    });
    Report("edit: Motor number", dMotorNumber, "repaint of the table", dRepaint, "< 4 ms", dMotorNumber < 4.0);
    showTab("widget1");
    const double dLaserRepaint = MedianMs(kRuns, [&] { Repaint(pLaser); });
    const double dLaserType = MedianMs(kRuns, [&] {
        Choose(pDialog, pLaser, 0, 1, ++nFlip % 3, &DlgFactoryMgr::on_tableWidget_laser_clicked);
    });
    Report("edit: Laser type choice", dLaserType, "repaint of the table", dLaserRepaint, "< 4 ms", dLaserType < 4.0);
    showTab("tab_5");
    const double dSpeedRepaint = MedianMs(kRuns, [&] { Repaint(pSpeed); });
    const double dSpeedNumber = MedianMs(kRuns, [&] {
        TypeNumber(pDialog, pSpeed, 3, 1, QString::number(500 + ++nFlip), &DlgFactoryMgr::on_tableWidget_speed_clicked);
    });
    Report("edit: Processing number", dSpeedNumber, "repaint of the table", dSpeedRepaint, "< 4 ms", dSpeedNumber < 4.0);

    FactoryParams copy;
    const double dCopy = MedianMs(kRuns, [&] { pDialog->GetParams(copy); });
    const double dToCtrl = MedianMs(kRuns, [&] {
        pDialog->DataToCtrlSlot(true);
        DeliverPosted();
    });
    Report("DataToCtrlSlot(true)", dToCtrl, "a 720-byte record copy", dCopy, "-", true);
    const double dFromCtrl = MedianMs(kRuns, [&] { pDialog->DataToCtrlSlot(false); });
    Report("DataToCtrlSlot(false)", dFromCtrl, "a 720-byte record copy", dCopy, "-", true);
    pMgr->UploadParamsToDevice();
    quint32 nFlags = 0;
    const double dCheck = MedianMs(kRuns, [&] { pMgr->CheckDeviceParams(&nFlags); });
    Report("CheckDeviceParams, every field changed", dCheck, "a 720-byte record copy", dCopy, "-", nFlags == 15);

    // Memory over open-and-replace cycles, as a host opens the settings again and again.
    // A host's event loop runs between two openings.
    const auto openAndReplace = [&] {
        pMgr->ShowFactoryDlg(nullptr);
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    for (int i = 0; i < 10; ++i)
        openAndReplace();
    const long nAfter10 = ResidentKb();
    for (int i = 10; i < 500; ++i)
        openAndReplace();
    const long nAfter500 = ResidentKb();

    // A factory: 100,000 machines of one model, each with its own calibrated
    // X and Y steps (which the model leaves out) and 50 of them differing in
    // one field, against the model with factoryparams fleet as a script runs
    // it (a process of its own), in text and in JSON.
    const QString strFleet = home.path() + "/fleet";
    const QString strReference = home.path() + "/reference.ini";
    WriteFactoryParamFile(FactoryParams(), strReference);
    constexpr int kMachines = 100000;
    QByteArray model;
    {
        QFile file(strReference);
        file.open(QIODevice::ReadOnly);
        model = file.readAll();
    }
    const auto lineOf = [&model](const QByteArray& key) {
        const qsizetype nAt = model.indexOf("\n" + key + "=") + 1;
        return qMakePair(nAt, model.indexOf('\n', nAt) - nAt);
    };
    QStringList machines;
    machines.reserve(kMachines);
    for (int i = 0; i < kMachines; ++i) {
        QByteArray text = model;
        // The later lines change first, so that the places of the earlier ones hold.
        const auto [nX, nXLength] = lineOf("MOTOR_PULSE_PER_MM_1");
        const auto [nY, nYLength] = lineOf("MOTOR_PULSE_PER_MM_2");
        const auto [nSpeed, nSpeedLength] = lineOf("MOTOR_SPEED_MAX_3");
        if (i % (kMachines / 50) == 7)
            text.replace(nSpeed, nSpeedLength, "MOTOR_SPEED_MAX_3=" + QByteArray::number(900 + i % 7));
        text.replace(nY, nYLength, "MOTOR_PULSE_PER_MM_2=" + QByteArray::number(7.9 + i * 1e-6, 'g', 10));
        text.replace(nX, nXLength, "MOTOR_PULSE_PER_MM_1=" + QByteArray::number(7.8 + i * 1e-6, 'g', 10));
        const QString strDir = QStringLiteral("%1/line%2/m%3").arg(strFleet).arg(i % 100).arg(i, 6, 10, QChar('0'));
        QDir().mkpath(strDir);
        QFile file(strDir + "/FactoryParam.ini");
        file.open(QIODevice::WriteOnly);
        file.write(text);
        machines << file.fileName();
    }
    const double dReadAll = MedianMs(1, [&] {
        FactoryParams machine;
        for (const QString& strPath : machines)
            ReadFactoryParamFile(machine, strPath);
    });
    const auto runFleet = [&](const QStringList& extra, int* pExit, long* pPeakKb, qint64* pBytes) {
        const QString strOut = home.path() + "/fleet-out.txt";
        *pExit = RunMeasured(QStringList{QCoreApplication::applicationDirPath() + "/factoryparams", "fleet", "--ignore",
                                         "MOTOR_PULSE_PER_MM_*"}
                                 + extra + QStringList{strReference, strFleet},
                             strOut, pPeakKb);
        *pBytes = QFileInfo(strOut).size();
    };
    int nFleetExit = -1;
    long nFleetKb = 0;
    qint64 nFleetBytes = 0;
    const double dFleet = MedianMs(1, [&] { runFleet({}, &nFleetExit, &nFleetKb, &nFleetBytes); });
    Report("factoryparams fleet, 100,000 files", dFleet, "reading the 100,000 files once", dReadAll, "< 20000 ms",
           dFleet < 20000.0 && nFleetExit == 1);
    int nJsonExit = -1;
    long nJsonKb = 0;
    qint64 nJsonBytes = 0;
    const double dJson = MedianMs(1, [&] { runFleet({"--json"}, &nJsonExit, &nJsonKb, &nJsonBytes); });
    Report("factoryparams fleet --json, 100,000", dJson, "reading the 100,000 files once", dReadAll, "< 20000 ms",
           dJson < 20000.0 && nJsonExit == 1);
    QDir(strFleet).removeRecursively();

    // check of a 1 MiB file with 80,000 keys nobody knows.
    const QString strCrowded = home.path() + "/crowded.ini";
    {
        QFile file(strCrowded);
        file.open(QIODevice::WriteOnly);
        file.write(model);
        file.write("[EXTRA]\n");
        for (int i = 0; file.size() < 1024 * 1024 - 16 && i < 80000; ++i)
            file.write("K" + QByteArray::number(i) + "=1\n");
    }
    const double dParseCrowded = MedianMs(3, [&] { QSettings(strCrowded, QSettings::IniFormat).allKeys(); });
    int nCheckExit = -1;
    const double dCheckCrowded = MedianMs(3, [&] {
        QProcess tool;
        tool.start(QCoreApplication::applicationDirPath() + "/factoryparams", {"check", strCrowded});
        tool.waitForFinished(600000);
        tool.readAllStandardOutput();
        nCheckExit = tool.exitCode();
    });
    Report("factoryparams check, 80,000 unknown keys", dCheckCrowded, "parsing that file once", dParseCrowded,
           "< 1000 ms", dCheckCrowded < 1000.0 && nCheckExit == 1);

    std::printf("%-40s %10s   %-32s %10s %7s   %-15s %s\n", "measured", "median ms", "baseline", "median ms", "ratio",
                "target", "met");
    for (const Row& row : g_rows)
        std::printf("%-40s %10.3f   %-32s %10.3f %7.2f   %-15s %s\n", row.szWhat, row.dMs, row.szBaseline, row.dBaselineMs,
                    row.dBaselineMs > 0 ? row.dMs / row.dBaselineMs : 0.0, qPrintable(row.strTarget), row.bMet ? "yes" : "NO");
    std::printf("%-40s %10ld   %-32s %10lld %7s   %-15s %s\n", "fleet peak resident KiB", nFleetKb,
                "output bytes", qlonglong(nFleetBytes), "", "< 204800", nFleetKb < 204800 ? "yes" : "NO");
    std::printf("%-40s %10ld   %-32s %10lld %7s   %-15s %s\n", "fleet --json peak resident KiB", nJsonKb,
                "output bytes", qlonglong(nJsonBytes), "", "< 204800", nJsonKb < 204800 ? "yes" : "NO");
    const long nGrowth = nAfter500 - nAfter10;
    std::printf("%-40s %10ld   %-32s %10ld %7s   %-15s %s\n", "resident KiB after 500 dialog cycles", nAfter500,
                "after 10 cycles", nAfter10, "", "growth < 2048", nGrowth < 2048 ? "yes" : "NO");
    ReleaseInterface(pMgr);
    return 0;
}
