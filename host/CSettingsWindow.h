#pragma once

#include <QPointer>
#include <QWidget>

class QDialog;

// The window in which the host shows the plug-in's settings dialog: the dialog
// sits three widget levels deep (window, page, frame), so that Escape in the
// dialog closes this window too.
class CSettingsWindow : public QWidget
{
    Q_OBJECT
public:
    explicit CSettingsWindow(QDialog* pDialog, QWidget* parent = nullptr);
    ~CSettingsWindow() override;

    QDialog* Dialog() const;

signals:
    void Closed();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QPointer<QDialog> m_pDialog;
};
