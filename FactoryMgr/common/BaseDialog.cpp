#include "BaseDialog.h"

#include <QGuiApplication>
#include <QScreen>

BaseDialog::BaseDialog(QWidget* parent)
    : QDialog(parent)
{
    setWindowFlags(Qt::Dialog | Qt::WindowCloseButtonHint);
    m_bCenterOnShow = true;
}

void BaseDialog::ClearCenterOnShow()
{
    m_bCenterOnShow = false;
}

bool BaseDialog::IsCenterOnShow() const
{
    return m_bCenterOnShow;
}

void BaseDialog::showEvent(QShowEvent* event)
{
    if (m_bCenterOnShow) {
        if (const QScreen* pScreen = QGuiApplication::primaryScreen()) {
            // Only the size of the available area counts, not where it starts.
            const QRect available = pScreen->availableGeometry();
            move((available.width() - width()) / 2, (available.height() - height()) / 2);
        }
    }
    QDialog::showEvent(event);
}
