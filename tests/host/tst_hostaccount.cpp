#include "TestMain.h"

#include "CHostSession.h"
#include "CHostWindow.h"
#include "CParamAccount.h"
#include "CParamBackups.h"
#include "CPatternConverter.h"
#include "CRestoreDialog.h"
#include "CSettingsWindow.h"
#include "CSimController.h"
#include "FileSizeLimit.h"
#include "FactoryParamIo.h"
#include "ModalAnswerer.h"

#include <QAction>
#include <QDialog>

#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>
#include <QTreeWidget>
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

QByteArray FileBytes()
{
    QFile file(ParameterFile());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList Backups()
{
    return QDir(CParamBackups::Directory(ParameterFile())).entryList(QDir::Files, QDir::Name);
}

// The red cells of the open dialog's four tables.
int RedCells(QDialog* pDialog)
{
    int nRed = 0;
    for (QTableWidget* pTable : pDialog->findChildren<QTableWidget*>())
        for (int r = 0; r < pTable->rowCount(); ++r)
            for (int c = 0; c < pTable->columnCount(); ++c)
                if (pTable->item(r, c) && pTable->item(r, c)->background() == QBrush(Qt::red))
                    ++nRed;
    return nRed;
}

// The value cells of the open dialog that tell assistive technology the
// controller did not keep them.
int DescribedCells(QDialog* pDialog)
{
    int nDescribed = 0;
    for (QTableWidget* pTable : pDialog->findChildren<QTableWidget*>())
        for (int r = 0; r < pTable->rowCount(); ++r)
            for (int c = 1; c < pTable->columnCount(); ++c)
                if (pTable->item(r, c) && !pTable->item(r, c)->data(Qt::AccessibleDescriptionRole).toString().isEmpty())
                    ++nDescribed;
    return nDescribed;
}

// Types a number into a Motor cell: click, keys, Return.
void TypeInMotorCell(QDialog* pDialog, int nRow, int nColumn, const QString& strText)
{
    auto* pTable = pDialog->findChild<QTableWidget*>("tableWidget_motor");
    QTest::mouseClick(pTable->viewport(), Qt::LeftButton, Qt::NoModifier,
                      pTable->visualRect(pTable->model()->index(nRow, nColumn)).center());
    auto* pEdit = pTable->cellWidget(nRow, nColumn)->findChild<QLineEdit*>();
    QVERIFY(pEdit && pEdit->isVisible());
    pEdit->selectAll();
    QTest::keyClicks(pEdit, strText);
    QTest::keyClick(pEdit, Qt::Key_Return);
}

// What a Motor cell shows.
QString MotorCell(QDialog* pDialog, int nRow, int nColumn)
{
    auto* pTable = pDialog->findChild<QTableWidget*>("tableWidget_motor");
    return pTable->cellWidget(nRow, nColumn)->findChild<QLabel*>()->text();
}

// A cut of the calibration square straight on the simulated controller, as
// the wizard's cut does it.
void WizardlessCut(CHostSession& session)
{
    QTemporaryDir dir;
    const QString strJob = dir.path() + "/job.tl";
    const QString strPattern = QCoreApplication::applicationDirPath() + "/../Resources/Data/adjustpulse.lcpx";
    QCOMPARE(CPatternConverter::ConvertPattern(strPattern.toUtf8().constData(), strJob.toUtf8().constData(), 10.0), 0);
    QCOMPARE(session.Simulator()->CallFunction("BacklashAdjust", QVariant(strJob)), 0);
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
    void aGarbledReadChangesNothing();
    void aReadClearsTheMarksAndFollowsTheLaserCount();
    void discardReallyDiscards();
    void escapeCancelsAnEditThenAsksWithTheDialogInItsWindow();
    void aRefusedUploadLeavesTheEditsUnsaved();
    void savesThatFailAreNeverCalledSaved();
    void anUnreadableParameterFileIsNeverWrittenOver();
    void quittingInTheMiddleOfAnUploadWaitsForItsEnd();
    void aSecondHostOnTheSameDirectoryIsToldAndWritesNothing();
    void inInchesEveryLengthShownIsInInches();
    void reconnectingReplacesTheFailureAndForgetsTheController();
    void aChangeByAnotherProgramIsToldAndNotSilentlyWrittenOver();
    void anImportOrReloadOfTwoLasersMakesTheDialogAnew_data();
    void anImportOrReloadOfTwoLasersMakesTheDialogAnew();
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
    QVERIFY2(strReport.contains("Max Speed(mm/s), X: sent 1800 mm/s, the controller kept 1500 mm/s, put back 1000 mm/s"),
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

void TestHostAccount::aGarbledReadChangesNothing()
{
    CHostWindow host;
    QVERIFY(host.Start());
    CHostSession& session = host.Session();
    session.Simulator()->SetTaskDuration(0);
    session.OpenSettings();
    session.SaveParameters();
    const QByteArray fileBefore = FileBytes();
    const QStringList backupsBefore = Backups();
    FactoryParams recordBefore;
    session.Mgr()->GetFactoryParams(&recordBefore);
    QSignalSpy reported(&session, &CHostSession::Reported);
    session.Simulator()->ArmFault(CSimController::FaultCorruptRead);
    session.ReadFromController();
    QCOMPARE(reported.last().first().toString(),
             QStringLiteral("Nothing was read: the controller's answers did not agree, so a value was garbled on the "
                            "way. Read again."));
    // Not the file (not even its time stamp), not the backups, not the record, not the dialog.
    QCOMPARE(FileBytes(), fileBefore);
    QCOMPARE(Backups(), backupsBefore);
    FactoryParams recordAfter;
    session.Mgr()->GetFactoryParams(&recordAfter);
    QVERIFY(CParamDiff::Compare(recordAfter, recordBefore).isEmpty());
    bool bEdited = true;
    QVERIFY(QMetaObject::invokeMethod(session.Dialog(), "IsEdited", Q_RETURN_ARG(bool, bEdited)));
    QVERIFY(!bEdited);
    QVERIFY(!session.Account().IsControllerKnown());
    QCOMPARE(session.SettingsWindow()->ReportText(), reported.last().first().toString());
}

void TestHostAccount::aReadClearsTheMarksAndFollowsTheLaserCount()
{
    CHostWindow host;
    QVERIFY(host.Start());
    CHostSession& session = host.Session();
    session.Simulator()->SetTaskDuration(0);
    session.OpenSettings();
    FactoryParams record;
    session.Mgr()->GetFactoryParams(&record);
    QCOMPARE(record.laser.laserCount, 1);
    record.motor[0].speedMax = 1800.0;
    SetAndShow(host, record);
    session.UploadToController();
    QCOMPARE(RedCells(session.Dialog()), 1);
    QCOMPARE(DescribedCells(session.Dialog()), 1);

    // Read with the same number of lasers: the same dialog shows what the
    // controller holds, and no mark is left, for the eye or for assistive
    // technology.
    {
        ModalAnswerer answerer;
        answerer.AnswerWith("Discard");
        session.ReadFromController();
    }
    QCOMPARE(RedCells(session.Dialog()), 0);
    QCOMPARE(DescribedCells(session.Dialog()), 0);
    QCOMPARE(MotorCell(session.Dialog(), 10, 1),
             QString::number(session.Simulator()->StoredParams().motor[0].speedMax, 'f', 2));

    // The controller now holds two lasers (set up at the machine, say).
    FactoryParams held = session.Simulator()->StoredParams();
    held.laser.laserCount = 2;
    held.laser.lasers[1].powerMax = 77.0;
    QCOMPARE(session.Simulator()->WriteFactoryParams(&held), 0);
    const QPointer<QDialog> pOld = session.Dialog();
    ModalAnswerer answerer;
    answerer.AnswerWith("Discard");   // the refused value is not to be kept
    session.ReadFromController();
    // A dialog for two lasers, with no red: what was read, shown.
    QVERIFY(session.Dialog() && session.Dialog() != pOld.data());
    QCOMPARE(RedCells(session.Dialog()), 0);
    QCOMPARE(session.Dialog()->findChild<QTableWidget*>("tableWidget_laser")->columnCount(), 3);
    QCOMPARE(FileRecord().laser.laserCount, 2);
    // And the next Upload sends what was read.
    session.UploadToController();
    const FactoryParams sent = session.Simulator()->StoredParams();
    QCOMPARE(sent.laser.laserCount, 2);
    QCOMPARE(sent.laser.lasers[1].powerMax, 77.0);
}

void TestHostAccount::discardReallyDiscards()
{
    CHostWindow host;
    QVERIFY(host.Start());
    CHostSession& session = host.Session();
    session.OpenSettings();
    session.SaveParameters();
    const QString strSaved = MotorCell(session.Dialog(), 6, 1);
    TypeInMotorCell(session.Dialog(), 6, 1, "640");
    QCOMPARE(MotorCell(session.Dialog(), 6, 1), QStringLiteral("640.00"));
    {
        ModalAnswerer answerer;
        answerer.AnswerWith("Discard");
        QVERIFY(session.SettingsWindow()->close());
        QCOMPARE(answerer.Count(), 1);
    }
    // Opened again: the file's value, and nothing asks about the discarded one.
    ModalAnswerer answerer;
    session.OpenSettings();
    QCOMPARE(answerer.Count(), 0);
    QCOMPARE(MotorCell(session.Dialog(), 6, 1), strSaved);
    QVERIFY(session.SettingsWindow()->close());
    QCOMPARE(answerer.Count(), 0);
    QCOMPARE(FileRecord().motor[0].size, strSaved.toDouble());
}

void TestHostAccount::escapeCancelsAnEditThenAsksWithTheDialogInItsWindow()
{
    CHostWindow host;
    QVERIFY(host.Start());
    CHostSession& session = host.Session();
    session.OpenSettings();
    session.SaveParameters();
    CSettingsWindow* pSettings = session.SettingsWindow();
    pSettings->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(pSettings));
    QDialog* pDialog = session.Dialog();
    auto* pTable = pDialog->findChild<QTableWidget*>("tableWidget_motor");
    QTest::mouseClick(pTable->viewport(), Qt::LeftButton, Qt::NoModifier,
                      pTable->visualRect(pTable->model()->index(6, 1)).center());
    auto* pEdit = pTable->cellWidget(6, 1)->findChild<QLineEdit*>();
    QVERIFY(pEdit && pEdit->hasFocus());
    pEdit->selectAll();
    QTest::keyClicks(pEdit, "640");
    QTest::keyClick(pEdit, Qt::Key_Return);
    // Return moved on to the cell below; a digit there starts another edit.
    QTest::keyClicks(QApplication::focusWidget(), "7");
    const QString strBelow = MotorCell(pDialog, 7, 1);
    // Escape with an edit in progress: that edit is cancelled, the window
    // stays, nothing asked.
    ModalAnswerer answerer;
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    QCOMPARE(answerer.Count(), 0);
    QVERIFY(pSettings->isVisible() && pDialog->isVisible());
    QCOMPARE(MotorCell(pDialog, 6, 1), QStringLiteral("640.00"));
    QCOMPARE(MotorCell(pDialog, 7, 1), strBelow);
    QVERIFY(!pTable->cellWidget(7, 1)->findChild<QLineEdit*>()->isVisible());

    // Escape again: asked, while the dialog is still in its window.
    bool bDialogInWindow = false;
    QTimer::singleShot(0, this, [&] {
        bDialogInWindow = pDialog->isVisible() && pSettings->isAncestorOf(pDialog);
    });
    answerer.AnswerWith("Cancel");
    QTest::keyClick(pDialog, Qt::Key_Escape);
    QCOMPARE(answerer.Count(), 1);
    QVERIFY2(answerer.Boxes().first().strText.startsWith("The machine settings have changes that are not saved."),
             qPrintable(answerer.Described()));
    QVERIFY(bDialogInWindow);
    // Cancelled: everything as it was.
    QVERIFY(session.SettingsWindow() && pSettings->isVisible() && pDialog->isVisible());
    QCOMPARE(MotorCell(pDialog, 6, 1), QStringLiteral("640.00"));
    // Discarded: the window goes, and the file keeps its value.
    answerer.AnswerWith("Discard");
    QTest::keyClick(pDialog, Qt::Key_Escape);
    QCOMPARE(answerer.Count(), 2);
    QVERIFY(!session.SettingsWindow());
    QVERIFY(FileRecord().motor[0].size != 640.0);
}

void TestHostAccount::aRefusedUploadLeavesTheEditsUnsaved()
{
    CHostWindow host;
    QVERIFY(host.Start());
    CHostSession& session = host.Session();
    session.Simulator()->SetTaskDuration(0);
    session.OpenSettings();
    session.SaveParameters();
    const double dSaved = FileRecord().motor[0].size;
    TypeInMotorCell(session.Dialog(), 6, 1, "640");
    session.Simulator()->SetBusy(true);
    {
        ModalAnswerer answerer;
        answerer.AnswerWith("OK");   // the notifier's error box
        session.UploadToController();
        QCOMPARE(answerer.Count(), 1);
    }
    session.Simulator()->SetBusy(false);
    QCOMPARE(FileRecord().motor[0].size, dSaved);
    // Closing: the edit is not saved, and Save is offered.
    ModalAnswerer answerer;
    answerer.AnswerWith("Save");
    QVERIFY(session.SettingsWindow()->close());
    QCOMPARE(answerer.Count(), 1);
    QVERIFY2(answerer.Boxes().first().strText.startsWith("The machine settings have changes that are not saved."),
             qPrintable(answerer.Described()));
    QVERIFY(answerer.Boxes().first().buttons.contains("Save"));
    QCOMPARE(FileRecord().motor[0].size, 640.0);
}

void TestHostAccount::savesThatFailAreNeverCalledSaved()
{
    CHostWindow host;
    QVERIFY(host.Start());
    CHostSession& session = host.Session();
    session.Simulator()->SetTaskDuration(0);
    session.OpenSettings();
    FactoryParams first;
    session.Mgr()->GetFactoryParams(&first);
    first.motor[0].speedMax = 640.0;
    SetAndShow(host, first);
    FactoryParams second = first;
    second.motor[0].speedMax = 820.0;
    SetAndShow(host, second);   // 640 goes to the backups
    const QByteArray fileBefore = FileBytes();
    QSignalSpy reported(&session, &CHostSession::Reported);

    // A restore while no file can be written: said plainly, not "saved".
    {
        FileSizeLimit limit(512);
        ModalAnswerer answerer;
        answerer.AnswerInTurn({"Restore"});
        answerer.LeaveAlone("CRestoreDialog");
        QTimer::singleShot(0, this, [] {
            auto* pDialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            QVERIFY(pDialog);
            pDialog->findChild<QPushButton*>("pushButton_restore")->click();
        });
        session.RestoreParameters();
    }
    const QString strRestored = reported.last().first().toString();
    QVERIFY2(strRestored.contains("but the parameter file could not be written") && strRestored.endsWith("Nothing is saved.")
                 && !strRestored.contains("They are saved"),
             qPrintable(strRestored));
    QCOMPARE(FileBytes(), fileBefore);
    QVERIFY2(session.Account().Sentence().startsWith("Settings: 1 change(s) not saved"),
             qPrintable(session.Account().Sentence()));

    // A Read likewise.
    {
        FileSizeLimit limit(512);
        ModalAnswerer answerer;
        answerer.AnswerWith("Discard");
        session.ReadFromController();
    }
    QVERIFY2(reported.last().first().toString().startsWith(
                 "The parameters were read from the controller into the settings, but the parameter file could not "
                 "be written"),
             qPrintable(reported.last().first().toString()));
    QCOMPARE(FileBytes(), fileBefore);

    // Quitting with values the file does not hold offers to save them.
    ModalAnswerer answerer;
    answerer.AnswerWith("Cancel");
    QVERIFY(!host.close());
    QCOMPARE(answerer.Count(), 1);
    QVERIFY2(answerer.Boxes().first().strText.startsWith("The machine settings have changes that are not saved."),
             qPrintable(answerer.Described()));
    QVERIFY(answerer.Boxes().first().buttons.contains("Save"));
}

void TestHostAccount::anUnreadableParameterFileIsNeverWrittenOver()
{
    QDir().mkpath(QFileInfo(ParameterFile()).absolutePath());
    {
        QFile file(ParameterFile());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[FACTORY_PARAM]\nFILE_FLAG=__SOMETHING_ELSE__\n");
    }
    const QByteArray strange = FileBytes();
    CHostWindow host;
    {
        ModalAnswerer answerer;
        answerer.AnswerWith("OK");   // the plug-in's "File ID is incorrect!"
        QVERIFY(host.Start());
    }
    CHostSession& session = host.Session();
    session.Simulator()->SetTaskDuration(0);
    QVERIFY(session.Account().IsFileUnreadable());
    auto* pSentence = host.findChild<QLabel*>("label_account");
    QVERIFY2(pSentence->text().contains("File: cannot be read (it is not a parameter file (its marker is wrong))"),
             qPrintable(pSentence->text()));
    session.OpenSettings();
    QSignalSpy reported(&session, &CHostSession::Reported);
    // Read, Restore and calibration refuse to write over it.
    session.ReadFromController();
    QVERIFY2(reported.last().first().toString().startsWith("Nothing was read: the parameter file"),
             qPrintable(reported.last().first().toString()));
    // Save asks where to save instead, and saves there.
    const QString strElsewhere = QFileInfo(ParameterFile()).absolutePath() + "/elsewhere.ini";
    {
        ModalAnswerer answerer;
        answerer.AnswerFileWith(strElsewhere);
        session.SaveParameters();
        QCOMPARE(answerer.Count(), 1);
    }
    QCOMPARE(reported.last().first().toString(),
             QStringLiteral("The parameters are saved to %1.").arg(QDir::toNativeSeparators(strElsewhere)));
    FactoryParams saved;
    QCOMPARE(ReadFactoryParamFile(saved, strElsewhere), ParamFileStatus::Loaded);
    // An Upload sends, and says the file was not saved.
    session.UploadToController();
    QVERIFY2(reported.last().first().toString().contains("The parameter file could not be saved"),
             qPrintable(reported.last().first().toString()));
    QCOMPARE(FileBytes(), strange);
}

void TestHostAccount::quittingInTheMiddleOfAnUploadWaitsForItsEnd()
{
    CHostWindow host;
    QVERIFY(host.Start());
    CHostSession& session = host.Session();
    session.Simulator()->SetTaskDuration(400);
    host.show();
    session.OpenSettings();
    session.SaveParameters();
    bool bClosedInTheMiddle = true;
    QTimer::singleShot(100, &host, [&] {
        QVERIFY(session.IsBusy());
        host.close();
        bClosedInTheMiddle = !host.isVisible();
    });
    session.UploadToController();
    QVERIFY(!bClosedInTheMiddle);
    // Once the Upload has ended, the host goes: nothing was at stake.
    QTRY_VERIFY(!host.isVisible());
    QCOMPARE(session.Simulator()->StoredParams().motor[0].size, FileRecord().motor[0].size);
}

void TestHostAccount::aSecondHostOnTheSameDirectoryIsToldAndWritesNothing()
{
    CHostWindow first;
    QVERIFY(first.Start());
    first.Session().OpenSettings();
    first.Session().SaveParameters();
    const QByteArray fileBefore = FileBytes();
    {
        CHostWindow second;
        ModalAnswerer answerer;
        answerer.AnswerWith("OK");
        QVERIFY(!second.Start());
        QCOMPARE(answerer.Count(), 1);
        QCOMPARE(answerer.Boxes().first().strTitle, QStringLiteral("Error"));
        QCOMPARE(answerer.Boxes().first().strText,
                 QStringLiteral("Another host (%1, process %2) is using %3. Close it first: two hosts would write the "
                                "same parameter file.")
                     .arg(QCoreApplication::applicationName())
                     .arg(QCoreApplication::applicationPid())
                     .arg(QFileInfo(QFileInfo(ParameterFile()).absolutePath()).absolutePath()));
        QVERIFY(!second.Session().Mgr());
    }
    QCOMPARE(FileBytes(), fileBefore);
    // The first host goes on as before, and once it has gone another may start.
    first.Session().SaveParameters();
    QVERIFY(first.close());
}

void TestHostAccount::inInchesEveryLengthShownIsInInches()
{
    CHostWindow host;
    QVERIFY(host.Start());
    CHostSession& session = host.Session();
    session.Simulator()->SetTaskDuration(0);
    session.SetUnit(0);
    session.OpenSettings();
    FactoryParams record;
    session.Mgr()->GetFactoryParams(&record);
    record.motor[0].speedMax = 1800.0;
    SetAndShow(host, record);
    session.UploadToController();
    // 1800, 1500 and 1000 mm/s.
    QVERIFY2(session.SettingsWindow()->ReportText().contains(
                 "Max Speed(mm/s), X: sent 70.87 in/s, the controller kept 59.06 in/s, put back 39.37 in/s"),
             qPrintable(session.SettingsWindow()->ReportText()));
    QVERIFY2(session.Account().Sentence().endsWith("(Max Speed(mm/s), X: file 39.37 in/s, controller 59.06 in/s)"),
             qPrintable(session.Account().Sentence()));
    // The restore dialog's differences: 640 mm/s now, 1000 in the backup.
    record.motor[0].speedMax = 640.0;
    SetAndShow(host, record);
    FactoryParams current;
    session.Mgr()->GetFactoryParams(&current);
    CRestoreDialog restore(ParameterFile(), current, session.Unit());
    auto* pBackups = restore.findChild<QTreeWidget*>("treeWidget_backups");
    auto* pDifferences = restore.findChild<QTreeWidget*>("treeWidget_differences");
    pBackups->setCurrentItem(pBackups->topLevelItem(0));
    QCOMPARE(pDifferences->topLevelItemCount(), 1);
    const QTreeWidgetItem* pItem = pDifferences->topLevelItem(0);
    QCOMPARE(QStringList({pItem->text(1), pItem->text(2), pItem->text(3)}), QStringList({"25.2", "39.37", "in/s"}));
    // The last cut, on the main window.
    session.Simulator()->SetTrueSteps(7.88627, 7.88627);
    WizardlessCut(session);
    auto* pStatus = host.findChild<QLabel*>("label_status");
    QTRY_VERIFY2(pStatus->text().contains("Last cut: 5.91 in x 5.91 in"), qPrintable(pStatus->text()));
}

void TestHostAccount::reconnectingReplacesTheFailureAndForgetsTheController()
{
    CHostWindow host;
    QVERIFY(host.Start());
    CHostSession& session = host.Session();
    session.Simulator()->SetTaskDuration(0);
    session.OpenSettings();
    {
        ModalAnswerer answerer;
        answerer.AnswerWith("Discard");
        session.ReadFromController();
    }
    QVERIFY2(session.Account().Sentence().endsWith("Controller: same as the file"), qPrintable(session.Account().Sentence()));
    auto* pConnected = host.findChild<QAction*>("action_connected");
    auto* pReport = host.findChild<QLabel*>("label_report");
    QVERIFY(pConnected->isChecked());
    pConnected->trigger();
    QCOMPARE(pReport->text(), QStringLiteral("The controller is not connected."));
    {
        ModalAnswerer answerer;
        answerer.AnswerWith("OK");   // the notifier's error box
        session.UploadToController();
        QCOMPARE(answerer.Count(), 1);
    }
    QVERIFY2(pReport->text().startsWith("The Upload failed"), qPrintable(pReport->text()));
    // Connected again: the failure is no longer the last word, and what the
    // controller holds is not known until it is read.
    pConnected->trigger();
    QVERIFY(session.Simulator()->IsConnected());
    QCOMPARE(pReport->text(), QStringLiteral("The controller is connected. Read to see what it holds."));
    QVERIFY2(session.Account().Sentence().endsWith("Controller: not read yet"), qPrintable(session.Account().Sentence()));
}

void TestHostAccount::aChangeByAnotherProgramIsToldAndNotSilentlyWrittenOver()
{
    CHostWindow host;
    QVERIFY(host.Start());
    CHostSession& session = host.Session();
    session.OpenSettings();
    session.SaveParameters();
    auto* pReport = host.findChild<QLabel*>("label_report");
    QTRY_VERIFY2(session.Account().Sentence().startsWith("Settings: no changes"), qPrintable(session.Account().Sentence()));
    // factoryparams, as a factory script runs it beside the host.
    QProcess tool;
    tool.start(QCoreApplication::applicationDirPath() + "/factoryparams",
               {"set", ParameterFile(), "MOTOR_SPEED_MAX_1=1234"});
    QVERIFY(tool.waitForFinished(60000));
    QCOMPARE(tool.exitCode(), 0);
    QTRY_VERIFY2(pReport->text().startsWith("Another program changed the parameter file: Max Speed(mm/s), X: "),
                 qPrintable(pReport->text()));
    QVERIFY2(pReport->text().contains("→ 1234 mm/s"), qPrintable(pReport->text()));
    QVERIFY2(session.Account().Sentence().startsWith("Settings: 1 change(s) not saved"),
             qPrintable(session.Account().Sentence()));
    // Closing asks: the settings hold another value than the file now.
    ModalAnswerer answerer;
    answerer.AnswerWith("Discard");
    QVERIFY(session.SettingsWindow()->close());
    QCOMPARE(answerer.Count(), 1);
    QCOMPARE(FileRecord().motor[0].speedMax, 1234.0);

    // The dialog's own saves are the host's: nothing is reported.
    session.OpenSettings();
    QSignalSpy reported(&session, &CHostSession::Reported);
    FactoryParams record;
    session.Mgr()->GetFactoryParams(&record);
    record.motor[0].speedMax = 1500.0;
    SetAndShow(host, record);
    QCOMPARE(FileRecord().motor[0].speedMax, 1500.0);
    QTRY_VERIFY2(session.Account().Sentence().contains("Settings: no changes"), qPrintable(session.Account().Sentence()));
    QTest::qWait(500);
    for (const QList<QVariant>& report : reported)
        QVERIFY2(!report.first().toString().startsWith("Another program"), qPrintable(report.first().toString()));
}

void TestHostAccount::anImportOrReloadOfTwoLasersMakesTheDialogAnew_data()
{
    QTest::addColumn<bool>("bImport");
    QTest::newRow("import") << true;
    QTest::newRow("reload") << false;
}

void TestHostAccount::anImportOrReloadOfTwoLasersMakesTheDialogAnew()
{
    QFETCH(bool, bImport);
    CHostWindow host;
    QVERIFY(host.Start());
    CHostSession& session = host.Session();
    session.Simulator()->SetTaskDuration(0);
    session.OpenSettings();
    session.SaveParameters();
    QCOMPARE(session.Dialog()->findChild<QTableWidget*>("tableWidget_laser")->columnCount(), 2);
    FactoryParams twoLasers = FileRecord();
    twoLasers.laser.laserCount = 2;
    twoLasers.laser.lasers[1].powerMax = 66.0;
    const QString strFile = bImport ? QFileInfo(ParameterFile()).absolutePath() + "/two.ini" : ParameterFile();
    QVERIFY(WriteFactoryParamFile(twoLasers, strFile));
    const QPointer<QDialog> pOld = session.Dialog();
    if (bImport) {
        ModalAnswerer answerer;
        answerer.AnswerFileWith(strFile);
        session.ImportParameters();
        QCOMPARE(answerer.Count(), 1);
    } else {
        session.ReloadParameters();
    }
    QVERIFY(session.Dialog() && session.Dialog() != pOld.data());
    QVERIFY(session.SettingsWindow() && session.SettingsWindow()->isVisible());
    QCOMPARE(session.Dialog()->findChild<QTableWidget*>("tableWidget_laser")->columnCount(), 3);
    // The next Upload sends the two lasers.
    session.UploadToController();
    QCOMPARE(session.Simulator()->StoredParams().laser.laserCount, 2);
    QCOMPARE(session.Simulator()->StoredParams().laser.lasers[1].powerMax, 66.0);
}

FACTORYMGR_TEST_MAIN(TestHostAccount)
#include "tst_hostaccount.moc"
