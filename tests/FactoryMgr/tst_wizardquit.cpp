#include "TestMain.h"

#include "IFactoryMgr.h"

#include <QProcess>
#include <QPushButton>
#include <QSpinBox>
#include <QTimer>

#include <cstdio>

// The cutting power outlives the program: the wizard stores it when the
// application quits, and the next start shows it. Each run is a child process
// of this test with an event loop that ends in a real quit.
namespace {
int RunSession(int argc, char** argv, const QByteArray& mode)
{
    QApplication app(argc, argv);
    IFactoryMgr* pMgr = NewInterface();
    pMgr->Init(nullptr, nullptr);
    int nShown = -1;
    QTimer::singleShot(0, &app, [&] {
        QTimer::singleShot(0, &app, [&] {
            auto* pPower = QApplication::activeModalWidget()->findChild<QSpinBox*>("spinBox_power");
            nShown = pPower->value();
            if (mode == "set") {
                pPower->selectAll();
                QTest::keyClicks(pPower, "42");
            }
            QApplication::activeModalWidget()->close();
        });
        pMgr->ShowCalibrateXyStepDlg();
        QCoreApplication::quit();
    });
    const int nExit = app.exec();
    ReleaseInterface(pMgr);
    std::printf("shown %d\n", nShown);
    return nExit;
}
}

class TestWizardQuit : public QObject
{
    Q_OBJECT
private slots:
    void cuttingPowerSurvivesARestart();

private:
    static QByteArray Run(const char* szMode);
};

QByteArray TestWizardQuit::Run(const char* szMode)
{
    QProcess session;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("WIZARD_SESSION", szMode);
    session.setProcessEnvironment(env);
    session.start(QCoreApplication::applicationFilePath(), {});
    if (!session.waitForFinished(60000) || session.exitCode() != 0)
        return "failed: " + session.readAllStandardError();
    return session.readAllStandardOutput().trimmed();
}

void TestWizardQuit::cuttingPowerSurvivesARestart()
{
    QCOMPARE(Run("set"), QByteArray("shown 10"));     // the default, changed to 42 and quit
    QCOMPARE(Run("check"), QByteArray("shown 42"));   // the next start shows it
}

int main(int argc, char** argv)
{
    const QByteArray mode = qgetenv("WIZARD_SESSION");
    if (!mode.isEmpty())
        return RunSession(argc, argv, mode);
    QTemporaryDir home(QDir::tempPath() + "/factorymgr-test-XXXXXX");
    qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toLocal8Bit());
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    TestWizardQuit tc;
    return QTest::qExec(&tc, argc, argv);
}

#include "tst_wizardquit.moc"
