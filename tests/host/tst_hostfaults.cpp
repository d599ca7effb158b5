#include "TestMain.h"

#include "CDeviceRecorder.h"
#include "CHostNotifier.h"
#include "CHostSession.h"
#include "CHostWindow.h"
#include "CSettingsWindow.h"
#include "CSimController.h"
#include "ModalAnswerer.h"
#include "WizardDriver.h"

#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTabWidget>
#include <QTableWidget>

#include <cstring>
#include <functional>

// Every fault the simulated controller can have, against every operation the
// person can start, through the reference host: a fault either concerns the
// operation, and the person is told plainly and nothing passes for done, or
// the host gets over it (a garbled answer to the Upload's check is checked
// again) and says so, or it does not concern the operation, which goes
// through and leaves the fault armed. Reconnecting (Device > Connected)
// recovers in every case.
namespace {
enum Op
{
    OpRead,
    OpUpload,
    OpSave,
    OpClearCounters,
    OpMainboardUpgrade,
    OpPanelUpgrade,
    OpCut
};
const char* const kOpNames[] = {"read", "upload with check", "save", "clear counters", "mainboard upgrade",
                                "panel upgrade", "cut"};
const CSimController::Fault kFaults[] = {
    CSimController::FaultDropOnWrite, CSimController::FaultDropOnRead, CSimController::FaultDropOnUpgrade,
    CSimController::FaultDropOnCut,   CSimController::FaultFlashError, CSimController::FaultCorruptRead,
    CSimController::FaultNoAnswer};

// The host repeats what the fault spoilt, and the operation goes through.
bool GetsOver(CSimController::Fault fault, Op op)
{
    return fault == CSimController::FaultCorruptRead && op == OpUpload;
}

bool Concerns(CSimController::Fault fault, Op op)
{
    switch (fault) {
    case CSimController::FaultDropOnWrite:
    case CSimController::FaultFlashError: return op == OpUpload;
    case CSimController::FaultDropOnRead:
    case CSimController::FaultCorruptRead: return op == OpRead || op == OpUpload;
    case CSimController::FaultDropOnUpgrade: return op == OpMainboardUpgrade || op == OpPanelUpgrade;
    case CSimController::FaultDropOnCut: return op == OpCut;
    case CSimController::FaultNoAnswer: return op != OpSave;
    default: return false;
    }
}

// What the person is told when the fault spoils the operation, word for
// word: the host's error box for the controller's code, the upgrade's
// result box, or the read's refusal.
QString Told(CSimController::Fault fault, Op op)
{
    const QString strLost = QStringLiteral("Error: The connection to the controller was lost during the operation. "
                                           "Reconnect and try again.\n\nCode: 2013");
    const QString strNoAnswer = QStringLiteral("Error: The controller did not answer in time.\n\nCode: 2016");
    if (op == OpMainboardUpgrade || op == OpPanelUpgrade)
        return QStringLiteral("error: Import failed");
    switch (fault) {
    case CSimController::FaultDropOnWrite:
    case CSimController::FaultDropOnCut: return strLost;
    // The Upload reads what the controller held, for its backup, before it
    // sends: the read loses the line, and the sending finds no controller.
    case CSimController::FaultDropOnRead:
        return op == OpRead ? strLost : QStringLiteral("Error: The controller is not connected.\n\nCode: 2001");
    case CSimController::FaultFlashError:
        return QStringLiteral("Error: The controller could not store the values in its memory.\n\nCode: 2014");
    case CSimController::FaultCorruptRead:
        return QStringLiteral(
            "Nothing was read: the controller's answers did not agree, so a value was garbled on the way. Read again.");
    case CSimController::FaultNoAnswer: return strNoAnswer;
    default: return QString();
    }
}

// The settings cells marked red as not kept by the controller.
int MarkedCells(QDialog* pDialog)
{
    int nMarked = 0;
    for (QTableWidget* pTable : pDialog->findChildren<QTableWidget*>())
        for (int r = 0; r < pTable->rowCount(); ++r)
            for (int c = 0; c < pTable->columnCount(); ++c)
                if (pTable->item(r, c) && pTable->item(r, c)->background() == QBrush(Qt::red))
                    ++nMarked;
    return nMarked;
}

QString ParameterFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + "/Quorvane/Resources/Data/FactoryParam.ini";
}

// The parameter file but for its time stamp.
QByteArray FileContent()
{
    QFile file(ParameterFile());
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    QByteArray content;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine();
        if (!line.startsWith("CREATE_TIME"))
            content += line;
    }
    return content;
}

// Every box the fault matrix brings has the one button "OK"; the file
// dialog is given the firmware. Anything else fails the test with what was
// on the screen. The wizard is driven by WizardDriver.
class Answers : public ModalAnswerer
{
public:
    explicit Answers(const QString& strFile)
    {
        AnswerWith(QStringLiteral("OK"));
        AnswerFileWith(strFile);
        LeaveAlone(QStringLiteral("CDlgCalibrateXyStep"));
    }
    // What the boxes said, each as "title: text".
    QStringList Seen() const
    {
        QStringList seen;
        for (const ModalAnswerer::Seen& box : Boxes())
            if (box.strClass == QLatin1String("QMessageBox"))
                seen << box.strTitle + ": " + box.strText;
        return seen;
    }
};
}

class TestHostFaults : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void everyFaultAgainstEveryOperation_data();
    void everyFaultAgainstEveryOperation();
    void aCheckGarbledTwiceIsAFailure();

private:
    // Readies what the operation needs (the settings, the System page) before any fault is armed.
    void Prepare(CHostWindow& host, Op op);
    // Runs the operation; true when it went through. pSeen gets what the person was told.
    bool Run(CHostWindow& host, Op op, QStringList* pSeen);
};

void TestHostFaults::init()
{
    QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/Quorvane").removeRecursively();
}

void TestHostFaults::Prepare(CHostWindow& host, Op op)
{
    if (!host.Session().SettingsWindow())
        host.Session().OpenSettings();
    auto* pTabs = host.Session().SettingsWindow()->Dialog()->findChild<QTabWidget*>("tabWidget");
    pTabs->setCurrentWidget(pTabs->findChild<QWidget*>(op == OpClearCounters || op == OpMainboardUpgrade
                                                               || op == OpPanelUpgrade
                                                           ? "tab_2"
                                                           : "tab"));
}

bool TestHostFaults::Run(CHostWindow& host, Op op, QStringList* pSeen)
{
    QSignalSpy reported(&host.Session(), &CHostSession::Reported);
    const QString strFirmware = QCoreApplication::applicationDirPath() + "/../Resources/Data/Firmware/"
        + (op == OpMainboardUpgrade ? "QV-MB-3.3.0.upd" : "QV-PN-1.5.0.hmt");
    Answers answers(strFirmware);
    QDialog* pDialog = host.Session().SettingsWindow()->Dialog();
    const int nShownBefore = int(host.Session().Notifier().Shown().size());
    QSignalSpy cut(host.Session().Simulator(), &CSimController::JobCut);
    bool bOk = false;
    // The host's last report; none at all is no success.
    const auto lastReport = [&reported] { return reported.isEmpty() ? QString() : reported.last().first().toString(); };
    switch (op) {
    case OpRead:
        host.Session().ReadFromController();
        bOk = lastReport() == "The parameters were read from the controller. They are saved.";
        break;
    case OpUpload:
        host.Session().UploadToController();
        bOk = lastReport().contains("The controller kept every value.\nThe parameters are saved.");
        break;
    case OpSave:
        host.Session().SaveParameters();
        bOk = lastReport() == "The parameters are saved.";
        break;
    case OpClearCounters:
        pDialog->findChild<QPushButton*>("pushButton_clear")->click();
        bOk = host.Session().Notifier().Shown().size() == nShownBefore && host.Session().Simulator()->Info().totalXMove == 0;
        break;
    case OpMainboardUpgrade:
    case OpPanelUpgrade:
        pDialog->findChild<QPushButton*>(op == OpMainboardUpgrade ? "pushButton_mainboardUpgrade"
                                                                  : "pushButton_panelUpgrade")
            ->click();
        bOk = answers.Seen().contains(": Import successfully");
        break;
    case OpCut: {
        WizardDriver::CutOnce(host);
        bOk = host.Session().Notifier().Shown().size() == nShownBefore && cut.count() == 1;
        break;
    }
    }
    QStringList seen = answers.Seen();
    for (const QList<QVariant>& report : reported)
        seen << report.first().toString();
    for (int i = nShownBefore; i < host.Session().Notifier().Shown().size(); ++i)
        seen << CHostNotifier::Describe(host.Session().Notifier().Shown()[i]);
    *pSeen = seen;
    return bOk;
}

void TestHostFaults::everyFaultAgainstEveryOperation_data()
{
    QTest::addColumn<int>("nFault");
    QTest::addColumn<int>("nOp");
    for (CSimController::Fault fault : kFaults)
        for (int nOp = OpRead; nOp <= OpCut; ++nOp)
            QTest::addRow("%s, %s", qPrintable(CSimController::FaultName(fault)), kOpNames[nOp]) << int(fault) << nOp;
}

void TestHostFaults::everyFaultAgainstEveryOperation()
{
    QFETCH(int, nFault);
    QFETCH(int, nOp);
    const auto fault = CSimController::Fault(nFault);
    const Op op = Op(nOp);
    CHostWindow host;
    QVERIFY(host.Start());
    CSimController* pSim = host.Session().Simulator();
    pSim->SetTaskDuration(0);
    pSim->SetRestartDuration(0);
    pSim->SetNoAnswerDuration(50);
    // A machine in use: its parameters uploaded and saved, a job cut.
    Prepare(host, OpUpload);
    {
        QStringList seen;
        QVERIFY(Run(host, OpUpload, &seen));
        QVERIFY2(Run(host, OpCut, &seen), qPrintable(seen.join(" | ")));
    }
    Prepare(host, op);
    const QByteArray fileBefore = FileContent();
    const FactoryParams heldBefore = pSim->StoredParams();
    const CardInfo infoBefore = pSim->Info();
    IFactoryMgr* pMgr = host.Session().Mgr();
    FactoryParams recordBefore;
    pMgr->GetFactoryParams(&recordBefore);
    QDialog* pDialog = host.Session().SettingsWindow()->Dialog();
    bool bEdited = true;

    pSim->ArmFault(fault);
    QStringList seen;
    const bool bOk = Run(host, op, &seen);
    const QString strSeen = seen.join(" | ");
    // Whatever happened, the plug-in's record and the dialog hold no value
    // the controller did not send, and no cell is marked.
    FactoryParams recordAfter;
    pMgr->GetFactoryParams(&recordAfter);
    QVERIFY2(std::memcmp(&recordAfter, &recordBefore, sizeof(FactoryParams)) == 0, qPrintable(strSeen));
    QVERIFY(QMetaObject::invokeMethod(pDialog, "IsEdited", Q_RETURN_ARG(bool, bEdited)));
    QVERIFY(!bEdited);
    QCOMPARE(MarkedCells(pDialog), 0);
    if (GetsOver(fault, op)) {
        QVERIFY2(bOk, qPrintable(strSeen));
        QVERIFY2(strSeen.contains("garbled"), qPrintable(strSeen));
        QCOMPARE(pSim->ArmedFault(), CSimController::FaultNone);
        return;
    }
    if (!Concerns(fault, op)) {
        QVERIFY2(bOk, qPrintable(strSeen));
        QCOMPARE(pSim->ArmedFault(), fault);   // still waiting for its operation
        return;
    }
    // Told plainly, and nothing passes for done.
    QVERIFY2(!bOk, qPrintable(strSeen));
    QVERIFY2(!seen.isEmpty(), "the person was told nothing");
    for (const QString& strText : seen) {
        QVERIFY2(!strText.contains("saved.") || strText.contains("Nothing was saved."), qPrintable(strSeen));
        QVERIFY2(!strText.contains("Import successfully") && !strText.contains("were read from"), qPrintable(strSeen));
    }
    QVERIFY2(seen.contains(Told(fault, op)), qPrintable(QStringLiteral("expected \"%1\"; told: %2").arg(Told(fault, op), strSeen)));
    QCOMPARE(pSim->ArmedFault(), CSimController::FaultNone);
    // The parameter file and the controller's parameters are as they were.
    QCOMPARE(FileContent(), fileBefore);
    const FactoryParams heldAfter = pSim->StoredParams();
    QCOMPARE(std::memcmp(&heldAfter, &heldBefore, sizeof(FactoryParams)), 0);
    if (op == OpClearCounters || op == OpCut)
        QCOMPARE(pSim->Info().totalXMove, infoBefore.totalXMove);

    // Reconnecting recovers: the same operation goes through (a cut-off
    // upgrade is repaired by the next one).
    pSim->SetConnected(true);
    QStringList again;
    QVERIFY2(Run(host, op, &again), qPrintable(again.join(" | ")));
}

void TestHostFaults::aCheckGarbledTwiceIsAFailure()
{
    CHostWindow host;
    QVERIFY(host.Start());
    CSimController* pSim = host.Session().Simulator();
    pSim->SetTaskDuration(0);
    Prepare(host, OpUpload);
    {
        QStringList seen;
        QVERIFY(Run(host, OpUpload, &seen));
    }
    FactoryParams sent;
    host.Session().Mgr()->GetFactoryParams(&sent);
    // The check's read, and its repetition, come garbled; the host's own read between them does not.
    pSim->ArmFault(CSimController::FaultCorruptRead);
    int nReads = 0;
    connect(host.findChild<CDeviceRecorder*>(), &CDeviceRecorder::Called, this,
            [&](const QString& strOperation) {
                if (strOperation == "ReadFactoryParams" && ++nReads == 2)
                    pSim->ArmFault(CSimController::FaultCorruptRead);
            },
            Qt::DirectConnection);
    QSignalSpy reported(&host.Session(), &CHostSession::Reported);
    host.Session().UploadToController();
    QVERIFY(!reported.isEmpty());
    const QString strReport = reported.last().first().toString();
    QVERIFY2(strReport.contains("did not agree twice") && strReport.contains("red marks cannot be trusted")
                 && !strReport.contains("kept every value"),
             qPrintable(strReport));
    FactoryParams after;
    host.Session().Mgr()->GetFactoryParams(&after);
    QCOMPARE(std::memcmp(&after, &sent, sizeof(FactoryParams)), 0);
    QCOMPARE(nReads, 3);
    QCOMPARE(pSim->ArmedFault(), CSimController::FaultNone);
}

FACTORYMGR_TEST_MAIN(TestHostFaults)
#include "tst_hostfaults.moc"
