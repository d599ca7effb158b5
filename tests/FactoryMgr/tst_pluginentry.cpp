// The plug-in's exported entry points as a host reaches them: libFactoryMgr.so
// loaded by file name, each entry resolved by its C name. The test starts
// without an application, as a careless host would call the plug-in.

#include "CLogWriter.h"
#include "IFactoryMgr.h"

#include <QApplication>
#include <QDir>
#include <QLibrary>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

class TestPluginEntry : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void theVersionAndRevisionNeedNoApplication();
    void newInterfaceBeforeTheApplicationIsNullAndWritesNothing();
    void releasingTwiceOrAStrangePointerIsRefusedAndLogged();
    void theWizardIsReachedThroughItsEntryPoint();

public slots:
    // The wizard's signal, as a host receives it.
    void OnRatios(double dX, double dY)
    {
        m_dX = dX;
        m_dY = dY;
    }

private:
    double m_dX = 0.0;
    double m_dY = 0.0;
    QTemporaryDir m_home;
    QLibrary m_library;
    std::unique_ptr<QApplication> m_pApp;
};

void TestPluginEntry::initTestCase()
{
    QVERIFY(m_home.isValid());
    // Wherever the plug-in might write, it would be in here.
    qputenv("HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home.filePath(".config")));
    qputenv("QT_QPA_PLATFORM", "offscreen");
    m_library.setFileName(QString::fromUtf8(FACTORYMGR_PLUGIN_DIR) + "/libFactoryMgr.so");
    QVERIFY2(m_library.load(), qPrintable(m_library.errorString()));
}

void TestPluginEntry::theVersionAndRevisionNeedNoApplication()
{
    QVERIFY(!QCoreApplication::instance());
    const auto pfnVersion = reinterpret_cast<PfnFactoryMgrVersion>(m_library.resolve("FactoryMgrVersion"));
    QVERIFY(pfnVersion);
    int nMajor = -1;
    int nMinor = -1;
    int nPatch = -1;
    QCOMPARE(pfnVersion(&nMajor, &nMinor, &nPatch), FACTORYMGR_INTERFACE_REVISION);
    QCOMPARE(QStringLiteral("%1.%2.%3").arg(nMajor).arg(nMinor).arg(nPatch), QStringLiteral(FACTORYMGR_VERSION));
    // Any of the three may be left out.
    QCOMPARE(pfnVersion(nullptr, nullptr, nullptr), FACTORYMGR_INTERFACE_REVISION);
}

void TestPluginEntry::newInterfaceBeforeTheApplicationIsNullAndWritesNothing()
{
    QVERIFY(!QCoreApplication::instance());
    const auto pfnNew = reinterpret_cast<PfnNewInterface>(m_library.resolve("NewInterface"));
    QVERIFY(pfnNew);
    QTest::ignoreMessage(QtWarningMsg,
                         "FactoryMgr: NewInterface was called before the QApplication exists; it returns null");
    QCOMPARE(pfnNew(), nullptr);
    // Not a folder made, in the home directory or anywhere in it.
    QCOMPARE(QDir(m_home.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList());
}

void TestPluginEntry::releasingTwiceOrAStrangePointerIsRefusedAndLogged()
{
    static int s_argc = 1;
    static char s_name[] = "tst_pluginentry";
    static char* s_argv[] = {s_name, nullptr};
    m_pApp = std::make_unique<QApplication>(s_argc, s_argv);
    QStringList log;
    CLogWriter::GetInstance()->SetListener([&log](const QByteArray& line) { log << QString::fromUtf8(line); });
    const auto pfnNew = reinterpret_cast<PfnNewInterface>(m_library.resolve("NewInterface"));
    const auto pfnRelease = reinterpret_cast<PfnReleaseInterface>(m_library.resolve("ReleaseInterface"));
    QVERIFY(pfnNew && pfnRelease);
    IFactoryMgr* pMgr = pfnNew();
    QVERIFY(pMgr);
    IFactoryMgr* pOther = pfnNew();
    QVERIFY(pOther && pOther != pMgr);
    pfnRelease(pMgr);
    QVERIFY2(!log.join('\n').contains("ReleaseInterface"), qPrintable(log.join('\n')));
    // The second release of the same object: refused, said, and nothing freed twice (the
    // sanitizer build would report it).
    pfnRelease(pMgr);
    QCOMPARE(log.filter("ReleaseInterface:").size(), 1);
    QVERIFY2(log.filter("ReleaseInterface:").first().contains("is no live FactoryMgr service object"),
             qPrintable(log.join('\n')));
    // A pointer that never was a service object.
    int nNotAnObject = 0;
    pfnRelease(reinterpret_cast<IFactoryMgr*>(&nNotAnObject));
    QCOMPARE(log.filter("ReleaseInterface:").size(), 2);
    // The other object is still alive and goes as it should.
    pfnRelease(pOther);
    QCOMPARE(log.filter("ReleaseInterface:").size(), 2);
    CLogWriter::GetInstance()->SetListener({});
}

void TestPluginEntry::theWizardIsReachedThroughItsEntryPoint()
{
    QVERIFY(m_pApp);   // made by the test before
    const auto pfnNew = reinterpret_cast<PfnNewInterface>(m_library.resolve("NewInterface"));
    const auto pfnRelease = reinterpret_cast<PfnReleaseInterface>(m_library.resolve("ReleaseInterface"));
    const auto pfnWizard =
        reinterpret_cast<PfnFactoryMgrCalibrateWizard>(m_library.resolve("FactoryMgrCalibrateWizard"));
    QVERIFY(pfnNew && pfnRelease && pfnWizard);
    QCOMPARE(pfnWizard(nullptr), nullptr);
    IFactoryMgr* pMgr = pfnNew();
    QVERIFY(pMgr);
    // Before Init there is none.
    QCOMPARE(pfnWizard(pMgr), nullptr);
    QCOMPARE(pMgr->Init(nullptr, nullptr), 0);
    QWidget* pWizard = pfnWizard(pMgr);
    QVERIFY(pWizard);
    QVERIFY(pWizard->isWindow());
    QVERIFY(pWizard->metaObject()->indexOfSignal("CalibrateXyStepSignal(double,double)") >= 0);
    // The signal a host connects to by name reaches it.
    double dX = 0.0;
    double dY = 0.0;
    QVERIFY(QObject::connect(pWizard, SIGNAL(CalibrateXyStepSignal(double, double)), this,
                             SLOT(OnRatios(double, double))));
    QVERIFY(QMetaObject::invokeMethod(pWizard, "CalibrateXyStepSignal", Q_ARG(double, 1.25), Q_ARG(double, 0.5)));
    dX = m_dX;
    dY = m_dY;
    QCOMPARE(dX, 1.25);
    QCOMPARE(dY, 0.5);
    pfnRelease(pMgr);
    // A released object has none to give.
    QCOMPARE(pfnWizard(pMgr), nullptr);
}

QTEST_APPLESS_MAIN(TestPluginEntry)
#include "tst_pluginentry.moc"
