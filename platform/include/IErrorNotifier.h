#pragma once

// Tells the user what a result code means.
class IErrorNotifier
{
public:
    virtual ~IErrorNotifier() = default;
    // nReserved is 0.
    virtual int ShowErrorCode(int nCode, int nReserved) = 0;
};
