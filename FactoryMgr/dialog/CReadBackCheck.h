#pragma once

#include <QtGlobal>

class DlgFactoryMgr;
struct FactoryParams;

// What the device did not keep: every field the descriptors mark as checked
// whose read-back value differs (exactly) from the value before the read is
// put back to the value the dialog had when it was opened, its section's flag
// is set, and, where the descriptor says so, its cell is marked red with the
// put-back value.
class CReadBackCheck
{
public:

    // record: as read back; before: as it was before the read; snapshot: the
    // dialog's record at its opening. Returns the flags.
    static quint32 PutBack(FactoryParams& record, const FactoryParams& before, const FactoryParams& snapshot,
                           DlgFactoryMgr& dialog);
};
