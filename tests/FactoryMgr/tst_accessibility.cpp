#include "TestMain.h"

#include "ComboBox.h"
#include "TabTestFixture.h"
#include "TableDriver.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QAccessibleInterface>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTabBar>

// What assistive technology reads from the settings dialog, through Qt's
// accessibility interfaces (the ones the desktop's AT-SPI bridge serves).
namespace {
const QString kNotKept = QStringLiteral("The controller did not keep this value.");

QAccessibleInterface* CellOf(QTableWidget* pTable, int nRow, int nColumn)
{
    QAccessibleInterface* pTableAccess = QAccessible::queryAccessibleInterface(pTable);
    if (!pTableAccess || !pTableAccess->tableInterface())
        return nullptr;
    return pTableAccess->tableInterface()->cellAt(nRow, nColumn);
}

FactoryParams Record()
{
    FactoryParams record;
    record.speed.cutSpeedSpace = 321.5;   // the form's placeholder there is "100.00"
    record.machine.motiveMode = 2;
    record.laser.lasers[0].powerMax = 88.0;
    return record;
}
}

class TestAccessibility : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void everyValueCellReadsWhatItShows();
    void aMarkedCellSaysTheControllerDidNotKeepIt();
    void anEditReadsTheNewValue();
    void everyButtonFieldAndTabHasAName();
};

void TestAccessibility::initTestCase()
{
    QAccessible::setActive(true);
}

void TestAccessibility::everyValueCellReadsWhatItShows()
{
    TabTestFixture f(Record());
    int nCells = 0;
    for (const TableDriver::ValueCell& cell : TableDriver::ValueCells(f.Dialog())) {
        QAccessibleInterface* pAccess = CellOf(cell.pTable, cell.nRow, cell.nColumn);
        QVERIFY(pAccess);
        const QString strShown = TableDriver::Shown(cell.pTable, cell.nRow, cell.nColumn);
        QVERIFY2(!strShown.isEmpty(), qPrintable(cell.Where()));
        QCOMPARE(pAccess->text(QAccessible::Name), strShown);
        QCOMPARE(pAccess->text(QAccessible::Description), QString());
        ++nCells;
    }
    QCOMPARE(nCells, 14 * 4 + 10 + 11 + 5);
    // The values themselves, not the form's placeholder or an empty number cell.
    QCOMPARE(CellOf(f.Table("tableWidget_speed"), 0, 1)->text(QAccessible::Name), QStringLiteral("321.50"));
    QCOMPARE(CellOf(f.Table("tableWidget_motor"), 5, 1)->text(QAccessible::Name),
             QString::number(FactoryParams().motor[0].pulsePerMm, 'f', 2));
    QCOMPARE(CellOf(f.Table("tableWidget_machine"), 0, 1)->text(QAccessible::Name), QStringLiteral("Screw Stepper"));
}

void TestAccessibility::aMarkedCellSaysTheControllerDidNotKeepIt()
{
    TabTestFixture f(Record());
    f.Dialog()->MarkInvalidCell(0, 10, 2, 480.0);
    f.Dialog()->MarkInvalidCell(1, 4, 1, 75.0);
    f.Dialog()->MarkInvalidCell(3, 0, 1, 1.0);
    QAccessibleInterface* pMotor = CellOf(f.Table("tableWidget_motor"), 10, 2);
    QCOMPARE(pMotor->text(QAccessible::Name), QStringLiteral("480.00"));
    QCOMPARE(pMotor->text(QAccessible::Description), kNotKept);
    QAccessibleInterface* pLaser = CellOf(f.Table("tableWidget_laser"), 4, 1);
    QCOMPARE(pLaser->text(QAccessible::Name), QStringLiteral("75.00"));
    QCOMPARE(pLaser->text(QAccessible::Description), kNotKept);
    QAccessibleInterface* pMachine = CellOf(f.Table("tableWidget_machine"), 0, 1);
    QCOMPARE(pMachine->text(QAccessible::Name), QStringLiteral("Belt Servo"));
    QCOMPARE(pMachine->text(QAccessible::Description), kNotKept);
    // Cleared: the values stay, the words go.
    f.Dialog()->ClearInvalidMarks();
    QCOMPARE(pMotor->text(QAccessible::Name), QStringLiteral("480.00"));
    QCOMPARE(pMotor->text(QAccessible::Description), QString());
    QCOMPARE(pMachine->text(QAccessible::Description), QString());
}

void TestAccessibility::anEditReadsTheNewValue()
{
    TabTestFixture f(Record());
    f.Dialog()->MarkInvalidCell(2, 0, 1, 400.0);
    QTableWidget* pSpeed = f.Table("tableWidget_speed");
    TableDriver::Type(pSpeed, 0, 1, "250");
    QCOMPARE(CellOf(pSpeed, 0, 1)->text(QAccessible::Name), QStringLiteral("250.00"));
    QCOMPARE(CellOf(pSpeed, 0, 1)->text(QAccessible::Description), QString());
    QTableWidget* pMachine = f.Table("tableWidget_machine");
    TableDriver::Choose(pMachine, 0, 1, 3);
    QCOMPARE(CellOf(pMachine, 0, 1)->text(QAccessible::Name), QStringLiteral("Screw Servo"));
    QTableWidget* pMotor = f.Table("tableWidget_motor");
    TableDriver::Type(pMotor, 6, 3, "640");
    QCOMPARE(CellOf(pMotor, 6, 3)->text(QAccessible::Name), QStringLiteral("640.00"));
}

void TestAccessibility::everyButtonFieldAndTabHasAName()
{
    TabTestFixture f(Record());
    int nNamed = 0;
    const auto check = [&](QWidget* pWidget) {
        QAccessibleInterface* pAccess = QAccessible::queryAccessibleInterface(pWidget);
        QVERIFY2(pAccess && !pAccess->text(QAccessible::Name).trimmed().isEmpty(),
                 qPrintable(QStringLiteral("%1 \"%2\" has no name")
                                .arg(pWidget->metaObject()->className(), pWidget->objectName())));
        ++nNamed;
    };
    for (QAbstractButton* pButton : f.Dialog()->findChildren<QAbstractButton*>()) {
        // The tab bar's scroll arrows and the tables' corner buttons carry no text of their own.
        if (qobject_cast<QTabBar*>(pButton->parentWidget()) || pButton->inherits("QTableCornerButton"))
            continue;
        check(pButton);
    }
    for (QLineEdit* pEdit : f.Dialog()->findChildren<QLineEdit*>())
        check(pEdit);
    for (QComboBox* pList : f.Dialog()->findChildren<QComboBox*>())
        check(pList);
    // Buttons: 3 at the bottom, 4 radio, 3 on the System page; numbers: 9 rows
    // of 4 axes, 6 of one laser, 11 speeds, 1 distance; lists: 5 rows of 4
    // axes, 4 of the laser, 4 of the machine.
    QCOMPARE(nNamed, (3 + 4 + 3) + (9 * 4 + 6 + 11 + 1) + (5 * 4 + 4 + 4));
    // A cell's field is named by its row, and its axis where there are several.
    QLineEdit* pStepY = TableDriver::Cell(f.Table("tableWidget_motor"), 5, 2)->lineEdit();
    QCOMPARE(QAccessible::queryAccessibleInterface(pStepY)->text(QAccessible::Name), QStringLiteral("Step(p/um) Y"));
    QLineEdit* pIdle = TableDriver::Cell(f.Table("tableWidget_speed"), 0, 1)->lineEdit();
    QCOMPARE(QAccessible::queryAccessibleInterface(pIdle)->text(QAccessible::Name),
             QStringLiteral("Idle speed(mm/s)"));
    // Every page tab reads its title.
    QTabBar* pTabs = f.Dialog()->findChild<QTabWidget*>("tabWidget")->tabBar();
    QAccessibleInterface* pBar = QAccessible::queryAccessibleInterface(pTabs);
    int nTabs = 0;
    for (int i = 0; i < pBar->childCount(); ++i) {
        QAccessibleInterface* pChild = pBar->child(i);
        if (pChild->role() != QAccessible::PageTab)
            continue;
        QCOMPARE(pChild->text(QAccessible::Name), pTabs->tabText(nTabs));
        QVERIFY(!pChild->text(QAccessible::Name).isEmpty());
        ++nTabs;
    }
    QCOMPARE(nTabs, 6);
}

FACTORYMGR_TEST_MAIN(TestAccessibility)
#include "tst_accessibility.moc"
