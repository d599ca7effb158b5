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

private:
    bool SaveRefusedUpload(const QString& strPath);

    CHostWindow& m_window;
};
