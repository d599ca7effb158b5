#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

// Answers the modal boxes and file dialogs that code under test opens, and
// records what they showed. While it exists it watches for the active modal
// widget: a message box is answered with the button named by AnswerWith (the
// first button otherwise); a file dialog is given the file named by
// AnswerFileWith and accepted, or cancelled when no file is set.
class ModalAnswerer : public QObject
{
    Q_OBJECT
public:
    struct Seen
    {
        QString strClass;      // "QMessageBox", "QFileDialog" or the dialog's class
        QString strTitle;
        QString strText;       // message box text, or the file dialog's name filters
        QStringList buttons;   // message box button texts
        QString strClicked;
    };

    explicit ModalAnswerer(QObject* parent = nullptr);

    void AnswerWith(const QString& strButtonText);
    void AnswerFileWith(const QString& strPath);

    QList<Seen> Boxes() const;
    int Count() const;

private:
    void Poll();

    QTimer m_timer;
    QString m_strButton;
    QString m_strFile;
    QList<Seen> m_seen;
};
