#include "TestMain.h"

#include "CParamBackups.h"
#include "CParamFileLock.h"
#include "FactoryParamIo.h"
#include "FactoryParamKeys.h"
#include "FactoryParams.h"
#include "HostileFiles.h"
#include "ParamFileTestData.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QStandardPaths>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>

#include <csignal>
#include <cmath>
#include <limits>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace ParamFileTestData;

// factoryparams as a terminal or a script runs it: the built program, its
// standard output, standard error and exit code.
class TestParamsTool : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void helpForTheToolAndEachCommand();
    void showListsEveryFieldAsTheDialogNamesIt();
    void showJsonGivesTheRecordsValues();
    void diffSaysWhatDiffersAndExitsOneForIt();
    void eachCommandRefusesWhatIsNoParameterFile_data();
    void eachCommandRefusesWhatIsNoParameterFile();
    void checkReportsEveryProblemWithFileKeyAndValue();
    void setChangesCheckedValuesAndKeepsABackup();
    void setWritesNothingWhenAnyAssignmentIsBad();
    void setToATargetThatCannotBeWrittenLeavesItWhole();
    void twoWritersInTwoProcessesNeverCombine();
    void fleetCountsTheMachinesPerField();
    void fleetJson();
    void setChangesOnlyTheLinesOfTheKeysItIsGiven();
    void setRefusesAFileThatDoesNotPassCheckUnlessRepaired();
    void setFollowsALinkKeepsTheModeAndRefusesAReadOnlyFile();
    void setThatChangesNothingWritesNothingAndDryRunNothingAtAll();
    void twoSetsAtOnceLoseNoChange();
    void fleetDiffAndCheckNameEveryFileTheyCouldNotRead();
    void standardInputPipesListsAndAFullOutput();
    void aModelGatesCalibratedMachinesWithIgnoreAndTolerance();
    void showJsonThenSetThenDiffIsARoundTrip();
    void fleetPerMachineCsvReportAndQuiet();
    void applyWritesTheModelAndKeepsEachMachinesCalibration();
    void aLongFleetOnATerminalSaysHowFarItIs();
    void setWaitsForTheLockThenSaysWhoHoldsIt();
    void asAnotherUserUnreadableFilesAndFoldersAreNamed();
    void aValueInTheSettingsLayersOwnEncodingReadsAsText();
    void everyTextInTheLanguageOfTheLocale();
    void aDamagedWordingTableLeavesEnglishAndSaysSo();

private:
    struct Run
    {
        int nExit = -1;
        QString strOut;
        QString strErr;
    };
    Run Tool(const QStringList& arguments, qint64 nFileSizeLimit = 0, const QByteArray& input = QByteArray(),
             const QString& strOutputFile = QString());
    QString Write(const QString& strName, const FactoryParams& record);
    QString WriteBytes(const QString& strName, const QByteArray& bytes);
    QScopedPointer<QTemporaryDir> m_pDir;
    // Variables the next runs of the tool get on top of the test's own (LC_ALL=...).
    QStringList m_environment;
    QString m_strTool;   // the tool to run; the build's one when empty
};

namespace {
QByteArray ReadBytes(const QString& strPath)
{
    QFile file(strPath);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
}

void TestParamsTool::init()
{
    m_pDir.reset(new QTemporaryDir);
    QVERIFY(m_pDir->isValid());
    m_environment.clear();
    m_strTool.clear();
}

TestParamsTool::Run TestParamsTool::Tool(const QStringList& arguments, qint64 nFileSizeLimit, const QByteArray& input,
                                         const QString& strOutputFile)
{
    QProcess process;
    process.setWorkingDirectory(m_pDir->path());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString& strVariable : m_environment)
        environment.insert(strVariable.section('=', 0, 0), strVariable.section('=', 1));
    process.setProcessEnvironment(environment);
    if (nFileSizeLimit > 0) {
        // A disk that takes no more than nFileSizeLimit bytes per file.
        process.setChildProcessModifier([nFileSizeLimit] {
            std::signal(SIGXFSZ, SIG_IGN);
            rlimit limit{rlim_t(nFileSizeLimit), rlim_t(nFileSizeLimit)};
            setrlimit(RLIMIT_FSIZE, &limit);
        });
    }
    if (!strOutputFile.isEmpty())
        process.setStandardOutputFile(strOutputFile);
    process.start(m_strTool.isEmpty() ? QCoreApplication::applicationDirPath() + "/factoryparams" : m_strTool, arguments);
    process.write(input);
    process.closeWriteChannel();
    Run run;
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return run;
    run.nExit = process.exitCode();
    run.strOut = QString::fromUtf8(process.readAllStandardOutput());
    run.strErr = QString::fromUtf8(process.readAllStandardError());
    return run;
}

QString TestParamsTool::Write(const QString& strName, const FactoryParams& record)
{
    const QString strPath = m_pDir->filePath(strName);
    QDir().mkpath(QFileInfo(strPath).absolutePath());
    return WriteFactoryParamFile(record, strPath) ? strPath : QString();
}

QString TestParamsTool::WriteBytes(const QString& strName, const QByteArray& bytes)
{
    const QString strPath = m_pDir->filePath(strName);
    QDir().mkpath(QFileInfo(strPath).absolutePath());
    QFile file(strPath);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() ? strPath : QString();
}

void TestParamsTool::helpForTheToolAndEachCommand()
{
    Run run = Tool({"--help"});
    QCOMPARE(run.nExit, 0);
    QVERIFY2(run.strOut.startsWith("Usage: factoryparams [options] COMMAND [arguments]"), qPrintable(run.strOut));
    for (const char* szCommand : {"show FILE", "diff A B", "check FILE...", "set FILE KEY=VALUE...", "fleet REFERENCE DIR"})
        QVERIFY2(run.strOut.contains(szCommand), szCommand);
    for (const char* szCommand : {"show", "diff", "check", "set", "fleet"}) {
        run = Tool({szCommand, "--help"});
        QCOMPARE(run.nExit, 0);
        QVERIFY2(run.strOut.startsWith(QStringLiteral("Usage: factoryparams [options] %1 ").arg(szCommand)),
                 qPrintable(run.strOut));
        QVERIFY(run.strErr.isEmpty());
    }
    run = Tool({"--version"});
    QCOMPARE(run.nExit, 0);
    QCOMPARE(run.strOut, QStringLiteral("factoryparams " FACTORYMGR_VERSION "\n"));
    // Nothing, an unknown command, a wrong number of arguments, an unknown option.
    for (const QStringList& bad : {QStringList{}, QStringList{"frobnicate"}, QStringList{"show"},
                                   QStringList{"diff", "a.ini"}, QStringList{"show", "--colour", "a.ini"}}) {
        run = Tool(bad);
        QCOMPARE(run.nExit, 2);
        QVERIFY(run.strOut.isEmpty());
        QVERIFY2(!run.strErr.isEmpty(), qPrintable(bad.join(' ')));
    }
}

void TestParamsTool::showListsEveryFieldAsTheDialogNamesIt()
{
    FactoryParams record;
    record.motor[1].speedMax = 1234.5;
    const QString strPath = Write("machine.ini", record);
    const Run run = Tool({"show", strPath});
    QCOMPARE(run.nExit, 0);
    QVERIFY(run.strErr.isEmpty());
    const QStringList lines = run.strOut.split('\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), ExpectedKeys().size() - 2);
    const QStringList speed = lines.filter(QRegularExpression("^MOTOR_SPEED_MAX_2 "));
    QCOMPARE(speed.size(), 1);
    QCOMPARE(speed[0].simplified(), QStringLiteral("MOTOR_SPEED_MAX_2 Max Speed(mm/s), Y 1234.5 mm/s"));
    QVERIFY(lines.filter(QRegularExpression("^LASER_WATER_PROTECT_1 +Water Protection, Laser 1 +1$")).size() == 1);
    // Each value in the unit its label names, as the dialog shows it: the
    // pre-burning frequency is kept in Hz and shown in kHz.
    const auto line = [&lines](const QString& strKey) {
        return lines.filter(QRegularExpression("^" + strKey + " ")).value(0).simplified();
    };
    QCOMPARE(line("LASER_BURNING_FREQUENCY_1"),
             QStringLiteral("LASER_BURNING_FREQUENCY_1 Pre-burning frequency(kHz), Laser 1 5 kHz (stored 5000)"));
    QCOMPARE(line("LASER_FREQUENCY_2"), QStringLiteral("LASER_FREQUENCY_2 Laser Frequency(kHz), Laser 2 20000 kHz"));
    QCOMPARE(line("MOTOR_PULSE_PER_MM_1"), QStringLiteral("MOTOR_PULSE_PER_MM_1 Step(p/um), X 7.88627 p/um"));
    // diff and fleet say it the same way.
    FactoryParams other = record;
    other.laser.lasers[0].burningFrequency = 6500.0;
    const Run diff = Tool({"diff", strPath, Write("other.ini", other)});
    QCOMPARE(diff.strOut.simplified(),
             QStringLiteral("LASER_BURNING_FREQUENCY_1 Pre-burning frequency(kHz), Laser 1: 5 → 6.5 kHz"));
}

void TestParamsTool::showJsonGivesTheRecordsValues()
{
    FactoryParams record = DistinctRecord();
    record.machine.laserSpace = std::numeric_limits<double>::quiet_NaN();
    record.motor[3].pulsePerMm = 7.886270000000001;   // every digit must survive
    const QString strPath = Write("machine.ini", record);
    const Run run = Tool({"show", "--json", strPath});
    QCOMPARE(run.nExit, 0);
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(run.strOut.toUtf8(), &error);
    QCOMPARE(error.error, QJsonParseError::NoError);
    QCOMPARE(document["file"].toString(), strPath);
    const QJsonArray fields = document["fields"].toArray();
    QCOMPARE(fields.size(), ExpectedKeys().size() - 2);
    for (const QJsonValue& field : fields) {
        const QString strKey = field["key"].toString();
        const double dRecord = FactoryParamKey::ValueOf(record, strKey);
        if (std::isnan(dRecord))
            QCOMPARE(field["value"].toString(), QStringLiteral("nan"));
        else
            QVERIFY2(field["value"].toDouble() == dRecord, qPrintable(strKey));
        QVERIFY(!field["label"].toString().isEmpty());
        QVERIFY(field["section"].toString().startsWith("FACTORY_PARAM_"));
    }
    QCOMPARE(fields[0]["key"].toString(), QStringLiteral("LASER_COUNT"));
}

void TestParamsTool::diffSaysWhatDiffersAndExitsOneForIt()
{
    FactoryParams a;
    const QString strA = Write("a.ini", a);
    QString strB = Write("b.ini", a);
    Run run = Tool({"diff", strA, strB});
    QCOMPARE(run.nExit, 0);
    QVERIFY(run.strOut.isEmpty());
    FactoryParams b = a;
    b.motor[0].speedMax = 1200.0;
    b.laser.lasers[1].powerMin = 12.5;
    strB = Write("b.ini", b);
    run = Tool({"diff", strA, strB});
    QCOMPARE(run.nExit, 1);
    QCOMPARE(run.strOut.split('\n', Qt::SkipEmptyParts).replaceInStrings(QRegularExpression(" +"), " "),
             (QStringList{"LASER_POWER_MIN_2 Min power(%), Laser 2: 10 → 12.5 %",
                          "MOTOR_SPEED_MAX_1 Max Speed(mm/s), X: 1000 → 1200 mm/s"}));
    run = Tool({"diff", "--json", strA, strB});
    QCOMPARE(run.nExit, 1);
    const QJsonArray differences = QJsonDocument::fromJson(run.strOut.toUtf8())["differences"].toArray();
    QCOMPARE(differences.size(), 2);
    QCOMPARE(differences[1]["key"].toString(), QStringLiteral("MOTOR_SPEED_MAX_1"));
    QCOMPARE(differences[1]["where"].toString(), QStringLiteral("X"));
    QCOMPARE(differences[1]["unit"].toString(), QStringLiteral("mm/s"));
    QCOMPARE(differences[1]["a"].toDouble(), 1000.0);
    QCOMPARE(differences[1]["b"].toDouble(), 1200.0);
}

void TestParamsTool::eachCommandRefusesWhatIsNoParameterFile_data()
{
    QTest::addColumn<QString>("strName");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("strSaid");
    QTest::newRow("missing") << "missing.ini" << QByteArray() << "no such file";
    QTest::newRow("directory") << "folder.ini" << QByteArray() << "a folder";
    QTest::newRow("wrong marker") << "marker.ini" << QByteArray("[FACTORY_PARAM]\nFILE_FLAG=__OTHER__\n")
                                  << "not a parameter file";
    QByteArray junk(64 * 1024, Qt::Uninitialized);
    QRandomGenerator generator(17);
    generator.fillRange(reinterpret_cast<quint32*>(junk.data()), junk.size() / 4);
    QTest::newRow("binary junk") << "junk.ini" << junk << "not a parameter file";
    QTest::newRow("huge") << "huge.ini"
                          << QByteArray("[FACTORY_PARAM]\nFILE_FLAG=__FACTORY_PARAM__\n[X]\n")
            + QByteArray(3 * 1024 * 1024, 'x')
                          << "larger than 1048576 bytes";
}

void TestParamsTool::eachCommandRefusesWhatIsNoParameterFile()
{
    QFETCH(QString, strName);
    QFETCH(QByteArray, content);
    QFETCH(QString, strSaid);
    QString strPath = m_pDir->filePath(strName);
    if (strName == "folder.ini")
        QVERIFY(QDir().mkpath(strPath));
    else if (!content.isEmpty())
        QVERIFY(!WriteBytes(strName, content).isEmpty());
    const QString strGood = Write("good.ini", FactoryParams());
    QVERIFY(QDir().mkpath(m_pDir->filePath("fleet")));
    for (const QStringList& arguments :
         {QStringList{"show", strPath}, QStringList{"diff", strGood, strPath}, QStringList{"diff", strPath, strGood},
          QStringList{"set", strPath, "LASER_COUNT=2"}, QStringList{"fleet", strPath, m_pDir->filePath("fleet")}}) {
        const Run run = Tool(arguments);
        QCOMPARE(run.nExit, 2);
        QVERIFY(run.strOut.isEmpty());
        QVERIFY2(run.strErr.contains(strSaid), qPrintable(arguments.first() + ": " + run.strErr));
    }
    // check checks the others, names the file with its reason and says,
    // by its exit code, that not everything could be checked.
    const Run run = Tool({"check", strPath, strGood});
    QCOMPARE(run.nExit, 2);
    QVERIFY2(run.strErr.contains(strPath + ": "), qPrintable(run.strErr));
    QCOMPARE(run.strOut, strGood + ": ok\n");
    // Nothing was made or changed.
    QCOMPARE(QFileInfo::exists(strPath), strName != "missing.ini");
    if (!content.isEmpty())
        QCOMPARE(ReadBytes(strPath), content);
}

void TestParamsTool::checkReportsEveryProblemWithFileKeyAndValue()
{
    const QString strClean = Write("clean.ini", FactoryParams());
    Run run = Tool({"check", strClean});
    QCOMPARE(run.nExit, 0);
    QCOMPARE(run.strOut, strClean + ": ok\n");
    const QString strOdd = Write("odd.ini", FactoryParams());
    {
        QSettings settings(strOdd, QSettings::IniFormat);
        settings.setValue("FACTORY_PARAM_LASER/LASER_COUNT", "3");
        settings.setValue("FACTORY_PARAM_LASER/LASER2_TYPE", "7");
        settings.setValue("FACTORY_PARAM_MOTOR/MOTOR_SIZE_2", "-5");
        settings.setValue("FACTORY_PARAM_MOTOR/MOTOR_ACC_KEY_4", "junk");
        settings.setValue("FACTORY_PARAM_SPEED/SPEED_SWEEP_ACC_X", "inf");
    }
    run = Tool({"check", strOdd, strClean});
    QCOMPARE(run.nExit, 1);
    QCOMPARE(run.strOut.split('\n', Qt::SkipEmptyParts),
             (QStringList{strOdd + ": LASER_COUNT=3: takes 1 or 2", strOdd + ": LASER2_TYPE=7: takes 0 to 4",
                          strOdd + ": MOTOR_SIZE_2=-5: takes 0 to 1000000",
                          strOdd + ": MOTOR_ACC_KEY_4=junk: not a number",
                          strOdd + ": SPEED_SWEEP_ACC_X=inf: not a finite number", strClean + ": ok"}));
    run = Tool({"check"});
    QCOMPARE(run.nExit, 2);
}

void TestParamsTool::setChangesCheckedValuesAndKeepsABackup()
{
    const QString strPath = Write("FactoryParam.ini", FactoryParams());
    {
        QSettings settings(strPath, QSettings::IniFormat);
        settings.setValue("FACTORY_PARAM/CREATE_TIME", "20200101000000");
    }
    const QByteArray before = ReadBytes(strPath);
    const Run run = Tool({"set", strPath, "MOTOR_SPEED_MAX_1=1250.5", "LASER_COUNT=2", "MACHINE_BLOW=1"});
    QCOMPARE(run.nExit, 0);
    QVERIFY(run.strErr.isEmpty());
    QCOMPARE(run.strOut.split('\n', Qt::SkipEmptyParts).replaceInStrings(QRegularExpression(" +"), " "),
             (QStringList{"LASER_COUNT Laser count: 1 → 2", "MOTOR_SPEED_MAX_1 Max Speed(mm/s), X: 1000 → 1250.5 mm/s",
                          "MACHINE_BLOW Blowing: 0 → 1"}));
    FactoryParams after;
    QCOMPARE(ReadFactoryParamFile(after, strPath), ParamFileStatus::Loaded);
    QCOMPARE(after.motor[0].speedMax, 1250.5);
    QCOMPARE(after.laser.laserCount, 2);
    QVERIFY(after.machine.blow);
    // Only the three lines changed; the time stamp is not one of them.
    QByteArray expected = before;
    expected.replace("MOTOR_SPEED_MAX_1=1000\n", "MOTOR_SPEED_MAX_1=1250.5\n");
    expected.replace("LASER_COUNT=1\n", "LASER_COUNT=2\n");
    expected.replace("MACHINE_BLOW=0\n", "MACHINE_BLOW=1\n");
    QCOMPARE(ReadBytes(strPath), expected);
    const QList<CParamBackups::Entry> backups = CParamBackups::List(strPath);
    QCOMPARE(backups.size(), 1);
    QCOMPARE(ReadBytes(backups[0].strPath), before);
}

void TestParamsTool::twoWritersInTwoProcessesNeverCombine()
{
    // Each writer sets a pair of fields to one value of its own: a file in
    // which the pair differs combines the two, or was read in the middle of
    // a save (set reads, changes and writes).
    FactoryParams record;
    record.motor[0].zeroOffset = 5.0;
    record.motor[1].zeroOffset = 5.0;
    const QString strPath = Write("shared.ini", record);
    QList<QProcess*> writers;
    for (const char* szValue : {"11", "22"}) {
        auto* pWriter = new QProcess(this);
        pWriter->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        const QString strCommand = QStringLiteral("for i in $(seq 25); do \"$0\" set \"$1\" MOTOR_ZERO_OFFSET_1=%1 "
                                                  "MOTOR_ZERO_OFFSET_2=%1 >/dev/null || exit 1; done")
                                       .arg(QString::fromLatin1(szValue));
        pWriter->start("/bin/sh", {"-c", strCommand, QCoreApplication::applicationDirPath() + "/factoryparams", strPath});
        writers << pWriter;
    }
    int nReads = 0;
    const auto running = [&] {
        for (QProcess* pWriter : writers)
            if (pWriter->state() != QProcess::NotRunning)
                return true;
        return false;
    };
    while (running()) {
        FactoryParams read;
        QCOMPARE(ReadFactoryParamFile(read, strPath), ParamFileStatus::Loaded);
        QVERIFY2(read.motor[0].zeroOffset == read.motor[1].zeroOffset,
                 qPrintable(QStringLiteral("read %1: X offset %2, Y offset %3")
                                .arg(nReads)
                                .arg(read.motor[0].zeroOffset)
                                .arg(read.motor[1].zeroOffset)));
        ++nReads;
        // Reading now and then, as a host does, not holding the lock all the time.
        QTest::qWait(5);
    }
    for (QProcess* pWriter : writers) {
        QCOMPARE(pWriter->exitStatus(), QProcess::NormalExit);
        QCOMPARE(pWriter->exitCode(), 0);
    }
    FactoryParams last;
    QCOMPARE(ReadFactoryParamFile(last, strPath), ParamFileStatus::Loaded);
    QCOMPARE(last.motor[0].zeroOffset, last.motor[1].zeroOffset);
    QVERIFY(last.motor[0].zeroOffset == 11.0 || last.motor[0].zeroOffset == 22.0);
    QVERIFY(nReads > 0);
}

void TestParamsTool::setWritesNothingWhenAnyAssignmentIsBad()
{
    const QString strPath = Write("machine.ini", FactoryParams());
    const QByteArray before = ReadBytes(strPath);
    for (const QStringList& assignments :
         {QStringList{"MOTOR_SPEED_MAX_1=1200", "MOTOR_DIRECTION_POLAR_1=2"}, QStringList{"NO_SUCH_KEY=1"},
          QStringList{"LASER_POWER_MAX_1=nan"}, QStringList{"LASER_POWER_MAX_1=abc"}, QStringList{"MOTOR_SIZE_1"},
          QStringList{"LASER_COUNT=1.5"}}) {
        const Run run = Tool(QStringList{"set", strPath} + assignments);
        QCOMPARE(run.nExit, 2);
        QVERIFY(run.strOut.isEmpty());
        QVERIFY2(run.strErr.contains("machine.ini is unchanged"), qPrintable(run.strErr));
        QCOMPARE(ReadBytes(strPath), before);
    }
    QVERIFY(!QFileInfo::exists(CParamBackups::Directory(strPath)));
}

void TestParamsTool::setToATargetThatCannotBeWrittenLeavesItWhole()
{
    const QString strPath = Write("machine.ini", FactoryParams());
    const QByteArray before = ReadBytes(strPath);
    // No file can be written in full: not even the private copy that is
    // read back before anything is replaced.
    Run run = Tool({"set", strPath, "MOTOR_SPEED_MAX_1=1200"}, 512);
    QCOMPARE(run.nExit, 2);
    QVERIFY2(run.strErr.endsWith("machine.ini: the new text could not be read back (no private copy of it could be "
                                 "written); it is unchanged\n"),
             qPrintable(run.strErr));
    QCOMPARE(ReadBytes(strPath), before);
    QCOMPARE(QDir(m_pDir->path()).entryList(QDir::Files | QDir::Hidden), QStringList{"machine.ini"});
    // A folder in which no new file can be made (the file itself may be written).
    if (::geteuid() == 0)
        QSKIP("root writes into a read-only folder");
    QVERIFY(QFile::setPermissions(m_pDir->path(), QFile::ReadOwner | QFile::ExeOwner));
    run = Tool({"set", strPath, "MOTOR_SPEED_MAX_1=1200"});
    QVERIFY(QFile::setPermissions(m_pDir->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QCOMPARE(run.nExit, 2);
    QVERIFY2(run.strErr.contains("machine.ini: cannot be written (no file can be made in "), qPrintable(run.strErr));
    QVERIFY2(run.strErr.endsWith("Permission denied); it is unchanged\n"), qPrintable(run.strErr));
    QCOMPARE(ReadBytes(strPath), before);
}

void TestParamsTool::fleetCountsTheMachinesPerField()
{
    FactoryParams reference;
    const QString strReference = Write("fleet/model-a.ini", reference);
    for (int i = 1; i <= 5; ++i) {
        FactoryParams machine = reference;
        if (i == 2 || i == 4)
            machine.motor[0].speedMax = 900.0 + i;
        if (i == 4)
            machine.laser.laserCount = 2;
        QVERIFY(!Write(QStringLiteral("fleet/line%1/m%2/FactoryParam.ini").arg(i % 2).arg(i), machine).isEmpty());
    }
    // Backups of a machine are not machines; a file of another kind is named and left out.
    FactoryParams old = reference;
    old.motor[1].size = 1.0;
    QVERIFY(!Write("fleet/line1/m1/Backups/FactoryParam-20260101-000000000-save.ini", old).isEmpty());
    QVERIFY(!WriteBytes("fleet/line1/m1/UserParam.ini", "[CALIBRATE]\nCUTTING_POWER=30\n").isEmpty());

    // Run where the folder is, as a person would: names as found under it.
    Run run = Tool({"fleet", strReference, "fleet"});
    QCOMPARE(run.nExit, 2);
    QCOMPARE(run.strErr, QStringLiteral("factoryparams: fleet/line1/m1/UserParam.ini: not a parameter file (no "
                                        "FILE_FLAG=__FACTORY_PARAM__ in [FACTORY_PARAM])\n"));
    QCOMPARE(run.strOut.split('\n', Qt::SkipEmptyParts),
             (QStringList{QStringLiteral("5 machine(s) compared with %1: 2 differ, in 2 field(s); 1 file(s) could not "
                                         "be read (named on standard error)")
                              .arg(strReference),
                          "LASER_COUNT  Laser count: 1 of 5 machine(s) differ from 1",
                          "    fleet/line0/m4/FactoryParam.ini  2",
                          "MOTOR_SPEED_MAX_1  Max Speed(mm/s), X: 2 of 5 machine(s) differ from 1000 mm/s",
                          "    fleet/line0/m2/FactoryParam.ini  902 mm/s", "    fleet/line0/m4/FactoryParam.ini  904 mm/s"}));
    QVERIFY(QFile::remove(m_pDir->filePath("fleet/line1/m1/UserParam.ini")));

    // All alike: exit code 0.
    QDir(m_pDir->filePath("fleet/line0")).removeRecursively();
    run = Tool({"fleet", strReference, m_pDir->filePath("fleet")});
    QCOMPARE(run.nExit, 0);
    QVERIFY(run.strOut.startsWith("3 machine(s) compared"));
    run = Tool({"fleet", strReference, m_pDir->filePath("no-such-folder")});
    QCOMPARE(run.nExit, 2);
    QVERIFY2(run.strErr.contains("no-such-folder: no such file"), qPrintable(run.strErr));
}

void TestParamsTool::fleetJson()
{
    FactoryParams reference;
    const QString strReference = Write("reference.ini", reference);
    FactoryParams machine = reference;
    machine.speed.cutAccWork = std::numeric_limits<double>::infinity();
    QVERIFY(!Write("fleet/m1.ini", machine).isEmpty());
    QVERIFY(!Write("fleet/m2.ini", reference).isEmpty());
    const Run run = Tool({"fleet", "--json", strReference, m_pDir->filePath("fleet")});
    QCOMPARE(run.nExit, 1);
    const QJsonDocument document = QJsonDocument::fromJson(run.strOut.toUtf8());
    QCOMPARE(document["machines"].toInt(), 2);
    QCOMPARE(document["differing"].toInt(), 1);
    const QJsonArray fields = document["fields"].toArray();
    QCOMPARE(fields.size(), 1);
    QCOMPARE(fields[0]["key"].toString(), QStringLiteral("SPEED_CUT_ACC_WORK"));
    QCOMPARE(fields[0]["reference"].toDouble(), reference.speed.cutAccWork);
    QCOMPARE(fields[0]["machines"].toArray().size(), 1);
    QCOMPARE(fields[0]["machines"][0]["file"].toString(), m_pDir->filePath("fleet/m1.ini"));
    QCOMPARE(document["skipped"].toArray().size(), 0);
    QCOMPARE(fields[0]["machines"][0]["value"].toString(), QStringLiteral("inf"));
}

namespace {
// A clean file's text with some of its lines replaced.
// A replacement "KEY=" → "" drops the key's whole line.
QByteArray Edited(QByteArray text, const QList<QPair<QByteArray, QByteArray>>& replacements)
{
    for (const auto& [from, to] : replacements) {
        if (from.endsWith('=') && to.isEmpty()) {
            const qsizetype nAt = text.indexOf("\n" + from);
            if (nAt < 0)
                QTest::qFail(("no line " + from).constData(), __FILE__, __LINE__);
            text.remove(nAt + 1, text.indexOf('\n', nAt + 1) - nAt);
            continue;
        }
        if (!text.contains(from))
            QTest::qFail(("no line " + from).constData(), __FILE__, __LINE__);
        text.replace(from, to);
    }
    return text;
}
}

void TestParamsTool::setChangesOnlyTheLinesOfTheKeysItIsGiven()
{
    const QString strClean = Write("clean.ini", FactoryParams());
    // A comment, a key and a section nobody knows, written by hand.
    const QByteArray before = "; machine QV-0042, line 3\n"
        + Edited(ReadBytes(strClean), {{"[FACTORY_PARAM_MOTOR]\n", "[FACTORY_PARAM_MOTOR]\nMACHINE_SERIAL=QV-0042\n"}})
        + "\n[SERVICE]\n# last visit\nTECHNICIAN=J. Doe\n";
    const QString strPath = WriteBytes("machine.ini", before);
    const Run run = Tool({"set", strPath, "MOTOR_SPEED_MAX_1=1100"});
    QCOMPARE(run.nExit, 0);
    QCOMPARE(run.strErr, QString());
    QCOMPARE(run.strOut.simplified(), QStringLiteral("MOTOR_SPEED_MAX_1 Max Speed(mm/s), X: 1000 → 1100 mm/s"));
    QCOMPARE(ReadBytes(strPath), Edited(before, {{"MOTOR_SPEED_MAX_1=1000\n", "MOTOR_SPEED_MAX_1=1100\n"}}));
    // check still names the unknown keys, as before.
    const Run check = Tool({"check", strPath});
    QCOMPARE(check.nExit, 1);
    QCOMPARE(check.strOut.count("unknown key"), 2);
}

void TestParamsTool::setRefusesAFileThatDoesNotPassCheckUnlessRepaired()
{
    const QString strClean = Write("clean.ini", FactoryParams());
    const QByteArray before = Edited(ReadBytes(strClean), {{"MOTOR_PULSE_PER_MM_1=", ""},
                                                           {"LASER_WATER_PROTECT_1=", ""},
                                                           {"LASER_POWER_1=80\n", "LASER_POWER_1=80.0\n"},
                                                           {"MOTOR_DIRECTION_POLAR_2=1\n", "MOTOR_DIRECTION_POLAR_2=1.0\n"},
                                                           {"MOTOR_SIZE_2=900\n", "MOTOR_SIZE_2=\"900,5\"\n"}});
    const QString strPath = WriteBytes("machine.ini", before);
    Run run = Tool({"set", strPath, "MOTOR_SPEED_MAX_1=1100"});
    QCOMPARE(run.nExit, 2);
    QCOMPARE(run.strOut, QString());
    for (const char* szKey : {"MOTOR_PULSE_PER_MM_1", "LASER_WATER_PROTECT_1", "LASER_POWER_1=80.0",
                              "MOTOR_DIRECTION_POLAR_2=1.0", "MOTOR_SIZE_2=900,5"})
        QVERIFY2(run.strErr.contains(szKey), szKey);
    QVERIFY2(run.strErr.endsWith("machine.ini is unchanged: it does not pass check (--repair fills and fixes what it "
                                 "can)\n"),
             qPrintable(run.strErr));
    QCOMPARE(ReadBytes(strPath), before);
    QVERIFY(!QFileInfo::exists(CParamBackups::Directory(strPath)));

    // --dry-run --repair says what it would do and does nothing.
    run = Tool({"set", "--repair", "--dry-run", strPath, "MOTOR_SPEED_MAX_1=1100"});
    QCOMPARE(run.nExit, 0);
    QCOMPARE(run.strOut.count("would change: "), 6);
    QCOMPARE(ReadBytes(strPath), before);

    // --repair: every field it changed is named, and check passes.
    run = Tool({"set", "--repair", strPath, "MOTOR_SPEED_MAX_1=1100"});
    QCOMPARE(run.nExit, 0);
    const QStringList lines = run.strOut.split('\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 6);
    QCOMPARE(lines[0], QStringLiteral("repaired LASER_POWER_1: 80.0 → 80 (the plug-in reads this as 0; write 80)"));
    QCOMPARE(lines.filter("repaired MOTOR_PULSE_PER_MM_1: (missing) → 1 (missing)").size(), 1);
    QCOMPARE(lines.filter("repaired LASER_WATER_PROTECT_1: (missing) → 0 (missing)").size(), 1);
    QCOMPARE(lines.filter("repaired MOTOR_DIRECTION_POLAR_2: 1.0 → 1").size(), 1);
    QCOMPARE(lines.filter("repaired MOTOR_SIZE_2: 900,5 → 900 (not a number)").size(), 1);
    QCOMPARE(lines.filter("MOTOR_SPEED_MAX_1").size(), 1);
    const Run check = Tool({"check", strPath});
    QCOMPARE(check.strOut, strPath + ": ok\n");
    QCOMPARE(check.nExit, 0);
    FactoryParams after;
    QCOMPARE(ReadFactoryParamFile(after, strPath), ParamFileStatus::Loaded);
    QCOMPARE(after.laser.lasers[0].power, 80);
    QCOMPARE(after.motor[1].directionPolar, 1);
    QCOMPARE(after.motor[0].speedMax, 1100.0);
}

void TestParamsTool::setFollowsALinkKeepsTheModeAndRefusesAReadOnlyFile()
{
    const QString strShared = Write("models/model-a.ini", FactoryParams());
    const QString strLink = m_pDir->filePath("machine.ini");
    QVERIFY(QFile::link(strShared, strLink));
    QVERIFY(QFile::setPermissions(strShared, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup));
    Run run = Tool({"set", strLink, "MOTOR_SIZE_1=640"});
    QCOMPARE(run.nExit, 0);
    // The link is still a link; its target holds the change, with its mode.
    QVERIFY(QFileInfo(strLink).isSymLink());
    FactoryParams shared;
    QCOMPARE(ReadFactoryParamFile(shared, strShared), ParamFileStatus::Loaded);
    QCOMPARE(shared.motor[0].size, 640.0);
    struct stat status {};
    QCOMPARE(::stat(QFile::encodeName(strShared).constData(), &status), 0);
    QCOMPARE(status.st_mode & 07777, 0640u);
    QCOMPARE(CParamBackups::List(strShared).size(), 1);

    // A file of another owner keeps its owner (only root may give a file away).
    if (::geteuid() == 0) {
        QCOMPARE(::chown(QFile::encodeName(strShared).constData(), 65534, 65534), 0);
        run = Tool({"set", strLink, "MOTOR_SIZE_1=660"});
        QCOMPARE(run.nExit, 0);
        QCOMPARE(::stat(QFile::encodeName(strShared).constData(), &status), 0);
        QCOMPARE(status.st_uid, uid_t(65534));
        QCOMPARE(status.st_gid, gid_t(65534));
        QCOMPARE(status.st_mode & 07777, 0640u);
    }

    // Read-only (0444): refused, whoever runs it.
    const QByteArray before = ReadBytes(strShared);
    QVERIFY(QFile::setPermissions(strShared, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
    run = Tool({"set", strLink, "MOTOR_SIZE_1=320"});
    QCOMPARE(run.nExit, 2);
    QCOMPARE(run.strErr, QStringLiteral("factoryparams: %1: read-only; it is unchanged\n").arg(strLink));
    QCOMPARE(ReadBytes(strShared), before);
}

void TestParamsTool::setThatChangesNothingWritesNothingAndDryRunNothingAtAll()
{
    const QString strPath = Write("machine.ini", FactoryParams());
    const QByteArray before = ReadBytes(strPath);
    const QDateTime written = QFileInfo(strPath).lastModified();
    const auto inode = [&strPath] {
        struct stat status {};
        return ::stat(QFile::encodeName(strPath).constData(), &status) == 0 ? status.st_ino : 0;
    };
    const auto nInode = inode();
    Run run = Tool({"set", strPath, "MOTOR_SPEED_MAX_1=1000", "LASER_COUNT=1.0"});
    QCOMPARE(run.nExit, 0);
    QCOMPARE(run.strOut, strPath + ": unchanged (it holds these values already)\n");
    run = Tool({"set", "--dry-run", strPath, "MOTOR_SPEED_MAX_1=1200"});
    QCOMPARE(run.nExit, 0);
    QCOMPARE(run.strOut.simplified(),
             QStringLiteral("would change: MOTOR_SPEED_MAX_1 Max Speed(mm/s), X: 1000 → 1200 mm/s"));
    QCOMPARE(ReadBytes(strPath), before);
    QCOMPARE(QFileInfo(strPath).lastModified(), written);
    QCOMPARE(inode(), nInode);
    QVERIFY(!QFileInfo::exists(CParamBackups::Directory(strPath)));
}

void TestParamsTool::twoSetsAtOnceLoseNoChange()
{
    // Each of two processes sets, one run at a time, 18 fields of its own
    // to 7: a change lost between another's reading and writing leaves a
    // field that is not 7 at the end.
    const QString strPath = Write("shared.ini", FactoryParams());
    const QStringList fields{"PULSE_PER_MM", "SIZE", "ZERO_OFFSET", "SPEED_JUMP", "SPEED_MAX",
                             "ACC_MAX", "ACC_URGENT_STOP", "ACC_KEY", "SPEED_KEY_JUMP"};
    QList<QProcess*> writers;
    QStringList all;
    for (const QList<int>& axes : {QList<int>{1, 2}, QList<int>{3, 4}}) {
        QStringList keys;
        for (const int nAxis : axes)
            for (const QString& strField : fields)
                keys << QStringLiteral("MOTOR_%1_%2").arg(strField).arg(nAxis);
        all << keys;
        auto* pWriter = new QProcess(this);
        pWriter->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        pWriter->start("/bin/sh", QStringList{"-c",
                                              "tool=$1; file=$2; shift 2; for key; do \"$tool\" set \"$file\" "
                                              "\"$key=7\" >/dev/null || exit 1; done",
                                              "sh", QCoreApplication::applicationDirPath() + "/factoryparams", strPath}
                                      + keys);
        writers << pWriter;
    }
    for (QProcess* pWriter : writers) {
        QVERIFY(pWriter->waitForFinished(120000));
        QCOMPARE(pWriter->exitStatus(), QProcess::NormalExit);
        QCOMPARE(pWriter->exitCode(), 0);
    }
    FactoryParams last;
    QCOMPARE(ReadFactoryParamFile(last, strPath), ParamFileStatus::Loaded);
    QStringList lost;
    for (const QString& strKey : all)
        if (FactoryParamKey::ValueOf(last, strKey) != 7.0)
            lost << strKey;
    QVERIFY2(lost.isEmpty(), qPrintable("lost: " + lost.join(' ')));
    QCOMPARE(CParamBackups::List(strPath).size(), qMin(36, int(CParamBackups::kKept)));
}

void TestParamsTool::fleetDiffAndCheckNameEveryFileTheyCouldNotRead()
{
    FactoryParams reference;
    const QString strReference = Write("model.ini", reference);
    QVERIFY(!Write("fleet/good.ini", reference).isEmpty());
    QVERIFY(!WriteBytes("fleet/empty.ini", "").isEmpty());
    QVERIFY(!WriteBytes("fleet/other.ini", "[FACTORY_PARAM]\nFILE_FLAG=__OTHER__\n").isEmpty());
    // A name that is not valid UTF-8: read all the same, named with \xNN.
    {
        const QByteArray name = QFile::encodeName(m_pDir->filePath("fleet/")) + "m\xff.ini";
        QVERIFY(::link(QFile::encodeName(strReference).constData(), name.constData()) == 0);
    }
    // A machine whose file lacks eight keys.
    QByteArray text = ReadBytes(strReference);
    for (const char* szKey : {"MOTOR_SIZE_1=", "MOTOR_SIZE_2=", "MOTOR_SIZE_3=", "MOTOR_SIZE_4=", "LASER_POWER_1=",
                              "LASER_POWER_2=", "MACHINE_BLOW=", "SPEED_CUT_ACC_WORK="}) {
        const qsizetype nAt = text.indexOf(szKey);
        QVERIFY(nAt >= 0);
        text.remove(nAt, text.indexOf('\n', nAt) - nAt + 1);
    }
    const QString strShort = WriteBytes("short.ini", text);

    Run run = Tool({"diff", strReference, strShort});
    QCOMPARE(run.nExit, 1);
    QCOMPARE(run.strOut.count("→ (missing)"), 8);

    run = Tool({"fleet", strReference, "fleet"});
    QCOMPARE(run.nExit, 2);
    QVERIFY2(run.strOut.startsWith("2 machine(s) compared with " + strReference
                                   + ": 0 differ, in 0 field(s); 2 file(s) could not be read"),
             qPrintable(run.strOut));
    QCOMPARE(run.strErr.split('\n', Qt::SkipEmptyParts),
             (QStringList{"factoryparams: fleet/empty.ini: not a parameter file (no FILE_FLAG=__FACTORY_PARAM__ in "
                          "[FACTORY_PARAM])",
                          "factoryparams: fleet/other.ini: not a parameter file (no FILE_FLAG=__FACTORY_PARAM__ in "
                          "[FACTORY_PARAM])"}));
    run = Tool({"fleet", "--json", strReference, "fleet", strShort});
    QCOMPARE(run.nExit, 2);
    const QJsonDocument document = QJsonDocument::fromJson(run.strOut.toUtf8());
    QCOMPARE(document["machines"].toInt(), 3);
    QCOMPARE(document["differing"].toInt(), 1);
    QCOMPARE(document["fields"].toArray().size(), 8);
    QCOMPARE(document["fields"][0]["machines"][0]["missing"].toBool(), true);
    const QJsonArray skipped = document["skipped"].toArray();
    QCOMPARE(skipped.size(), 2);
    QCOMPARE(skipped[0]["file"].toString(), QStringLiteral("fleet/empty.ini"));
    QVERIFY(skipped[0]["reason"].toString().startsWith("not a parameter file"));

    // The machine with the odd name was read, and is named as it is.
    run = Tool({"check", "fleet"});
    QCOMPARE(run.nExit, 2);
    QVERIFY2(run.strOut.contains("fleet/m\\xff.ini: ok\n"), qPrintable(run.strOut));
    QVERIFY(run.strOut.contains("fleet/good.ini: ok\n"));

    // An empty folder: nothing was compared, and that is no success.
    QVERIFY(QDir().mkpath(m_pDir->filePath("nothing")));
    run = Tool({"fleet", strReference, "nothing"});
    QCOMPARE(run.nExit, 2);
    QCOMPARE(run.strErr, QStringLiteral("factoryparams: nothing: a folder with no .ini file in it\n"));
}

void TestParamsTool::standardInputPipesListsAndAFullOutput()
{
    const QString strPath = Write("machine.ini", FactoryParams());
    const QByteArray bytes = ReadBytes(strPath);
    // "-" is standard input.
    Run run = Tool({"diff", strPath, "-"}, 0, bytes);
    QCOMPARE(run.nExit, 0);
    QCOMPARE(run.strErr, QString());
    run = Tool({"show", "-"}, 0, Edited(bytes, {{"MOTOR_SIZE_1=900\n", "MOTOR_SIZE_1=640\n"}}));
    QCOMPARE(run.nExit, 0);
    QVERIFY(run.strOut.contains(QRegularExpression("MOTOR_SIZE_1 +Move Distance\\(mm\\), X +640 mm\n")));
    // A pipe, as the shell's <(...) gives it.
    const QString strTool = QCoreApplication::applicationDirPath() + "/factoryparams";
    QProcess shell;
    shell.start("/bin/bash", {"-c", "\"$0\" diff \"$1\" <(cat \"$1\"); echo \"exit $?\"", strTool, strPath});
    QVERIFY(shell.waitForFinished(60000));
    QCOMPARE(QString::fromUtf8(shell.readAllStandardOutput()), QStringLiteral("exit 0\n"));
    // A FIFO that nobody writes to is empty, not a wait without end.
    const QString strFifo = m_pDir->filePath("lonely.fifo");
    QCOMPARE(::mkfifo(QFile::encodeName(strFifo).constData(), 0600), 0);
    run = Tool({"check", strFifo});
    QCOMPARE(run.nExit, 2);
    QVERIFY2(run.strErr.startsWith("factoryparams: " + strFifo + ": "), qPrintable(run.strErr));
    // A list of files on standard input.
    const QString strOther = Write("other.ini", FactoryParams());
    run = Tool({"check", "--files-from", "-"}, 0, (strPath + "\n" + strOther + "\n").toUtf8());
    QCOMPARE(run.nExit, 0);
    QCOMPARE(run.strOut, strPath + ": ok\n" + strOther + ": ok\n");
    // A list from a pipe the shell gives, and from a FIFO nobody writes to: read, and an empty list at once.
    shell.start("/bin/bash", {"-c", "\"$0\" check --files-from <(sleep 0.3; printf '%s\\n' \"$1\"); echo \"exit $?\"",
                              strTool, strPath});
    QVERIFY(shell.waitForFinished(60000));
    QCOMPARE(QString::fromUtf8(shell.readAllStandardOutput()), strPath + ": ok\nexit 0\n");
    QElapsedTimer listTimer;
    listTimer.start();
    run = Tool({"check", "--files-from", strFifo});
    QVERIFY2(listTimer.elapsed() < 20000, qPrintable(QString::number(listTimer.elapsed())));
    QCOMPARE(run.strOut, QString());
    QVERIFY2(run.nExit != 0, qPrintable(run.strErr));
    // A missing file is exit 2, on standard error.
    run = Tool({"check", "nope.ini"});
    QCOMPARE(run.nExit, 2);
    QCOMPARE(run.strOut, QString());
    QCOMPARE(run.strErr, QStringLiteral("factoryparams: nope.ini: no such file\n"));
    // Output that cannot be written fails the command.
    run = Tool({"show", strPath}, 0, {}, "/dev/full");
    QCOMPARE(run.nExit, 2);
    QCOMPARE(run.strErr, QStringLiteral("factoryparams: standard output could not be written\n"));
}

void TestParamsTool::aModelGatesCalibratedMachinesWithIgnoreAndTolerance()
{
    FactoryParams model;
    const QString strModel = Write("model.ini", model);
    for (int i = 1; i <= 4; ++i) {
        FactoryParams machine = model;
        // Every machine has its own calibrated steps.
        machine.motor[0].pulsePerMm = 7.8 + i * 0.001;
        machine.motor[1].pulsePerMm = 7.9 + i * 0.001;
        // Within 0.5 mm/s of the model, and one machine well off it.
        machine.motor[0].speedMax += i == 3 ? 40.0 : 0.25;
        QVERIFY(!Write(QStringLiteral("line/m%1.ini").arg(i), machine).isEmpty());
    }
    // Without options every machine differs.
    Run run = Tool({"fleet", strModel, "line"});
    QCOMPARE(run.nExit, 1);
    QVERIFY2(run.strOut.startsWith("4 machine(s) compared with " + strModel + ": 4 differ, in 3 field(s)\n"),
             qPrintable(run.strOut));
    // The steps left out, the speed within its tolerance: only m3 differs.
    run = Tool({"fleet", "--ignore", "MOTOR_PULSE_PER_MM_*", "--tolerance", "MOTOR_SPEED_MAX_*=0.5", strModel, "line"});
    QCOMPARE(run.nExit, 1);
    QCOMPARE(run.strOut.split('\n', Qt::SkipEmptyParts),
             (QStringList{"4 machine(s) compared with " + strModel + ": 1 differ, in 1 field(s)",
                          "MOTOR_SPEED_MAX_1  Max Speed(mm/s), X: 1 of 4 machine(s) differ from 1000 mm/s",
                          "    line/m3.ini  1040 mm/s"}));
    // A tolerance for every key, and diff takes the same options.
    run = Tool({"fleet", "--ignore", "MOTOR_PULSE_PER_MM_*", "--tolerance", "50", strModel, "line"});
    QCOMPARE(run.nExit, 0);
    run = Tool({"diff", "--ignore", "MOTOR_PULSE_PER_MM_1", "--ignore", "MOTOR_PULSE_PER_MM_2", "--tolerance", "0.5",
                strModel, "line/m1.ini"});
    QCOMPARE(run.nExit, 0);
    QCOMPARE(run.strOut, QString());
    run = Tool({"diff", "--tolerance", "0.01", strModel, "line/m1.ini"});
    QCOMPARE(run.nExit, 1);
    QCOMPARE(run.strOut.count('\n'), 3);
    // Nonsense is refused, with nothing compared.
    run = Tool({"fleet", "--tolerance", "X=-1", strModel, "line"});
    QCOMPARE(run.nExit, 2);
    QCOMPARE(run.strOut, QString());
    QVERIFY2(run.strErr.contains("--tolerance \"X=-1\" is not [KEY-PATTERN=]VALUE"), qPrintable(run.strErr));
}

void TestParamsTool::fleetPerMachineCsvReportAndQuiet()
{
    FactoryParams model;
    const QString strModel = Write("model.ini", model);
    FactoryParams m2 = model;
    m2.motor[0].speedMax = 1200.0;
    m2.motor[0].pulsePerMm = 7.9;
    QVERIFY(!Write("line/m1.ini", model).isEmpty());
    QVERIFY(!Write("line/m2.ini", m2).isEmpty());
    QVERIFY(!WriteBytes("line/m3.ini", "").isEmpty());
    const QString strWhy = "not a parameter file (no FILE_FLAG=__FACTORY_PARAM__ in [FACTORY_PARAM])";

    Run run = Tool({"fleet", "--per-machine", "model.ini", "line"});
    QCOMPARE(run.nExit, 2);
    QCOMPARE(run.strOut.split('\n', Qt::SkipEmptyParts),
             (QStringList{"line/m1.ini: pass", "line/m2.ini: fail, 2 field(s): MOTOR_PULSE_PER_MM_1=7.9, MOTOR_SPEED_MAX_1=1200",
                          "line/m3.ini: not read (" + strWhy + ")",
                          "2 machine(s) compared with model.ini: 1 differ, in 2 field(s); 1 file(s) could not be read "
                          "(named on standard error)"}));
    QCOMPARE(run.strErr, "factoryparams: line/m3.ini: " + strWhy + "\n");

    run = Tool({"fleet", "--csv", "--ignore", "MOTOR_PULSE_PER_MM_*", "model.ini", "line"});
    QCOMPARE(run.nExit, 2);
    QCOMPARE(run.strOut, "file,result,differences,reason\nline/m1.ini,pass,,\nline/m2.ini,fail,MOTOR_SPEED_MAX_1=1200,\n"
                         "line/m3.ini,unread,," + strWhy + "\n");

    // The signed report: when, which tool, which reference (with its checksum), which options, every machine.
    QFile file(strModel);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray sha = QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256).toHex();
    run = Tool({"fleet", "--report", "--ignore", "MOTOR_PULSE_PER_MM_*", "model.ini", "line/m1.ini", "line/m2.ini"});
    QCOMPARE(run.nExit, 1);
    const QStringList lines = run.strOut.split('\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 9);
    QCOMPARE(lines[0], QStringLiteral("factoryparams fleet report"));
    QVERIFY2(QDateTime::fromString(lines[1].mid(6), Qt::ISODate).secsTo(QDateTime::currentDateTime()) < 120, qPrintable(lines[1]));
    QCOMPARE(lines[2], QStringLiteral("tool: factoryparams " FACTORYMGR_VERSION));
    QCOMPARE(lines[3], "reference: model.ini (SHA-256 " + QString::fromLatin1(sha) + ")");
    QCOMPARE(lines[4], QStringLiteral("ignored: MOTOR_PULSE_PER_MM_*"));
    QCOMPARE(lines[5], QStringLiteral("tolerances: none"));
    QCOMPARE(lines[6], QStringLiteral("line/m1.ini: pass"));
    QCOMPARE(lines[7], QStringLiteral("line/m2.ini: fail, 1 field(s): MOTOR_SPEED_MAX_1=1200"));

    // --quiet: only the exit code.
    run = Tool({"fleet", "--quiet", "model.ini", "line/m1.ini", "line/m2.ini"});
    QCOMPARE(run.nExit, 1);
    QCOMPARE(run.strOut, QString());
    run = Tool({"fleet", "--quiet", "model.ini", "line/m1.ini"});
    QCOMPARE(run.nExit, 0);
    QCOMPARE(run.strOut, QString());
}

void TestParamsTool::applyWritesTheModelAndKeepsEachMachinesCalibration()
{
    FactoryParams model;
    model.motor[0].speedMax = 1100.0;
    model.laser.lasers[0].powerMax = 95.0;
    const QString strModel = Write("model.ini", model);
    QList<QByteArray> before;
    for (int i = 1; i <= 3; ++i) {
        FactoryParams machine;   // the old model
        machine.motor[0].pulsePerMm = 7.8 + i * 0.01;
        machine.motor[1].pulsePerMm = 7.9 + i * 0.01;
        if (i == 2)
            machine.motor[0].speedMax = 1100.0;   // has this one already
        const QString strPath = Write(QStringLiteral("line/m%1/FactoryParam.ini").arg(i), machine);
        QByteArray text = ReadBytes(strPath);
        if (i == 3)
            text = "; QV-0003\n" + text;   // a comment nobody may lose
        WriteBytes(QStringLiteral("line/m%1/FactoryParam.ini").arg(i), text);
        before << text;
    }
    // --dry-run: said, not done.
    Run run = Tool({"apply", "--dry-run", "--ignore", "MOTOR_PULSE_PER_MM_*", "model.ini", "line"});
    QCOMPARE(run.nExit, 0);
    QCOMPARE(run.strOut.count("would change: "), 5);
    for (int i = 1; i <= 3; ++i)
        QCOMPARE(ReadBytes(m_pDir->filePath(QStringLiteral("line/m%1/FactoryParam.ini").arg(i))), before[i - 1]);

    run = Tool({"apply", "--ignore", "MOTOR_PULSE_PER_MM_*", "model.ini", "line"});
    QCOMPARE(run.nExit, 0);
    QCOMPARE(run.strErr, QString());
    QStringList lines = run.strOut.split('\n', Qt::SkipEmptyParts);
    lines.replaceInStrings(QRegularExpression(" +"), " ");
    QCOMPARE(lines, (QStringList{"line/m1/FactoryParam.ini: LASER_POWER_MAX_1 Max power(%), Laser 1: 100 → 95 %",
                                 "line/m1/FactoryParam.ini: MOTOR_SPEED_MAX_1 Max Speed(mm/s), X: 1000 → 1100 mm/s",
                                 "line/m2/FactoryParam.ini: LASER_POWER_MAX_1 Max power(%), Laser 1: 100 → 95 %",
                                 "line/m3/FactoryParam.ini: LASER_POWER_MAX_1 Max power(%), Laser 1: 100 → 95 %",
                                 "line/m3/FactoryParam.ini: MOTOR_SPEED_MAX_1 Max Speed(mm/s), X: 1000 → 1100 mm/s"}));
    // Every machine matches the model but for its own steps, which are as they were.
    run = Tool({"fleet", "--ignore", "MOTOR_PULSE_PER_MM_*", "model.ini", "line"});
    QCOMPARE(run.nExit, 0);
    for (int i = 1; i <= 3; ++i) {
        const QString strPath = m_pDir->filePath(QStringLiteral("line/m%1/FactoryParam.ini").arg(i));
        FactoryParams after;
        QCOMPARE(ReadFactoryParamFile(after, strPath), ParamFileStatus::Loaded);
        QCOMPARE(after.motor[0].pulsePerMm, 7.8 + i * 0.01);
        QCOMPARE(after.motor[1].pulsePerMm, 7.9 + i * 0.01);
        QCOMPARE(CParamBackups::List(strPath).size(), 1);
    }
    QVERIFY(ReadBytes(m_pDir->filePath("line/m3/FactoryParam.ini")).startsWith("; QV-0003\n"));
    // Again: nothing left to change, nothing written.
    run = Tool({"apply", "--ignore", "MOTOR_PULSE_PER_MM_*", "model.ini", "line"});
    QCOMPARE(run.nExit, 0);
    QCOMPARE(run.strOut.count("unchanged (it holds these values already)"), 3);
    // A machine file that cannot be read fails the run, and is named.
    QVERIFY(!WriteBytes("line/m4/FactoryParam.ini", "").isEmpty());
    run = Tool({"apply", "--ignore", "MOTOR_PULSE_PER_MM_*", "model.ini", "line"});
    QCOMPARE(run.nExit, 2);
    QVERIFY2(run.strErr.contains("line/m4/FactoryParam.ini: not a parameter file"), qPrintable(run.strErr));
}

void TestParamsTool::aLongFleetOnATerminalSaysHowFarItIs()
{
    // 1,000 machines, on a terminal (script(1) gives the tool one).
    const QString strModel = Write("model.ini", FactoryParams());
    const QByteArray model = ReadBytes(strModel);
    QVERIFY(QDir().mkpath(m_pDir->filePath("line")));
    for (int i = 0; i < 1000; ++i)
        QVERIFY(!WriteBytes(QStringLiteral("line/m%1.ini").arg(i, 4, 10, QLatin1Char('0')), model).isEmpty());
    const QString strCommand = QStringLiteral("'%1' fleet model.ini line >/dev/null")
                                   .arg(QCoreApplication::applicationDirPath() + "/factoryparams");
    QProcess terminal;
    terminal.setWorkingDirectory(m_pDir->path());
    terminal.start("script", {"-qec", strCommand, "/dev/null"});
    QVERIFY(terminal.waitForFinished(120000));
    const QByteArray shown = terminal.readAllStandardOutput();
    QVERIFY2(terminal.exitCode() == 0, shown.right(4000).constData());
    QVERIFY2(shown.contains(" of 1000 files read"), shown.constData());
    // Not on a terminal: no progress line in a log.
    const Run run = Tool({"fleet", "model.ini", "line"});
    QCOMPARE(run.nExit, 0);
    QCOMPARE(run.strErr, QString());
}

void TestParamsTool::showJsonThenSetThenDiffIsARoundTrip()
{
    // A machine with values of its own in every section, all in range.
    FactoryParams machine;
    machine.laser.laserCount = 2;
    machine.laser.lasers[1].type = 3;
    machine.laser.lasers[0].frequency = 30000.0;
    machine.motor[0].pulsePerMm = 7.886270000000001;   // every digit must survive
    machine.motor[2].size = 123.456;
    machine.machine.motiveMode = 2;
    machine.machine.blow = true;
    machine.speed.sweepAccY = 1234.5;
    const QString strMachine = Write("machine.ini", machine);
    const Run show = Tool({"show", "--json", strMachine});
    QCOMPARE(show.nExit, 0);
    QStringList assignments;
    for (const QJsonValue& field : QJsonDocument::fromJson(show.strOut.toUtf8())["fields"].toArray())
        assignments << field["key"].toString() + "="
                + QString::number(field["value"].toDouble(), 'g', QLocale::FloatingPointShortest);
    QCOMPARE(assignments.size(), ExpectedKeys().size() - 2);
    const QString strCopy = Write("copy.ini", FactoryParams());
    const Run set = Tool(QStringList{"set", strCopy} + assignments);
    QCOMPARE(set.nExit, 0);
    QCOMPARE(set.strErr, QString());
    const Run diff = Tool({"diff", strMachine, strCopy});
    QCOMPARE(diff.strOut, QString());
    QCOMPARE(diff.nExit, 0);
}

void TestParamsTool::setWaitsForTheLockThenSaysWhoHoldsIt()
{
    const QString strPath = Write("machine.ini", FactoryParams());
    const QByteArray before = ReadBytes(strPath);
    // A save that never ends holds the lock (this process, as a host would).
    const CParamFileLock lock(strPath);
    QVERIFY(lock.Taken());
    QElapsedTimer timer;
    timer.start();
    const Run run = Tool({"set", strPath, "MOTOR_SIZE_1=640"});
    QVERIFY2(timer.elapsed() >= 9000, "set waited for the lock");
    QCOMPARE(run.nExit, 2);
    QCOMPARE(run.strErr, QStringLiteral("factoryparams: %1: process %2 (tst_paramstool) has been using it for 10 s; it is "
                                        "unchanged\n")
                             .arg(strPath)
                             .arg(QCoreApplication::applicationPid()));
    QCOMPARE(ReadBytes(strPath), before);
}

void TestParamsTool::asAnotherUserUnreadableFilesAndFoldersAreNamed()
{
    // Run as root here: the tool then runs as nobody (setpriv), the way a
    // person without the rights would meet these files. Elsewhere the files
    // are unreadable to the tester already.
    QStringList prefix;
    if (::geteuid() == 0) {
        if (QStandardPaths::findExecutable("setpriv").isEmpty())
            QSKIP("root, and no setpriv to run the tool as another user");
        prefix = {"--reuid=65534", "--regid=65534", "--clear-groups", QCoreApplication::applicationDirPath() + "/factoryparams"};
        QVERIFY(QFile::setPermissions(m_pDir->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner
                                                          | QFile::ReadOther | QFile::ExeOther));
    }
    const QString strModel = Write("model.ini", FactoryParams());
    QVERIFY(QFile::setPermissions(strModel, QFile::ReadOwner | QFile::ReadOther));
    QVERIFY(QDir().mkpath(m_pDir->filePath("fleet/closed")));
    QVERIFY(QFile::setPermissions(m_pDir->filePath("fleet"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner
                                                                  | QFile::ReadOther | QFile::ExeOther));
    const QString strSecret = Write("fleet/secret.ini", FactoryParams());
    QVERIFY(QFile::setPermissions(strSecret, QFile::ReadOwner | QFile::WriteOwner));
    QVERIFY(!Write("fleet/closed/m1.ini", FactoryParams()).isEmpty());
    QVERIFY(QFile::setPermissions(m_pDir->filePath("fleet/closed"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QProcess tool;
    tool.setWorkingDirectory(m_pDir->path());
    if (prefix.isEmpty())
        tool.start(QCoreApplication::applicationDirPath() + "/factoryparams", {"fleet", "model.ini", "fleet"});
    else
        tool.start("setpriv", prefix + QStringList{"fleet", "model.ini", "fleet"});
    QVERIFY(tool.waitForFinished(60000));
    const QString strErr = QString::fromUtf8(tool.readAllStandardError());
    QCOMPARE(tool.exitCode(), 2);
    QCOMPARE(strErr.split('\n', Qt::SkipEmptyParts),
             (QStringList{"factoryparams: fleet/closed: a folder that cannot be read: permission denied",
                          "factoryparams: fleet/secret.ini: permission denied"}));
}

void TestParamsTool::aValueInTheSettingsLayersOwnEncodingReadsAsText()
{
    // A value nested deep in the settings layer's own encoding would take the
    // stack down were it decoded; it reads as the text it is, as "junk" does.
    FactoryParams record;
    record.motor[0].speedMax = 1234.0;
    const QString strPlain = Write("fleet/m1/FactoryParam.ini", record);
    const QByteArray plain = ReadBytes(strPlain);
    QVERIFY(plain.contains("\nMOTOR_SPEED_MAX_1=1234\n"));
    QByteArray deep = plain;
    deep.replace("\nMOTOR_SPEED_MAX_1=1234\n", "\nMOTOR_SPEED_MAX_1=" + HostileFiles::NestedVariant() + "\n");
    QByteArray junk = plain;
    junk.replace("\nMOTOR_SPEED_MAX_1=1234\n", "\nMOTOR_SPEED_MAX_1=junk\n");
    const QString strDeep = WriteBytes("fleet/m2/FactoryParam.ini", deep);
    const QString strJunk = WriteBytes("junk.ini", junk);

    Run deepShow = Tool({"show", strDeep});
    const Run junkShow = Tool({"show", strJunk});
    QCOMPARE(deepShow.nExit, 0);
    QCOMPARE(deepShow.strOut, junkShow.strOut);
    Run run = Tool({"check", strDeep});
    QCOMPARE(run.nExit, 1);
    QVERIFY2(run.strOut.contains(strDeep + ": MOTOR_SPEED_MAX_1=@Variant(...): not a number\n"), qPrintable(run.strOut));
    run = Tool({"diff", strDeep, strJunk});
    QCOMPARE(run.nExit, 0);
    run = Tool({"diff", strPlain, strDeep});
    QCOMPARE(run.nExit, 1);
    QVERIFY2(run.strOut.contains("MOTOR_SPEED_MAX_1"), qPrintable(run.strOut));
    // One such file in a fleet is one machine among the others.
    run = Tool({"fleet", strPlain, m_pDir->filePath("fleet")});
    QCOMPARE(run.nExit, 1);   // it differs in that field
    QVERIFY2(run.strOut.startsWith("1 machine(s) compared") && run.strOut.contains("fleet/m2/FactoryParam.ini  0 mm/s"),
             qPrintable(run.strOut + run.strErr));
    // The file itself is never touched.
    QCOMPARE(ReadBytes(strDeep), deep);
}

FACTORYMGR_TEST_MAIN(TestParamsTool)
namespace {
// The English words left in a text once what is no language is taken out:
// file keys and other words in capitals (FILE, KEY=VALUE), options, the
// commands and the tool's name, units, file names, numbers and dates.
QStringList EnglishWords(QString strText, const QStringList& allowed)
{
    static const QRegularExpression kNoLanguage(
        QStringLiteral("--?[A-Za-z][A-Za-z-]*|\\b_*[A-Z][A-Z0-9_]*\\b|\"[a-z]+\"|\\b[0-9a-f]{64}\\b|\\d{4}-\\d\\d-\\d\\dT[\\d:]+"
                       "|\\b(?:show|diff|check|set|fleet|apply|factoryparams|FactoryMgr|FactoryParam|shell|ini|Backups|"
                       "yyyyMMddHHmmss|nan|inf|NaN)\\b"));
    strText.remove(kNoLanguage);
    for (const QString& strAllowed : allowed)
        strText.remove(QRegularExpression("\\b" + QRegularExpression::escape(strAllowed) + "\\b"));
    QStringList words;
    static const QRegularExpression kWord(QStringLiteral("[A-Za-z]{2,}"));
    for (auto it = kWord.globalMatch(strText); it.hasNext();)
        words << it.next().captured();
    words.removeDuplicates();
    return words;
}
}

void TestParamsTool::everyTextInTheLanguageOfTheLocale()
{
    // File names with no English in them, so that what is left is the tool's own words.
    FactoryParams model;
    const QString strModel = Write(QStringLiteral("样板.ini"), model);
    FactoryParams other = model;
    other.motor[0].speedMax = 900.0;
    other.laser.laserCount = 2;
    const QString strOther = Write(QStringLiteral("机器/一/FactoryParam.ini"), other);
    QVERIFY(!Write(QStringLiteral("机器/二/FactoryParam.ini"), model).isEmpty());
    QVERIFY(!WriteBytes(QStringLiteral("机器/三/FactoryParam.ini"), "[其他]\n值=1\n").isEmpty());
    const QString strOdd = Write(QStringLiteral("问题.ini"), model);
    QVERIFY(!strModel.isEmpty() && !strOther.isEmpty() && !strOdd.isEmpty());
    {
        QSettings settings(strOdd, QSettings::IniFormat);
        settings.setValue("FACTORY_PARAM_LASER/LASER_COUNT", "3");
        settings.setValue("FACTORY_PARAM_MOTOR/MOTOR_ACC_KEY_4", "junk");
        settings.setValue("FACTORY_PARAM_MOTOR/MOTOR_SIZE_2", "1.5e999");
        settings.setValue("FACTORY_PARAM_MOTOR/NO_SUCH_KEY", "1");
        settings.setValue("FACTORY_PARAM/CREATE_TIME", "yesterday");
        settings.remove("FACTORY_PARAM_SPEED/SPEED_SWEEP_ACC_X");
    }
    QByteArray odd = ReadBytes(strOdd);
    odd.append("\n[FACTORY_PARAM_LASER]\nLASER1_TYPE=1\n");
    QVERIFY(!WriteBytes(QStringLiteral("问题.ini"), odd).isEmpty());

    const QList<QStringList> commands{
        {"--help"},
        {"show", "--help"}, {"diff", "--help"}, {"check", "--help"}, {"set", "--help"}, {"fleet", "--help"},
        {"apply", "--help"},
        {"--bogus"}, {"frob"}, {"show"}, {"check"},
        {"show", strOther},
        {"show", strOdd},
        {"diff", strModel, strOther},
        {"diff", "--ignore", "[", strModel, strOther},
        {"diff", "--tolerance", "x", strModel, strOther},
        {"check", strModel, strOdd, QStringLiteral("无.ini"), QStringLiteral("机器")},
        {"set", strOther, "NO_KEY=1", "MOTOR_MAX_SPEED_X=abc", "MOTOR_SIZE_2=-1", "LASER_COUNT=1.5", "oops"},
        {"set", strOdd, "MOTOR_SIZE_2=1"},
        {"set", "--repair", "--dry-run", strOdd},
        {"set", strModel, "LASER_COUNT=1"},
        {"set", "-", "LASER_COUNT=1"},
        {"fleet", strModel, QStringLiteral("机器")},
        {"fleet", "--per-machine", strModel, QStringLiteral("机器")},
        {"fleet", "--report", "--ignore", "MOTOR_*", strModel, QStringLiteral("机器")},
        {"apply", "--dry-run", strModel, QStringLiteral("机器")},
        {"apply", strOdd, QStringLiteral("机器")},
    };
    QStringList units;
    for (const FactoryParamKey& key : FactoryParamKey::File())
        units << QString::fromUtf8(key.szUnit).split(QRegularExpression("[^A-Za-z]+"), Qt::SkipEmptyParts);
    units.removeDuplicates();
    // The person's own words, which the tool gives back as they were: values in the files, a bad option.
    const QStringList given{"junk", "yesterday", "bogus", "frob", "oops", "abc"};

    QStringList left;
    for (const QStringList& command : commands) {
        m_environment = QStringList{"LC_ALL=C.UTF-8", "LANGUAGE="};
        const Run english = Tool(command);
        m_environment = QStringList{"LC_ALL=zh_CN.UTF-8", "LANGUAGE="};
        const Run chinese = Tool(command);
        const QString strCommand = command.join(' ').remove(m_pDir->path() + "/");
        QVERIFY2(english.nExit >= 0 && chinese.nExit >= 0, qPrintable(strCommand));
        // The language changes the words, never the result.
        QVERIFY2(chinese.nExit == english.nExit, qPrintable(strCommand));
        const QString strPath = m_pDir->path() + "/";
        const QString strEnglish = QString(english.strOut + english.strErr).remove(strPath);
        const QString strChinese = QString(chinese.strOut + chinese.strErr).remove(strPath);
        // The check finds English where there is English: it can fail.
        QVERIFY2(!EnglishWords(strEnglish, units + given).isEmpty(), qPrintable(strCommand + ":\n" + strEnglish));
        const QStringList words = EnglishWords(strChinese, units + given);
        if (!words.isEmpty())
            left << QStringLiteral("%1: %2\n%3").arg(strCommand, words.join(' '), strChinese);
    }
    // The whole outputs, where a test failure message would cut them short.
    for (const QString& strLeft : left)
        qWarning().noquote() << strLeft;
    QVERIFY2(left.isEmpty(), qPrintable(QStringLiteral("%1 command(s) answer with English words").arg(left.size())));

    // On a terminal, show's values stand in one column in either language (a Chinese character takes two columns).
    m_environment = QStringList{"LC_ALL=zh_CN.UTF-8", "LANGUAGE="};
    const QStringList lines = Tool({"show", strModel}).strOut.split('\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), FactoryParamKey::File().size());
    for (const QString& strLine : lines) {
        // The value is the first number after the label column (labels hold digits only after a comma, "激光 1").
        const qsizetype nValue = strLine.indexOf(QRegularExpression(QStringLiteral("(?<=  )[-0-9]")), 29);
        int nColumns = 0;
        for (const QChar c : strLine.left(nValue))
            nColumns += c.unicode() >= 0x2E80 ? 2 : 1;
        QVERIFY2(nColumns == 74, qPrintable(QStringLiteral("%1 columns before the value: %2").arg(nColumns).arg(strLine)));
    }

    // LC_ALL=C is English whatever LANGUAGE says, as gettext has it; LANG alone is enough.
    m_environment = QStringList{"LC_ALL=C", "LANGUAGE=zh_CN"};
    QCOMPARE(Tool({"check", QStringLiteral("无.ini")}).strErr, QStringLiteral("factoryparams: 无.ini: no such file\n"));
    m_environment = QStringList{"LC_ALL=", "LANGUAGE=", "LC_MESSAGES=", "LANG=zh_CN.UTF-8"};
    QCOMPARE(Tool({"check", QStringLiteral("无.ini")}).strErr, QStringLiteral("factoryparams: 无.ini: 文件不存在\n"));
    m_environment = QStringList{"LC_ALL=de_DE.UTF-8", "LANGUAGE="};
    QCOMPARE(Tool({"check", QStringLiteral("无.ini")}).strErr, QStringLiteral("factoryparams: 无.ini: no such file\n"));
}

void TestParamsTool::aDamagedWordingTableLeavesEnglishAndSaysSo()
{
    // The tool as installed: bin/ beside the Resources/ it reads its wording from.
    const QString strTool = m_pDir->filePath("bin/factoryparams");
    QVERIFY(QDir().mkpath(m_pDir->filePath("bin")) && QDir().mkpath(m_pDir->filePath("Resources/Wording")));
    QVERIFY(QFile::copy(QCoreApplication::applicationDirPath() + "/factoryparams", strTool));
    QVERIFY(!WriteBytes("Resources/Wording/zh_CN.json", "{\"no such file\": \"文件不存在\"").isEmpty());
    m_strTool = strTool;
    m_environment = QStringList{"LC_ALL=zh_CN.UTF-8", "LANGUAGE="};
    Run run = Tool({"check", QStringLiteral("无.ini")});
    QCOMPARE(run.nExit, 2);
    QVERIFY2(run.strErr.startsWith("factoryparams: The language stays English: " + m_pDir->filePath("Resources/Wording/zh_CN.json") + ": "),
             qPrintable(run.strErr));
    QVERIFY2(run.strErr.endsWith("\nfactoryparams: 无.ini: no such file\n"), qPrintable(run.strErr));
    // The same table whole is taken.
    QVERIFY(!WriteBytes("Resources/Wording/zh_CN.json", "{\"no such file\": \"文件不存在\"}").isEmpty());
    run = Tool({"check", QStringLiteral("无.ini")});
    QCOMPARE(run.strErr, QStringLiteral("factoryparams: 无.ini: 文件不存在\n"));
    // No table for the language: English, and nothing said about it.
    m_environment = QStringList{"LC_ALL=fr_FR.UTF-8", "LANGUAGE="};
    run = Tool({"check", QStringLiteral("无.ini")});
    QCOMPARE(run.strErr, QStringLiteral("factoryparams: 无.ini: no such file\n"));
}

#include "tst_paramstool.moc"
