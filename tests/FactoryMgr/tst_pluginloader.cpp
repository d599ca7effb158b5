#include "TestMain.h"

#include "CFactoryMgrIns.h"
#include "CLogWriter.h"
#include "DlgFactoryMgr.h"
#include "IResolution.h"
#include "ModalAnswerer.h"
#include "PluginLoader.h"
#include "PluginTrace.h"
#include "TestThread.h"

#include <QPointer>
#include <QProcess>

#include <link.h>
#include <memory>

namespace {
// Whether the system loader has the library file strFile mapped into this process.
bool IsMapped(const QString& strFile)
{
    struct Search
    {
        QString strFile;
        bool bFound;
    } search{strFile, false};
    dl_iterate_phdr(
        [](dl_phdr_info* pInfo, size_t, void* pData) {
            auto* pSearch = static_cast<Search*>(pData);
            pSearch->bFound = QFileInfo(QString::fromLocal8Bit(pInfo->dlpi_name)).fileName() == pSearch->strFile;
            return pSearch->bFound ? 1 : 0;
        },
        &search);
    return search.bFound;
}
}

class TestPluginLoader : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void loadsAndRegistersALibrary();
    void missingLibraryIsReported();
    void libraryWithoutNewInterfaceIsReported();
    void libraryWithoutReleaseInterfaceIsReported();
    void unreportedFailureShowsAndLogsNothing();
    void failureOffTheGuiThreadIsOnlyLogged();
    void nullInterfaceIsStoredAndReturned();
    void callersOwnRegistryTakesTheRecord();
    void releasingAnUnknownPointerDoesNothing();
    void sameInterfaceTwiceReleasesTheLaterRecordFirst();
    void releaseAllGoesInReverseOrder();
    void resolutionScalesByTheScreensDpi();
    void overlappingRecordsCloseTheLibraryWithTheLast_data();
    void overlappingRecordsCloseTheLibraryWithTheLast();
    void aLibraryHeldElsewhereStaysOpen();
    void aLibraryLackingAnEntryPointIsNotKept();
    void aRecordWithoutAnInterfaceUnloadsToo();
    void resolutionGoesWithTheLastSettingsDialog();
    void releasesAfterTheLoaderEndedDoNoHarm();

private:
    QByteArray Log() const;
    // What QLibrary itself says when szSymbol cannot be resolved in szLibrary.
    static QByteArray ResolveError(const char* szLibrary, const char* szSymbol);
    QString m_strLogDir;
};

QByteArray TestPluginLoader::Log() const
{
    QFile file(CLogWriter::GetInstance()->FilePath());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray TestPluginLoader::ResolveError(const char* szLibrary, const char* szSymbol)
{
    QLibrary library(QString::fromLatin1(szLibrary));
    library.load();
    library.resolve(szSymbol);
    const QByteArray error = library.errorString().toLocal8Bit();
    library.unload();
    return error;
}

void TestPluginLoader::init()
{
    m_strLogDir = QDir::tempPath() + "/factorymgr-loader-" + QString::number(QCoreApplication::applicationPid())
        + "-" + QTest::currentTestFunction();
    CLogWriter::GetInstance()->SetDirectory(m_strLogDir);
    PluginTrace_Take();
}

void TestPluginLoader::cleanup()
{
    ReleaseAllPluginInterfaces();
    CLogWriter::GetInstance()->SetDirectory(QString());
    QDir(m_strLogDir).removeRecursively();
}

void TestPluginLoader::loadsAndRegistersALibrary()
{
    ModalAnswerer answerer;
    void* pInterface = LoadPluginInterface("TestPluginGood", true, nullptr);
    QVERIFY(pInterface);
    QCOMPARE(ModulePluginRegistry().size(), 1);
    const PluginLibraryRecord* pRecord = ModulePluginRegistry().first();
    QCOMPARE(pRecord->pInterface, pInterface);
    QVERIFY(pRecord->pLibrary && pRecord->pLibrary->isLoaded());
    QVERIFY(pRecord->pfnCreate && pRecord->pfnRelease);
    QVERIFY(ReleasePluginInterface(pInterface));
    QCOMPARE(QByteArray(PluginTrace_Take()), QByteArray("TestPluginGood"));
    QVERIFY(ModulePluginRegistry().isEmpty());
    QCOMPARE(answerer.Count(), 0);
}

void TestPluginLoader::missingLibraryIsReported()
{
    ModalAnswerer answerer;
    answerer.AnswerWith("OK");
    QVERIFY(!LoadPluginInterface("NoSuchPlugin", true, nullptr));
    QCOMPARE(answerer.Count(), 1);
    const ModalAnswerer::Seen box = answerer.Boxes().first();
    QCOMPARE(box.strTitle, QStringLiteral("Tips"));
    QCOMPARE(box.strText, QStringLiteral("Load NoSuchPlugin failed! \n"));
    QCOMPARE(box.buttons, QStringList{"OK"});
    QVERIFY2(Log().contains("[1] Cannot load library NoSuchPlugin"), Log().constData());
    QVERIFY(ModulePluginRegistry().isEmpty());
}

void TestPluginLoader::libraryWithoutNewInterfaceIsReported()
{
    ModalAnswerer answerer;
    answerer.AnswerWith("OK");
    QVERIFY(!LoadPluginInterface("TestPluginNoNew", true, nullptr));
    QCOMPARE(answerer.Count(), 1);
    QCOMPARE(answerer.Boxes().first().strText, QStringLiteral("Load TestPluginNoNew faile2! \n"));
    QVERIFY2(Log().contains("[1] " + ResolveError("TestPluginNoNew", "NewInterface")), Log().constData());
    QVERIFY(ModulePluginRegistry().isEmpty());
}

void TestPluginLoader::libraryWithoutReleaseInterfaceIsReported()
{
    ModalAnswerer answerer;
    answerer.AnswerWith("OK");
    QVERIFY(!LoadPluginInterface("TestPluginNoRelease", true, nullptr));
    QCOMPARE(answerer.Count(), 1);
    QCOMPARE(answerer.Boxes().first().strTitle, QStringLiteral("Tips"));
    QCOMPARE(answerer.Boxes().first().strText, QStringLiteral("Load TestPluginNoRelease faile3! \n"));
    QVERIFY2(Log().contains("[1] " + ResolveError("TestPluginNoRelease", "ReleaseInterface")), Log().constData());
    QVERIFY(ModulePluginRegistry().isEmpty());
}

void TestPluginLoader::unreportedFailureShowsAndLogsNothing()
{
    ModalAnswerer answerer;
    QVERIFY(!LoadPluginInterface("NoSuchPlugin", false, nullptr));
    QVERIFY(!LoadPluginInterface("TestPluginNoNew", false, nullptr));
    QVERIFY(!LoadPluginInterface("TestPluginNoRelease", false, nullptr));
    QCOMPARE(answerer.Count(), 0);
    QCOMPARE(Log(), QByteArray());
    QVERIFY(ModulePluginRegistry().isEmpty());
}

void TestPluginLoader::failureOffTheGuiThreadIsOnlyLogged()
{
    ModalAnswerer answerer;
    void* pResult = reinterpret_cast<void*>(1);
    TestThread worker([&] { pResult = LoadPluginInterface("NoSuchPlugin", true, nullptr); });
    worker.Start();
    QVERIFY(worker.Wait(10000));
    QCoreApplication::processEvents();
    QVERIFY(!pResult);
    QCOMPARE(answerer.Count(), 0);
    QVERIFY(Log().contains("Cannot load library NoSuchPlugin"));
}

void TestPluginLoader::nullInterfaceIsStoredAndReturned()
{
    QVERIFY(!LoadPluginInterface("TestPluginNull", true, nullptr));
    QCOMPARE(ModulePluginRegistry().size(), 1);
    QVERIFY(ModulePluginRegistry().first()->pInterface == nullptr);
}

void TestPluginLoader::callersOwnRegistryTakesTheRecord()
{
    PluginRegistry own;
    void* pInterface = LoadPluginInterface("TestPluginGood", true, &own);
    QVERIFY(pInterface);
    QCOMPARE(own.size(), 1);
    QVERIFY(ModulePluginRegistry().isEmpty());
    // The module's release operations do not touch a caller's registry.
    QVERIFY(ReleasePluginInterface(pInterface));
    QCOMPARE(own.size(), 1);
    QCOMPARE(QByteArray(PluginTrace_Take()), QByteArray());
    own.first()->pfnRelease(own.first()->pInterface);
    own.first()->pLibrary->unload();
    delete own.first()->pLibrary;
    delete own.first();
}

void TestPluginLoader::releasingAnUnknownPointerDoesNothing()
{
    QVERIFY(LoadPluginInterface("TestPluginGood", true, nullptr));
    int nStranger = 0;
    QVERIFY(ReleasePluginInterface(&nStranger));
    QVERIFY(ReleasePluginInterface(nullptr));
    QCOMPARE(ModulePluginRegistry().size(), 1);
    QCOMPARE(QByteArray(PluginTrace_Take()), QByteArray());
}

void TestPluginLoader::sameInterfaceTwiceReleasesTheLaterRecordFirst()
{
    void* pFirst = LoadPluginInterface("TestPluginGood", true, nullptr);
    const PluginLibraryRecord* pFirstRecord = ModulePluginRegistry().last();
    void* pSecond = LoadPluginInterface("TestPluginGood", true, nullptr);
    const PluginLibraryRecord* pSecondRecord = ModulePluginRegistry().last();
    QVERIFY(pFirst);
    QCOMPARE(pSecond, pFirst);
    QVERIFY(pFirstRecord != pSecondRecord);

    QVERIFY(ReleasePluginInterface(pFirst));
    QCOMPARE(ModulePluginRegistry().size(), 1);
    QCOMPARE(ModulePluginRegistry().first(), pFirstRecord);
    QCOMPARE(QByteArray(PluginTrace_Take()), QByteArray("TestPluginGood"));
    // The earlier record's library stays loaded, so it can still be released.
    QVERIFY(pFirstRecord->pLibrary->isLoaded());
    QVERIFY(ReleasePluginInterface(pFirst));
    QCOMPARE(QByteArray(PluginTrace_Take()), QByteArray("TestPluginGood"));
    QVERIFY(ModulePluginRegistry().isEmpty());
}

void TestPluginLoader::releaseAllGoesInReverseOrder()
{
    QVERIFY(LoadPluginInterface("TestPluginGood", true, nullptr));
    QVERIFY(LoadPluginInterface("TestPluginGood2", true, nullptr));
    ReleaseAllPluginInterfaces();
    QCOMPARE(QByteArray(PluginTrace_Take()), QByteArray("TestPluginGood2 TestPluginGood"));
    QVERIFY(ModulePluginRegistry().isEmpty());
}

void TestPluginLoader::resolutionScalesByTheScreensDpi()
{
    // This suite runs on a 144 DPI screen with Qt's own scaling off, so the
    // screen reports its DPI: 1.5 times the design size.
    auto* pResolution = static_cast<IResolution*>(LoadPluginInterface("Resolution", true, nullptr));
    QVERIFY(pResolution);
    QCOMPARE(pResolution->GetLogicalDpi(), 144.0);
    QCOMPARE(pResolution->Scale(255.0), 382.5);
    QCOMPARE(pResolution->Scale(35.0), 52.5);
}

void TestPluginLoader::overlappingRecordsCloseTheLibraryWithTheLast_data()
{
    QTest::addColumn<bool>("bFirstGoesFirst");
    QTest::newRow("first released first") << true;
    QTest::newRow("last released first") << false;
}

void TestPluginLoader::overlappingRecordsCloseTheLibraryWithTheLast()
{
    QFETCH(bool, bFirstGoesFirst);
    QVERIFY(!IsMapped("libTestPluginFresh.so"));
    void* pFirst = LoadPluginInterface("TestPluginFresh", true, nullptr);
    void* pSecond = LoadPluginInterface("TestPluginFresh", true, nullptr);
    QVERIFY(pFirst && pSecond && pFirst != pSecond);
    QVERIFY(IsMapped("libTestPluginFresh.so"));

    QVERIFY(ReleasePluginInterface(bFirstGoesFirst ? pFirst : pSecond));
    QCOMPARE(ModulePluginRegistry().size(), 1);
    QVERIFY(ModulePluginRegistry().first()->pLibrary->isLoaded());
    QVERIFY(IsMapped("libTestPluginFresh.so"));

    QVERIFY(ReleasePluginInterface(bFirstGoesFirst ? pSecond : pFirst));
    QCOMPARE(QByteArray(PluginTrace_Take()), QByteArray("TestPluginFresh TestPluginFresh"));
    QVERIFY(ModulePluginRegistry().isEmpty());
    QVERIFY(!IsMapped("libTestPluginFresh.so"));
}

void TestPluginLoader::aLibraryHeldElsewhereStaysOpen()
{
    QLibrary other("TestPluginFresh");
    QVERIFY(other.load());
    void* pInterface = LoadPluginInterface("TestPluginFresh", true, nullptr);
    QVERIFY(pInterface);
    QVERIFY(ReleasePluginInterface(pInterface));
    QCOMPARE(QByteArray(PluginTrace_Take()), QByteArray("TestPluginFresh"));
    QVERIFY(IsMapped("libTestPluginFresh.so"));
    QVERIFY(other.isLoaded());
    // Nor does the module leave a load of its own behind.
    QVERIFY(other.unload());
    QVERIFY(!IsMapped("libTestPluginFresh.so"));
}

void TestPluginLoader::aLibraryLackingAnEntryPointIsNotKept()
{
    QVERIFY(!LoadPluginInterface("TestPluginNoRelease", false, nullptr));
    QVERIFY(!IsMapped("libTestPluginNoRelease.so"));
}

void TestPluginLoader::aRecordWithoutAnInterfaceUnloadsToo()
{
    QVERIFY(!LoadPluginInterface("TestPluginNull", false, nullptr));
    QVERIFY(IsMapped("libTestPluginNull.so"));
    ReleaseAllPluginInterfaces();
    QVERIFY(!IsMapped("libTestPluginNull.so"));
}

void TestPluginLoader::resolutionGoesWithTheLastSettingsDialog()
{
    // Showing the settings again makes the new dialog, loading "Resolution",
    // before the old one goes: their records overlap.
    ModalAnswerer answerer;
    QVERIFY(!IsMapped("libResolution.so"));
    IFactoryMgr* pMgr = NewInterface();
    QVERIFY(pMgr);
    pMgr->Init(nullptr, nullptr);
    QPointer<DlgFactoryMgr> pFirst = pMgr->ShowFactoryDlg(nullptr);
    QVERIFY(pFirst && pFirst->Resolution());
    QPointer<DlgFactoryMgr> pSecond = pMgr->ShowFactoryDlg(nullptr);
    QVERIFY(pSecond && pSecond->Resolution());
    QCOMPARE(ModulePluginRegistry().size(), 2);

    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!pFirst);
    QCOMPARE(ModulePluginRegistry().size(), 1);
    // The open dialog still scales with it.
    QVERIFY(IsMapped("libResolution.so"));
    QCOMPARE(pSecond->Resolution()->Scale(10.0), 15.0);

    delete pSecond.data();
    ReleaseInterface(pMgr);
    QVERIFY(ModulePluginRegistry().isEmpty());
    QVERIFY(!IsMapped("libResolution.so"));
    QCOMPARE(answerer.Count(), 0);
}

void TestPluginLoader::releasesAfterTheLoaderEndedDoNoHarm()
{
    QProcess host;
    host.start(QCoreApplication::applicationDirPath() + "/PluginLoaderExitHost", QStringList());
    QVERIFY2(host.waitForFinished(60000), qPrintable(host.errorString()));
    const QByteArray errors = host.readAllStandardError();
    QVERIFY2(host.exitStatus() == QProcess::NormalExit && host.exitCode() == 0, errors.constData());
    QCOMPARE(host.readAllStandardOutput(), QByteArray("late work done\n"));
}

FACTORYMGR_TEST_MAIN(TestPluginLoader)
#include "tst_pluginloader.moc"
