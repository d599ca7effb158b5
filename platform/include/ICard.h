#pragma once

/// \file ICard.h
/// \brief The controller card of the host's device, as the FactoryMgr plug-in calls it.

class ITaskState;
class QVariant;

/// \brief The controller card of a device.
///
/// Implemented by the host and returned by IDevice::GetCurrentCard(); the plug-in never deletes
/// it. The order of the virtual functions is a binary contract with the plug-ins and is kept
/// exactly.
///
/// The plug-in runs these card functions, by name:
/// - "GetCardInfo" (QueryFunction(), states 2 and 3), GUI thread: fills a CardInfo, when the
///   user first opens the settings dialog's System tab and after "ClearCardInfo" succeeded.
/// - "ClearCardInfo" (CallFunction(), state 2), GUI thread: clears the card's counters (the
///   System tab's Clear button).
/// - "CardUpgrade" (CallFunction(), state 2), worker thread: upgrades the mainboard firmware.
/// - "PanelUpgrade" (CallFunction(), state 2), worker thread: upgrades the panel firmware.
/// - "BacklashAdjust" (CallFunction(), state 2), worker thread: cuts the calibration job.
/// - "CurrentCardType" (QueryFunction(), any state), GUI thread: the card type, when the
///   settings dialog is made and when the user switches between one and two laser sources.
///
/// Before each of the first five the plug-in takes its device mutex and asks, in this order,
/// IDevice::GetCurrentCard(), GetState() and GetTaskState() / ITaskState::IsBusy(); it answers
/// 1001 without calling the function when there is no card or the state does not allow the
/// function, and 1005 when the card is busy. The mutex is held until the function returns.
/// "CurrentCardType" is asked without the mutex and without these checks.
///
/// The worker thread is the one of the progress dialog (ThreadDialogRun); the GUI thread waits for
/// the functions called on it, so those should answer quickly.
class ICard
{
public:
    /// \brief Values of GetState(). Any other value means the card cannot be used.
    enum State
    {
        StateDisconnected = 0,     ///< Not connected.
        StateReady = 2,            ///< Connected and ready for every function.
        StateInformationOnly = 3   ///< Connected; only reading information ("GetCardInfo") is allowed.
    };

    /// \brief Destroys the card. The plug-in never does.
    virtual ~ICard() = default;

    /// \brief The card's state.
    ///
    /// Asked under the plug-in's device mutex before every card function except
    /// "CurrentCardType", on the GUI thread or the progress dialog's worker thread.
    ///
    /// \return A State value, or any other value for a card that cannot be used.
    virtual int GetState() = 0;

    /// \brief What the card is doing.
    /// \return The card's task state, still the host's; null counts as not busy.
    virtual ITaskState* GetTaskState() = 0;

    /// \brief Runs the named card function with an input argument.
    ///
    /// Functions and arguments: "ClearCardInfo" with an empty QVariant; "CardUpgrade" with the
    /// path of the mainboard firmware file the user chose (*.upd) as a QString; "PanelUpgrade"
    /// with the path of the panel firmware file (*.hmt or *.hmi) as a QString; "BacklashAdjust"
    /// with the path of the job file made by the host's pattern converter as a QString (the
    /// plug-in deletes the file when the call returns). The upgrades and "BacklashAdjust" may take
    /// as long as the work does; the user waits behind the progress dialog.
    ///
    /// \param szName The function's name, NUL-terminated.
    /// \param arg The argument; valid during the call only.
    /// \return 0 on success, otherwise the host's result code.
    virtual int CallFunction(const char* szName, const QVariant& arg) = 0;

    /// \brief Runs the named card function that answers through \p inOut.
    ///
    /// Functions: "GetCardInfo": \p inOut holds a void* (QVariant::fromValue<void*>()) that
    /// points at a zero-filled CardInfo; fill that record. "CurrentCardType": \p inOut is an
    /// empty QVariant; set it to the card type as an int. With 8 the settings dialog's Laser tab
    /// speaks of laser sources, with any other value of laser tubes. The plug-in ignores the
    /// result code of "CurrentCardType".
    ///
    /// \param szName The function's name, NUL-terminated.
    /// \param inOut The argument in, the answer out; valid during the call only.
    /// \return 0 on success, otherwise the host's result code.
    virtual int QueryFunction(const char* szName, QVariant& inOut) = 0;
};
