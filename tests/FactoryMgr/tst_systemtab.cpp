#include "TestMain.h"

#include "CFactoryMgrApp.h"
#include "CLogWriter.h"
#include "CSystemTab.h"
#include "FakeCard.h"
#include "FakeDevice.h"
#include "FakeNotifier.h"
#include "ModalAnswerer.h"
#include "TabTestFixture.h"
#include "ThreadDialogRun.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include <memory>

class TestSystemTab : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void formatsDurations_data();
    void formatsDurations();
    void showsTheControllerOnItsFirstShowingOnly();
    void aFailedReadIsSilentAndKeepsTheTable();
    void clearResetsAndReloads();
    void aFailedClearIsReportedAndNotReloaded();
    void cancellingTheFileDialogStartsNothing();
    void upgrades_data();
    void upgrades();
    void deletedWhileTheUpgradeRuns_data();
    void deletedWhileTheUpgradeRuns();
    void deletedWhileTheResultIsShown_data();
    void deletedWhileTheResultIsShown();

private:
    void ShowSystemPage(TabTestFixture& f);
    int InfoReads() const;
    QStringList Values(TabTestFixture& f) const;

    // The calls that reached the card, without the Laser tab's card-type queries.
    QList<FakeCard::Call> CardCalls() const;

    std::unique_ptr<FakeCard> m_pCard;
    FakeDevice m_device;
    FakeNotifier m_notifier;
};

void TestSystemTab::init()
{
    m_pCard = std::make_unique<FakeCard>();
    m_device.m_pCard = m_pCard.get();
    m_notifier.m_calls.clear();
    CFactoryMgrApp::GetInstance()->SetDevice(&m_device);
    CFactoryMgrApp::GetInstance()->SetNotifier(&m_notifier);
}

void TestSystemTab::cleanup()
{
    CFactoryMgrApp::GetInstance()->SetDevice(nullptr);
    CFactoryMgrApp::GetInstance()->SetNotifier(nullptr);
}

void TestSystemTab::ShowSystemPage(TabTestFixture& f)
{
    auto* pTabs = f.Dialog()->findChild<QTabWidget*>("tabWidget");
    pTabs->setCurrentWidget(f.Dialog()->findChild<QWidget*>("tab_2"));
}

QList<FakeCard::Call> TestSystemTab::CardCalls() const
{
    QList<FakeCard::Call> calls;
    for (const FakeCard::Call& call : m_pCard->Calls())
        if (call.strName != "CurrentCardType")
            calls << call;
    return calls;
}

int TestSystemTab::InfoReads() const
{
    int nReads = 0;
    for (const FakeCard::Call& call : CardCalls())
        nReads += call.strName == "GetCardInfo" ? 1 : 0;
    return nReads;
}

QStringList TestSystemTab::Values(TabTestFixture& f) const
{
    QTableWidget* t = f.Table("tableWidget_system");
    QStringList values;
    for (int r = 0; r < t->rowCount(); ++r)
        values << (t->item(r, 1) ? t->item(r, 1)->text() : QString());
    return values;
}

void TestSystemTab::formatsDurations_data()
{
    QTest::addColumn<int>("nSeconds");
    QTest::addColumn<QString>("strText");
    QTest::newRow("59") << 59 << "0:0:59";
    QTest::newRow("3600") << 3600 << "1:0:0";
    QTest::newRow("3725") << 3725 << "1:2:5";
    QTest::newRow("360000") << 360000 << "100:0:0";
    QTest::newRow("0") << 0 << "0:0:0";
}

void TestSystemTab::formatsDurations()
{
    QFETCH(int, nSeconds);
    QFETCH(QString, strText);
    QCOMPARE(CSystemTab::FormatDuration(nSeconds), strText);
}

void TestSystemTab::showsTheControllerOnItsFirstShowingOnly()
{
    TabTestFixture f;
    QCOMPARE(InfoReads(), 0);
    ShowSystemPage(f);
    QCOMPARE(InfoReads(), 1);
    QCOMPARE(Values(f), QStringList({"FW-1.0", "PN-0.9", "1:1:1", "0:0:59", "123456", "-7"}));

    m_pCard->m_nWorkTime = 7200;
    auto* pTabs = f.Dialog()->findChild<QTabWidget*>("tabWidget");
    pTabs->setCurrentIndex(0);
    ShowSystemPage(f);
    QCOMPARE(InfoReads(), 1);
    QCOMPARE(Values(f).at(2), QStringLiteral("1:1:1"));
    QCOMPARE(f.Table("tableWidget_system")->columnWidth(0), 255);   // formatted like the others
}

void TestSystemTab::aFailedReadIsSilentAndKeepsTheTable()
{
    m_pCard->m_nState = 0;   // the card refuses: 1001
    TabTestFixture f;
    ShowSystemPage(f);
    QCOMPARE(Values(f), QStringList({"", "", "", "", "", ""}));
    QVERIFY(m_notifier.m_calls.isEmpty());
}

void TestSystemTab::clearResetsAndReloads()
{
    TabTestFixture f;
    ShowSystemPage(f);
    m_pCard->m_nWorkTime = 0;
    QTest::mouseClick(f.Dialog()->findChild<QPushButton*>("pushButton_clear"), Qt::LeftButton);
    QCOMPARE(CardCalls().at(1).strName, QStringLiteral("ClearCardInfo"));
    QCOMPARE(InfoReads(), 2);
    QCOMPARE(Values(f).at(2), QStringLiteral("0:0:0"));
    QVERIFY(f.Log().contains("[0] pushButton_clear was clicked."));
}

void TestSystemTab::aFailedClearIsReportedAndNotReloaded()
{
    TabTestFixture f;
    ShowSystemPage(f);
    m_pCard->m_taskState.m_bBusy = true;
    QTest::mouseClick(f.Dialog()->findChild<QPushButton*>("pushButton_clear"), Qt::LeftButton);
    const QList<QPair<int, int>> expected{{1005, 0}};
    QCOMPARE(m_notifier.m_calls, expected);
    QCOMPARE(InfoReads(), 1);
}

void TestSystemTab::cancellingTheFileDialogStartsNothing()
{
    TabTestFixture f;
    ModalAnswerer answerer;
    answerer.CancelFileDialogs();
    QTest::mouseClick(f.Dialog()->findChild<QPushButton*>("pushButton_mainboardUpgrade"), Qt::LeftButton);
    QTest::mouseClick(f.Dialog()->findChild<QPushButton*>("pushButton_panelUpgrade"), Qt::LeftButton);
    QCOMPARE(answerer.Count(), 2);
    QCOMPARE(answerer.Boxes()[0].strClass, QStringLiteral("QFileDialog"));
    QCOMPARE(answerer.Boxes()[0].strTitle, QStringLiteral("Open"));
    QVERIFY(answerer.Boxes()[0].strText.contains("(*.upd)"));
    QVERIFY(answerer.Boxes()[1].strText.contains("(*.hmt *.hmi)"));
    QVERIFY(CardCalls().isEmpty());
}

void TestSystemTab::upgrades_data()
{
    QTest::addColumn<QString>("strButton");
    QTest::addColumn<QString>("strFile");
    QTest::addColumn<QString>("strFunction");
    QTest::addColumn<int>("nCondition");   // 0 ready, 1 card fails and says why, 2 busy, 3 no card, 4 card fails silently
    QTest::addColumn<int>("nCode");
    QTest::newRow("mainboard success") << "pushButton_mainboardUpgrade" << "main.upd" << "CardUpgrade" << 0 << 0;
    QTest::newRow("panel success") << "pushButton_panelUpgrade" << "panel.hmi" << "PanelUpgrade" << 0 << 0;
    QTest::newRow("mainboard failure") << "pushButton_mainboardUpgrade" << "main.upd" << "CardUpgrade" << 1 << 2004;
    QTest::newRow("mainboard failure, only stages said") << "pushButton_mainboardUpgrade" << "main.upd" << "CardUpgrade" << 4
                                                         << 2007;
    QTest::newRow("panel busy") << "pushButton_panelUpgrade" << "panel.hmt" << "PanelUpgrade" << 2 << 1005;
    QTest::newRow("mainboard no card") << "pushButton_mainboardUpgrade" << "main.upd" << "CardUpgrade" << 3 << 1001;
}

void TestSystemTab::upgrades()
{
    QFETCH(QString, strButton);
    QFETCH(QString, strFile);
    QFETCH(QString, strFunction);
    QFETCH(int, nCondition);
    QFETCH(int, nCode);
    QTemporaryDir dir;
    const QString strPath = dir.path() + "/" + strFile;
    QFile file(strPath);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("image");
    file.close();

    TabTestFixture f;
    if (nCondition == 1 || nCondition == 4)
        m_pCard->m_nResult = nCode;
    m_pCard->m_taskState.m_bBusy = nCondition == 2;
    if (nCondition == 3)
        m_device.m_pCard = nullptr;
    Qt::CursorShape duringRun = Qt::ArrowCursor;
    // A host that says why its card failed (as the reference host does).
    const QString strHostSays = QStringLiteral("Not done: the card refused it (code %1)").arg(nCode);
    m_pCard->m_onCall = [&](const QString&) {
        duringRun = f.Dialog()->cursor().shape();
        ThreadDialogReport(0.5, QStringLiteral("Writing the firmware"));
        if (nCondition == 1)
            ThreadDialogReportFailure(strHostSays);
    };

    ModalAnswerer answerer;
    answerer.AnswerWith("OK");
    answerer.AnswerFileWith(strPath);
    QTest::mouseClick(f.Dialog()->findChild<QPushButton*>(strButton), Qt::LeftButton);

    QCOMPARE(answerer.Count(), 2);   // the file dialog, then the result box
    const ModalAnswerer::Seen box = answerer.Boxes()[1];
    if (nCode == 0) {
        QCOMPARE(box.strTitle, QString());
        QCOMPARE(box.strText, QStringLiteral("Import successfully"));
        QCOMPARE(box.strInformative, QString());
    } else {
        QCOMPARE(box.strTitle, QStringLiteral("error"));
        QCOMPARE(box.strText, QStringLiteral("Import failed"));
        // Why: what the host said, or the code when it said nothing (a stage is no reason).
        QCOMPARE(box.strInformative, nCondition == 1 ? strHostSays : QStringLiteral("Result code %1.").arg(nCode));
    }
    // Wide enough for the title the window manager draws (an empty one shows the application's name).
    const QString strTitleBar = box.strTitle.isEmpty() ? QGuiApplication::applicationDisplayName() : box.strTitle;
    QVERIFY2(box.nWidth >= QFontMetrics(QApplication::font()).horizontalAdvance(strTitleBar) + 160,
             qPrintable(QStringLiteral("%1 px for \"%2\"").arg(box.nWidth).arg(strTitleBar)));
    QVERIFY(f.Log().contains(QStringLiteral("[1] HMI update erro code:%1").arg(nCode).toUtf8()));
    QCOMPARE(f.Dialog()->cursor().shape(), Qt::ArrowCursor);

    const QList<FakeCard::Call> calls = CardCalls();
    if (nCondition == 2 || nCondition == 3) {
        QVERIFY(calls.isEmpty());   // refused before the card
        return;
    }
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls[0].strName, strFunction);
    QCOMPARE(calls[0].arg.toString(), strPath);
    QVERIFY(calls[0].pThread != QThread::currentThread());
    QCOMPARE(duringRun, Qt::WaitCursor);
}

namespace {
// A dialog inside a window of the host's, as the reference host shows it.
struct HostWindow
{
    explicit HostWindow(FactoryParams* pRecord)
        : pDialog(new DlgFactoryMgr(pRecord))
    {
        pDialog->setParent(&window, Qt::Widget);
        (new QVBoxLayout(&window))->addWidget(pDialog);
        window.show();
    }

    QWidget window;
    DlgFactoryMgr* pDialog;
};

QString WriteFirmware(const QTemporaryDir& dir, const QString& strFile)
{
    const QString strPath = dir.path() + "/" + strFile;
    QFile file(strPath);
    if (!file.open(QIODevice::WriteOnly))
        return QString();
    file.write("image");
    return strPath;
}
}

void TestSystemTab::deletedWhileTheUpgradeRuns_data()
{
    QTest::addColumn<QString>("strButton");
    QTest::addColumn<QString>("strFile");
    QTest::addColumn<QString>("strFunction");
    QTest::newRow("mainboard") << "pushButton_mainboardUpgrade" << "main.upd" << "CardUpgrade";
    QTest::newRow("panel") << "pushButton_panelUpgrade" << "panel.hmi" << "PanelUpgrade";
}

void TestSystemTab::deletedWhileTheUpgradeRuns()
{
    QFETCH(QString, strButton);
    QFETCH(QString, strFile);
    QFETCH(QString, strFunction);
    QTemporaryDir dir;
    const QString strPath = WriteFirmware(dir, strFile);
    QVERIFY(!strPath.isEmpty());
    FactoryParams record;
    HostWindow host(&record);
    QVERIFY(QTest::qWaitForWindowExposed(&host.window));
    const QPointer<DlgFactoryMgr> pAlive(host.pDialog);
    QPushButton* pButton = host.pDialog->findChild<QPushButton*>(strButton);

    // The host deletes the dialog from the upgrade's side, while the card
    // holds the upgrade; the card goes on once the dialog is gone.
    m_pCard->m_bHoldCalls = true;
    m_pCard->m_onCall = [pDialog = host.pDialog](const QString&) { pDialog->deleteLater(); };
    connect(host.pDialog, &QObject::destroyed, [this] { m_pCard->ReleaseAll(); });
    QTimer giveUp;   // a broken run fails instead of hanging
    giveUp.setSingleShot(true);
    connect(&giveUp, &QTimer::timeout, [this] { m_pCard->ReleaseAll(); });
    giveUp.start(30000);
    ModalAnswerer answerer;
    answerer.AnswerFileWith(strPath);
    CLogWriter::GetInstance()->SetDirectory(dir.path() + "/log");
    pButton->click();

    QFile log(CLogWriter::GetInstance()->FilePath());
    const QByteArray logText = log.open(QIODevice::ReadOnly) ? log.readAll() : QByteArray();
    CLogWriter::GetInstance()->SetDirectory(QString());
    QVERIFY(pAlive.isNull());
    QVERIFY(giveUp.isActive());
    QVERIFY(logText.contains("[1] HMI update erro code:0"));   // the result is still logged
    const QList<FakeCard::Call> calls = CardCalls();
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls[0].strName, strFunction);
    QCOMPARE(calls[0].arg.toString(), strPath);
    QCOMPARE(answerer.Count(), 1);   // the file dialog; no result box without the dialog
}

void TestSystemTab::deletedWhileTheResultIsShown_data()
{
    QTest::addColumn<int>("nCode");
    QTest::addColumn<QString>("strText");
    QTest::newRow("success") << 0 << "Import successfully";
    QTest::newRow("failure") << 2004 << "Import failed";
}

void TestSystemTab::deletedWhileTheResultIsShown()
{
    QFETCH(int, nCode);
    QFETCH(QString, strText);
    QTemporaryDir dir;
    const QString strPath = WriteFirmware(dir, "main.upd");
    QVERIFY(!strPath.isEmpty());
    FactoryParams record;
    HostWindow host(&record);
    QVERIFY(QTest::qWaitForWindowExposed(&host.window));
    const QPointer<DlgFactoryMgr> pAlive(host.pDialog);
    m_pCard->m_nResult = nCode;

    // The host answers the file dialog, and deletes the dialog while the
    // result box is open.
    QStringList shown;
    QTimer hostTimer;
    connect(&hostTimer, &QTimer::timeout, [&] {
        QWidget* pModal = QApplication::activeModalWidget();
        if (auto* pFiles = qobject_cast<QFileDialog*>(pModal)) {
            ModalAnswerer::AnswerFileDialog(pFiles, strPath);
        } else if (auto* pBox = qobject_cast<QMessageBox*>(pModal); pBox && pBox->isVisible() && pAlive) {
            shown << pBox->text();
            const QPointer<QMessageBox> pStill(pBox);
            delete pAlive.data();
            if (pStill)   // a box that outlived its dialog would wait for ever
                pStill->reject();
        }
    });
    hostTimer.start(5);
    host.pDialog->findChild<QPushButton*>("pushButton_mainboardUpgrade")->click();

    QVERIFY(pAlive.isNull());
    QCOMPARE(shown, QStringList{strText});
    QCOMPARE(CardCalls().size(), 1);
}

FACTORYMGR_TEST_MAIN(TestSystemTab)
#include "tst_systemtab.moc"
