#include "PersonTestMain.h"

#include "HostPersonTest.h"

#include "CActivityPanel.h"
#include "CHostSession.h"
#include "CHostWindow.h"
#include "CSettingsWindow.h"
#include "CSimController.h"
#include "CTranslator.h"
#include "PersonSteps.h"
#include "XInput.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QDockWidget>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QTreeWidget>

#include <memory>

// The host chosen into Simplified Chinese the way a person does it, from its
// View menu, on a real X server: every menu, the Activity panel, the Restore
// dialog, About and the question before unsaved edits are lost speak it, Qt's
// own buttons included.
namespace {
// A text in the chosen language holds a CJK character; names, axes and
// version lines stay as they are in every language.
bool IsTranslated(const QString& strText)
{
    static const QRegularExpression kAsIs(QStringLiteral(
        "^(|English|Quorvane|Quorvane Global|Tessiflow|[XYZU]|Qt [0-9.]+|[0-9.:, /()-]+"
        // Data, not words: firmware versions and home page addresses.
        "|[A-Z]{2}-[A-Z]{2} [0-9.]+|https?://\\S+)$"));
    for (const QChar c : strText)
        if ((c.unicode() >= 0x4E00 && c.unicode() <= 0x9FFF) || (c.unicode() >= 0x3000 && c.unicode() <= 0x303F))
            return true;
    return kAsIs.match(strText).hasMatch();
}

// Each line of each text not in the chosen language, as "where: text".
void Check(const QString& strWhere, const QString& strText, QStringList& left)
{
    for (const QString& strLine : QString(strText).remove(u'&').split(u'\n'))
        if (!IsTranslated(strLine.trimmed()))
            left << QStringLiteral("%1: \"%2\"").arg(strWhere, strLine.trimmed());
}

void CheckButtons(const QString& strWhere, QWidget* pWindow, QStringList& left)
{
    for (QAbstractButton* pButton : pWindow->findChildren<QAbstractButton*>())
        if (pButton->isVisible())
            Check(strWhere + " button", pButton->text(), left);
}

// Everything assistive technology reads in a window: the name and the
// description of every visible element, down its whole tree. The Activity
// panel's rows are records of what happened (operations, log lines), read
// as they were written; its headings and sources are checked on their own.
void CheckAccessible(const QString& strWhere, QAccessibleInterface* pNode, QStringList& left, int nDepth = 0)
{
    if (!pNode || !pNode->isValid() || pNode->state().invisible || nDepth > 40
        || pNode->role() == QAccessible::TreeItem)
        return;
    const QString strRole = QString::number(int(pNode->role()));
    Check(strWhere + " (accessible, role " + strRole + ")", pNode->text(QAccessible::Name), left);
    Check(strWhere + " (accessible description, role " + strRole + ")", pNode->text(QAccessible::Description), left);
    for (int i = 0; i < pNode->childCount(); ++i)
        CheckAccessible(strWhere, pNode->child(i), left, nDepth + 1);
}

void CheckWindow(const QString& strWhere, QWidget* pWindow, QStringList& left)
{
    CheckAccessible(strWhere, QAccessible::queryAccessibleInterface(pWindow), left);
}

// Texts a window shows cut short at the size it has: a label narrower than a
// line of its text, a button narrower than its text needs, a tab narrower than its title.
void CheckWhole(const QString& strWhere, QWidget* pWindow, QStringList& cut)
{
    for (QLabel* pLabel : pWindow->findChildren<QLabel*>()) {
        if (!pLabel->isVisible() || pLabel->wordWrap() || pLabel->textFormat() == Qt::RichText)
            continue;
        for (const QString& strLine : pLabel->text().split(u'\n'))
            if (pLabel->fontMetrics().horizontalAdvance(strLine) > pLabel->contentsRect().width())
                cut << QStringLiteral("%1: label \"%2\" in %3 px").arg(strWhere, strLine).arg(pLabel->contentsRect().width());
    }
    for (QPushButton* pButton : pWindow->findChildren<QPushButton*>())
        if (pButton->isVisible() && !pButton->text().isEmpty() && pButton->sizeHint().width() > pButton->width())
            cut << QStringLiteral("%1: button \"%2\" needs %3 px, has %4")
                       .arg(strWhere, pButton->text())
                       .arg(pButton->sizeHint().width())
                       .arg(pButton->width());
    for (QTabBar* pBar : pWindow->findChildren<QTabBar*>())
        for (int t = 0; pBar->isVisible() && t < pBar->count(); ++t)
            if (pBar->fontMetrics().horizontalAdvance(pBar->tabText(t)) > pBar->tabRect(t).width())
                cut << QStringLiteral("%1: tab \"%2\"").arg(strWhere, pBar->tabText(t));
}
}

class TestPersonLanguage : public HostPersonTest
{
    Q_OBJECT
private slots:
    void everyWordTheHostShowsIsInTheChosenLanguage();

};

void TestPersonLanguage::everyWordTheHostShowsIsInTheChosenLanguage()
{
    CHostWindow host;
    QVERIFY(Start(host, QRect(60, 60, 700, 520)));
    // Two saves: the second keeps a backup, which the Restore dialog lists.
    host.Session().SaveParameters();
    host.Session().SaveParameters();
    // The panel's rows from before the choice keep the words they were written in.
    QTreeWidget* pRows = host.Activity()->findChild<QTreeWidget*>("tree_activity");
    QTRY_VERIFY(pRows->topLevelItemCount() >= 2);
    QSet<QTreeWidgetItem*> before;
    for (int r = 0; r < pRows->topLevelItemCount(); ++r)
        before << pRows->topLevelItem(r);
    const auto checkNewRows = [&](QStringList& left) {
        for (int r = 0; r < pRows->topLevelItemCount(); ++r)
            if (!before.contains(pRows->topLevelItem(r)))
                Check("Activity source of " + pRows->topLevelItem(r)->text(2), pRows->topLevelItem(r)->text(1), left);
    };
    QVERIFY2(m_pSteps->ChooseInMenu(&host, "menu_view", "action_chinese", "menu_language"),
             qPrintable(m_pSteps->Error()));
    QTRY_COMPARE(CTranslator::GetInstance()->GetLanguage(), QStringLiteral("zh_CN"));
    // A save in the chosen language: the main window's report line is in it too.
    host.Session().SaveParameters();
    QStringList left;
    QStringList cut;

    // Every menu and every item in it, down through the submenus.
    Check("window title", host.windowTitle(), left);
    for (QMenu* pMenu : host.findChildren<QMenu*>()) {
        Check(pMenu->objectName(), pMenu->title(), left);
        for (QAction* pAction : pMenu->actions())
            if (!pAction->isSeparator())
                Check(pMenu->objectName() + " > " + pAction->objectName(), pAction->text(), left);
    }

    // The Activity panel, shown from its menu item when it is not shown.
    if (!host.Activity()->isVisible())
        QVERIFY2(m_pSteps->ChooseInMenu(&host, "menu_view", "action_activity"), qPrintable(m_pSteps->Error()));
    QTRY_VERIFY(host.Activity()->isVisible());
    Check("Activity title", host.Activity()->windowTitle(), left);
    Check("Activity filter", host.Activity()->findChild<QLineEdit*>("lineEdit_activityFilter")->placeholderText(), left);
    CheckButtons("Activity", host.Activity(), left);
    for (int c = 0; c < pRows->columnCount(); ++c)
        Check("Activity heading", pRows->headerItem()->text(c), left);

    // The Restore dialog, with its list of backups and one of them chosen.
    bool bRestoreSeen = false;
    m_pSteps->WhenModal<QDialog>([&](QDialog* pRestore) {
        auto* pList = pRestore->findChildren<QTreeWidget*>().value(0);
        if (pList && pList->topLevelItemCount() > 0)
            m_pInput->Click(pList->viewport()->mapToGlobal(pList->visualItemRect(pList->topLevelItem(0)).center()));
        QTest::qWait(300);
        Check("Restore title", pRestore->windowTitle(), left);
        for (QLabel* pLabel : pRestore->findChildren<QLabel*>())
            if (pLabel->isVisible())
                Check("Restore label", pLabel->text(), left);
        for (QTreeWidget* pTree : pRestore->findChildren<QTreeWidget*>()) {
            for (int c = 0; c < pTree->columnCount(); ++c)
                Check("Restore heading", pTree->headerItem()->text(c), left);
            if (pTree == pList)
                for (int r = 0; r < pTree->topLevelItemCount(); ++r)
                    Check("Restore why", pTree->topLevelItem(r)->text(1), left);
        }
        CheckButtons("Restore", pRestore, left);
        CheckWindow("Restore", pRestore, left);
        CheckWhole("Restore", pRestore, cut);
        bRestoreSeen = true;
        m_pInput->Key("Escape");
    });
    QVERIFY2(m_pSteps->ChooseInMenu(&host, "menu_file", "action_restore"), qPrintable(m_pSteps->Error()));
    QTRY_VERIFY(bRestoreSeen);
    QTRY_VERIFY(!QApplication::activeModalWidget());

    // About, with Qt's own OK button.
    bool bAboutSeen = false;
    m_pSteps->WhenModal<QMessageBox>([&](QMessageBox* pBox) {
        Check("About title", pBox->windowTitle(), left);
        Check("About", pBox->text(), left);
        CheckButtons("About", pBox, left);
        CheckWindow("About", pBox, left);
        CheckWhole("About", pBox, cut);
        bAboutSeen = true;
        m_pInput->Key("Escape");
    });
    QVERIFY2(m_pSteps->ChooseInMenu(&host, "menu_help", "action_about"), qPrintable(m_pSteps->Error()));
    QTRY_VERIFY(bAboutSeen);
    QTRY_VERIFY(!QApplication::activeModalWidget());

    // An edit, then the settings closed: the question and its four answers.
    QVERIFY(OpenSettings(host));
    CSettingsWindow* pSettings = host.Session().SettingsWindow();
    Check("settings title", pSettings->windowTitle(), left);
    CheckButtons("settings", pSettings, left);
    auto* pTabs = host.Session().Dialog()->findChild<QTabWidget*>("tabWidget");
    for (int t = 0; t < pTabs->count(); ++t)
        Check("settings tab", pTabs->tabText(t), left);
    auto* pMotor = host.Session().Dialog()->findChild<QTableWidget*>("tableWidget_motor");
    for (int r = 0; r < pMotor->rowCount(); ++r)
        Check("Motor row", pMotor->item(r, 0)->text(), left);
    // Each tab of the settings as assistive technology reads it, and the main window.
    for (int t = 0; t < pTabs->count(); ++t) {
        pTabs->setCurrentIndex(t);
        QCoreApplication::processEvents();
        CheckWindow("settings, tab " + QString::number(t), pSettings, left);
        CheckWhole("settings, tab " + QString::number(t), pSettings, cut);
    }
    pTabs->setCurrentIndex(0);
    CheckWindow("main window", &host, left);
    CheckWhole("main window", &host, cut);
    const QRect cell = pMotor->visualRect(pMotor->model()->index(6, 1));
    QVERIFY(m_pInput->Click(pMotor->viewport()->mapToGlobal(cell.center())));
    QVERIFY(m_pInput->Type("640"));
    QVERIFY(m_pInput->Key("Return"));
    QStringList answers;
    m_pSteps->WhenModal<QMessageBox>([&](QMessageBox* pBox) {
        Check("question title", pBox->windowTitle(), left);
        Check("question", pBox->text(), left);
        Check("question", pBox->informativeText(), left);
        for (QAbstractButton* pButton : pBox->buttons()) {
            answers << pButton->text();
            Check("question button", pButton->text(), left);
        }
        CheckWindow("question", pBox, left);
        CheckWhole("question", pBox, cut);
        for (QAbstractButton* pButton : pBox->buttons())
            if (pBox->buttonRole(pButton) == QMessageBox::DestructiveRole)
                m_pSteps->ClickOn(pButton);
    });
    QVERIFY(m_pInput->Key("Escape"));
    QTRY_VERIFY(!answers.isEmpty());
    QTRY_VERIFY(!host.Session().SettingsWindow());
    QVERIFY2(answers.size() >= 3, qPrintable(answers.join(" / ")));
    // What was done since the choice is in the panel, in the chosen language.
    QTRY_VERIFY(pRows->topLevelItemCount() > before.size());
    checkNewRows(left);

    QVERIFY2(left.isEmpty(), qPrintable("not in Simplified Chinese:\n" + left.join('\n')));
    QVERIFY2(cut.isEmpty(), qPrintable("cut short at the default size:\n" + cut.join('\n')));
}

FACTORYMGR_PERSON_TEST_MAIN(TestPersonLanguage)
#include "tst_personlanguage.moc"
