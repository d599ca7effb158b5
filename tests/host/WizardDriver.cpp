#include "WizardDriver.h"

#include "CHostWindow.h"

#include <QApplication>
#include <QPushButton>
#include <QTimer>

void WizardDriver::InWizard(CHostWindow& host, const std::function<void(QWidget*)>& drive)
{
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &host, [&] {
        QWidget* pWizard = QApplication::activeModalWidget();
        if (!pWizard || pWizard->objectName() != "CDlgCalibrateXyStep" || !pWizard->isVisible())
            return;
        poll.stop();
        drive(pWizard);
        if (pWizard->isVisible())
            pWizard->close();
    });
    poll.start(10);
    host.CalibrateXyStep();
}

void WizardDriver::CutOnce(CHostWindow& host)
{
    InWizard(host, [](QWidget* pWizard) { pWizard->findChild<QPushButton*>("pushButton_cutting")->click(); });
}
