#pragma once

// Shared by the test plug-ins and the tests that load them: each release
// appends the plug-in's name, so a test can see what was released in which order.
extern "C" {
__attribute__((visibility("default"))) void PluginTrace_Append(const char* szName);
// The names released so far, separated by spaces; clears the trace.
__attribute__((visibility("default"))) const char* PluginTrace_Take();
}
