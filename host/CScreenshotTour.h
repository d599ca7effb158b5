#pragma once

#include <QString>

class CHostWindow;

// The unattended tour behind --screenshot: the main window, every tab of the
// settings dialog, the Motor tab after an Upload the controller partly
// refused and the main window's account of it, the activity panel after a
// fault, the calibration wizard's pages and the restore dialog, each
// rendered to a PNG file.
class CScreenshotTour
{
public:
    explicit CScreenshotTour(CHostWindow& window);

    // True when every picture was written.
    bool Save(const QString& strDir);

    // Nobody sits at an unattended run: from now on, a message box that opens
    // (the tour never opens one) ends the process with exit code 2 and what
    // the box said on the standard error, and a run still going after
    // nSeconds ends with exit code 3.
    static void EndOnAnyQuestion(int nSeconds);

private:
    bool SaveRefusedUpload(const QString& strPath);
    // The Motor tab after a value typed beyond what the table takes: the
    // keyboard's frame on the next cell and the line under the table saying why.
    bool SaveTypedBeyondACap(const QString& strPath);

    CHostWindow& m_window;
};
