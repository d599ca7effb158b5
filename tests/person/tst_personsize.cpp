#include "PersonTestMain.h"

#include "HostPersonTest.h"

#include "CHostSession.h"
#include "CHostWindow.h"
#include "CSettingsWindow.h"
#include "CSimController.h"
#include "CellPicture.h"
#include "PersonSteps.h"
#include "XInput.h"

#include <QComboBox>
#include <QDialog>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QStandardPaths>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>

#include <memory>

// The host's windows at the scale factor the run was started with
// (QT_SCALE_FACTOR: 1, 1.5 or 2), on a real X server with a window manager:
// every window opens within the screen, and a settings window made small
// shows every value whole, scrolling rather than cutting a number short.
namespace {
const char* const kTables[] = {"tableWidget_motor", "tableWidget_laser", "tableWidget_speed", "tableWidget_machine"};

// Where a window is, frame included, against the screen's free area; empty when within.
QString OffScreen(QWidget* pWindow)
{
    const QRect area = pWindow->screen()->availableGeometry();
    const QRect frame = pWindow->frameGeometry();
    if (area.contains(frame))
        return QString();
    return QStringLiteral("%1 at %2,%3 %4x%5 is beyond the screen's %6x%7")
        .arg(pWindow->metaObject()->className())
        .arg(frame.x())
        .arg(frame.y())
        .arg(frame.width())
        .arg(frame.height())
        .arg(area.width())
        .arg(area.height());
}
}

class TestPersonSize : public HostPersonTest
{
    Q_OBJECT
private slots:
    void everyWindowOpensWithinTheScreen();
    void aSmallSettingsWindowShowsEveryValueWhole();

};

void TestPersonSize::everyWindowOpensWithinTheScreen()
{
    CHostWindow host;
    QVERIFY(Start(host));
    QTRY_VERIFY2(OffScreen(&host).isEmpty(), qPrintable(OffScreen(&host)));

    QString strWizard;
    bool bSeen = false;
    m_pSteps->WhenModal<QDialog>([&](QDialog* pWizard) {
        // Placed by the window manager: shown on the screen with a size, then given time to settle its frame.
        const bool bPlaced = pWizard->windowHandle() && QTest::qWaitForWindowExposed(pWizard->windowHandle(), 10000)
            && QTest::qWaitFor([&] { return !pWizard->frameGeometry().isEmpty(); }, 10000);
        QTest::qWait(200);
        strWizard = bPlaced ? OffScreen(pWizard) : QStringLiteral("the wizard was never shown with a size");
        bSeen = true;
        m_pInput->Key("Escape");
    });
    QVERIFY2(m_pSteps->ChooseInMenu(&host, "menu_tools", "action_calibrate"), qPrintable(m_pSteps->Error()));
    QTRY_VERIFY(bSeen);
    QVERIFY2(strWizard.isEmpty(), qPrintable(strWizard));
    QTRY_VERIFY(!QApplication::activeModalWidget());

    QVERIFY(OpenSettings(host));
    CSettingsWindow* pSettings = host.Session().SettingsWindow();
    QTRY_VERIFY2(OffScreen(pSettings).isEmpty(), qPrintable(OffScreen(pSettings)));
    // The buttons at the bottom of the settings are on the screen.
    auto* pUpload = host.Session().Dialog()->findChild<QPushButton*>("pushButton_upload");
    const QRect upload(pUpload->mapToGlobal(QPoint(0, 0)), pUpload->size());
    QVERIFY2(pSettings->screen()->availableGeometry().contains(upload), "Upload is off the screen");
    // Where the screen has the room, the settings open wide enough for all four axes, no scrolling.
    auto* pMotor = host.Session().Dialog()->findChild<QTableWidget*>("tableWidget_motor");
    if (pSettings->screen()->availableGeometry().width() >= 1000) {
        QTRY_VERIFY2(!pMotor->horizontalScrollBar()->isVisible(),
                     qPrintable(QStringLiteral("the settings window opened %1 px wide").arg(pSettings->width())));
        // With the room, the label column has its full width.
        if (qEnvironmentVariableIsEmpty("QT_SCALE_FACTOR"))
            QCOMPARE(pMotor->columnWidth(0), 255);
    }
}

void TestPersonSize::aSmallSettingsWindowShowsEveryValueWhole()
{
    CHostWindow host;
    QVERIFY(Start(host));
    QVERIFY(OpenSettings(host));
    CSettingsWindow* pSettings = host.Session().SettingsWindow();
    // As small as a person may drag it.
    pSettings->resize(500, 350);
    QTRY_VERIFY(pSettings->width() <= qMax(500, pSettings->minimumSizeHint().width()));
    QDialog* pDialog = host.Session().Dialog();
    auto* pTabs = pDialog->findChild<QTabWidget*>("tabWidget");
    for (int nTab = 0; nTab < 4; ++nTab) {
        QTabBar* pBar = pTabs->tabBar();
        QVERIFY2(m_pInput->Click(pBar->mapToGlobal(pBar->tabRect(nTab).center())), qPrintable(m_pInput->Error()));
        QTRY_COMPARE(pTabs->currentIndex(), nTab);
        auto* pTable = pDialog->findChild<QTableWidget*>(QString::fromLatin1(kTables[nTab]));
        QTRY_VERIFY(pTable->isVisible());
        QCoreApplication::processEvents();
        QTest::qWait(100);
        int nChecked = 0;
        for (int r = 0; r < pTable->rowCount(); ++r)
            for (int c = 1; c < pTable->columnCount(); ++c) {
                QWidget* pCell = pTable->cellWidget(r, c);
                const QRect rect = pTable->visualRect(pTable->model()->index(r, c));
                if (!pCell || !pTable->viewport()->rect().contains(rect))
                    continue;
                // A number's label, or a list's choice: all of it fits its cell.
                auto* pLabel = pCell->findChild<QLabel*>();
                auto* pList = pCell->findChild<QComboBox*>();
                const QString strShown = pList ? pList->currentText() : pLabel->text();
                const int nNeed = pCell->fontMetrics().horizontalAdvance(strShown);
                QVERIFY2(nNeed + 8 <= rect.width(),
                         qPrintable(QStringLiteral("%1 (%2, %3) \"%4\" needs %5 px, has %6")
                                        .arg(kTables[nTab]).arg(r).arg(c).arg(strShown).arg(nNeed).arg(rect.width())));
                // On the screen: the ink of a number ends before the cell does.
                if (!pList && !strShown.isEmpty()) {
                    const CellPicture picture(pTable->viewport(), rect.adjusted(0, 1, -1, -1));
                    QVERIFY2(picture.InkRight() >= 0 && picture.InkRight() < picture.Image().width() - 3,
                             qPrintable(QStringLiteral("%1 (%2, %3) \"%4\" is cut").arg(kTables[nTab]).arg(r).arg(c).arg(strShown)));
                }
                ++nChecked;
            }
        QVERIFY2(nChecked > 0, kTables[nTab]);
        // The label column gives up room to the Motor table's four axes, but never a label's end.
        if (nTab == 0)
            QVERIFY2(pTable->columnWidth(0) < 255, qPrintable(QString::number(pTable->columnWidth(0))));
        for (int r = 0; r < pTable->rowCount(); ++r)
            QVERIFY2(pTable->fontMetrics().horizontalAdvance(pTable->item(r, 0)->text()) + 8 <= pTable->columnWidth(0),
                     qPrintable(QStringLiteral("%1 label \"%2\" in %3 px")
                                    .arg(kTables[nTab], pTable->item(r, 0)->text())
                                    .arg(pTable->columnWidth(0))));
        // For a look by a person: FACTORYMGR_PERSON_SHOTS names a directory.
        const QString strShots = qEnvironmentVariable("FACTORYMGR_PERSON_SHOTS");
        if (!strShots.isEmpty()) {
            const QRect frame = pSettings->frameGeometry();
            pSettings->screen()
                ->grabWindow(0, frame.x(), frame.y(), frame.width(), frame.height())
                .save(QStringLiteral("%1/small-%2-scale%3.png")
                          .arg(strShots, QString::fromLatin1(kTables[nTab]), qEnvironmentVariable("QT_SCALE_FACTOR", "1")));
        }
        // The Motor table's four axes do not fit: it scrolls sideways.
        if (nTab == 0)
            QVERIFY(pTable->horizontalScrollBar()->isVisible());
    }
}

FACTORYMGR_PERSON_TEST_MAIN(TestPersonSize)
#include "tst_personsize.moc"
