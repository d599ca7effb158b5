// One source, several libraries: the macros say which entry points this one
// exports and what its NewInterface answers.
#include "PluginTrace.h"

#define EXPORT extern "C" __attribute__((visibility("default")))

namespace {
int g_service = 0;   // every NewInterface of one library answers the same object
}

#ifndef NO_NEW_INTERFACE
EXPORT void* NewInterface()
{
#ifdef NULL_INTERFACE
    return nullptr;
#else
    return &g_service;
#endif
}
#endif

#ifndef NO_RELEASE_INTERFACE
EXPORT void ReleaseInterface(void* pInterface)
{
    if (pInterface == &g_service)
        PluginTrace_Append(PLUGIN_NAME);
}
#endif
