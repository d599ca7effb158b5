#include "ModalAnswerer.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QProgressDialog>

ModalAnswerer::ModalAnswerer(QObject* parent)
    : QObject(parent)
{
    connect(&m_timer, &QTimer::timeout, this, &ModalAnswerer::Poll);
    m_timer.start(5);
}

void ModalAnswerer::AnswerWith(const QString& strButtonText)
{
    m_strButton = strButtonText;
}

void ModalAnswerer::AnswerFileWith(const QString& strPath)
{
    m_strFile = strPath;
}

QList<ModalAnswerer::Seen> ModalAnswerer::Boxes() const
{
    return m_seen;
}

int ModalAnswerer::Count() const
{
    return int(m_seen.size());
}

void ModalAnswerer::Poll()
{
    QWidget* pModal = QApplication::activeModalWidget();
    if (!pModal || !pModal->isVisible() || qobject_cast<QProgressDialog*>(pModal))
        return;

    Seen seen;
    seen.strClass = QString::fromLatin1(pModal->metaObject()->className());
    seen.strTitle = pModal->windowTitle();
    if (auto* pBox = qobject_cast<QMessageBox*>(pModal)) {
        seen.strText = pBox->text();
        QAbstractButton* pChosen = nullptr;
        for (QAbstractButton* pButton : pBox->buttons()) {
            seen.buttons << pButton->text();
            if (!pChosen && (m_strButton.isEmpty() || pButton->text() == m_strButton))
                pChosen = pButton;
        }
        seen.strClicked = pChosen ? pChosen->text() : QString();
        m_seen << seen;
        if (pChosen)
            pChosen->click();
        else
            pBox->reject();
        return;
    }
    if (auto* pFiles = qobject_cast<QFileDialog*>(pModal)) {
        seen.strText = pFiles->nameFilters().join(";;");
        m_seen << seen;
        if (m_strFile.isEmpty()) {
            pFiles->reject();
        } else {
            pFiles->selectFile(m_strFile);
            static_cast<QDialog*>(pFiles)->accept();   // accept() is protected in QFileDialog
        }
        return;
    }
    if (auto* pDialog = qobject_cast<QDialog*>(pModal)) {
        m_seen << seen;
        pDialog->reject();
    }
}
