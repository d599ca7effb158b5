#pragma once

#include <QDialog>
#include <QGuiApplication>
#include <QRect>
#include <QScreen>
#include <QWidget>

namespace ScreenFit {

// Room a window manager's frame takes around a window: its title bar and borders.
constexpr int kFrameWidth = 16;
constexpr int kFrameHeight = 48;

// Keeps a top-level window, frame included, within the available area of
// the screen it opens on, at any scale factor: no larger than that area
// (down to the window's own minimum) and placed within it. A window that
// nothing has placed yet is centred on the screen, so that a window manager
// never cascades a large one past the screen's edge; a dialog is left to be
// centred over its parent when it shows, which keeps it on the screen too.
inline void Fit(QWidget* pWindow)
{
    QScreen* pScreen = pWindow->screen() ? pWindow->screen() : QGuiApplication::primaryScreen();
    if (!pScreen)
        return;
    const QRect area = pScreen->availableGeometry();
    const QSize frame(kFrameWidth, kFrameHeight);
    const QSize room = area.size() - frame;
    if (pWindow->width() > room.width() || pWindow->height() > room.height())
        pWindow->resize(pWindow->size().boundedTo(room).expandedTo(pWindow->minimumSize()));
    const bool bPlaced = pWindow->testAttribute(Qt::WA_Moved);
    if (!bPlaced && qobject_cast<QDialog*>(pWindow))
        return;
    QRect placed(pWindow->pos(), pWindow->size() + frame);
    if (!bPlaced)
        placed.moveCenter(area.center());
    if (placed.right() > area.right())
        placed.moveRight(area.right());
    if (placed.bottom() > area.bottom())
        placed.moveBottom(area.bottom());
    placed.moveLeft(qMax(placed.left(), area.left()));
    placed.moveTop(qMax(placed.top(), area.top()));
    if (!bPlaced || placed.topLeft() != pWindow->pos())
        pWindow->move(placed.topLeft());
}

// The room a window takes on the screen, frame included.
inline QSize Framed(const QSize& size)
{
    return size + QSize(kFrameWidth, kFrameHeight);
}

}
