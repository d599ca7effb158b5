#include "TestMain.h"

#include "CFactoryMgrApp.h"
#include "CTranslator.h"
#include "ComboBox.h"
#include "FakeCard.h"
#include "FakeDevice.h"
#include "TabTestFixture.h"
#include "TableDriver.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

namespace {
enum MachineRow
{
    kMoving = 0, kDistance, kZero, kLid, kBlowing
};
}

class TestMachineSpeedTabs : public QObject
{
    Q_OBJECT
private slots:
    void cleanup();

    void machineShowsItsValues();
    void machineChoicesStoreTheirIndex();
    void machineComboActsOnTheClickedRow();
    void machineComboBeforeAnyClickWritesNothing();
    void dualHeadDistance();
    void unknownMachineZeroShowsTopLeftAndNoChoice();

    void speedRowsMapToTheirFields();
    void speedClampsAtZeroAndKeepsThreeDecimals();
    void speedBeforeAnyClickStoresNothing();

    void languageChangeRefillsEveryTabWithTheSameValues();
    void theNoteUnderATableIsInTheChosenLanguage();
};

void TestMachineSpeedTabs::cleanup()
{
    CTranslator::GetInstance()->SetLanguage("en");
    CFactoryMgrApp::GetInstance()->SetDevice(nullptr);
}

void TestMachineSpeedTabs::machineShowsItsValues()
{
    FactoryParams record;
    record.machine.motiveMode = 3;
    record.machine.laserSpace = 12.345;
    record.machine.machineZero = 1;
    record.machine.blow = true;
    TabTestFixture f(record);
    QTableWidget* t = f.Table("tableWidget_machine");
    QCOMPARE(TableDriver::Shown(t, kMoving, 1), QStringLiteral("Screw Servo"));
    QCOMPARE(t->item(kMoving, 1)->text(), QStringLiteral("Screw Servo"));
    QCOMPARE(TableDriver::Shown(t, kDistance, 1), QStringLiteral("12.35"));
    QCOMPARE(TableDriver::Shown(t, kZero, 1), QStringLiteral("Top Right"));
    QCOMPARE(TableDriver::Shown(t, kLid, 1), QStringLiteral("No"));
    QCOMPARE(TableDriver::Shown(t, kBlowing, 1), QStringLiteral("Yes"));
}

void TestMachineSpeedTabs::machineChoicesStoreTheirIndex()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_machine");
    TableDriver::Choose(t, kMoving, 1, 2);
    TableDriver::Choose(t, kZero, 1, 1);
    TableDriver::Choose(t, kLid, 1, 1);
    TableDriver::Choose(t, kBlowing, 1, 1);
    const FactoryParams p = f.Collected();
    QCOMPARE(p.machine.motiveMode, 2);
    QCOMPARE(p.machine.machineZero, 1);
    QCOMPARE(p.machine.openProject, true);
    QCOMPARE(p.machine.blow, true);
    QCOMPARE(p.machine.outageDelay, 1000);   // no row: passes through
    QCOMPARE(TableDriver::Shown(t, kMoving, 1), QStringLiteral("Screw Stepper"));
    QVERIFY(f.Log().contains("[0] tableWidget_machine was clicked."));
}

void TestMachineSpeedTabs::machineComboActsOnTheClickedRow()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_machine");
    // The label of "Blowing" is clicked, then the "Moving parts" list moves:
    // the choice lands in the clicked row's field.
    TableDriver::Click(t, kBlowing, 0);
    TableDriver::ChooseWithoutClick(t, kMoving, 1, 1);
    FactoryParams p = f.Collected();
    QCOMPARE(p.machine.blow, true);
    QCOMPARE(p.machine.motiveMode, 0);
    QCOMPARE(TableDriver::Shown(t, kMoving, 1), QStringLiteral("Belt Stepping"));   // snapped back

    TableDriver::Click(t, kDistance, 0);   // a row without a list meaning: nowhere
    TableDriver::ChooseWithoutClick(t, kLid, 1, 1);
    p = f.Collected();
    QCOMPARE(p.machine.openProject, false);
    QCOMPARE(TableDriver::Shown(t, kLid, 1), QStringLiteral("No"));
}

void TestMachineSpeedTabs::machineComboBeforeAnyClickWritesNothing()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_machine");
    const FactoryParams before = f.Collected();
    TableDriver::ChooseWithoutClick(t, kZero, 1, 1);
    const FactoryParams after = f.Collected();
    QCOMPARE(std::memcmp(&before.machine, &after.machine, sizeof(MachineSection)), 0);
    QCOMPARE(TableDriver::Shown(t, kZero, 1), QStringLiteral("Top Left"));
}

void TestMachineSpeedTabs::dualHeadDistance()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_machine");
    TableDriver::Type(t, kDistance, 1, "-5");
    QCOMPARE(f.Collected().machine.laserSpace, 0.0);
    QCOMPARE(t->item(kDistance, 1)->text(), QStringLiteral("-5"));   // as typed, until a refill
    QCOMPARE(TableDriver::Cell(t, kDistance, 1)->lineEdit()->text(), QStringLiteral("-5"));
    TableDriver::Type(t, kDistance, 1, "25.12345");
    QCOMPARE(f.Collected().machine.laserSpace, 25.123);
    TableDriver::Type(t, kDistance, 1, "abc");
    QCOMPARE(f.Collected().machine.laserSpace, 0.0);
}

void TestMachineSpeedTabs::unknownMachineZeroShowsTopLeftAndNoChoice()
{
    FactoryParams record;
    record.machine.machineZero = 2;
    TabTestFixture f(record);
    QTableWidget* t = f.Table("tableWidget_machine");
    QCOMPARE(t->item(kZero, 1)->text(), QStringLiteral("Top Left"));
    QCOMPARE(TableDriver::Cell(t, kZero, 1)->comboBox()->currentIndex(), -1);
    QCOMPARE(f.Collected().machine.machineZero, 2);
}

void TestMachineSpeedTabs::speedRowsMapToTheirFields()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_speed");
    for (int r = 0; r <= 10; ++r)
        TableDriver::Type(t, r, 1, QString::number(100 + r));
    const SpeedSection s = f.Collected().speed;
    QCOMPARE(s.cutSpeedSpace, 100.0);
    QCOMPARE(s.cutSpeedCorner, 101.0);
    QCOMPARE(s.cutAccSpace, 102.0);
    QCOMPARE(s.cutAccCorner, 103.0);
    QCOMPARE(s.cutAccWork, 104.0);
    QCOMPARE(s.sweepSpeedXStart, 105.0);
    QCOMPARE(s.sweepSpeedYStart, 106.0);
    QCOMPARE(s.sweepSpeedNewline, 107.0);
    QCOMPARE(s.sweepAccX, 108.0);
    QCOMPARE(s.sweepAccY, 109.0);
    QCOMPARE(s.panelSpeedReset, 110.0);   // row 10: the section's first double
    QCOMPARE(TableDriver::Shown(t, 10, 1), QStringLiteral("110.00"));
    QVERIFY(f.Log().contains("[0] tableWidget_speed was clicked."));
}

void TestMachineSpeedTabs::speedClampsAtZeroAndKeepsThreeDecimals()
{
    FactoryParams record;
    record.speed.cutAccWork = 1234.0;
    TabTestFixture f(record);
    QTableWidget* t = f.Table("tableWidget_speed");
    QCOMPARE(TableDriver::Shown(t, 4, 1), QStringLiteral("1234.00"));
    TableDriver::Type(t, 4, 1, "-3");
    QCOMPARE(f.Collected().speed.cutAccWork, 0.0);
    QCOMPARE(TableDriver::Shown(t, 4, 1), QStringLiteral("0.00"));
    TableDriver::Type(t, 4, 1, "12.3456");
    QCOMPARE(f.Collected().speed.cutAccWork, 12.346);
    QCOMPARE(TableDriver::Shown(t, 4, 1), QStringLiteral("12.35"));
    QCOMPARE(t->item(4, 1)->text(), QString());   // only the editor's label shows the value
    TableDriver::Type(t, 4, 1, "abc");
    QCOMPARE(f.Collected().speed.cutAccWork, 0.0);
    TableDriver::Type(t, 4, 1, "1e6");
    QCOMPARE(f.Collected().speed.cutAccWork, 1000000.0);   // no upper bound
}

void TestMachineSpeedTabs::speedBeforeAnyClickStoresNothing()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_speed");
    QLineEdit* pEdit = TableDriver::Cell(t, 2, 1)->lineEdit();
    pEdit->show();
    pEdit->setFocus();
    QTest::keyClicks(pEdit, "777");
    QTest::keyClick(pEdit, Qt::Key_Return);
    QCOMPARE(f.Collected().speed.cutAccSpace, 2000.0);
}

void TestMachineSpeedTabs::languageChangeRefillsEveryTabWithTheSameValues()
{
    FakeCard card;
    FakeDevice device;
    device.m_pCard = &card;
    CFactoryMgrApp::GetInstance()->SetDevice(&device);
    FactoryParams record;
    record.motor[1].controlType = 1;
    record.laser.lasers[0].type = 3;
    record.machine.motiveMode = 1;
    record.speed.sweepAccY = 4321.5;
    TabTestFixture f(record);
    const FactoryParams before = f.Collected();

    QVERIFY(CTranslator::GetInstance()->SetLanguage("zh_CN"));
    QTRY_COMPARE(TableDriver::Shown(f.Table("tableWidget_motor"), 1, 2), QStringLiteral("双脉冲"));
    QCOMPARE(TableDriver::Shown(f.Table("tableWidget_motor"), 0, 1), QStringLiteral("正向"));
    QCOMPARE(TableDriver::Shown(f.Table("tableWidget_laser"), 0, 1), QStringLiteral("光纤"));
    QCOMPARE(f.Table("tableWidget_laser")->item(1, 0)->text(), QStringLiteral("水保护"));
    QCOMPARE(TableDriver::Shown(f.Table("tableWidget_machine"), 0, 1), QStringLiteral("皮带伺服"));
    QCOMPARE(TableDriver::Shown(f.Table("tableWidget_speed"), 9, 1), QStringLiteral("4321.50"));
    QCOMPARE(TableDriver::Shown(f.Table("tableWidget_motor"), 5, 3), QStringLiteral("7.89"));
    const FactoryParams after = f.Collected();
    QCOMPARE(std::memcmp(&before, &after, sizeof(FactoryParams)), 0);
}

void TestMachineSpeedTabs::theNoteUnderATableIsInTheChosenLanguage()
{
    TabTestFixture f;
    QVERIFY(CTranslator::GetInstance()->SetLanguage("zh_CN"));
    QTableWidget* t = f.Table("tableWidget_speed");
    QTRY_COMPARE(t->item(0, 0)->text(), QStringLiteral("空程速度(mm/s)"));
    TableDriver::Type(t, 0, 1, "abc");
    const QString strLabel = t->item(0, 0)->text();
    const QString strNote = f.Dialog()->findChild<QLabel*>("tableWidget_speed_note")->text();
    // The field's translated name without its unit, then the translated sentence.
    QVERIFY2(strNote.startsWith(strLabel.left(strLabel.indexOf('(')).trimmed() + " "), qPrintable(strNote));
    QVERIFY2(strNote.endsWith(QStringLiteral("需要数字；已设为 0.00")), qPrintable(strNote));
}

FACTORYMGR_TEST_MAIN(TestMachineSpeedTabs)
#include "tst_machinespeedtabs.moc"
