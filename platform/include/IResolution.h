#pragma once

// The sibling plug-in "Resolution": scales lengths designed for a 96 DPI
// screen to the screen the application runs on. Loaded by name at run time
// (libResolution), created and destroyed through its exported
// "NewInterface" / "ReleaseInterface". The slot order is a binary contract.
class IResolution
{
public:
    virtual ~IResolution() = default;
    // Logical DPI of the primary screen (96 when there is no screen).
    virtual double GetLogicalDpi() = 0;
    // Logical DPI over 96.
    virtual double GetScaleFactor() = 0;
    // A length in design pixels, scaled for the primary screen.
    virtual double Scale(double dLength) = 0;
};
