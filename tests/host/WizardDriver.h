#pragma once

#include <functional>

class CHostWindow;
class QWidget;

// Runs the host's calibration and, once the wizard is the modal window (the
// host may ask something first), hands it to drive; closes it afterwards if
// drive left it open. When calibration ends without the wizard having come,
// fails the test with what the screen last showed.
class WizardDriver
{
public:
    static void InWizard(CHostWindow& host, const std::function<void(QWidget*)>& drive);
    // Cuts the square once through the wizard.
    static void CutOnce(CHostWindow& host);
};
