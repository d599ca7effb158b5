#include "TestMain.h"

#include <sys/stat.h>

#include "CHostPaths.h"
#include "CTranslator.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QWidget>

namespace {
// Counts the language changes a widget receives.
class LanguageChangeCounter : public QObject
{
public:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::LanguageChange)
            ++m_nCount;
        return false;
    }
    int m_nCount = 0;
};

void WriteFile(const QString& strPath, const QByteArray& content)
{
    QDir().mkpath(QFileInfo(strPath).absolutePath());
    QFile file(strPath);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(content);
}
}

class TestWording : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void englishIsTheDefaultAndKeysAreTheirOwnWording();
    void switchingLanguageTranslatesWordingAndTr();
    void everyWidgetIsToldOfTheChange();
    void unknownKeysFallBackToTheKey();
    void missingTableStaysInEnglish();
    void damagedTableStaysInEnglish();
    void nonTextEntriesAreIgnored();
    void aPipeOrAHugeFileInPlaceOfATableIsRefusedUnread();
    void availableLanguagesListsTheTables();
    void shippedTablesAreValid();

private:
    QScopedPointer<QTemporaryDir> m_pResources;   // fresh for every test function
    QString m_strResources;
};

void TestWording::init()
{
    m_pResources.reset(new QTemporaryDir);
    m_strResources = m_pResources->path();
    CHostPaths::SetResourceDirectory(m_strResources);
    QJsonObject zh;
    zh["Motor"] = QStringLiteral("电机");
    zh["Tips"] = QStringLiteral("提示");
    WriteFile(m_strResources + "/Wording/zh_CN.json", QJsonDocument(zh).toJson());
}

void TestWording::cleanup()
{
    CTranslator::GetInstance()->SetLanguage("en");
    CHostPaths::SetResourceDirectory(QString());
}

void TestWording::englishIsTheDefaultAndKeysAreTheirOwnWording()
{
    QCOMPARE(CTranslator::GetInstance()->GetLanguage(), QStringLiteral("en"));
    QCOMPARE(CTranslator::GetInstance()->GetWording("Motor"), QStringLiteral("Motor"));
    QCOMPARE(CTranslator::GetInstance()->GetWording(QString()), QString());
}

void TestWording::switchingLanguageTranslatesWordingAndTr()
{
    QVERIFY(CTranslator::GetInstance()->SetLanguage("zh_CN"));
    QCOMPARE(CTranslator::GetInstance()->GetLanguage(), QStringLiteral("zh_CN"));
    QCOMPARE(CTranslator::GetInstance()->GetWording("Motor"), QStringLiteral("电机"));
    // tr() of any context goes through the same table.
    QCOMPARE(QCoreApplication::translate("CFactoryMgrIns", "Tips"), QStringLiteral("提示"));
    QVERIFY(CTranslator::GetInstance()->SetLanguage("en"));
    QCOMPARE(CTranslator::GetInstance()->GetWording("Motor"), QStringLiteral("Motor"));
    QCOMPARE(QCoreApplication::translate("CFactoryMgrIns", "Tips"), QStringLiteral("Tips"));
}

void TestWording::everyWidgetIsToldOfTheChange()
{
    QWidget window;
    QWidget* pChild = new QWidget(&window);
    LanguageChangeCounter windowCounter;
    LanguageChangeCounter childCounter;
    window.installEventFilter(&windowCounter);
    pChild->installEventFilter(&childCounter);

    QVERIFY(CTranslator::GetInstance()->SetLanguage("zh_CN"));
    QTRY_VERIFY(childCounter.m_nCount > 0);
    QVERIFY(windowCounter.m_nCount > 0);

    const int nBefore = childCounter.m_nCount;
    QVERIFY(CTranslator::GetInstance()->SetLanguage("en"));
    QTRY_VERIFY(childCounter.m_nCount > nBefore);
}

void TestWording::unknownKeysFallBackToTheKey()
{
    QVERIFY(CTranslator::GetInstance()->SetLanguage("zh_CN"));
    QCOMPARE(CTranslator::GetInstance()->GetWording("No such text"), QStringLiteral("No such text"));
    QCOMPARE(QCoreApplication::translate("Any", "No such text"), QStringLiteral("No such text"));
}

void TestWording::missingTableStaysInEnglish()
{
    QVERIFY(CTranslator::GetInstance()->SetLanguage("zh_CN"));
    QVERIFY(!CTranslator::GetInstance()->SetLanguage("fr"));
    QCOMPARE(CTranslator::GetInstance()->GetLanguage(), QStringLiteral("en"));
    QCOMPARE(CTranslator::GetInstance()->GetWording("Motor"), QStringLiteral("Motor"));
    QVERIFY2(CTranslator::GetInstance()->Problem().startsWith(m_strResources + "/Wording/fr.json: "),
             qPrintable(CTranslator::GetInstance()->Problem()));
    QVERIFY(CTranslator::GetInstance()->SetLanguage("zh_CN"));
    QCOMPARE(CTranslator::GetInstance()->Problem(), QString());
}

void TestWording::damagedTableStaysInEnglish()
{
    WriteFile(m_strResources + "/Wording/de.json", QByteArray("{\"Motor\": \"Mot", 14) + QByteArray(100, '\xff'));
    QVERIFY(!CTranslator::GetInstance()->SetLanguage("de"));
    QCOMPARE(CTranslator::GetInstance()->GetLanguage(), QStringLiteral("en"));
    QCOMPARE(CTranslator::GetInstance()->GetWording("Motor"), QStringLiteral("Motor"));

    QVERIFY2(CTranslator::GetInstance()->Problem().startsWith(m_strResources + "/Wording/de.json: "),
             qPrintable(CTranslator::GetInstance()->Problem()));

    WriteFile(m_strResources + "/Wording/de.json", "[\"an array, not a table\"]");
    QVERIFY(!CTranslator::GetInstance()->SetLanguage("de"));
    QCOMPARE(CTranslator::GetInstance()->GetLanguage(), QStringLiteral("en"));
    QCOMPARE(CTranslator::GetInstance()->Problem(), m_strResources + "/Wording/de.json: not a table of wordings");
}

void TestWording::aPipeOrAHugeFileInPlaceOfATableIsRefusedUnread()
{
    QVERIFY(QDir().mkpath(m_strResources + "/Wording"));
    QCOMPARE(::mkfifo(QFile::encodeName(m_strResources + "/Wording/fr.json").constData(), 0600), 0);
    QVERIFY(!CTranslator::GetInstance()->SetLanguage("fr"));   // would wait forever for a writer
    QCOMPARE(CTranslator::GetInstance()->GetLanguage(), QStringLiteral("en"));
    QCOMPARE(CTranslator::GetInstance()->Problem(),
             m_strResources + "/Wording/fr.json: a FIFO, not a regular file, not read");

    // A valid table, padded past 4 MiB with blanks: refused before it is parsed.
    QByteArray huge = "{\"Motor\": \"Moteur\"}";
    huge += QByteArray(4 * 1024 * 1024, ' ');
    QVERIFY(QFile::remove(m_strResources + "/Wording/fr.json"));
    WriteFile(m_strResources + "/Wording/fr.json", huge);
    QVERIFY(!CTranslator::GetInstance()->SetLanguage("fr"));
    QCOMPARE(CTranslator::GetInstance()->GetWording("Motor"), QStringLiteral("Motor"));
    WriteFile(m_strResources + "/Wording/fr.json", huge.trimmed());
    QVERIFY(CTranslator::GetInstance()->SetLanguage("fr"));
    QCOMPARE(CTranslator::GetInstance()->GetWording("Motor"), QStringLiteral("Moteur"));
}

void TestWording::nonTextEntriesAreIgnored()
{
    WriteFile(m_strResources + "/Wording/it.json", R"({"Motor": 5, "Tips": "Suggerimenti", "OK": null})");
    QVERIFY(CTranslator::GetInstance()->SetLanguage("it"));
    QCOMPARE(CTranslator::GetInstance()->GetWording("Motor"), QStringLiteral("Motor"));
    QCOMPARE(CTranslator::GetInstance()->GetWording("Tips"), QStringLiteral("Suggerimenti"));
    QCOMPARE(CTranslator::GetInstance()->GetWording("OK"), QStringLiteral("OK"));
}

void TestWording::availableLanguagesListsTheTables()
{
    QCOMPARE(CTranslator::GetInstance()->AvailableLanguages(), QStringList({"en", "zh_CN"}));
}

void TestWording::shippedTablesAreValid()
{
    // The tables that ship in the build's resource directory load, and every
    // entry is a non-empty text.
    CHostPaths::SetResourceDirectory(QString());
    const QStringList languages = CTranslator::GetInstance()->AvailableLanguages();
    QVERIFY2(languages.contains("zh_CN"), qPrintable(languages.join(',')));
    for (const QString& strLanguage : languages) {
        if (strLanguage == "en")
            continue;
        QFile file(CHostPaths::ResourceDirectory() + "/Wording/" + strLanguage + ".json");
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QJsonDocument doc = QJsonDocument::fromJson(file.readAll());
        QVERIFY2(doc.isObject(), qPrintable(strLanguage));
        const QJsonObject table = doc.object();
        for (auto it = table.begin(); it != table.end(); ++it)
            QVERIFY2(it.value().isString() && !it.value().toString().isEmpty(), qPrintable(it.key()));
        QVERIFY(CTranslator::GetInstance()->SetLanguage(strLanguage));
    }
    QCOMPARE(CTranslator::GetInstance()->GetWording("Tips"), QStringLiteral("提示"));
}

FACTORYMGR_TEST_MAIN(TestWording)
#include "tst_wording.moc"
