#pragma once

#include "PersonSteps.h"
#include "XInput.h"

#include <QObject>
#include <QRect>

#include <memory>

class CHostWindow;

// What the person tests of the reference host share: input that the X server
// delivers, the steps a person takes, a fresh user configuration for every
// test, and the host's windows opened as a person opens them. A test class
// derives from it and adds its test functions.
class HostPersonTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

protected:
    // Starts host on the screen (at geometry, when one is given), its main
    // window active, the simulated controller answering at once.
    bool Start(CHostWindow& host, const QRect& geometry = QRect());
    // Opens the settings with a click on the main window's button.
    bool OpenSettings(CHostWindow& host);

    std::unique_ptr<XInput> m_pInput;
    std::unique_ptr<PersonSteps> m_pSteps;
};
