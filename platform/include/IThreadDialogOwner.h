#pragma once

/// \file IThreadDialogOwner.h
/// \brief The interface through which the progress dialog runner ThreadDialogRun drives a long task.

#include <QtGlobal>

/// \brief An object whose long tasks ThreadDialogRun runs on a worker thread.
///
/// While the task runs, a modal progress dialog keeps the user waiting and the GUI thread keeps
/// processing events. ThreadDialogRun belongs to the host platform; the plug-in calls it and
/// implements this interface in three objects:
/// - its application object: task 0 upgrades the panel ("PanelUpgrade"), task 1 the mainboard
///   ("CardUpgrade"); the parameter points to the firmware file's path, a QString;
/// - the calibration wizard: task 0 cuts the standard pattern ("BacklashAdjust"); the parameter
///   points to the cutting power, a double;
/// - the settings dialog: task 0 reads the dialog's working record from the device, task 1 writes
///   it; the plug-in itself never starts these two.
///
/// The order of the virtual functions is a binary contract with the plug-ins and is kept exactly.
class IThreadDialogOwner
{
public:
    /// \brief Destroys the owner.
    virtual ~IThreadDialogOwner() = default;

    /// \brief Runs task \p nTask on the worker thread.
    ///
    /// The only function called off the GUI thread; it must not touch widgets. The plug-in's
    /// owners answer an unknown task with 0 (the wizard with -1).
    ///
    /// \param nTask The task's number, as given to ThreadDialogRun.
    /// \param pParam The parameter given to ThreadDialogRun; the caller keeps it alive until the
    ///        task has finished.
    /// \return The task's result, which ThreadDialogRun returns.
    virtual int RunTask(int nTask, void* pParam) = 0;

    /// \brief Whether the user may cancel task \p nTask.
    /// \param nTask The task's number.
    /// \return Non-zero to show a Cancel button in the progress dialog. The plug-in's owners
    ///         answer 0.
    virtual int IsTaskCancelable(int nTask) = 0;

    /// \brief Asks task \p nTask to finish early.
    ///
    /// Called on the GUI thread when the user presses Cancel, while RunTask() still runs.
    ///
    /// \param nTask The task's number.
    /// \param wParam Reserved, 0.
    /// \param lParam Reserved, 0.
    /// \return Not used by ThreadDialogRun. The plug-in's owners answer 0.
    virtual int CancelTask(int nTask, qintptr wParam, qintptr lParam) = 0;

    /// \brief Progress of task \p nTask, asked on the GUI thread while it runs.
    /// \param nTask The task's number.
    /// \return A fraction from 0 to 1; 0 or less shows a busy indicator instead of a bar. The
    ///         plug-in's owners answer 0.
    virtual double GetTaskProgress(int nTask) = 0;
};
