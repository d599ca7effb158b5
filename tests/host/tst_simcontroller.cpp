#include "TestMain.h"

#include "CFirmwareFile.h"
#include "CPatternConverter.h"
#include "CShapeFile.h"
#include "CSimController.h"
#include "FileSizeLimit.h"
#include "HostileFiles.h"
#include "TestThread.h"

#include <QElapsedTimer>
#include <QSettings>

#include <sys/stat.h>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>

namespace {
void WriteFile(const QString& strPath, const QByteArray& content)
{
    QFile file(strPath);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(content);
}

QByteArray Mainboard(const char* szVersion = "QV-MB 3.3.0")
{
    return CFirmwareFile::Make(CFirmwareFile::kMainboard, QString::fromLatin1(szVersion), "image of the mainboard");
}

QByteArray Panel(const char* szVersion = "QV-PN 1.5.0")
{
    return CFirmwareFile::Make(CFirmwareFile::kPanel, QString::fromLatin1(szVersion), "image of the panel");
}
}

class TestSimController : public QObject
{
    Q_OBJECT
private slots:
    void init();

    void acceptsWhatItCanTake();
    void limitsWhatItCannotTake();
    void refusesWhatNoControllerTakes_data();
    void refusesWhatNoControllerTakes();
    void oddValuesInItsFlashAndJobsAreDefined();
    void statesAndRefusals();
    void keepsEverythingAcrossARestart();
    void damagedFlashStartsFresh();
    void answersTheCardFunctions();
    void cuttingCountsJobTimeAndTravel();
    void aCutNeedsPowerAndTheWorkArea_data();
    void aCutNeedsPowerAndTheWorkArea();
    void aCutTakesTheTimeOfItsPath();
    void clearResetsTheCounters();
    void workTimeComesFromTheFlash();
    void aWriteThatMissesTheFlashIsAFlashError();
    void aFlashFileItNeverWroteIsReadAsFarAsItCanBe_data();
    void aFlashFileItNeverWroteIsReadAsFarAsItCanBe();
    void aFlashItWroteOverAStrangeFileItTakesAgain();
    void anUpgradeSaysItsStagesAsItGoes();
    void aPipeInPlaceOfAFirmwareOrPatternFileIsRefused();
    void upgradeChecksTheFile_data();
    void upgradeChecksTheFile();
    void upgradeChangesTheVersion();
    void aMainboardUpgradeRestartsTheController();
    void busyWhileAnUpgradeRuns();
    void faultsHappenOnceOnTheirOperation();
    void aDroppedUpgradeIsRepairedByASecondOne();
    void aFaultArmedInTheFlashFileHappens();
    void calibrationConvergesInOneCorrection();
    void patternConverterMakesAJob();

private:
    std::unique_ptr<CSimController> Make();
    QScopedPointer<QTemporaryDir> m_pDir;
    QString m_strFlash;
    QString m_strPattern;
};

void TestSimController::init()
{
    m_pDir.reset(new QTemporaryDir);
    m_strFlash = m_pDir->path() + "/flash/controller.ini";
    m_strPattern = QCoreApplication::applicationDirPath() + "/../Resources/Data/adjustpulse.lcpx";
}

std::unique_ptr<CSimController> TestSimController::Make()
{
    auto pSim = std::make_unique<CSimController>(m_strFlash);
    pSim->SetTaskDuration(0);
    return pSim;
}

void TestSimController::acceptsWhatItCanTake()
{
    auto pSim = Make();
    FactoryParams params;
    params.motor[0].speedMax = 1450.0;
    params.laser.lasers[1].powerMax = 95.5;
    QCOMPARE(pSim->WriteFactoryParams(&params), 0);
    QCOMPARE(pSim->LastLimitedCount(), 0);
    FactoryParams back;
    QCOMPARE(pSim->ReadFactoryParams(&back), 0);
    QCOMPARE(std::memcmp(&back, &params, sizeof(FactoryParams)), 0);
}

void TestSimController::limitsWhatItCannotTake()
{
    auto pSim = Make();
    FactoryParams params;
    params.motor[0].speedMax = 1600.0;   // X takes 1500
    params.motor[1].speedMax = 1100.0;   // Y takes 1000
    params.motor[1].accMax = 45000.0;    // X and Y take 30000
    params.motor[2].speedMax = 150.0;    // Z takes 1000: kept
    params.laser.lasers[0].powerMax = 120.0;
    params.laser.laserCount = 5;
    params.laser.lasers[1].type = 9;
    params.speed.cutAccWork = -5.0;
    params.motor[3].directionPolar = 3;
    QCOMPARE(pSim->WriteFactoryParams(&params), 0);
    QCOMPARE(pSim->LastLimitedCount(), 8);
    FactoryParams back;
    pSim->ReadFactoryParams(&back);
    QCOMPARE(back.motor[0].speedMax, 1500.0);
    QCOMPARE(back.motor[1].speedMax, 1000.0);
    QCOMPARE(back.motor[1].accMax, 30000.0);
    QCOMPARE(back.motor[2].speedMax, 150.0);
    QCOMPARE(back.laser.lasers[0].powerMax, 100.0);
    QCOMPARE(back.laser.laserCount, 2);
    QCOMPARE(back.laser.lasers[1].type, 4);
    QCOMPARE(back.speed.cutAccWork, 0.0);
    QCOMPARE(back.motor[3].directionPolar, 1);
}

namespace {
struct Refusal
{
    const char* szName;
    std::function<void(FactoryParams&)> send;      // what is sent, over what the controller holds
    std::function<void(FactoryParams&)> stored;    // what it holds afterwards, over what it held
};

const QList<Refusal>& Refusals()
{
    const double dNan = std::numeric_limits<double>::quiet_NaN();
    const double dInf = std::numeric_limits<double>::infinity();
    static const QList<Refusal> refusals{
        {"not a number", [=](FactoryParams& p) { p.motor[0].speedMax = dNan; p.speed.cutAccWork = dNan; },
         [](FactoryParams&) {}},
        {"infinities", [=](FactoryParams& p) { p.laser.lasers[1].frequency = dInf; p.machine.laserSpace = -dInf; },
         [](FactoryParams&) {}},
        {"a step of 0", [](FactoryParams& p) { p.motor[1].pulsePerMm = 0.0; }, [](FactoryParams&) {}},
        {"a negative step", [](FactoryParams& p) { p.motor[2].pulsePerMm = -7.9; }, [](FactoryParams&) {}},
        {"min power above max",
         [](FactoryParams& p) { p.laser.lasers[0].powerMax = 60.0; p.laser.lasers[0].powerMin = 75.0; },
         [](FactoryParams& p) { p.laser.lasers[0].powerMax = 60.0; p.laser.lasers[0].powerMin = 60.0; }},
        {"start speed above max speed",
         [](FactoryParams& p) { p.motor[3].speedMax = 200.0; p.motor[3].speedJump = 250.0; },
         [](FactoryParams& p) { p.motor[3].speedMax = 200.0; p.motor[3].speedJump = 200.0; }},
        // 20,000 pulses a second at 40 pulses per mm: 500 mm/s at most.
        {"max speed beyond the pulse rate",
         [](FactoryParams& p) { p.motor[0].pulsePerMm = 40.0; p.motor[0].speedMax = 800.0; },
         [](FactoryParams& p) { p.motor[0].pulsePerMm = 40.0; p.motor[0].speedMax = 500.0; }},
        {"processing speed above the slower axis",
         [](FactoryParams& p) { p.motor[1].speedMax = 400.0; p.speed.cutSpeedSpace = 450.0; },
         [](FactoryParams& p) { p.motor[1].speedMax = 400.0; p.speed.cutSpeedSpace = 400.0; }},
    };
    return refusals;
}
}

void TestSimController::refusesWhatNoControllerTakes_data()
{
    QTest::addColumn<int>("nCase");
    for (int i = 0; i < Refusals().size(); ++i)
        QTest::newRow(Refusals()[i].szName) << i;
}

void TestSimController::refusesWhatNoControllerTakes()
{
    QFETCH(int, nCase);
    const Refusal& r = Refusals()[nCase];
    auto pSim = Make();
    FactoryParams held;
    held.speed.cutSpeedSpace = 300.0;
    QCOMPARE(pSim->WriteFactoryParams(&held), 0);
    QCOMPARE(pSim->LastLimitedCount(), 0);
    FactoryParams sent = held;
    r.send(sent);
    QCOMPARE(pSim->WriteFactoryParams(&sent), 0);
    FactoryParams expected = held;
    r.stored(expected);
    FactoryParams back;
    QCOMPARE(pSim->ReadFactoryParams(&back), 0);
    // Byte for byte what it held, but for the values it could take.
    QCOMPARE(std::memcmp(&back, &expected, sizeof(FactoryParams)), 0);
    QVERIFY(pSim->LastLimitedCount() > 0);
}

void TestSimController::oddValuesInItsFlashAndJobsAreDefined()
{
    // A flash file edited by hand: not-a-number, infinite and negative values.
    QDir().mkpath(QFileInfo(m_strFlash).absolutePath());
    WriteFile(m_strFlash, "[CONTROLLER]\nWORK_SECONDS=-5\nJOB_SECONDS=99999999999999\nTRAVEL_X=nan\n"
                          "TRAVEL_Y=1e300\nTRUE_STEP_X=-3\nTRUE_STEP_Y=inf\n");
    QElapsedTimer sinceStart;
    sinceStart.start();
    auto pSim = Make();
    const CardInfo info = pSim->Info();
    // A negative count starts again from 0: what shows is the seconds this
    // run has been connected, nothing of the -5.
    QVERIFY2(info.totalWorkTime >= 0 && info.totalWorkTime <= sinceStart.elapsed() / 1000,
             qPrintable(QString::number(info.totalWorkTime)));
    QCOMPARE(info.totalJobTime, std::numeric_limits<int>::max());
    QCOMPARE(info.totalXMove, 0);
    QCOMPARE(info.totalYMove, std::numeric_limits<int>::max());
    // The true steps stayed the machine's own: a configured 7.88627 cuts 151.21 x 148.36.
    const QString strJob = m_pDir->path() + "/job.tl";
    CPatternConverter::ConvertPattern(m_strPattern.toUtf8().constData(), strJob.toUtf8().constData(), 10.0);
    QCOMPARE(pSim->CallFunction("BacklashAdjust", QVariant(strJob)), 0);
    QCOMPARE(QString::number(pSim->LastCut().width(), 'f', 2), QStringLiteral("151.21"));
    QCOMPARE(QString::number(pSim->LastCut().height(), 'f', 2), QStringLiteral("148.36"));
    // A job with huge coordinates lies outside the work area: it is refused,
    // and the counters stay as they were.
    const CardInfo before = pSim->Info();
    WriteFile(m_pDir->path() + "/huge.tl", "TL 1\nPOWER 10\nPOLYLINE 0,0 1e300,0 1e300,1e300 0,0\n");
    QCOMPARE(pSim->CallFunction("BacklashAdjust", QVariant(m_pDir->path() + "/huge.tl")),
             int(CSimController::CodeOutsideWorkArea));
    const CardInfo after = pSim->Info();
    QCOMPARE(after.totalXMove, before.totalXMove);
    QCOMPARE(after.totalYMove, before.totalYMove);
    QCOMPARE(after.totalJobTime, before.totalJobTime);
}

void TestSimController::statesAndRefusals()
{
    auto pSim = Make();
    FactoryParams params;
    QVERIFY(pSim->GetCurrentCard() == pSim.get());
    QCOMPARE(pSim->GetState(), 2);
    QVERIFY(pSim->GetTaskState() == pSim.get());

    pSim->SetInformationOnly(true);
    QCOMPARE(pSim->GetState(), 3);
    QCOMPARE(pSim->WriteFactoryParams(&params), 1001);
    QCOMPARE(pSim->ReadFactoryParams(&params), 0);
    pSim->SetInformationOnly(false);

    pSim->SetBusy(true);
    QCOMPARE(pSim->IsBusy(), 1);
    QCOMPARE(pSim->WriteFactoryParams(&params), 1005);
    pSim->SetBusy(false);
    QCOMPARE(pSim->IsBusy(), 0);

    pSim->SetConnected(false);
    QVERIFY(pSim->GetCurrentCard() == nullptr);
    QCOMPARE(pSim->GetState(), 0);
    QCOMPARE(pSim->WriteFactoryParams(&params), int(CSimController::CodeNotConnected));
    QCOMPARE(pSim->ReadFactoryParams(&params), int(CSimController::CodeNotConnected));
    QCOMPARE(pSim->CallFunction("ClearCardInfo", QVariant()), int(CSimController::CodeNotConnected));
    QCOMPARE(pSim->WriteFactoryParams(nullptr), int(CSimController::CodeNotConnected));
    pSim->SetConnected(true);
    QCOMPARE(pSim->WriteFactoryParams(nullptr), int(CSimController::CodeBadJob));
}

void TestSimController::keepsEverythingAcrossARestart()
{
    {
        auto pSim = Make();
        FactoryParams params;
        params.motor[1].pulsePerMm = 8.125;
        params.speed.sweepAccY = 1234.0;
        pSim->WriteFactoryParams(&params);
        pSim->SetCardType(5);
        pSim->SetTrueSteps(8.0, 7.5);
        const QString strFirmware = m_pDir->path() + "/main.upd";
        WriteFile(strFirmware, Mainboard("QV-MB 9.9.9"));
        QCOMPARE(pSim->CallFunction("CardUpgrade", QVariant(strFirmware)), 0);
    }
    auto pSim = Make();
    const FactoryParams params = pSim->StoredParams();
    QCOMPARE(params.motor[1].pulsePerMm, 8.125);
    QCOMPARE(params.speed.sweepAccY, 1234.0);
    QCOMPARE(pSim->CardType(), 5);
    QCOMPARE(QByteArray(pSim->Info().firmwareVersion), QByteArray("QV-MB 9.9.9"));
}

void TestSimController::damagedFlashStartsFresh()
{
    QDir().mkpath(QFileInfo(m_strFlash).absolutePath());
    WriteFile(m_strFlash, "[CONTROLLER]\nPARAMS=@ByteArray(too short)\nCARD_TYPE=abc\n");
    auto pSim = Make();
    QCOMPARE(pSim->StoredParams().motor[0].pulsePerMm, 7.88627);
    QCOMPARE(pSim->CardType(), 0);
}

void TestSimController::answersTheCardFunctions()
{
    auto pSim = Make();
    QVariant type;
    QCOMPARE(pSim->QueryFunction("CurrentCardType", type), 0);
    QCOMPARE(type.toInt(), 8);
    pSim->SetCardType(3);
    QCOMPARE(pSim->QueryFunction("CurrentCardType", type), 0);
    QCOMPARE(type.toInt(), 3);

    CardInfo info{};
    QVariant pointer = QVariant::fromValue(static_cast<void*>(&info));
    QCOMPARE(pSim->QueryFunction("GetCardInfo", pointer), 0);
    QCOMPARE(QByteArray(info.firmwareVersion), QByteArray("QV-MB 3.2.0"));
    QCOMPARE(QByteArray(info.panelVersion), QByteArray("QV-PN 1.4.0"));
    QVariant nothing = QVariant::fromValue(static_cast<void*>(nullptr));
    QCOMPARE(pSim->QueryFunction("GetCardInfo", nothing), int(CSimController::CodeBadJob));
    QCOMPARE(pSim->CallFunction("SelfDestruct", QVariant()), int(CSimController::CodeUnknownFunction));
    QCOMPARE(pSim->QueryFunction("SelfDestruct", type), int(CSimController::CodeUnknownFunction));
    QCOMPARE(pSim->CallFunction(nullptr, QVariant()), int(CSimController::CodeUnknownFunction));
}

void TestSimController::cuttingCountsJobTimeAndTravel()
{
    auto pSim = Make();
    pSim->SetTrueSteps(7.88627, 7.88627);   // a machine that cuts true
    const QString strJob = m_pDir->path() + "/job.tl";
    QCOMPARE(CPatternConverter::ConvertPattern(m_strPattern.toUtf8().constData(), strJob.toUtf8().constData(), 12.0), 0);
    QSignalSpy cut(pSim.get(), &CSimController::JobCut);
    QCOMPARE(pSim->CallFunction("BacklashAdjust", QVariant(strJob)), 0);
    QCOMPARE(cut.count(), 1);
    QCOMPARE(cut.first().at(0).toDouble(), 150.0);
    QCOMPARE(cut.first().at(1).toDouble(), 150.0);
    const CardInfo info = pSim->Info();
    QCOMPARE(info.totalXMove, 300);   // the square's two horizontal sides
    QCOMPARE(info.totalYMove, 300);
    QCOMPARE(info.totalJobTime, 12);  // 600 mm at the corner speed of 50 mm/s

    QCOMPARE(pSim->CallFunction("BacklashAdjust", QVariant(m_pDir->path() + "/none.tl")),
             int(CSimController::CodeFileMissing));
    WriteFile(m_pDir->path() + "/bad.tl", "TL 1\nPOLYLINE 0,0 abc\n");
    QCOMPARE(pSim->CallFunction("BacklashAdjust", QVariant(m_pDir->path() + "/bad.tl")), int(CSimController::CodeBadJob));
    QCOMPARE(pSim->CallFunction("BacklashAdjust", QVariant(m_strPattern)), int(CSimController::CodeBadJob));
}

void TestSimController::aCutNeedsPowerAndTheWorkArea_data()
{
    QTest::addColumn<QByteArray>("job");
    QTest::addColumn<int>("nExpected");
    QTest::newRow("power 0") << QByteArray("TL 1\nPOWER 0\nPOLYLINE 0,0 10,0 10,10\n") << int(CSimController::CodeNoPower);
    QTest::newRow("no power") << QByteArray("TL 1\nPOLYLINE 0,0 10,0 10,10\n") << int(CSimController::CodeNoPower);
    QTest::newRow("power not a number") << QByteArray("TL 1\nPOWER nan\nPOLYLINE 0,0 10,0\n")
                                        << int(CSimController::CodeNoPower);
    QTest::newRow("wider than X travels") << QByteArray("TL 1\nPOWER 20\nPOLYLINE 0,0 950,0 950,10\n")
                                          << int(CSimController::CodeOutsideWorkArea);
    QTest::newRow("left of the origin") << QByteArray("TL 1\nPOWER 20\nPOLYLINE -5,0 10,0 10,10\n")
                                        << int(CSimController::CodeOutsideWorkArea);
    QTest::newRow("within") << QByteArray("TL 1\nPOWER 20\nPOLYLINE 0,0 800,0 800,10\n") << 0;
}

void TestSimController::aCutNeedsPowerAndTheWorkArea()
{
    QFETCH(QByteArray, job);
    QFETCH(int, nExpected);
    auto pSim = Make();
    pSim->SetTrueSteps(7.88627, 7.88627);
    FactoryParams params;
    params.motor[0].size = 900.0;
    params.motor[1].size = 600.0;
    pSim->WriteFactoryParams(&params);
    WriteFile(m_pDir->path() + "/job.tl", job);
    QSignalSpy cut(pSim.get(), &CSimController::JobCut);
    QCOMPARE(pSim->CallFunction("BacklashAdjust", QVariant(m_pDir->path() + "/job.tl")), nExpected);
    // A refused job moves nothing and counts nothing.
    QCOMPARE(cut.count(), nExpected == 0 ? 1 : 0);
    QCOMPARE(pSim->Info().totalXMove > 0, nExpected == 0);
    QCOMPARE(pSim->IsBusy(), 0);
}

void TestSimController::aCutTakesTheTimeOfItsPath()
{
    auto pSim = Make();
    pSim->SetTaskDuration(1);   // not instant: cuts take their time
    pSim->SetTrueSteps(7.88627, 7.88627);
    FactoryParams params;
    params.speed.cutSpeedCorner = 100.0;
    pSim->WriteFactoryParams(&params);
    // A 20 mm square: 80 mm at 100 mm/s.
    WriteFile(m_pDir->path() + "/job.tl", "TL 1\nPOWER 20\nPOLYLINE 0,0 20,0 20,20 0,20 0,0\n");
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(pSim->CallFunction("BacklashAdjust", QVariant(m_pDir->path() + "/job.tl")), 0);
    QVERIFY2(timer.elapsed() >= 780, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(pSim->Info().totalJobTime, 1);   // 0.8 s, rounded
}

void TestSimController::clearResetsTheCounters()
{
    auto pSim = Make();
    const QString strJob = m_pDir->path() + "/job.tl";
    CPatternConverter::ConvertPattern(m_strPattern.toUtf8().constData(), strJob.toUtf8().constData(), 10.0);
    pSim->CallFunction("BacklashAdjust", QVariant(strJob));
    QVERIFY(pSim->Info().totalXMove > 0);
    QCOMPARE(pSim->CallFunction("ClearCardInfo", QVariant()), 0);
    const CardInfo info = pSim->Info();
    QCOMPARE(info.totalXMove, 0);
    QCOMPARE(info.totalYMove, 0);
    QCOMPARE(info.totalJobTime, 0);
    QCOMPARE(info.totalWorkTime, 0);
    QCOMPARE(QByteArray(info.firmwareVersion), QByteArray("QV-MB 3.2.0"));
}

void TestSimController::workTimeComesFromTheFlash()
{
    QDir().mkpath(QFileInfo(m_strFlash).absolutePath());
    WriteFile(m_strFlash, "[CONTROLLER]\nWORK_SECONDS=3600\nJOB_SECONDS=61\n");
    auto pSim = Make();
    QVERIFY(pSim->Info().totalWorkTime >= 3600);
    QCOMPARE(pSim->Info().totalJobTime, 61);
}

void TestSimController::aWriteThatMissesTheFlashIsAFlashError()
{
    auto pSim = Make();
    FactoryParams kept;
    kept.motor[0].speedMax = 1200.0;
    QCOMPARE(pSim->WriteFactoryParams(&kept), 0);
    QFile flash(m_strFlash);
    QVERIFY(flash.open(QIODevice::ReadOnly));
    const QByteArray before = flash.readAll();
    flash.close();
    FactoryParams next = kept;
    next.motor[0].speedMax = 1300.0;
    {
        // A full disk: the flash file cannot be written again.
        FileSizeLimit full(64);
        QCOMPARE(pSim->WriteFactoryParams(&next), int(CSimController::CodeFlashError));
    }
    FactoryParams read;
    QCOMPARE(pSim->ReadFactoryParams(&read), 0);
    QCOMPARE(read.motor[0].speedMax, 1200.0);
    QVERIFY(flash.open(QIODevice::ReadOnly));
    QCOMPARE(flash.readAll(), before);
    flash.close();
    // With room again the same write goes through.
    QCOMPARE(pSim->WriteFactoryParams(&next), 0);
    QCOMPARE(CSimController(m_strFlash).ReadFactoryParams(&read), 0);
    QCOMPARE(read.motor[0].speedMax, 1300.0);
}

void TestSimController::aFlashFileItNeverWroteIsReadAsFarAsItCanBe_data()
{
    QTest::addColumn<QString>("strKind");
    QTest::addColumn<QString>("strProblem");
    QTest::newRow("a nested value") << "nested" << "line 2 (WORK_SECONDS) holds a value in the settings layer's own "
                                                  "encoding (@Variant), read as plain text";
    QTest::newRow("a FIFO") << "fifo" << "a FIFO, not a regular file, not read";
    QTest::newRow("100 MB") << "huge" << "larger than 1048576 bytes, not read";
}

void TestSimController::aFlashFileItNeverWroteIsReadAsFarAsItCanBe()
{
    QFETCH(QString, strKind);
    QFETCH(QString, strProblem);
    QVERIFY(QDir().mkpath(QFileInfo(m_strFlash).absolutePath()));
    const QByteArray nested = "[CONTROLLER]\nWORK_SECONDS=" + HostileFiles::NestedVariant() + "\nJOB_SECONDS=61\n";
    if (strKind == "fifo") {
        QCOMPARE(::mkfifo(QFile::encodeName(m_strFlash).constData(), 0600), 0);
    } else {
        QFile file(m_strFlash);
        QVERIFY(file.open(QIODevice::WriteOnly));
        if (strKind == "nested")
            QVERIFY(file.write(nested) == nested.size());
        else
            QVERIFY(file.resize(100 * 1024 * 1024));
    }
    QElapsedTimer timer;
    timer.start();
    auto pSim = Make();
    QVERIFY2(timer.elapsed() < 20000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(pSim->FlashProblem(), m_strFlash + ": " + strProblem);
    if (strKind == "nested")
        QCOMPARE(pSim->Info().totalJobTime, 61);   // the rest of the file is read
    // Nothing it writes reaches a flash file it did not write, and the write says so.
    FactoryParams params;
    QCOMPARE(pSim->WriteFactoryParams(&params), int(CSimController::CodeFlashError));
    pSim.reset();
    QFile after(m_strFlash);
    if (strKind == "fifo") {
        QVERIFY(!QFileInfo(m_strFlash).isFile());
    } else if (strKind == "huge") {
        QCOMPARE(QFileInfo(m_strFlash).size(), qint64(100 * 1024 * 1024));
    } else {
        QVERIFY(after.open(QIODevice::ReadOnly));
        QCOMPARE(after.readAll(), nested);
    }
}

void TestSimController::aFlashItWroteOverAStrangeFileItTakesAgain()
{
    // A key of its own, with bytes that are no UTF-8: the settings layer keeps
    // the key and writes its text back as replacement characters, one of which
    // now stands before an '@'.
    QVERIFY(QDir().mkpath(QFileInfo(m_strFlash).absolutePath()));
    WriteFile(m_strFlash, QByteArray("ARA=\xb2\xde\\\x88x\xcb@0\xd6\x89\xb6\xb1\n"));
    FactoryParams params;
    params.motor[0].speedMax = 1250.0;
    {
        auto pSim = Make();
        QCOMPARE(pSim->FlashProblem(), QString());
        QCOMPARE(pSim->WriteFactoryParams(&params), 0);
    }
    auto pSim = Make();
    QCOMPARE(pSim->FlashProblem(), QString());
    FactoryParams read;
    QCOMPARE(pSim->ReadFactoryParams(&read), 0);
    QCOMPARE(read.motor[0].speedMax, 1250.0);
    params.motor[0].speedMax = 1300.0;
    QCOMPARE(pSim->WriteFactoryParams(&params), 0);
}

void TestSimController::anUpgradeSaysItsStagesAsItGoes()
{
    auto pSim = Make();
    // An image of some 150 KiB at 100 ms per 32 KiB: about half a second of writing.
    pSim->SetTaskDuration(100);
    pSim->SetRestartDuration(0);
    QList<QPair<double, QString>> said;
    connect(pSim.get(), &CSimController::Progress, this,
            [&](double dFraction, const QString& strStage) { said << qMakePair(dFraction, strStage); },
            Qt::DirectConnection);
    const QString strFirmware = m_pDir->path() + "/main.upd";
    WriteFile(strFirmware, CFirmwareFile::Make(CFirmwareFile::kMainboard, QStringLiteral("QV-MB 9.9.9"), QByteArray(150 * 1024, 'm')));
    QCOMPARE(pSim->CallFunction("CardUpgrade", QVariant(strFirmware)), 0);
    QVERIFY2(said.size() >= 5, qPrintable(QString::number(said.size())));
    QCOMPARE(said.first(), qMakePair(0.0, QStringLiteral("Checking the firmware file")));
    QCOMPARE(said.last(), qMakePair(1.0, QStringLiteral("Restarting the controller")));
    double dBefore = 0.0;
    for (int i = 1; i + 1 < said.size(); ++i) {
        QCOMPARE(said[i].second, QStringLiteral("Writing the firmware"));
        QVERIFY(said[i].first >= dBefore && said[i].first <= 1.0);
        dBefore = said[i].first;
    }
    QCOMPARE(dBefore, 1.0);

    // A file that is no firmware stops at the check (once the controller is back).
    QTRY_VERIFY(pSim->IsConnected());
    said.clear();
    WriteFile(strFirmware, "not a firmware file");
    QCOMPARE(pSim->CallFunction("CardUpgrade", QVariant(strFirmware)), int(CSimController::CodeNotFirmware));
    QCOMPARE(said.size(), 1);
    QCOMPARE(said.first().second, QStringLiteral("Checking the firmware file"));
}

void TestSimController::aPipeInPlaceOfAFirmwareOrPatternFileIsRefused()
{
    auto pSim = Make();
    const QString strFirmware = m_pDir->filePath("main.upd");
    const QString strPattern = m_pDir->filePath("pattern.lcpx");
    QCOMPARE(::mkfifo(QFile::encodeName(strFirmware).constData(), 0600), 0);
    QCOMPARE(::mkfifo(QFile::encodeName(strPattern).constData(), 0600), 0);
    QElapsedTimer timer;
    timer.start();
    const int nUpgrade = pSim->CallFunction("CardUpgrade", QVariant(strFirmware));
    QVERIFY2(nUpgrade == CSimController::CodeFileMissing || nUpgrade == CSimController::CodeUnreadable,
             qPrintable(QString::number(nUpgrade)));
    CShapeFile pattern;
    QString strError;
    QVERIFY(!pattern.Read(strPattern, "LCPX", strError));
    QCOMPARE(strError, QStringLiteral("cannot read %1: a FIFO, not a regular file").arg(strPattern));
    QVERIFY(timer.elapsed() < 20000);
}

void TestSimController::upgradeChecksTheFile_data()
{
    QTest::addColumn<QString>("strFunction");
    QTest::addColumn<QString>("strName");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("nExpected");
    QByteArray damaged = Mainboard();
    damaged[damaged.size() - 3] = 'X';
    QByteArray badHeader = Mainboard();
    badHeader.replace("CRC32 ", "CRC32 z");
    QTest::newRow("mainboard missing") << "CardUpgrade" << "" << QByteArray() << int(CSimController::CodeFileMissing);
    QTest::newRow("mainboard empty") << "CardUpgrade" << "main.upd" << QByteArray() << int(CSimController::CodeFileEmpty);
    QTest::newRow("mainboard wrong type") << "CardUpgrade" << "main.hmi" << Mainboard() << int(CSimController::CodeWrongFileType);
    QTest::newRow("mainboard one byte") << "CardUpgrade" << "main.upd" << QByteArray("x") << int(CSimController::CodeNotFirmware);
    QTest::newRow("mainboard wrong magic") << "CardUpgrade" << "main.upd" << QByteArray(Mainboard()).replace("QVFW", "QVFX")
                                           << int(CSimController::CodeNotFirmware);
    QTest::newRow("mainboard file of the panel") << "CardUpgrade" << "main.upd" << Panel() << int(CSimController::CodeWrongBoard);
    QTest::newRow("mainboard damaged image") << "CardUpgrade" << "main.upd" << damaged << int(CSimController::CodeBadChecksum);
    QTest::newRow("mainboard damaged header") << "CardUpgrade" << "main.upd" << badHeader << int(CSimController::CodeBadChecksum);
    QTest::newRow("mainboard unreadable") << "CardUpgrade" << "locked.upd" << QByteArray() << int(CSimController::CodeUnreadable);
    QTest::newRow("mainboard") << "CardUpgrade" << "main.UPD" << Mainboard() << 0;
    QTest::newRow("panel wrong type") << "PanelUpgrade" << "panel.upd" << Panel() << int(CSimController::CodeWrongFileType);
    QTest::newRow("panel file of the mainboard") << "PanelUpgrade" << "panel.hmt" << Mainboard() << int(CSimController::CodeWrongBoard);
    QTest::newRow("panel hmt") << "PanelUpgrade" << "panel.hmt" << Panel() << 0;
    QTest::newRow("panel hmi") << "PanelUpgrade" << "panel.hmi" << Panel() << 0;
    QTest::newRow("panel is a directory") << "PanelUpgrade" << "dir.hmi" << QByteArray() << int(CSimController::CodeFileMissing);
}

void TestSimController::upgradeChecksTheFile()
{
    QFETCH(QString, strFunction);
    QFETCH(QString, strName);
    QFETCH(QByteArray, content);
    QFETCH(int, nExpected);
    auto pSim = Make();
    const CardInfo before = pSim->Info();
    QString strPath = m_pDir->path() + "/" + strName;
    if (strName.startsWith("dir"))
        QDir().mkpath(strPath);
    else if (strName.startsWith("locked"))
        // A file even root cannot read: this process' memory at address 0.
        QVERIFY(QFile::link("/proc/self/mem", strPath));
    else if (!strName.isEmpty())
        WriteFile(strPath, content);
    else
        strPath = m_pDir->path() + "/absent.upd";
    QCOMPARE(pSim->CallFunction(strFunction.toLatin1().constData(), QVariant(strPath)), nExpected);
    // A refused file changes no version.
    if (nExpected != 0) {
        QCOMPARE(QByteArray(pSim->Info().firmwareVersion), QByteArray(before.firmwareVersion));
        QCOMPARE(QByteArray(pSim->Info().panelVersion), QByteArray(before.panelVersion));
    }
}

void TestSimController::upgradeChangesTheVersion()
{
    auto pSim = Make();
    pSim->SetRestartDuration(0);
    const QString strPanel = m_pDir->path() + "/panel.hmt";
    WriteFile(strPanel, Panel("QV-PN 2.0.0-beta"));
    QCOMPARE(pSim->CallFunction("PanelUpgrade", QVariant(strPanel)), 0);
    QCOMPARE(QByteArray(pSim->Info().panelVersion), QByteArray("QV-PN 2.0.0-beta"));
    QCOMPARE(QByteArray(pSim->Info().firmwareVersion), QByteArray("QV-MB 3.2.0"));
    QVERIFY(pSim->IsConnected());   // a panel upgrade restarts nothing

    // The shipped files are valid.
    QCOMPARE(pSim->CallFunction("CardUpgrade", QVariant(QCoreApplication::applicationDirPath()
                                                        + "/../Resources/Data/Firmware/QV-MB-3.3.0.upd")),
             0);
    QCOMPARE(QByteArray(pSim->Info().firmwareVersion), QByteArray("QV-MB 3.3.0"));
    QTRY_VERIFY(pSim->IsConnected());
    QCOMPARE(pSim->CallFunction("PanelUpgrade", QVariant(QCoreApplication::applicationDirPath()
                                                         + "/../Resources/Data/Firmware/QV-PN-1.5.0.hmt")),
             0);
    QCOMPARE(QByteArray(pSim->Info().panelVersion), QByteArray("QV-PN 1.5.0"));
}

void TestSimController::aMainboardUpgradeRestartsTheController()
{
    auto pSim = Make();
    pSim->SetRestartDuration(200);
    const QString strBoard = m_pDir->path() + "/main.upd";
    WriteFile(strBoard, Mainboard("QV-MB 4.0.0"));
    QSignalSpy changed(pSim.get(), &CSimController::StateChanged);
    QCOMPARE(pSim->CallFunction("CardUpgrade", QVariant(strBoard)), 0);
    // Off the line at once, with the new version kept in its flash...
    QVERIFY(!pSim->IsConnected());
    QVERIFY(!pSim->GetCurrentCard());
    FactoryParams params;
    QCOMPARE(pSim->ReadFactoryParams(&params), int(CSimController::CodeNotConnected));
    // ...and back on its own.
    QTRY_VERIFY(pSim->IsConnected());
    QVERIFY(pSim->GetCurrentCard());
    QCOMPARE(QByteArray(pSim->Info().firmwareVersion), QByteArray("QV-MB 4.0.0"));
    QVERIFY(changed.count() >= 2);
    auto pRestarted = std::make_unique<CSimController>(m_strFlash);
    QCOMPARE(QByteArray(pRestarted->Info().firmwareVersion), QByteArray("QV-MB 4.0.0"));
}

void TestSimController::busyWhileAnUpgradeRuns()
{
    auto pSim = Make();
    pSim->SetTaskDuration(300);
    pSim->SetRestartDuration(0);
    // A 64 KiB image flashes for two task durations.
    const QString strBoard = m_pDir->path() + "/main.upd";
    WriteFile(strBoard, CFirmwareFile::Make(CFirmwareFile::kMainboard, "QV-MB 3.4.0", QByteArray(65536, 'i')));
    std::atomic<int> nResult{-1};
    QElapsedTimer timer;
    timer.start();
    TestThread worker([&] { nResult = pSim->CallFunction("CardUpgrade", QVariant(strBoard)); });
    worker.Start();
    QTRY_COMPARE(pSim->IsBusy(), 1);
    FactoryParams params;
    QCOMPARE(pSim->WriteFactoryParams(&params), 1005);
    QVERIFY(worker.Wait(10000));
    QVERIFY2(timer.elapsed() >= 580, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(nResult.load(), 0);
    QCOMPARE(pSim->IsBusy(), 0);
}

void TestSimController::faultsHappenOnceOnTheirOperation()
{
    auto pSim = Make();
    pSim->SetNoAnswerDuration(50);
    FactoryParams held;
    held.motor[0].speedMax = 900.0;
    QCOMPARE(pSim->WriteFactoryParams(&held), 0);
    FactoryParams sent = held;
    sent.motor[0].speedMax = 700.0;

    // A read does not set off a write's fault; the write does, once, and keeps nothing.
    pSim->ArmFault(CSimController::FaultDropOnWrite);
    FactoryParams back;
    QCOMPARE(pSim->ReadFactoryParams(&back), 0);
    QCOMPARE(pSim->WriteFactoryParams(&sent), int(CSimController::CodeLinkLost));
    QVERIFY(!pSim->IsConnected());
    QCOMPARE(pSim->ArmedFault(), CSimController::FaultNone);
    pSim->SetConnected(true);
    QCOMPARE(pSim->StoredParams().motor[0].speedMax, 900.0);

    pSim->ArmFault(CSimController::FaultFlashError);
    QCOMPARE(pSim->WriteFactoryParams(&sent), int(CSimController::CodeFlashError));
    QVERIFY(pSim->IsConnected());
    QCOMPARE(pSim->StoredParams().motor[0].speedMax, 900.0);
    QCOMPARE(pSim->WriteFactoryParams(&sent), 0);   // once only
    QCOMPARE(pSim->StoredParams().motor[0].speedMax, 700.0);

    pSim->ArmFault(CSimController::FaultDropOnRead);
    QCOMPARE(pSim->ReadFactoryParams(&back), int(CSimController::CodeLinkLost));
    QVERIFY(!pSim->IsConnected());
    pSim->SetConnected(true);

    pSim->ArmFault(CSimController::FaultCorruptRead);
    QCOMPARE(pSim->ReadFactoryParams(&back), 0);
    QVERIFY(back.motor[0].speedMax != 700.0);
    QCOMPARE(pSim->ReadFactoryParams(&back), 0);
    QCOMPARE(back.motor[0].speedMax, 700.0);

    // A noisy line: as many garbled reads as armed, then clean ones.
    pSim->ArmFault(CSimController::FaultCorruptRead, 2);
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(pSim->ReadFactoryParams(&back), 0);
        QVERIFY(back.motor[0].speedMax != 700.0);
    }
    QCOMPARE(pSim->ArmedFault(), CSimController::FaultNone);
    QCOMPARE(pSim->ReadFactoryParams(&back), 0);
    QCOMPARE(back.motor[0].speedMax, 700.0);
    pSim->ArmFault(CSimController::FaultCorruptRead, 0);   // no times: nothing armed
    QCOMPARE(pSim->ArmedFault(), CSimController::FaultNone);

    pSim->ArmFault(CSimController::FaultNoAnswer);
    QVariant info;
    QCOMPARE(pSim->QueryFunction("CurrentCardType", info), int(CSimController::CodeNoAnswer));
    QCOMPARE(pSim->QueryFunction("CurrentCardType", info), 0);

    const QString strJob = m_pDir->path() + "/job.tl";
    CPatternConverter::ConvertPattern(m_strPattern.toUtf8().constData(), strJob.toUtf8().constData(), 10.0);
    pSim->ArmFault(CSimController::FaultDropOnCut);
    QSignalSpy cut(pSim.get(), &CSimController::JobCut);
    QCOMPARE(pSim->CallFunction("BacklashAdjust", QVariant(strJob)), int(CSimController::CodeLinkLost));
    QCOMPARE(cut.count(), 0);
    QCOMPARE(pSim->Info().totalXMove, 0);
    QCOMPARE(pSim->IsBusy(), 0);
    pSim->SetConnected(true);
    QCOMPARE(pSim->CallFunction("BacklashAdjust", QVariant(strJob)), 0);
}

void TestSimController::aDroppedUpgradeIsRepairedByASecondOne()
{
    auto pSim = Make();
    pSim->SetRestartDuration(0);
    const QString strBoard = m_pDir->path() + "/main.upd";
    WriteFile(strBoard, Mainboard("QV-MB 5.0.0"));
    pSim->ArmFault(CSimController::FaultDropOnUpgrade);
    QCOMPARE(pSim->CallFunction("CardUpgrade", QVariant(strBoard)), int(CSimController::CodeLinkLost));
    QVERIFY(!pSim->IsConnected());
    pSim->SetConnected(true);
    // Half an image: the board says so and does nothing but take a new one, even after a restart.
    QCOMPARE(QByteArray(pSim->Info().firmwareVersion), QByteArray("QV-MB 3.2.0 (incomplete)"));
    FactoryParams params;
    QCOMPARE(pSim->ReadFactoryParams(&params), int(CSimController::CodeFirmwareIncomplete));
    QCOMPARE(pSim->WriteFactoryParams(&params), int(CSimController::CodeFirmwareIncomplete));
    QCOMPARE(pSim->CallFunction("ClearCardInfo", QVariant()), int(CSimController::CodeFirmwareIncomplete));
    pSim.reset();
    pSim = Make();
    pSim->SetRestartDuration(0);
    QCOMPARE(pSim->ReadFactoryParams(&params), int(CSimController::CodeFirmwareIncomplete));
    QCOMPARE(pSim->CallFunction("CardUpgrade", QVariant(strBoard)), 0);
    QTRY_VERIFY(pSim->IsConnected());
    QCOMPARE(QByteArray(pSim->Info().firmwareVersion), QByteArray("QV-MB 5.0.0"));
    QCOMPARE(pSim->ReadFactoryParams(&params), 0);
}

void TestSimController::aFaultArmedInTheFlashFileHappens()
{
    QDir().mkpath(QFileInfo(m_strFlash).absolutePath());
    WriteFile(m_strFlash, "[CONTROLLER]\nFAULT=flash-error\n");
    auto pSim = Make();
    QCOMPARE(pSim->ArmedFault(), CSimController::FaultFlashError);
    FactoryParams params;
    QCOMPARE(pSim->WriteFactoryParams(&params), int(CSimController::CodeFlashError));
    QCOMPARE(pSim->ArmedFault(), CSimController::FaultNone);
    // A count, kept across a restart of the controller; junk counts once.
    pSim.reset();
    WriteFile(m_strFlash, "[CONTROLLER]\nFAULT=flash-error\nFAULT_TIMES=3\n");
    pSim = Make();
    QCOMPARE(pSim->WriteFactoryParams(&params), int(CSimController::CodeFlashError));
    pSim.reset();
    pSim = Make();
    QCOMPARE(pSim->WriteFactoryParams(&params), int(CSimController::CodeFlashError));
    QCOMPARE(pSim->WriteFactoryParams(&params), int(CSimController::CodeFlashError));
    QCOMPARE(pSim->WriteFactoryParams(&params), 0);
    pSim.reset();
    WriteFile(m_strFlash, "[CONTROLLER]\nFAULT=flash-error\nFAULT_TIMES=junk\n");
    pSim = Make();
    QCOMPARE(pSim->WriteFactoryParams(&params), int(CSimController::CodeFlashError));
    QCOMPARE(pSim->WriteFactoryParams(&params), 0);
    for (CSimController::Fault fault :
         {CSimController::FaultDropOnWrite, CSimController::FaultDropOnRead, CSimController::FaultDropOnUpgrade,
          CSimController::FaultDropOnCut, CSimController::FaultFlashError, CSimController::FaultCorruptRead,
          CSimController::FaultNoAnswer})
        QCOMPARE(CSimController::FaultFromName(CSimController::FaultName(fault)), fault);
    QCOMPARE(CSimController::FaultFromName("no such fault"), CSimController::FaultNone);
}

void TestSimController::calibrationConvergesInOneCorrection()
{
    auto pSim = Make();   // true steps 7.95 (X) and 7.80 (Y)
    FactoryParams params;
    pSim->WriteFactoryParams(&params);
    const QString strJob = m_pDir->path() + "/adjustpulse.tl";
    QCOMPARE(CPatternConverter::ConvertPattern(m_strPattern.toUtf8().constData(), strJob.toUtf8().constData(), 10.0), 0);
    QCOMPARE(pSim->CallFunction("BacklashAdjust", QVariant(strJob)), 0);
    const QSizeF first = pSim->LastCut();
    QVERIFY(std::fabs(first.width() - 150.0) > 0.5);
    QVERIFY(std::fabs(first.height() - 150.0) > 0.5);

    // What the wizard does with the sizes a person measures (to 0.01 mm):
    // each step times measured / 150.
    const double dMeasuredW = std::round(first.width() * 100.0) / 100.0;
    const double dMeasuredH = std::round(first.height() * 100.0) / 100.0;
    params.motor[0].pulsePerMm *= dMeasuredW / 150.0;
    params.motor[1].pulsePerMm *= dMeasuredH / 150.0;
    QCOMPARE(pSim->WriteFactoryParams(&params), 0);
    QCOMPARE(pSim->CallFunction("BacklashAdjust", QVariant(strJob)), 0);
    const QSizeF second = pSim->LastCut();
    QCOMPARE(QString::number(second.width(), 'f', 2), QStringLiteral("150.00"));
    QCOMPARE(QString::number(second.height(), 'f', 2), QStringLiteral("150.00"));
}

void TestSimController::patternConverterMakesAJob()
{
    const QString strJob = m_pDir->path() + "/job.tl";
    QCOMPARE(CPatternConverter::ConvertPattern(m_strPattern.toUtf8().constData(), strJob.toUtf8().constData(), 33.0), 0);
    CShapeFile job;
    QString strError;
    QVERIFY2(job.Read(strJob, "TL", strError), qPrintable(strError));
    QCOMPARE(job.fields.value("POWER"), QByteArray("33"));
    QCOMPARE(job.Bounds(), QRectF(0, 0, 150, 150));

    const QString strMissing = m_pDir->path() + "/missing.lcpx";
    const QString strNoJob = m_pDir->path() + "/nojob.tl";
    QCOMPARE(CPatternConverter::ConvertPattern(strMissing.toUtf8().constData(), strNoJob.toUtf8().constData(), 10.0), 1);
    QVERIFY(!QFileInfo::exists(strNoJob));
    QCOMPARE(CPatternConverter::ConvertPattern(nullptr, nullptr, 10.0), 1);
    QCOMPARE(CPatternConverter::ConvertPattern(m_strPattern.toUtf8().constData(),
                                               (m_pDir->path() + "/no/dir/job.tl").toUtf8().constData(), 10.0), 2);
}

FACTORYMGR_TEST_MAIN(TestSimController)
#include "tst_simcontroller.moc"
