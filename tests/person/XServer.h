#pragma once

#include <QString>

#include <sys/types.h>

// A private X server (Xvfb) on a display number it picks itself, so that
// tests running side by side never share one, with a window manager
// (openbox) that stacks the windows, frames them and gives them the focus as
// on a desktop. Started before the application object exists; both stop
// when this object goes.
class XServer
{
public:
    XServer() = default;
    ~XServer();
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    // Starts Xvfb with one screen of the given size at 96 dpi, waits until
    // it accepts clients, then starts the window manager and waits until it
    // manages the screen. False, with the reason in Error(), when either
    // cannot.
    bool Start(int nWidth, int nHeight);
    // ":<number>", for DISPLAY.
    QString Display() const { return m_strDisplay; }
    QString Error() const { return m_strError; }

private:
    bool StartWindowManager();

    pid_t m_pid = -1;
    pid_t m_wmPid = -1;
    QString m_strDisplay;
    QString m_strError;
};
