#include "PersonTestMain.h"

#include "HostPersonTest.h"

#include "CHostSession.h"
#include "CHostWindow.h"
#include "PersonSteps.h"
#include "XInput.h"

#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QToolTip>

#include <memory>

// Without the access file, on a real X server: what changes the factory
// parameters is off, says why where the person points at it, and a click on
// it changes nothing.
class TestPersonNoAccess : public HostPersonTest
{
    Q_OBJECT
private slots:
    void restoreIsOffAndSaysWhy();
};

void TestPersonNoAccess::restoreIsOffAndSaysWhy()
{
    QVERIFY(!QFile::exists(CHostSession::AccessFile()));
    CHostWindow host;
    QVERIFY(host.Start(QStringLiteral(FACTORYMGR_PLUGIN_DIR "/libFactoryMgr.so")));
    host.Session().SaveParameters();
    QFile file(CHostSession::ParameterFile());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray before = file.readAll();
    file.close();
    host.setGeometry(60, 60, 520, 480);
    host.show();
    host.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&host));

    // File, then the pointer on Restore...: greyed, and the reason shows.
    auto* pFile = host.findChild<QMenu*>("menu_file");
    QMenuBar* pBar = host.menuBar();
    QVERIFY(m_pInput->Click(pBar->mapToGlobal(pBar->actionGeometry(pFile->menuAction()).center())));
    QTRY_VERIFY(pFile->isVisible());
    QAction* pRestore = host.findChild<QAction*>("action_restore");
    QVERIFY(!pRestore->isEnabled());
    const QPoint item = pFile->mapToGlobal(pFile->actionGeometry(pRestore).center());
    QVERIFY(m_pInput->MoveTo(item));
    QVERIFY(m_pInput->MoveTo(item + QPoint(2, 1)));
    const QString strWhy = QStringLiteral("Restore needs the access file %1, as the machine settings do: without it "
                                          "nothing on this computer changes the factory parameters.")
                               .arg(QDir::toNativeSeparators(CHostSession::AccessFile()));
    QTRY_VERIFY_WITH_TIMEOUT(QToolTip::isVisible() && QToolTip::text() == strWhy, 10000);
    // A click on it opens nothing; the person leaves the menu.
    QVERIFY(m_pInput->Click(item));
    QVERIFY(!QApplication::activeModalWidget());
    QVERIFY(m_pInput->Key("Escape"));
    QTRY_VERIFY(!pFile->isVisible());
    QVERIFY(!QApplication::activeModalWidget());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), before);
    // The calibration button too.
    auto* pCalibrate = host.findChild<QPushButton*>("pushButton_calibrate");
    QVERIFY(!pCalibrate->isEnabled());
    QVERIFY(pCalibrate->toolTip().startsWith("Calibration needs the access file"));
}

FACTORYMGR_PERSON_TEST_MAIN(TestPersonNoAccess)
#include "tst_personnoaccess.moc"
