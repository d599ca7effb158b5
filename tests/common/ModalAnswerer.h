#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QTimer>

class QFileDialog;

// Answers the modal boxes and file dialogs that code under test opens, and
// records what they showed. While it exists it watches for the active modal
// widget:
// - a message box is answered with the next button named by AnswerInTurn, or
//   else with the button named by AnswerWith;
// - a file dialog is given the file named by AnswerFileWith and accepted, or
//   cancelled after CancelFileDialogs.
// What it was not told to expect (a box without the named button, a box or a
// file dialog with no answer set, any other modal dialog) fails the running
// test with the title, text and buttons on the screen, and is closed so that
// the test goes on to its end instead of hanging.
class ModalAnswerer : public QObject
{
    Q_OBJECT
public:
    struct Seen
    {
        QString strClass;      // "QMessageBox", "QFileDialog" or the dialog's class
        QString strName;       // its object name
        QString strTitle;
        QString strText;       // message box text, or the file dialog's name filters
        QString strInformative;   // a message box's informative text
        int nWidth = 0;           // how wide the window was shown
        QStringList buttons;   // message box button texts
        QString strClicked;
    };

    explicit ModalAnswerer(QObject* parent = nullptr);

    // Every box is answered with this button, unless AnswerInTurn names one for it.
    void AnswerWith(const QString& strButtonText);
    // The next boxes are answered with these buttons, one each, in order.
    void AnswerInTurn(const QStringList& buttons);
    // True when every button named by AnswerInTurn has been clicked.
    bool AllAnswered() const;
    void AnswerFileWith(const QString& strPath);
    void CancelFileDialogs();
    // Dialogs of this class are the test's own to drive (a wizard, say).
    void LeaveAlone(const QString& strClass);

    QList<Seen> Boxes() const;
    int Count() const;
    // Everything seen, one line each, for a failure message.
    QString Described() const;

    // Puts strPath into a file dialog as a person types it into the file
    // name field, whatever holds the keyboard focus, and checks that the
    // dialog would choose exactly that file. False, with the reason in pWhy,
    // when it would not.
    static bool ChooseFile(QFileDialog* pFiles, const QString& strPath, QString* pWhy);
    // ChooseFile, then accept; when the dialog does not take the file, fails
    // the running test with the reason and cancels the dialog.
    static bool AnswerFileDialog(QFileDialog* pFiles, const QString& strPath);
    static QString Describe(const Seen& seen);
    // Every visible window, one line each (class, title, a box's text and
    // buttons), for a helper that did not find what it was waiting for.
    static QString DescribeScreen();

private:
    void Poll();
    void Fail(const Seen& seen, const QString& strWhy);

    QTimer m_timer;
    QString m_strButton;
    QStringList m_leftAlone;
    QStringList m_inTurn;
    QString m_strFile;
    bool m_bCancelFiles = false;
    QPointer<QWidget> m_pAccepting;   // a file dialog whose accept is on its way
    QList<Seen> m_seen;
};
