#include "ModalAnswerer.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressDialog>
#include <QtTest>

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

void ModalAnswerer::AnswerInTurn(const QStringList& buttons)
{
    m_inTurn = buttons;
}

bool ModalAnswerer::AllAnswered() const
{
    return m_inTurn.isEmpty();
}

void ModalAnswerer::AnswerFileWith(const QString& strPath)
{
    m_strFile = strPath;
    m_bCancelFiles = false;
}

void ModalAnswerer::CancelFileDialogs()
{
    m_strFile.clear();
    m_bCancelFiles = true;
}

void ModalAnswerer::LeaveAlone(const QString& strClass)
{
    m_leftAlone << strClass;
}

QList<ModalAnswerer::Seen> ModalAnswerer::Boxes() const
{
    return m_seen;
}

int ModalAnswerer::Count() const
{
    return int(m_seen.size());
}

QString ModalAnswerer::Describe(const Seen& seen)
{
    QString strLine = QStringLiteral("%1 \"%2\": \"%3\"").arg(seen.strClass, seen.strTitle, seen.strText);
    if (!seen.buttons.isEmpty())
        strLine += QStringLiteral(" [%1]").arg(seen.buttons.join(QStringLiteral("] [")));
    if (!seen.strClicked.isEmpty())
        strLine += QStringLiteral(" answered %1").arg(seen.strClicked);
    return strLine;
}

QString ModalAnswerer::DescribeScreen()
{
    QStringList lines;
    for (QWidget* pWindow : QApplication::topLevelWidgets()) {
        if (!pWindow->isVisible())
            continue;
        Seen seen;
        seen.strClass = QString::fromLatin1(pWindow->metaObject()->className());
        seen.strTitle = pWindow->windowTitle();
        if (auto* pBox = qobject_cast<QMessageBox*>(pWindow)) {
            seen.strText = pBox->text();
            for (QAbstractButton* pButton : pBox->buttons())
                seen.buttons << pButton->text();
        }
        lines << Describe(seen);
    }
    return lines.isEmpty() ? QStringLiteral("no window") : lines.join(QStringLiteral("; "));
}

QString ModalAnswerer::Described() const
{
    QStringList lines;
    for (const Seen& seen : m_seen)
        lines << Describe(seen);
    return lines.join('\n');
}

void ModalAnswerer::Fail(const Seen& seen, const QString& strWhy)
{
    const QString strMessage = QStringLiteral("%1 on the screen: %2").arg(strWhy, Describe(seen));
    QTest::qFail(qPrintable(strMessage), __FILE__, __LINE__);
}

bool ModalAnswerer::ChooseFile(QFileDialog* pFiles, const QString& strPath, QString* pWhy)
{
    // selectFile() leaves the file name field alone while that field has the
    // keyboard focus, and accept() goes by the field: so the name goes into
    // the field itself, as a person types it there.
    auto* pName = pFiles->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    if (!pName) {
        *pWhy = QStringLiteral("the file dialog has no file name field");
        return false;
    }
    pName->setText(strPath);
    // A name without a suffix gets the dialog's default suffix, if it has one.
    QString strWanted = QFileInfo(strPath).absoluteFilePath();
    if (!pFiles->defaultSuffix().isEmpty() && QFileInfo(strPath).suffix().isEmpty())
        strWanted += "." + pFiles->defaultSuffix();
    const QStringList chosen = pFiles->selectedFiles();
    if (chosen != QStringList{strWanted}) {
        *pWhy = QStringLiteral("the file dialog would choose [%1], not %2").arg(chosen.join(", "), strWanted);
        return false;
    }
    return true;
}

bool ModalAnswerer::AnswerFileDialog(QFileDialog* pFiles, const QString& strPath)
{
    QString strWhy;
    if (!ChooseFile(pFiles, strPath, &strWhy)) {
        QTest::qFail(qPrintable(strWhy), __FILE__, __LINE__);
        pFiles->reject();
        return false;
    }
    static_cast<QDialog*>(pFiles)->accept();   // accept() is protected in QFileDialog
    return true;
}

void ModalAnswerer::Poll()
{
    QWidget* pModal = QApplication::activeModalWidget();
    if (!pModal || !pModal->isVisible() || qobject_cast<QProgressDialog*>(pModal) || pModal == m_pAccepting)
        return;

    Seen seen;
    seen.strClass = QString::fromLatin1(pModal->metaObject()->className());
    if (m_leftAlone.contains(seen.strClass))
        return;
    seen.strName = pModal->objectName();
    seen.strTitle = pModal->windowTitle();
    seen.nWidth = pModal->width();
    if (auto* pBox = qobject_cast<QMessageBox*>(pModal)) {
        seen.strText = pBox->text();
        seen.strInformative = pBox->informativeText();
        for (QAbstractButton* pButton : pBox->buttons())
            seen.buttons << pButton->text();
        const QString strWanted = m_inTurn.isEmpty() ? m_strButton : m_inTurn.takeFirst();
        QAbstractButton* pChosen = nullptr;
        for (QAbstractButton* pButton : pBox->buttons())
            if (!pChosen && pButton->text() == strWanted)
                pChosen = pButton;
        seen.strClicked = pChosen ? pChosen->text() : QString();
        m_seen << seen;
        if (pChosen) {
            pChosen->click();
            return;
        }
        Fail(seen, strWanted.isEmpty() ? QStringLiteral("a box came that the test has no answer for")
                                       : QStringLiteral("no button \"%1\"").arg(strWanted));
        pBox->reject();
        return;
    }
    if (auto* pFiles = qobject_cast<QFileDialog*>(pModal)) {
        seen.strText = pFiles->nameFilters().join(";;");
        m_seen << seen;
        if (m_bCancelFiles) {
            pFiles->reject();
            return;
        }
        QString strWhy = QStringLiteral("a file dialog came that the test has no file for");
        if (!m_strFile.isEmpty() && ChooseFile(pFiles, m_strFile, &strWhy)) {
            // Later, outside this poll: accepting may ask a question of its
            // own ("replace it?"), which a later poll answers.
            m_pAccepting = pFiles;
            QTimer::singleShot(0, this, [this, seen] {
                const QPointer<QWidget> pFiles = m_pAccepting;
                if (!pFiles)
                    return;
                static_cast<QDialog*>(pFiles.data())->accept();   // accept() is protected in QFileDialog
                m_pAccepting = nullptr;
                if (pFiles && pFiles->isVisible()) {
                    Fail(seen, QStringLiteral("the file dialog stayed open after it was given %1").arg(m_strFile));
                    static_cast<QDialog*>(pFiles.data())->reject();
                }
            });
            return;
        }
        Fail(seen, strWhy);
        pFiles->reject();
        return;
    }
    if (auto* pDialog = qobject_cast<QDialog*>(pModal)) {
        m_seen << seen;
        Fail(seen, QStringLiteral("a dialog came that the test does not expect"));
        pDialog->reject();
    }
}
