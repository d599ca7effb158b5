#include "CSimLimits.h"

#include "FactoryParams.h"

#include <QtGlobal>

namespace {
// Brings values into range and counts the ones it had to change.
struct Limiter
{
    template <typename T>
    void operator()(T& value, T low, T high)
    {
        const T bounded = qBound(low, value, high);
        if (bounded != value)
            ++nChanged;
        value = bounded;
    }
    void Switch(int32_t& value) { (*this)(value, 0, 1); }

    int nChanged = 0;
};
}

FactoryParams CSimLimits::Limit(const FactoryParams& params, int* pnChanged)
{
    Limiter clamp;
    FactoryParams limited = params;
    const double kAny = 1000000.0;
    for (int a = 0; a < 4; ++a) {
        MotorParams& m = limited.motor[a];
        clamp.Switch(m.directionPolar);
        clamp.Switch(m.limitPolar);
        clamp.Switch(m.controlType);
        clamp.Switch(m.pwmEdge);
        clamp.Switch(m.keyDirection);
        clamp(m.pulsePerMm, 0.0, kAny);
        clamp(m.size, 0.0, 3000.0);
        clamp(m.zeroOffset, 0.0, kAny);
        clamp(m.speedJump, 0.0, kAny);
        clamp(m.accKey, 0.0, kAny);
        clamp(m.speedKeyJump, 0.0, kAny);
        const bool bGantry = a < 2;
        clamp(m.speedMax, 0.0, a == 0 ? 1500.0 : 1000.0);
        clamp(m.accMax, 0.0, bGantry ? 30000.0 : kAny);
        clamp(m.accUrgentStop, 0.0, bGantry ? 30000.0 : kAny);
    }
    LaserSection& laser = limited.laser;
    clamp(laser.laserCount, 1, 2);
    clamp.Switch(laser.laserMachineType);
    for (LaserParams& l : laser.lasers) {
        clamp(l.powerMin, 0.0, 100.0);
        clamp(l.powerMax, 0.0, 100.0);
        clamp(l.powerReduction, 0.0, 100.0);
        clamp(l.power, 0, 1000000);
        clamp(l.frequency, 0.0, kAny);
        clamp(l.burningFrequency, 0.0, kAny);
        clamp(l.burningWidth, 0.0, kAny);
        clamp.Switch(l.switchSignal);
        clamp(l.type, 0, 4);
    }
    MachineSection& machine = limited.machine;
    clamp(machine.motiveMode, 0, 3);
    clamp(machine.machineZero, 0, 3);
    clamp(machine.laserSpace, 0.0, 3000.0);
    clamp(machine.outageDelay, 0, 60000);
    SpeedSection& s = limited.speed;
    for (double* pSpeed : {&s.panelSpeedReset, &s.sweepSpeedXStart, &s.sweepSpeedYStart, &s.sweepSpeedNewline,
                           &s.cutSpeedSpace, &s.cutSpeedCorner})
        clamp(*pSpeed, 0.0, 1500.0);
    for (double* pAcc : {&s.sweepAccX, &s.sweepAccY, &s.cutAccSpace, &s.cutAccCorner, &s.cutAccWork})
        clamp(*pAcc, 0.0, 40000.0);
    if (pnChanged)
        *pnChanged = clamp.nChanged;
    return limited;
}
