#pragma once

#include "BaseDialog.h"
#include "CBusyTaskOwner.h"

namespace Ui {
class CDlgCalibrateXyStep;
}

// The two-page XY step calibration wizard: page 1 cuts the standard pattern
// through the host at a chosen power, page 2 takes the size the user measured,
// and OK hands out measured / target for X and Y. Lengths are kept in
// millimetres; only the widgets show the host's display unit.
class CDlgCalibrateXyStep : public BaseDialog, public CBusyTaskOwner
{
    Q_OBJECT
public:
    enum
    {
        TaskCut = 0,
        ResultNoJob = 11   // no pattern, or the host made no job of it
    };

    explicit CDlgCalibrateXyStep(QWidget* parent = nullptr);
    // Stores the cutting power for the next run of the program.
    ~CDlgCalibrateXyStep() override;

    // Two decimals, halves away from zero.
    static double Round2(double dValue);
    double ToDisplay(double dMillimetres) const;
    double ToMillimetres(double dValue) const;

    double TargetWidth() const { return m_dTargetWidth; }
    double TargetHeight() const { return m_dTargetHeight; }
    double MeasuredWidth() const { return m_dMeasuredWidth; }
    double MeasuredHeight() const { return m_dMeasuredHeight; }
    double CuttingPower() const { return m_dCuttingPower; }

    static QString UserParamPath();
    static QString JobPath();

    // IThreadDialogOwner: task 0 cuts the pattern, pParam pointing at the power.
    int RunTask(int nTask, void* pParam) override;

signals:
    void CalibrateXyStepSignal(double dRatioW, double dRatioH);

private slots:
    void on_pushButton_nextStep_clicked();
    void on_pushButton_prevStep_clicked();
    void on_pushButton_cutting_clicked();
    void on_pushButton_ok_clicked();
    void on_spinBox_power_valueChanged(int iValue);
    void on_doubleSpinBox_measureW_valueChanged(double dValue);
    void on_doubleSpinBox_measureH_valueChanged(double dValue);

protected:
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void RetranslateTexts();

    Ui::CDlgCalibrateXyStep* ui;
    double m_dTargetWidth;
    double m_dTargetHeight;
    double m_dMeasuredWidth;
    double m_dMeasuredHeight;
    double m_dCuttingPower;
};
