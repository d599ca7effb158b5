#pragma once

#include "IThreadDialogOwner.h"

// An owner whose tasks run to their end once started: none can be cancelled,
// and none reports how far it is, so the progress dialog shows a busy
// indicator. The owners of the plug-in and of the host share these answers.
class CBusyTaskOwner : public IThreadDialogOwner
{
public:
    int IsTaskCancelable(int) override { return 0; }
    int CancelTask(int, qintptr, qintptr) override { return 0; }
    double GetTaskProgress(int) override { return 0.0; }
};
