#include "TestMain.h"

#include "CParamBackups.h"
#include "FactoryParamIo.h"
#include "FactoryParamKeys.h"
#include "FactoryParams.h"
#include "ParamFileTestData.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QSettings>
#include <QTemporaryDir>

#include <csignal>
#include <cmath>
#include <limits>
#include <sys/resource.h>
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

private:
    struct Run
    {
        int nExit = -1;
        QString strOut;
        QString strErr;
    };
    Run Tool(const QStringList& arguments, qint64 nFileSizeLimit = 0);
    QString Write(const QString& strName, const FactoryParams& record);
    QString WriteBytes(const QString& strName, const QByteArray& bytes);
    QScopedPointer<QTemporaryDir> m_pDir;
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
}

TestParamsTool::Run TestParamsTool::Tool(const QStringList& arguments, qint64 nFileSizeLimit)
{
    QProcess process;
    process.setWorkingDirectory(m_pDir->path());
    if (nFileSizeLimit > 0) {
        // A disk that takes no more than nFileSizeLimit bytes per file.
        process.setChildProcessModifier([nFileSizeLimit] {
            std::signal(SIGXFSZ, SIG_IGN);
            rlimit limit{rlim_t(nFileSizeLimit), rlim_t(nFileSizeLimit)};
            setrlimit(RLIMIT_FSIZE, &limit);
        });
    }
    process.start(QCoreApplication::applicationDirPath() + "/factoryparams", arguments);
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

FACTORYMGR_TEST_MAIN(TestParamsTool)
#include "tst_paramstool.moc"
