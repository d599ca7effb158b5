#include "HostPersonTest.h"

#include "CHostSession.h"
#include "CHostWindow.h"
#include "CSettingsWindow.h"
#include "CSimController.h"

#include <QDir>
#include <QPushButton>
#include <QStandardPaths>
#include <QtTest>

void HostPersonTest::initTestCase()
{
    m_pInput = std::make_unique<XInput>();
    m_pSteps = std::make_unique<PersonSteps>(*m_pInput);
    QVERIFY2(m_pInput->Error().isEmpty(), qPrintable(m_pInput->Error()));
    QVERIFY2(m_pInput->Drain(), qPrintable(m_pInput->Error()));
}

void HostPersonTest::init()
{
    QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/Quorvane").removeRecursively();
}

void HostPersonTest::cleanup()
{
    QVERIFY2(m_pSteps->DropPending(), qPrintable(m_pSteps->Error()));
}

void HostPersonTest::cleanupTestCase()
{
    // The probe window goes before the application's windows are swept up.
    m_pSteps.reset();
    m_pInput.reset();
}

bool HostPersonTest::Start(CHostWindow& host, const QRect& geometry)
{
    if (!host.Start())
        return false;
    host.Session().Simulator()->SetTaskDuration(0);
    if (geometry.isValid())
        host.setGeometry(geometry);
    host.show();
    host.activateWindow();
    return QTest::qWaitForWindowActive(&host) && m_pInput->Drain();
}

bool HostPersonTest::OpenSettings(CHostWindow& host)
{
    if (!m_pSteps->ClickOn(host.findChild<QPushButton*>("pushButton_openSettings")))
        return false;
    return QTest::qWaitFor([&] { return host.Session().SettingsWindow() && host.Session().SettingsWindow()->isActiveWindow(); },
                           10000);
}
