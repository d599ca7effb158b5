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

    template <typename T>
    void Field(T& field, const T& before, const T& snapshot, quint32 nFlag, int nKind, int nRow, int nColumn)
    {
        if (field == before)
            return;
        field = snapshot;
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

// Laser rows follow the section's reserved word: the first row when it is
// set, the second when it is 0 (where the last two fields have no cell).
struct LaserEntry
{
    double LaserParams::*pField;
    int nRowReserved;
    int nRowPlain;
};
const LaserEntry kLaser[] = {{&LaserParams::powerMin, 1, 2},         {&LaserParams::powerMax, 2, 3},
                             {&LaserParams::powerReduction, 3, 4},   {&LaserParams::frequency, 4, 5},
                             {&LaserParams::burningFrequency, 5, kNoMark}, {&LaserParams::burningWidth, 6, kNoMark}};

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
    for (int a = 0; a < 4; ++a)
        for (const auto& entry : kMotor)
            check.Field(record.motor[a].*entry.pField, before.motor[a].*entry.pField, snapshot.motor[a].*entry.pField,
                        FlagMotor, KindMotor, entry.nRow, a + 1);

    const bool bShifted = before.laser.reserved != 0;
    for (int k = 0; k < 2; ++k)
        for (const LaserEntry& entry : kLaser)
            check.Field(record.laser.lasers[k].*entry.pField, before.laser.lasers[k].*entry.pField,
                        snapshot.laser.lasers[k].*entry.pField, FlagLaser, KindLaser,
                        bShifted ? entry.nRowReserved : entry.nRowPlain, k + 1);

    for (const auto& entry : kSpeed)
        check.Field(record.speed.*entry.pField, before.speed.*entry.pField, snapshot.speed.*entry.pField, FlagSpeed,
                    KindSpeed, entry.nRow, 1);

    MachineSection& m = record.machine;
    const MachineSection& b = before.machine;
    const MachineSection& s = snapshot.machine;
    check.Field(m.motiveMode, b.motiveMode, s.motiveMode, FlagMachine, KindMachine, 0, 1);
    check.Field(m.laserSpace, b.laserSpace, s.laserSpace, FlagMachine, KindMachine, 1, 1);
    check.Field(m.machineZero, b.machineZero, s.machineZero, FlagMachine, KindMachine, 2, 1);
    check.Field(m.openProject, b.openProject, s.openProject, FlagMachine, KindMachine, 3, 1);
    check.Field(m.blow, b.blow, s.blow, FlagMachine, KindMachine, 4, 1);
    check.Field(m.machineType, b.machineType, s.machineType, FlagMachine, KindMachine, kNoMark, 1);
    check.Field(m.feedMode, b.feedMode, s.feedMode, FlagMachine, KindMachine, kNoMark, 1);
    check.Field(m.outageDelay, b.outageDelay, s.outageDelay, FlagMachine, KindMachine, kNoMark, 1);
    return check.Flags();
}
