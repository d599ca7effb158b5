#include "TestMain.h"

#include "CHostSession.h"
#include "CHostWindow.h"
#include "ModalAnswerer.h"

#include <QAction>
#include <QDir>
#include <QPushButton>
#include <QSignalSpy>

// The reference host where the access file is missing: its resource
// directory is one of the test's own, without it.
class TestHostNoAccess : public QObject
{
    Q_OBJECT
private slots:
    void theHostShowsThePluginsBoxEmbedsNothingAndLeaksNothing();
    void whatChangesTheParametersIsOffAndSaysWhy();
};

namespace {
int LiveDialogs()
{
    int nDialogs = 0;
    for (QWidget* pWidget : QApplication::allWidgets())
        nDialogs += QByteArray(pWidget->metaObject()->className()) == "DlgFactoryMgr" ? 1 : 0;
    return nDialogs;
}
}

void TestHostNoAccess::theHostShowsThePluginsBoxEmbedsNothingAndLeaksNothing()
{
    QVERIFY(!QFile::exists(QCoreApplication::applicationDirPath() + "/../Resources/Data/FactoryPsw.ini"));
    CHostWindow host;
    QVERIFY(host.Start(QStringLiteral(FACTORYMGR_PLUGIN_DIR "/libFactoryMgr.so")));
    ModalAnswerer answerer;
    answerer.AnswerWith("OK");
    QSignalSpy reported(&host.Session(), &CHostSession::Reported);
    for (int i = 0; i < 3; ++i) {
        host.Session().OpenSettings();
        QVERIFY(!host.Session().SettingsWindow());
        QCOMPARE(LiveDialogs(), 0);
    }
    QCOMPARE(answerer.Count(), 3);
    QCOMPARE(answerer.Boxes().first().strText,
             QStringLiteral("Config file damaged or not exist, please contact the supplier!"));
    QCOMPARE(reported.count(), 3);
    QCOMPARE(reported.last().first().toString(),
             QStringLiteral("The machine settings are not available on this computer: the access file is missing."));
    // Upload and save have no dialog to take values from, and say what they did.
    host.Session().ReloadParameters();
    QCOMPARE(reported.last().first().toString(), QStringLiteral("Nothing was reloaded: open the machine settings first."));
}

void TestHostNoAccess::whatChangesTheParametersIsOffAndSaysWhy()
{
    CHostWindow host;
    QVERIFY(host.Start(QStringLiteral(FACTORYMGR_PLUGIN_DIR "/libFactoryMgr.so")));
    const QString strFile = CHostSession::ParameterFile();
    host.Session().SaveParameters();   // no dialog: the record as it is
    QFile file(strFile);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray before = file.readAll();
    file.close();
    const QString strAccess = QDir::toNativeSeparators(CHostSession::AccessFile());
    for (const auto& [szAction, szCommand] : {std::pair{"action_restore", "Restore"}, std::pair{"action_import", "Import"},
                                              std::pair{"action_calibrate", "Calibration"}}) {
        auto* pAction = host.findChild<QAction*>(szAction);
        QVERIFY(pAction);
        QVERIFY2(!pAction->isEnabled(), szAction);
        QCOMPARE(pAction->toolTip(),
                 QStringLiteral("%1 needs the access file %2, as the machine settings do: without it nothing on this "
                                "computer changes the factory parameters.")
                     .arg(QString::fromLatin1(szCommand), strAccess));
    }
    QVERIFY(!host.findChild<QPushButton*>("pushButton_calibrate")->isEnabled());
    // Asked all the same (from a script, say), they refuse and say so.
    ModalAnswerer answerer;   // no box, no file dialog, no wizard may come
    QSignalSpy reported(&host.Session(), &CHostSession::Reported);
    host.Session().RestoreParameters();
    QVERIFY2(reported.last().first().toString().startsWith("Restore needs the access file"),
             qPrintable(reported.last().first().toString()));
    host.Session().ImportParameters();
    QVERIFY(reported.last().first().toString().startsWith("Import needs the access file"));
    host.Session().CalibrateXyStep();
    QVERIFY(reported.last().first().toString().startsWith("Calibration needs the access file"));
    QCOMPARE(answerer.Count(), 0);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), before);
}

FACTORYMGR_TEST_MAIN(TestHostNoAccess)
#include "tst_hostnoaccess.moc"
