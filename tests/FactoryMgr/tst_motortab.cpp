#include "TestMain.h"

#include "ComboBox.h"
#include "TabTestFixture.h"
#include "TableDriver.h"

#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QTabWidget>

namespace {
const int X = 1, Y = 2, Z = 3, U = 4;
const int kDirection = 0, kControl = 1, kPwmEdge = 2, kKeypad = 3, kInit = 4, kStep = 5, kSize = 6, kZeroOffset = 7,
          kHeading = 8, kIniSpeed = 9, kMaxSpeed = 10, kMaxAcc = 11, kStopAcc = 12, kButtonAcc = 13, kKeySpeed = 14;
}

class TestMotorTab : public QObject
{
    Q_OBJECT
private slots:
    void editsShowAsEditedUntilTheRecordHasThem();
    void everyCellShowsItsValue();
    void negativeZeroOffsetStoresZero();
    void stepKeepsThreeDecimalsAndShowsTwo();
    void maxSpeedCaps_data();
    void maxSpeedCaps();
    void maxAccCaps_data();
    void maxAccCaps();
    void otherNumberRowsHaveNoCap();
    void initializationYesAndNo();
    void listsStoreTheirIndex();
    void aListChangeRebuildsTheColumn();
    void aListChangedWithoutAClickWritesItsOwnCell();
    void headingRowClickOnlyLogs();
    void textThatIsNoNumberIsIgnored();
    void hugeNumbersStayFinite();
    void clickSwitchesOnlyTheClickedCellToEditing();
    void listCellsBuildNoPopupBeforeItOpens();
};

void TestMotorTab::everyCellShowsItsValue()
{
    FactoryParams record;
    record.motor[2].speedJump = 12.345;
    record.motor[3].directionPolar = 0;
    TabTestFixture f(record);
    QTableWidget* t = f.Table("tableWidget_motor");
    QCOMPARE(TableDriver::Shown(t, kStep, X), QStringLiteral("7.89"));
    QCOMPARE(TableDriver::Shown(t, kSize, Y), QStringLiteral("900.00"));
    QCOMPARE(TableDriver::Shown(t, kIniSpeed, Z), QStringLiteral("12.35"));
    QCOMPARE(TableDriver::Shown(t, kDirection, U), QStringLiteral("Negative"));
    QCOMPARE(TableDriver::Shown(t, kDirection, X), QStringLiteral("Positive"));
    QCOMPARE(TableDriver::Shown(t, kKeypad, X), QStringLiteral("Negative"));   // keyDirection 1: the second choice
    QCOMPARE(TableDriver::Shown(t, kInit, X), QStringLiteral("Yes"));
    QCOMPARE(TableDriver::Shown(t, kControl, X), QStringLiteral("Pulse+Direction"));
    QCOMPARE(TableDriver::Shown(t, kPwmEdge, X), QStringLiteral("Descending Edge"));
    QCOMPARE(t->item(kInit, X)->text(), QStringLiteral("Yes"));
    for (int c = 1; c <= 4; ++c) {
        QVERIFY(!TableDriver::Cell(t, kHeading, c));
        QCOMPARE(t->item(kHeading, c)->flags(), Qt::NoItemFlags);
        QVERIFY(!TableDriver::Cell(t, kStep, c)->label()->isHidden());     // numbers show their label
        QVERIFY(TableDriver::Cell(t, kStep, c)->lineEdit()->isHidden());
        QVERIFY(!TableDriver::Cell(t, kInit, c)->comboBox()->isHidden());  // lists show their list
    }
}

void TestMotorTab::negativeZeroOffsetStoresZero()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_motor");
    TableDriver::Type(t, kZeroOffset, X, "-5");
    QCOMPARE(TableDriver::Shown(t, kZeroOffset, X), QStringLiteral("0.00"));
    QCOMPARE(f.Collected().motor[0].zeroOffset, 0.0);
}

void TestMotorTab::stepKeepsThreeDecimalsAndShowsTwo()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_motor");
    TableDriver::Type(t, kStep, Y, "1.23456");
    // The stored 1.235 with two decimals (1.235 is held as 1.2350000000000000977).
    QCOMPARE(TableDriver::Shown(t, kStep, Y), QStringLiteral("1.24"));
    QCOMPARE(f.Collected().motor[1].pulsePerMm, 1.235);
    QCOMPARE(f.Collected().motor[0].pulsePerMm, 7.88627);   // no other axis touched
}

void TestMotorTab::maxSpeedCaps_data()
{
    QTest::addColumn<int>("nColumn");
    QTest::addColumn<QString>("strTyped");
    QTest::addColumn<double>("dStored");
    QTest::addColumn<QString>("strShown");
    QTest::newRow("X accepts 2000") << X << "2000" << 2000.0 << "2000.00";
    QTest::newRow("X rejects 2000.01") << X << "2000.01" << 1000.0 << "1000.00";
    QTest::newRow("Y accepts 500") << Y << "500" << 500.0 << "500.00";
    QTest::newRow("Y rejects 500.5") << Y << "500.5" << 1000.0 << "1000.00";
    QTest::newRow("Z never changes") << Z << "300" << 1000.0 << "1000.00";
    QTest::newRow("U never changes") << U << "5" << 1000.0 << "1000.00";
}

void TestMotorTab::maxSpeedCaps()
{
    QFETCH(int, nColumn);
    QFETCH(QString, strTyped);
    QFETCH(double, dStored);
    QFETCH(QString, strShown);
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_motor");
    TableDriver::Type(t, kMaxSpeed, nColumn, strTyped);
    QCOMPARE(TableDriver::Shown(t, kMaxSpeed, nColumn), strShown);
    QCOMPARE(f.Collected().motor[nColumn - 1].speedMax, dStored);
}

void TestMotorTab::maxAccCaps_data()
{
    QTest::addColumn<int>("nColumn");
    QTest::addColumn<QString>("strTyped");
    QTest::addColumn<double>("dStored");
    QTest::newRow("X accepts 60000") << X << "60000" << 60000.0;
    QTest::newRow("X rejects 60000.5") << X << "60000.5" << 20000.0;
    QTest::newRow("Y accepts 10000") << Y << "10000" << 10000.0;
    QTest::newRow("Y rejects 10000.5") << Y << "10000.5" << 20000.0;
    QTest::newRow("Z never changes") << Z << "100" << 20000.0;
    QTest::newRow("U never changes") << U << "100" << 20000.0;
}

void TestMotorTab::maxAccCaps()
{
    QFETCH(int, nColumn);
    QFETCH(QString, strTyped);
    QFETCH(double, dStored);
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_motor");
    TableDriver::Type(t, kMaxAcc, nColumn, strTyped);
    QCOMPARE(f.Collected().motor[nColumn - 1].accMax, dStored);
    QCOMPARE(TableDriver::Shown(t, kMaxAcc, nColumn), QString::number(dStored, 'f', 2));
}

void TestMotorTab::otherNumberRowsHaveNoCap()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_motor");
    TableDriver::Type(t, kSize, U, "123456.5");
    TableDriver::Type(t, kIniSpeed, Z, "99999");
    TableDriver::Type(t, kStopAcc, Y, "70000");
    TableDriver::Type(t, kButtonAcc, X, "0");
    TableDriver::Type(t, kKeySpeed, U, "33.3");
    const FactoryParams p = f.Collected();
    QCOMPARE(p.motor[3].size, 123456.5);
    QCOMPARE(p.motor[2].speedJump, 99999.0);
    QCOMPARE(p.motor[1].accUrgentStop, 70000.0);
    QCOMPARE(p.motor[0].accKey, 0.0);
    QCOMPARE(p.motor[3].speedKeyJump, 33.3);
}

void TestMotorTab::initializationYesAndNo()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_motor");
    TableDriver::Choose(t, kInit, Z, 0);
    QCOMPARE(TableDriver::Shown(t, kInit, Z), QStringLiteral("No"));
    QCOMPARE(f.Collected().motor[2].startupReset, false);
    TableDriver::Choose(t, kInit, Z, 1);
    QCOMPARE(TableDriver::Shown(t, kInit, Z), QStringLiteral("Yes"));
    QCOMPARE(f.Collected().motor[2].startupReset, true);
}

void TestMotorTab::listsStoreTheirIndex()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_motor");
    TableDriver::Choose(t, kDirection, Y, 0);   // "Negative"
    TableDriver::Choose(t, kControl, Y, 1);     // "Double pulse"
    TableDriver::Choose(t, kPwmEdge, Y, 1);     // "Rising Edge"
    TableDriver::Choose(t, kKeypad, Y, 0);      // "Positive"
    const FactoryParams p = f.Collected();
    QCOMPARE(p.motor[1].directionPolar, 0);
    QCOMPARE(p.motor[1].controlType, 1);
    QCOMPARE(p.motor[1].pwmEdge, 1);
    QCOMPARE(p.motor[1].keyDirection, 0);
    QCOMPARE(TableDriver::Shown(t, kKeypad, Y), QStringLiteral("Positive"));
    QCOMPARE(p.motor[0].directionPolar, 1);
}

void TestMotorTab::aListChangeRebuildsTheColumn()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_motor");
    QPointer<ComboBox> pBefore = TableDriver::Cell(t, kStep, X);
    QPointer<ComboBox> pOtherColumn = TableDriver::Cell(t, kStep, Y);
    TableDriver::Choose(t, kControl, X, 1);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(pBefore.isNull());
    QVERIFY(!pOtherColumn.isNull());
    QCOMPARE(TableDriver::Shown(t, kStep, X), QStringLiteral("7.89"));
}

void TestMotorTab::aListChangedWithoutAClickWritesItsOwnCell()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_motor");
    TableDriver::Click(t, kStep, Y);   // the current cell is elsewhere
    TableDriver::ChooseWithoutClick(t, kControl, Z, 1);
    const FactoryParams p = f.Collected();
    QCOMPARE(p.motor[2].controlType, 1);
    QCOMPARE(p.motor[1].controlType, 0);
    QCOMPARE(p.motor[1].pulsePerMm, 7.88627);
}

void TestMotorTab::headingRowClickOnlyLogs()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_motor");
    TableDriver::Click(t, kStep, X);
    ComboBox* pOpen = TableDriver::Cell(t, kStep, X);
    QVERIFY(!pOpen->lineEdit()->isHidden());
    const FactoryParams before = f.Collected();
    TableDriver::Click(t, kHeading, Y);
    QVERIFY(f.Log().contains("[0] tableWidget_motor was clicked."));
    QCOMPARE(f.Log().count("tableWidget_motor was clicked."), 2);
    QVERIFY(!pOpen->lineEdit()->isHidden());   // nothing was reset
    const FactoryParams after = f.Collected();
    QCOMPARE(std::memcmp(&before, &after, sizeof(FactoryParams)), 0);
    // The current cell is still the one clicked before: keys sent to its
    // line edit are stored there.
    pOpen->lineEdit()->selectAll();
    QTest::keyClicks(pOpen->lineEdit(), "8.5");
    QTest::keyClick(pOpen->lineEdit(), Qt::Key_Return);
    QCOMPARE(f.Collected().motor[0].pulsePerMm, 8.5);
}

void TestMotorTab::textThatIsNoNumberIsIgnored()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_motor");
    auto* pNote = f.Dialog()->findChild<QLabel*>("tableWidget_motor_note");
    TableDriver::Type(t, kSize, Z, "12abc");
    ComboBox* pCell = TableDriver::Cell(t, kSize, Z);
    // The rejected text is not left standing: the cell shows the kept value,
    // and the line under the table says why.
    QCOMPARE(pCell->lineEdit()->text(), QStringLiteral("900.00"));
    QVERIFY(pCell->lineEdit()->isHidden());
    QCOMPARE(pCell->label()->text(), QStringLiteral("900.00"));
    QCOMPARE(f.Collected().motor[2].size, 900.0);
    QVERIFY(pNote && !pNote->isHidden());
    QCOMPARE(pNote->text(), QStringLiteral("Z Move Distance needs a number; kept 900.00"));
    TableDriver::Type(t, kSize, Z, "inf");
    QCOMPARE(f.Collected().motor[2].size, 900.0);
    QCOMPARE(pCell->label()->text(), QStringLiteral("900.00"));
    // The next edit that is taken as typed takes the note away.
    TableDriver::Type(t, kSize, Z, "901");
    QCOMPARE(f.Collected().motor[2].size, 901.0);
    QVERIFY2(pNote->isHidden(), qPrintable(pNote->text()));
}

void TestMotorTab::hugeNumbersStayFinite()
{
    // Found by fuzzing: 1e308 times 1000 (the 3-decimal rounding) overflowed to infinity.
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_motor");
    TableDriver::Type(t, kSize, X, "1e308");
    QCOMPARE(f.Collected().motor[0].size, 1e308);
    TableDriver::Type(t, kStep, Y, "123456789012.3456");
    QCOMPARE(f.Collected().motor[1].pulsePerMm, 123456789012.346);
}

void TestMotorTab::clickSwitchesOnlyTheClickedCellToEditing()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_motor");
    TableDriver::Click(t, kSize, Y);
    QVERIFY(!TableDriver::Cell(t, kSize, Y)->lineEdit()->isHidden());
    TableDriver::Click(t, kZeroOffset, U);
    QVERIFY(TableDriver::Cell(t, kSize, Y)->lineEdit()->isHidden());
    QVERIFY(!TableDriver::Cell(t, kSize, Y)->label()->isHidden());
    QVERIFY(!TableDriver::Cell(t, kZeroOffset, U)->lineEdit()->isHidden());
    TableDriver::Click(t, kStep, 0);   // a label: nothing opens
    QVERIFY(TableDriver::Cell(t, kZeroOffset, U)->lineEdit()->isHidden());
}

void TestMotorTab::editsShowAsEditedUntilTheRecordHasThem()
{
    FactoryParams record;
    for (MotorParams& motor : record.motor) {
        motor.hardLimitProtect = true;
        motor.limitPolar = 0;
    }
    record.laser.lasers[0].enabled = record.laser.lasers[1].enabled = true;
    TabTestFixture f(record);
    bool bEdited = true;
    QVERIFY(QMetaObject::invokeMethod(f.Dialog(), "IsEdited", Q_RETURN_ARG(bool, bEdited)));
    QVERIFY(!bEdited);
    TableDriver::Type(f.Table("tableWidget_motor"), kSize, Z, "640");
    QVERIFY(f.Dialog()->IsEdited());
    // Once the record holds what the controls do (as after a save), nothing is edited.
    f.m_record = f.Collected();
    QVERIFY(!f.Dialog()->IsEdited());
}

FACTORYMGR_TEST_MAIN(TestMotorTab)

// Under the table's style sheet, Qt keeps a style cache entry for every combo
// box popup that is built and never releases it; the dialog grew with every
// opening when each list cell built its popup on being placed in the table.
void TestMotorTab::listCellsBuildNoPopupBeforeItOpens()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_motor");
    TableDriver::Choose(t, kControl, X, 1);   // a rebuilt column as well
    QCoreApplication::processEvents();
    int nLists = 0;
    for (int c = X; c <= U; ++c)
        for (int r = kDirection; r <= kInit; ++r) {
            QComboBox* pList = TableDriver::Cell(t, r, c)->comboBox();
            QVERIFY2(!pList->findChild<QFrame*>(), qPrintable(QStringLiteral("row %1 column %2").arg(r).arg(c)));
            ++nLists;
        }
    QCOMPARE(nLists, 20);
    // Opening a list builds its popup as usual.
    QComboBox* pList = TableDriver::Cell(t, kControl, Y)->comboBox();
    pList->showPopup();
    QVERIFY(pList->findChild<QFrame*>());
    pList->hidePopup();
}

#include "tst_motortab.moc"
