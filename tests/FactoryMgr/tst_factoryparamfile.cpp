#include "TestMain.h"

#include "CLogWriter.h"
#include "CParamBackups.h"
#include "FactoryParamFile.h"
#include "FactoryParams.h"
#include "ModalAnswerer.h"
#include "ParamFileTestData.h"

#include <QElapsedTimer>
#include <QLockFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QSettings>

#include <cmath>
#include <csignal>
#include <cstring>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace ParamFileTestData;

namespace {
void WriteText(const QString& strPath, const QByteArray& content)
{
    QFile file(strPath);
    QVERIFY2(file.open(QIODevice::WriteOnly | QIODevice::Truncate), qPrintable(strPath));
    QCOMPARE(file.write(content), qint64(content.size()));
}

QByteArray ReadBytes(const QString& strPath)
{
    QFile file(strPath);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool SameBytes(const FactoryParams& a, const FactoryParams& b)
{
    return std::memcmp(&a, &b, sizeof(FactoryParams)) == 0;
}

// Root reads and writes whatever the permission bits say; to see what a user
// sees, the calls in between run with the effective user and group "nobody"
// and "nogroup".
class AsUnprivileged
{
public:
    AsUnprivileged()
        : m_bSwitched(geteuid() == 0 && setegid(65534) == 0 && seteuid(65534) == 0)
    {
    }
    ~AsUnprivileged()
    {
        if (m_bSwitched && (seteuid(0) != 0 || setegid(0) != 0))
            qFatal("cannot return to the original user");
    }

private:
    bool m_bSwitched;
};

// Loading strPath fails, leaves the record byte for byte as it was, and shows
// the "File ID is incorrect!" box nBoxes times.
void ExpectLoadRefused(const QString& strPath, int nBoxes)
{
    FactoryParams record = ParamFileTestData::DistinctRecord();
    const FactoryParams before = record;
    ModalAnswerer answerer;
    answerer.AnswerWith("OK");
    QVERIFY(!LoadFactoryParams(record, strPath));
    QVERIFY(SameBytes(record, before));
    QCOMPARE(answerer.Count(), nBoxes);
    for (const ModalAnswerer::Seen& box : answerer.Boxes()) {
        QCOMPARE(box.strClass, QStringLiteral("QMessageBox"));
        QCOMPARE(box.strTitle, QStringLiteral("Tips"));
        QCOMPARE(box.strText, QStringLiteral("File ID is incorrect!"));
        QCOMPARE(box.buttons, QStringList{"OK"});
    }
}

const QByteArray kMarkerOnly = "[FACTORY_PARAM]\nFILE_FLAG=__FACTORY_PARAM__\n";
}

class TestFactoryParamFile : public QObject
{
    Q_OBJECT
private slots:
    void init();

    void freshRecordSavesItsInMemoryDefaults();
    void missingKeysTakeTheirMissingValues();
    void roundTripOfEveryKey();
    void savedFileHoldsExactlyTheKeys();
    void enabledAndReservedKeepTheLoadingRecordsValues();
    void valuesAreKeptUnclamped();
    void exportedFileImportsAsTheSameRecord();
    void emptyPathMeansTheDefaultLocation();
    void handWrittenFileLoadsAsTheSettingsLayerReadsIt();

    void wrongMarkerShowsTheBoxAndLeavesTheRecord_data();
    void wrongMarkerShowsTheBoxAndLeavesTheRecord();
    void missingFileIsSilent();
    void directoryOrPipeInPlaceOfTheFile();
    void unreadableFileFailsTheMarkerCheck();
    void emptyFile();
    void tenMegabytesOfRandomBytes();
    void aHugeFileWithTheMarkerIsRefusedUnread();
    void theSizeLimitIsOneMebibyte_data();
    void theSizeLimitIsOneMebibyte();

    void aSaveOfTheDefaultFileKeepsWhatItReplaces();
    void aBackupThatCannotBeMadeDoesNotStopTheSave();
    void onlyTheNewestFiftyBackupsAreKept();

    void notANumberAndInfinityRoundTrip();
    void saveToMissingDirectoryFails();
    void saveDropsStaleKeys();
    void saveIntoReadOnlyDirectoryKeepsThePreviousFile();
    void saveThatFailsMidWayKeepsThePreviousFile();
    void saveOverADirectoryFailsAndKeepsIt();
    void leftoversOfInterruptedSavesAreRemoved();
    void aNameNearTheLimitSavesAsADirectWriteWould();

private:
    QScopedPointer<QTemporaryDir> m_pDir;
    QString m_strDir;
};

void TestFactoryParamFile::init()
{
    m_pDir.reset(new QTemporaryDir);
    QVERIFY(m_pDir->isValid());
    m_strDir = m_pDir->path();
}

void TestFactoryParamFile::freshRecordSavesItsInMemoryDefaults()
{
    const QString strPath = m_strDir + "/fresh.ini";
    QVERIFY(SaveFactoryParams(FactoryParams(), strPath));
    const QString text = QString::fromUtf8(ReadBytes(strPath));
    QVERIFY2(text.contains("\nMOTOR_PULSE_PER_MM_1=7.88627"), qPrintable(text));
    QVERIFY(text.contains("\nMACHINE_OUTAGE_DELAY=1000"));
    QVERIFY(text.contains("\nMOTOR_SIZE_1=900\n") || text.contains("\nMOTOR_SIZE_1=900\r\n"));
    QVERIFY(text.contains("FILE_FLAG=__FACTORY_PARAM__"));
}

void TestFactoryParamFile::missingKeysTakeTheirMissingValues()
{
    const QString strPath = m_strDir + "/marker-only.ini";
    WriteText(strPath, kMarkerOnly);
    FactoryParams record;   // in-memory defaults, which the file must replace
    QVERIFY(LoadFactoryParams(record, strPath));

    QCOMPARE(record.laser.laserCount, 1);
    QCOMPARE(record.laser.laserMachineType, 0);
    for (const LaserParams& laser : record.laser.lasers) {
        QCOMPARE(laser.type, 0);
        QCOMPARE(laser.power, 80);
        QCOMPARE(laser.powerMin, 0.0);
        QCOMPARE(laser.powerMax, 100.0);
        QCOMPARE(laser.powerReduction, 0.0);
        QCOMPARE(laser.frequency, 20000.0);
        QCOMPARE(laser.burningFrequency, 5000.0);
        QCOMPARE(laser.burningWidth, 0.5);
        QCOMPARE(laser.switchSignal, 0);
        QCOMPARE(laser.waterProtect, false);
    }
    for (const MotorParams& motor : record.motor) {
        QCOMPARE(motor.directionPolar, 0);
        QCOMPARE(motor.limitPolar, 0);
        QCOMPARE(motor.controlType, 0);
        QCOMPARE(motor.pwmEdge, 0);
        QCOMPARE(motor.keyDirection, 0);
        QCOMPARE(motor.hardLimitProtect, false);
        QCOMPARE(motor.resetEnable, false);
        QCOMPARE(motor.startupReset, false);
        QCOMPARE(motor.pulsePerMm, 1.0);
        QCOMPARE(motor.size, 900.0);
        QCOMPARE(motor.zeroOffset, 0.0);
        QCOMPARE(motor.speedJump, 5.0);
        QCOMPARE(motor.speedMax, 1000.0);
        QCOMPARE(motor.accMax, 8000.0);
        QCOMPARE(motor.accUrgentStop, 5000.0);
        QCOMPARE(motor.accKey, 3000.0);
        QCOMPARE(motor.speedKeyJump, 5.0);
    }
    QCOMPARE(record.machine.machineType, 0);
    QCOMPARE(record.machine.motiveMode, 0);
    QCOMPARE(record.machine.feedMode, 0);
    QCOMPARE(record.machine.machineZero, 0);
    QCOMPARE(record.machine.openProject, false);
    QCOMPARE(record.machine.blow, false);
    QCOMPARE(record.machine.outageDelay, 0);
    QCOMPARE(record.machine.laserSpace, 0.0);
    QCOMPARE(record.speed.cutSpeedSpace, 50.0);
    QCOMPARE(record.speed.cutSpeedCorner, 50.0);
    QCOMPARE(record.speed.cutAccSpace, 800.0);
    QCOMPARE(record.speed.cutAccCorner, 500.0);
    QCOMPARE(record.speed.cutAccWork, 800.0);
    QCOMPARE(record.speed.sweepSpeedXStart, 5.0);
    QCOMPARE(record.speed.sweepSpeedYStart, 5.0);
    QCOMPARE(record.speed.sweepSpeedNewline, 5.0);
    QCOMPARE(record.speed.sweepAccX, 800.0);
    QCOMPARE(record.speed.sweepAccY, 800.0);
    QCOMPARE(record.speed.panelSpeedReset, 50.0);
}

void TestFactoryParamFile::roundTripOfEveryKey()
{
    const QString strPath = m_strDir + "/distinct.ini";
    const FactoryParams distinct = DistinctRecord();
    QVERIFY(SaveFactoryParams(distinct, strPath));

    FactoryParams loaded;
    QVERIFY(LoadFactoryParams(loaded, strPath));
    const QString strDiff = FirstFileFieldDifference(distinct, loaded);
    QVERIFY2(strDiff.isEmpty(), qPrintable(strDiff));

    // Also from a record that starts on the other side of every boolean.
    FactoryParams inverted = distinct;
    for (MotorParams& motor : inverted.motor) {
        motor.hardLimitProtect = !motor.hardLimitProtect;
        motor.resetEnable = !motor.resetEnable;
        motor.startupReset = !motor.startupReset;
    }
    QVERIFY(LoadFactoryParams(inverted, strPath));
    QVERIFY(FirstFileFieldDifference(distinct, inverted).isEmpty());
}

void TestFactoryParamFile::savedFileHoldsExactlyTheKeys()
{
    const QString strPath = m_strDir + "/keys.ini";
    const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
    QVERIFY(SaveFactoryParams(DistinctRecord(), strPath));
    const QDateTime after = QDateTime::currentDateTime().addSecs(1);

    QSettings settings(strPath, QSettings::IniFormat);
    QStringList actual = settings.allKeys();
    QStringList expected = ExpectedKeys();
    actual.sort();
    expected.sort();
    QCOMPARE(expected.size(), 111);
    QCOMPARE(actual, expected);

    const QDateTime written
        = QDateTime::fromString(settings.value("FACTORY_PARAM/CREATE_TIME").toString(), "yyyyMMddHHmmss");
    QVERIFY(written.isValid());
    QVERIFY(written >= before.addSecs(-1) && written <= after);
    QCOMPARE(settings.value("FACTORY_PARAM_MOTOR/MOTOR_HARD_LIMIT_PROTECT_2").toString(), QStringLiteral("0"));
    QCOMPARE(settings.value("FACTORY_PARAM_MOTOR/MOTOR_HARD_LIMIT_PROTECT_1").toString(), QStringLiteral("1"));
    // Nothing but the file itself is left in the directory.
    QCOMPARE(QDir(m_strDir).entryList(QDir::Files | QDir::Hidden), QStringList{"keys.ini"});
}

void TestFactoryParamFile::enabledAndReservedKeepTheLoadingRecordsValues()
{
    const QString strPath = m_strDir + "/flags.ini";
    FactoryParams saved = DistinctRecord();
    saved.laser.lasers[0].enabled = true;
    saved.laser.lasers[1].enabled = true;
    saved.laser.reserved = 0;
    QVERIFY(SaveFactoryParams(saved, strPath));

    FactoryParams loading;
    loading.laser.lasers[0].enabled = false;
    loading.laser.lasers[1].enabled = true;
    loading.laser.reserved = 9;
    QVERIFY(LoadFactoryParams(loading, strPath));
    QCOMPARE(loading.laser.lasers[0].enabled, false);
    QCOMPARE(loading.laser.lasers[1].enabled, true);
    QCOMPARE(loading.laser.reserved, 9);
    QCOMPARE(loading.motor[1].speedMax, saved.motor[1].speedMax);
}

void TestFactoryParamFile::valuesAreKeptUnclamped()
{
    const QString strPath = m_strDir + "/counts.ini";
    WriteText(strPath, kMarkerOnly + "[FACTORY_PARAM_LASER]\nLASER_COUNT=3\nLASER1_TYPE=17\nLASER_POWER_MAX_1=250\n");
    FactoryParams record;
    QVERIFY(LoadFactoryParams(record, strPath));
    QCOMPARE(record.laser.laserCount, 3);
    QCOMPARE(record.laser.lasers[0].type, 17);
    QCOMPARE(record.laser.lasers[0].powerMax, 250.0);

    FactoryParams five;
    five.laser.laserCount = 5;
    QVERIFY(SaveFactoryParams(five, strPath));
    FactoryParams reloaded;
    QVERIFY(LoadFactoryParams(reloaded, strPath));
    QCOMPARE(reloaded.laser.laserCount, 5);
}

void TestFactoryParamFile::exportedFileImportsAsTheSameRecord()
{
    QDir().mkpath(m_strDir + "/chosen by user");
    const QString strPath = m_strDir + "/chosen by user/machine 12 (copy).ini";
    const FactoryParams exported = DistinctRecord();
    QVERIFY(SaveFactoryParams(exported, strPath));
    FactoryParams imported;
    QVERIFY(LoadFactoryParams(imported, strPath));
    QVERIFY(FirstFileFieldDifference(exported, imported).isEmpty());
    QCOMPARE(imported.laser.reserved, exported.laser.reserved);
}

void TestFactoryParamFile::emptyPathMeansTheDefaultLocation()
{
    const QString strDefault = DefaultFactoryParamPath();
    QCOMPARE(strDefault, QDir::cleanPath(qEnvironmentVariable("XDG_CONFIG_HOME") + "/Quorvane/Resources/Data/FactoryParam.ini"));
    QFile::remove(strDefault);
    FactoryParams record = DistinctRecord();
    QVERIFY(SaveFactoryParams(record, QString()));
    QVERIFY(QFileInfo(strDefault).isFile());
    FactoryParams loaded;
    QVERIFY(LoadFactoryParams(loaded, QString()));
    QVERIFY(FirstFileFieldDifference(record, loaded).isEmpty());
}

void TestFactoryParamFile::handWrittenFileLoadsAsTheSettingsLayerReadsIt()
{
    // As a person or another tool writes it: comments, blank lines, odd
    // spacing, CRLF, keys out of order, unknown keys and sections, and values
    // that convert only partly or not at all.
    const QByteArray text = "; factory settings of machine 12, edited by hand\r\n"
                            "\r\n"
                            "[UNKNOWN_SECTION]\r\n"
                            "SOMETHING = 5\r\n"
                            "[FACTORY_PARAM_MOTOR]\r\n"
                            "MOTOR_SPEED_MAX_2   =   1e3\r\n"
                            "MOTOR_SIZE_1= 12 \r\n"
                            "MOTOR_DIRECTION_POLAR_1=1e3\r\n"
                            "MOTOR_PULSE_PER_MM_3=abc\r\n"
                            "MOTOR_ZERO_OFFSET_4=\r\n"
                            "MOTOR_ACC_MAX_1=\" 12 \"\r\n"
                            "MOTOR_KEY_DIRECTION_2= 1 \r\n"
                            "MOTOR_RESET_ENABLE_3=7\r\n"
                            "NOT_A_KEY_OF_OURS=1\r\n"
                            "\r\n"
                            "[FACTORY_PARAM_LASER]\r\n"
                            "LASER_POWER_2 = 100\r\n"
                            "LASER_COUNT=2\r\n"
                            "LASER_FREQUENCY_1=-3.5\r\n"
                            "[FACTORY_PARAM]\r\n"
                            "FILE_FLAG = __FACTORY_PARAM__\r\n"
                            "CREATE_TIME=whenever\r\n";
    const QString strPath = m_strDir + "/by-hand.ini";
    WriteText(strPath, text);
    FactoryParams record;
    QVERIFY(LoadFactoryParams(record, strPath));

    QCOMPARE(record.motor[1].speedMax, 1000.0);       // "1e3" as a double
    QCOMPARE(record.motor[0].size, 12.0);             // " 12 "
    QCOMPARE(record.motor[0].directionPolar, 0);      // "1e3" is no integer: zero
    QCOMPARE(record.motor[2].pulsePerMm, 0.0);        // "abc": zero
    QCOMPARE(record.motor[3].zeroOffset, 0.0);        // present but empty: zero, not the Missing value
    QCOMPARE(record.motor[0].accMax, 12.0);           // quoted " 12 "
    QCOMPARE(record.motor[1].keyDirection, 1);
    QCOMPARE(record.motor[2].resetEnable, true);      // any non-zero integer
    QCOMPARE(record.laser.lasers[1].power, 100);
    QCOMPARE(record.laser.laserCount, 2);
    QCOMPARE(record.laser.lasers[0].frequency, -3.5);
    // What the file lacks takes the Missing value.
    QCOMPARE(record.motor[1].size, 900.0);
    QCOMPARE(record.motor[0].pulsePerMm, 1.0);
    QCOMPARE(record.machine.outageDelay, 0);
    QCOMPARE(record.speed.cutAccCorner, 500.0);
}

void TestFactoryParamFile::wrongMarkerShowsTheBoxAndLeavesTheRecord_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::newRow("lower case") << QByteArray("[FACTORY_PARAM]\nFILE_FLAG=__factory_param__\n");
    QTest::newRow("one letter case") << QByteArray("[FACTORY_PARAM]\nFILE_FLAG=__FACTORY_PARAm__\n");
    QTest::newRow("one character short") << QByteArray("[FACTORY_PARAM]\nFILE_FLAG=__FACTORY_PARAM_\n");
    QTest::newRow("one character other") << QByteArray("[FACTORY_PARAM]\nFILE_FLAG=__FACTORY-PARAM__\n");
    QTest::newRow("trailing blank kept by quotes") << QByteArray("[FACTORY_PARAM]\nFILE_FLAG=\"__FACTORY_PARAM__ \"\n");
    QTest::newRow("empty") << QByteArray("[FACTORY_PARAM]\nFILE_FLAG=\n");
    QTest::newRow("missing key") << QByteArray("[FACTORY_PARAM]\nCREATE_TIME=20260101120000\n");
    QTest::newRow("other section") << QByteArray("[FACTORY]\nFILE_FLAG=__FACTORY_PARAM__\n");
}

void TestFactoryParamFile::wrongMarkerShowsTheBoxAndLeavesTheRecord()
{
    QFETCH(QByteArray, header);
    const QString strPath = m_strDir + "/marker.ini";
    WriteText(strPath, header + "[FACTORY_PARAM_MOTOR]\nMOTOR_SPEED_MAX_1=5\n");
    ExpectLoadRefused(strPath, 1);
}

void TestFactoryParamFile::missingFileIsSilent()
{
    ExpectLoadRefused(m_strDir + "/no-such-file.ini", 0);
}

void TestFactoryParamFile::directoryOrPipeInPlaceOfTheFile()
{
    const QString strDirectory = m_strDir + "/FactoryParam.ini";
    QVERIFY(QDir().mkpath(strDirectory));
    ExpectLoadRefused(strDirectory, 0);

    const QString strPipe = m_strDir + "/pipe.ini";
    QCOMPARE(mkfifo(QFile::encodeName(strPipe).constData(), 0600), 0);
    ExpectLoadRefused(strPipe, 0);   // must not block on the pipe
}

void TestFactoryParamFile::unreadableFileFailsTheMarkerCheck()
{
    const QString strPath = m_strDir + "/locked.ini";
    QVERIFY(SaveFactoryParams(FactoryParams(), strPath));
    QVERIFY(QFile::setPermissions(m_strDir, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner
                                                | QFileDevice::ReadGroup | QFileDevice::ExeGroup
                                                | QFileDevice::ReadOther | QFileDevice::ExeOther));
    QVERIFY(QFile::setPermissions(strPath, QFileDevice::Permissions()));

    AsUnprivileged unprivileged;
    ExpectLoadRefused(strPath, 1);
}

void TestFactoryParamFile::emptyFile()
{
    const QString strPath = m_strDir + "/empty.ini";
    WriteText(strPath, QByteArray());
    ExpectLoadRefused(strPath, 1);
}

void TestFactoryParamFile::tenMegabytesOfRandomBytes()
{
    QByteArray noise(10 * 1024 * 1024, Qt::Uninitialized);
    QRandomGenerator generator(20261122);
    generator.fillRange(reinterpret_cast<quint32*>(noise.data()), noise.size() / 4);
    const QString strPath = m_strDir + "/noise.ini";
    WriteText(strPath, noise);
    ExpectLoadRefused(strPath, 1);
}

void TestFactoryParamFile::aHugeFileWithTheMarkerIsRefusedUnread()
{
    // A valid marker and then 20 MB of keys: the settings layer would parse
    // the whole file again for each of the hundred-odd values (minutes).
    const QString strPath = m_strDir + "/huge.ini";
    {
        QFile file(strPath);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(kMarkerOnly + "[FACTORY_PARAM_MOTOR]\nMOTOR_SPEED_MAX_1=5\n[FILLER]\n");
        QByteArray lines;
        for (int i = 0; i < 10000; ++i)
            lines += QByteArray("KEY_") + QByteArray::number(i) + "=" + QByteArray(80, 'x') + "\n";
        while (file.size() < 20 * 1024 * 1024)
            file.write(lines);
    }
    const QString strLog = CLogWriter::GetInstance()->FilePath();
    QElapsedTimer timer;
    timer.start();
    ExpectLoadRefused(strPath, 1);
    // Well under a second, the box's showing and answering included: only a
    // refusal before any value is read comes in under it.
    QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(ReadBytes(strLog).contains("huge.ini is refused: it is larger than 1048576 bytes."));
}

void TestFactoryParamFile::theSizeLimitIsOneMebibyte_data()
{
    QTest::addColumn<qint64>("nSize");
    QTest::addColumn<bool>("bLoads");
    QTest::newRow("1 MiB - 1 byte") << qint64(1024 * 1024 - 1) << true;
    QTest::newRow("1 MiB") << qint64(1024 * 1024) << true;
    QTest::newRow("1 MiB + 1 byte") << qint64(1024 * 1024 + 1) << false;
}

void TestFactoryParamFile::theSizeLimitIsOneMebibyte()
{
    QFETCH(qint64, nSize);
    QFETCH(bool, bLoads);
    // A good file, padded at its end to the size: a comment line of the
    // settings layer, which no reader takes for a value.
    const QString strPath = m_strDir + "/padded.ini";
    QVERIFY(SaveFactoryParams(DistinctRecord(), strPath));
    QByteArray content = ReadBytes(strPath);
    const qint64 nPadding = nSize - content.size() - 2;   // ";" and the line's end
    QVERIFY(nPadding > 0);
    content += ';' + QByteArray(nPadding, 'x') + '\n';
    WriteText(strPath, content);
    QCOMPARE(QFileInfo(strPath).size(), nSize);

    if (!bLoads) {
        ExpectLoadRefused(strPath, 1);
        return;
    }
    ModalAnswerer answerer;   // no box may come
    FactoryParams record;
    QVERIFY(LoadFactoryParams(record, strPath));
    QCOMPARE(answerer.Count(), 0);
    const QString strDifference = FirstFileFieldDifference(record, DistinctRecord());
    QVERIFY2(strDifference.isEmpty(), qPrintable(strDifference));
}

void TestFactoryParamFile::aSaveOfTheDefaultFileKeepsWhatItReplaces()
{
    const QString strDefault = DefaultFactoryParamPath();
    QFile::remove(strDefault);
    QDir(CParamBackups::Directory(strDefault)).removeRecursively();
    // The first save has nothing to keep.
    QVERIFY(SaveFactoryParams(FactoryParams(), QString()));
    QVERIFY(CParamBackups::List(strDefault).isEmpty());
    const QByteArray first = ReadBytes(strDefault);
    QVERIFY(SaveFactoryParams(DistinctRecord(), QString()));
    const QList<CParamBackups::Entry> backups = CParamBackups::List(strDefault);
    QCOMPARE(backups.size(), 1);
    QCOMPARE(ReadBytes(backups[0].strPath), first);
    QCOMPARE(backups[0].reason, CParamBackups::ReasonSave);
    QVERIFY(qAbs(backups[0].when.secsTo(QDateTime::currentDateTime())) < 60);
    // A file saved elsewhere (an export) keeps no backup.
    QVERIFY(SaveFactoryParams(FactoryParams(), m_strDir + "/export.ini"));
    QVERIFY(SaveFactoryParams(DistinctRecord(), m_strDir + "/export.ini"));
    QVERIFY(!QFileInfo::exists(m_strDir + "/Backups"));
    QCOMPARE(CParamBackups::List(strDefault).size(), 1);
}

void TestFactoryParamFile::aBackupThatCannotBeMadeDoesNotStopTheSave()
{
    const QString strDefault = DefaultFactoryParamPath();
    QVERIFY(SaveFactoryParams(FactoryParams(), QString()));
    // A file where the backups' folder should be.
    const QString strBackups = CParamBackups::Directory(strDefault);
    QDir(strBackups).removeRecursively();
    WriteText(strBackups, "not a folder");
    QVERIFY(SaveFactoryParams(DistinctRecord(), QString()));
    FactoryParams loaded;
    QVERIFY(LoadFactoryParams(loaded, QString()));
    QVERIFY(FirstFileFieldDifference(loaded, DistinctRecord()).isEmpty());
    QVERIFY(ReadBytes(CLogWriter::GetInstance()->FilePath()).contains("No backup was kept before saving the parameters"));
    QFile::remove(strBackups);
}

void TestFactoryParamFile::onlyTheNewestFiftyBackupsAreKept()
{
    const QString strDefault = DefaultFactoryParamPath();
    QFile::remove(strDefault);
    QDir(CParamBackups::Directory(strDefault)).removeRecursively();
    FactoryParams record;
    for (int i = 0; i < CParamBackups::kKept + 6; ++i) {
        record.motor[0].speedMax = 100.0 + i;
        QVERIFY(SaveFactoryParams(record, QString()));
    }
    const QList<CParamBackups::Entry> backups = CParamBackups::List(strDefault);
    QCOMPARE(backups.size(), CParamBackups::kKept);
    QCOMPARE(QDir(CParamBackups::Directory(strDefault)).entryList(QDir::Files).size(), CParamBackups::kKept);
    // Newest first: the newest backup holds the save before the last one.
    FactoryParams newest;
    QVERIFY(LoadFactoryParams(newest, backups.first().strPath));
    QCOMPARE(newest.motor[0].speedMax, 100.0 + CParamBackups::kKept + 4);
    FactoryParams oldest;
    QVERIFY(LoadFactoryParams(oldest, backups.last().strPath));
    QCOMPARE(oldest.motor[0].speedMax, 100.0 + 5);
}

void TestFactoryParamFile::leftoversOfInterruptedSavesAreRemoved()
{
    // What saves killed between writing and renaming left, two minutes ago,
    // in this version's and an earlier version's naming.
    const QStringList stale{".fmp-a1b2c3d4.saving", ".fmp-a1b2c3d4.check",
                            ".FactoryParam.ini.0123456789abcdef0123456789abcdef.saving",
                            ".export.ini.fedcba9876543210fedcba9876543210.check"};
    // A save running now, and files of other kinds.
    const QStringList kept{".fmp-zzzzzzzz.saving", ".hidden.saving", "notes.check", ".fmp-toolong99.saving"};
    for (const QString& strName : stale + kept)
        WriteText(m_strDir + "/" + strName, "leftover");
    const QDateTime twoMinutesAgo = QDateTime::currentDateTime().addSecs(-120);
    for (const QString& strName : stale + QStringList{".hidden.saving", "notes.check", ".fmp-toolong99.saving"}) {
        QFile file(m_strDir + "/" + strName);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(twoMinutesAgo, QFileDevice::FileModificationTime));
    }
    // A lock left by a process that is gone, and one a live process holds.
    QByteArray lockText;
    {
        QLockFile live(m_strDir + "/Live.ini.lock");
        QVERIFY(live.tryLock(0));
        QFile file(m_strDir + "/Live.ini.lock");
        QVERIFY(file.open(QIODevice::ReadOnly));
        lockText = file.readAll();
    }
    QProcess gone;
    gone.start("/bin/sleep", {"0.1"});
    QVERIFY(gone.waitForStarted());
    const qint64 nGone = gone.processId();
    QVERIFY(gone.waitForFinished());
    QLockFile held(m_strDir + "/Live.ini.lock");
    QVERIFY(held.tryLock(0));
    const QString strDead = m_strDir + "/Export.ini.lock";
    WriteText(strDead, lockText.replace(QByteArray::number(QCoreApplication::applicationPid()), QByteArray::number(nGone)));
    for (const QString& strName : {QStringLiteral("Export.ini.lock"), QStringLiteral("Live.ini.lock")}) {
        QFile file(m_strDir + "/" + strName);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(twoMinutesAgo, QFileDevice::FileModificationTime));
    }
    QVERIFY(SaveFactoryParams(FactoryParams(), m_strDir + "/FactoryParam.ini"));
    QStringList left = QDir(m_strDir).entryList(QDir::Files | QDir::Hidden);
    left.removeAll("FactoryParam.ini");
    std::sort(left.begin(), left.end());
    QStringList expected = kept + QStringList{"Live.ini.lock"};
    std::sort(expected.begin(), expected.end());
    QCOMPARE(left, expected);

    // A copy into the backups that was cut off.
    QVERIFY(QDir().mkpath(m_strDir + "/Backups"));
    WriteText(m_strDir + "/Backups/qt_temp.Ab12Cd", "half a backup");
    {
        QFile file(m_strDir + "/Backups/qt_temp.Ab12Cd");
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(twoMinutesAgo, QFileDevice::FileModificationTime));
    }
    QVERIFY(CParamBackups::KeepFile(m_strDir + "/FactoryParam.ini", CParamBackups::ReasonSave));
    QCOMPARE(QDir(m_strDir + "/Backups").entryList(QDir::Files | QDir::Hidden).size(), 1);
    QVERIFY(!QFileInfo::exists(m_strDir + "/Backups/qt_temp.Ab12Cd"));
}

void TestFactoryParamFile::aNameNearTheLimitSavesAsADirectWriteWould()
{
    // 250 characters: within the 255 a file name may have, with little to spare.
    const QString strPath = m_strDir + "/" + QString(246, 'p') + ".ini";
    {
        QFile direct(strPath);
        QVERIFY2(direct.open(QIODevice::WriteOnly), "the file system takes the name");
    }
    QFile::remove(strPath);
    QVERIFY(SaveFactoryParams(DistinctRecord(), strPath));
    FactoryParams loaded;
    QVERIFY(LoadFactoryParams(loaded, strPath));
    QVERIFY(FirstFileFieldDifference(loaded, DistinctRecord()).isEmpty());
}

void TestFactoryParamFile::notANumberAndInfinityRoundTrip()
{
    // Found by fuzzing: a record loaded from a file holding "nan" could not be
    // saved, because the saved file's check compared NaN with NaN.
    const QString strPath = m_strDir + "/odd.ini";
    WriteText(strPath, kMarkerOnly + "[FACTORY_PARAM_MACHINE]\nMACHINE_LASER_SPACE=nan\n[FACTORY_PARAM_SPEED]\nSPEED_CUT_ACC_WORK=inf\n");
    FactoryParams record;
    QVERIFY(LoadFactoryParams(record, strPath));
    QVERIFY(std::isnan(record.machine.laserSpace));
    QVERIFY(std::isinf(record.speed.cutAccWork));
    const QString strCopy = m_strDir + "/copy.ini";
    QVERIFY(SaveFactoryParams(record, strCopy));
    FactoryParams again;
    QVERIFY(LoadFactoryParams(again, strCopy));
    QVERIFY(std::isnan(again.machine.laserSpace));
    QVERIFY(std::isinf(again.speed.cutAccWork));
}

void TestFactoryParamFile::saveToMissingDirectoryFails()
{
    const QString strPath = m_strDir + "/not/there/FactoryParam.ini";
    QString strWhy;
    QVERIFY(!SaveFactoryParams(FactoryParams(), strPath, &strWhy));
    QVERIFY(!QFileInfo::exists(m_strDir + "/not"));
    // The reason is given, and logged.
    QVERIFY2(strWhy.startsWith("no file can be made in " + m_strDir + "/not/there: "), qPrintable(strWhy));
    const QByteArray log = ReadBytes(CLogWriter::GetInstance()->FilePath());
    QVERIFY2(log.contains("[1] The parameters were not saved to " + QFile::encodeName(strPath) + ": " + strWhy.toUtf8()),
             log.constData());
}

void TestFactoryParamFile::saveDropsStaleKeys()
{
    const QString strPath = m_strDir + "/old-layout.ini";
    WriteText(strPath, kMarkerOnly + "OLD_VERSION=3\n[FACTORY_PARAM_MOTOR]\nMOTOR_GEAR_RATIO_1=2.5\n[OLD_SECTION]\nA=1\n");
    QVERIFY(SaveFactoryParams(FactoryParams(), strPath));
    QSettings settings(strPath, QSettings::IniFormat);
    QStringList actual = settings.allKeys();
    QStringList expected = ExpectedKeys();
    actual.sort();
    expected.sort();
    QCOMPARE(actual, expected);
}

void TestFactoryParamFile::saveIntoReadOnlyDirectoryKeepsThePreviousFile()
{
    const QString strPath = m_strDir + "/FactoryParam.ini";
    QVERIFY(SaveFactoryParams(DistinctRecord(), strPath));
    const QByteArray previous = ReadBytes(strPath);
    QVERIFY(!previous.isEmpty());
    const QFile::Permissions readOnly = QFileDevice::ReadOwner | QFileDevice::ExeOwner | QFileDevice::ReadOther
        | QFileDevice::ExeOther | QFileDevice::ReadGroup | QFileDevice::ExeGroup;
    QVERIFY(QFile::setPermissions(m_strDir, readOnly));

    bool bSaved = true;
    {
        AsUnprivileged unprivileged;
        bSaved = SaveFactoryParams(FactoryParams(), strPath);
    }
    QFile::setPermissions(m_strDir, readOnly | QFileDevice::WriteOwner);
    QVERIFY(!bSaved);
    QCOMPARE(ReadBytes(strPath), previous);
    QCOMPARE(QDir(m_strDir).entryList(QDir::Files | QDir::Hidden), QStringList{"FactoryParam.ini"});
}

void TestFactoryParamFile::saveThatFailsMidWayKeepsThePreviousFile()
{
    const QString strPath = m_strDir + "/FactoryParam.ini";
    QVERIFY(SaveFactoryParams(DistinctRecord(), strPath));
    const QByteArray previous = ReadBytes(strPath);

    // Let no file grow past 512 bytes: the new file is cut short while it is written.
    struct rlimit saved {};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &saved), 0);
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit limited = saved;
    limited.rlim_cur = 512;
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &limited), 0);
    const bool bSaved = SaveFactoryParams(FactoryParams(), strPath);
    setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, previousHandler);

    QVERIFY(!bSaved);
    QCOMPARE(ReadBytes(strPath), previous);
    QCOMPARE(QDir(m_strDir).entryList(QDir::Files | QDir::Hidden), QStringList{"FactoryParam.ini"});
    FactoryParams loaded;
    QVERIFY(LoadFactoryParams(loaded, strPath));
    QVERIFY(FirstFileFieldDifference(DistinctRecord(), loaded).isEmpty());
}

void TestFactoryParamFile::saveOverADirectoryFailsAndKeepsIt()
{
    const QString strPath = m_strDir + "/taken";
    QVERIFY(QDir().mkpath(strPath + "/inside"));
    QVERIFY(!SaveFactoryParams(FactoryParams(), strPath));
    QVERIFY(QFileInfo(strPath + "/inside").isDir());
    QCOMPARE(QDir(m_strDir).entryList(QDir::Files | QDir::Hidden), QStringList());
}

FACTORYMGR_TEST_MAIN(TestFactoryParamFile)
#include "tst_factoryparamfile.moc"
