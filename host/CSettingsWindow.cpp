#include "CSettingsWindow.h"

#include <QCloseEvent>
#include <QDialog>
#include <QFrame>
#include <QVBoxLayout>

CSettingsWindow::CSettingsWindow(QDialog* pDialog, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_pDialog(pDialog)
{
    setObjectName(QStringLiteral("settingsWindow"));
    auto* pPage = new QWidget(this);
    pPage->setObjectName(QStringLiteral("settingsPage"));
    auto* pFrame = new QFrame(pPage);
    pFrame->setObjectName(QStringLiteral("settingsFrame"));
    (new QVBoxLayout(this))->addWidget(pPage);
    (new QVBoxLayout(pPage))->addWidget(pFrame);
    auto* pFrameLayout = new QVBoxLayout(pFrame);
    for (QLayout* pLayout : {layout(), pPage->layout(), static_cast<QLayout*>(pFrameLayout)})
        pLayout->setContentsMargins(0, 0, 0, 0);

    pDialog->setParent(pFrame, Qt::Widget);
    pFrameLayout->addWidget(pDialog);
    pDialog->show();
    setWindowTitle(pDialog->windowTitle());
    connect(pDialog, &QWidget::windowTitleChanged, this, &QWidget::setWindowTitle);
    resize(pDialog->size());
}

CSettingsWindow::~CSettingsWindow() = default;

QDialog* CSettingsWindow::Dialog() const
{
    return m_pDialog;
}

void CSettingsWindow::closeEvent(QCloseEvent* event)
{
    emit Closed();
    QWidget::closeEvent(event);
}
