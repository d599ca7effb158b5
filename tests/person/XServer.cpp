#include "XServer.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

bool XServer::Start(int nWidth, int nHeight)
{
    // Xvfb picks a free display itself and writes its number to this pipe
    // once it accepts connections.
    int fds[2];
    if (pipe(fds) != 0) {
        m_strError = QStringLiteral("pipe failed");
        return false;
    }
    const std::string strScreen = std::to_string(nWidth) + "x" + std::to_string(nHeight) + "x24";
    const std::string strFd = std::to_string(fds[1]);
    m_pid = fork();
    if (m_pid < 0) {
        m_strError = QStringLiteral("fork failed");
        return false;
    }
    if (m_pid == 0) {
        close(fds[0]);
        // It goes when the test goes, however the test ends.
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        execlp("Xvfb", "Xvfb", "-displayfd", strFd.c_str(), "-screen", "0", strScreen.c_str(), "-dpi", "96",
               "-nolisten", "tcp", "-noreset", static_cast<char*>(nullptr));
        std::fprintf(stderr, "cannot start Xvfb: %s\n", std::strerror(errno));
        _exit(127);
    }
    close(fds[1]);
    std::string strNumber;
    char c = 0;
    while (read(fds[0], &c, 1) == 1 && c != '\n')
        strNumber += c;
    close(fds[0]);
    if (strNumber.empty()) {
        m_strError = QStringLiteral("Xvfb did not start (scripts/deps installs the package xvfb)");
        return false;
    }
    m_strDisplay = QStringLiteral(":") + QString::fromStdString(strNumber);
    return StartWindowManager();
}

namespace {
// Runs a program to its end with DISPLAY set; its exit status, and what it
// wrote to standard output in pOutput.
int RunOnDisplay(const std::string& strDisplay, const char* const* argv, std::string* pOutput)
{
    int fds[2];
    if (pipe(fds) != 0)
        return -1;
    const pid_t pid = fork();
    if (pid < 0)
        return -1;
    if (pid == 0) {
        close(fds[0]);
        dup2(fds[1], STDOUT_FILENO);
        setenv("DISPLAY", strDisplay.c_str(), 1);
        execvp(argv[0], const_cast<char* const*>(argv));
        _exit(127);
    }
    close(fds[1]);
    char buffer[256];
    ssize_t nRead = 0;
    while ((nRead = read(fds[0], buffer, sizeof(buffer))) > 0)
        pOutput->append(buffer, size_t(nRead));
    close(fds[0]);
    int nStatus = 0;
    waitpid(pid, &nStatus, 0);
    return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -1;
}
}

bool XServer::StartWindowManager()
{
    const std::string strDisplay = m_strDisplay.toStdString();
    m_wmPid = fork();
    if (m_wmPid < 0) {
        m_strError = QStringLiteral("fork failed");
        return false;
    }
    if (m_wmPid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        setenv("DISPLAY", strDisplay.c_str(), 1);
        // Its output would mix with the test's.
        const int nNull = open("/dev/null", O_WRONLY);
        if (nNull >= 0) {
            dup2(nNull, STDOUT_FILENO);
            dup2(nNull, STDERR_FILENO);
        }
        execlp("openbox", "openbox", "--sm-disable", static_cast<char*>(nullptr));
        _exit(127);
    }
    // A window manager that manages the screen names its check window on the
    // root window; until then, windows would be placed and focused without it.
    // Openbox names it early in its start, and its theme last: a window mapped
    // in between was seen never to be shown.
    const char* const argv[] = {"xprop", "-root", "_NET_SUPPORTING_WM_CHECK", "_OB_THEME", nullptr};
    for (int nTry = 0; nTry < 200; ++nTry) {
        std::string strOutput;
        if (RunOnDisplay(strDisplay, argv, &strOutput) == 0 && strOutput.find("window id") != std::string::npos
            && strOutput.find("_OB_THEME(UTF8_STRING) =") != std::string::npos)
            return true;
        int nStatus = 0;
        if (waitpid(m_wmPid, &nStatus, WNOHANG) == m_wmPid) {
            m_wmPid = -1;
            m_strError = QStringLiteral("the window manager openbox ended at its start (scripts/deps installs openbox)");
            return false;
        }
        usleep(50 * 1000);
    }
    m_strError = QStringLiteral("the window manager openbox did not take the screen within 10 s");
    return false;
}

XServer::~XServer()
{
    for (pid_t pid : {m_wmPid, m_pid}) {
        if (pid > 0) {
            kill(pid, SIGTERM);
            int nStatus = 0;
            waitpid(pid, &nStatus, 0);
        }
    }
}
