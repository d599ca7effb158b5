#include "TestMain.h"

#include "CHostPaths.h"
#include "CThemeTab.h"
#include "CUiPermissionsManager.h"
#include "TabTestFixture.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QTabWidget>

namespace {
// Addresses that name their own member, so a misplaced one shows.
SUrls Numbered()
{
    SUrls urls;
    for (int i = 1; i <= SHomePageUrls::kCount; ++i)
        *urls.At(i) = QStringLiteral("https://member%1.example").arg(i);
    urls.strPrivacyPolicy = "https://privacy.example";
    return urls;
}

QList<int> ShownRows(QTableWidget* pTable)
{
    QList<int> rows;
    for (int r = 0; r < pTable->rowCount(); ++r)
        if (!pTable->isRowHidden(r))
            rows << r;
    return rows;
}
}

class TestThemeTab : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void rowSetsFollowTheTheme_data();
    void rowSetsFollowTheTheme();
    void rowsShowTheirMembers();
    void anEditReachesExactlyItsMember_data();
    void anEditReachesExactlyItsMember();
    void startRowIsLocked();
    void membersEightAndNineComeBackUnchanged();
    void hiddenRowsAreStoredAsFilled();
    void filledOnceOnItsFirstShowing();
    void layoutOfTheTable();

private:
    QTableWidget* ShowTheme(TabTestFixture& f);
    // Click the address, F2, type, Return: as a person edits it.
    void Edit(QTableWidget* pTable, int nRow, const QString& strText);
};

void TestThemeTab::init()
{
    CUiPermissionsManager::GetInstance()->SetThemeOverride("Quorvane", "2.1 Global");
    CUiPermissionsManager::GetInstance()->SetHomepageUrls(Numbered());
}

void TestThemeTab::cleanup()
{
    CUiPermissionsManager::GetInstance()->SetThemeOverride(QString(), QString());
}

QTableWidget* TestThemeTab::ShowTheme(TabTestFixture& f)
{
    f.Dialog()->findChild<QTabWidget*>("tabWidget")->setCurrentWidget(f.Dialog()->findChild<QWidget*>("tab_theme"));
    QTableWidget* pTable = f.Table("tableWidget_customHomepage");
    // Laid out, so that clicks land on their cells.
    if (!QTest::qWaitFor([pTable] { return pTable->isVisible() && pTable->viewport()->height() > 100; }))
        qWarning("the Theme table was not laid out");
    return pTable;
}

void TestThemeTab::Edit(QTableWidget* pTable, int nRow, const QString& strText)
{
    const QRect cell = pTable->visualRect(pTable->model()->index(nRow, 1));
    QTest::mouseClick(pTable->viewport(), Qt::LeftButton, Qt::NoModifier, cell.center());
    QTest::keyClick(pTable, Qt::Key_F2);
    auto* pEditor = pTable->viewport()->findChild<QLineEdit*>();
    QVERIFY2(pEditor, "no editor opened");
    pEditor->selectAll();
    QTest::keyClicks(pEditor, strText);
    QTest::keyClick(pEditor, Qt::Key_Return);
    // The delegate commits on Return through a queued call.
    QTRY_COMPARE(pTable->item(nRow, 1)->text(), strText);
}

void TestThemeTab::rowSetsFollowTheTheme_data()
{
    QTest::addColumn<QString>("strName");
    QTest::addColumn<QString>("strVersion");
    QTest::addColumn<QList<int>>("shown");
    QTest::newRow("Quorvane Global") << "Quorvane" << "2.1 Global" << QList<int>{0, 1, 2, 3, 4, 5, 6};
    QTest::newRow("Quorvane global, lower case") << "Quorvane" << "2.1 global" << QList<int>{0, 7, 8, 9};
    QTest::newRow("Quorvane") << "Quorvane" << "2.1" << QList<int>{0, 7, 8, 9};
    QTest::newRow("another theme") << "Lumen" << "2.1 Global" << QList<int>{0, 2, 3, 4, 6};
    QTest::newRow("another theme, no edition") << "Tessiflow" << "" << QList<int>{0, 2, 3, 4, 6};
}

void TestThemeTab::rowSetsFollowTheTheme()
{
    QFETCH(QString, strName);
    QFETCH(QString, strVersion);
    QFETCH(QList<int>, shown);
    CUiPermissionsManager::GetInstance()->SetThemeOverride(strName, strVersion);
    TabTestFixture f;
    QCOMPARE(ShownRows(ShowTheme(f)), shown);
}

void TestThemeTab::rowsShowTheirMembers()
{
    TabTestFixture f;
    QTableWidget* t = ShowTheme(f);
    const int kMembers[] = {0, 2, 3, 4, 5, 6, 7, 1, 11, 10};
    for (int r = 1; r < 10; ++r) {
        QCOMPARE(CThemeTab::MemberOfRow(r), kMembers[r]);
        QCOMPARE(t->item(r, 1)->text(), QStringLiteral("https://member%1.example").arg(kMembers[r]));
    }
    QCOMPARE(t->item(8, 0)->text(), QStringLiteral("Online Gallery"));
    QCOMPARE(t->item(9, 0)->text(), QStringLiteral("Advanced Tutorial"));
}

void TestThemeTab::anEditReachesExactlyItsMember_data()
{
    QTest::addColumn<int>("nRow");
    QTest::addColumn<int>("nMember");
    QTest::addColumn<QString>("strVersion");
    const int kMembers[] = {0, 2, 3, 4, 5, 6, 7, 1, 11, 10};
    for (int r = 1; r < 10; ++r)
        QTest::newRow(qPrintable(QStringLiteral("row %1").arg(r))) << r << kMembers[r] << (r <= 6 ? "2.1 Global" : "2.1");
}

void TestThemeTab::anEditReachesExactlyItsMember()
{
    QFETCH(int, nRow);
    QFETCH(int, nMember);
    QFETCH(QString, strVersion);
    CUiPermissionsManager::GetInstance()->SetThemeOverride("Quorvane", strVersion);
    TabTestFixture f;
    QTableWidget* t = ShowTheme(f);
    Edit(t, nRow, "https://typed.example");
    f.Collected();   // the store runs on every collect

    const SUrls stored = CUiPermissionsManager::GetInstance()->GetUrls();
    for (int i = 1; i <= SHomePageUrls::kCount; ++i)
        QCOMPARE(*stored.At(i),
                 i == nMember ? QStringLiteral("https://typed.example") : QStringLiteral("https://member%1.example").arg(i));
}

void TestThemeTab::startRowIsLocked()
{
    TabTestFixture f;
    QTableWidget* t = ShowTheme(f);
    QTableWidgetItem* pStart = t->item(0, 1);
    QVERIFY(pStart);
    QVERIFY(!(pStart->flags() & Qt::ItemIsEditable));
    QVERIFY(!(pStart->flags() & Qt::ItemIsSelectable));
    QCOMPARE(pStart->background().color(), QColor(204, 204, 204, 255));
    // The way that opens any other address's editor opens none here.
    const QRect cell = t->visualRect(t->model()->index(0, 1));
    QTest::mouseClick(t->viewport(), Qt::LeftButton, Qt::NoModifier, cell.center());
    QTest::keyClick(t, Qt::Key_F2);
    QVERIFY(!t->viewport()->findChild<QLineEdit*>());
    QVERIFY(t->selectedItems().isEmpty());
    pStart->setText("https://start.example");   // even text put there by other means stays there
    f.Collected();
    const SUrls stored = CUiPermissionsManager::GetInstance()->GetUrls();
    for (int i = 1; i <= SHomePageUrls::kCount; ++i)
        QVERIFY(*stored.At(i) != QLatin1String("https://start.example"));
}

void TestThemeTab::membersEightAndNineComeBackUnchanged()
{
    TabTestFixture f;
    QTableWidget* t = ShowTheme(f);
    Edit(t, 3, "https://device.example");
    f.Collected();
    const SUrls stored = CUiPermissionsManager::GetInstance()->GetUrls();
    QCOMPARE(stored.strSoftwareUpdate, QStringLiteral("https://member8.example"));
    QCOMPARE(stored.strFeedback, QStringLiteral("https://member9.example"));
    QCOMPARE(stored.strDevice, QStringLiteral("https://device.example"));
    QCOMPARE(stored.strPrivacyPolicy, CUiPermissionsManager::GetInstance()->GetUrls().strPrivacyPolicy);
}

void TestThemeTab::hiddenRowsAreStoredAsFilled()
{
    CUiPermissionsManager::GetInstance()->SetThemeOverride("Lumen", "");
    SUrls urls = Numbered();
    CUiPermissionsManager::GetInstance()->SetHomepageUrls(urls);
    TabTestFixture f;
    QTableWidget* t = ShowTheme(f);
    QVERIFY(t->isRowHidden(7));
    // Meanwhile the service's record changes; the store writes the table as filled.
    urls.strNavigationGlobal = "https://changed-meanwhile.example";
    urls.strOnlineGallery = "https://changed-meanwhile.example/11";
    CUiPermissionsManager::GetInstance()->SetHomepageUrls(urls);
    f.Collected();
    const SUrls stored = CUiPermissionsManager::GetInstance()->GetUrls();
    QCOMPARE(stored.strNavigationGlobal, QStringLiteral("https://member1.example"));
    QCOMPARE(stored.strOnlineGallery, QStringLiteral("https://member11.example"));
}

void TestThemeTab::filledOnceOnItsFirstShowing()
{
    TabTestFixture f;
    QTableWidget* t = f.Table("tableWidget_customHomepage");
    QVERIFY(!t->item(2, 1) || t->item(2, 1)->text().isEmpty());
    f.Collected();   // not shown yet: nothing is stored over the addresses
    QCOMPARE(CUiPermissionsManager::GetInstance()->GetUrls().strGallery, QStringLiteral("https://member3.example"));
    ShowTheme(f);
    Edit(t, 2, "https://mine.example");
    auto* pTabs = f.Dialog()->findChild<QTabWidget*>("tabWidget");
    pTabs->setCurrentIndex(0);
    ShowTheme(f);
    QCOMPARE(t->item(2, 1)->text(), QStringLiteral("https://mine.example"));
}

void TestThemeTab::layoutOfTheTable()
{
    TabTestFixture f;
    QTableWidget* t = ShowTheme(f);
    QVERIFY(t->verticalHeader()->isHidden());
    QCOMPARE(t->focusPolicy(), Qt::NoFocus);
    QCOMPARE(t->horizontalHeader()->sectionResizeMode(1), QHeaderView::Stretch);
    QCOMPARE(t->columnWidth(0), 255);
    QCOMPARE(t->rowHeight(1), 35);
    QVERIFY(!(t->item(4, 0)->flags() & Qt::ItemIsEditable));
    for (int r = 0; r < 10; ++r)
        for (int c = 0; c < 2; ++c)
            QCOMPARE(t->item(r, c)->textAlignment(), int(Qt::AlignCenter));
}

FACTORYMGR_TEST_MAIN(TestThemeTab)
#include "tst_themetab.moc"
