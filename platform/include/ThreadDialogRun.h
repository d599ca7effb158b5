#pragma once

/// \file ThreadDialogRun.h
/// \brief The host platform's progress dialog for a long task (libThreadDialog).

#include "IThreadDialogOwner.h"

#include <QString>

/// \brief Runs a task on a worker thread behind a modal progress dialog and returns its result.
///
/// Runs pOwner->RunTask(nTask, pParam) on a worker thread. While it runs, a modal progress
/// dialog with \p strText and a busy indicator is shown and the GUI thread keeps processing
/// events. Without a QApplication (a console program) the task still runs on its own thread and
/// nothing is shown. Call it from the GUI thread.
/// \param pOwner The task's owner; null returns -1.
/// \param nTask The task's number, handed to the owner.
/// \param pParam The task's parameter, handed to the owner.
/// \param nReserved Must be 0.
/// \param strText The dialog's text.
/// \return What RunTask() returned.
int ThreadDialogRun(IThreadDialogOwner* pOwner, int nTask, void* pParam, int nReserved, const QString& strText);

/// \brief For the host's side of a running task: how far it has come and what it is doing now.
///
/// The progress dialog shows the stage under its text and the fraction as a percentage. Safe to
/// call from any thread, typically the worker. Each run starts with nothing said.
/// \param dFraction How far the task has come, from 0 to 1; negative when not known.
/// \param strStage What it is doing now, in words a person reads.
void ThreadDialogReport(double dFraction, const QString& strStage);

/// \brief What the host said last about the latest run's stage.
/// \return The last stage reported during the latest run, or an empty text.
QString ThreadDialogLastStage();

/// \brief For the host's side of a running task: why it failed, in words a person reads.
///
/// The task then returns non-zero. Kept apart from the stages, so that whoever shows the result
/// never takes a stage for a reason. Safe to call from any thread.
/// \param strWhy Why the task failed.
void ThreadDialogReportFailure(const QString& strWhy);

/// \brief Why the latest run failed, as the host said it.
/// \return The reason reported during the latest run; empty when the host said nothing.
QString ThreadDialogFailure();
