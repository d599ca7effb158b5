#include "TestMain.h"

#include "CDlgCalibrateXyStep.h"
#include "CFactoryMgrApp.h"
#include "CTranslator.h"
#include "FakeCard.h"
#include "FakeDevice.h"
#include "FakeNotifier.h"
#include "HostRules.h"

#include "ModalAnswerer.h"

#include <QDoubleSpinBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QRegularExpression>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStackedWidget>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>

namespace {
// The host's conversion: the job is the pattern's bytes, so its presence is
// what counts; a second flavour makes no job at all.
int CopyPattern(const char* szPattern, const char* szJob, double)
{
    return QFile::copy(QString::fromUtf8(szPattern), QString::fromUtf8(szJob)) ? 0 : 1;
}

int MakeNoJob(const char*, const char*, double)
{
    return 0;
}

// A converter that fails, as one whose pattern tool crashed does.
int FailToConvert(const char*, const char*, double)
{
    return 1;
}

// Sees the ticks of the GUI thread's repeating timers that belong to no
// object, such as ThreadDialogRun's progress poll, which asks the task's owner.
class PollTicks : public QObject
{
public:
    explicit PollTicks(std::function<void(int)> onTick)
        : m_onTick(std::move(onTick))
    {
    }

protected:
    bool eventFilter(QObject* pWatched, QEvent* event) override
    {
        auto* pTimer = qobject_cast<QTimer*>(pWatched);
        if (event->type() == QEvent::Timer && pTimer && !pTimer->parent() && !pTimer->isSingleShot())
            m_onTick(++m_nTicks);
        return false;
    }

private:
    std::function<void(int)> m_onTick;
    int m_nTicks = 0;
};
}

class TestCalibrateWizard : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void formHasEveryWidgetWithItsRange();
    void unitGrouping_data();
    void unitGrouping();
    void roundsHalvesAwayFromZero();
    void roundsOddValuesWithoutUndefinedConversions();
    void okStraightAfterShowingGivesOne_data();
    void okStraightAfterShowingGivesOne();
    void inchTargetsShowAndComeBack();
    void millimetreMeasurementGivesItsRatio();
    void aDecimalCommaOrPointIsTheNumberMeant_data();
    void aDecimalCommaOrPointIsTheNumberMeant();
    void inchMeasurementGivesItsRatio();
    void everyShowingResets();
    void storedPowerShowsTruncated();
    void oddStoredPowerIsTheDefaultOrHeldToTheRange_data();
    void oddStoredPowerIsTheDefaultOrHeldToTheRange();
    void powerIsStoredOnlyWhenTheWizardGoes();
    void closingWithTheCloseButtonEmitsNothing();
    void pagesMoveFreely();
    void cuttingSendsTheJobAndDeletesIt();
    void cuttingWithoutAJobReportsEleven();
    void aJobLeftByAnEarlierRunIsNeverCut_data();
    void aJobLeftByAnEarlierRunIsNeverCut();
    void cuttingWithTheCardAbsentOrBusy_data();
    void cuttingWithTheCardAbsentOrBusy();
    void deletingTheWizardWhileItCuts();
    void deletingTheWizardWhileTheHostTakesItsRatios();
    void otherTasksAnswerMinusOne();
    void textsFollowTheLanguage();

private:
    void Show(CDlgCalibrateXyStep& wizard);
    template <typename T>
    static T* Child(QWidget* pWizard, const char* szName)
    {
        return pWizard->findChild<T*>(QString::fromLatin1(szName));
    }

    std::unique_ptr<FakeCard> m_pCard;
    FakeDevice m_device;
    FakeNotifier m_notifier;
};

void TestCalibrateWizard::init()
{
    m_pCard = std::make_unique<FakeCard>();
    m_device.m_pCard = m_pCard.get();
    m_notifier.m_calls.clear();
    CFactoryMgrApp* pApp = CFactoryMgrApp::GetInstance();
    pApp->SetDevice(&m_device);
    pApp->SetNotifier(&m_notifier);
    pApp->SetUnit(1);
    pApp->SetConvertPatternCallback(&CopyPattern);
    QFile::remove(CDlgCalibrateXyStep::UserParamPath());
}

void TestCalibrateWizard::cleanup()
{
    CFactoryMgrApp* pApp = CFactoryMgrApp::GetInstance();
    pApp->SetDevice(nullptr);
    pApp->SetNotifier(nullptr);
    pApp->SetConvertPatternCallback(nullptr);
    pApp->SetUnit(0);
    CTranslator::GetInstance()->SetLanguage("en");
}

void TestCalibrateWizard::Show(CDlgCalibrateXyStep& wizard)
{
    wizard.show();
    QVERIFY(QTest::qWaitForWindowExposed(&wizard));
}

void TestCalibrateWizard::formHasEveryWidgetWithItsRange()
{
    CDlgCalibrateXyStep wizard;
    QCOMPARE(wizard.objectName(), QStringLiteral("CDlgCalibrateXyStep"));
    QCOMPARE(wizard.size(), QSize(330, 196));
    auto* pStack = Child<QStackedWidget>(&wizard, "stackedWidget");
    QCOMPARE(pStack->count(), 2);
    QCOMPARE(pStack->widget(0)->objectName(), QStringLiteral("page1"));
    QCOMPARE(pStack->widget(1)->objectName(), QStringLiteral("page2"));
    QCOMPARE(pStack->currentIndex(), 0);
    for (const char* szName : {"widget_step", "label_page1Step1", "label_page1Tip1", "label_page1Line", "label_6",
                               "label_page1Step2", "label_page1Tip2", "widget_paramInStep1", "label_14", "label_15",
                               "label_16", "label_unit1_1", "label_unit1_2", "label_19", "widget", "widget_step_2",
                               "label_page2Step1", "label_page2Tip1", "label_page2Line", "label_20", "label_page2Step2",
                               "label_page2Tip2", "widget_paramInStep2", "label_7", "label_8", "label_unit2_1",
                               "label_unit2_2", "widget_2"})
        QVERIFY2(Child<QWidget>(&wizard, szName), szName);
    QVERIFY(wizard.findChild<QLayout*>("verticalLayout_15"));
    QVERIFY(Child<QLineEdit>(&wizard, "lineEdit_targetW") && Child<QLineEdit>(&wizard, "lineEdit_targetH"));
    auto* pPower = Child<QSpinBox>(&wizard, "spinBox_power");
    QCOMPARE(pPower->minimum(), 0);
    QCOMPARE(pPower->maximum(), 100);
    for (const char* szName : {"doubleSpinBox_measureW", "doubleSpinBox_measureH"}) {
        auto* pMeasure = Child<QDoubleSpinBox>(&wizard, szName);
        QCOMPARE(pMeasure->minimum(), 0.01);
        QCOMPARE(pMeasure->maximum(), 200.0);
        QCOMPARE(pMeasure->decimals(), 2);
    }
    QCOMPARE(Child<QLabel>(&wizard, "label_19")->text(), QStringLiteral("%"));
}

void TestCalibrateWizard::unitGrouping_data()
{
    QTest::addColumn<int>("nUnit");
    QTest::addColumn<bool>("bInch");
    QTest::newRow("0") << 0 << true;
    QTest::newRow("1") << 1 << false;
    QTest::newRow("2") << 2 << true;
    QTest::newRow("3") << 3 << false;
    QTest::newRow("17") << 17 << false;
    QTest::newRow("-1") << -1 << false;
}

void TestCalibrateWizard::unitGrouping()
{
    QFETCH(int, nUnit);
    QFETCH(bool, bInch);
    CFactoryMgrApp::GetInstance()->SetUnit(nUnit);
    QCOMPARE(HostRules::IsInch(nUnit), bInch);
    CDlgCalibrateXyStep wizard;
    Show(wizard);
    QCOMPARE(Child<QLineEdit>(&wizard, "lineEdit_targetW")->text(), bInch ? QStringLiteral("5.91") : QStringLiteral("150"));
    for (const char* szUnit : {"label_unit1_1", "label_unit1_2", "label_unit2_1", "label_unit2_2"})
        QCOMPARE(Child<QLabel>(&wizard, szUnit)->text(), bInch ? QStringLiteral("inch") : QStringLiteral("mm"));
}

void TestCalibrateWizard::roundsHalvesAwayFromZero()
{
    QCOMPARE(CDlgCalibrateXyStep::Round2(1.005), 1.0);   // 100.49999...: not a half
    QCOMPARE(CDlgCalibrateXyStep::Round2(2.125), 2.13);
    QCOMPARE(CDlgCalibrateXyStep::Round2(-2.125), -2.13);
    QCOMPARE(CDlgCalibrateXyStep::Round2(150.0 / 25.4), 5.91);
    QCOMPARE(CDlgCalibrateXyStep::Round2(5.91 * 25.4), 150.11);
}

void TestCalibrateWizard::roundsOddValuesWithoutUndefinedConversions()
{
    const double dInf = std::numeric_limits<double>::infinity();
    QVERIFY(std::isnan(CDlgCalibrateXyStep::Round2(std::numeric_limits<double>::quiet_NaN())));
    QCOMPARE(CDlgCalibrateXyStep::Round2(dInf), dInf);
    QCOMPARE(CDlgCalibrateXyStep::Round2(-dInf), -dInf);
    QCOMPARE(CDlgCalibrateXyStep::Round2(1e20), 1e20);
    QCOMPARE(CDlgCalibrateXyStep::Round2(-1e20), -1e20);
    // Past int once scaled to hundredths, still rounded.
    QCOMPARE(CDlgCalibrateXyStep::Round2(25000000.125), 25000000.13);
    QCOMPARE(CDlgCalibrateXyStep::Round2(-25000000.125), -25000000.13);
}

void TestCalibrateWizard::okStraightAfterShowingGivesOne_data()
{
    QTest::addColumn<int>("nUnit");
    QTest::newRow("millimetres") << 1;
    QTest::newRow("inch") << 0;
}

void TestCalibrateWizard::okStraightAfterShowingGivesOne()
{
    QFETCH(int, nUnit);
    CFactoryMgrApp::GetInstance()->SetUnit(nUnit);
    CDlgCalibrateXyStep wizard;
    Show(wizard);
    QSignalSpy ratios(&wizard, &CDlgCalibrateXyStep::CalibrateXyStepSignal);
    Child<QPushButton>(&wizard, "pushButton_nextStep")->click();
    QTest::mouseClick(Child<QPushButton>(&wizard, "pushButton_ok"), Qt::LeftButton);
    QCOMPARE(ratios.count(), 1);
    QCOMPARE(ratios.first().at(0).toDouble(), 1.0);
    QCOMPARE(ratios.first().at(1).toDouble(), 1.0);
    QVERIFY(!wizard.isVisible());
}

void TestCalibrateWizard::inchTargetsShowAndComeBack()
{
    CFactoryMgrApp::GetInstance()->SetUnit(0);
    CDlgCalibrateXyStep wizard;
    Show(wizard);
    QCOMPARE(Child<QLineEdit>(&wizard, "lineEdit_targetW")->text(), QStringLiteral("5.91"));
    QCOMPARE(Child<QLineEdit>(&wizard, "lineEdit_targetH")->text(), QStringLiteral("5.91"));
    QVERIFY(!Child<QLineEdit>(&wizard, "lineEdit_targetW")->isEnabled());
    QVERIFY(!Child<QLineEdit>(&wizard, "lineEdit_targetH")->isEnabled());
    QCOMPARE(wizard.TargetWidth(), 150.11);
    QCOMPARE(Child<QDoubleSpinBox>(&wizard, "doubleSpinBox_measureW")->value(), 5.91);

    QSignalSpy ratios(&wizard, &CDlgCalibrateXyStep::CalibrateXyStepSignal);
    auto* pWidth = Child<QDoubleSpinBox>(&wizard, "doubleSpinBox_measureW");
    pWidth->clear();
    QTest::keyClicks(pWidth, "5.91");
    QCOMPARE(wizard.MeasuredWidth(), 150.11);
    Child<QPushButton>(&wizard, "pushButton_ok")->click();
    QCOMPARE(ratios.first().at(0).toDouble(), 1.0);
}

void TestCalibrateWizard::millimetreMeasurementGivesItsRatio()
{
    CDlgCalibrateXyStep wizard;
    Show(wizard);
    Child<QPushButton>(&wizard, "pushButton_nextStep")->click();
    auto* pWidth = Child<QDoubleSpinBox>(&wizard, "doubleSpinBox_measureW");
    auto* pHeight = Child<QDoubleSpinBox>(&wizard, "doubleSpinBox_measureH");
    pWidth->selectAll();
    QTest::keyClicks(pWidth, "151.5");
    pHeight->selectAll();
    QTest::keyClicks(pHeight, "148.5");
    QSignalSpy ratios(&wizard, &CDlgCalibrateXyStep::CalibrateXyStepSignal);
    QTest::mouseClick(Child<QPushButton>(&wizard, "pushButton_ok"), Qt::LeftButton);
    QCOMPARE(ratios.first().at(0).toDouble(), 1.01);
    QCOMPARE(ratios.first().at(1).toDouble(), 0.99);
}

void TestCalibrateWizard::aDecimalCommaOrPointIsTheNumberMeant_data()
{
    QTest::addColumn<QString>("strTyped");
    QTest::addColumn<double>("dMeant");
    QTest::newRow("comma") << "151,5" << 151.5;
    QTest::newRow("point") << "151.5" << 151.5;
    QTest::newRow("comma, two decimals") << "148,25" << 148.25;
    QTest::newRow("point, two decimals") << "148.25" << 148.25;
    QTest::newRow("whole") << "152" << 152.0;
}

void TestCalibrateWizard::aDecimalCommaOrPointIsTheNumberMeant()
{
    // Whatever the desktop's locale, a ruler's reading typed with either mark
    // is the number meant, never one a thousand times larger; the box shows
    // it with the locale's mark.
    QFETCH(QString, strTyped);
    QFETCH(double, dMeant);
    CDlgCalibrateXyStep wizard;
    Show(wizard);
    Child<QPushButton>(&wizard, "pushButton_nextStep")->click();
    auto* pWidth = Child<QDoubleSpinBox>(&wizard, "doubleSpinBox_measureW");
    pWidth->selectAll();
    QTest::keyClicks(pWidth, strTyped);
    QCOMPARE(pWidth->value(), dMeant);
    QCOMPARE(wizard.MeasuredWidth(), dMeant);
    QCOMPARE(pWidth->text(), QString(strTyped).replace(QRegularExpression("[.,]"), QLocale().decimalPoint()));
    QSignalSpy ratios(&wizard, &CDlgCalibrateXyStep::CalibrateXyStepSignal);
    QTest::mouseClick(Child<QPushButton>(&wizard, "pushButton_ok"), Qt::LeftButton);
    QCOMPARE(ratios.first().at(0).toDouble(), dMeant / 150.0);
}

void TestCalibrateWizard::inchMeasurementGivesItsRatio()
{
    CFactoryMgrApp::GetInstance()->SetUnit(2);
    CDlgCalibrateXyStep wizard;
    Show(wizard);
    auto* pHeight = Child<QDoubleSpinBox>(&wizard, "doubleSpinBox_measureH");
    pHeight->selectAll();
    QTest::keyClicks(pHeight, "6");
    QCOMPARE(wizard.MeasuredHeight(), 152.4);
    QSignalSpy ratios(&wizard, &CDlgCalibrateXyStep::CalibrateXyStepSignal);
    Child<QPushButton>(&wizard, "pushButton_ok")->click();
    QCOMPARE(ratios.first().at(1).toDouble(), 152.4 / 150.11);
}

void TestCalibrateWizard::everyShowingResets()
{
    CDlgCalibrateXyStep wizard;
    Show(wizard);
    Child<QPushButton>(&wizard, "pushButton_nextStep")->click();
    Child<QDoubleSpinBox>(&wizard, "doubleSpinBox_measureW")->setValue(120.0);
    wizard.hide();
    Show(wizard);
    QCOMPARE(Child<QStackedWidget>(&wizard, "stackedWidget")->currentIndex(), 0);
    QCOMPARE(wizard.MeasuredWidth(), 150.0);
    QCOMPARE(Child<QDoubleSpinBox>(&wizard, "doubleSpinBox_measureW")->value(), 150.0);
    QCOMPARE(wizard.windowTitle(), QStringLiteral("Calibrate XY step"));
}

void TestCalibrateWizard::storedPowerShowsTruncated()
{
    QSettings(CDlgCalibrateXyStep::UserParamPath(), QSettings::IniFormat).setValue("DLG_CALIBRATE_XY_STEP/CUTTING_POWER", 37.9);
    CDlgCalibrateXyStep wizard;
    Show(wizard);
    QCOMPARE(Child<QSpinBox>(&wizard, "spinBox_power")->value(), 37);
    QCOMPARE(wizard.CuttingPower(), 37.0);   // the spin box wrote back what it shows
}

void TestCalibrateWizard::oddStoredPowerIsTheDefaultOrHeldToTheRange_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<int>("nShown");
    QTest::newRow("nan") << QByteArray("nan") << 10;
    QTest::newRow("inf") << QByteArray("inf") << 100;
    QTest::newRow("-inf") << QByteArray("-inf") << 0;
    QTest::newRow("1e20") << QByteArray("1e20") << 100;
    QTest::newRow("-1e20") << QByteArray("-1e20") << 0;
}

void TestCalibrateWizard::oddStoredPowerIsTheDefaultOrHeldToTheRange()
{
    QFETCH(QByteArray, stored);
    QFETCH(int, nShown);
    QFile file(CDlgCalibrateXyStep::UserParamPath());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[DLG_CALIBRATE_XY_STEP]\nCUTTING_POWER=" + stored + "\n");
    file.close();
    auto* pWizard = new CDlgCalibrateXyStep;
    Show(*pWizard);
    QCOMPARE(Child<QSpinBox>(pWizard, "spinBox_power")->value(), nShown);
    QCOMPARE(pWizard->CuttingPower(), double(nShown));
    delete pWizard;
    // What goes back into the file is the power that was shown.
    QCOMPARE(QSettings(CDlgCalibrateXyStep::UserParamPath(), QSettings::IniFormat)
                 .value("DLG_CALIBRATE_XY_STEP/CUTTING_POWER")
                 .toDouble(),
             double(nShown));
}

void TestCalibrateWizard::powerIsStoredOnlyWhenTheWizardGoes()
{
    const QString strKey = "DLG_CALIBRATE_XY_STEP/CUTTING_POWER";
    {
        auto* pWizard = new CDlgCalibrateXyStep;
        Show(*pWizard);
        QCOMPARE(pWizard->CuttingPower(), 10.0);   // the default
        auto* pPower = Child<QSpinBox>(pWizard, "spinBox_power");
        pPower->selectAll();
        QTest::keyClicks(pPower, "64");
        QCOMPARE(pWizard->CuttingPower(), 64.0);
        Child<QPushButton>(pWizard, "pushButton_ok")->click();
        QVERIFY(!QSettings(CDlgCalibrateXyStep::UserParamPath(), QSettings::IniFormat).contains(strKey));
        delete pWizard;
    }
    QCOMPARE(QSettings(CDlgCalibrateXyStep::UserParamPath(), QSettings::IniFormat).value(strKey).toDouble(), 64.0);
}

void TestCalibrateWizard::closingWithTheCloseButtonEmitsNothing()
{
    CDlgCalibrateXyStep wizard;
    Show(wizard);
    QSignalSpy ratios(&wizard, &CDlgCalibrateXyStep::CalibrateXyStepSignal);
    wizard.close();
    QVERIFY(!wizard.isVisible());
    QCOMPARE(ratios.count(), 0);
}

void TestCalibrateWizard::pagesMoveFreely()
{
    CDlgCalibrateXyStep wizard;
    Show(wizard);
    auto* pStack = Child<QStackedWidget>(&wizard, "stackedWidget");
    QTest::mouseClick(Child<QPushButton>(&wizard, "pushButton_nextStep"), Qt::LeftButton);
    QCOMPARE(pStack->currentIndex(), 1);
    QTest::mouseClick(Child<QPushButton>(&wizard, "pushButton_prevStep"), Qt::LeftButton);
    QCOMPARE(pStack->currentIndex(), 0);
}

void TestCalibrateWizard::cuttingSendsTheJobAndDeletesIt()
{
    QString strJobAtCut;
    bool bJobThere = false;
    m_pCard->m_onCall = [&](const QString& strName) {
        if (strName == "BacklashAdjust") {
            strJobAtCut = m_pCard->Calls().last().arg.toString();
            bJobThere = QFileInfo(strJobAtCut).isFile();
        }
    };
    m_pCard->m_nResult = 0;
    CDlgCalibrateXyStep wizard;
    Show(wizard);
    QTest::mouseClick(Child<QPushButton>(&wizard, "pushButton_cutting"), Qt::LeftButton);

    const QList<FakeCard::Call> calls = m_pCard->Calls();
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls[0].strName, QStringLiteral("BacklashAdjust"));
    QCOMPARE(strJobAtCut, CDlgCalibrateXyStep::JobPath());
    QVERIFY(strJobAtCut.endsWith("/Resources/cache/adjustpulse.tl"));
    QVERIFY(bJobThere);                                  // sent while it existed...
    QVERIFY(!QFileInfo::exists(strJobAtCut));           // ...and deleted after
    QVERIFY(calls[0].pThread != QThread::currentThread());
    QCOMPARE(m_notifier.m_calls, (QList<QPair<int, int>>{{0, 0}}));   // success goes to the host too
}

void TestCalibrateWizard::cuttingWithoutAJobReportsEleven()
{
    CFactoryMgrApp::GetInstance()->SetConvertPatternCallback(&MakeNoJob);
    CDlgCalibrateXyStep wizard;
    Show(wizard);
    QTest::mouseClick(Child<QPushButton>(&wizard, "pushButton_cutting"), Qt::LeftButton);
    QCOMPARE(m_notifier.m_calls, (QList<QPair<int, int>>{{11, 0}}));
    QVERIFY(m_pCard->Calls().isEmpty());
    QVERIFY(!QFileInfo::exists(CDlgCalibrateXyStep::JobPath()));

    CFactoryMgrApp::GetInstance()->SetConvertPatternCallback(nullptr);   // a host without one
    double dPower = 10.0;
    QCOMPARE(wizard.RunTask(CDlgCalibrateXyStep::TaskCut, &dPower), 11);
}

void TestCalibrateWizard::aJobLeftByAnEarlierRunIsNeverCut_data()
{
    QTest::addColumn<bool>("bConverter");
    QTest::newRow("a converter that fails") << true;
    QTest::newRow("no converter") << false;
}

void TestCalibrateWizard::aJobLeftByAnEarlierRunIsNeverCut()
{
    QFETCH(bool, bConverter);
    // What a killed run leaves in the cache: a job the card would cut.
    const QString strJob = CDlgCalibrateXyStep::JobPath();
    QVERIFY(QDir().mkpath(QFileInfo(strJob).absolutePath()));
    {
        QFile stale(strJob);
        QVERIFY(stale.open(QIODevice::WriteOnly));
        QVERIFY(stale.write("TL 1\nPOWER 80\nPOLYLINE 0,0 300,0 300,300\n") > 0);
    }
    CFactoryMgrApp::GetInstance()->SetConvertPatternCallback(bConverter ? &FailToConvert : nullptr);
    CDlgCalibrateXyStep wizard;
    Show(wizard);
    QTest::mouseClick(Child<QPushButton>(&wizard, "pushButton_cutting"), Qt::LeftButton);
    QVERIFY2(m_pCard->Calls().isEmpty(), "the old job was sent to the card");
    QCOMPARE(m_notifier.m_calls, (QList<QPair<int, int>>{{11, 0}}));
    QVERIFY(!QFileInfo::exists(strJob));
}

void TestCalibrateWizard::cuttingWithTheCardAbsentOrBusy_data()
{
    QTest::addColumn<bool>("bBusy");
    QTest::addColumn<int>("nCode");
    QTest::newRow("absent") << false << 1001;
    QTest::newRow("busy") << true << 1005;
}

void TestCalibrateWizard::cuttingWithTheCardAbsentOrBusy()
{
    QFETCH(bool, bBusy);
    QFETCH(int, nCode);
    if (bBusy)
        m_pCard->m_taskState.m_bBusy = true;
    else
        m_device.m_pCard = nullptr;
    CDlgCalibrateXyStep wizard;
    Show(wizard);
    QTest::mouseClick(Child<QPushButton>(&wizard, "pushButton_cutting"), Qt::LeftButton);
    QCOMPARE(m_notifier.m_calls, (QList<QPair<int, int>>{{nCode, 0}}));
    QVERIFY(!QFileInfo::exists(CDlgCalibrateXyStep::JobPath()));   // made, refused, deleted
}

void TestCalibrateWizard::deletingTheWizardWhileItCuts()
{
    auto* pWizard = new CDlgCalibrateXyStep;
    Show(*pWizard);
    const QPointer<CDlgCalibrateXyStep> pAlive(pWizard);
    // The host's window is the active one: the progress dialog, which takes
    // the active window for its parent, is not the wizard's to delete.
    QWidget hostWindow;
    hostWindow.show();
    hostWindow.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&hostWindow));
    // The host deletes the wizard from the cut's side while the card holds
    // the cut; the card goes on once the progress poll has ticked twice over
    // the deleted wizard.
    m_pCard->m_bHoldCalls = true;
    m_pCard->m_onCall = [pWizard](const QString&) { pWizard->deleteLater(); };
    int nTicksAfter = 0;
    PollTicks ticks([&](int) {
        if (pAlive.isNull() && ++nTicksAfter == 2)
            m_pCard->ReleaseAll();
    });
    qApp->installEventFilter(&ticks);
    QTimer giveUp;   // a broken run fails instead of hanging
    giveUp.setSingleShot(true);
    connect(&giveUp, &QTimer::timeout, [this] { m_pCard->ReleaseAll(); });
    giveUp.start(30000);

    Child<QPushButton>(pWizard, "pushButton_cutting")->click();
    qApp->removeEventFilter(&ticks);

    QVERIFY(pAlive.isNull());
    QVERIFY(giveUp.isActive());
    QVERIFY(nTicksAfter >= 2);
    const QList<FakeCard::Call> calls = m_pCard->Calls();
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls[0].strName, QStringLiteral("BacklashAdjust"));
    QCOMPARE(m_notifier.m_calls, (QList<QPair<int, int>>{{0, 0}}));   // the result still reaches the host
    QVERIFY(!QFileInfo::exists(CDlgCalibrateXyStep::JobPath()));
}

void TestCalibrateWizard::deletingTheWizardWhileTheHostTakesItsRatios()
{
    auto* pWizard = new CDlgCalibrateXyStep;
    Show(*pWizard);
    const QPointer<CDlgCalibrateXyStep> pAlive(pWizard);
    QList<double> ratios;
    ModalAnswerer answerer;
    answerer.AnswerWith("OK");
    // A host that drops the wizard as it takes the ratios, and says so in a
    // box of its own, in whose loop the deletion happens.
    connect(pWizard, &CDlgCalibrateXyStep::CalibrateXyStepSignal, pWizard, [&](double dRatioW, double dRatioH) {
        ratios << dRatioW << dRatioH;
        pAlive->deleteLater();
        QMessageBox::information(nullptr, "Host", "Ratios taken");
    });
    Child<QPushButton>(pWizard, "pushButton_ok")->click();
    QVERIFY(pAlive.isNull());
    QCOMPARE(ratios, (QList<double>{1.0, 1.0}));
    QCOMPARE(answerer.Count(), 1);
}

void TestCalibrateWizard::otherTasksAnswerMinusOne()
{
    CDlgCalibrateXyStep wizard;
    QCOMPARE(wizard.RunTask(1, nullptr), -1);
    QCOMPARE(wizard.RunTask(-3, nullptr), -1);
    QCOMPARE(wizard.IsTaskCancelable(0), 0);
    QCOMPARE(wizard.CancelTask(0, 1, 2), 0);
    QCOMPARE(wizard.GetTaskProgress(0), 0.0);
    QVERIFY(m_pCard->Calls().isEmpty());
}

void TestCalibrateWizard::textsFollowTheLanguage()
{
    CDlgCalibrateXyStep wizard;
    QCOMPARE(Child<QLabel>(&wizard, "label_7")->text(), QStringLiteral("Target width"));
    QCOMPARE(Child<QLabel>(&wizard, "label_page2Tip2")->text(), QStringLiteral("Measure standard pattern"));
    QCOMPARE(Child<QPushButton>(&wizard, "pushButton_prevStep")->text(), QStringLiteral("Previous step"));
    QVERIFY(CTranslator::GetInstance()->SetLanguage("zh_CN"));
    QTRY_COMPARE(Child<QPushButton>(&wizard, "pushButton_cutting")->text(), QStringLiteral("切割"));
    QCOMPARE(Child<QLabel>(&wizard, "label_16")->text(), QStringLiteral("切割功率"));
    QCOMPARE(Child<QLabel>(&wizard, "label_8")->text(), QStringLiteral("目标高度"));
    QCOMPARE(Child<QPushButton>(&wizard, "pushButton_ok")->text(), QStringLiteral("确定"));
}

FACTORYMGR_TEST_MAIN(TestCalibrateWizard)
#include "tst_calibratewizard.moc"
