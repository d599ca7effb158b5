#pragma once

#include <QObject>
#include <QPoint>
#include <QString>
#include <QStringList>

#include <memory>

class QWidget;

// Input as a person gives it: pointer moves, clicks, wheel steps and keys
// that the X server itself delivers (XTest, through xdotool), to whatever
// window and widget is under the pointer or holds the keyboard focus. Never
// a call on a widget.
class XInput : public QObject
{
    Q_OBJECT
public:
    XInput();
    ~XInput() override;

    // Points are global, in screen pixels.
    bool Click(const QPoint& at);
    bool DoubleClick(const QPoint& at);
    // Wheel steps at a point: positive away from the person (up), negative towards.
    bool Wheel(const QPoint& at, int nSteps);
    bool MoveTo(const QPoint& at);
    // Presses the left button at from, moves to to with it held, releases:
    // a window dragged by its title bar, say.
    bool Drag(const QPoint& from, const QPoint& to);
    // Types text on the keyboard.
    bool Type(const QString& strText);
    // Presses and releases keys named as X keysyms ("Return", "Escape", "Tab").
    bool Key(const QString& strKeys);
    // Returns once the application has handled every input event sent so
    // far: the pointer is moved onto a small window of the test's own, and
    // that window's motion event, which the X server queues behind every
    // earlier event, is waited for. The pointer is then over that window.
    // While a popup holds the pointer it returns at once.
    bool Drain();
    QString Error() const { return m_strError; }

protected:
    bool eventFilter(QObject* pWatched, QEvent* event) override;

private:
    bool Run(const QStringList& arguments);
    // A point of the application as the X server's pixels, for xdotool.
    QStringList Native(const QPoint& at) const;

    std::unique_ptr<QWidget> m_pProbe;
    QPoint m_lastProbeMove{-1, -1};
    int m_nDrains = 0;
    int m_nCompletedDrains = 0;
    QString m_strError;
};
