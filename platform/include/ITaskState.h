#pragma once

// What a card is doing right now.
class ITaskState
{
public:
    virtual ~ITaskState() = default;
    // Non-zero while the card is busy with a job.
    virtual int IsBusy() = 0;
};
