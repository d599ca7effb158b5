#include "CTaskProgressDialog.h"

#include <QCloseEvent>
#include <QKeyEvent>

CTaskProgressDialog::CTaskProgressDialog(const QString& strText, bool bCancelable, QWidget* parent)
    : QProgressDialog(strText, QString(), 0, 0, parent)
{
    setObjectName(QStringLiteral("threadDialogProgress"));
    setWindowTitle(QStringLiteral("Quorvane"));
    setWindowModality(Qt::ApplicationModal);
    setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint);
    setAutoClose(false);
    setAutoReset(false);
    setMinimumDuration(0);
    if (bCancelable)
        setCancelButtonText(tr("Cancel"));
    else
        setCancelButton(nullptr);
}

void CTaskProgressDialog::SetFinished()
{
    m_bFinished = true;
}

void CTaskProgressDialog::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && !m_bFinished) {
        event->accept();
        return;
    }
    QProgressDialog::keyPressEvent(event);
}

void CTaskProgressDialog::closeEvent(QCloseEvent* event)
{
    if (!m_bFinished) {
        event->ignore();
        return;
    }
    QProgressDialog::closeEvent(event);
}
