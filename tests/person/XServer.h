#pragma once

#include <QString>

#include <sys/types.h>

// A private X server (Xvfb) on a display number it picks itself, so that
// tests running side by side never share one. Started before the
// application object exists; stopped when this object goes.
class XServer
{
public:
    XServer() = default;
    ~XServer();
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    // Starts Xvfb with one screen of the given size at 96 dpi and waits until
    // it accepts clients. False, with the reason in Error(), when it cannot.
    bool Start(int nWidth, int nHeight);
    // ":<number>", for DISPLAY.
    QString Display() const { return m_strDisplay; }
    QString Error() const { return m_strError; }

private:
    pid_t m_pid = -1;
    QString m_strDisplay;
    QString m_strError;
};
