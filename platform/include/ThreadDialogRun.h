#pragma once

#include "IThreadDialogOwner.h"

#include <QString>

// Runs pOwner->RunTask(nTask, pParam) on a worker thread and returns its
// result. While it runs, a modal progress dialog with strText and a busy
// indicator is shown and the GUI thread keeps processing events. nReserved
// must be 0. Call it from the GUI thread. A null owner returns -1.
int ThreadDialogRun(IThreadDialogOwner* pOwner, int nTask, void* pParam, int nReserved, const QString& strText);

// For the host's side of a running task (its device layer, on the worker
// thread): how far the task has come, from 0 to 1 (negative: not known), and
// what it is doing now. The progress dialog shows the stage under its text
// and the fraction as a percentage. Safe to call from any thread; outside a
// run it is kept for the next one's caller to read, and each run starts with
// nothing said.
void ThreadDialogReport(double dFraction, const QString& strStage);

// The last stage the host reported during the latest run, or an empty text.
QString ThreadDialogLastStage();

// For the host's side of a running task: why it failed, in words a person
// reads (the task then returns non-zero). Kept apart from the stages, so that
// whoever shows the result never takes a stage for a reason.
void ThreadDialogReportFailure(const QString& strWhy);

// Why the latest run failed, as the host said it; empty when it said nothing.
QString ThreadDialogFailure();
