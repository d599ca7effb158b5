#include "TestMain.h"

#include "CFactoryMgrApp.h"
#include "CUiPermissionsManager.h"
#include "CardInfo.h"
#include "FakeCard.h"
#include "FakeDevice.h"
#include "FakeNotifier.h"
#include "TestThread.h"
#include "ThreadDialogRun.h"

#include <QStandardPaths>
#include <QScopeGuard>
#include <QThread>

#include <atomic>
#include <functional>
#include <memory>

namespace {

// A service object over a device whose current card is a recording fake.
struct CardMachine
{
    CardMachine() { device.m_pCard = &card; app.SetDevice(&device); }
    FakeCard card;
    FakeDevice device;
    CFactoryMgrApp app;
};

// One of the five named card functions, called the way its caller does.
struct CardFunction
{
    const char* szName;
    std::function<int(CFactoryMgrApp&, CardInfo*)> call;
    bool bQuery;
    QVariant expectedArg;   // what must reach the card (GetCardInfo: checked separately)
};

const QString kFirmwarePath = QStringLiteral("/tmp/firmware/main.upd");

QList<CardFunction> CardFunctions()
{
    return {
        {"BacklashAdjust", [](CFactoryMgrApp& app, CardInfo*) { return app.BacklashAdjust("/tmp/job.tl"); }, false,
         QVariant(QStringLiteral("/tmp/job.tl"))},
        {"GetCardInfo", [](CFactoryMgrApp& app, CardInfo* pInfo) { return app.GetCardInfo(pInfo); }, true, QVariant()},
        {"ClearCardInfo", [](CFactoryMgrApp& app, CardInfo*) { return app.ClearCardInfo(); }, false, QVariant()},
        {"CardUpgrade", [](CFactoryMgrApp& app, CardInfo*) { return app.CardUpgrade(kFirmwarePath); }, false,
         QVariant(kFirmwarePath)},
        {"PanelUpgrade", [](CFactoryMgrApp& app, CardInfo*) { return app.PanelUpgrade(kFirmwarePath); }, false,
         QVariant(kFirmwarePath)},
    };
}

enum Condition
{
    NoDevice,
    NoCard,
    State0,
    State2,
    State3,
    Busy,
    BusyInState3
};

} // namespace

Q_DECLARE_METATYPE(Condition)

class TestFactoryMgrApp : public QObject
{
    Q_OBJECT
private slots:
    void moduleWideInstanceStartsEmpty();

    void cardFunctions_data();
    void cardFunctions();
    void getCardInfoHandsTheCallersRecordToTheCard();

    void secondCallerWaitsWhileFirstIsInsideTheCard();
    void parameterTransferWaitsWhileACardCallIsInside();

    void readFactoryParamsPassesTheRecordAndTheResult();
    void writeFactoryParamsPassesTheRecordAndTheResult();
    void transfersWithoutDeviceAnswerNoCard();

    void runTaskUpgradesPanelAndMainboard();
    void runTaskOtherTaskReturnsZeroWithoutLocking();
    void runTaskUnderThreadDialogRunReachesTheCardOffTheGuiThread();
    void threadDialogOwnerAnswersAreConstants();

    void reportErrorBeforeInitDoesNothing();
    void reportErrorHandsTheCodeToTheNotifier();

    void settersStoreWhatTheHostHandsIn();

    void resourceDirectoryIsBesideTheApplication();
    void userDataDirectoryIsCreatedOnFirstUse();
    void userDataDirectoryFollowsTheTheme();
};

void TestFactoryMgrApp::moduleWideInstanceStartsEmpty()
{
    CFactoryMgrApp* pApp = CFactoryMgrApp::GetInstance();
    QVERIFY(pApp);
    QCOMPARE(CFactoryMgrApp::GetInstance(), pApp);
    QCOMPARE(pApp->GetFactoryFlag(), false);
    QVERIFY(pApp->GetConvertPatternCallback() == nullptr);
    QCOMPARE(pApp->GetUnit(), 0);
    QVERIFY(pApp->GetCurrentCard() == nullptr);
    QCOMPARE(pApp->ReportError(1001), 0);
}

void TestFactoryMgrApp::cardFunctions_data()
{
    QTest::addColumn<int>("nFunction");
    QTest::addColumn<Condition>("condition");
    QTest::addColumn<int>("nExpected");
    QTest::addColumn<bool>("bReachesCard");

    const int kCardAnswer = 42;
    const QList<CardFunction> functions = CardFunctions();
    for (int i = 0; i < functions.size(); ++i) {
        const bool bInfo = qstrcmp(functions[i].szName, "GetCardInfo") == 0;
        const auto row = [&](const char* szCondition) {
            return &QTest::newRow(qPrintable(QStringLiteral("%1/%2").arg(functions[i].szName, szCondition)));
        };
        *row("no device") << i << NoDevice << 1001 << false;
        *row("no card") << i << NoCard << 1001 << false;
        *row("state 0") << i << State0 << 1001 << false;
        *row("state 2") << i << State2 << kCardAnswer << true;
        *row("state 3") << i << State3 << (bInfo ? kCardAnswer : 1001) << bInfo;
        *row("busy") << i << Busy << 1005 << false;
        *row("busy in state 3") << i << BusyInState3 << (bInfo ? 1005 : 1001) << false;
    }
}

void TestFactoryMgrApp::cardFunctions()
{
    QFETCH(int, nFunction);
    QFETCH(Condition, condition);
    QFETCH(int, nExpected);
    QFETCH(bool, bReachesCard);

    FakeCard card;
    card.m_nResult = 42;
    card.m_nState = condition == State0 ? 0 : (condition == State3 || condition == BusyInState3) ? 3 : 2;
    card.m_taskState.m_bBusy = condition == Busy || condition == BusyInState3;
    FakeDevice device;
    device.m_pCard = condition == NoCard ? nullptr : &card;
    CFactoryMgrApp app;
    if (condition != NoDevice)
        app.SetDevice(&device);

    const CardFunction function = CardFunctions().at(nFunction);
    CardInfo info{};
    QCOMPARE(function.call(app, &info), nExpected);

    const QList<FakeCard::Call> calls = card.Calls();
    if (!bReachesCard) {
        QVERIFY(calls.isEmpty());
        return;
    }
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls[0].strName, QString::fromLatin1(function.szName));
    QCOMPARE(calls[0].bQuery, function.bQuery);
    if (!function.bQuery) {
        QCOMPARE(calls[0].arg.isValid(), function.expectedArg.isValid());
        QCOMPARE(calls[0].arg, function.expectedArg);
    }
}

void TestFactoryMgrApp::getCardInfoHandsTheCallersRecordToTheCard()
{
    CardMachine m;
    m.card.m_nState = 3;
    m.card.m_firmwareVersion = "QV-2.7.1";

    CardInfo info{};
    QCOMPARE(m.app.GetCardInfo(&info), 0);
    const QList<FakeCard::Call> calls = m.card.Calls();
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls[0].arg.metaType().id(), int(QMetaType::VoidStar));
    QCOMPARE(calls[0].arg.value<void*>(), static_cast<void*>(&info));
    QCOMPARE(QByteArray(info.firmwareVersion), QByteArray("QV-2.7.1"));
    QCOMPARE(info.totalWorkTime, 3661);
}

void TestFactoryMgrApp::secondCallerWaitsWhileFirstIsInsideTheCard()
{
    CardMachine m;
    m.card.m_bHoldCalls = true;

    std::atomic<bool> bSecondStarted{false};
    TestThread first([&] { m.app.ClearCardInfo(); });
    TestThread second([&] {
        bSecondStarted = true;
        CardInfo info{};
        m.app.GetCardInfo(&info);
    });
    const auto guard = qScopeGuard([&] {
        m.card.ReleaseAll();
        first.Wait();
        second.Wait();
    });
    first.Start();
    QVERIFY(m.card.WaitEntered(5000));
    second.Start();
    QTRY_VERIFY(bSecondStarted);
    // Give the second caller every chance to get in; it must not.
    QVERIFY(!m.card.WaitEntered(200));
    QCOMPARE(m.card.Calls().size(), 1);
    QVERIFY(!second.IsFinished());

    m.card.Release();
    QVERIFY(m.card.WaitEntered(5000));
    m.card.Release();
    QVERIFY(first.Wait(5000));
    QVERIFY(second.Wait(5000));

    const QList<FakeCard::Call> calls = m.card.Calls();
    QCOMPARE(calls.size(), 2);
    QCOMPARE(calls[0].strName, QStringLiteral("ClearCardInfo"));
    QCOMPARE(calls[1].strName, QStringLiteral("GetCardInfo"));
    QCOMPARE(m.card.m_nMaxInside.load(), 1);
}

void TestFactoryMgrApp::parameterTransferWaitsWhileACardCallIsInside()
{
    CardMachine m;
    m.card.m_bHoldCalls = true;

    FactoryParams params;
    std::atomic<bool> bSecondCalling{false};
    TestThread first([&] { m.app.CardUpgrade(kFirmwarePath); });
    TestThread second([&] {
        bSecondCalling = true;
        m.app.WriteFactoryParams(&params);
    });
    const auto guard = qScopeGuard([&] {
        m.card.ReleaseAll();
        first.Wait();
        second.Wait();
    });
    first.Start();
    QVERIFY(m.card.WaitEntered(5000));
    second.Start();
    // The second thread is at its call; while the card call is inside, the
    // write does not reach the device however long it is given.
    QTRY_VERIFY_WITH_TIMEOUT(bSecondCalling.load(), 5000);
    QVERIFY(!second.Wait(200));
    QCOMPARE(m.device.m_nWrites.load(), 0);

    m.card.Release();
    QVERIFY(first.Wait(5000));
    QVERIFY(second.Wait(5000));
    QCOMPARE(m.device.m_nWrites.load(), 1);
}

void TestFactoryMgrApp::readFactoryParamsPassesTheRecordAndTheResult()
{
    FakeDevice device;
    device.m_stored.motor[2].speedMax = 555.0;
    device.m_nResult = 7;
    CFactoryMgrApp app;
    app.SetDevice(&device);

    FactoryParams params;
    QCOMPARE(app.ReadFactoryParams(&params), 7);
    QCOMPARE(device.m_pLastRead, &params);
    QCOMPARE(params.motor[2].speedMax, 555.0);
}

void TestFactoryMgrApp::writeFactoryParamsPassesTheRecordAndTheResult()
{
    // No card checks on the transfers: even without a card the device is asked.
    FakeDevice device;
    CFactoryMgrApp app;
    app.SetDevice(&device);

    FactoryParams params;
    params.speed.sweepAccY = 4321.0;
    QCOMPARE(app.WriteFactoryParams(&params), 0);
    QCOMPARE(device.m_pLastWritten, &params);
    QCOMPARE(device.m_stored.speed.sweepAccY, 4321.0);
    QCOMPARE(device.m_nCardAsked.load(), 0);
}

void TestFactoryMgrApp::transfersWithoutDeviceAnswerNoCard()
{
    CFactoryMgrApp app;
    FactoryParams params;
    QCOMPARE(app.ReadFactoryParams(&params), 1001);
    QCOMPARE(app.WriteFactoryParams(&params), 1001);
    QCOMPARE(params.motor[0].pulsePerMm, 7.88627);
}

void TestFactoryMgrApp::runTaskUpgradesPanelAndMainboard()
{
    CardMachine m;

    QString strPanel = QStringLiteral("/media/usb/panel.hmi");
    QString strBoard = QStringLiteral("/media/usb/main.upd");
    m.card.m_nResult = 9;
    QCOMPARE(m.app.RunTask(CFactoryMgrApp::TaskPanelUpgrade, &strPanel), 9);
    m.card.m_nResult = 0;
    QCOMPARE(m.app.RunTask(CFactoryMgrApp::TaskCardUpgrade, &strBoard), 0);

    const QList<FakeCard::Call> calls = m.card.Calls();
    QCOMPARE(calls.size(), 2);
    QCOMPARE(calls[0].strName, QStringLiteral("PanelUpgrade"));
    QCOMPARE(calls[0].arg, QVariant(strPanel));
    QCOMPARE(calls[1].strName, QStringLiteral("CardUpgrade"));
    QCOMPARE(calls[1].arg, QVariant(strBoard));

    // A busy card refuses the upgrade before it reaches the card.
    m.card.m_taskState.m_bBusy = true;
    QCOMPARE(m.app.RunTask(CFactoryMgrApp::TaskCardUpgrade, &strBoard), 1005);
    QCOMPARE(m.card.Calls().size(), 2);
}

void TestFactoryMgrApp::runTaskOtherTaskReturnsZeroWithoutLocking()
{
    CardMachine m;
    m.card.m_bHoldCalls = true;

    // The mutex is held by a call that stays inside the card...
    std::atomic<int> nResult{-1};
    TestThread holder([&] { m.app.ClearCardInfo(); });
    TestThread task([&] { nResult = m.app.RunTask(2, nullptr); });
    const auto guard = qScopeGuard([&] {
        m.card.ReleaseAll();
        holder.Wait();
        task.Wait();
    });
    holder.Start();
    QVERIFY(m.card.WaitEntered(5000));

    // ...and task 2 still answers at once.
    task.Start();
    const bool bReturned = task.Wait(5000);
    m.card.Release();
    QVERIFY(holder.Wait(5000));
    QVERIFY(task.Wait(5000));
    QVERIFY(bReturned);
    QCOMPARE(nResult.load(), 0);
    QCOMPARE(m.card.Calls().size(), 1);
}

void TestFactoryMgrApp::runTaskUnderThreadDialogRunReachesTheCardOffTheGuiThread()
{
    CardMachine m;
    m.card.m_nResult = 3;

    QString strPath = QStringLiteral("/media/usb/main.upd");
    QCOMPARE(ThreadDialogRun(&m.app, CFactoryMgrApp::TaskCardUpgrade, &strPath, 0, "Processing..."), 3);
    const QList<FakeCard::Call> calls = m.card.Calls();
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls[0].strName, QStringLiteral("CardUpgrade"));
    QVERIFY(calls[0].pThread != QThread::currentThread());
}

void TestFactoryMgrApp::threadDialogOwnerAnswersAreConstants()
{
    CFactoryMgrApp app;
    for (int nTask : {0, 1, 2, -1}) {
        QCOMPARE(app.IsTaskCancelable(nTask), 0);
        QCOMPARE(app.CancelTask(nTask, 5, 6), 0);
        QCOMPARE(app.GetTaskProgress(nTask), 0.0);
    }
}

void TestFactoryMgrApp::reportErrorBeforeInitDoesNothing()
{
    CFactoryMgrApp app;
    QCOMPARE(app.ReportError(1005), 0);
}

void TestFactoryMgrApp::reportErrorHandsTheCodeToTheNotifier()
{
    FakeNotifier notifier;
    notifier.m_nAnswer = 77;
    CFactoryMgrApp app;
    app.SetNotifier(&notifier);
    QCOMPARE(app.ReportError(1001), 77);
    QCOMPARE(notifier.m_calls.size(), 1);
    QCOMPARE(notifier.m_calls[0], qMakePair(1001, 0));
}

namespace {
int ConvertPattern(const char*, const char*, double)
{
    return 0;
}
}

void TestFactoryMgrApp::settersStoreWhatTheHostHandsIn()
{
    FakeCard card;
    FakeDevice device;
    device.m_pCard = &card;
    CFactoryMgrApp app;
    QVERIFY(app.GetCurrentCard() == nullptr);
    app.SetDevice(&device);
    QCOMPARE(app.GetCurrentCard(), static_cast<ICard*>(&card));
    app.SetUnit(2);
    QCOMPARE(app.GetUnit(), 2);
    app.SetFactoryFlag(true);
    QCOMPARE(app.GetFactoryFlag(), true);
    app.SetConvertPatternCallback(&ConvertPattern);
    QVERIFY(app.GetConvertPatternCallback() == &ConvertPattern);
}

void TestFactoryMgrApp::resourceDirectoryIsBesideTheApplication()
{
    QCOMPARE(CFactoryMgrApp::GetResourceDirectory(), QCoreApplication::applicationDirPath() + "/../Resources");
    QCOMPARE(QDir::cleanPath(CFactoryMgrApp::GetResourceDirectory()),
             QDir::cleanPath(QCoreApplication::applicationDirPath() + "/../Resources"));
}

void TestFactoryMgrApp::userDataDirectoryIsCreatedOnFirstUse()
{
    CUiPermissionsManager::GetInstance()->SetThemeOverride("Quorvane", "2.1");
    const QString strExpected = QDir::cleanPath(
        QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) + "/../Quorvane/Resources");
    QVERIFY(strExpected.startsWith(qEnvironmentVariable("XDG_CONFIG_HOME")));
    QDir(strExpected).removeRecursively();
    QVERIFY(!QFileInfo::exists(strExpected));

    QCOMPARE(CFactoryMgrApp::GetUserDataDirectory(), strExpected);
    QVERIFY(QFileInfo(strExpected).isDir());
    QVERIFY(!strExpected.contains(".."));
    CUiPermissionsManager::GetInstance()->SetThemeOverride(QString(), QString());
}

void TestFactoryMgrApp::userDataDirectoryFollowsTheTheme()
{
    CUiPermissionsManager::GetInstance()->SetThemeOverride("Lumen", "1.0");
    const QString strDir = CFactoryMgrApp::GetUserDataDirectory();
    QVERIFY2(strDir.endsWith("/Tessiflow/Resources"), qPrintable(strDir));
    QVERIFY(QFileInfo(strDir).isDir());
    CUiPermissionsManager::GetInstance()->SetThemeOverride(QString(), QString());
}

FACTORYMGR_TEST_MAIN(TestFactoryMgrApp)
#include "tst_factorymgrapp.moc"
