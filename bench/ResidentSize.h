#pragma once

#include <cstdio>
#include <unistd.h>

// The process's resident size in KiB, from /proc/self/statm; 0 if unknown.
inline long ResidentKb()
{
    long nPages = 0;
    long nResident = 0;
    if (FILE* pFile = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(pFile, "%ld %ld", &nPages, &nResident) != 2)
            nResident = 0;
        std::fclose(pFile);
    }
    return nResident * (sysconf(_SC_PAGESIZE) / 1024);
}
