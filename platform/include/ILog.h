#pragma once

// The host's log. Level 0 records user actions, level 1 results; higher
// levels are free for the host. Both calls are thread-safe.
extern "C" {
// printf-style; the formatted text becomes one line.
void ILog_WriteLogF(int nLevel, const char* szFormat, ...) __attribute__((format(printf, 2, 3)));
// A plain line of 8-bit text.
void ILog_WriteLog(int nLevel, const char* szText);
}
