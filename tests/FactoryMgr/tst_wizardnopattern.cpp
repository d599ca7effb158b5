#include "TestMain.h"

#include "CDlgCalibrateXyStep.h"
#include "CFactoryMgrApp.h"
#include "FakeCard.h"
#include "FakeDevice.h"
#include "FakeNotifier.h"

#include <QPushButton>

namespace {
int Convert(const char* szPattern, const char* szJob, double)
{
    return QFile::copy(QString::fromUtf8(szPattern), QString::fromUtf8(szJob)) ? 0 : 1;
}
}

// Built beside resources of its own, which have no standard pattern.
class TestWizardNoPattern : public QObject
{
    Q_OBJECT
private slots:
    void cuttingReportsElevenAndLeavesNoJob();
};

void TestWizardNoPattern::cuttingReportsElevenAndLeavesNoJob()
{
    QVERIFY(!QFileInfo::exists(CFactoryMgrApp::GetResourceDirectory() + "/Data/adjustpulse.lcpx"));
    FakeCard card;
    FakeDevice device;
    device.m_pCard = &card;
    FakeNotifier notifier;
    CFactoryMgrApp::GetInstance()->SetDevice(&device);
    CFactoryMgrApp::GetInstance()->SetNotifier(&notifier);
    CFactoryMgrApp::GetInstance()->SetConvertPatternCallback(&Convert);

    CDlgCalibrateXyStep wizard;
    wizard.show();
    QVERIFY(QTest::qWaitForWindowExposed(&wizard));
    QTest::mouseClick(wizard.findChild<QPushButton*>("pushButton_cutting"), Qt::LeftButton);
    QCOMPARE(notifier.m_calls, (QList<QPair<int, int>>{{11, 0}}));
    QVERIFY(card.Calls().isEmpty());
    QVERIFY(!QFileInfo::exists(CDlgCalibrateXyStep::JobPath()));
    CFactoryMgrApp::GetInstance()->SetDevice(nullptr);
    CFactoryMgrApp::GetInstance()->SetNotifier(nullptr);
}

FACTORYMGR_TEST_MAIN(TestWizardNoPattern)
#include "tst_wizardnopattern.moc"
