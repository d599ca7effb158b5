#include "PersonSteps.h"

#include "XInput.h"

#include <QAbstractButton>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QtTest>

PersonSteps::PersonSteps(XInput& input)
    : m_input(input)
{
}

QString PersonSteps::Error() const
{
    QString strError = m_strError.isEmpty() ? m_input.Error() : m_strError;
    // What was up then, for a message.
    if (QWidget* pModal = QApplication::activeModalWidget())
        strError += QStringLiteral("; a %1 \"%2\" was up").arg(QString::fromLatin1(pModal->metaObject()->className()),
                                                               pModal->windowTitle());
    if (QWidget* pPopup = QApplication::activePopupWidget())
        strError += QStringLiteral("; a %1 popup was open").arg(QString::fromLatin1(pPopup->metaObject()->className()));
    return strError;
}

bool PersonSteps::ClickOn(QWidget* pWidget)
{
    if (!pWidget || !pWidget->isVisible()) {
        m_strError = QStringLiteral("nothing to click: %1").arg(pWidget ? pWidget->objectName() + " is hidden" : "no widget");
        return false;
    }
    return m_input.Click(pWidget->mapToGlobal(pWidget->rect().center()));
}

bool PersonSteps::ChooseInMenu(QMainWindow* pWindow, const QString& strMenu, const QString& strAction,
                               const QString& strSubmenu)
{
    auto* pMenu = pWindow->findChild<QMenu*>(strMenu);
    if (!pMenu) {
        m_strError = QStringLiteral("no menu %1").arg(strMenu);
        return false;
    }
    QMenuBar* pBar = pWindow->menuBar();
    if (!m_input.Click(pBar->mapToGlobal(pBar->actionGeometry(pMenu->menuAction()).center())))
        return false;
    if (!QTest::qWaitFor([&] { return pMenu->isVisible(); }, 5000)) {
        m_strError = QStringLiteral("the menu %1 did not open").arg(strMenu);
        return false;
    }
    QMenu* pIn = pMenu;
    if (!strSubmenu.isEmpty()) {
        auto* pSub = pMenu->findChild<QMenu*>(strSubmenu);
        if (!pSub || !m_input.MoveTo(pMenu->mapToGlobal(pMenu->actionGeometry(pSub->menuAction()).center()))
            || !QTest::qWaitFor([&] { return pSub->isVisible(); }, 5000)) {
            m_strError = QStringLiteral("the submenu %1 did not open").arg(strSubmenu);
            return false;
        }
        pIn = pSub;
    }
    QAction* pAction = nullptr;
    for (QAction* pEach : pIn->actions())
        if (pEach->objectName() == strAction)
            pAction = pEach;
    if (!pAction) {
        m_strError = QStringLiteral("no item %1 in %2").arg(strAction, pIn->objectName());
        return false;
    }
    return m_input.Click(pIn->mapToGlobal(pIn->actionGeometry(pAction).center()));
}

bool PersonSteps::DropPending()
{
    const QList<QTimer*> pending = findChildren<QTimer*>(QStringLiteral("personStep"), Qt::FindDirectChildrenOnly);
    for (QTimer* pPoll : pending)
        delete pPoll;
    if (!pending.isEmpty())
        m_strError = QStringLiteral("%1 step(s) waited for a box or dialog that never came").arg(pending.size());
    return pending.isEmpty();
}

void PersonSteps::AnswerNextBox(const QString& strButton, QString* pSeen)
{
    WhenModal<QMessageBox>([this, strButton, pSeen](QMessageBox* pBox) {
        *pSeen = pBox->windowTitle() + ": " + pBox->text();
        for (QAbstractButton* pButton : pBox->buttons())
            if (pButton->text() == strButton) {
                ClickOn(pButton);
                return;
            }
        m_strError = QStringLiteral("no button %1 in the box: %2").arg(strButton, *pSeen);
        m_input.Key(QStringLiteral("Escape"));
    });
}
