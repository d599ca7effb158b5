#pragma once

class ITaskState;
class QVariant;

// The controller card of a device. The slot order is a binary contract with
// the plug-ins and is kept exactly.
class ICard
{
public:
    enum State
    {
        StateDisconnected = 0,
        StateReady = 2,            // connected and ready for every function
        StateInformationOnly = 3   // connected; only reading information is allowed
    };

    virtual ~ICard() = default;
    virtual int GetState() = 0;
    virtual ITaskState* GetTaskState() = 0;
    // Runs the named card function with an input argument; 0 is success.
    virtual int CallFunction(const char* szName, const QVariant& arg) = 0;
    // Runs the named card function that answers through inOut; 0 is success.
    virtual int QueryFunction(const char* szName, QVariant& inOut) = 0;
};
