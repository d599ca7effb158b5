// The reference host's loader asks the plug-in for its interface revision
// before anything else, and refuses one it was not built for with a message
// that names both; the fake plug-ins end the process if it went further.
#include "TestMain.h"

#include "CPluginHost.h"

#include <QTest>

class TestPluginHost : public QObject
{
    Q_OBJECT
private slots:
    void aPluginOfAnotherRevisionIsRefusedBeforeNewInterface();
    void aPluginThatDoesNotSayItsRevisionIsRefused();
    void theBuildsPluginIsTaken();
};

void TestPluginHost::aPluginOfAnotherRevisionIsRefusedBeforeNewInterface()
{
    const QString strPath = QCoreApplication::applicationDirPath() + "/libFakeFactoryMgrOtherRevision.so";
    CPluginHost host;
    QVERIFY(!host.Load(strPath));
    QCOMPARE(host.Mgr(), nullptr);
    QCOMPARE(host.ErrorString(), QStringLiteral("%1 is FactoryMgr 0.9.4 with interface revision %2; this host needs "
                                                "revision %3.")
                                     .arg(strPath)
                                     .arg(FACTORYMGR_INTERFACE_REVISION + 1)
                                     .arg(FACTORYMGR_INTERFACE_REVISION));
}

void TestPluginHost::aPluginThatDoesNotSayItsRevisionIsRefused()
{
    const QString strPath = QCoreApplication::applicationDirPath() + "/libFakeFactoryMgrNoVersion.so";
    CPluginHost host;
    QVERIFY(!host.Load(strPath));
    QCOMPARE(host.Mgr(), nullptr);
    QCOMPARE(host.ErrorString(), QStringLiteral("%1 does not say which interface revision it implements (it exports no "
                                                "FactoryMgrVersion); this host needs revision %2.")
                                     .arg(strPath)
                                     .arg(FACTORYMGR_INTERFACE_REVISION));
}

void TestPluginHost::theBuildsPluginIsTaken()
{
    QTemporaryDir home;
    QVERIFY(home.isValid());
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.path()));
    CPluginHost host;
    QVERIFY2(host.Load(QCoreApplication::applicationDirPath() + "/libFactoryMgr.so"), qPrintable(host.ErrorString()));
    QVERIFY(host.Mgr());
    host.Unload();
}

FACTORYMGR_TEST_MAIN(TestPluginHost)
#include "tst_pluginhost.moc"
