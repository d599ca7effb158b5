#pragma once

#include <QtGlobal>

// An object whose long tasks ThreadDialogRun runs on a worker thread while a
// modal progress dialog keeps the user waiting. The slot order is a binary
// contract with the plug-ins and is kept exactly.
class IThreadDialogOwner
{
public:
    virtual ~IThreadDialogOwner() = default;

    // Runs task nTask with pParam on the worker thread; the result is what
    // ThreadDialogRun returns.
    virtual int RunTask(int nTask, void* pParam) = 0;
    // Non-zero when the user may cancel the task: the dialog then shows a
    // Cancel button.
    virtual int IsTaskCancelable(int nTask) = 0;
    // Called on the GUI thread when the user presses Cancel; the task is
    // expected to finish early. Both values are reserved (0).
    virtual int CancelTask(int nTask, qintptr wParam, qintptr lParam) = 0;
    // Progress of the task as a fraction 0..1, asked on the GUI thread while
    // it runs; 0 or less shows a busy indicator instead of a bar.
    virtual double GetTaskProgress(int nTask) = 0;
};
