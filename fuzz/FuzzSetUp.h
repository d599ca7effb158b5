#pragma once

#include <QCoreApplication>
#include <QTemporaryDir>

// What every fuzz target that touches files starts with: a folder of its own
// (the user's configuration too, when bConfigHere) and a Qt application,
// both alive until the process ends.
inline QTemporaryDir* FuzzSetUp(int* pArgc, char*** pArgv, bool bConfigHere = false)
{
    auto* pDir = new QTemporaryDir;
    if (bConfigHere)
        qputenv("XDG_CONFIG_HOME", pDir->path().toLocal8Bit());
    new QCoreApplication(*pArgc, *pArgv);
    return pDir;
}
