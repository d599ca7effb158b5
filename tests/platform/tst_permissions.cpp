#include "TestMain.h"

#include "CHostPaths.h"
#include "CUiPermissionsManager.h"

namespace {
void WriteFile(const QString& strPath, const QByteArray& content)
{
    QDir().mkpath(QFileInfo(strPath).absolutePath());
    QFile file(strPath);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(content);
}
}

class TestPermissions : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void themeComesFromTheResourceDirectory();
    void missingThemeFileMeansQuorvane();
    void damagedThemeFileMeansQuorvane();
    void overrideWinsAndCanBeDropped();
    void urlsStartFromTheThemeFile();
    void storedUrlsPersistAcrossInstances();
    void storedUrlsBelongToTheEdition();
    void damagedUrlsFileFallsBackToTheTheme();
    void membersAreAddressedByPosition();
    void shippedThemeIsQuorvane();

private:
    QScopedPointer<QTemporaryDir> m_pResources;   // fresh for every test function
    QString m_strResources;
};

void TestPermissions::init()
{
    m_pResources.reset(new QTemporaryDir);
    m_strResources = m_pResources->path();
    CHostPaths::SetResourceDirectory(m_strResources);
    WriteFile(m_strResources + "/Theme/Theme.ini",
              "[THEME]\nNAME=Quorvane\nVERSION=2.1 Global\n"
              "[HOMEPAGE_URLS]\nURL_1=https://a.example/1\nURL_10=https://a.example/10\n"
              "URL_11=https://a.example/11\nPRIVACY_POLICY=https://a.example/privacy\n");
}

void TestPermissions::cleanup()
{
    CUiPermissionsManager::GetInstance()->SetThemeOverride(QString(), QString());
    QDir(qEnvironmentVariable("XDG_CONFIG_HOME")).removeRecursively();
    CHostPaths::SetResourceDirectory(QString());
}

void TestPermissions::themeComesFromTheResourceDirectory()
{
    CUiPermissionsManager manager;
    QCOMPARE(manager.GetThemeName(), QStringLiteral("Quorvane"));
    QCOMPARE(manager.GetThemeVersion(), QStringLiteral("2.1 Global"));
    WriteFile(m_strResources + "/Theme/Theme.ini", "[THEME]\nNAME=Lumen\nVERSION=3.0\n");
    QCOMPARE(manager.GetThemeName(), QStringLiteral("Lumen"));
    QCOMPARE(manager.GetThemeVersion(), QStringLiteral("3.0"));
}

void TestPermissions::missingThemeFileMeansQuorvane()
{
    QFile::remove(m_strResources + "/Theme/Theme.ini");
    CUiPermissionsManager manager;
    QCOMPARE(manager.GetThemeName(), QStringLiteral("Quorvane"));
    QCOMPARE(manager.GetThemeVersion(), QString());
    QCOMPARE(manager.GetUrls().strGallery, QString());
}

void TestPermissions::damagedThemeFileMeansQuorvane()
{
    QByteArray garbage;
    for (int i = 0; i < 4096; ++i)
        garbage.append(char((i * 131 + 7) % 256));
    WriteFile(m_strResources + "/Theme/Theme.ini", garbage);
    CUiPermissionsManager manager;
    QCOMPARE(manager.GetThemeName(), QStringLiteral("Quorvane"));
    manager.GetThemeVersion();
    manager.GetUrls();
}

void TestPermissions::overrideWinsAndCanBeDropped()
{
    CUiPermissionsManager manager;
    manager.SetThemeOverride("Lumen", "1.0");
    QCOMPARE(manager.GetThemeName(), QStringLiteral("Lumen"));
    QCOMPARE(manager.GetThemeVersion(), QStringLiteral("1.0"));
    manager.SetThemeOverride("Quorvane", QString());
    QCOMPARE(manager.GetThemeVersion(), QString());
    manager.SetThemeOverride(QString(), QString());
    QCOMPARE(manager.GetThemeName(), QStringLiteral("Quorvane"));
    QCOMPARE(manager.GetThemeVersion(), QStringLiteral("2.1 Global"));
}

void TestPermissions::urlsStartFromTheThemeFile()
{
    const SUrls urls = CUiPermissionsManager().GetUrls();
    QCOMPARE(urls.strNavigationGlobal, QStringLiteral("https://a.example/1"));
    QCOMPARE(urls.strAdvancedTutorial, QStringLiteral("https://a.example/10"));
    QCOMPARE(urls.strOnlineGallery, QStringLiteral("https://a.example/11"));
    QCOMPARE(urls.strGallery, QString());
    QCOMPARE(urls.strPrivacyPolicy, QStringLiteral("https://a.example/privacy"));
}

void TestPermissions::storedUrlsPersistAcrossInstances()
{
    {
        CUiPermissionsManager manager;
        SUrls urls = manager.GetUrls();
        for (int i = 1; i <= SHomePageUrls::kCount; ++i)
            *urls.At(i) = QStringLiteral("https://stored.example/%1").arg(i);
        urls.strOnlineGallery.clear();   // an empty address is stored as empty
        QVERIFY(manager.SetHomepageUrls(urls));
        QVERIFY(QFileInfo::exists(manager.UrlsFilePath()));
        QVERIFY(manager.UrlsFilePath().startsWith(qEnvironmentVariable("XDG_CONFIG_HOME")));
    }
    const SUrls urls = CUiPermissionsManager().GetUrls();
    for (int i = 1; i <= 10; ++i)
        QCOMPARE(*urls.At(i), QStringLiteral("https://stored.example/%1").arg(i));
    QCOMPARE(urls.strOnlineGallery, QString());
    QCOMPARE(urls.strPrivacyPolicy, QStringLiteral("https://a.example/privacy"));
}

void TestPermissions::storedUrlsBelongToTheEdition()
{
    CUiPermissionsManager manager;
    SUrls urls = manager.GetUrls();
    urls.strDevice = "https://quorvane-edition.example";
    QVERIFY(manager.SetHomepageUrls(urls));
    manager.SetThemeOverride("Lumen", QString());
    QVERIFY(manager.UrlsFilePath().contains("/Tessiflow/Resources/"));
    QCOMPARE(manager.GetUrls().strDevice, QString());
    manager.SetThemeOverride(QString(), QString());
    QCOMPARE(manager.GetUrls().strDevice, QStringLiteral("https://quorvane-edition.example"));
}

void TestPermissions::damagedUrlsFileFallsBackToTheTheme()
{
    CUiPermissionsManager manager;
    WriteFile(manager.UrlsFilePath(), QByteArray(3000, '\0') + "\n[[[[\n=====\n");
    const SUrls urls = manager.GetUrls();
    QCOMPARE(urls.strNavigationGlobal, QStringLiteral("https://a.example/1"));
}

void TestPermissions::membersAreAddressedByPosition()
{
    SUrls urls;
    QVERIFY(urls.At(0) == nullptr);
    QVERIFY(urls.At(12) == nullptr);
    QCOMPARE(urls.At(1), &urls.strNavigationGlobal);
    QCOMPARE(urls.At(2), &urls.strNavigation);
    QCOMPARE(urls.At(7), &urls.strOfficialSupport);
    QCOMPARE(urls.At(10), &urls.strAdvancedTutorial);
    QCOMPARE(urls.At(11), &urls.strOnlineGallery);
    QSet<const QString*> distinct;
    for (int i = 1; i <= SHomePageUrls::kCount; ++i)
        distinct.insert(urls.At(i));
    QCOMPARE(distinct.size(), SHomePageUrls::kCount);
    // The home page entries lead the full record, in the same order.
    QCOMPARE(static_cast<SHomePageUrls*>(&urls)->At(5), &urls.strCommunity);
}

void TestPermissions::shippedThemeIsQuorvane()
{
    CHostPaths::SetResourceDirectory(QString());
    CUiPermissionsManager manager;
    QCOMPARE(manager.GetThemeName(), QStringLiteral("Quorvane"));
    QVERIFY(!manager.GetUrls().strGallery.isEmpty());
}

FACTORYMGR_TEST_MAIN(TestPermissions)
#include "tst_permissions.moc"
