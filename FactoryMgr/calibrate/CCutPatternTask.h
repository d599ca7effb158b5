#pragma once

#include "CBusyTaskOwner.h"

// The cut of the standard pattern at a given power, as ThreadDialogRun runs
// it. The wizard starts it on an object of its own slot's stack frame rather
// than on itself: ThreadDialogRun keeps calling its owner while its loop
// runs, and a host may delete the wizard in that loop.
class CCutPatternTask : public CBusyTaskOwner
{
public:
    explicit CCutPatternTask(double dPower);

    // Has the host convert the pattern at dPower, sends the job to the card
    // ("BacklashAdjust") and deletes it. 11 when there is no job to send.
    static int Cut(double dPower);

    // Task 0 cuts at the power given at construction; others answer -1.
    int RunTask(int nTask, void* pParam) override;

private:
    const double m_dPower;
};
