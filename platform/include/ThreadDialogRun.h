#pragma once

#include "IThreadDialogOwner.h"

#include <QString>

// Runs pOwner->RunTask(nTask, pParam) on a worker thread and returns its
// result. While it runs, a modal progress dialog with strText and a busy
// indicator is shown and the GUI thread keeps processing events. nReserved
// must be 0. Call it from the GUI thread. A null owner returns -1.
int ThreadDialogRun(IThreadDialogOwner* pOwner, int nTask, void* pParam, int nReserved, const QString& strText);
