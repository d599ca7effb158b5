#pragma once

/// \file IDevice.h
/// \brief The host's device object, which the FactoryMgr plug-in is handed by IFactoryMgr::Init().

class ICard;
struct FactoryParams;

/// \brief The machine the host is connected to.
///
/// Implemented by the host. The plug-in keeps the pointer given to IFactoryMgr::Init() and never
/// deletes it. The order of the virtual functions is a binary contract with the plug-ins and is
/// kept exactly.
///
/// Threading: the plug-in serialises the calls it makes under its one device mutex (the two
/// parameter transfers, and each card function together with its checks), whichever thread
/// they come from. Only GetCurrentCard() and the card function "CurrentCardType" are called
/// without it, on the GUI thread. The mutex is not recursive: if an implementation runs an event
/// loop while it works (a progress dialog, for example), nothing handled in that loop may start
/// another device operation of the plug-in, or the GUI thread waits for the mutex forever.
class IDevice
{
public:
    /// \brief Destroys the device. The plug-in never does.
    virtual ~IDevice() = default;

    /// \brief The connected card, or null when none is connected.
    ///
    /// Asked anew for every card function (under the plug-in's device mutex, on the GUI thread
    /// or on the progress dialog's worker thread) and when the settings dialog fills its Laser
    /// tab (GUI thread, without the mutex). The card stays the host's; the plug-in does not keep
    /// the pointer beyond the one operation.
    ///
    /// \return The card, or null: the plug-in's card functions then answer 1001.
    virtual ICard* GetCurrentCard() = 0;

    /// \brief Writes the 720-byte factory parameter record into the card.
    ///
    /// Called by IFactoryMgr::UploadParamsToDevice() on the GUI thread, under the plug-in's
    /// device mutex; the GUI thread waits until it returns.
    ///
    /// \param pParams The plug-in's own record; valid during the call only. Read it, do not
    ///        keep the pointer.
    /// \return 0 on success, otherwise the host's result code, which the plug-in passes on
    ///         unchanged.
    virtual int WriteFactoryParams(FactoryParams* pParams) = 0;

    /// \brief Fills the record from the card.
    ///
    /// Called by IFactoryMgr::ReadParamsFromDevice() and IFactoryMgr::CheckDeviceParams() on the
    /// GUI thread, under the plug-in's device mutex; the GUI thread waits until it returns.
    ///
    /// \param pParams The plug-in's own record; valid during the call only. Whatever is written
    ///        there stays in the plug-in's record, also when the call fails: fill all 720 bytes on
    ///        success and leave the record alone on failure.
    /// \return 0 on success, otherwise the host's result code, which the plug-in passes on
    ///         unchanged.
    virtual int ReadFactoryParams(FactoryParams* pParams) = 0;
};
