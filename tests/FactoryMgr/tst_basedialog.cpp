#include "TestMain.h"

#include "BaseDialog.h"

#include <QScreen>

// Runs on an offscreen screen of 1920 x 1040 whose area starts at (100, 50).
class TestBaseDialog : public QObject
{
    Q_OBJECT
private slots:
    void screenIsTheConfiguredOne();
    void windowHasOnlyACloseButton();
    void centresOnThePrimaryScreenIgnoringItsOrigin();
    void largerThanTheScreenGoesNegative();
    void centresAgainOnEveryShowing();
    void withTheFlagClearedKeepsItsPlace();
};

void TestBaseDialog::screenIsTheConfiguredOne()
{
    QCOMPARE(QGuiApplication::primaryScreen()->availableGeometry(), QRect(100, 50, 1920, 1040));
}

void TestBaseDialog::windowHasOnlyACloseButton()
{
    BaseDialog dialog;
    const Qt::WindowFlags flags = dialog.windowFlags();
    QCOMPARE(flags & Qt::WindowType_Mask, Qt::Dialog);
    QVERIFY(flags.testFlag(Qt::WindowCloseButtonHint));
    QVERIFY(!flags.testFlag(Qt::WindowContextHelpButtonHint));
    QVERIFY(!flags.testFlag(Qt::WindowMinimizeButtonHint));
    QVERIFY(!flags.testFlag(Qt::WindowMaximizeButtonHint));
    QVERIFY(dialog.IsCenterOnShow());
}

void TestBaseDialog::centresOnThePrimaryScreenIgnoringItsOrigin()
{
    BaseDialog dialog;
    dialog.resize(600, 400);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QCOMPARE(dialog.pos(), QPoint(660, 320));
}

void TestBaseDialog::largerThanTheScreenGoesNegative()
{
    // The show event alone, at exactly 2000 x 1100 (a shown window is
    // trimmed to the screen by the platform).
    BaseDialog dialog;
    dialog.resize(2000, 1100);
    QShowEvent event;
    QApplication::sendEvent(&dialog, &event);
    QCOMPARE(dialog.pos(), QPoint(-40, -30));

    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QCOMPARE(dialog.pos(), QPoint((1920 - dialog.width()) / 2, (1040 - dialog.height()) / 2));
    QVERIFY(dialog.x() < 0);
}

void TestBaseDialog::centresAgainOnEveryShowing()
{
    BaseDialog dialog;
    dialog.resize(600, 400);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    dialog.move(5, 7);
    QCOMPARE(dialog.pos(), QPoint(5, 7));
    dialog.hide();
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QCOMPARE(dialog.pos(), QPoint(660, 320));
}

void TestBaseDialog::withTheFlagClearedKeepsItsPlace()
{
    BaseDialog dialog;
    dialog.ClearCenterOnShow();
    QVERIFY(!dialog.IsCenterOnShow());
    dialog.resize(600, 400);
    dialog.move(210, 130);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QCOMPARE(dialog.pos(), QPoint(210, 130));
}

FACTORYMGR_TEST_MAIN(TestBaseDialog)
#include "tst_basedialog.moc"
