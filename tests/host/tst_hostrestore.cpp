#include "TestMain.h"

#include "HostileFiles.h"

#include "CHostSession.h"
#include "CHostWindow.h"
#include "CActivityPanel.h"
#include "CParamBackups.h"
#include "CParamDiff.h"
#include "CRestoreDialog.h"
#include "CSettingsWindow.h"
#include "CSimController.h"
#include "FactoryParamIo.h"
#include "IFactoryMgr.h"
#include "ModalAnswerer.h"

#include <QAction>
#include <QDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QElapsedTimer>
#include <QStandardPaths>
#include <QTabWidget>
#include <QTreeWidget>

#include <cstring>
#include <functional>

#include <sys/stat.h>

// The parameter file's backups as the reference host keeps and restores them:
// before every save, every Upload and every firmware upgrade; File >
// Restore... lists them, shows what each would change and asks first.
class TestHostRestore : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void backupsBeforeEverySaveUploadAndUpgrade();
    void restoreShowsTheDifferencesAndAsksFirst();
    void aBackupThatCannotBeReadIsListedButNotOffered();
    void aBackupThatCannotBeKeptStopsNoUpload();
    void tenThousandBackupsAreListedWhileTheWindowGoesOn();
    void aBackupHoldingANestedEncodedValueIsListed();
    void aFifoAmongTheBackupsIsPassedOverAtOnce();
};

namespace {
QString ParameterFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + "/Quorvane/Resources/Data/FactoryParam.ini";
}

bool Same(const FactoryParams& a, const FactoryParams& b)
{
    return std::memcmp(&a, &b, sizeof(FactoryParams)) == 0;
}

// Runs pWork while act(modal dialog) handles the first modal dialog of class T that opens.
template <typename T>
bool WithModal(const std::function<void()>& work, const std::function<void(T*)>& act)
{
    bool bSeen = false;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        auto* pModal = qobject_cast<T*>(QApplication::activeModalWidget());
        if (!pModal || !pModal->isVisible() || bSeen)
            return;
        bSeen = true;
        act(pModal);
    });
    poll.start(10);
    work();
    return bSeen;
}

void SetAndShow(CHostWindow& host, const FactoryParams& params)
{
    host.Session().Mgr()->SetFactoryParams(&params);
    QMetaObject::invokeMethod(host.Session().SettingsWindow()->Dialog(), "DataToCtrlSlot", Q_ARG(bool, true));
}
}

void TestHostRestore::init()
{
    QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/Quorvane").removeRecursively();
}

void TestHostRestore::backupsBeforeEverySaveUploadAndUpgrade()
{
    CHostWindow host;
    QVERIFY(host.Start());
    CSimController* pSim = host.Session().Simulator();
    pSim->SetTaskDuration(0);
    pSim->SetRestartDuration(0);
    host.Session().OpenSettings();
    const FactoryParams heldFirst = pSim->StoredParams();

    // An Upload keeps what the controller held before it.
    FactoryParams edited;
    host.Session().Mgr()->GetFactoryParams(&edited);
    edited.motor[0].speedMax = 700.0;
    SetAndShow(host, edited);
    const int nSavesBefore = int(CParamBackups::List(ParameterFile()).size());
    host.Session().UploadToController();
    QList<CParamBackups::Entry> backups = CParamBackups::List(ParameterFile());
    // Newest first: the save after the check, then what the controller held.
    QCOMPARE(backups.value(0).reason, CParamBackups::ReasonSave);
    QCOMPARE(backups.value(1).reason, CParamBackups::ReasonBeforeUpload);
    FactoryParams kept;
    QCOMPARE(ReadFactoryParamFile(kept, backups[1].strPath), ParamFileStatus::Loaded);
    QVERIFY(CParamDiff::Compare(kept, heldFirst).isEmpty());
    // ... and the save after the check kept the file it replaced.
    QVERIFY(backups.size() >= nSavesBefore + 2);

    // A save keeps the file as it was: the newest backup holds its content
    // (a backup of the same content is not made twice; only the time stamp
    // may differ).
    const auto content = [](const QString& strPath) {
        QFile file(strPath);
        QByteArray text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        const qsizetype nAt = text.indexOf("CREATE_TIME=");
        if (nAt >= 0)
            text.remove(nAt, text.indexOf('\n', nAt) - nAt);
        return text;
    };
    const QByteArray fileBefore = content(ParameterFile());
    QVERIFY(fileBefore.contains("FILE_FLAG=__FACTORY_PARAM__"));
    QTest::qWait(1100);   // a save in another second: another time stamp
    host.Session().SaveParameters();
    backups = CParamBackups::List(ParameterFile());
    QCOMPARE(backups.first().reason, CParamBackups::ReasonSave);
    QCOMPARE(content(backups.first().strPath), fileBefore);

    // A mainboard upgrade keeps what the controller held before it (here
    // something no backup holds yet: a backup of content the newest one
    // has already is not made).
    FactoryParams heldNow = pSim->StoredParams();
    heldNow.motor[0].zeroOffset = 3.5;
    QCOMPARE(pSim->WriteFactoryParams(&heldNow), 0);
    host.Session().ReadFromController();
    heldNow = pSim->StoredParams();
    QCOMPARE(heldNow.motor[0].zeroOffset, 3.5);
    auto* pTabs = host.Session().SettingsWindow()->Dialog()->findChild<QTabWidget*>("tabWidget");
    pTabs->setCurrentWidget(pTabs->findChild<QWidget*>("tab_2"));
    ModalAnswerer answerer;
    answerer.AnswerWith("OK");
    answerer.AnswerFileWith(QCoreApplication::applicationDirPath() + "/../Resources/Data/Firmware/QV-MB-3.3.0.upd");
    host.Session().SettingsWindow()->Dialog()->findChild<QPushButton*>("pushButton_mainboardUpgrade")->click();
    QTRY_VERIFY(CParamBackups::List(ParameterFile()).first().reason == CParamBackups::ReasonBeforeUpgrade);
    QCOMPARE(ReadFactoryParamFile(kept, CParamBackups::List(ParameterFile()).first().strPath), ParamFileStatus::Loaded);
    QVERIFY(CParamDiff::Compare(kept, heldNow).isEmpty());
}

void TestHostRestore::restoreShowsTheDifferencesAndAsksFirst()
{
    CHostWindow host;
    QVERIFY(host.Start());
    host.Session().Simulator()->SetTaskDuration(0);
    host.Session().OpenSettings();
    FactoryParams first;
    host.Session().Mgr()->GetFactoryParams(&first);
    first.motor[0].speedMax = 640.0;
    SetAndShow(host, first);          // the file now holds 640
    FactoryParams second = first;
    second.motor[0].speedMax = 820.0;
    second.laser.lasers[0].powerMax = 75.0;
    SetAndShow(host, second);         // 640 goes to the backups
    QAction* pRestore = host.findChild<QAction*>("action_restore");
    QVERIFY(pRestore);

    // Cancelled at the question: nothing changes.
    const auto choose = [&](const QString& strAnswer, QStringList* pShown) {
        return WithModal<QDialog>([&] { pRestore->trigger(); }, [&](QDialog* pDialog) {
            auto* pList = pDialog->findChild<QTreeWidget*>("treeWidget_backups");
            auto* pDifferences = pDialog->findChild<QTreeWidget*>("treeWidget_differences");
            QVERIFY(pList && pDifferences);
            // The newest backup holds 640: one field differs from now.
            QCOMPARE(pList->topLevelItem(0)->text(1), QStringLiteral("save"));
            QCOMPARE(pList->topLevelItem(0)->text(2), QStringLiteral("2"));
            pList->setCurrentItem(pList->topLevelItem(0));
            for (int i = 0; i < pDifferences->topLevelItemCount(); ++i) {
                const QTreeWidgetItem* pItem = pDifferences->topLevelItem(i);
                *pShown << QStringLiteral("%1|%2|%3|%4").arg(pItem->text(0), pItem->text(1), pItem->text(2), pItem->text(3));
            }
            ModalAnswerer* pAnswerer = new ModalAnswerer(pDialog);
            pAnswerer->AnswerWith(strAnswer);
            pDialog->findChild<QPushButton*>("pushButton_restore")->click();
            if (pDialog->isVisible())
                pDialog->reject();
        });
    };
    QStringList shown;
    QVERIFY(choose("Cancel", &shown));
    QCOMPARE(shown, (QStringList{"Max power(%), Laser 1|75|100|%", "Max Speed(mm/s), X|820|640|mm/s"}));
    FactoryParams now;
    host.Session().Mgr()->GetFactoryParams(&now);
    QVERIFY(Same(now, second));

    // Restored: the record, the file and the dialog hold the backup, and
    // what was current is a backup itself now.
    QSignalSpy reported(&host.Session(), &CHostSession::Reported);
    shown.clear();
    QVERIFY(choose("Restore", &shown));
    host.Session().Mgr()->GetFactoryParams(&now);
    QVERIFY(CParamDiff::Compare(now, first).isEmpty());
    FactoryParams file;
    QCOMPARE(ReadFactoryParamFile(file, ParameterFile()), ParamFileStatus::Loaded);
    QVERIFY(CParamDiff::Compare(file, first).isEmpty());
    bool bEdited = true;
    QVERIFY(QMetaObject::invokeMethod(host.Session().SettingsWindow()->Dialog(), "IsEdited", Q_RETURN_ARG(bool, bEdited)));
    QVERIFY(!bEdited);
    FactoryParams undo;
    QCOMPARE(ReadFactoryParamFile(undo, CParamBackups::List(ParameterFile()).first().strPath), ParamFileStatus::Loaded);
    QVERIFY(CParamDiff::Compare(undo, second).isEmpty());
    QVERIFY(!reported.isEmpty());
    QVERIFY2(reported.last().first().toString().contains("2 value(s) changed"), qPrintable(reported.last().first().toString()));
}

void TestHostRestore::aBackupThatCannotBeReadIsListedButNotOffered()
{
    CHostWindow host;
    QVERIFY(host.Start());
    QDir().mkpath(CParamBackups::Directory(ParameterFile()));
    QFile junk(CParamBackups::Directory(ParameterFile()) + "/FactoryParam-20260101-120000000-save.ini");
    QVERIFY(junk.open(QIODevice::WriteOnly));
    junk.write("\x01\x02 not a parameter file");
    junk.close();
    QAction* pRestore = host.findChild<QAction*>("action_restore");
    QVERIFY(WithModal<QDialog>([&] { pRestore->trigger(); }, [&](QDialog* pDialog) {
        auto* pList = pDialog->findChild<QTreeWidget*>("treeWidget_backups");
        QCOMPARE(pList->topLevelItemCount(), 1);
        QCOMPARE(pList->topLevelItem(0)->text(2), QStringLiteral("cannot be read"));
        QVERIFY(pList->topLevelItem(0)->isDisabled());
        QVERIFY(!pDialog->findChild<QPushButton*>("pushButton_restore")->isEnabled());
        pDialog->reject();
    }));
}

void TestHostRestore::aBackupThatCannotBeKeptStopsNoUpload()
{
    CHostWindow host;
    QVERIFY(host.Start());
    host.Session().Simulator()->SetTaskDuration(0);
    host.Session().OpenSettings();
    host.Session().SaveParameters();   // a file for the next save to replace
    QVERIFY(QFileInfo::exists(ParameterFile()));
    QDir(CParamBackups::Directory(ParameterFile())).removeRecursively();
    // A file where the backups' folder should be.
    QFile blocker(CParamBackups::Directory(ParameterFile()));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    QSignalSpy reported(&host.Session(), &CHostSession::Reported);
    host.Session().UploadToController();
    QVERIFY2(reported.last().first().toString().startsWith("The controller kept every value.\nThe parameters are saved."),
             qPrintable(reported.last().first().toString()));
    // The person sees why in the activity panel's log lines.
    QTRY_VERIFY(host.Activity()->ShownRows().join('\n').contains(
        "No backup of the controller's parameters was kept before upload"));
    QTRY_VERIFY(host.Activity()->ShownRows().join('\n').contains("No backup was kept before saving the parameters"));
}

void TestHostRestore::tenThousandBackupsAreListedWhileTheWindowGoesOn()
{
    // Ten thousand backups copied into the folder, one of them 1500 mm/s.
    FactoryParams record;
    const QString strDir = CParamBackups::Directory(ParameterFile());
    QVERIFY(QDir().mkpath(strDir));
    QVERIFY(WriteFactoryParamFile(record, strDir + "/model.ini"));
    QFile model(strDir + "/model.ini");
    QVERIFY(model.open(QIODevice::ReadOnly));
    const QByteArray bytes = model.readAll();
    model.close();
    QVERIFY(QFile::remove(strDir + "/model.ini"));
    constexpr int kCount = 10000;
    for (int i = 0; i < kCount; ++i) {
        QFile copy(QStringLiteral("%1/FactoryParam-%2-20260101-120000000-save.ini").arg(strDir).arg(i + 1, 6, 10, QLatin1Char('0')));
        QVERIFY(copy.open(QIODevice::WriteOnly));
        QByteArray content = bytes;
        if (i == 17)   // the 17th oldest
            content.replace("MOTOR_SPEED_MAX_1=1000", "MOTOR_SPEED_MAX_1=1500");
        QVERIFY(copy.write(content) == content.size());
    }

    CRestoreDialog restore(ParameterFile(), record, 1);
    restore.show();
    auto* pList = restore.findChild<QTreeWidget*>("treeWidget_backups");
    QCOMPARE(pList->topLevelItemCount(), kCount);
    QCOMPARE(pList->topLevelItem(0)->text(2), QStringLiteral("0"));   // the newest, read at once
    QVERIFY(!restore.AllRead());
    QVERIFY(pList->topLevelItem(kCount - 1)->isDisabled());
    // While the rest is read, the event loop keeps turning: a timer every
    // 20 ms never waits long, where reading all at once froze the window.
    QElapsedTimer since;
    since.start();
    qint64 nLongestWait = 0;
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, [&] {
        nLongestWait = qMax(nLongestWait, since.restart());
    });
    tick.start(20);
    QTRY_VERIFY_WITH_TIMEOUT(restore.AllRead(), 300000);
    tick.stop();
    QVERIFY2(nLongestWait < 2000, qPrintable(QStringLiteral("the window waited %1 ms").arg(nLongestWait)));
    // Every backup read, the different one among them.
    const QTreeWidgetItem* pOld = pList->topLevelItem(kCount - 1 - 17);
    QCOMPARE(pOld->text(2), QStringLiteral("1"));
    QVERIFY(!pOld->isDisabled());
    for (int i = 0; i < kCount; ++i)
        QVERIFY(pList->topLevelItem(i)->text(2) == (i == kCount - 1 - 17 ? "1" : "0"));
    pList->setCurrentItem(const_cast<QTreeWidgetItem*>(pOld));
    QVERIFY(restore.findChild<QPushButton*>("pushButton_restore")->isEnabled());
}

void TestHostRestore::aBackupHoldingANestedEncodedValueIsListed()
{
    // A value nested deep in the settings layer's own encoding reads as the
    // text it is: the backup is listed, that field as one that is no number.
    FactoryParams record;
    const QString strDir = CParamBackups::Directory(ParameterFile());
    QVERIFY(QDir().mkpath(strDir));
    const QString strPath = strDir + "/FactoryParam-000001-20260101-120000000-save.ini";
    QVERIFY(WriteFactoryParamFile(record, strPath));
    QFile file(strPath);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QByteArray bytes = file.readAll();
    file.close();
    bytes.replace("MOTOR_SPEED_MAX_1=1000", "MOTOR_SPEED_MAX_1=" + HostileFiles::NestedVariant());
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QVERIFY(file.write(bytes) == bytes.size());
    file.close();
    CHostWindow host;
    QVERIFY(host.Start());
    QAction* pRestore = host.findChild<QAction*>("action_restore");
    QVERIFY(WithModal<QDialog>([&] { pRestore->trigger(); }, [&](QDialog* pDialog) {
        auto* pList = pDialog->findChild<QTreeWidget*>("treeWidget_backups");
        QCOMPARE(pList->topLevelItemCount(), 1);
        QCOMPARE(pList->topLevelItem(0)->text(2), QStringLiteral("1"));
        pDialog->reject();
    }));
}

void TestHostRestore::aFifoAmongTheBackupsIsPassedOverAtOnce()
{
    // A FIFO named as a backup, beside a real one: no backup, so not listed,
    // and nothing waits for a writer.
    FactoryParams record;
    const QString strDir = CParamBackups::Directory(ParameterFile());
    QVERIFY(QDir().mkpath(strDir));
    QVERIFY(WriteFactoryParamFile(record, strDir + "/FactoryParam-000001-20260101-120000000-save.ini"));
    const QString strFifo = strDir + "/FactoryParam-000002-20260101-130000000-save.ini";
    QCOMPARE(::mkfifo(QFile::encodeName(strFifo).constData(), 0600), 0);
    CHostWindow host;
    QVERIFY(host.Start());
    QAction* pRestore = host.findChild<QAction*>("action_restore");
    QElapsedTimer timer;
    timer.start();
    int nListed = -1;
    QString strFields;
    QVERIFY(WithModal<QDialog>([&] { pRestore->trigger(); }, [&](QDialog* pDialog) {
        auto* pList = pDialog->findChild<QTreeWidget*>("treeWidget_backups");
        nListed = pList->topLevelItemCount();
        const bool bRead =
            QTest::qWaitFor([&] { return nListed > 0 && pList->topLevelItem(0)->text(2) != "reading..."; }, 10000);
        strFields = bRead ? pList->topLevelItem(0)->text(2) : QStringLiteral("(not read in 10 s)");
        pDialog->reject();
    }));
    QCOMPARE(nListed, 1);
    QCOMPARE(strFields, QStringLiteral("0"));
    QVERIFY2(timer.elapsed() < 20000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(QFileInfo(strFifo).exists() && !QFileInfo(strFifo).isFile());
}

FACTORYMGR_TEST_MAIN(TestHostRestore)
#include "tst_hostrestore.moc"
