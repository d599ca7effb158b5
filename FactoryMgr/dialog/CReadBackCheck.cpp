#include "CReadBackCheck.h"

#include "DlgFactoryMgr.h"
#include "FactoryParamKeys.h"
#include "FactoryParams.h"
#include "IFactoryMgr.h"

namespace {
quint32 FlagOf(FactoryParamKey::Section section)
{
    switch (section) {
    case FactoryParamKey::SectionMotor: return IFactoryMgr::CheckFlagMotor;
    case FactoryParamKey::SectionLaser: return IFactoryMgr::CheckFlagLaser;
    case FactoryParamKey::SectionSpeed: return IFactoryMgr::CheckFlagSpeed;
    case FactoryParamKey::SectionMachine: return IFactoryMgr::CheckFlagMachine;
    }
    return 0;
}
}

quint32 CReadBackCheck::PutBack(FactoryParams& record, const FactoryParams& before, const FactoryParams& snapshot,
                                DlgFactoryMgr& dialog)
{
    // The dialog's copy of a field takes the put-back value too, so that the
    // dialog, the record and a save from the dialog agree: marking the cell
    // stores it there, or else it is stored here.
    FactoryParams& shown = dialog.DisplayParams();
    const bool bShifted = before.laser.reserved != 0;
    quint32 nFlags = 0;
    for (const FactoryParamKey::Section section : {FactoryParamKey::SectionMotor, FactoryParamKey::SectionLaser,
                                                   FactoryParamKey::SectionSpeed, FactoryParamKey::SectionMachine}) {
        for (const FactoryParamKey& key : FactoryParamKey::All()) {
            if (key.section != section || key.check == FactoryParamKey::CheckNone || key.Same(record, before))
                continue;
            const double dPutBack = key.Value(snapshot);
            key.SetValue(record, dPutBack);
            nFlags |= FlagOf(section);
            const bool bMarked = key.check == FactoryParamKey::CheckMarked
                || (key.check == FactoryParamKey::CheckMarkedWhenShifted && bShifted);
            const int nRow = !bMarked                           ? -1
                : key.table == FactoryParamKey::TableLaser ? dialog.LaserRowOfId(key.nRow)
                                                           : key.nRow;
            if (nRow >= 0)
                dialog.MarkInvalidCell(key.table, nRow, key.Column(), dPutBack);
            else
                key.SetValue(shown, dPutBack);
        }
        // A laser value put back without a mark still shows in its cell, if
        // the table has one; the refill keeps the marks.
        if (section == FactoryParamKey::SectionLaser && !bShifted && (nFlags & IFactoryMgr::CheckFlagLaser))
            dialog.RefillLaserColumns();
    }
    return nFlags;
}
