#include "XServer.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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
    return true;
}

XServer::~XServer()
{
    if (m_pid > 0) {
        kill(m_pid, SIGTERM);
        int nStatus = 0;
        waitpid(m_pid, &nStatus, 0);
    }
}
