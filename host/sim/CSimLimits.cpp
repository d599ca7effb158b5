#include "CSimLimits.h"

#include "FactoryParams.h"

#include <QtGlobal>

#include <cmath>

namespace {
// Brings values into range and counts the ones it had to change.
struct Limiter
{
    template <typename T>
    void operator()(T& value, T low, T high)
    {
        const T bounded = qBound(low, value, high);
        Set(value, bounded);
    }
    void Switch(int32_t& value) { (*this)(value, 0, 1); }
    // A number no controller stores goes back to what was there.
    void Finite(double& value, double previous)
    {
        if (!std::isfinite(value))
            Set(value, std::isfinite(previous) ? previous : 0.0);
    }
    void AtMost(double& value, double high)
    {
        if (value > high)
            Set(value, high);
    }
    template <typename T>
    void Set(T& value, T limited)
    {
        if (limited != value)
            ++nChanged;
        value = limited;
    }

    int nChanged = 0;
};

// Every double of the record with its counterpart in another record.
template <typename Fn>
void ForEachDouble(FactoryParams& params, const FactoryParams& other, Fn fn)
{
    for (int a = 0; a < 4; ++a)
        for (double MotorParams::*pField :
             {&MotorParams::pulsePerMm, &MotorParams::size, &MotorParams::zeroOffset, &MotorParams::speedJump,
              &MotorParams::speedMax, &MotorParams::accMax, &MotorParams::accUrgentStop, &MotorParams::accKey,
              &MotorParams::speedKeyJump})
            fn(params.motor[a].*pField, other.motor[a].*pField);
    for (int k = 0; k < 2; ++k)
        for (double LaserParams::*pField :
             {&LaserParams::powerMin, &LaserParams::powerMax, &LaserParams::powerReduction, &LaserParams::frequency,
              &LaserParams::burningFrequency, &LaserParams::burningWidth})
            fn(params.laser.lasers[k].*pField, other.laser.lasers[k].*pField);
    fn(params.machine.laserSpace, other.machine.laserSpace);
    for (double SpeedSection::*pField :
         {&SpeedSection::panelSpeedReset, &SpeedSection::sweepSpeedXStart, &SpeedSection::sweepSpeedYStart,
          &SpeedSection::sweepSpeedNewline, &SpeedSection::sweepAccX, &SpeedSection::sweepAccY,
          &SpeedSection::cutSpeedSpace, &SpeedSection::cutSpeedCorner, &SpeedSection::cutAccSpace,
          &SpeedSection::cutAccCorner, &SpeedSection::cutAccWork})
        fn(params.speed.*pField, other.speed.*pField);
}
}

FactoryParams CSimLimits::Limit(const FactoryParams& params, const FactoryParams& previous, int* pnChanged)
{
    Limiter clamp;
    FactoryParams limited = params;
    ForEachDouble(limited, previous, [&](double& value, double before) { clamp.Finite(value, before); });

    const double kAny = 1000000.0;
    for (int a = 0; a < 4; ++a) {
        MotorParams& m = limited.motor[a];
        clamp.Switch(m.directionPolar);
        clamp.Switch(m.limitPolar);
        clamp.Switch(m.controlType);
        clamp.Switch(m.pwmEdge);
        clamp.Switch(m.keyDirection);
        // A step of nothing drives nothing: the step stays as it was.
        if (!(m.pulsePerMm > 0.0)) {
            const double dBefore = previous.motor[a].pulsePerMm;
            clamp.Set(m.pulsePerMm, std::isfinite(dBefore) && dBefore > 0.0 ? dBefore : 1.0);
        }
        clamp(m.pulsePerMm, 0.0, kAny);
        clamp(m.size, 0.0, 3000.0);
        clamp(m.zeroOffset, 0.0, kAny);
        clamp(m.speedJump, 0.0, kAny);
        clamp(m.accKey, 0.0, kAny);
        clamp(m.speedKeyJump, 0.0, kAny);
        const bool bGantry = a < 2;
        clamp(m.speedMax, 0.0, a == 0 ? 1500.0 : 1000.0);
        clamp.AtMost(m.speedMax, kMaxPulseRate / m.pulsePerMm);
        clamp.AtMost(m.speedJump, m.speedMax);
        clamp(m.accMax, 0.0, bGantry ? 30000.0 : kAny);
        clamp(m.accUrgentStop, 0.0, bGantry ? 30000.0 : kAny);
    }
    LaserSection& laser = limited.laser;
    clamp(laser.laserCount, 1, 2);
    clamp.Switch(laser.laserMachineType);
    for (LaserParams& l : laser.lasers) {
        clamp(l.powerMin, 0.0, 100.0);
        clamp(l.powerMax, 0.0, 100.0);
        clamp.AtMost(l.powerMin, l.powerMax);
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
    // The head moves on X and Y at once: no faster than the slower of the two.
    const double dAxisMax = std::min(limited.motor[0].speedMax, limited.motor[1].speedMax);
    for (double* pSpeed : {&s.panelSpeedReset, &s.sweepSpeedXStart, &s.sweepSpeedYStart, &s.sweepSpeedNewline,
                           &s.cutSpeedSpace, &s.cutSpeedCorner}) {
        clamp(*pSpeed, 0.0, 1500.0);
        clamp.AtMost(*pSpeed, dAxisMax);
    }
    for (double* pAcc : {&s.sweepAccX, &s.sweepAccY, &s.cutAccSpace, &s.cutAccCorner, &s.cutAccWork})
        clamp(*pAcc, 0.0, 40000.0);
    if (pnChanged)
        *pnChanged = clamp.nChanged;
    return limited;
}
