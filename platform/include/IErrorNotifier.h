#pragma once

/// \file IErrorNotifier.h
/// \brief The host's error notifier, which the FactoryMgr plug-in is handed by IFactoryMgr::Init().

/// \brief Tells the user what a result code means.
///
/// Implemented by the host. The plug-in keeps the pointer given to IFactoryMgr::Init() and never
/// deletes it.
class IErrorNotifier
{
public:
    /// \brief Destroys the notifier. The plug-in never does.
    virtual ~IErrorNotifier() = default;

    /// \brief Tells the user what \p nCode means.
    ///
    /// Called on the GUI thread: by the settings dialog when "ClearCardInfo" fails, and by the
    /// calibration wizard after every cut, with 0 when the cut succeeded. The codes are those
    /// of the card functions, the plug-in's 1001 (no card, or its state does not allow the
    /// function), 1005 (the card is busy) and 11 (no calibration job: the pattern file is missing
    /// or the host's pattern converter made no job file). It may show a modal box.
    ///
    /// \param nCode The result code; 0 means success.
    /// \param nReserved Always 0.
    /// \return Ignored by the plug-in.
    virtual int ShowErrorCode(int nCode, int nReserved) = 0;
};
