#pragma once

#include <QString>

// Where the host keeps what it ships (resource directory) and what it writes
// per user (user data directory). Shared by every platform library.
class CHostPaths
{
public:
    // Application directory + "/../Resources", unless a host or a test has set
    // another one with SetResourceDirectory.
    static QString ResourceDirectory();
    // An empty path goes back to the application-relative default.
    static void SetResourceDirectory(const QString& strDir);

    // Per-user configuration directory + "/../<edition>/Resources", where the
    // edition is "Quorvane" for the theme of that name and "Tessiflow" for any
    // other. Created with its parents when missing; returned cleaned.
    static QString UserDataDirectory(const QString& strThemeName);
};
