#include "TestMain.h"

#include "CParamBackups.h"
#include "CParamCheck.h"
#include "CParamDiff.h"
#include "FactoryParamIo.h"
#include "FactoryParamKeys.h"
#include "FactoryParams.h"
#include "CParamFileLock.h"
#include "ParamFileTestData.h"
#include "TestThread.h"

#include <QDir>
#include <QSettings>
#include <QTemporaryDir>

#include <QThread>

#include <atomic>
#include <cmath>
#include <limits>

using namespace ParamFileTestData;

// The parameter files' shared code without the plug-in's dialogs: the key
// table as a person reads it, the comparison of two records, the backups and
// the checks.
class TestParamCore : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void everyKeyHasALabelAPlaceAndTheFilesOrder();
    void rangesAreTheRecords_data();
    void rangesAreTheRecords();
    void diffNamesEachDifferingField();
    void diffCountsTwoNaNsAsEqual();
    void diffTranslatesLabelsAndPlaces();
    void backupsOfARecordLoadAgain();
    void backupsOfAMissingFileAreNothing();
    void backupsListNewestFirstWithTheirReason();
    void backupsAreMadeOnlyOfNewContent();
    void backupsKeepTheirOrderWhenTheClockGoesBack();
    void checkOfACleanFileFindsNothing();
    void checkFindsEachKindOfProblem();
    void checkSaysWhatThePlugInWouldReadInstead();
    void checkFindsWhatTheSettingsLayerHides();
    void checkOfWhatIsNoParameterFile();
    void aReaderDuringSavesSeesOneSaveOrTheOther();
    void aWriterWaitsForTheLockAndSaysWhoHoldsIt();

private:
    QString Write(const QString& strName, const QByteArray& content);
    QScopedPointer<QTemporaryDir> m_pDir;
};

void TestParamCore::init()
{
    m_pDir.reset(new QTemporaryDir);
    QVERIFY(m_pDir->isValid());
}

QString TestParamCore::Write(const QString& strName, const QByteArray& content)
{
    const QString strPath = m_pDir->filePath(strName);
    QFile file(strPath);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        return QString();
    return strPath;
}

void TestParamCore::everyKeyHasALabelAPlaceAndTheFilesOrder()
{
    const QVector<FactoryParamKey>& keys = FactoryParamKey::File();
    QStringList names;
    for (const FactoryParamKey& key : keys) {
        names << key.strSection + "/" + key.strKey;
        QVERIFY2(*key.szLabel, qPrintable(key.strKey));
        if (key.strKey.startsWith("MOTOR_")) {
            QCOMPARE(key.group, FactoryParamKey::GroupAxis);
            QCOMPARE(key.Where(), QString("XYZU").mid(key.strKey.right(1).toInt() - 1, 1));
        } else if (key.strKey.contains(QRegularExpression("^LASER_.*_\\d$|^LASER\\d_TYPE$"))) {
            QCOMPARE(key.group, FactoryParamKey::GroupLaser);
            QVERIFY(key.Where() == "Laser 1" || key.Where() == "Laser 2");
        } else {
            QCOMPARE(key.group, FactoryParamKey::GroupNone);
            QVERIFY(key.Where().isEmpty());
        }
    }
    QStringList expected = ExpectedKeys();
    expected.removeAll("FACTORY_PARAM/FILE_FLAG");
    expected.removeAll("FACTORY_PARAM/CREATE_TIME");
    QCOMPARE(QSet<QString>(names.begin(), names.end()), QSet<QString>(expected.begin(), expected.end()));
    QCOMPARE(names.size(), expected.size());

    const FactoryParams distinct = DistinctRecord();
    QCOMPARE(FactoryParamKey::ValueOf(distinct, "MOTOR_SPEED_MAX_3"), distinct.motor[2].speedMax);
    QCOMPARE(FactoryParamKey::ValueOf(distinct, "LASER_WATER_PROTECT_2"), 1.0);
    QVERIFY(std::isnan(FactoryParamKey::ValueOf(distinct, "NO_SUCH_KEY")));
}

void TestParamCore::rangesAreTheRecords_data()
{
    QTest::addColumn<QString>("strKey");
    QTest::addColumn<double>("dValue");
    QTest::addColumn<bool>("bTaken");
    const double dNaN = std::numeric_limits<double>::quiet_NaN();
    const double dInf = std::numeric_limits<double>::infinity();
    for (const char* szSwitch : {"MOTOR_DIRECTION_POLAR_1", "MOTOR_LIMIT_POLAR_2", "MOTOR_CONTROL_TYPE_3",
                                 "MOTOR_PWM_EDGE_4", "MOTOR_KEY_DIRECTION_1", "LASER_SWITCH_SIGNAL_2",
                                 "LASER_MACHINE_TYPE", "MOTOR_HARD_LIMIT_PROTECT_1", "LASER_WATER_PROTECT_1"}) {
        QTest::addRow("%s 0", szSwitch) << szSwitch << 0.0 << true;
        QTest::addRow("%s 1", szSwitch) << szSwitch << 1.0 << true;
        QTest::addRow("%s 2", szSwitch) << szSwitch << 2.0 << false;
        QTest::addRow("%s -1", szSwitch) << szSwitch << -1.0 << false;
    }
    QTest::newRow("laser count 0") << "LASER_COUNT" << 0.0 << false;
    QTest::newRow("laser count 1") << "LASER_COUNT" << 1.0 << true;
    QTest::newRow("laser count 2") << "LASER_COUNT" << 2.0 << true;
    QTest::newRow("laser count 5") << "LASER_COUNT" << 5.0 << false;
    QTest::newRow("type 4") << "LASER1_TYPE" << 4.0 << true;
    QTest::newRow("type 5") << "LASER2_TYPE" << 5.0 << false;
    QTest::newRow("type 1.5") << "LASER2_TYPE" << 1.5 << false;
    for (const char* szPercent :
         {"LASER_POWER_MIN_1", "LASER_POWER_MAX_2", "LASER_POWER_REDUCTION_1", "LASER_BURNING_WIDTH_2"}) {
        QTest::addRow("%s 100", szPercent) << szPercent << 100.0 << true;
        QTest::addRow("%s 100.5", szPercent) << szPercent << 100.5 << false;
        QTest::addRow("%s -0.5", szPercent) << szPercent << -0.5 << false;
    }
    for (const char* szDouble : {"MOTOR_PULSE_PER_MM_1", "MOTOR_SPEED_MAX_4", "MOTOR_ACC_KEY_2", "LASER_FREQUENCY_1"}) {
        QTest::addRow("%s 1e6", szDouble) << szDouble << 1000000.0 << true;
        QTest::addRow("%s 12.5", szDouble) << szDouble << 12.5 << true;
        QTest::addRow("%s 1e6+1", szDouble) << szDouble << 1000001.0 << false;
        QTest::addRow("%s -1", szDouble) << szDouble << -1.0 << false;
        QTest::addRow("%s nan", szDouble) << szDouble << dNaN << false;
        QTest::addRow("%s inf", szDouble) << szDouble << dInf << false;
    }
    // Every field has a range: the burning width is a percentage, the
    // speeds, the machine's codes and the laser power have theirs.
    QTest::newRow("burning width 500") << "LASER_BURNING_WIDTH_1" << 500.0 << false;
    QTest::newRow("burning width 100") << "LASER_BURNING_WIDTH_1" << 100.0 << true;
    QTest::newRow("power -1") << "LASER_POWER_1" << -1.0 << false;
    QTest::newRow("power 1e6+1") << "LASER_POWER_2" << 1000001.0 << false;
    QTest::newRow("power 150") << "LASER_POWER_2" << 150.0 << true;
    for (const char* szSpeed : {"SPEED_CUT_SPEED_SPACE", "SPEED_CUT_SPEED_CORNER", "SPEED_CUT_ACC_SPACE",
                                "SPEED_CUT_ACC_CORNER", "SPEED_CUT_ACC_WORK", "SPEED_SWEEP_SPEED_XSTART",
                                "SPEED_SWEEP_SPEED_YSTART", "SPEED_SWEEP_SPEED_NEWLINE", "SPEED_SWEEP_ACC_X",
                                "SPEED_SWEEP_ACC_Y", "SPEED_PANEL_SPEED_RESET", "MACHINE_LASER_SPACE"}) {
        QTest::addRow("%s -1", szSpeed) << szSpeed << -1.0 << false;
        QTest::addRow("%s 1e9", szSpeed) << szSpeed << 1e9 << false;
        QTest::addRow("%s 0", szSpeed) << szSpeed << 0.0 << true;
        QTest::addRow("%s nan", szSpeed) << szSpeed << dNaN << false;
    }
    QTest::newRow("moving parts 3") << "MACHINE_MOTIVE_MODE" << 3.0 << true;
    QTest::newRow("moving parts 4") << "MACHINE_MOTIVE_MODE" << 4.0 << false;
    QTest::newRow("machine zero 2") << "MACHINE_ZERO" << 2.0 << false;
    QTest::newRow("machine type -7") << "MACHINE_MACHINE_TYPE" << -7.0 << false;
    QTest::newRow("feed mode -7") << "MACHINE_FEED_MODE" << -7.0 << false;
    QTest::newRow("delay -3") << "MACHINE_OUTAGE_DELAY" << -3.0 << false;
    QTest::newRow("delay 0.5") << "MACHINE_OUTAGE_DELAY" << 0.5 << false;
    QTest::newRow("delay 3e9") << "MACHINE_OUTAGE_DELAY" << 3e9 << false;
    QTest::newRow("delay 30") << "MACHINE_OUTAGE_DELAY" << 30.0 << true;
}

void TestParamCore::rangesAreTheRecords()
{
    QFETCH(QString, strKey);
    QFETCH(double, dValue);
    QFETCH(bool, bTaken);
    const FactoryParamKey* pKey = FactoryParamKey::Find(strKey);
    QVERIFY(pKey);
    QCOMPARE(pKey->Takes(dValue), bTaken);
}

void TestParamCore::diffNamesEachDifferingField()
{
    const FactoryParams a;
    QVERIFY(CParamDiff::Compare(a, a).isEmpty());
    FactoryParams b = a;
    b.motor[1].speedMax = 1200.5;
    b.laser.lasers[1].waterProtect = !a.laser.lasers[1].waterProtect;
    b.laser.laserCount = 2;
    b.laser.lasers[0].enabled = false;   // not in the file: not a difference
    const QList<SParamDifference> differences = CParamDiff::Compare(a, b);
    QCOMPARE(differences.size(), 3);
    // In the file's order: laser section first.
    QCOMPARE(differences[0].strKey, QStringLiteral("LASER_COUNT"));
    QCOMPARE(differences[1].strKey, QStringLiteral("LASER_WATER_PROTECT_2"));
    QCOMPARE(differences[1].strWhere, QStringLiteral("Laser 2"));
    QCOMPARE(differences[1].dA, 1.0);
    QCOMPARE(differences[1].dB, 0.0);
    const SParamDifference& speed = differences[2];
    QCOMPARE(speed.strKey, QStringLiteral("MOTOR_SPEED_MAX_2"));
    QCOMPARE(speed.strLabel, QStringLiteral("Max Speed(mm/s)"));
    QCOMPARE(speed.strWhere, QStringLiteral("Y"));
    QCOMPARE(speed.strUnit, QStringLiteral("mm/s"));
    QCOMPARE(CParamDiff::Describe(speed), QStringLiteral("Max Speed(mm/s), Y: 1000 → 1200.5 mm/s"));
    QCOMPARE(CParamDiff::Describe(differences[0]), QStringLiteral("Laser count: 1 → 2"));
    // Exact, not rounded for show.
    FactoryParams c = a;
    c.motor[0].pulsePerMm = a.motor[0].pulsePerMm + 1e-9;
    QCOMPARE(CParamDiff::Compare(a, c).size(), 1);
    QCOMPARE(CParamDiff::Number(c.motor[0].pulsePerMm).toDouble(), c.motor[0].pulsePerMm);
    QCOMPARE(CParamDiff::Number(1000000.0), QStringLiteral("1000000"));
    QCOMPARE(CParamDiff::Number(0.000125), QStringLiteral("0.000125"));
    QCOMPARE(CParamDiff::Number(-2.5), QStringLiteral("-2.5"));
    QCOMPARE(CParamDiff::Number(1e20), QStringLiteral("1e+20"));
    QCOMPARE(CParamDiff::Number(1e20).toDouble(), 1e20);
}

void TestParamCore::diffCountsTwoNaNsAsEqual()
{
    FactoryParams a;
    a.machine.laserSpace = std::numeric_limits<double>::quiet_NaN();
    FactoryParams b = a;
    QVERIFY(CParamDiff::Compare(a, b).isEmpty());
    b.machine.laserSpace = std::numeric_limits<double>::infinity();
    const QList<SParamDifference> differences = CParamDiff::Compare(a, b);
    QCOMPARE(differences.size(), 1);
    QCOMPARE(CParamDiff::Describe(differences[0]), QStringLiteral("Dual head Distance: nan → inf mm"));
}

void TestParamCore::diffTranslatesLabelsAndPlaces()
{
    FactoryParams a;
    FactoryParams b = a;
    b.laser.lasers[0].powerMax = 90.0;
    const auto translate = [](const QString& strText) { return "«" + strText + "»"; };
    const QList<SParamDifference> differences = CParamDiff::Compare(a, b, translate);
    QCOMPARE(differences.size(), 1);
    QCOMPARE(differences[0].strLabel, QStringLiteral("«Max power(%)»"));
    QCOMPARE(differences[0].strWhere, QStringLiteral("«Laser 1»"));
    QCOMPARE(differences[0].strUnit, QStringLiteral("%"));
}

void TestParamCore::backupsOfARecordLoadAgain()
{
    const QString strFile = m_pDir->filePath("FactoryParam.ini");
    const FactoryParams record = DistinctRecord();
    QString strError;
    QVERIFY2(CParamBackups::KeepRecord(record, strFile, CParamBackups::ReasonBeforeUpload, &strError),
             qPrintable(strError));
    const QList<CParamBackups::Entry> backups = CParamBackups::List(strFile);
    QCOMPARE(backups.size(), 1);
    QCOMPARE(backups[0].reason, CParamBackups::ReasonBeforeUpload);
    QVERIFY(QFileInfo(backups[0].strPath).fileName().startsWith("FactoryParam-"));
    QVERIFY(backups[0].strPath.endsWith("-upload.ini"));
    FactoryParams loaded;
    QCOMPARE(ReadFactoryParamFile(loaded, backups[0].strPath), ParamFileStatus::Loaded);
    QVERIFY(FirstFileFieldDifference(loaded, record).isEmpty());
    QVERIFY(!QFileInfo::exists(strFile));   // the file itself is not made
}

void TestParamCore::backupsOfAMissingFileAreNothing()
{
    const QString strFile = m_pDir->filePath("none.ini");
    QString strError;
    QVERIFY(CParamBackups::KeepFile(strFile, CParamBackups::ReasonSave, &strError));
    QVERIFY(strError.isEmpty());
    QVERIFY(!QFileInfo::exists(CParamBackups::Directory(strFile)));
}

void TestParamCore::backupsListNewestFirstWithTheirReason()
{
    const QString strFile = Write("machine.ini", "[FACTORY_PARAM]\nFILE_FLAG=__FACTORY_PARAM__\n");
    QVERIFY(!strFile.isEmpty());
    int nVersion = 0;
    for (CParamBackups::Reason reason :
         {CParamBackups::ReasonSave, CParamBackups::ReasonBeforeUpgrade, CParamBackups::ReasonBeforeUpload}) {
        Write("machine.ini", "[FACTORY_PARAM]\nFILE_FLAG=__FACTORY_PARAM__\nVERSION=" + QByteArray::number(++nVersion) + "\n");
        QVERIFY(CParamBackups::KeepFile(strFile, reason));
    }
    // Another file's backups in the same folder are not this file's.
    const QString strOther = Write("other.ini", "x");
    QVERIFY(CParamBackups::KeepFile(strOther, CParamBackups::ReasonSave));
    // Names of other shapes are left alone.
    Write("Backups/machine-notes.ini", "x");
    const QList<CParamBackups::Entry> backups = CParamBackups::List(strFile);
    QCOMPARE(backups.size(), 3);
    QCOMPARE(backups[0].reason, CParamBackups::ReasonBeforeUpload);
    QCOMPARE(backups[1].reason, CParamBackups::ReasonBeforeUpgrade);
    QCOMPARE(backups[2].reason, CParamBackups::ReasonSave);
    QVERIFY(backups[0].when >= backups[2].when);
    QCOMPARE(QString(CParamBackups::ReasonText(backups[1].reason)), QStringLiteral("before upgrade"));
    QCOMPARE(CParamBackups::List(strOther).size(), 1);
}

namespace {
QByteArray Content(const QString& strPath)
{
    QFile file(strPath);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
}

void TestParamCore::backupsAreMadeOnlyOfNewContent()
{
    const QString strFile = m_pDir->filePath("FactoryParam.ini");
    FactoryParams record;
    QVERIFY(WriteFactoryParamFile(record, strFile));
    QVERIFY(CParamBackups::KeepFile(strFile, CParamBackups::ReasonSave));
    // Written again with the same values: only the time stamp differs.
    QTest::qWait(1100);
    QVERIFY(WriteFactoryParamFile(record, strFile));
    QVERIFY(CParamBackups::KeepFile(strFile, CParamBackups::ReasonSave));
    QVERIFY(CParamBackups::KeepRecord(record, strFile, CParamBackups::ReasonBeforeUpload));
    QCOMPARE(CParamBackups::List(strFile).size(), 1);
    // New values are kept, as a file and as a record.
    record.motor[0].speedMax = 1234.0;
    QVERIFY(WriteFactoryParamFile(record, strFile));
    QVERIFY(CParamBackups::KeepFile(strFile, CParamBackups::ReasonSave));
    record.motor[0].speedMax = 1500.0;
    QVERIFY(CParamBackups::KeepRecord(record, strFile, CParamBackups::ReasonBeforeUpload));
    const QList<CParamBackups::Entry> backups = CParamBackups::List(strFile);
    QCOMPARE(backups.size(), 3);
    QCOMPARE(backups[0].reason, CParamBackups::ReasonBeforeUpload);
    QCOMPARE(backups[0].nSequence, 3);
    QCOMPARE(backups[2].nSequence, 1);
}

void TestParamCore::backupsKeepTheirOrderWhenTheClockGoesBack()
{
    // kKept backups made while the clock was years ahead, and one of the
    // earlier versions' names (no sequence number).
    const QString strFile = Write("FactoryParam.ini", "[FACTORY_PARAM]\nFILE_FLAG=__FACTORY_PARAM__\nV=now\n");
    QVERIFY(QDir().mkpath(m_pDir->filePath("Backups")));
    Write("Backups/FactoryParam-20990101-000000000-save.ini", "[FACTORY_PARAM]\nV=oldest\n");
    for (int i = 1; i <= CParamBackups::kKept - 1; ++i)
        Write(QStringLiteral("Backups/FactoryParam-%1-20990101-000000%2-save.ini")
                  .arg(i, 6, 10, QLatin1Char('0'))
                  .arg(i, 3, 10, QLatin1Char('0')),
              "[FACTORY_PARAM]\nV=" + QByteArray::number(i) + "\n");
    QVERIFY(CParamBackups::KeepFile(strFile, CParamBackups::ReasonSave));
    const QList<CParamBackups::Entry> backups = CParamBackups::List(strFile);
    QCOMPARE(backups.size(), CParamBackups::kKept);
    // The newest is the one just made, though its time is the earliest; the
    // one pruned is the name without a sequence.
    QCOMPARE(backups.first().nSequence, CParamBackups::kKept);
    QVERIFY(backups.first().when < backups[1].when);
    QCOMPARE(Content(backups.first().strPath), QByteArray("[FACTORY_PARAM]\nFILE_FLAG=__FACTORY_PARAM__\nV=now\n"));
    QCOMPARE(backups.last().nSequence, 1);
    QVERIFY(!QFileInfo::exists(m_pDir->filePath("Backups/FactoryParam-20990101-000000000-save.ini")));
}

void TestParamCore::checkOfACleanFileFindsNothing()
{
    const QString strPath = m_pDir->filePath("clean.ini");
    QVERIFY(WriteFactoryParamFile(DistinctRecord(), strPath));
    // DistinctRecord has switches of 2 and more: a controller takes a record of defaults.
    QVERIFY(!CParamCheck::CheckFile(strPath).isEmpty());
    QVERIFY(WriteFactoryParamFile(FactoryParams(), strPath));
    const QList<SParamProblem> problems = CParamCheck::CheckFile(strPath);
    QVERIFY2(problems.isEmpty(), qPrintable(problems.value(0).strKey + " " + problems.value(0).strWhat));
}

void TestParamCore::checkFindsEachKindOfProblem()
{
    const QString strPath = m_pDir->filePath("odd.ini");
    QVERIFY(WriteFactoryParamFile(FactoryParams(), strPath));
    {
        QSettings settings(strPath, QSettings::IniFormat);
        settings.setValue("FACTORY_PARAM_MOTOR/MOTOR_SPEED_MAX_1", "fast");
        settings.setValue("FACTORY_PARAM_MOTOR/MOTOR_DIRECTION_POLAR_2", "2");
        settings.setValue("FACTORY_PARAM_MOTOR/MOTOR_CONTROL_TYPE_3", "0.5");
        settings.setValue("FACTORY_PARAM_LASER/LASER_POWER_MAX_1", "101");
        settings.setValue("FACTORY_PARAM_MACHINE/MACHINE_LASER_SPACE", "nan");
        settings.setValue("FACTORY_PARAM_SPEED/SPEED_CUT_ACC_WORK", "inf");
        settings.remove("FACTORY_PARAM_MACHINE/MACHINE_OUTAGE_DELAY");
        settings.setValue("FACTORY_PARAM_MOTOR/MOTOR_TURBO_1", "1");
    }
    QMap<QString, QString> found;
    for (const SParamProblem& problem : CParamCheck::CheckFile(strPath)) {
        QCOMPARE(problem.strFile, strPath);
        found.insert(problem.strKey, problem.strValue + ": " + problem.strWhat);
    }
    QCOMPARE(found.value("MOTOR_SPEED_MAX_1"), QStringLiteral("fast: not a number"));
    QCOMPARE(found.value("MOTOR_DIRECTION_POLAR_2"), QStringLiteral("2: takes 0 or 1"));
    QCOMPARE(found.value("MOTOR_CONTROL_TYPE_3"), QStringLiteral("0.5: not a whole number"));
    QCOMPARE(found.value("LASER_POWER_MAX_1"), QStringLiteral("101: takes 0 to 100"));
    QCOMPARE(found.value("MACHINE_LASER_SPACE"), QStringLiteral("nan: not a finite number"));
    QCOMPARE(found.value("SPEED_CUT_ACC_WORK"), QStringLiteral("inf: not a finite number"));
    QCOMPARE(found.value("MACHINE_OUTAGE_DELAY"), QStringLiteral(": missing (read as 0)"));
    QCOMPARE(found.value("FACTORY_PARAM_MOTOR/MOTOR_TURBO_1"), QStringLiteral("1: unknown key"));
    QCOMPARE(found.size(), 8);
}

void TestParamCore::checkSaysWhatThePlugInWouldReadInstead()
{
    const QString strPath = m_pDir->filePath("hand.ini");
    QVERIFY(WriteFactoryParamFile(FactoryParams(), strPath));
    QByteArray text;
    {
        QFile file(strPath);
        QVERIFY(file.open(QIODevice::ReadOnly));
        text = file.readAll();
    }
    const auto replace = [&text](const QByteArray& from, const QByteArray& to) {
        QVERIFY2(text.contains(from), from.constData());
        text.replace(from, to);
    };
    replace("LASER_POWER_1=80\n", "LASER_POWER_1=80.000\n");
    replace("LASER_POWER_2=80\n", "LASER_POWER_2=8e1\n");
    replace("MOTOR_PWM_EDGE_2=0\n", "MOTOR_PWM_EDGE_2=1.0\n");
    replace("MOTOR_SIZE_2=900\n", "MOTOR_SIZE_2=900,5\n");
    replace("LASER_COUNT=1\n", "LASER_COUNT=99999999999\n");
    const QString strHand = Write("hand2.ini", text);
    QMap<QString, QString> found;
    for (const SParamProblem& problem : CParamCheck::CheckFile(strHand))
        found.insert(problem.strKey, problem.strValue + ": " + problem.strWhat);
    QCOMPARE(found.value("LASER_POWER_1"), QStringLiteral("80.000: the plug-in reads this as 0; write 80"));
    QCOMPARE(found.value("LASER_POWER_2"), QStringLiteral("8e1: the plug-in reads this as 0; write 80"));
    QCOMPARE(found.value("MOTOR_PWM_EDGE_2"), QStringLiteral("1.0: the plug-in reads this as 0; write 1"));
    QCOMPARE(found.value("MOTOR_SIZE_2"), QStringLiteral("900,5: not a number"));
    QCOMPARE(found.value("LASER_COUNT"), QStringLiteral("99999999999: takes 1 or 2"));
    QCOMPARE(found.size(), 5);
}

void TestParamCore::checkFindsWhatTheSettingsLayerHides()
{
    const QString strPath = m_pDir->filePath("twice.ini");
    QVERIFY(WriteFactoryParamFile(FactoryParams(), strPath));
    QByteArray text;
    {
        QFile file(strPath);
        QVERIFY(file.open(QIODevice::ReadOnly));
        text = file.readAll();
    }
    text.replace("CREATE_TIME=", "CREATE_TIME=yesterday\nOLD_TIME=");
    text += "\n[FACTORY_PARAM_SPEED]\nSPEED_CUT_ACC_WORK=900\n";
    const QString strTwice = Write("twice2.ini", text);
    QMap<QString, QString> found;
    for (const SParamProblem& problem : CParamCheck::CheckFile(strTwice))
        found.insert(problem.strKey, problem.strValue + ": " + problem.strWhat);
    QCOMPARE(found.value("FACTORY_PARAM_SPEED/SPEED_CUT_ACC_WORK"),
             QStringLiteral("900: given 2 times; the plug-in reads the last one"));
    QCOMPARE(found.value("[FACTORY_PARAM_SPEED]"), QStringLiteral(": section given 2 times"));
    QCOMPARE(found.value("CREATE_TIME"), QStringLiteral("yesterday: not a time written as yyyyMMddHHmmss"));
    QVERIFY(found.contains("FACTORY_PARAM/OLD_TIME"));
    QCOMPARE(found.size(), 4);
}

void TestParamCore::checkOfWhatIsNoParameterFile()
{
    const QList<SParamProblem> missing = CParamCheck::CheckFile(m_pDir->filePath("nothing.ini"));
    QCOMPARE(missing.size(), 1);
    QCOMPARE(missing[0].strWhat, QStringLiteral("no such file"));
    const QList<SParamProblem> folder = CParamCheck::CheckFile(m_pDir->path());
    QCOMPARE(folder.size(), 1);
    const QList<SParamProblem> marker =
        CParamCheck::CheckFile(Write("marker.ini", "[FACTORY_PARAM]\nFILE_FLAG=__SOMETHING_ELSE__\n"));
    QCOMPARE(marker.size(), 1);
    QCOMPARE(marker[0].strKey, QStringLiteral("FACTORY_PARAM/FILE_FLAG"));
    QCOMPARE(marker[0].strValue, QStringLiteral("__SOMETHING_ELSE__"));
    QCOMPARE(marker[0].strWhat, QStringLiteral("not the parameter file marker"));
    const QList<SParamProblem> empty = CParamCheck::CheckFile(Write("empty.ini", ""));
    QCOMPARE(empty.size(), 1);
    QCOMPARE(empty[0].strKey, QString());
    QCOMPARE(empty[0].strWhat,
             QStringLiteral("not a parameter file (no FILE_FLAG=__FACTORY_PARAM__ in [FACTORY_PARAM])"));
    QVERIFY(empty[0].bUnreadable);
    const QList<SParamProblem> huge = CParamCheck::CheckFile(
        Write("huge.ini", "[FACTORY_PARAM]\nFILE_FLAG=__FACTORY_PARAM__\n" + QByteArray(2 * 1024 * 1024, '#')));
    QCOMPARE(huge.size(), 1);
    QVERIFY(huge[0].strWhat.startsWith("larger than 1048576 bytes"));
}

void TestParamCore::aReaderDuringSavesSeesOneSaveOrTheOther()
{
    // Two records that differ in every field the file stores.
    FactoryParams first;
    FactoryParams second;
    for (const FactoryParamKey& key : FactoryParamKey::File())
        key.SetValue(second, key.type == FactoryParamKey::TypeBool ? (key.Value(second) != 0.0 ? 0.0 : 1.0)
                                                                   : key.Value(second) + 1.0);
    QCOMPARE(CParamDiff::Compare(first, second).size(), FactoryParamKey::File().size());
    const QString strPath = m_pDir->filePath("shared.ini");
    QVERIFY(WriteFactoryParamFile(first, strPath));

    std::atomic<bool> bWriting{true};
    std::atomic<int> nSaves{0};
    TestThread writer([&] {
        for (int i = 0; i < 60; ++i)
            if (WriteFactoryParamFile(i % 2 ? first : second, strPath))
                ++nSaves;
        bWriting = false;
    });
    writer.Start();
    int nReads = 0;
    while (bWriting) {
        FactoryParams read;
        QCOMPARE(ReadFactoryParamFile(read, strPath), ParamFileStatus::Loaded);
        const qsizetype nFromFirst = CParamDiff::Compare(read, first).size();
        const qsizetype nFromSecond = CParamDiff::Compare(read, second).size();
        QVERIFY2(nFromFirst == 0 || nFromSecond == 0,
                 qPrintable(QStringLiteral("read %1: %2 fields from the one save, %3 from the other")
                                .arg(nReads)
                                .arg(nFromSecond)
                                .arg(nFromFirst)));
        ++nReads;
        // Reading again at once, but not holding the lock all the time.
        QThread::msleep(1);
    }
    QVERIFY(writer.Wait(60000));
    QCOMPARE(nSaves.load(), 60);
    QVERIFY(nReads > 0);
    // No lock and no working file is left behind.
    QCOMPARE(QDir(m_pDir->path()).entryList(QDir::Files | QDir::Hidden), QStringList{"shared.ini"});
}

void TestParamCore::aWriterWaitsForTheLockAndSaysWhoHoldsIt()
{
    const QString strPath = m_pDir->filePath("held.ini");
    QVERIFY(WriteFactoryParamFile(FactoryParams(), strPath));
    FactoryParams changed;
    changed.motor[0].size = 777.0;
    std::atomic<bool> bHolding{false};
    std::atomic<bool> bRelease{false};
    // Another holder of the lock: a thread of this process stands in for another process.
    TestThread holder([&] {
        const CParamFileLock lock(strPath);
        bHolding = lock.Taken();
        while (!bRelease)
            QThread::msleep(5);
    });
    holder.Start();
    QTRY_VERIFY(bHolding.load());
    QString strWhy;
    QVERIFY(!WriteFactoryParamFile(changed, strPath, &strWhy));
    QVERIFY2(strWhy.startsWith("process ") && strWhy.endsWith("has been saving it for 10 s"), qPrintable(strWhy));
    FactoryParams read;
    QCOMPARE(ReadFactoryParamFile(read, strPath), ParamFileStatus::Loaded);
    QCOMPARE(read.motor[0].size, FactoryParams().motor[0].size);
    bRelease = true;
    QVERIFY(holder.Wait(10000));
    QVERIFY(WriteFactoryParamFile(changed, strPath, &strWhy));
}

FACTORYMGR_TEST_MAIN(TestParamCore)
#include "tst_paramcore.moc"
