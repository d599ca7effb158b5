#include "FactoryParamKeys.h"

#include "FactoryParamMissing.h"
#include "FactoryParams.h"

namespace {
const QString kLaser = QStringLiteral("FACTORY_PARAM_LASER");
const QString kMotor = QStringLiteral("FACTORY_PARAM_MOTOR");
const QString kMachine = QStringLiteral("FACTORY_PARAM_MACHINE");
const QString kSpeed = QStringLiteral("FACTORY_PARAM_SPEED");

FactoryParamKey Int(const QString& strSection, const QString& strKey, int32_t& field, int nMissing)
{
    return {strSection, strKey, &field, nullptr, nullptr, double(nMissing)};
}

FactoryParamKey Bool(const QString& strSection, const QString& strKey, bool& field, int nMissing)
{
    return {strSection, strKey, nullptr, &field, nullptr, double(nMissing)};
}

FactoryParamKey Double(const QString& strSection, const QString& strKey, double& field, double dMissing)
{
    return {strSection, strKey, nullptr, nullptr, &field, dMissing};
}

// Per-axis and per-laser keys end in "_<n>", n counting from 1.
QString Numbered(const char* szKey, int nIndex)
{
    return QStringLiteral("%1_%2").arg(QLatin1String(szKey)).arg(nIndex + 1);
}
}

QVector<FactoryParamKey> FactoryParamKey::ForRecord(FactoryParams& record)
{
    using namespace FactoryParamMissing;
    QVector<FactoryParamKey> keys;
    keys.reserve(105);

    LaserSection& laser = record.laser;
    keys << Int(kLaser, "LASER_COUNT", laser.laserCount, kLaserCount)
         << Int(kLaser, "LASER1_TYPE", laser.lasers[0].type, kLaserType)
         << Int(kLaser, "LASER2_TYPE", laser.lasers[1].type, kLaserType)
         << Int(kLaser, "LASER_MACHINE_TYPE", laser.laserMachineType, kLaserMachineType);
    for (int i = 0; i < 2; ++i) {
        LaserParams& source = laser.lasers[i];
        keys << Int(kLaser, Numbered("LASER_POWER", i), source.power, kPower)
             << Double(kLaser, Numbered("LASER_POWER_MIN", i), source.powerMin, kPowerMin)
             << Double(kLaser, Numbered("LASER_POWER_MAX", i), source.powerMax, kPowerMax)
             << Double(kLaser, Numbered("LASER_POWER_REDUCTION", i), source.powerReduction, kPowerReduction)
             << Double(kLaser, Numbered("LASER_FREQUENCY", i), source.frequency, kFrequency)
             << Double(kLaser, Numbered("LASER_BURNING_FREQUENCY", i), source.burningFrequency, kBurningFrequency)
             << Double(kLaser, Numbered("LASER_BURNING_WIDTH", i), source.burningWidth, kBurningWidth)
             << Int(kLaser, Numbered("LASER_SWITCH_SIGNAL", i), source.switchSignal, kSwitchSignal)
             << Bool(kLaser, Numbered("LASER_WATER_PROTECT", i), source.waterProtect, kWaterProtect);
    }

    for (int a = 0; a < 4; ++a) {
        MotorParams& motor = record.motor[a];
        keys << Int(kMotor, Numbered("MOTOR_DIRECTION_POLAR", a), motor.directionPolar, kDirectionPolar)
             << Int(kMotor, Numbered("MOTOR_LIMIT_POLAR", a), motor.limitPolar, kLimitPolar)
             << Int(kMotor, Numbered("MOTOR_CONTROL_TYPE", a), motor.controlType, kControlType)
             << Int(kMotor, Numbered("MOTOR_PWM_EDGE", a), motor.pwmEdge, kPwmEdge)
             << Int(kMotor, Numbered("MOTOR_KEY_DIRECTION", a), motor.keyDirection, kKeyDirection)
             << Bool(kMotor, Numbered("MOTOR_HARD_LIMIT_PROTECT", a), motor.hardLimitProtect, kHardLimitProtect)
             << Bool(kMotor, Numbered("MOTOR_RESET_ENABLE", a), motor.resetEnable, kResetEnable)
             << Bool(kMotor, Numbered("MOTOR_STARTUP_RESET", a), motor.startupReset, kStartupReset)
             << Double(kMotor, Numbered("MOTOR_PULSE_PER_MM", a), motor.pulsePerMm, kPulsePerMm)
             << Double(kMotor, Numbered("MOTOR_SIZE", a), motor.size, kSize)
             << Double(kMotor, Numbered("MOTOR_ZERO_OFFSET", a), motor.zeroOffset, kZeroOffset)
             << Double(kMotor, Numbered("MOTOR_SPEED_JUMP", a), motor.speedJump, kSpeedJump)
             << Double(kMotor, Numbered("MOTOR_SPEED_MAX", a), motor.speedMax, kSpeedMax)
             << Double(kMotor, Numbered("MOTOR_ACC_MAX", a), motor.accMax, kAccMax)
             << Double(kMotor, Numbered("MOTOR_ACC_URGENT_STOP", a), motor.accUrgentStop, kAccUrgentStop)
             << Double(kMotor, Numbered("MOTOR_ACC_KEY", a), motor.accKey, kAccKey)
             << Double(kMotor, Numbered("MOTOR_SPEED_KEY_JUMP", a), motor.speedKeyJump, kSpeedKeyJump);
    }

    MachineSection& machine = record.machine;
    keys << Int(kMachine, "MACHINE_MACHINE_TYPE", machine.machineType, kMachineType)
         << Int(kMachine, "MACHINE_MOTIVE_MODE", machine.motiveMode, kMotiveMode)
         << Int(kMachine, "MACHINE_FEED_MODE", machine.feedMode, kFeedMode)
         << Int(kMachine, "MACHINE_ZERO", machine.machineZero, kMachineZero)
         << Bool(kMachine, "MACHINE_OPEN_PROJECT", machine.openProject, kOpenProject)
         << Bool(kMachine, "MACHINE_BLOW", machine.blow, kBlow)
         << Int(kMachine, "MACHINE_OUTAGE_DELAY", machine.outageDelay, kOutageDelay)
         << Double(kMachine, "MACHINE_LASER_SPACE", machine.laserSpace, kLaserSpace);

    SpeedSection& speed = record.speed;
    keys << Double(kSpeed, "SPEED_CUT_SPEED_SPACE", speed.cutSpeedSpace, kCutSpeedSpace)
         << Double(kSpeed, "SPEED_CUT_SPEED_CORNER", speed.cutSpeedCorner, kCutSpeedCorner)
         << Double(kSpeed, "SPEED_CUT_ACC_SPACE", speed.cutAccSpace, kCutAccSpace)
         << Double(kSpeed, "SPEED_CUT_ACC_CORNER", speed.cutAccCorner, kCutAccCorner)
         << Double(kSpeed, "SPEED_CUT_ACC_WORK", speed.cutAccWork, kCutAccWork)
         << Double(kSpeed, "SPEED_SWEEP_SPEED_XSTART", speed.sweepSpeedXStart, kSweepSpeedXStart)
         << Double(kSpeed, "SPEED_SWEEP_SPEED_YSTART", speed.sweepSpeedYStart, kSweepSpeedYStart)
         << Double(kSpeed, "SPEED_SWEEP_SPEED_NEWLINE", speed.sweepSpeedNewline, kSweepSpeedNewline)
         << Double(kSpeed, "SPEED_SWEEP_ACC_X", speed.sweepAccX, kSweepAccX)
         << Double(kSpeed, "SPEED_SWEEP_ACC_Y", speed.sweepAccY, kSweepAccY)
         << Double(kSpeed, "SPEED_PANEL_SPEED_RESET", speed.panelSpeedReset, kPanelSpeedReset);
    return keys;
}
