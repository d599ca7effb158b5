#pragma once

#include <QProgressDialog>

// The progress dialog of ThreadDialogRun. The user cannot close it while the
// task runs (a firmware upgrade must not be walked away from); only its
// Cancel button, when the task offers one, asks the task to stop.
class CTaskProgressDialog : public QProgressDialog
{
    Q_OBJECT
public:
    explicit CTaskProgressDialog(const QString& strText, bool bCancelable, QWidget* parent = nullptr);

    // Lets the dialog close once the task has ended.
    void SetFinished();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    bool m_bFinished = false;
};
