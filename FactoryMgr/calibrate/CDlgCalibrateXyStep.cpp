#include "CDlgCalibrateXyStep.h"

#include "CCutPatternTask.h"
#include "CFactoryMgrApp.h"
#include "CSettingsFile.h"
#include "Wording.h"
#include "HostRules.h"
#include "ILog.h"
#include "ScreenFit.h"
#include "ThreadDialogRun.h"
#include "ui_CDlgCalibrateXyStep.h"

#include <QDir>
#include <QPointer>
#include <QPushButton>
#include <QSettings>

#include <cmath>

namespace {
const char* const kGroup = "DLG_CALIBRATE_XY_STEP";
const char* const kPowerKey = "CUTTING_POWER";
const double kDefaultPower = 10.0;
const double kTarget = 150.0;   // the standard pattern's side, mm

}

CDlgCalibrateXyStep::CDlgCalibrateXyStep(QWidget* parent)
    : BaseDialog(parent)
    , ui(new Ui::CDlgCalibrateXyStep)
    , m_dTargetWidth(kTarget)
    , m_dTargetHeight(kTarget)
    , m_dMeasuredWidth(kTarget)
    , m_dMeasuredHeight(kTarget)
    , m_dCuttingPower(kDefaultPower)
{
    ui->setupUi(this);
    // Return presses no button here: a stray Return on the first page must
    // not start a laser cut. Each button takes a click, or Space when it has
    // the focus.
    for (QPushButton* pButton : {ui->pushButton_cutting, ui->pushButton_nextStep, ui->pushButton_prevStep, ui->pushButton_ok})
        pButton->setAutoDefault(false);
    RetranslateTexts();
    ScreenFit::Fit(this);
}

CDlgCalibrateXyStep::~CDlgCalibrateXyStep()
{
    CSettingsFile file(UserParamPath());
    if (QSettings* pSettings = file.Writable()) {
        pSettings->beginGroup(kGroup);
        pSettings->setValue(kPowerKey, m_dCuttingPower);
        pSettings->endGroup();
    } else {
        ILog_WriteLogF(1, "The cutting power is not kept: %s", qUtf8Printable(file.Problem()));
    }
    delete ui;
}

QString CDlgCalibrateXyStep::UserParamPath()
{
    const QString strData = CFactoryMgrApp::GetUserDataDirectory() + "/Data";
    QDir().mkpath(strData);
    return strData + "/UserParam.ini";
}

QString CDlgCalibrateXyStep::JobPath()
{
    return QDir::cleanPath(CFactoryMgrApp::GetUserDataDirectory() + "/cache") + "/adjustpulse.tl";
}

double CDlgCalibrateXyStep::Round2(double dValue)
{
    const double dScaled = dValue * 100.0;
    // Past 2^52 a double has no hundredths left to round; not-a-number and
    // the infinities stay what they are.
    if (!(std::fabs(dScaled) < 4503599627370496.0))
        return dValue;
    return std::trunc(dScaled >= 0.0 ? dScaled + 0.5 : dScaled - 0.5) / 100.0;
}

double CDlgCalibrateXyStep::ToDisplay(double dMillimetres) const
{
    return HostRules::IsInch(CFactoryMgrApp::GetInstance()->GetUnit()) ? Round2(dMillimetres / 25.4) : Round2(dMillimetres);
}

double CDlgCalibrateXyStep::ToMillimetres(double dValue) const
{
    return HostRules::IsInch(CFactoryMgrApp::GetInstance()->GetUnit()) ? Round2(dValue * 25.4) : Round2(dValue);
}

void CDlgCalibrateXyStep::RetranslateTexts()
{
    ui->label_page1Tip1->setText(Wording("Cutting standard pattern"));
    ui->label_page2Tip1->setText(Wording("Cutting standard pattern"));
    ui->label_page1Tip2->setText(Wording("Measure standard pattern"));
    ui->label_page2Tip2->setText(Wording("Measure standard pattern"));
    // The measured fields carry the target labels too.
    ui->label_14->setText(Wording("Target width"));
    ui->label_7->setText(Wording("Target width"));
    ui->label_15->setText(Wording("Target height"));
    ui->label_8->setText(Wording("Target height"));
    ui->label_16->setText(Wording("Cutting power"));
    ui->pushButton_cutting->setText(Wording("Cutting"));
    ui->pushButton_nextStep->setText(Wording("Next step"));
    ui->pushButton_prevStep->setText(Wording("Previous step"));
    ui->pushButton_ok->setText(Wording("OK"));
}

void CDlgCalibrateXyStep::showEvent(QShowEvent* event)
{
    ui->stackedWidget->setCurrentIndex(0);
    // Through the display unit and back: in inch 150 mm becomes 150.11 mm.
    m_dMeasuredHeight = ToMillimetres(ToDisplay(kTarget));
    m_dMeasuredWidth = ToMillimetres(ToDisplay(kTarget));
    m_dTargetHeight = ToMillimetres(ToDisplay(kTarget));
    m_dTargetWidth = ToMillimetres(ToDisplay(kTarget));
    // The stored power is a text in the user's file: one that is no number
    // counts as the default, any other is held to the spin box's range before
    // it becomes a whole number.
    CSettingsFile file(UserParamPath());
    if (!file.Problem().isEmpty())
        ILog_WriteLogF(1, "%s", qUtf8Printable(file.Problem()));
    double dStored =
        file.Settings().value(QStringLiteral("%1/%2").arg(kGroup, kPowerKey), kDefaultPower).toDouble();
    if (std::isnan(dStored))
        dStored = kDefaultPower;
    dStored = qBound(double(ui->spinBox_power->minimum()), dStored, double(ui->spinBox_power->maximum()));

    setWindowTitle(Wording("Calibrate XY step"));
    ui->lineEdit_targetW->setText(QString::number(ToDisplay(m_dTargetWidth), 'g', 6));
    ui->lineEdit_targetH->setText(QString::number(ToDisplay(m_dTargetHeight), 'g', 6));
    ui->spinBox_power->setValue(int(dStored));
    // The power is what the spin box shows, also when it already showed it.
    m_dCuttingPower = ui->spinBox_power->value();
    ui->doubleSpinBox_measureW->setValue(ToDisplay(m_dMeasuredWidth));
    ui->doubleSpinBox_measureH->setValue(ToDisplay(m_dMeasuredHeight));
    ui->lineEdit_targetW->setEnabled(false);
    ui->lineEdit_targetH->setEnabled(false);

    const QString strUnit = HostRules::IsInch(CFactoryMgrApp::GetInstance()->GetUnit()) ? Wording("inch") : Wording("mm");
    for (QLabel* pUnit : {ui->label_unit1_1, ui->label_unit1_2, ui->label_unit2_1, ui->label_unit2_2})
        pUnit->setText(strUnit);
    BaseDialog::showEvent(event);
}

void CDlgCalibrateXyStep::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange) {
        RetranslateTexts();
        return;
    }
    QWidget::changeEvent(event);
}

void CDlgCalibrateXyStep::on_pushButton_nextStep_clicked()
{
    ui->stackedWidget->setCurrentIndex(1);
}

void CDlgCalibrateXyStep::on_pushButton_prevStep_clicked()
{
    ui->stackedWidget->setCurrentIndex(0);
}

void CDlgCalibrateXyStep::on_pushButton_cutting_clicked()
{
    // Run on a task of this frame, at a copy of the power: the host may delete
    // the wizard while the progress loop runs, and the loop keeps asking its owner.
    CCutPatternTask task(m_dCuttingPower);
    const int nResult = ThreadDialogRun(&task, TaskCut, nullptr, 0, Wording("Processing..."));
    // Every result goes to the host, success too; presenting it is the host's business.
    CFactoryMgrApp::GetInstance()->ReportError(nResult);
}

void CDlgCalibrateXyStep::on_pushButton_ok_clicked()
{
    // Whoever takes the ratios may run a loop of its own, in which the host
    // may delete the wizard.
    const QPointer<CDlgCalibrateXyStep> pAlive(this);
    emit CalibrateXyStepSignal(m_dMeasuredWidth / m_dTargetWidth, m_dMeasuredHeight / m_dTargetHeight);
    if (pAlive)
        close();
}

void CDlgCalibrateXyStep::on_spinBox_power_valueChanged(int iValue)
{
    m_dCuttingPower = double(iValue);
}

void CDlgCalibrateXyStep::on_doubleSpinBox_measureW_valueChanged(double dValue)
{
    m_dMeasuredWidth = ToMillimetres(dValue);
}

void CDlgCalibrateXyStep::on_doubleSpinBox_measureH_valueChanged(double dValue)
{
    m_dMeasuredHeight = ToMillimetres(dValue);
}

int CDlgCalibrateXyStep::RunTask(int nTask, void* pParam)
{
    if (nTask != TaskCut)
        return -1;
    return CCutPatternTask::Cut(pParam ? *static_cast<const double*>(pParam) : kDefaultPower);
}
