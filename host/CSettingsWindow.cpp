#include "CSettingsWindow.h"

#include "CHostSettings.h"
#include "ScreenFit.h"

#include <QCloseEvent>
#include <QDialog>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
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
    auto* pWindowLayout = new QVBoxLayout(this);
    pWindowLayout->addWidget(pPage, 1);
    (new QVBoxLayout(pPage))->addWidget(pFrame);
    auto* pFrameLayout = new QVBoxLayout(pFrame);
    for (QLayout* pLayout : {layout(), pPage->layout(), static_cast<QLayout*>(pFrameLayout)})
        pLayout->setContentsMargins(0, 0, 0, 0);

    // The report strip, under the dialog.
    m_pStrip = new QFrame(this);
    m_pStrip->setObjectName(QStringLiteral("frame_report"));
    m_pStrip->setFrameShape(QFrame::StyledPanel);
    auto* pStripLayout = new QHBoxLayout(m_pStrip);
    m_pReport = new QLabel(m_pStrip);
    m_pReport->setObjectName(QStringLiteral("label_settingsReport"));
    m_pReport->setWordWrap(true);
    m_pReport->setTextFormat(Qt::PlainText);
    m_pReport->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_pFirst = new QPushButton(m_pStrip);
    m_pFirst->setObjectName(QStringLiteral("pushButton_reportFirst"));
    m_pSecond = new QPushButton(m_pStrip);
    m_pSecond->setObjectName(QStringLiteral("pushButton_reportSecond"));
    pStripLayout->addWidget(m_pReport, 1);
    pStripLayout->addWidget(m_pFirst);
    pStripLayout->addWidget(m_pSecond);
    m_pFirst->hide();
    m_pSecond->hide();
    m_pStrip->hide();
    pWindowLayout->addWidget(m_pStrip);
    connect(m_pFirst, &QPushButton::clicked, this, [this] { emit Chosen(0); });
    connect(m_pSecond, &QPushButton::clicked, this, [this] { emit Chosen(1); });

    pDialog->setParent(pFrame, Qt::Widget);
    pFrameLayout->addWidget(pDialog);
    pDialog->show();
    setWindowTitle(pDialog->windowTitle());
    connect(pDialog, &QWidget::windowTitleChanged, this, &QWidget::setWindowTitle);
    resize(pDialog->size());
    // Where the person left it last time.
    restoreGeometry(CHostSettings::Geometry(QStringLiteral("settings")));
    ScreenFit::Fit(this);
}

CSettingsWindow::~CSettingsWindow()
{
    CHostSettings::SetGeometry(QStringLiteral("settings"), saveGeometry());
}

QDialog* CSettingsWindow::Dialog() const
{
    return m_pDialog;
}

void CSettingsWindow::ShowReport(const QString& strText, const QString& strFirst, const QString& strSecond)
{
    m_pReport->setText(strText);
    m_pFirst->setText(strFirst);
    m_pSecond->setText(strSecond);
    m_pFirst->setVisible(!strFirst.isEmpty());
    m_pSecond->setVisible(!strSecond.isEmpty());
    m_pStrip->setVisible(!strText.isEmpty());
}

QString CSettingsWindow::ReportText() const
{
    return m_pStrip->isVisible() ? m_pReport->text() : QString();
}

void CSettingsWindow::EndChoice()
{
    m_pFirst->hide();
    m_pSecond->hide();
}

void CSettingsWindow::closeEvent(QCloseEvent* event)
{
    emit Closed();
    QWidget::closeEvent(event);
}
