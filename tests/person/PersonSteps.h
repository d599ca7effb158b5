#pragma once

#include <QApplication>
#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>

class QMainWindow;
class QWidget;
class XInput;

// What a person does with the host's windows, through XInput alone: clicks
// on widgets and on menu items, and steps taken as soon as a modal box or
// dialog is up (from inside whatever event loop runs then). Each returns
// false when the screen did not go as expected; Error() says what was there.
class PersonSteps : public QObject
{
    Q_OBJECT
public:
    explicit PersonSteps(XInput& input);

    bool ClickOn(QWidget* pWidget);
    // Clicks the menu strMenu in pWindow's menu bar, then its item strAction
    // (object names); with strSubmenu, the item strAction of that submenu.
    bool ChooseInMenu(QMainWindow* pWindow, const QString& strMenu, const QString& strAction,
                      const QString& strSubmenu = QString());
    // Runs step once, as soon as a visible, active modal widget of class T shows.
    template <typename T>
    void WhenModal(const std::function<void(T*)>& step)
    {
        auto* pPoll = new QTimer(this);
        pPoll->setObjectName(QStringLiteral("personStep"));
        connect(pPoll, &QTimer::timeout, this, [pPoll, step] {
            auto* pModal = qobject_cast<T*>(QApplication::activeModalWidget());
            if (!pModal || !pModal->isVisible() || !pModal->isActiveWindow())
                return;
            pPoll->stop();
            pPoll->setObjectName(QString());   // taken: no longer pending
            pPoll->deleteLater();
            step(pModal);
        });
        pPoll->start(20);
    }
    // When the next message box shows, keeps its title and text in pSeen
    // ("title: text") and clicks its button strButton; a box without it is
    // an error, and is closed with Escape.
    void AnswerNextBox(const QString& strButton, QString* pSeen);
    QString Error() const;
    // At the end of a test: steps still waiting for their modal widget are
    // dropped (they would act in the next test), and reported as an error.
    bool DropPending();

private:
    XInput& m_input;
    QString m_strError;
};
