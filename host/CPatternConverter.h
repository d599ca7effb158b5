#pragma once

// The host's pattern conversion callback: turns a pattern file (.lcpx) into a
// machine job (.tl) cut at dPower percent. 0 on success, 1 when the pattern
// cannot be read, 2 when the job cannot be written.
class CPatternConverter
{
public:
    static int ConvertPattern(const char* szPatternPath, const char* szJobPath, double dPower);
};
