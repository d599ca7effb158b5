#pragma once

#include <QDialog>

// Base of the module's dialogs: a dialog window with only a close button,
// centred on the primary screen each time it is shown unless told otherwise.
class BaseDialog : public QDialog
{
    Q_OBJECT
public:
    explicit BaseDialog(QWidget* parent = nullptr);

    // The owner places the dialog itself.
    void ClearCenterOnShow();
    bool IsCenterOnShow() const;

protected:
    void showEvent(QShowEvent* event) override;

private:
    bool m_bCenterOnShow;
};
