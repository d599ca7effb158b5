#include "ParamsEqual.h"

#include "FactoryParams.h"

#include <cmath>

namespace {
bool Near(double a, double b)
{
    return std::fabs(a - b) <= 0.0001;
}

bool MotorEqual(const MotorParams& a, const MotorParams& b)
{
    return a.directionPolar == b.directionPolar && a.limitPolar == b.limitPolar && a.controlType == b.controlType
        && a.pwmEdge == b.pwmEdge && a.keyDirection == b.keyDirection && Near(a.pulsePerMm, b.pulsePerMm)
        && Near(a.size, b.size) && Near(a.zeroOffset, b.zeroOffset) && a.hardLimitProtect == b.hardLimitProtect
        && a.resetEnable == b.resetEnable && a.startupReset == b.startupReset && Near(a.speedJump, b.speedJump)
        && Near(a.speedMax, b.speedMax) && Near(a.accMax, b.accMax) && Near(a.accUrgentStop, b.accUrgentStop)
        && Near(a.accKey, b.accKey) && Near(a.speedKeyJump, b.speedKeyJump);
}

bool LaserSourceEqual(const LaserParams& a, const LaserParams& b)
{
    return a.enabled == b.enabled && Near(a.powerMin, b.powerMin) && Near(a.powerMax, b.powerMax)
        && a.power == b.power && Near(a.powerReduction, b.powerReduction) && Near(a.frequency, b.frequency)
        && Near(a.burningFrequency, b.burningFrequency) && Near(a.burningWidth, b.burningWidth)
        && a.switchSignal == b.switchSignal && a.waterProtect == b.waterProtect && a.type == b.type;
}

bool LaserEqual(const LaserSection& a, const LaserSection& b)
{
    return a.laserCount == b.laserCount && a.reserved == b.reserved && LaserSourceEqual(a.lasers[0], b.lasers[0])
        && LaserSourceEqual(a.lasers[1], b.lasers[1]) && a.laserMachineType == b.laserMachineType;
}

bool MachineEqual(const MachineSection& a, const MachineSection& b)
{
    return a.machineType == b.machineType && a.motiveMode == b.motiveMode && a.feedMode == b.feedMode
        && a.machineZero == b.machineZero && a.openProject == b.openProject && a.blow == b.blow
        && Near(a.laserSpace, b.laserSpace) && a.outageDelay == b.outageDelay;
}

bool SpeedEqual(const SpeedSection& a, const SpeedSection& b)
{
    return Near(a.panelSpeedReset, b.panelSpeedReset) && Near(a.sweepSpeedXStart, b.sweepSpeedXStart)
        && Near(a.sweepSpeedYStart, b.sweepSpeedYStart) && Near(a.sweepSpeedNewline, b.sweepSpeedNewline)
        && Near(a.sweepAccX, b.sweepAccX) && Near(a.sweepAccY, b.sweepAccY) && Near(a.cutSpeedSpace, b.cutSpeedSpace)
        && Near(a.cutSpeedCorner, b.cutSpeedCorner) && Near(a.cutAccSpace, b.cutAccSpace)
        && Near(a.cutAccCorner, b.cutAccCorner) && Near(a.cutAccWork, b.cutAccWork);
}
}

bool ParamsEqual(const FactoryParams& a, const FactoryParams& b)
{
    for (int i = 0; i < 4; ++i)
        if (!MotorEqual(a.motor[i], b.motor[i]))
            return false;
    return LaserEqual(a.laser, b.laser) && MachineEqual(a.machine, b.machine) && SpeedEqual(a.speed, b.speed);
}
