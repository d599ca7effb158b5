#include "WizardDriver.h"

#include "CHostSession.h"
#include "CHostWindow.h"
#include "ModalAnswerer.h"

#include <QApplication>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

void WizardDriver::InWizard(CHostWindow& host, const std::function<void(QWidget*)>& drive)
{
    QTimer poll;
    bool bDriven = false;
    QString strLastSeen;
    QObject::connect(&poll, &QTimer::timeout, &host, [&] {
        strLastSeen = ModalAnswerer::DescribeScreen();
        QWidget* pWizard = QApplication::activeModalWidget();
        if (!pWizard || pWizard->objectName() != "CDlgCalibrateXyStep" || !pWizard->isVisible())
            return;
        poll.stop();
        bDriven = true;
        drive(pWizard);
        if (pWizard->isVisible())
            pWizard->close();
    });
    poll.start(10);
    host.Session().CalibrateXyStep();
    if (!bDriven)
        QTest::qFail(qPrintable("the calibration wizard never came; the screen showed: " + strLastSeen), __FILE__,
                     __LINE__);
}

void WizardDriver::CutOnce(CHostWindow& host)
{
    InWizard(host, [](QWidget* pWizard) { pWizard->findChild<QPushButton*>("pushButton_cutting")->click(); });
}
