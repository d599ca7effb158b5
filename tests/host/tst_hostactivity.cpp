#include "TestMain.h"

#include "CActivityPanel.h"
#include "CHostSession.h"
#include "CHostWindow.h"
#include "CSettingsWindow.h"
#include "CSimController.h"
#include "WizardDriver.h"

#include <QClipboard>
#include <QDialog>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QStandardPaths>
#include <QTabWidget>
#include <QTableWidget>
#include <QTimer>

// The host's activity panel: the plug-in's device calls, the host's reports
// and the plug-in's log lines, newest first, filtered and copied.
class TestHostActivity : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void callsReportsAndLogLinesNewestFirst();
    void callsFromTheWorkerThreadAndFailuresWithTheirMeaning();
    void filterAndCopy();
    void transfersRunBehindTheProgressDialogAndTheWindowKeepsGoing();
    void cardFunctionsWaitOffTheGuiThread();
};

namespace {
int IndexOf(const QStringList& rows, const QString& strPart)
{
    for (int i = 0; i < rows.size(); ++i)
        if (rows[i].contains(strPart))
            return i;
    return -1;
}
}

void TestHostActivity::init()
{
    QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/Quorvane").removeRecursively();
}

void TestHostActivity::callsReportsAndLogLinesNewestFirst()
{
    CHostWindow host;
    QVERIFY(host.Start());
    host.Session().OpenSettings();
    auto* pMotor = host.Session().SettingsWindow()->Dialog()->findChild<QTableWidget*>("tableWidget_motor");
    QTest::mouseClick(pMotor->viewport(), Qt::LeftButton, Qt::NoModifier,
                      pMotor->visualRect(pMotor->model()->index(6, 1)).center());
    host.Session().UploadToController();
    CActivityPanel* pPanel = host.Activity();
    QTRY_VERIFY(IndexOf(pPanel->ShownRows(), "The controller kept every value.") >= 0);
    const QStringList rows = pPanel->ShownRows();
    const int nLog = IndexOf(rows, "\tLog\t");
    const int nWrite = IndexOf(rows, "\tDevice\tWriteFactoryParams\t0\tOK\t");
    const int nRead = IndexOf(rows, "\tDevice\tReadFactoryParams\t0\tOK\t");
    const int nReport = IndexOf(rows, "\tHost\tThe controller kept every value.");
    QVERIFY2(nLog >= 0 && nWrite >= 0 && nRead >= 0 && nReport >= 0, qPrintable(rows.join('\n')));
    QVERIFY(rows[IndexOf(rows, "tableWidget_motor was clicked.")].contains("\tLog\t"));
    // Newest first: the report, the check's read, the write, the click's log line.
    QVERIFY(nReport < nRead && nRead < nWrite && nWrite < IndexOf(rows, "tableWidget_motor was clicked."));
}

void TestHostActivity::callsFromTheWorkerThreadAndFailuresWithTheirMeaning()
{
    CHostWindow host;
    QVERIFY(host.Start());
    host.Session().Simulator()->SetTaskDuration(0);
    host.Session().SetUnit(1);
    // The cut runs on the progress dialog's worker thread.
    WizardDriver::CutOnce(host);
    CActivityPanel* pPanel = host.Activity();
    QTRY_VERIFY(IndexOf(pPanel->ShownRows(), "\tBacklashAdjust(") >= 0);
    QVERIFY(pPanel->ShownRows()[IndexOf(pPanel->ShownRows(), "\tBacklashAdjust(")].contains("adjustpulse.tl)\t0\tOK\t"));
    // A refusal shows its code and what it means.
    host.Session().Simulator()->ArmFault(CSimController::FaultFlashError);
    QTimer answer;
    connect(&answer, &QTimer::timeout, this, [] {
        if (QWidget* pBox = QApplication::activeModalWidget())
            pBox->close();
    });
    answer.start(10);
    host.Session().OpenSettings();
    host.Session().UploadToController();
    QTRY_VERIFY(IndexOf(pPanel->ShownRows(), "\tWriteFactoryParams\t2014\t") >= 0);
    QVERIFY(pPanel->ShownRows()[IndexOf(pPanel->ShownRows(), "\tWriteFactoryParams\t2014\t")].contains(
        "The controller could not store the values in its memory."));
}

void TestHostActivity::filterAndCopy()
{
    CHostWindow host;
    QVERIFY(host.Start());
    host.Session().OpenSettings();
    host.Session().UploadToController();
    CActivityPanel* pPanel = host.Activity();
    QTRY_VERIFY(IndexOf(pPanel->ShownRows(), "The controller kept every value.") >= 0);
    const int nAll = int(pPanel->ShownRows().size());
    pPanel->SetFilter("readfactoryparams");   // any case
    const QStringList filtered = pPanel->ShownRows();
    QVERIFY(!filtered.isEmpty() && filtered.size() < nAll);
    for (const QString& strRow : filtered)
        QVERIFY(strRow.contains("ReadFactoryParams"));
    pPanel->CopyShownRows();
    QCOMPARE(QApplication::clipboard()->text(), filtered.join('\n') + '\n');
    pPanel->SetFilter(QString());
    QCOMPARE(pPanel->ShownRows().size(), nAll);
}

void TestHostActivity::transfersRunBehindTheProgressDialogAndTheWindowKeepsGoing()
{
    CHostWindow host;
    QVERIFY(host.Start());
    host.Session().Simulator()->SetTaskDuration(1800);   // a parameter transfer takes 300 ms on the link
    host.Session().OpenSettings();
    // The GUI thread's own timer, and what is on the screen, while the host reads.
    int nTicks = 0;
    bool bProgressShown = false;
    QTimer tick;
    connect(&tick, &QTimer::timeout, this, [&] {
        ++nTicks;
        if (auto* pModal = qobject_cast<QProgressDialog*>(QApplication::activeModalWidget()))
            bProgressShown = bProgressShown || pModal->isVisible();
    });
    tick.start(20);
    QElapsedTimer timer;
    timer.start();
    host.Session().ReadFromController();
    const qint64 nElapsed = timer.elapsed();
    tick.stop();
    QVERIFY2(nElapsed >= 550, qPrintable(QString::number(nElapsed)));   // the plug-in's read and the host's
    QVERIFY(bProgressShown);
    // The loop went on the whole time: at least one tick in every 100 ms.
    QVERIFY2(nTicks >= nElapsed / 100, qPrintable(QStringLiteral("%1 ticks in %2 ms").arg(nTicks).arg(nElapsed)));
}

void TestHostActivity::cardFunctionsWaitOffTheGuiThread()
{
    CHostWindow host;
    QVERIFY(host.Start());
    CSimController* pSim = host.Session().Simulator();
    pSim->SetTaskDuration(0);
    host.Session().OpenSettings();
    QDialog* pDialog = host.Session().SettingsWindow()->Dialog();
    // What the GUI thread does meanwhile: its own timer, what is on the
    // screen, and the boxes it is shown (answered at once).
    int nTicks = 0;
    bool bProgressShown = false;
    QTimer tick;
    connect(&tick, &QTimer::timeout, this, [&] {
        ++nTicks;
        QWidget* pModal = QApplication::activeModalWidget();
        if (auto* pProgress = qobject_cast<QProgressDialog*>(pModal))
            bProgressShown = bProgressShown || pProgress->isVisible();
        if (auto* pBox = qobject_cast<QMessageBox*>(pModal))
            pBox->buttons().first()->click();
    });
    tick.start(20);

    // A quick answer (the System page asks for the card's information) shows no progress.
    auto* pTabs = pDialog->findChild<QTabWidget*>("tabWidget");
    pTabs->setCurrentWidget(pTabs->findChild<QWidget*>("tab_2"));
    QTRY_VERIFY(IndexOf(host.Activity()->ShownRows(), "GetCardInfo") >= 0);
    QTest::qWait(100);
    QVERIFY(!bProgressShown);

    // A controller that keeps silent: the window goes on, and says it waits.
    pSim->SetNoAnswerDuration(700);
    pSim->ArmFault(CSimController::FaultNoAnswer);
    const int nShownBefore = int(host.Session().Notifier().Shown().size());
    nTicks = 0;
    QElapsedTimer timer;
    timer.start();
    pDialog->findChild<QPushButton*>("pushButton_clear")->click();
    const qint64 nElapsed = timer.elapsed();
    tick.stop();
    QVERIFY2(nElapsed >= 650, qPrintable(QString::number(nElapsed)));
    QVERIFY(bProgressShown);
    QVERIFY2(nTicks >= nElapsed / 100, qPrintable(QStringLiteral("%1 ticks in %2 ms").arg(nTicks).arg(nElapsed)));
    QCOMPARE(host.Session().Notifier().Shown().size(), nShownBefore + 1);
    QCOMPARE(host.Session().Notifier().Shown().last(), int(CSimController::CodeNoAnswer));
    QVERIFY(IndexOf(host.Activity()->ShownRows(), "ClearCardInfo") >= 0);
}

FACTORYMGR_TEST_MAIN(TestHostActivity)
#include "tst_hostactivity.moc"
