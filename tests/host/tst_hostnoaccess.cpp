#include "TestMain.h"

#include "CHostSession.h"
#include "CHostWindow.h"
#include "ModalAnswerer.h"

#include <QSignalSpy>

// The reference host where the access file is missing: its resource
// directory is one of the test's own, without it.
class TestHostNoAccess : public QObject
{
    Q_OBJECT
private slots:
    void theHostShowsThePluginsBoxEmbedsNothingAndLeaksNothing();
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

FACTORYMGR_TEST_MAIN(TestHostNoAccess)
#include "tst_hostnoaccess.moc"
