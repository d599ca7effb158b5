#include "PluginTrace.h"

#include <mutex>
#include <string>

namespace {
std::mutex g_mutex;
std::string g_trace;
std::string g_taken;
}

void PluginTrace_Append(const char* szName)
{
    std::lock_guard<std::mutex> lock(g_mutex);
    if (!g_trace.empty())
        g_trace += ' ';
    g_trace += szName;
}

const char* PluginTrace_Take()
{
    std::lock_guard<std::mutex> lock(g_mutex);
    g_taken.swap(g_trace);
    g_trace.clear();
    return g_taken.c_str();
}
