#include "TestMain.h"

#include "CPropertyTable.h"
#include "TableDriver.h"

#include "CFactoryMgrApp.h"
#include "ComboBox.h"
#include "DlgFactoryMgr.h"
#include "FactoryParamFile.h"
#include "FakeCard.h"
#include "FakeDevice.h"
#include "IFactoryMgr.h"
#include "ParamFileTestData.h"

#include <QLabel>
#include <QTableWidget>

#include <QComboBox>
#include <QLineEdit>

#include <cmath>
#include <functional>
#include <iterator>
#include <limits>
#include <set>
#include <tuple>

namespace {
using Cell = std::tuple<int, int, int>;   // table kind, row, column
using Mutator = std::function<void(FactoryParams&)>;
using Reader = std::function<double(const FactoryParams&)>;

const char* const kTables[] = {"tableWidget_motor", "tableWidget_laser", "tableWidget_speed", "tableWidget_machine"};

// Every red cell of the four tables, as (kind, row, column).
std::set<Cell> RedCells(DlgFactoryMgr* pDialog)
{
    std::set<Cell> red;
    for (int nKind = 0; nKind < 4; ++nKind) {
        auto* pTable = pDialog->findChild<QTableWidget*>(kTables[nKind]);
        for (int r = 0; r < pTable->rowCount(); ++r)
            for (int c = 1; c < pTable->columnCount(); ++c) {
                const QTableWidgetItem* pItem = pTable->item(r, c);
                const QWidget* pCell = pTable->cellWidget(r, c);
                if ((pItem && pItem->background() == QBrush(Qt::red))
                    || (pCell && pCell->styleSheet() == QLatin1String("background-color: red;")))
                    red.insert({nKind, r, c});
            }
    }
    return red;
}

struct FieldCase
{
    QString strName;
    Mutator change;       // what the device does to the field
    Reader read;          // the field, as a double
    quint32 nFlag;
    std::set<Cell> marks;
};

// The record the dialog opens with: two lasers, values unlike the defaults.
FactoryParams Opening()
{
    FactoryParams record = ParamFileTestData::DistinctRecord();
    for (MotorParams& motor : record.motor) {
        motor.directionPolar = 1;
        motor.hardLimitProtect = true;
        motor.limitPolar = 0;
    }
    record.laser.laserCount = 2;
    record.laser.reserved = 0;
    return record;
}

QList<FieldCase> Cases()
{
    QList<FieldCase> cases;
    const QList<QPair<const char*, double MotorParams::*>> motor{
        {"pulsePerMm", &MotorParams::pulsePerMm}, {"size", &MotorParams::size},
        {"zeroOffset", &MotorParams::zeroOffset}, {"speedJump", &MotorParams::speedJump},
        {"speedMax", &MotorParams::speedMax},     {"accMax", &MotorParams::accMax},
        {"accUrgentStop", &MotorParams::accUrgentStop}, {"accKey", &MotorParams::accKey},
        {"speedKeyJump", &MotorParams::speedKeyJump}};
    const int kMotorRows[] = {5, 6, 7, 9, 10, 11, 12, 13, 14};
    for (int a = 0; a < 4; ++a)
        for (int i = 0; i < motor.size(); ++i) {
            const auto pField = motor[i].second;
            cases << FieldCase{QStringLiteral("motor[%1].%2").arg(a).arg(motor[i].first),
                               [=](FactoryParams& p) { p.motor[a].*pField += 111.5; },
                               [=](const FactoryParams& p) { return p.motor[a].*pField; }, 1u, {{0, kMotorRows[i], a + 1}}};
        }
    const QList<std::tuple<const char*, double LaserParams::*, int>> laser{
        {"powerMin", &LaserParams::powerMin, 3},           {"powerMax", &LaserParams::powerMax, 4},
        {"powerReduction", &LaserParams::powerReduction, 5}, {"frequency", &LaserParams::frequency, 6},
        {"burningFrequency", &LaserParams::burningFrequency, -1}, {"burningWidth", &LaserParams::burningWidth, -1}};
    for (int k = 0; k < 2; ++k)
        for (const auto& [szName, pField, nRow] : laser) {
            std::set<Cell> marks;
            if (nRow >= 0)
                marks.insert({1, nRow, k + 1});
            auto field = pField;
            cases << FieldCase{QStringLiteral("lasers[%1].%2").arg(k).arg(szName),
                               [=](FactoryParams& p) { p.laser.lasers[k].*field += 7.25; },
                               [=](const FactoryParams& p) { return p.laser.lasers[k].*field; }, 2u, marks};
        }
    const QList<QPair<const char*, double SpeedSection::*>> speed{
        {"cutSpeedSpace", &SpeedSection::cutSpeedSpace},   {"cutSpeedCorner", &SpeedSection::cutSpeedCorner},
        {"cutAccSpace", &SpeedSection::cutAccSpace},       {"cutAccCorner", &SpeedSection::cutAccCorner},
        {"cutAccWork", &SpeedSection::cutAccWork},         {"sweepSpeedXStart", &SpeedSection::sweepSpeedXStart},
        {"sweepSpeedYStart", &SpeedSection::sweepSpeedYStart}, {"sweepSpeedNewline", &SpeedSection::sweepSpeedNewline},
        {"sweepAccX", &SpeedSection::sweepAccX},           {"sweepAccY", &SpeedSection::sweepAccY},
        {"panelSpeedReset", &SpeedSection::panelSpeedReset}};
    for (int r = 0; r < speed.size(); ++r) {
        const auto pField = speed[r].second;
        cases << FieldCase{QStringLiteral("speed.%1").arg(speed[r].first),
                           [=](FactoryParams& p) { p.speed.*pField += 3.5; },
                           [=](const FactoryParams& p) { return p.speed.*pField; }, 4u, {{2, r, 1}}};
    }
    cases << FieldCase{"machine.motiveMode", [](FactoryParams& p) { p.machine.motiveMode = 0; },
                       [](const FactoryParams& p) { return double(p.machine.motiveMode); }, 8u, {{3, 0, 1}}};
    cases << FieldCase{"machine.laserSpace", [](FactoryParams& p) { p.machine.laserSpace += 1.0; },
                       [](const FactoryParams& p) { return p.machine.laserSpace; }, 8u, {{3, 1, 1}}};
    cases << FieldCase{"machine.machineZero", [](FactoryParams& p) { p.machine.machineZero = 0; },
                       [](const FactoryParams& p) { return double(p.machine.machineZero); }, 8u, {{3, 2, 1}}};
    cases << FieldCase{"machine.openProject", [](FactoryParams& p) { p.machine.openProject = false; },
                       [](const FactoryParams& p) { return double(p.machine.openProject); }, 8u, {{3, 3, 1}}};
    cases << FieldCase{"machine.blow", [](FactoryParams& p) { p.machine.blow = false; },
                       [](const FactoryParams& p) { return double(p.machine.blow); }, 8u, {{3, 4, 1}}};
    cases << FieldCase{"machine.machineType", [](FactoryParams& p) { p.machine.machineType += 1; },
                       [](const FactoryParams& p) { return double(p.machine.machineType); }, 8u, {}};
    cases << FieldCase{"machine.feedMode", [](FactoryParams& p) { p.machine.feedMode += 1; },
                       [](const FactoryParams& p) { return double(p.machine.feedMode); }, 8u, {}};
    cases << FieldCase{"machine.outageDelay", [](FactoryParams& p) { p.machine.outageDelay += 1; },
                       [](const FactoryParams& p) { return double(p.machine.outageDelay); }, 8u, {}};
    return cases;
}
}

class TestReadBackCheck : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void everyListedField_data();
    void everyListedField();
    void everyFieldAtOnceThenADeviceThatKeepsEverything();
    void onlyXMaxSpeedChanged();
    void differenceBelowTheToleranceCountsAsKept();
    void theToleranceEndsAtOneTenThousandth_data();
    void theToleranceEndsAtOneTenThousandth();
    void uncheckedFieldsAreNotPutBack_data();
    void uncheckedFieldsAreNotPutBack();
    void laserRowsFollowTheReservedWord();
    void markedCellsShowThePutBackValueAndAnEditClearsTheMark();
    void markingALaserRowStoresTheFieldItShows();
    void markingOutsideTheTablesDoesNothing();
    void marksStayThroughRefills();
    void anEditClearsItsMarkInEveryTab_data();
    void anEditClearsItsMarkInEveryTab();
    void aMarkedListShowsThePutBackChoice();
    void oddMachineValuesAreMarkedWithoutUndefinedConversions_data();
    void oddMachineValuesAreMarkedWithoutUndefinedConversions();
    void oddNumberValuesAreMarkedAsTheyCome_data();
    void oddNumberValuesAreMarkedAsTheyCome();
    void clearingRemovesTheRedOfListsToo();
    void valuesPutBackWithoutAMarkReachTheDialogAndItsCells();
    void aChoiceOnAMarkedLaserListClearsItsMark();

private:
    // Opens the dialog over the opening record and uploads it; the device then holds it.
    void OpenAndUpload();
    std::set<Cell> Red() const { return RedCells(m_pDialog); }
    FactoryParams Held() const;

    FakeCard m_card;
    FakeDevice m_device;
    IFactoryMgr* m_pMgr = nullptr;
    DlgFactoryMgr* m_pDialog = nullptr;
    FactoryParams m_uploaded;
};

void TestReadBackCheck::init()
{
    QFile::remove(DefaultFactoryParamPath());
    m_card.m_nCardType = 8;   // two laser columns
    m_device.m_pCard = &m_card;
    m_pMgr = NewInterface();
    m_pMgr->Init(&m_device, nullptr);
}

void TestReadBackCheck::cleanup()
{
    delete m_pDialog;
    m_pDialog = nullptr;
    ReleaseInterface(m_pMgr);
    CFactoryMgrApp::GetInstance()->SetDevice(nullptr);
}

FactoryParams TestReadBackCheck::Held() const
{
    FactoryParams params;
    m_pMgr->GetFactoryParams(&params);
    return params;
}

void TestReadBackCheck::OpenAndUpload()
{
    const FactoryParams opening = Opening();
    m_pMgr->SetFactoryParams(&opening);
    m_pDialog = m_pMgr->ShowFactoryDlg(nullptr);
    QVERIFY(m_pDialog);
    m_pDialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_pDialog));
    QCOMPARE(m_pMgr->UploadParamsToDevice(), 0);
    m_uploaded = Held();
    QCOMPARE(std::memcmp(&m_uploaded, &m_device.m_stored, sizeof(FactoryParams)), 0);
}

void TestReadBackCheck::everyListedField_data()
{
    QTest::addColumn<int>("nCase");
    const QList<FieldCase> cases = Cases();
    QCOMPARE(cases.size(), 36 + 12 + 11 + 8);
    for (int i = 0; i < cases.size(); ++i)
        QTest::newRow(qPrintable(cases[i].strName)) << i;
}

void TestReadBackCheck::everyListedField()
{
    QFETCH(int, nCase);
    const FieldCase c = Cases().at(nCase);
    OpenAndUpload();
    c.change(m_device.m_stored);
    QVERIFY(c.read(m_device.m_stored) != c.read(m_uploaded));

    quint32 nFlags = 0;
    QVERIFY(!m_pMgr->CheckDeviceParams(&nFlags));
    QCOMPARE(nFlags, c.nFlag);
    // Put back to the value the dialog opened with; nothing else changed.
    const FactoryParams held = Held();
    QCOMPARE(c.read(held), c.read(Opening()));
    QCOMPARE(std::memcmp(&held, &m_uploaded, sizeof(FactoryParams)), 0);
    QVERIFY(Red() == c.marks);
    // The dialog holds the put-back value too, marked or not, and nothing
    // else of it moved: a save from the dialog stores what the record holds.
    m_pDialog->DataToCtrlSlot(false);
    FactoryParams working;
    m_pDialog->GetParams(working);
    QCOMPARE(std::memcmp(&working, &held, sizeof(FactoryParams)), 0);
}

void TestReadBackCheck::everyFieldAtOnceThenADeviceThatKeepsEverything()
{
    OpenAndUpload();
    std::set<Cell> expected;
    for (const FieldCase& c : Cases()) {
        c.change(m_device.m_stored);
        expected.insert(c.marks.begin(), c.marks.end());
    }
    quint32 nFlags = 0;
    QVERIFY(!m_pMgr->CheckDeviceParams(&nFlags));
    QCOMPARE(nFlags, quint32(15));
    QVERIFY(Red() == expected);
    const FactoryParams held = Held();
    QCOMPARE(std::memcmp(&held, &m_uploaded, sizeof(FactoryParams)), 0);

    // The device now keeps everything: all marks go.
    m_device.m_stored = held;
    QVERIFY(m_pMgr->CheckDeviceParams(&nFlags));
    QCOMPARE(nFlags, quint32(0));
    QVERIFY(Red().empty());
}

void TestReadBackCheck::onlyXMaxSpeedChanged()
{
    OpenAndUpload();
    m_device.m_stored.motor[0].speedMax = 1500.0;
    quint32 nFlags = 0;
    QVERIFY(!m_pMgr->CheckDeviceParams(&nFlags));
    QCOMPARE(nFlags, quint32(1));
    QCOMPARE(Held().motor[0].speedMax, Opening().motor[0].speedMax);
    QVERIFY(Red() == std::set<Cell>({{0, 10, 1}}));
}

void TestReadBackCheck::differenceBelowTheToleranceCountsAsKept()
{
    OpenAndUpload();
    m_device.m_stored.motor[2].size += 0.00005;
    quint32 nFlags = 7;
    QVERIFY(m_pMgr->CheckDeviceParams(&nFlags));
    QCOMPARE(nFlags, quint32(0));
    QCOMPARE(Held().motor[2].size, m_device.m_stored.motor[2].size);   // the read value stays
    QVERIFY(Red().empty());
}

namespace {
// One double of each section, for the edge of the tolerance.
struct EdgeField
{
    const char* szCase;   // its FieldCase
    std::function<double&(FactoryParams&)> field;
};
const EdgeField kEdgeFields[] = {
    {"motor[2].size", [](FactoryParams& p) -> double& { return p.motor[2].size; }},
    {"lasers[1].frequency", [](FactoryParams& p) -> double& { return p.laser.lasers[1].frequency; }},
    {"speed.cutAccWork", [](FactoryParams& p) -> double& { return p.speed.cutAccWork; }},
    {"machine.laserSpace", [](FactoryParams& p) -> double& { return p.machine.laserSpace; }}};
}

void TestReadBackCheck::theToleranceEndsAtOneTenThousandth_data()
{
    QTest::addColumn<int>("nField");
    QTest::addColumn<double>("dDifference");
    QTest::addColumn<bool>("bKept");
    for (int i = 0; i < int(std::size(kEdgeFields)); ++i)
        for (const auto& [dDifference, bKept] : {std::pair{0.00005, true}, std::pair{-0.00005, true},
                                                 std::pair{0.0002, false}, std::pair{-0.0002, false},
                                                 std::pair{0.001, false}})
            QTest::addRow("%s %+g", kEdgeFields[i].szCase, dDifference) << i << dDifference << bKept;
}

void TestReadBackCheck::theToleranceEndsAtOneTenThousandth()
{
    QFETCH(int, nField);
    QFETCH(double, dDifference);
    QFETCH(bool, bKept);
    const EdgeField& edge = kEdgeFields[nField];
    FieldCase c;
    for (const FieldCase& each : Cases())
        if (each.strName == QLatin1String(edge.szCase))
            c = each;
    QCOMPARE(c.strName, QString::fromLatin1(edge.szCase));
    OpenAndUpload();
    edge.field(m_device.m_stored) += dDifference;
    const double dRead = edge.field(m_device.m_stored);

    quint32 nFlags = 77;
    const bool bSame = m_pMgr->CheckDeviceParams(&nFlags);
    FactoryParams held = Held();
    FactoryParams opening = Opening();
    if (bKept) {
        // Within 0.0001 the records are equal: the value read stays, unmarked.
        QVERIFY(bSame);
        QCOMPARE(nFlags, quint32(0));
        QCOMPARE(edge.field(held), dRead);
        QVERIFY(Red().empty());
    } else {
        QVERIFY(!bSame);
        QCOMPARE(nFlags, c.nFlag);
        QCOMPARE(edge.field(held), edge.field(opening));
        QVERIFY(Red() == c.marks);
    }
}

void TestReadBackCheck::uncheckedFieldsAreNotPutBack_data()
{
    QTest::addColumn<int>("nWhich");
    QTest::newRow("laser power") << 0;
    QTest::newRow("motor directionPolar") << 1;
    QTest::newRow("laser type") << 2;
    QTest::newRow("laserCount") << 3;
}

void TestReadBackCheck::uncheckedFieldsAreNotPutBack()
{
    QFETCH(int, nWhich);
    OpenAndUpload();
    FactoryParams& stored = m_device.m_stored;
    switch (nWhich) {
    case 0: stored.laser.lasers[0].power = 30; break;
    case 1: stored.motor[1].directionPolar = 0; break;
    case 2: stored.laser.lasers[1].type = 4; break;
    default: stored.laser.laserCount = 1; break;
    }
    quint32 nFlags = 9;
    QVERIFY(!m_pMgr->CheckDeviceParams(&nFlags));   // false through the whole-record comparison only
    QCOMPARE(nFlags, quint32(0));
    const FactoryParams held = Held();
    QCOMPARE(std::memcmp(&held, &stored, sizeof(FactoryParams)), 0);
    QVERIFY(Red().empty());
}

void TestReadBackCheck::laserRowsFollowTheReservedWord()
{
    OpenAndUpload();
    // A record with the reserved word set, as the host hands it in.
    FactoryParams shifted = Held();
    shifted.laser.reserved = 1;
    m_pMgr->SetFactoryParams(&shifted);
    m_device.m_stored = shifted;
    m_device.m_stored.laser.lasers[0].powerMin += 1.0;
    m_device.m_stored.laser.lasers[1].burningWidth += 1.0;
    quint32 nFlags = 0;
    QVERIFY(!m_pMgr->CheckDeviceParams(&nFlags));
    QCOMPARE(nFlags, quint32(2));
    // Each on the row that shows it: "Min power(%)" of laser 1, "Pre-ignition
    // pulse width(%)" of laser 2.
    QVERIFY(Red() == std::set<Cell>({{1, 3, 1}, {1, 8, 2}}));
    m_pDialog->DataToCtrlSlot(false);
    FactoryParams working;
    m_pDialog->GetParams(working);
    QCOMPARE(working.laser.lasers[0].powerMin, shifted.laser.lasers[0].powerMin);
    QCOMPARE(working.laser.lasers[1].burningWidth, shifted.laser.lasers[1].burningWidth);
}

void TestReadBackCheck::markedCellsShowThePutBackValueAndAnEditClearsTheMark()
{
    OpenAndUpload();
    m_device.m_stored.speed.cutAccWork = 1.0;
    m_pMgr->CheckDeviceParams(nullptr);
    auto* pSpeed = m_pDialog->findChild<QTableWidget*>("tableWidget_speed");
    auto* pCell = qobject_cast<ComboBox*>(pSpeed->cellWidget(4, 1));
    QCOMPARE(pCell->text(), QString::number(Opening().speed.cutAccWork, 'f', 2));
    QCOMPARE(pCell->styleSheet(), QStringLiteral("background-color: red;"));
    // The dialog's own record follows, so a collect keeps the put-back value.
    m_pDialog->DataToCtrlSlot(false);
    FactoryParams working;
    m_pDialog->GetParams(working);
    QCOMPARE(working.speed.cutAccWork, Opening().speed.cutAccWork);
}

void TestReadBackCheck::markingALaserRowStoresTheFieldItShows()
{
    OpenAndUpload();
    auto* pLaser = m_pDialog->findChild<QTableWidget*>("tableWidget_laser");
    // Row 7 shows the pre-burning frequency, in kHz of a value kept in Hz.
    m_pDialog->MarkInvalidCell(1, 7, 2, 2500.0);
    QCOMPARE(qobject_cast<ComboBox*>(pLaser->cellWidget(7, 2))->label()->text(), QStringLiteral("2.50"));
    // Row 4 shows "Max power(%)".
    m_pDialog->MarkInvalidCell(1, 4, 1, 77.0);
    QCOMPARE(qobject_cast<ComboBox*>(pLaser->cellWidget(4, 1))->label()->text(), QStringLiteral("77.00"));
    m_pDialog->DataToCtrlSlot(false);
    FactoryParams working;
    m_pDialog->GetParams(working);
    QCOMPARE(working.laser.lasers[1].burningFrequency, 2500.0);
    QCOMPARE(working.laser.lasers[1].burningWidth, Opening().laser.lasers[1].burningWidth);
    QCOMPARE(working.laser.lasers[0].powerMax, 77.0);
    QCOMPARE(working.laser.lasers[0].powerMin, Opening().laser.lasers[0].powerMin);
    QCOMPARE(working.laser.lasers[0].burningFrequency, Opening().laser.lasers[0].burningFrequency);
}

void TestReadBackCheck::markingOutsideTheTablesDoesNothing()
{
    OpenAndUpload();
    m_pDialog->MarkInvalidCell(0, 8, 1, 5.0);    // the heading row
    m_pDialog->MarkInvalidCell(0, 5, 7, 5.0);    // no axis
    m_pDialog->MarkInvalidCell(2, 11, 1, 5.0);   // no such row
    m_pDialog->MarkInvalidCell(9, 0, 1, 5.0);    // no such table
    QVERIFY(Red().empty());
}

void TestReadBackCheck::marksStayThroughRefills()
{
    OpenAndUpload();
    m_device.m_stored.motor[2].accKey += 3.0;           // Motor (13, 3)
    m_device.m_stored.laser.lasers[1].powerMax -= 1.0;  // Laser (4, 2)
    m_device.m_stored.machine.laserSpace += 1.0;        // Machine (1, 1)
    QVERIFY(!m_pMgr->CheckDeviceParams(nullptr));
    const std::set<Cell> marks{{0, 13, 3}, {1, 4, 2}, {3, 1, 1}};
    QVERIFY(Red() == marks);
    // A list choice rebuilds its Motor column, a laser type its Laser column,
    // any Machine choice the whole Machine table: the marks are kept.
    TableDriver::Choose(m_pDialog->findChild<QTableWidget*>("tableWidget_motor"), 4, 3, 0);
    TableDriver::Choose(m_pDialog->findChild<QTableWidget*>("tableWidget_laser"), 0, 2, 2);
    TableDriver::Choose(m_pDialog->findChild<QTableWidget*>("tableWidget_machine"), 4, 1, 0);
    QVERIFY(Red() == marks);
    // So does new data in the controls.
    m_pDialog->DataToCtrlSlot(true);
    QVERIFY(Red() == marks);
    auto* pMotor = m_pDialog->findChild<QTableWidget*>("tableWidget_motor");
    auto* pCell = qobject_cast<ComboBox*>(pMotor->cellWidget(13, 3));
    QCOMPARE(pCell->styleSheet(), QStringLiteral("background-color: red;"));
    QVERIFY(!pCell->label()->isHidden());
}

void TestReadBackCheck::anEditClearsItsMarkInEveryTab_data()
{
    QTest::addColumn<int>("nKind");
    QTest::addColumn<int>("nRow");
    QTest::addColumn<int>("nColumn");
    QTest::addColumn<QString>("strTyped");
    QTest::newRow("Motor") << 0 << 10 << 1 << "1200";
    QTest::newRow("Laser") << 1 << 4 << 1 << "70";
    QTest::newRow("Processing") << 2 << 0 << 1 << "150";
    QTest::newRow("Machine number") << 3 << 1 << 1 << "30";
    QTest::newRow("Machine list") << 3 << 0 << 1 << "";
}

void TestReadBackCheck::anEditClearsItsMarkInEveryTab()
{
    QFETCH(int, nKind);
    QFETCH(int, nRow);
    QFETCH(int, nColumn);
    QFETCH(QString, strTyped);
    OpenAndUpload();
    m_device.m_stored.motor[0].speedMax -= 1.0;
    m_device.m_stored.laser.lasers[0].powerMax -= 1.0;
    m_device.m_stored.speed.cutSpeedSpace -= 1.0;
    m_device.m_stored.machine.laserSpace -= 1.0;
    m_device.m_stored.machine.motiveMode = (m_device.m_stored.machine.motiveMode + 1) % 4;
    QVERIFY(!m_pMgr->CheckDeviceParams(nullptr));
    std::set<Cell> marks = Red();
    QVERIFY(marks.count({nKind, nRow, nColumn}));
    auto* pTable = m_pDialog->findChild<QTableWidget*>(kTables[nKind]);
    if (strTyped.isEmpty())
        TableDriver::Choose(pTable, nRow, nColumn, 3 - TableDriver::Cell(pTable, nRow, nColumn)->currentIndex());
    else
        TableDriver::Type(pTable, nRow, nColumn, strTyped);
    // Only the edited cell lost its red, editor and item alike.
    marks.erase({nKind, nRow, nColumn});
    QVERIFY(Red() == marks);
    QVERIFY(!CPropertyTable::IsMarked(pTable, nRow, nColumn));
}

void TestReadBackCheck::aMarkedListShowsThePutBackChoice()
{
    OpenAndUpload();
    m_device.m_stored.machine.motiveMode = (Opening().machine.motiveMode + 1) % 4;
    m_device.m_stored.machine.blow = !Opening().machine.blow;
    QVERIFY(!m_pMgr->CheckDeviceParams(nullptr));
    auto* pMachine = m_pDialog->findChild<QTableWidget*>("tableWidget_machine");
    QCOMPARE(TableDriver::Cell(pMachine, 0, 1)->currentIndex(), Opening().machine.motiveMode);
    QCOMPARE(TableDriver::Cell(pMachine, 4, 1)->currentIndex(), Opening().machine.blow ? 1 : 0);
    QCOMPARE(TableDriver::Cell(pMachine, 0, 1)->styleSheet(), QStringLiteral("background-color: red;"));
    QCOMPARE(pMachine->item(0, 1)->background(), QBrush(Qt::red));
    QCOMPARE(pMachine->item(0, 1)->text(), QString::number(double(Opening().machine.motiveMode), 'f', 2));
    // Showing the choice chose nothing.
    m_pDialog->DataToCtrlSlot(false);
    FactoryParams working;
    m_pDialog->GetParams(working);
    QCOMPARE(working.machine.motiveMode, Opening().machine.motiveMode);
}

void TestReadBackCheck::oddMachineValuesAreMarkedWithoutUndefinedConversions_data()
{
    QTest::addColumn<double>("dValue");
    QTest::addColumn<int>("nKept");
    const double dInf = std::numeric_limits<double>::infinity();
    const int nMax = std::numeric_limits<int>::max();
    const int nMin = std::numeric_limits<int>::min();
    QTest::newRow("nan") << std::numeric_limits<double>::quiet_NaN() << 0;
    QTest::newRow("inf") << dInf << nMax;
    QTest::newRow("-inf") << -dInf << nMin;
    QTest::newRow("1e20") << 1e20 << nMax;
    QTest::newRow("-1e20") << -1e20 << nMin;
}

void TestReadBackCheck::oddMachineValuesAreMarkedWithoutUndefinedConversions()
{
    QFETCH(double, dValue);
    QFETCH(int, nKept);
    OpenAndUpload();
    m_pDialog->MarkInvalidCell(3, 0, 1, dValue);
    m_pDialog->MarkInvalidCell(3, 2, 1, dValue);
    auto* pMachine = m_pDialog->findChild<QTableWidget*>("tableWidget_machine");
    QVERIFY(CPropertyTable::IsMarked(pMachine, 0, 1));
    QVERIFY(CPropertyTable::IsMarked(pMachine, 2, 1));
    m_pDialog->DataToCtrlSlot(false);
    FactoryParams working;
    m_pDialog->GetParams(working);
    QCOMPARE(working.machine.motiveMode, nKept);
    QCOMPARE(working.machine.machineZero, nKept);
    QCOMPARE(CPropertyTable::ToInt(-1e20), std::numeric_limits<int>::min());
    QCOMPARE(CPropertyTable::ToInt(-2.9), -2);
    QCOMPARE(CPropertyTable::ToInt(2.9), 2);
}

void TestReadBackCheck::oddNumberValuesAreMarkedAsTheyCome_data()
{
    QTest::addColumn<double>("dValue");
    QTest::newRow("nan") << std::numeric_limits<double>::quiet_NaN();
    QTest::newRow("inf") << std::numeric_limits<double>::infinity();
    QTest::newRow("-inf") << -std::numeric_limits<double>::infinity();
    QTest::newRow("3e9") << 3e9;
    QTest::newRow("-1e300") << -1e300;
}

void TestReadBackCheck::oddNumberValuesAreMarkedAsTheyCome()
{
    // A number cell takes a put-back value as it comes, whatever it is,
    // with no conversion to a whole number on the way.
    QFETCH(double, dValue);
    OpenAndUpload();
    m_pDialog->MarkInvalidCell(0, 5, 1, dValue);   // X step
    m_pDialog->MarkInvalidCell(1, 6, 1, dValue);   // laser 1 frequency
    m_pDialog->MarkInvalidCell(2, 0, 1, dValue);   // idle speed
    m_pDialog->MarkInvalidCell(3, 1, 1, dValue);   // dual head distance
    const FactoryParams& shown = m_pDialog->DisplayParams();
    for (const double dShown : {shown.motor[0].pulsePerMm, shown.laser.lasers[0].frequency, shown.speed.cutSpeedSpace,
                                shown.machine.laserSpace})
        QVERIFY(std::isnan(dValue) ? std::isnan(dShown) : dShown == dValue);
    auto* pMotor = m_pDialog->findChild<QTableWidget*>("tableWidget_motor");
    QVERIFY(CPropertyTable::IsMarked(pMotor, 5, 1));
    QCOMPARE(pMotor->item(5, 1)->text(), QString::number(dValue, 'f', 2));
}

void TestReadBackCheck::clearingRemovesTheRedOfListsToo()
{
    OpenAndUpload();
    m_device.m_stored.machine.openProject = !Opening().machine.openProject;
    QVERIFY(!m_pMgr->CheckDeviceParams(nullptr));
    QVERIFY(Red() == std::set<Cell>({{3, 3, 1}}));
    m_pDialog->ClearInvalidMarks();
    QVERIFY(Red().empty());
    auto* pMachine = m_pDialog->findChild<QTableWidget*>("tableWidget_machine");
    QCOMPARE(TableDriver::Cell(pMachine, 3, 1)->styleSheet(), QStringLiteral("background-color: white;"));
    QCOMPARE(pMachine->item(3, 1)->background(), QBrush(Qt::white));
}

void TestReadBackCheck::valuesPutBackWithoutAMarkReachTheDialogAndItsCells()
{
    OpenAndUpload();
    // New values in the dialog, as after an import: they are what the Upload
    // sends, and differ from what the dialog opened with.
    FactoryParams edited = Opening();
    edited.machine.machineType += 2;
    edited.machine.feedMode += 1;
    edited.machine.outageDelay += 5;
    edited.laser.lasers[0].type = 2;   // RF: the width row is in use
    edited.laser.lasers[0].burningWidth = 4.5;
    m_pDialog->SetParams(edited);
    m_pDialog->DataToCtrlSlot(true);
    QCOMPARE(m_pMgr->UploadParamsToDevice(), 0);
    m_device.m_stored.machine.machineType += 1;
    m_device.m_stored.machine.feedMode += 1;
    m_device.m_stored.machine.outageDelay += 1;
    m_device.m_stored.laser.lasers[0].burningWidth = 1.0;
    quint32 nFlags = 0;
    QVERIFY(!m_pMgr->CheckDeviceParams(&nFlags));
    QCOMPARE(nFlags, quint32(2 | 8));
    QVERIFY(Red().empty());
    // The dialog took the put-back values, not what it sent.
    m_pDialog->DataToCtrlSlot(false);
    FactoryParams working;
    m_pDialog->GetParams(working);
    QCOMPARE(working.machine.machineType, Opening().machine.machineType);
    QCOMPARE(working.machine.feedMode, Opening().machine.feedMode);
    QCOMPARE(working.machine.outageDelay, Opening().machine.outageDelay);
    QCOMPARE(working.laser.lasers[0].burningWidth, Opening().laser.lasers[0].burningWidth);
    // And its cell shows it, unmarked.
    auto* pLaser = m_pDialog->findChild<QTableWidget*>("tableWidget_laser");
    QCOMPARE(TableDriver::Shown(pLaser, 8, 1), QString::number(Opening().laser.lasers[0].burningWidth, 'f', 2));
    QVERIFY(!CPropertyTable::IsMarked(pLaser, 8, 1));
}

void TestReadBackCheck::aChoiceOnAMarkedLaserListClearsItsMark()
{
    OpenAndUpload();
    auto* pLaser = m_pDialog->findChild<QTableWidget*>("tableWidget_laser");
    m_pDialog->MarkInvalidCell(1, 1, 1, 0.0);   // "Water Protection" of laser 1
    QVERIFY(CPropertyTable::IsMarked(pLaser, 1, 1));
    TableDriver::Choose(pLaser, 1, 1, 1 - TableDriver::Cell(pLaser, 1, 1)->currentIndex());
    QVERIFY(!CPropertyTable::IsMarked(pLaser, 1, 1));
    QVERIFY(Red().empty());
}

FACTORYMGR_TEST_MAIN(TestReadBackCheck)
#include "tst_readbackcheck.moc"
