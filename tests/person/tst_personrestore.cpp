#include "PersonTestMain.h"

#include "HostPersonTest.h"

#include "CHostSession.h"
#include "CHostWindow.h"
#include "CParamBackups.h"
#include "CParamDiff.h"
#include "CSettingsWindow.h"
#include "CSimController.h"
#include "FactoryParamIo.h"
#include "IFactoryMgr.h"
#include "PersonSteps.h"
#include "XInput.h"

#include <QDialogButtonBox>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QTimer>
#include <QTreeWidget>

#include <functional>
#include <memory>

// File > Restore... on a real X server, as a person uses it: the menu opened
// from the keyboard, the backups gone through with the arrow keys, Restore
// clicked, the question answered with a key or a click.
class TestPersonRestore : public HostPersonTest
{
    Q_OBJECT
private slots:
    void aBackupIsChosenWithTheKeyboardAndRestoredWithTheMouse();

private:
    bool ClickOn(QWidget* pWidget) { return m_pSteps->ClickOn(pWidget); }
    template <typename T>
    void WhenModal(const std::function<void(T*)>& step)
    {
        m_pSteps->WhenModal<T>(step);
    }
};

namespace {
QString ParameterFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + "/Quorvane/Resources/Data/FactoryParam.ini";
}
}

void TestPersonRestore::aBackupIsChosenWithTheKeyboardAndRestoredWithTheMouse()
{
    CHostWindow host;
    QVERIFY(host.Start());
    host.Session().Simulator()->SetTaskDuration(0);
    IFactoryMgr* pMgr = host.Session().Mgr();
    // Three states of the parameter file, the last one current.
    FactoryParams oldest;
    pMgr->GetFactoryParams(&oldest);
    oldest.motor[0].speedMax = 640.0;
    pMgr->SetFactoryParams(&oldest);
    FactoryParams middle = oldest;
    middle.laser.lasers[0].powerMax = 75.0;
    pMgr->SetFactoryParams(&middle);
    FactoryParams current = middle;
    current.motor[1].size = 1200.0;
    pMgr->SetFactoryParams(&current);
    QCOMPARE(CParamBackups::List(ParameterFile()).size(), 2);
    // Clear of the input probe in the screen's corner.
    host.move(80, 80);
    host.show();
    host.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&host));
    QVERIFY(m_pInput->Drain());

    // In the restore dialog: the newest backup is selected and its one
    // difference shown; Down goes to the older one, which differs in two.
    QStringList firstShown;
    QStringList secondShown;
    QString strFocus;
    int nAsked = 0;
    bool bInput = true;   // every input inside the dialogs arrived
    const auto shown = [](QDialog* pDialog) {
        QStringList lines;
        auto* pDifferences = pDialog->findChild<QTreeWidget*>("treeWidget_differences");
        for (int i = 0; pDifferences && i < pDifferences->topLevelItemCount(); ++i)
            lines << pDifferences->topLevelItem(i)->text(0) + " " + pDifferences->topLevelItem(i)->text(1) + " → "
                    + pDifferences->topLevelItem(i)->text(2);
        return lines;
    };
    const auto inTheDialog = [&](QDialog* pDialog, bool bRestore) {
        strFocus = QApplication::focusWidget() ? QApplication::focusWidget()->objectName() : QString();
        firstShown = shown(pDialog);
        bInput = m_pInput->Key("Down") && bInput;
        secondShown = shown(pDialog);
        // The question: Escape keeps everything; a click on Restore restores.
        WhenModal<QMessageBox>([&, bRestore](QMessageBox* pBox) {
            ++nAsked;
            bInput = (bRestore ? ClickOn(pBox->button(QMessageBox::Yes)) : m_pInput->Key("Escape")) && bInput;
        });
        // Alt+R: the question opens from a key. (Opened from a click, it would
        // run inside the click's release, where Qt still sends every pointer
        // move to the button: the input probe would see none.)
        bInput = m_pInput->Key("alt+r") && bInput;
        // After a cancelled question the person closes the dialog.
        if (pDialog->isVisible())
            bInput = ClickOn(pDialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Close)) && bInput;
    };
    const auto restoreFromTheMenu = [&](bool bRestore) {
        WhenModal<QDialog>([&, bRestore](QDialog* pDialog) { inTheDialog(pDialog, bRestore); });
        // The window manager gives the main window the focus (again, after the
        // dialog closed); Alt+F opens the File menu; the person clicks Restore... in it.
        QTRY_VERIFY(host.isActiveWindow());
        QVERIFY(m_pInput->Key("alt+f"));
        auto* pFile = host.findChild<QMenu*>("menu_file");
        QTRY_VERIFY(pFile->isVisible());
        QAction* pRestore = host.findChild<QAction*>("action_restore");
        QVERIFY(m_pInput->Click(pFile->mapToGlobal(pFile->actionGeometry(pRestore).center())));
        QTRY_VERIFY(!QApplication::activeModalWidget());
    };

    restoreFromTheMenu(false);
    QVERIFY2(bInput, qPrintable(m_pInput->Error()));
    QCOMPARE(strFocus, QStringLiteral("treeWidget_backups"));
    QCOMPARE(firstShown, QStringList{"Move Distance(mm), Y 1200 → 900"});
    QCOMPARE(secondShown, (QStringList{"Max power(%), Laser 1 75 → 100", "Move Distance(mm), Y 1200 → 900"}));
    QCOMPARE(nAsked, 1);
    FactoryParams now;
    pMgr->GetFactoryParams(&now);
    QVERIFY(CParamDiff::Compare(now, current).isEmpty());

    restoreFromTheMenu(true);
    QVERIFY2(bInput, qPrintable(m_pInput->Error()));
    QCOMPARE(nAsked, 2);
    // The older backup is in place, every other field as it was.
    pMgr->GetFactoryParams(&now);
    QVERIFY(CParamDiff::Compare(now, oldest).isEmpty());
    FactoryParams file;
    QCOMPARE(ReadFactoryParamFile(file, ParameterFile()), ParamFileStatus::Loaded);
    QVERIFY(CParamDiff::Compare(file, oldest).isEmpty());
    // And what was current can be had back the same way.
    FactoryParams newest;
    QCOMPARE(ReadFactoryParamFile(newest, CParamBackups::List(ParameterFile()).first().strPath), ParamFileStatus::Loaded);
    QVERIFY(CParamDiff::Compare(newest, current).isEmpty());
}

FACTORYMGR_PERSON_TEST_MAIN(TestPersonRestore)
#include "tst_personrestore.moc"
