#pragma once

#include <QPointer>
#include <QWidget>

class QDialog;
class QFrame;
class QLabel;
class QPushButton;

// The window in which the host shows the plug-in's settings dialog: the dialog
// sits three widget levels deep (window, page, frame), as a real host embeds
// it. Under the dialog, a report strip says what the last action started
// from this window did, where the person is looking, and offers a choice
// when one is to be made. The window opens where the person left it.
class CSettingsWindow : public QWidget
{
    Q_OBJECT
public:
    explicit CSettingsWindow(QDialog* pDialog, QWidget* parent = nullptr);
    ~CSettingsWindow() override;

    QDialog* Dialog() const;

    // Shows strText in the report strip; with strFirst (and strSecond), one
    // or two buttons under it, whose click is told by Chosen(0) or Chosen(1).
    void ShowReport(const QString& strText, const QString& strFirst = QString(), const QString& strSecond = QString());
    QString ReportText() const;
    // Takes the choice buttons away, the text stays.
    void EndChoice();

signals:
    void Closed();
    void Chosen(int nChoice);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QPointer<QDialog> m_pDialog;
    QFrame* m_pStrip;
    QLabel* m_pReport;
    QPushButton* m_pFirst;
    QPushButton* m_pSecond;
};
