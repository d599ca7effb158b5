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
#include <unistd.h>

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

    // A factory: 1000 machines' parameter files against a reference, with
    // factoryparams fleet as a script runs it (a process of its own).
    const QString strFleet = home.path() + "/fleet";
    const QString strReference = home.path() + "/reference.ini";
    WriteFactoryParamFile(FactoryParams(), strReference);
    QStringList machines;
    for (int i = 0; i < 1000; ++i) {
        FactoryParams machine;
        machine.motor[i % 4].speedMax = 900.0 + i % 7;
        machine.laser.lasers[i % 2].powerMax = 90.0 + i % 3;
        const QString strPath = QStringLiteral("%1/line%2/m%3/FactoryParam.ini").arg(strFleet).arg(i % 10).arg(i, 4, 10, QChar('0'));
        QDir().mkpath(QFileInfo(strPath).absolutePath());
        WriteFactoryParamFile(machine, strPath);
        machines << strPath;
    }
    const double dReadAll = MedianMs(3, [&] {
        FactoryParams machine;
        for (const QString& strPath : machines)
            ReadFactoryParamFile(machine, strPath);
    });
    int nFleetExit = -1;
    const double dFleet = MedianMs(3, [&] {
        QProcess tool;
        tool.start(QCoreApplication::applicationDirPath() + "/factoryparams", {"fleet", strReference, strFleet});
        tool.waitForFinished(60000);
        tool.readAllStandardOutput();
        nFleetExit = tool.exitCode();
    });
    Report("factoryparams fleet, 1000 files", dFleet, "reading the 1000 files once", dReadAll, "< 2000 ms",
           dFleet < 2000.0 && nFleetExit == 1);


    std::printf("%-40s %10s   %-32s %10s %7s   %-15s %s\n", "measured", "median ms", "baseline", "median ms", "ratio",
                "target", "met");
    for (const Row& row : g_rows)
        std::printf("%-40s %10.3f   %-32s %10.3f %7.2f   %-15s %s\n", row.szWhat, row.dMs, row.szBaseline, row.dBaselineMs,
                    row.dBaselineMs > 0 ? row.dMs / row.dBaselineMs : 0.0, qPrintable(row.strTarget), row.bMet ? "yes" : "NO");
    const long nGrowth = nAfter500 - nAfter10;
    std::printf("%-40s %10ld   %-32s %10ld %7s   %-15s %s\n", "resident KiB after 500 dialog cycles", nAfter500,
                "after 10 cycles", nAfter10, "", "growth < 2048", nGrowth < 2048 ? "yes" : "NO");
    ReleaseInterface(pMgr);
    return 0;
}
