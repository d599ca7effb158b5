#include "TestMain.h"

#include "CHostSession.h"
#include "CHostWindow.h"
#include "CParamAccount.h"
#include "CSettingsWindow.h"
#include "CSimController.h"
#include "FactoryParamIo.h"
#include "ModalAnswerer.h"

#include <QDialog>

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardPaths>

// What the host says about the settings, the parameter file and the
// controller is what they hold: the account, and the flows that change them.
namespace {
QString ParameterFile()
{
    return CHostSession::ParameterFile();
}

FactoryParams FileRecord()
{
    FactoryParams record;
    if (ReadFactoryParamFile(record, ParameterFile()) != ParamFileStatus::Loaded)
        QTest::qFail("the parameter file cannot be read", __FILE__, __LINE__);
    return record;
}

// Puts values into the plug-in's record, its file and the open dialog, as a restore does.
void SetAndShow(CHostWindow& host, const FactoryParams& params)
{
    host.Session().Mgr()->SetFactoryParams(&params);
    QMetaObject::invokeMethod(host.Session().Dialog(), "DataToCtrlSlot", Q_ARG(bool, true));
}
}

class TestHostAccount : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void aPartlyRefusedUploadLetsThePersonChoose_data();
    void aPartlyRefusedUploadLetsThePersonChoose();
};

void TestHostAccount::init()
{
    QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/Quorvane").removeRecursively();
}

void TestHostAccount::aPartlyRefusedUploadLetsThePersonChoose_data()
{
    QTest::addColumn<int>("nChoice");
    QTest::newRow("keep the dialog's values") << 0;
    QTest::newRow("take the controller's values") << 1;
}

void TestHostAccount::aPartlyRefusedUploadLetsThePersonChoose()
{
    QFETCH(int, nChoice);
    CHostWindow host;
    QVERIFY(host.Start());
    CHostSession& session = host.Session();
    session.Simulator()->SetTaskDuration(0);
    session.OpenSettings();
    FactoryParams record;
    session.Mgr()->GetFactoryParams(&record);
    record.motor[0].speedMax = 1800.0;   // the controller takes 1500 at most
    SetAndShow(host, record);
    session.UploadToController();

    // Said in the settings window, with the two choices. (The value put back
    // is the one the dialog opened with.)
    CSettingsWindow* pSettings = session.SettingsWindow();
    const QString strReport = pSettings->ReportText();
    QVERIFY2(strReport.contains("Max Speed(mm/s), X: sent 1800, the controller kept 1500, put back 1000"),
             qPrintable(strReport));
    auto* pKeep = pSettings->findChild<QPushButton*>("pushButton_reportFirst");
    auto* pTake = pSettings->findChild<QPushButton*>("pushButton_reportSecond");
    QVERIFY(pKeep->isVisible() && pTake->isVisible());
    QCOMPARE(pKeep->text(), QStringLiteral("Keep the dialog's values"));
    QCOMPARE(pTake->text(), QStringLiteral("Take the controller's values"));
    // The account: the file holds 1000, the controller 1500, and the main window says so.
    QCOMPARE(FileRecord().motor[0].speedMax, 1000.0);
    QCOMPARE(session.Account().ControllerDifferences().size(), 1);
    auto* pSentence = host.findChild<QLabel*>("label_account");
    QVERIFY2(pSentence->text().endsWith(
                 "Controller: differs in 1 field(s) (Max Speed(mm/s), X: file 1000 mm/s, controller 1500 mm/s)"),
             qPrintable(pSentence->text()));

    QSignalSpy reported(&session, &CHostSession::Reported);
    (nChoice == 0 ? pKeep : pTake)->click();
    QVERIFY(!pKeep->isVisible() && !pTake->isVisible());
    ModalAnswerer answerer;
    if (nChoice == 0) {
        QCOMPARE(reported.last().first().toString(),
                 QStringLiteral("The dialog's values are kept and saved. The controller still differs in 1 field(s): "
                                "Max Speed(mm/s), X: file 1000 mm/s, controller 1500 mm/s."));
        QCOMPARE(FileRecord().motor[0].speedMax, 1000.0);
        // Closing the settings asks: the controller does not hold the file's value.
        answerer.AnswerWith("Cancel");
        QVERIFY(!pSettings->close());
        QCOMPARE(answerer.Count(), 1);
        QVERIFY2(answerer.Boxes().first().strText.startsWith(
                     "The machine settings are saved, but not uploaded to the controller."),
                 qPrintable(answerer.Described()));
    } else {
        QCOMPARE(reported.last().first().toString(),
                 QStringLiteral("The controller's values are in the dialog and saved: all three agree."));
        QCOMPARE(FileRecord().motor[0].speedMax, 1500.0);
        QVERIFY(session.Account().ControllerDifferences().isEmpty());
        QVERIFY2(pSentence->text().endsWith("Controller: same as the file"), qPrintable(pSentence->text()));
        // Nothing is at stake: the settings close without a question.
        QVERIFY(pSettings->close());
        QCOMPARE(answerer.Count(), 0);
    }
}

FACTORYMGR_TEST_MAIN(TestHostAccount)
#include "tst_hostaccount.moc"
