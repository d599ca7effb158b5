#include "CellPicture.h"

#include <QGuiApplication>
#include <QHash>
#include <QScreen>
#include <QWidget>

#include <algorithm>
#include <cstdlib>

CellPicture::CellPicture(QWidget* pWidget, const QRect& rect, int nInkContrast)
    : CellPicture(QGuiApplication::primaryScreen()
                      ->grabWindow(0, pWidget->mapToGlobal(rect.topLeft()).x(),
                                   pWidget->mapToGlobal(rect.topLeft()).y(), rect.width(), rect.height())
                      .toImage(),
                  nInkContrast)
{
}

CellPicture::CellPicture(const QImage& image, int nInkContrast)
    : m_image(image.convertToFormat(QImage::Format_RGB32))
    , m_nInkContrast(nInkContrast)
    , m_background(Background().rgb())
{
}

QColor CellPicture::Background() const
{
    QHash<QRgb, int> counts;
    for (int y = 0; y < m_image.height(); ++y)
        for (int x = 0; x < m_image.width(); ++x)
            ++counts[m_image.pixel(x, y) & 0xffffff];
    QRgb most = 0;
    int nMost = -1;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it)
        if (it.value() > nMost) {
            most = it.key();
            nMost = it.value();
        }
    return QColor(most);
}

bool CellPicture::IsInk(QRgb pixel) const
{
    const int nDiff = std::max({std::abs(qRed(pixel) - qRed(m_background)),
                                std::abs(qGreen(pixel) - qGreen(m_background)),
                                std::abs(qBlue(pixel) - qBlue(m_background))});
    return nDiff > m_nInkContrast;
}

double CellPicture::RedShare() const
{
    if (m_image.isNull())
        return 0.0;
    int nRed = 0;
    for (int y = 0; y < m_image.height(); ++y)
        for (int x = 0; x < m_image.width(); ++x) {
            const QRgb p = m_image.pixel(x, y);
            // Pure red on a number cell, a lighter red on a list's button.
            if (qRed(p) >= 200 && qRed(p) - std::max(qGreen(p), qBlue(p)) >= 90)
                ++nRed;
        }
    return double(nRed) / double(m_image.width() * m_image.height());
}

QList<QPair<int, int>> CellPicture::InkLines() const
{
    QList<QPair<int, int>> lines;
    for (int y = 0; y < m_image.height(); ++y) {
        bool bInk = false;
        for (int x = 0; x < m_image.width() && !bInk; ++x)
            bInk = IsInk(m_image.pixel(x, y));
        if (!bInk)
            continue;
        if (!lines.isEmpty() && lines.last().second == y - 1)
            lines.last().second = y;
        else
            lines.append({y, y});
    }
    return lines;
}

int CellPicture::InkLeft() const
{
    for (int x = 0; x < m_image.width(); ++x)
        for (int y = 0; y < m_image.height(); ++y)
            if (IsInk(m_image.pixel(x, y)))
                return x;
    return -1;
}

int CellPicture::InkRight() const
{
    for (int x = m_image.width() - 1; x >= 0; --x)
        for (int y = 0; y < m_image.height(); ++y)
            if (IsInk(m_image.pixel(x, y)))
                return x;
    return -1;
}

int CellPicture::InkCount() const
{
    int nInk = 0;
    for (int y = 0; y < m_image.height(); ++y)
        for (int x = 0; x < m_image.width(); ++x)
            nInk += IsInk(m_image.pixel(x, y)) ? 1 : 0;
    return nInk;
}
