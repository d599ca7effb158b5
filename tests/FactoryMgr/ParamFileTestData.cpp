#include "ParamFileTestData.h"

namespace ParamFileTestData {

QStringList ExpectedKeys()
{
    QStringList keys{"FACTORY_PARAM/FILE_FLAG", "FACTORY_PARAM/CREATE_TIME", "FACTORY_PARAM_LASER/LASER_COUNT",
                     "FACTORY_PARAM_LASER/LASER1_TYPE", "FACTORY_PARAM_LASER/LASER2_TYPE",
                     "FACTORY_PARAM_LASER/LASER_MACHINE_TYPE"};
    for (int n = 1; n <= 2; ++n)
        for (const char* szKey : {"LASER_POWER", "LASER_POWER_MIN", "LASER_POWER_MAX", "LASER_POWER_REDUCTION",
                                  "LASER_FREQUENCY", "LASER_BURNING_FREQUENCY", "LASER_BURNING_WIDTH",
                                  "LASER_SWITCH_SIGNAL", "LASER_WATER_PROTECT"})
            keys << QStringLiteral("FACTORY_PARAM_LASER/%1_%2").arg(szKey).arg(n);
    for (int n = 1; n <= 4; ++n)
        for (const char* szKey :
             {"MOTOR_DIRECTION_POLAR", "MOTOR_LIMIT_POLAR", "MOTOR_CONTROL_TYPE", "MOTOR_PWM_EDGE",
              "MOTOR_KEY_DIRECTION", "MOTOR_HARD_LIMIT_PROTECT", "MOTOR_RESET_ENABLE", "MOTOR_STARTUP_RESET",
              "MOTOR_PULSE_PER_MM", "MOTOR_SIZE", "MOTOR_ZERO_OFFSET", "MOTOR_SPEED_JUMP", "MOTOR_SPEED_MAX",
              "MOTOR_ACC_MAX", "MOTOR_ACC_URGENT_STOP", "MOTOR_ACC_KEY", "MOTOR_SPEED_KEY_JUMP"})
            keys << QStringLiteral("FACTORY_PARAM_MOTOR/%1_%2").arg(szKey).arg(n);
    for (const char* szKey : {"MACHINE_MACHINE_TYPE", "MACHINE_MOTIVE_MODE", "MACHINE_FEED_MODE", "MACHINE_ZERO",
                              "MACHINE_OPEN_PROJECT", "MACHINE_BLOW", "MACHINE_OUTAGE_DELAY", "MACHINE_LASER_SPACE"})
        keys << QStringLiteral("FACTORY_PARAM_MACHINE/%1").arg(szKey);
    for (const char* szKey : {"SPEED_CUT_SPEED_SPACE", "SPEED_CUT_SPEED_CORNER", "SPEED_CUT_ACC_SPACE",
                              "SPEED_CUT_ACC_CORNER", "SPEED_CUT_ACC_WORK", "SPEED_SWEEP_SPEED_XSTART",
                              "SPEED_SWEEP_SPEED_YSTART", "SPEED_SWEEP_SPEED_NEWLINE", "SPEED_SWEEP_ACC_X",
                              "SPEED_SWEEP_ACC_Y", "SPEED_PANEL_SPEED_RESET"})
        keys << QStringLiteral("FACTORY_PARAM_SPEED/%1").arg(szKey);
    return keys;
}

FactoryParams DistinctRecord()
{
    FactoryParams r;
    for (int a = 0; a < 4; ++a) {
        MotorParams& m = r.motor[a];
        const double base = 100.0 * (a + 1);
        m.directionPolar = 2 + a;
        m.limitPolar = 3 + a;
        m.controlType = 4 + a;
        m.pwmEdge = 5 + a;
        m.keyDirection = 6 + a;
        m.hardLimitProtect = a % 2 == 0;
        m.resetEnable = a % 2 == 1;
        m.startupReset = a % 2 == 0;
        m.pulsePerMm = base + 0.123456;
        m.size = base + 1.5;
        m.zeroOffset = base + 2.25;
        m.speedJump = base + 3.125;
        m.speedMax = base + 4.0625;
        m.accMax = base + 5.5;
        m.accUrgentStop = base + 6.75;
        m.accKey = base + 7.875;
        m.speedKeyJump = base + 8.1;
    }
    r.laser.laserCount = 2;
    r.laser.laserMachineType = 1;
    for (int k = 0; k < 2; ++k) {
        LaserParams& l = r.laser.lasers[k];
        const double base = 10.0 * (k + 1);
        l.type = 2 + k;
        l.power = 130 + k;
        l.powerMin = base + 0.5;
        l.powerMax = base + 60.25;
        l.powerReduction = base + 1.75;
        l.frequency = 30000.0 + k;
        l.burningFrequency = 7000.5 + k;
        l.burningWidth = 1.25 + k;
        l.switchSignal = 1;
        l.waterProtect = k == 1;
    }
    r.machine.machineType = 7;
    r.machine.motiveMode = 3;
    r.machine.feedMode = 2;
    r.machine.machineZero = 1;
    r.machine.openProject = true;
    r.machine.blow = true;
    r.machine.laserSpace = 25.5;
    r.machine.outageDelay = 2500;
    r.speed.panelSpeedReset = 61.5;
    r.speed.sweepSpeedXStart = 6.5;
    r.speed.sweepSpeedYStart = 7.5;
    r.speed.sweepSpeedNewline = 21.5;
    r.speed.sweepAccX = 2100.5;
    r.speed.sweepAccY = 2200.5;
    r.speed.cutSpeedSpace = 310.5;
    r.speed.cutSpeedCorner = 55.5;
    r.speed.cutAccSpace = 2300.5;
    r.speed.cutAccCorner = 810.5;
    r.speed.cutAccWork = 2400.5;
    return r;
}

namespace {
template <typename T>
void Check(QString& strDiff, const char* szName, int nIndex, const T& a, const T& b)
{
    if (strDiff.isEmpty() && !(a == b))
        strDiff = QStringLiteral("%1[%2]: %3 != %4").arg(szName).arg(nIndex).arg(a).arg(b);
}
}

QString FirstFileFieldDifference(const FactoryParams& a, const FactoryParams& b)
{
    QString d;
    for (int i = 0; i < 4; ++i) {
        const MotorParams& x = a.motor[i];
        const MotorParams& y = b.motor[i];
        Check(d, "directionPolar", i, x.directionPolar, y.directionPolar);
        Check(d, "limitPolar", i, x.limitPolar, y.limitPolar);
        Check(d, "controlType", i, x.controlType, y.controlType);
        Check(d, "pwmEdge", i, x.pwmEdge, y.pwmEdge);
        Check(d, "keyDirection", i, x.keyDirection, y.keyDirection);
        Check(d, "hardLimitProtect", i, x.hardLimitProtect, y.hardLimitProtect);
        Check(d, "resetEnable", i, x.resetEnable, y.resetEnable);
        Check(d, "startupReset", i, x.startupReset, y.startupReset);
        Check(d, "pulsePerMm", i, x.pulsePerMm, y.pulsePerMm);
        Check(d, "size", i, x.size, y.size);
        Check(d, "zeroOffset", i, x.zeroOffset, y.zeroOffset);
        Check(d, "speedJump", i, x.speedJump, y.speedJump);
        Check(d, "speedMax", i, x.speedMax, y.speedMax);
        Check(d, "accMax", i, x.accMax, y.accMax);
        Check(d, "accUrgentStop", i, x.accUrgentStop, y.accUrgentStop);
        Check(d, "accKey", i, x.accKey, y.accKey);
        Check(d, "speedKeyJump", i, x.speedKeyJump, y.speedKeyJump);
    }
    Check(d, "laserCount", 0, a.laser.laserCount, b.laser.laserCount);
    Check(d, "laserMachineType", 0, a.laser.laserMachineType, b.laser.laserMachineType);
    for (int k = 0; k < 2; ++k) {
        const LaserParams& x = a.laser.lasers[k];
        const LaserParams& y = b.laser.lasers[k];
        Check(d, "type", k, x.type, y.type);
        Check(d, "power", k, x.power, y.power);
        Check(d, "powerMin", k, x.powerMin, y.powerMin);
        Check(d, "powerMax", k, x.powerMax, y.powerMax);
        Check(d, "powerReduction", k, x.powerReduction, y.powerReduction);
        Check(d, "frequency", k, x.frequency, y.frequency);
        Check(d, "burningFrequency", k, x.burningFrequency, y.burningFrequency);
        Check(d, "burningWidth", k, x.burningWidth, y.burningWidth);
        Check(d, "switchSignal", k, x.switchSignal, y.switchSignal);
        Check(d, "waterProtect", k, x.waterProtect, y.waterProtect);
    }
    Check(d, "machineType", 0, a.machine.machineType, b.machine.machineType);
    Check(d, "motiveMode", 0, a.machine.motiveMode, b.machine.motiveMode);
    Check(d, "feedMode", 0, a.machine.feedMode, b.machine.feedMode);
    Check(d, "machineZero", 0, a.machine.machineZero, b.machine.machineZero);
    Check(d, "openProject", 0, a.machine.openProject, b.machine.openProject);
    Check(d, "blow", 0, a.machine.blow, b.machine.blow);
    Check(d, "laserSpace", 0, a.machine.laserSpace, b.machine.laserSpace);
    Check(d, "outageDelay", 0, a.machine.outageDelay, b.machine.outageDelay);
    Check(d, "panelSpeedReset", 0, a.speed.panelSpeedReset, b.speed.panelSpeedReset);
    Check(d, "sweepSpeedXStart", 0, a.speed.sweepSpeedXStart, b.speed.sweepSpeedXStart);
    Check(d, "sweepSpeedYStart", 0, a.speed.sweepSpeedYStart, b.speed.sweepSpeedYStart);
    Check(d, "sweepSpeedNewline", 0, a.speed.sweepSpeedNewline, b.speed.sweepSpeedNewline);
    Check(d, "sweepAccX", 0, a.speed.sweepAccX, b.speed.sweepAccX);
    Check(d, "sweepAccY", 0, a.speed.sweepAccY, b.speed.sweepAccY);
    Check(d, "cutSpeedSpace", 0, a.speed.cutSpeedSpace, b.speed.cutSpeedSpace);
    Check(d, "cutSpeedCorner", 0, a.speed.cutSpeedCorner, b.speed.cutSpeedCorner);
    Check(d, "cutAccSpace", 0, a.speed.cutAccSpace, b.speed.cutAccSpace);
    Check(d, "cutAccCorner", 0, a.speed.cutAccCorner, b.speed.cutAccCorner);
    Check(d, "cutAccWork", 0, a.speed.cutAccWork, b.speed.cutAccWork);
    return d;
}

} // namespace ParamFileTestData
