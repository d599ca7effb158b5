#include "TestMain.h"

#include "CFactoryMgrApp.h"
#include "CParamDiff.h"
#include "CPropertyTable.h"
#include "CReadBackCheck.h"
#include "ComboBox.h"
#include "FactoryParamIo.h"
#include "FactoryParamKeys.h"
#include "FakeCard.h"
#include "FakeDevice.h"
#include "IFactoryMgr.h"
#include "ParamFileTestData.h"
#include "TabTestFixture.h"
#include "TableDriver.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <cstddef>
#include <map>
#include <set>

// The table that describes each field of the record, walked field by field
// against what the record, the dialog, the read-back check and the tool do.
namespace {
using Key = FactoryParamKey;

// Every member of the record, named here on its own, apart from the table:
// its place and width.
struct Span
{
    const char* szName;
    std::size_t nOffset;
    std::size_t nWidth;
};
#define SPAN(type, member) Span{#type "::" #member, offsetof(type, member), sizeof(type::member)}

std::vector<Span> RecordMembers()
{
    std::vector<Span> spans;
    const Span motor[] = {SPAN(MotorParams, directionPolar), SPAN(MotorParams, limitPolar),
                          SPAN(MotorParams, controlType),    SPAN(MotorParams, pwmEdge),
                          SPAN(MotorParams, keyDirection),   SPAN(MotorParams, pulsePerMm),
                          SPAN(MotorParams, size),           SPAN(MotorParams, zeroOffset),
                          SPAN(MotorParams, hardLimitProtect), SPAN(MotorParams, resetEnable),
                          SPAN(MotorParams, startupReset),   SPAN(MotorParams, speedJump),
                          SPAN(MotorParams, speedMax),       SPAN(MotorParams, accMax),
                          SPAN(MotorParams, accUrgentStop),  SPAN(MotorParams, accKey),
                          SPAN(MotorParams, speedKeyJump)};
    const Span laser[] = {SPAN(LaserParams, enabled),        SPAN(LaserParams, powerMin),
                          SPAN(LaserParams, powerMax),       SPAN(LaserParams, power),
                          SPAN(LaserParams, powerReduction), SPAN(LaserParams, frequency),
                          SPAN(LaserParams, burningFrequency), SPAN(LaserParams, burningWidth),
                          SPAN(LaserParams, switchSignal),   SPAN(LaserParams, waterProtect),
                          SPAN(LaserParams, type)};
    const Span section[] = {SPAN(LaserSection, laserCount), SPAN(LaserSection, reserved),
                            SPAN(LaserSection, laserMachineType)};
    const Span machine[] = {SPAN(MachineSection, machineType), SPAN(MachineSection, motiveMode),
                            SPAN(MachineSection, feedMode),    SPAN(MachineSection, machineZero),
                            SPAN(MachineSection, openProject), SPAN(MachineSection, blow),
                            SPAN(MachineSection, laserSpace),  SPAN(MachineSection, outageDelay)};
    const Span speed[] = {SPAN(SpeedSection, panelSpeedReset), SPAN(SpeedSection, sweepSpeedXStart),
                          SPAN(SpeedSection, sweepSpeedYStart), SPAN(SpeedSection, sweepSpeedNewline),
                          SPAN(SpeedSection, sweepAccX),       SPAN(SpeedSection, sweepAccY),
                          SPAN(SpeedSection, cutSpeedSpace),   SPAN(SpeedSection, cutSpeedCorner),
                          SPAN(SpeedSection, cutAccSpace),     SPAN(SpeedSection, cutAccCorner),
                          SPAN(SpeedSection, cutAccWork)};
    const auto addAt = [&spans](std::size_t nBase, const auto& members) {
        for (const Span& span : members)
            spans.push_back({span.szName, nBase + span.nOffset, span.nWidth});
    };
    for (int a = 0; a < 4; ++a)
        addAt(offsetof(FactoryParams, motor) + a * sizeof(MotorParams), motor);
    addAt(offsetof(FactoryParams, laser), section);
    for (int i = 0; i < 2; ++i)
        addAt(offsetof(FactoryParams, laser) + offsetof(LaserSection, lasers) + i * sizeof(LaserParams), laser);
    addAt(offsetof(FactoryParams, machine), machine);
    addAt(offsetof(FactoryParams, speed), speed);
    return spans;
}

std::size_t Width(const Key& key)
{
    return key.type == Key::TypeDouble ? sizeof(double) : key.type == Key::TypeInt ? sizeof(int32_t) : sizeof(bool);
}

const char* TableName(Key::Table table)
{
    switch (table) {
    case Key::TableMotor: return "tableWidget_motor";
    case Key::TableLaser: return "tableWidget_laser";
    case Key::TableSpeed: return "tableWidget_speed";
    case Key::TableMachine: return "tableWidget_machine";
    default: return "";
    }
}

// Two laser columns, the second an RF source, so that every laser row of
// both columns is open; values distinct from each other and from 7.
FactoryParams Record()
{
    FactoryParams record = ParamFileTestData::DistinctRecord();
    record.laser.laserCount = 2;
    record.laser.reserved = 0;
    record.laser.lasers[0].type = 0;
    record.laser.lasers[1].type = 2;
    record.laser.lasers[0].power = 60;
    record.laser.lasers[1].power = 130;
    for (MotorParams& motor : record.motor) {
        motor.directionPolar = 1;
        motor.controlType = 0;
        motor.pwmEdge = 1;
        motor.keyDirection = 0;
    }
    record.machine.motiveMode = 2;
    record.machine.machineZero = 1;
    return record;
}

// Where the dialog shows the key: (row, column) of its table; the Laser row by its identifier.
std::pair<int, int> CellOf(const Key& key, DlgFactoryMgr* pDialog)
{
    const int nRow = key.table == Key::TableLaser ? pDialog->LaserRowOfId(key.nRow) : key.nRow;
    return {nRow, key.Column()};
}

// Every marked cell of the four tables: (table, row, column).
std::set<std::tuple<int, int, int>> Marked(const TabTestFixture& f)
{
    std::set<std::tuple<int, int, int>> marked;
    for (int t = Key::TableMotor; t <= Key::TableMachine; ++t) {
        QTableWidget* pTable = f.Table(TableName(Key::Table(t)));
        for (int r = 0; r < pTable->rowCount(); ++r)
            for (int c = 1; c < pTable->columnCount(); ++c)
                if (CPropertyTable::IsMarked(pTable, r, c))
                    marked.insert({t, r, c});
    }
    return marked;
}
}

class TestFieldDescriptors : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void everyFieldHasExactlyOneDescriptor();
    void everyCellShowsTheFieldItsDescriptorNames();
    void everyRowShowsItsFieldAsDescribed();
    void anEditThroughEveryNumberCellReachesExactlyItsField();
    void theCheckMarksEveryCheckedFieldOnItsOwnRow_data();
    void theCheckMarksEveryCheckedFieldOnItsOwnRow();
    void theToolsLabelAndUnitAgreeWithTheDialog();
    void everyValueCellExplainsItsFieldInATooltip();

private:
    FakeCard m_card;
    FakeDevice m_device;
};

void TestFieldDescriptors::initTestCase()
{
    m_card.m_nCardType = 8;   // a laser card: each source set on its own
    m_device.m_pCard = &m_card;
    CFactoryMgrApp::GetInstance()->SetDevice(&m_device);
}

void TestFieldDescriptors::cleanupTestCase()
{
    CFactoryMgrApp::GetInstance()->SetDevice(nullptr);
}

void TestFieldDescriptors::everyFieldHasExactlyOneDescriptor()
{
    std::map<std::size_t, const Key*> byOffset;
    for (const Key& key : Key::All()) {
        QVERIFY2(byOffset.emplace(key.nOffset, &key).second, qPrintable(key.strKey + " shares its place"));
        QVERIFY(key.nOffset + Width(key) <= sizeof(FactoryParams));
    }
    const std::vector<Span> members = RecordMembers();
    QCOMPARE(Key::All().size(), qsizetype(members.size()));
    for (const Span& member : members) {
        const auto found = byOffset.find(member.nOffset);
        QVERIFY2(found != byOffset.end(), member.szName);
        QCOMPARE(Width(*found->second), member.nWidth);
    }
    // Every key of the file is one field; a field the file does not hold has no key.
    QSet<QString> keys;
    for (const Key& key : Key::File())
        keys << key.strKey;
    QCOMPARE(keys.size(), Key::File().size());
    QCOMPARE(Key::File().size() + 3, Key::All().size());   // the sources' enabled flags and the row shift

    // Writing a field through its descriptor changes its bytes and no other.
    for (const Key& key : Key::All()) {
        FactoryParams a;
        FactoryParams b = a;
        key.SetValue(b, key.Value(a) == 1.0 ? 0.0 : 1.0);
        const auto* pA = reinterpret_cast<const unsigned char*>(&a);
        const auto* pB = reinterpret_cast<const unsigned char*>(&b);
        for (std::size_t i = 0; i < sizeof(FactoryParams); ++i)
            if (pA[i] != pB[i])
                QVERIFY2(i >= key.nOffset && i < key.nOffset + Width(key), qPrintable(key.strKey));
        QVERIFY2(!key.Same(a, b), qPrintable(key.strKey));
    }
}

void TestFieldDescriptors::everyCellShowsTheFieldItsDescriptorNames()
{
    // Each cell with an editor shows one field, and each shown field has one cell.
    TabTestFixture f(Record());
    std::set<std::tuple<int, int, int>> described;
    for (const Key& key : Key::All()) {
        if (key.table == Key::TableNone) {
            QCOMPARE(key.editor, Key::EditorNone);
            continue;
        }
        const auto [nRow, nColumn] = CellOf(key, f.Dialog());
        QVERIFY2(nRow >= 0, qPrintable(key.strKey));
        QVERIFY2(described.insert({key.table, nRow, nColumn}).second, qPrintable(key.strKey));
        QCOMPARE(Key::AtCell(key.table, key.nRow, nColumn), &key);
        QTableWidget* pTable = f.Table(TableName(key.table));
        ComboBox* pCell = TableDriver::Cell(pTable, nRow, nColumn);
        QVERIFY2(pCell, qPrintable(key.strKey));
        QCOMPARE(pCell->mode() == ComboBox::ListMode, key.editor == Key::EditorList);
        // The row's label is the descriptor's.
        QCOMPARE(pTable->item(nRow, 0)->text(), QString::fromUtf8(key.szLabel));
    }
    int nCells = 0;
    for (const TableDriver::ValueCell& cell : TableDriver::ValueCells(f.Dialog())) {
        Q_UNUSED(cell)
        ++nCells;
    }
    QCOMPARE(nCells, int(described.size()));
}

void TestFieldDescriptors::everyRowShowsItsFieldAsDescribed()
{
    const FactoryParams record = Record();
    TabTestFixture f(record);
    int nChecked = 0;
    for (const Key& key : Key::All()) {
        if (key.table == Key::TableNone)
            continue;
        const auto [nRow, nColumn] = CellOf(key, f.Dialog());
        const QString strShown = TableDriver::Shown(f.Table(TableName(key.table)), nRow, nColumn);
        QString strExpected;
        if (key.editor == Key::EditorNumber) {
            strExpected = QString::number(key.ToShown(key.Value(record)), 'f', 2);
        } else if (key.strKey.startsWith("LASER_POWER_")) {
            strExpected = QString::number(int(key.Value(record)));   // the list holds the powers
        } else if (key.strKey.endsWith("_TYPE")) {
            strExpected = key.Value(record) == 0.0 ? "Glass" : "RF";   // RF is written as 2
        } else {
            strExpected = key.choices.value(int(key.Value(record)));
        }
        QVERIFY2(strShown == strExpected,
                 qPrintable(QStringLiteral("%1 shows \"%2\", not \"%3\"").arg(key.strKey, strShown, strExpected)));
        ++nChecked;
    }
    QCOMPARE(nChecked, 4 * 14 + 2 * 10 + 11 + 5);
}

void TestFieldDescriptors::anEditThroughEveryNumberCellReachesExactlyItsField()
{
    TabTestFixture f(Record());
    int nTaken = 0;
    for (const Key& key : Key::All()) {
        if (key.editor != Key::EditorNumber)
            continue;
        const auto [nRow, nColumn] = CellOf(key, f.Dialog());
        QTableWidget* pTable = f.Table(TableName(key.table));
        // A glass tube has no pre-ignition: its two rows are closed.
        if (!TableDriver::Cell(pTable, nRow, nColumn)->isEnabled()) {
            QVERIFY2(key.table == Key::TableLaser && (key.nRow == 7 || key.nRow == 8) && key.nIndex == 0,
                     qPrintable(key.strKey));
            continue;
        }
        const FactoryParams before = f.Collected();
        TableDriver::Type(pTable, nRow, nColumn, QStringLiteral("7"));
        if (QTest::currentTestFailed())
            return;
        const QList<SParamDifference> changed = CParamDiff::Compare(before, f.Collected());
        // The maximum speed and acceleration of Z and U never change.
        const bool bFixed = key.table == Key::TableMotor && key.nIndex >= 2 && (key.nRow == 10 || key.nRow == 11);
        if (bFixed) {
            QVERIFY2(changed.isEmpty(), qPrintable(key.strKey));
            continue;
        }
        QVERIFY2(changed.size() == 1, qPrintable(QStringLiteral("%1: %2 fields changed").arg(key.strKey).arg(changed.size())));
        QCOMPARE(changed.first().strKey, key.strKey);
        QCOMPARE(changed.first().dB, key.FromShown(7.0));
        ++nTaken;
    }
    QCOMPARE(nTaken, 4 * 9 - 4 + 4 + 6 + 11 + 1);
}

void TestFieldDescriptors::theCheckMarksEveryCheckedFieldOnItsOwnRow_data()
{
    QTest::addColumn<int>("nShift");
    QTest::newRow("no row shift") << 0;
    QTest::newRow("row shift") << 1;
}

void TestFieldDescriptors::theCheckMarksEveryCheckedFieldOnItsOwnRow()
{
    QFETCH(int, nShift);
    const FactoryParams opening = Record();
    TabTestFixture f(opening);
    int nChecked = 0;
    for (const Key& key : Key::All()) {
        FactoryParams before = opening;
        before.laser.reserved = nShift;
        FactoryParams readBack = before;
        key.SetValue(readBack, key.Value(before) == 1.0 ? 0.0 : 1.0);
        if (key.check == Key::CheckNone)
            continue;
        // The dialog's value at its opening: what goes back.
        FactoryParams snapshot = opening;
        key.SetValue(snapshot, key.type == Key::TypeBool ? key.Value(before) : 3.0);
        f.Dialog()->ClearInvalidMarks();
        const quint32 nFlags = CReadBackCheck::PutBack(readBack, before, snapshot, *f.Dialog());
        const quint32 nExpectedFlag = key.section == Key::SectionMotor ? IFactoryMgr::CheckFlagMotor
            : key.section == Key::SectionLaser                         ? IFactoryMgr::CheckFlagLaser
            : key.section == Key::SectionSpeed                         ? IFactoryMgr::CheckFlagSpeed
                                                                       : IFactoryMgr::CheckFlagMachine;
        QVERIFY2(nFlags == nExpectedFlag, qPrintable(key.strKey));
        QVERIFY2(key.Value(readBack) == key.Value(snapshot), qPrintable(key.strKey + " was not put back"));
        QVERIFY2(key.Value(f.Dialog()->DisplayParams()) == key.Value(snapshot), qPrintable(key.strKey));
        const bool bMarked = key.check == Key::CheckMarked || (key.check == Key::CheckMarkedWhenShifted && nShift != 0);
        std::set<std::tuple<int, int, int>> expected;
        if (bMarked) {
            const auto [nRow, nColumn] = CellOf(key, f.Dialog());
            expected.insert({key.table, nRow, nColumn});
        }
        QVERIFY2(Marked(f) == expected, qPrintable(key.strKey));
        ++nChecked;
    }
    // The motor numbers, six numbers of each laser, the speeds, every machine field.
    QCOMPARE(nChecked, 4 * 9 + 2 * 6 + 11 + 8);

    // A field the check leaves alone changes nothing.
    for (const Key& key : Key::All()) {
        if (key.check != Key::CheckNone)
            continue;
        FactoryParams readBack = opening;
        key.SetValue(readBack, key.Value(opening) == 1.0 ? 0.0 : 1.0);
        f.Dialog()->ClearInvalidMarks();
        QVERIFY2(CReadBackCheck::PutBack(readBack, opening, opening, *f.Dialog()) == 0, qPrintable(key.strKey));
        QVERIFY2(Marked(f).empty(), qPrintable(key.strKey));
    }
}

void TestFieldDescriptors::theToolsLabelAndUnitAgreeWithTheDialog()
{
    const FactoryParams record = Record();
    TabTestFixture f(record);
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString strPath = dir.filePath("machine.ini");
    QVERIFY(WriteFactoryParamFile(record, strPath));
    QProcess tool;
    tool.start(QCoreApplication::applicationDirPath() + "/factoryparams", {"show", "--json", strPath});
    QVERIFY(tool.waitForFinished(60000));
    QCOMPARE(tool.exitCode(), 0);
    const QJsonArray fields = QJsonDocument::fromJson(tool.readAllStandardOutput()).object().value("fields").toArray();
    QCOMPARE(fields.size(), Key::File().size());
    int nShown = 0;
    for (const QJsonValue& value : fields) {
        const QJsonObject field = value.toObject();
        const Key* pKey = Key::Find(field.value("key").toString());
        QVERIFY2(pKey, qPrintable(field.value("key").toString()));
        if (pKey->table == Key::TableNone)
            continue;
        const auto [nRow, nColumn] = CellOf(*pKey, f.Dialog());
        QTableWidget* pTable = f.Table(TableName(pKey->table));
        const QString strLabel = pTable->item(nRow, 0)->text();
        QCOMPARE(field.value("label").toString(), strLabel);
        // A unit the label names in parentheses is the unit the tool gives.
        const QRegularExpressionMatch unit = QRegularExpression("\\(([^()]*)\\)$").match(strLabel);
        if (unit.hasMatch())
            QCOMPARE(field.value("unit").toString(), unit.captured(1));
        // A number the tool gives in that unit is the one the cell shows.
        if (pKey->editor == Key::EditorNumber) {
            const double dShown = field.contains("shown") ? field.value("shown").toDouble() : field.value("value").toDouble();
            QCOMPARE(QString::number(dShown, 'f', 2), TableDriver::Shown(pTable, nRow, nColumn));
        }
        ++nShown;
    }
    QCOMPARE(nShown, 4 * 14 + 2 * 10 + 11 + 5);
}

void TestFieldDescriptors::everyValueCellExplainsItsFieldInATooltip()
{
    TabTestFixture f(Record());
    for (const Key& key : Key::All()) {
        if (key.table == Key::TableNone)
            continue;
        const auto [nRow, nColumn] = CellOf(key, f.Dialog());
        const QString strTip = TableDriver::Cell(f.Table(TableName(key.table)), nRow, nColumn)->toolTip();
        const QString strName = QString::fromUtf8(key.szLabel) + (key.Where().isEmpty() ? QString() : ", " + key.Where());
        QVERIFY2(strTip.startsWith(strName + ": "), qPrintable(key.strKey + ": " + strTip));
        if (key.editor == Key::EditorList)
            QVERIFY2(strTip.contains(key.choices.last()), qPrintable(key.strKey + ": " + strTip));
        else if (*key.szUnit)
            QVERIFY2(strTip.endsWith(QString::fromUtf8(key.szUnit)) || strTip.endsWith(QString::fromUtf8(key.szUnit) + " or more")
                         || strTip.contains("does not change"),
                     qPrintable(key.strKey + ": " + strTip));
    }
    QTableWidget* pMotor = f.Table("tableWidget_motor");
    QCOMPARE(TableDriver::Cell(pMotor, 10, 2)->toolTip(), QStringLiteral("Max Speed(mm/s), Y: from 0 to 500 mm/s"));
    QCOMPARE(TableDriver::Cell(pMotor, 11, 1)->toolTip(), QStringLiteral("Max Acc(mm/s²), X: from 0 to 60000 mm/s²"));
    QCOMPARE(TableDriver::Cell(pMotor, 10, 3)->toolTip(),
             QStringLiteral("Max Speed(mm/s), Z: kept as it is; this table does not change it"));
    QCOMPARE(TableDriver::Cell(pMotor, 9, 1)->toolTip(), QStringLiteral("Ini Speed(mm/s), X: 0 mm/s or more"));
    QCOMPARE(TableDriver::Cell(f.Table("tableWidget_laser"), 7, 2)->toolTip(),
             QStringLiteral("Pre-burning frequency(kHz), Laser 2: from 1 to 10 kHz"));
    QCOMPARE(TableDriver::Cell(pMotor, 0, 1)->toolTip(), QStringLiteral("Direction of Polarity, X: one of Negative / Positive"));

    // Terse labels are said properly where the pointer rests.
    QVERIFY(f.Table("tableWidget_laser")->item(f.Dialog()->LaserRowOfId(2), 0)->toolTip().startsWith("Switch level: "));
    QVERIFY(f.Dialog()->findChild<QPushButton*>("pushButton_mainboardUpgrade")->toolTip().contains(".upd"));
    QVERIFY(f.Dialog()->findChild<QPushButton*>("pushButton_panelUpgrade")->toolTip().contains(".hmt"));

    // A marked cell says what the controller did, and stops saying it once cleared.
    f.Dialog()->MarkInvalidCell(Key::TableMotor, 10, 2, 480.0);
    QCOMPARE(TableDriver::Cell(pMotor, 10, 2)->toolTip(),
             QStringLiteral("Max Speed(mm/s), Y: from 0 to 500 mm/s\nThe controller did not keep this value."));
    f.Dialog()->ClearInvalidMarks();
    QCOMPARE(TableDriver::Cell(pMotor, 10, 2)->toolTip(), QStringLiteral("Max Speed(mm/s), Y: from 0 to 500 mm/s"));
}

FACTORYMGR_TEST_MAIN(TestFieldDescriptors)
#include "tst_fielddescriptors.moc"
