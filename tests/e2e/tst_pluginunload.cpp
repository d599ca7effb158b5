#include "TestMain.h"

#include "IFactoryMgr.h"

#include <QLibrary>
#include <QProcess>
#include <QSettings>
#include <QSpinBox>
#include <QStandardPaths>
#include <QTimer>

#include <cstdio>
#include <link.h>

// Releasing and unloading the plug-in in every order a host may use, each in
// a process of its own: release without unload, unload before the
// application quits, quit before release, and unload with no quit at all.
// None may crash, and the wizard's cutting power is stored every time.
namespace {
bool PluginMapped()
{
    bool bFound = false;
    dl_iterate_phdr(
        [](dl_phdr_info* pInfo, size_t, void* pFound) {
            if (pInfo->dlpi_name && QByteArray(pInfo->dlpi_name).endsWith("/libFactoryMgr.so"))
                *static_cast<bool*>(pFound) = true;
            return 0;
        },
        &bFound);
    return bFound;
}

// Sets the wizard's cutting power to nPower, as a person does.
void SetCuttingPower(IFactoryMgr* pMgr, int nPower)
{
    QTimer::singleShot(0, [nPower] {
        auto* pPower = QApplication::activeModalWidget()->findChild<QSpinBox*>("spinBox_power");
        pPower->setValue(nPower);
        QApplication::activeModalWidget()->close();
    });
    pMgr->ShowCalibrateXyStepDlg();
}

int RunSession(int argc, char** argv, const QByteArray& order, int nPower)
{
    int nExit = 0;
    {
        QApplication app(argc, argv);
        QLibrary library(QCoreApplication::applicationDirPath() + "/libFactoryMgr.so");
        if (!library.load())
            return 10;
        auto pfnNew = reinterpret_cast<PfnNewInterface>(library.resolve("NewInterface"));
        auto pfnRelease = reinterpret_cast<PfnReleaseInterface>(library.resolve("ReleaseInterface"));
        IFactoryMgr* pMgr = pfnNew();
        pMgr->Init(nullptr, nullptr);
        SetCuttingPower(pMgr, nPower);
        const auto unload = [&] {
            if (!library.unload() || PluginMapped())
                nExit = 20;   // the order under test did not happen
        };
        const auto quit = [&] {
            QTimer::singleShot(0, &app, &QCoreApplication::quit);
            app.exec();
        };
        if (order == "release-only") {
            pfnRelease(pMgr);
            quit();
        } else if (order == "unload-before-quit") {
            pfnRelease(pMgr);
            unload();
            quit();
        } else if (order == "quit-before-release") {
            quit();
            pfnRelease(pMgr);
            unload();
        } else if (order == "unload-no-quit") {
            pfnRelease(pMgr);
            unload();
        }
    }
    std::printf("done\n");
    return nExit;
}
}

class TestPluginUnload : public QObject
{
    Q_OBJECT
private slots:
    void everyOrderIsSafeAndKeepsTheCuttingPower_data();
    void everyOrderIsSafeAndKeepsTheCuttingPower();
};

void TestPluginUnload::everyOrderIsSafeAndKeepsTheCuttingPower_data()
{
    QTest::addColumn<QString>("strOrder");
    QTest::addColumn<int>("nPower");
    QTest::newRow("release without unload") << "release-only" << 41;
    QTest::newRow("unload before quit") << "unload-before-quit" << 42;
    QTest::newRow("quit before release") << "quit-before-release" << 43;
    QTest::newRow("unload, never quit") << "unload-no-quit" << 44;
}

void TestPluginUnload::everyOrderIsSafeAndKeepsTheCuttingPower()
{
    QFETCH(QString, strOrder);
    QFETCH(int, nPower);
    QProcess session;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("UNLOAD_ORDER", strOrder);
    env.insert("UNLOAD_POWER", QString::number(nPower));
    session.setProcessEnvironment(env);
    session.start(QCoreApplication::applicationFilePath(), {});
    QVERIFY(session.waitForFinished(60000));
    const QByteArray errors = session.readAllStandardError();
    QVERIFY2(session.exitStatus() == QProcess::NormalExit, errors.constData());
    QCOMPARE(session.exitCode(), 0);
    QCOMPARE(session.readAllStandardOutput().trimmed(), QByteArray("done"));
    // What the wizard stored on its way out.
    QSettings user(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
                       + "/Quorvane/Resources/Data/UserParam.ini",
                   QSettings::IniFormat);
    QCOMPARE(user.value("DLG_CALIBRATE_XY_STEP/CUTTING_POWER").toInt(), nPower);
}

int main(int argc, char** argv)
{
    const QByteArray order = qgetenv("UNLOAD_ORDER");
    if (!order.isEmpty())
        return RunSession(argc, argv, order, qEnvironmentVariableIntValue("UNLOAD_POWER"));
    QTemporaryDir home(QDir::tempPath() + "/factorymgr-test-XXXXXX");
    if (!FactoryMgrTest::UseHome(home))
        return 1;
    QApplication app(argc, argv);
    TestPluginUnload tc;
    return QTest::qExec(&tc, argc, argv);
}

#include "tst_pluginunload.moc"
