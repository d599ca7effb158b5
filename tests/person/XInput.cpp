#include "XInput.h"

#include <QApplication>
#include <QMouseEvent>
#include <QProcess>
#include <QWidget>
#include <QtTest>

XInput::XInput()
    : m_pProbe(std::make_unique<QWidget>())
{
    // Out of the way in the screen's top left corner, above any window that
    // grows to the screen's size; it never takes the focus.
    m_pProbe->setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus
                             | Qt::WindowStaysOnTopHint);
    m_pProbe->setAttribute(Qt::WA_ShowWithoutActivating);
    m_pProbe->setMouseTracking(true);
    m_pProbe->setGeometry(0, 0, 24, 24);
    m_pProbe->installEventFilter(this);
    m_pProbe->show();
    if (!QTest::qWaitForWindowExposed(m_pProbe.get()))
        m_strError = QStringLiteral("the input probe window was not shown");
}

XInput::~XInput() = default;

bool XInput::eventFilter(QObject* pWatched, QEvent* event)
{
    if (pWatched == m_pProbe.get() && event->type() == QEvent::MouseMove)
        m_lastProbeMove = static_cast<QMouseEvent*>(event)->position().toPoint();
    return QObject::eventFilter(pWatched, event);
}

bool XInput::Run(const QStringList& arguments)
{
    QProcess tool;
    tool.setProcessChannelMode(QProcess::MergedChannels);
    tool.start(QStringLiteral("xdotool"), arguments);
    if (!tool.waitForFinished(20000) || tool.exitStatus() != QProcess::NormalExit || tool.exitCode() != 0) {
        m_strError = QStringLiteral("xdotool %1 failed: %2 %3")
                         .arg(arguments.join(' '), tool.errorString(), QString::fromLocal8Bit(tool.readAll()));
        return false;
    }
    // What the input changed is painted and on the screen before anyone looks.
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    return true;
}

QStringList XInput::Native(const QPoint& at) const
{
    // The application works in points scaled by the scale factor; the X
    // server in the screen's own pixels.
    const qreal dRatio = m_pProbe->devicePixelRatioF();
    return {QString::number(qRound(at.x() * dRatio)), QString::number(qRound(at.y() * dRatio))};
}

bool XInput::MoveTo(const QPoint& at)
{
    return Run(QStringList{"mousemove"} + Native(at));
}

bool XInput::Click(const QPoint& at)
{
    return Run(QStringList{"mousemove"} + Native(at) + QStringList{"click", "1"}) && Drain();
}

bool XInput::DoubleClick(const QPoint& at)
{
    return Run(QStringList{"mousemove"} + Native(at) + QStringList{"click", "--repeat", "2", "--delay", "40", "1"})
        && Drain();
}

bool XInput::Drag(const QPoint& from, const QPoint& to)
{
    // At a person's pace: the window manager follows a drag as the motion comes.
    const QPoint middle = (from + to) / 2;
    return Run(QStringList{"mousemove"} + Native(from) + QStringList{"mousedown", "1", "sleep", "0.1", "mousemove"}
               + Native(middle) + QStringList{"sleep", "0.1", "mousemove"} + Native(to)
               + QStringList{"sleep", "0.1", "mouseup", "1"})
        && Drain();
}

bool XInput::Wheel(const QPoint& at, int nSteps)
{
    // X buttons 4 and 5 are the wheel's steps up and down.
    return Run(QStringList{"mousemove"} + Native(at)
               + QStringList{"click", "--repeat", QString::number(qAbs(nSteps)), "--delay", "20", nSteps > 0 ? "4" : "5"})
        && Drain();
}

bool XInput::Type(const QString& strText)
{
    return Run({"type", "--delay", "10", "--", strText}) && Drain();
}

bool XInput::Key(const QString& strKeys)
{
    return Run(QStringList{"key"} + strKeys.split(QLatin1Char(' '), Qt::SkipEmptyParts)) && Drain();
}

bool XInput::Drain()
{
    // Two spots, taken in turn, so that every drain is a real move.
    const QPoint spot = (++m_nDrains % 2) ? QPoint(6, 6) : QPoint(16, 16);
    // Counted before the move: the move's own events may run a drain nested
    // in this one (a box that earlier input opened, answered from inside its
    // loop), whose pointer then stands elsewhere.
    const int nCompletedBefore = m_nCompletedDrains;
    if (!Run(QStringList{"mousemove"} + Native(spot)))
        return false;
    // An open popup (a list's choices) holds the pointer: the probe sees
    // nothing until it closes, and the caller waits on what it expects.
    // A drain nested in this one (input given from inside a modal dialog's
    // loop that this input opened) moves the pointer on before this one
    // looks; its arrival, queued behind this move, says as much.
    const auto done = [&] {
        return m_lastProbeMove == spot || m_nCompletedDrains > nCompletedBefore || QApplication::activePopupWidget();
    };
    // A loaded machine (the sanitizer build, two suites a core) can take
    // seconds to pass the X server's events on; half a minute is no input.
    if (!QTest::qWaitFor(done, 30000)) {
        m_strError = QStringLiteral("within 30 s the input probe never saw the pointer arrive at (%1, %2) after "
                                    "\"xdotool mousemove\"; its last motion was at (%3, %4), %5 of %6 drains done")
                         .arg(spot.x())
                         .arg(spot.y())
                         .arg(m_lastProbeMove.x())
                         .arg(m_lastProbeMove.y())
                         .arg(m_nCompletedDrains)
                         .arg(m_nDrains)
                   + (m_pProbe->isVisible() ? QString() : QStringLiteral("; the probe window is hidden"));
        return false;
    }
    ++m_nCompletedDrains;
    // What the input changed is painted and on the screen before anyone looks.
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    return true;
}
