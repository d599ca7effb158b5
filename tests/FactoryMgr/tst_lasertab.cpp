#include "TestMain.h"

#include "CFactoryMgrApp.h"
#include "ComboBox.h"
#include "FakeCard.h"
#include "FakeDevice.h"
#include "TabTestFixture.h"
#include "TableDriver.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>

namespace {
enum Id
{
    kType = 0, kWater, kSwitch, kMinPower, kMaxPower, kAttenuation, kFrequency, kPreFrequency, kPreWidth, kPower
};
const int L1 = 1, L2 = 2;

QWidget* Child(TabTestFixture& f, const char* szName)
{
    return f.Dialog()->findChild<QWidget*>(QString::fromLatin1(szName));
}
}

class TestLaserTab : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void tableHasTenIdentifiedRows();
    void cardType8ShowsOnlyTheLaserPair();
    void otherCardTypeShowsOnlyTheTubePair();
    void withoutACardNothingIsHiddenAndTheCountIsNotTaken();
    void tubesShareOneType();
    void typeEnablesItsRows_data();
    void typeEnablesItsRows();
    void powerPercentages();
    void preBurningFrequencyInKilohertz();
    void preIgnitionWidthRoundsToTenths();
    void frequencyAndAttenuation();
    void textThatIsNoNumberIsIgnored();
    void ratedPowerIsTheChoicesNumber();
    void unknownRatedPowerIsKeptUntilChosen();
    void waterProtectionAndSwitchLevel();
    void newDataKeepsTheColumnsAndCollectTakesTheSelectedCount();
    void radioButtonsChangeTheCount();
    void clickOpensTheCell();
    void aPressOnADisabledListIsOneClick();

private:
    FakeCard m_card;
    FakeDevice m_device;
};

void TestLaserTab::init()
{
    m_card.m_nCardType = 8;
    m_device.m_pCard = &m_card;
    CFactoryMgrApp::GetInstance()->SetDevice(&m_device);
}

void TestLaserTab::cleanup()
{
    CFactoryMgrApp::GetInstance()->SetDevice(nullptr);
}

void TestLaserTab::tableHasTenIdentifiedRows()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_laser");
    const QStringList labels{"Laser type", "Water Protection", "SwitchLevel", "Min power(%)", "Max power(%)",
                             "Laser Attenuation(%)", "Laser Frequency(kHz)", "Pre-burning frequency(kHz)",
                             "Pre-ignition pulse width(%)", "Laser power(W)"};
    QCOMPARE(t->rowCount(), 10);
    for (int r = 0; r < 10; ++r) {
        QCOMPARE(t->item(r, 0)->text(), labels[r]);
        QCOMPARE(t->item(r, 0)->data(Qt::UserRole + 1).toInt(), r);
    }
    QCOMPARE(t->horizontalHeaderItem(1)->text(), QStringLiteral("Laser 1"));
    QCOMPARE(TableDriver::Shown(t, kType, L1), QStringLiteral("Glass"));
    QCOMPARE(TableDriver::Shown(t, kWater, L1), QStringLiteral("On"));
    QCOMPARE(TableDriver::Shown(t, kMinPower, L1), QStringLiteral("10.00"));
    QCOMPARE(TableDriver::Shown(t, kFrequency, L1), QStringLiteral("20000.00"));
    QCOMPARE(TableDriver::Shown(t, kPreFrequency, L1), QStringLiteral("5.00"));
    QCOMPARE(TableDriver::Shown(t, kPower, L1), QStringLiteral("80"));
}

void TestLaserTab::cardType8ShowsOnlyTheLaserPair()
{
    FactoryParams record;
    record.laser.laserCount = 2;
    TabTestFixture f(record);
    QVERIFY(!Child(f, "widget_laserConfiguration")->isHidden());
    QVERIFY(Child(f, "widget_tubeconfiguration")->isHidden());
    QVERIFY(static_cast<QRadioButton*>(Child(f, "radioButton_laserDouble"))->isChecked());
    QCOMPARE(f.Table("tableWidget_laser")->columnCount(), 3);
    QCOMPARE(f.Table("tableWidget_laser")->horizontalHeaderItem(2)->text(), QStringLiteral("Laser 2"));
}

void TestLaserTab::otherCardTypeShowsOnlyTheTubePair()
{
    m_card.m_nCardType = 5;
    TabTestFixture f;
    QVERIFY(Child(f, "widget_laserConfiguration")->isHidden());
    QVERIFY(!Child(f, "widget_tubeconfiguration")->isHidden());
    QVERIFY(static_cast<QRadioButton*>(Child(f, "radioButton_tubeSingle"))->isChecked());
    QCOMPARE(f.Table("tableWidget_laser")->columnCount(), 2);
}

void TestLaserTab::withoutACardNothingIsHiddenAndTheCountIsNotTaken()
{
    CFactoryMgrApp::GetInstance()->SetDevice(nullptr);
    FactoryParams record;
    record.laser.laserCount = 2;
    record.laser.lasers[1].powerMax = 55.0;
    TabTestFixture f(record);
    QVERIFY(!Child(f, "widget_laserConfiguration")->isHidden());
    QVERIFY(!Child(f, "widget_tubeconfiguration")->isHidden());
    // The form's checks stay; the columns follow the selected count (one).
    QVERIFY(static_cast<QRadioButton*>(Child(f, "radioButton_laserSingle"))->isChecked());
    QVERIFY(static_cast<QRadioButton*>(Child(f, "radioButton_tubeSingle"))->isChecked());
    QCOMPARE(f.Table("tableWidget_laser")->columnCount(), 2);
    QCOMPARE(f.Collected().laser.laserCount, 1);
}

void TestLaserTab::tubesShareOneType()
{
    m_card.m_nCardType = 5;
    FactoryParams record;
    record.laser.laserCount = 2;
    record.laser.lasers[0].type = 3;
    record.laser.lasers[1].type = 0;
    TabTestFixture f(record);
    QTableWidget* t = f.Table("tableWidget_laser");
    // On refresh the second tube takes the first's type.
    QCOMPARE(TableDriver::Shown(t, kType, L2), QStringLiteral("Fiber"));
    QCOMPARE(f.Collected().laser.lasers[1].type, 3);

    TableDriver::Choose(t, kType, L2, 1);   // "RF" in the second column
    QCOMPARE(TableDriver::Shown(t, kType, L1), QStringLiteral("RF"));
    QCOMPARE(TableDriver::Shown(t, kType, L2), QStringLiteral("RF"));
    const FactoryParams p = f.Collected();
    QCOMPARE(p.laser.lasers[0].type, 2);
    QCOMPARE(p.laser.lasers[1].type, 2);
}

void TestLaserTab::typeEnablesItsRows_data()
{
    QTest::addColumn<int>("nChoice");
    QTest::addColumn<int>("nType");
    QTest::addColumn<bool>("bSwitch");
    QTest::addColumn<bool>("bPreIgnition");
    QTest::newRow("Glass") << 0 << 0 << true << false;
    QTest::newRow("RF") << 1 << 2 << false << true;
    QTest::newRow("Fiber") << 2 << 3 << false << false;
}

void TestLaserTab::typeEnablesItsRows()
{
    QFETCH(int, nChoice);
    QFETCH(int, nType);
    QFETCH(bool, bSwitch);
    QFETCH(bool, bPreIgnition);
    FactoryParams record;
    record.laser.lasers[0].type = nChoice == 0 ? 3 : 0;   // start elsewhere
    TabTestFixture f(record);
    QTableWidget* t = f.Table("tableWidget_laser");
    TableDriver::Choose(t, kType, L1, nChoice);
    QCOMPARE(f.Collected().laser.lasers[0].type, nType);
    QCOMPARE(TableDriver::Cell(t, kSwitch, L1)->isEnabled(), bSwitch);
    QCOMPARE(TableDriver::Cell(t, kPreFrequency, L1)->isEnabled(), bPreIgnition);
    QCOMPARE(TableDriver::Cell(t, kPreWidth, L1)->isEnabled(), bPreIgnition);
}

void TestLaserTab::powerPercentages()
{
    FactoryParams record;
    record.laser.lasers[0].powerMin = 10.0;
    record.laser.lasers[0].powerMax = 80.0;
    TabTestFixture f(record);
    QTableWidget* t = f.Table("tableWidget_laser");
    TableDriver::Type(t, kMaxPower, L1, "150");
    QCOMPARE(f.Collected().laser.lasers[0].powerMax, 100.0);
    QCOMPARE(TableDriver::Shown(t, kMaxPower, L1), QStringLiteral("100.00"));
    TableDriver::Type(t, kMaxPower, L1, "5");
    QCOMPARE(f.Collected().laser.lasers[0].powerMax, 10.0);
    TableDriver::Type(t, kMaxPower, L1, "90");
    TableDriver::Type(t, kMinPower, L1, "12.7");
    QCOMPARE(f.Collected().laser.lasers[0].powerMin, 12.0);
    TableDriver::Type(t, kMinPower, L1, "95");   // above the maximum
    QCOMPARE(f.Collected().laser.lasers[0].powerMin, 90.0);
    TableDriver::Type(t, kMinPower, L1, "-4");
    QCOMPARE(f.Collected().laser.lasers[0].powerMin, 0.0);
}

void TestLaserTab::preBurningFrequencyInKilohertz()
{
    FactoryParams record;
    record.laser.lasers[0].type = 2;
    TabTestFixture f(record);
    QTableWidget* t = f.Table("tableWidget_laser");
    TableDriver::Type(t, kPreFrequency, L1, "0.5");
    QCOMPARE(f.Collected().laser.lasers[0].burningFrequency, 1000.0);
    QCOMPARE(TableDriver::Shown(t, kPreFrequency, L1), QStringLiteral("1.00"));
    TableDriver::Type(t, kPreFrequency, L1, "25");
    QCOMPARE(f.Collected().laser.lasers[0].burningFrequency, 10000.0);
    QCOMPARE(TableDriver::Shown(t, kPreFrequency, L1), QStringLiteral("10.00"));
    TableDriver::Type(t, kPreFrequency, L1, "7.25");
    QCOMPARE(f.Collected().laser.lasers[0].burningFrequency, 7250.0);
}

void TestLaserTab::preIgnitionWidthRoundsToTenths()
{
    FactoryParams record;
    record.laser.lasers[0].type = 2;
    TabTestFixture f(record);
    QTableWidget* t = f.Table("tableWidget_laser");
    TableDriver::Type(t, kPreWidth, L1, "0.25");
    QCOMPARE(f.Collected().laser.lasers[0].burningWidth, 0.3);
    TableDriver::Type(t, kPreWidth, L1, "250");
    QCOMPARE(f.Collected().laser.lasers[0].burningWidth, 100.0);
    TableDriver::Type(t, kPreWidth, L1, "-1");
    QCOMPARE(f.Collected().laser.lasers[0].burningWidth, 0.0);
}

void TestLaserTab::frequencyAndAttenuation()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_laser");
    TableDriver::Type(t, kFrequency, L1, "35000.1234");
    TableDriver::Type(t, kAttenuation, L1, "33.9");
    FactoryParams p = f.Collected();
    QCOMPARE(p.laser.lasers[0].frequency, 35000.123);   // stored unscaled, 3 decimals
    QCOMPARE(p.laser.lasers[0].powerReduction, 33.0);
    TableDriver::Type(t, kAttenuation, L1, "180");
    TableDriver::Type(t, kFrequency, L1, "-1");
    p = f.Collected();
    QCOMPARE(p.laser.lasers[0].powerReduction, 100.0);
    QCOMPARE(p.laser.lasers[0].frequency, 0.0);
}

void TestLaserTab::textThatIsNoNumberIsIgnored()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_laser");
    TableDriver::Type(t, kMaxPower, L1, "lots");
    QCOMPARE(f.Collected().laser.lasers[0].powerMax, 100.0);
    // The rejected text is not left standing; the line under the table says why.
    QCOMPARE(TableDriver::Shown(t, kMaxPower, L1), QStringLiteral("100.00"));
    QCOMPARE(f.Dialog()->findChild<QLabel*>("tableWidget_laser_note")->text(),
             QStringLiteral("Laser 1 Max power needs a number; kept 100.00"));
}

void TestLaserTab::ratedPowerIsTheChoicesNumber()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_laser");
    QStringList choices;
    for (int i = 0; i < TableDriver::Cell(t, kPower, L1)->comboBox()->count(); ++i)
        choices << TableDriver::Cell(t, kPower, L1)->comboBox()->itemText(i);
    QCOMPARE(choices, QStringList({"30", "40", "50", "60", "80", "100", "130"}));
    TableDriver::Choose(t, kPower, L1, 6);
    QCOMPARE(f.Collected().laser.lasers[0].power, 130);
    TableDriver::Choose(t, kPower, L1, 1);
    QCOMPARE(f.Collected().laser.lasers[0].power, 40);
}

void TestLaserTab::unknownRatedPowerIsKeptUntilChosen()
{
    FactoryParams record;
    record.laser.lasers[0].power = 45;
    TabTestFixture f(record);
    QTableWidget* t = f.Table("tableWidget_laser");
    QCOMPARE(TableDriver::Shown(t, kPower, L1), QStringLiteral("30"));
    QCOMPARE(f.Collected().laser.lasers[0].power, 45);
    TableDriver::Choose(t, kPower, L1, 2);
    QCOMPARE(f.Collected().laser.lasers[0].power, 50);
}

void TestLaserTab::waterProtectionAndSwitchLevel()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_laser");
    TableDriver::Choose(t, kWater, L1, 0);
    TableDriver::Choose(t, kSwitch, L1, 1);
    FactoryParams p = f.Collected();
    QCOMPARE(p.laser.lasers[0].waterProtect, false);
    QCOMPARE(p.laser.lasers[0].switchSignal, 1);
    QCOMPARE(TableDriver::Shown(t, kWater, L1), QStringLiteral("Close"));
    QCOMPARE(TableDriver::Shown(t, kSwitch, L1), QStringLiteral("High level"));
}

void TestLaserTab::newDataKeepsTheColumnsAndCollectTakesTheSelectedCount()
{
    TabTestFixture f;   // single laser
    FactoryParams loaded;
    loaded.laser.laserCount = 2;
    loaded.laser.lasers[0].powerMax = 66.0;
    f.Dialog()->SetParams(loaded);
    f.Dialog()->DataToCtrlSlot(true);
    QTableWidget* t = f.Table("tableWidget_laser");
    QCOMPARE(t->columnCount(), 2);
    QCOMPARE(TableDriver::Shown(t, kMaxPower, L1), QStringLiteral("66.00"));
    const FactoryParams p = f.Collected();
    QCOMPARE(p.laser.laserCount, 1);
    QCOMPARE(p.laser.lasers[0].enabled, true);
    QCOMPARE(p.laser.lasers[1].enabled, true);
    QCOMPARE(p.laser.reserved, 0);
}

void TestLaserTab::radioButtonsChangeTheCount()
{
    FactoryParams record;
    record.laser.lasers[1].powerMax = 44.0;
    TabTestFixture f(record);
    QTableWidget* t = f.Table("tableWidget_laser");
    QTest::mouseClick(static_cast<QRadioButton*>(Child(f, "radioButton_laserDouble")), Qt::LeftButton);
    QCOMPARE(t->columnCount(), 3);
    QCOMPARE(TableDriver::Shown(t, kMaxPower, L2), QStringLiteral("44.00"));
    QCOMPARE(f.Collected().laser.laserCount, 2);
    QTest::mouseClick(static_cast<QRadioButton*>(Child(f, "radioButton_laserSingle")), Qt::LeftButton);
    QCOMPARE(t->columnCount(), 2);
    QCOMPARE(f.Collected().laser.laserCount, 1);
    // The second laser's values come back unchanged.
    QTest::mouseClick(static_cast<QRadioButton*>(Child(f, "radioButton_laserDouble")), Qt::LeftButton);
    QCOMPARE(TableDriver::Shown(t, kMaxPower, L2), QStringLiteral("44.00"));
    QVERIFY(f.Log().contains("[0] radioButton_laserTubeGlass was toggled."));
    QVERIFY(f.Log().contains("[0] radioButton_laserSingle was toggled."));
}

void TestLaserTab::clickOpensTheCell()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_laser");
    TableDriver::Click(t, kMaxPower, L1);
    QVERIFY(!TableDriver::Cell(t, kMaxPower, L1)->lineEdit()->isHidden());
    QVERIFY(f.Log().contains("[0] tableWidget_laser was clicked."));
    TableDriver::Click(t, kMinPower, L1);
    QVERIFY(TableDriver::Cell(t, kMaxPower, L1)->lineEdit()->isHidden());
}

void TestLaserTab::aPressOnADisabledListIsOneClick()
{
    FactoryParams record;
    record.laser.lasers[0].type = 3;   // Fiber: "SwitchLevel" is not in use
    TabTestFixture f(record);
    QTableWidget* t = f.Table("tableWidget_laser");
    ComboBox* pCell = TableDriver::Cell(t, 2, 1);
    QVERIFY(!pCell->isEnabled());
    const int nBefore = int(f.Log().count("tableWidget_laser was clicked."));
    QTest::mouseClick(pCell->comboBox(), Qt::LeftButton, Qt::NoModifier, pCell->comboBox()->rect().center());
    QCoreApplication::processEvents();
    QCOMPARE(int(f.Log().count("tableWidget_laser was clicked.")), nBefore + 1);
    // A right button on an enabled list is no click on its cell either.
    ComboBox* pType = TableDriver::Cell(t, 0, 1);
    QTest::mousePress(pType->comboBox(), Qt::RightButton, Qt::NoModifier, pType->comboBox()->rect().center());
    QTest::mouseRelease(pType->comboBox(), Qt::RightButton, Qt::NoModifier, pType->comboBox()->rect().center());
    QCoreApplication::processEvents();
    QCOMPARE(int(f.Log().count("tableWidget_laser was clicked.")), nBefore + 1);
}

FACTORYMGR_TEST_MAIN(TestLaserTab)
#include "tst_lasertab.moc"
