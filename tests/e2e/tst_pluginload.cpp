#include "TestMain.h"

#include "FactoryParams.h"
#include "IFactoryMgr.h"

#include <QLibrary>
#include <QSettings>
#include <QStandardPaths>

#include <cstring>

// The plug-in as a host sees it: a library loaded by file name, two C entry
// points, and the IFactoryMgr interface. Nothing of the plug-in is linked in.
class TestPluginLoad : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void exportsAreUndecoratedAndAlone();
    void hostDrivesThePluginThroughTheInterface();
    void aSecondInstanceLoadsWhatTheFirstSaved();

private:
    QString ParamFile() const;

    QLibrary m_library;
    PfnNewInterface m_pfnNew = nullptr;
    PfnReleaseInterface m_pfnRelease = nullptr;
};

QString TestPluginLoad::ParamFile() const
{
    return QDir::cleanPath(QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation)
                           + "/../Quorvane/Resources/Data/FactoryParam.ini");
}

void TestPluginLoad::initTestCase()
{
    m_library.setFileName(QCoreApplication::applicationDirPath() + "/libFactoryMgr.so");
    QVERIFY2(m_library.load(), qPrintable(m_library.errorString()));
    m_pfnNew = reinterpret_cast<PfnNewInterface>(m_library.resolve("NewInterface"));
    m_pfnRelease = reinterpret_cast<PfnReleaseInterface>(m_library.resolve("ReleaseInterface"));
    QVERIFY(m_pfnNew);
    QVERIFY(m_pfnRelease);
    QFile::remove(ParamFile());
}

void TestPluginLoad::cleanupTestCase()
{
    QVERIFY(m_library.unload());
}

void TestPluginLoad::exportsAreUndecoratedAndAlone()
{
    // C linkage: no C++ decoration of the two entry points...
    QVERIFY(!m_library.resolve("_Z12NewInterfacev"));
    QVERIFY(!m_library.resolve("_Z16ReleaseInterfaceP11IFactoryMgr"));
    // ...and the module's own classes stay inside the library.
    QVERIFY(!m_library.resolve("_ZN14CFactoryMgrApp11GetInstanceEv"));
    QVERIFY(!m_library.resolve("_Z17LoadFactoryParamsR13FactoryParamsRK7QString"));
}

void TestPluginLoad::hostDrivesThePluginThroughTheInterface()
{
    m_pfnRelease(nullptr);
    IFactoryMgr* pMgr = m_pfnNew();
    QVERIFY(pMgr);

    FactoryParams params;
    std::memset(static_cast<void*>(&params), 0xAB, sizeof(params));
    QCOMPARE(pMgr->GetFactoryParams(&params), 0);
    QCOMPARE(params.motor[0].pulsePerMm, 7.88627);
    QCOMPARE(params.machine.outageDelay, 1000);
    QCOMPARE(pMgr->GetLaserCount(), 1);

    params.laser.laserCount = 2;
    params.motor[1].speedMax = 812.5;
    params.speed.cutAccWork = 1999.25;
    QCOMPARE(pMgr->SetFactoryParams(&params), 0);
    QCOMPARE(pMgr->GetLaserCount(), 2);
    FactoryParams back;
    QCOMPARE(pMgr->GetFactoryParams(&back), 0);
    QCOMPARE(std::memcmp(&back, &params, sizeof(FactoryParams)), 0);

    pMgr->SaveToFile(false);
    QSettings file(ParamFile(), QSettings::IniFormat);
    QCOMPARE(file.value("FACTORY_PARAM/FILE_FLAG").toString(), QStringLiteral("__FACTORY_PARAM__"));
    QCOMPARE(file.value("FACTORY_PARAM_LASER/LASER_COUNT").toInt(), 2);
    QCOMPARE(file.value("FACTORY_PARAM_MOTOR/MOTOR_SPEED_MAX_2").toString(), QStringLiteral("812.5"));
    QCOMPARE(file.value("FACTORY_PARAM_SPEED/SPEED_CUT_ACC_WORK").toDouble(), 1999.25);

    m_pfnRelease(pMgr);
}

void TestPluginLoad::aSecondInstanceLoadsWhatTheFirstSaved()
{
    IFactoryMgr* pMgr = m_pfnNew();
    QVERIFY(pMgr);
    QCOMPARE(pMgr->GetLaserCount(), 2);
    FactoryParams params;
    pMgr->GetFactoryParams(&params);
    QCOMPARE(params.motor[1].speedMax, 812.5);
    m_pfnRelease(pMgr);
}

FACTORYMGR_TEST_MAIN(TestPluginLoad)
#include "tst_pluginload.moc"
