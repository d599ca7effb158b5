#pragma once

#include <QColor>
#include <QImage>
#include <QList>
#include <QPair>
#include <QRect>

class QWidget;

// What a person sees of a rectangle of the screen, read from a grab of the X
// server's screen: its colours, and where text ("ink": pixels far from the
// background colour) lies.
class CellPicture
{
public:
    // Grabs the screen under rect, given in pWidget's coordinates. Ink is
    // what differs from the background by more than nInkContrast in a
    // colour channel (greyed, disabled text needs less).
    CellPicture(QWidget* pWidget, const QRect& rect, int nInkContrast = 110);
    explicit CellPicture(const QImage& image, int nInkContrast = 110);

    const QImage& Image() const { return m_image; }
    // The share of pixels that are clearly red.
    double RedShare() const;
    // The most frequent colour.
    QColor Background() const;
    // Rows of ink, as runs [first, last] from the top; one run is one line of text.
    QList<QPair<int, int>> InkLines() const;
    // The leftmost and rightmost columns with ink, or -1.
    int InkLeft() const;
    int InkRight() const;
    // The number of ink pixels.
    int InkCount() const;

private:
    bool IsInk(QRgb pixel) const;

    QImage m_image;
    int m_nInkContrast;
    QRgb m_background;
};
