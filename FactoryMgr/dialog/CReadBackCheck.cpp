#include "CReadBackCheck.h"

#include "DlgFactoryMgr.h"
#include "FactoryParams.h"

namespace {
const int kNoMark = -1;

class PutBacker
{
public:
    PutBacker(DlgFactoryMgr& dialog)
        : m_dialog(dialog)
    {
    }

    // shown: the dialog's copy of the field, which takes the put-back value
    // too, so that the dialog, the record and a save from the dialog agree.
    template <typename T>
    void Field(T& field, T& shown, const T& before, const T& snapshot, quint32 nFlag, int nKind, int nRow,
               int nColumn)
    {
        if (field == before)
            return;
        field = snapshot;
        shown = snapshot;
        m_nFlags |= nFlag;
        if (nRow != kNoMark)
            m_dialog.MarkInvalidCell(nKind, nRow, nColumn, double(field));
    }

    quint32 Flags() const { return m_nFlags; }

private:
    DlgFactoryMgr& m_dialog;
    quint32 m_nFlags = 0;
};

template <typename Section, typename T>
struct Entry
{
    T Section::*pField;
    int nRow;
};

// The enumerated and boolean motor fields are not checked.
const Entry<MotorParams, double> kMotor[] = {
    {&MotorParams::pulsePerMm, 5},     {&MotorParams::size, 6},          {&MotorParams::zeroOffset, 7},
    {&MotorParams::speedJump, 9},      {&MotorParams::speedMax, 10},     {&MotorParams::accMax, 11},
    {&MotorParams::accUrgentStop, 12}, {&MotorParams::accKey, 13},       {&MotorParams::speedKeyJump, 14}};

// A laser field is marked on the row that shows it, found by the row's
// identifier. With the section's reserved word 0 the two pre-ignition
// fields are put back without a mark.
struct LaserEntry
{
    double LaserParams::*pField;
    int nRowId;
    bool bMarkedWhenPlain;
};
const LaserEntry kLaser[] = {{&LaserParams::powerMin, 3, true},         {&LaserParams::powerMax, 4, true},
                             {&LaserParams::powerReduction, 5, true},   {&LaserParams::frequency, 6, true},
                             {&LaserParams::burningFrequency, 7, false}, {&LaserParams::burningWidth, 8, false}};

const Entry<SpeedSection, double> kSpeed[] = {
    {&SpeedSection::cutSpeedSpace, 0},     {&SpeedSection::cutSpeedCorner, 1},   {&SpeedSection::cutAccSpace, 2},
    {&SpeedSection::cutAccCorner, 3},      {&SpeedSection::cutAccWork, 4},       {&SpeedSection::sweepSpeedXStart, 5},
    {&SpeedSection::sweepSpeedYStart, 6},  {&SpeedSection::sweepSpeedNewline, 7}, {&SpeedSection::sweepAccX, 8},
    {&SpeedSection::sweepAccY, 9},         {&SpeedSection::panelSpeedReset, 10}};
}

quint32 CReadBackCheck::PutBack(FactoryParams& record, const FactoryParams& before, const FactoryParams& snapshot,
                                DlgFactoryMgr& dialog)
{
    PutBacker check(dialog);
    FactoryParams& shown = dialog.DisplayParams();
    for (int a = 0; a < 4; ++a)
        for (const auto& entry : kMotor)
            check.Field(record.motor[a].*entry.pField, shown.motor[a].*entry.pField, before.motor[a].*entry.pField,
                        snapshot.motor[a].*entry.pField, FlagMotor, KindMotor, entry.nRow, a + 1);

    const bool bReserved = before.laser.reserved != 0;
    for (int k = 0; k < 2; ++k)
        for (const LaserEntry& entry : kLaser)
            check.Field(record.laser.lasers[k].*entry.pField, shown.laser.lasers[k].*entry.pField,
                        before.laser.lasers[k].*entry.pField, snapshot.laser.lasers[k].*entry.pField, FlagLaser,
                        KindLaser, bReserved || entry.bMarkedWhenPlain ? dialog.LaserRowOfId(entry.nRowId) : kNoMark,
                        k + 1);

    // A laser value put back without a mark still shows in its cell, if the
    // table has one; the refill keeps the marks.
    if (!bReserved && (check.Flags() & FlagLaser))
        dialog.RefillLaserColumns();

    for (const auto& entry : kSpeed)
        check.Field(record.speed.*entry.pField, shown.speed.*entry.pField, before.speed.*entry.pField,
                    snapshot.speed.*entry.pField, FlagSpeed, KindSpeed, entry.nRow, 1);

    MachineSection& m = record.machine;
    MachineSection& d = shown.machine;
    const MachineSection& b = before.machine;
    const MachineSection& s = snapshot.machine;
    check.Field(m.motiveMode, d.motiveMode, b.motiveMode, s.motiveMode, FlagMachine, KindMachine, 0, 1);
    check.Field(m.laserSpace, d.laserSpace, b.laserSpace, s.laserSpace, FlagMachine, KindMachine, 1, 1);
    check.Field(m.machineZero, d.machineZero, b.machineZero, s.machineZero, FlagMachine, KindMachine, 2, 1);
    check.Field(m.openProject, d.openProject, b.openProject, s.openProject, FlagMachine, KindMachine, 3, 1);
    check.Field(m.blow, d.blow, b.blow, s.blow, FlagMachine, KindMachine, 4, 1);
    check.Field(m.machineType, d.machineType, b.machineType, s.machineType, FlagMachine, KindMachine, kNoMark, 1);
    check.Field(m.feedMode, d.feedMode, b.feedMode, s.feedMode, FlagMachine, KindMachine, kNoMark, 1);
    check.Field(m.outageDelay, d.outageDelay, b.outageDelay, s.outageDelay, FlagMachine, KindMachine, kNoMark, 1);
    return check.Flags();
}
