#pragma once

/// \file ITaskState.h
/// \brief What a controller card is doing, as the FactoryMgr plug-in asks it.

/// \brief What a card is doing right now.
///
/// Implemented by the host and returned by ICard::GetTaskState(); the plug-in never deletes it.
class ITaskState
{
public:
    /// \brief Destroys the task state. The plug-in never does.
    virtual ~ITaskState() = default;

    /// \brief Whether the card is busy with a job.
    ///
    /// Asked before every card function except "CurrentCardType", under the plug-in's device
    /// mutex, on the GUI thread or the progress dialog's worker thread.
    ///
    /// \return Non-zero while the card is busy with a job; the plug-in then answers 1005 without
    ///         calling the function.
    virtual int IsBusy() = 0;
};
