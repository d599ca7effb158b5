// One source, several libraries: the macros say which entry points this one
// exports and what its NewInterface answers.
#include "PluginTrace.h"

#define EXPORT extern "C" __attribute__((visibility("default")))

#ifndef FRESH_INTERFACE
namespace {
int g_service = 0;   // every NewInterface of one library answers the same object
}
#endif

#ifndef NO_NEW_INTERFACE
EXPORT void* NewInterface()
{
#if defined(FRESH_INTERFACE)
    return new int(0);   // a new object each time, so records can go in any order
#elif defined(NULL_INTERFACE)
    return nullptr;
#else
    return &g_service;
#endif
}
#endif

#ifndef NO_RELEASE_INTERFACE
EXPORT void ReleaseInterface(void* pInterface)
{
#ifdef FRESH_INTERFACE
    delete static_cast<int*>(pInterface);
    PluginTrace_Append(PLUGIN_NAME);
#else
    if (pInterface == &g_service)
        PluginTrace_Append(PLUGIN_NAME);
#endif
}
#endif
