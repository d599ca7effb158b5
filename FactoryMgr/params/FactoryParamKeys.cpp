#include "FactoryParamKeys.h"

#include "FactoryParamMissing.h"
#include "FactoryParams.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <type_traits>

namespace {
const QString kLaser = QStringLiteral("FACTORY_PARAM_LASER");
const QString kMotor = QStringLiteral("FACTORY_PARAM_MOTOR");
const QString kMachine = QStringLiteral("FACTORY_PARAM_MACHINE");
const QString kSpeed = QStringLiteral("FACTORY_PARAM_SPEED");

// Lengths, speeds, accelerations, frequencies, steps, times and codes
// without a list of their own: no controller takes a negative one, nor one
// above a million.
constexpr double kMaxValue = 1000000.0;

// What a person reads about a field.
struct Meaning
{
    const char* szLabel;
    const char* szUnit;
    double dMin;
    double dMax;
};

constexpr Meaning Switch(const char* szLabel)
{
    return {szLabel, "", 0.0, 1.0};
}

constexpr Meaning Quantity(const char* szLabel, const char* szUnit = "")
{
    return {szLabel, szUnit, 0.0, kMaxValue};
}

FactoryParamKey Key(const QString& strSection, const QString& strKey, int32_t* pInt, bool* pBool, double* pDouble,
                    double dMissing, const Meaning& meaning, FactoryParamKey::Group group, int nIndex)
{
    FactoryParamKey key{strSection, strKey, pInt, pBool, pDouble, dMissing};
    key.szLabel = meaning.szLabel;
    key.szUnit = meaning.szUnit;
    key.group = group;
    key.nIndex = nIndex;
    key.dMin = meaning.dMin;
    key.dMax = meaning.dMax;
    return key;
}

// Per-axis and per-laser keys end in "_<n>", n counting from 1.
QString Numbered(const char* szKey, int nIndex)
{
    return QStringLiteral("%1_%2").arg(QLatin1String(szKey)).arg(nIndex + 1);
}
}

namespace {
QVector<FactoryParamKey> Build(FactoryParams& record);

// Moves a pointer into one record to the same field of another.
template <typename T>
T* Rebound(T* pField, const FactoryParams& from, FactoryParams& to)
{
    if (!pField)
        return nullptr;
    const std::ptrdiff_t nOffset = reinterpret_cast<const char*>(pField) - reinterpret_cast<const char*>(&from);
    return reinterpret_cast<T*>(reinterpret_cast<char*>(&to) + nOffset);
}
}

QVector<FactoryParamKey> FactoryParamKey::ForRecord(FactoryParams& record)
{
    // The table is built once, over a record of its own, and bound to each
    // record by the fields' places: a fleet of files reads it thousands of
    // times.
    static FactoryParams s_template;
    static const QVector<FactoryParamKey> s_keys = Build(s_template);
    QVector<FactoryParamKey> keys = s_keys;
    for (FactoryParamKey& key : keys) {
        key.pInt = Rebound(key.pInt, s_template, record);
        key.pBool = Rebound(key.pBool, s_template, record);
        key.pDouble = Rebound(key.pDouble, s_template, record);
    }
    return keys;
}

namespace {
QVector<FactoryParamKey> Build(FactoryParams& record)
{
    using Group = FactoryParamKey::Group;
    constexpr Group GroupAxis = FactoryParamKey::GroupAxis;
    constexpr Group GroupLaser = FactoryParamKey::GroupLaser;
    using namespace FactoryParamMissing;
    QVector<FactoryParamKey> keys;
    keys.reserve(105);
    const auto add = [&keys](const QString& strSection, const QString& strKey, auto& field, double dMissing,
                             const Meaning& meaning, Group group = FactoryParamKey::GroupNone, int nIndex = 0) {
        using Field = std::remove_reference_t<decltype(field)>;
        int32_t* pInt = nullptr;
        bool* pBool = nullptr;
        double* pDouble = nullptr;
        if constexpr (std::is_same_v<Field, int32_t>)
            pInt = &field;
        else if constexpr (std::is_same_v<Field, bool>)
            pBool = &field;
        else
            pDouble = &field;
        keys << Key(strSection, strKey, pInt, pBool, pDouble, dMissing, meaning, group, nIndex);
    };

    LaserSection& laser = record.laser;
    add(kLaser, "LASER_COUNT", laser.laserCount, kLaserCount, {"Laser count", "", 1.0, 2.0});
    add(kLaser, "LASER1_TYPE", laser.lasers[0].type, kLaserType, {"Laser type", "", 0.0, 4.0}, GroupLaser, 0);
    add(kLaser, "LASER2_TYPE", laser.lasers[1].type, kLaserType, {"Laser type", "", 0.0, 4.0}, GroupLaser, 1);
    add(kLaser, "LASER_MACHINE_TYPE", laser.laserMachineType, kLaserMachineType, Switch("Laser tube configuration"));
    for (int i = 0; i < 2; ++i) {
        LaserParams& source = laser.lasers[i];
        const auto laserKey = [&](const char* szKey, auto& field, double dMissing, const Meaning& meaning) {
            add(kLaser, Numbered(szKey, i), field, dMissing, meaning, GroupLaser, i);
        };
        laserKey("LASER_POWER", source.power, kPower, Quantity("Laser power(W)", "W"));
        laserKey("LASER_POWER_MIN", source.powerMin, kPowerMin, {"Min power(%)", "%", 0.0, 100.0});
        laserKey("LASER_POWER_MAX", source.powerMax, kPowerMax, {"Max power(%)", "%", 0.0, 100.0});
        laserKey("LASER_POWER_REDUCTION", source.powerReduction, kPowerReduction,
                 {"Laser Attenuation(%)", "%", 0.0, 100.0});
        // The dialog shows the laser frequency as stored, the pre-burning
        // frequency divided by 1000; both rows say kHz.
        laserKey("LASER_FREQUENCY", source.frequency, kFrequency, {"Laser Frequency(kHz)", "kHz", 0.0, kMaxValue});
        laserKey("LASER_BURNING_FREQUENCY", source.burningFrequency, kBurningFrequency,
                 {"Pre-burning frequency(kHz)", "kHz", 0.0, kMaxValue});
        keys.last().dShownScale = 0.001;
        laserKey("LASER_BURNING_WIDTH", source.burningWidth, kBurningWidth,
                 {"Pre-ignition pulse width(%)", "%", 0.0, 100.0});
        laserKey("LASER_SWITCH_SIGNAL", source.switchSignal, kSwitchSignal, Switch("SwitchLevel"));
        laserKey("LASER_WATER_PROTECT", source.waterProtect, kWaterProtect, Switch("Water Protection"));
    }

    for (int a = 0; a < 4; ++a) {
        MotorParams& motor = record.motor[a];
        const auto motorKey = [&](const char* szKey, auto& field, double dMissing, const Meaning& meaning) {
            add(kMotor, Numbered(szKey, a), field, dMissing, meaning, GroupAxis, a);
        };
        motorKey("MOTOR_DIRECTION_POLAR", motor.directionPolar, kDirectionPolar, Switch("Direction of Polarity"));
        motorKey("MOTOR_LIMIT_POLAR", motor.limitPolar, kLimitPolar, Switch("Limit switch polarity"));
        motorKey("MOTOR_CONTROL_TYPE", motor.controlType, kControlType, Switch("Control Mode"));
        motorKey("MOTOR_PWM_EDGE", motor.pwmEdge, kPwmEdge, Switch("PWM Edge Valid"));
        motorKey("MOTOR_KEY_DIRECTION", motor.keyDirection, kKeyDirection, Switch("Keypad Direction"));
        motorKey("MOTOR_HARD_LIMIT_PROTECT", motor.hardLimitProtect, kHardLimitProtect,
                 Switch("Hard limit protection"));
        motorKey("MOTOR_RESET_ENABLE", motor.resetEnable, kResetEnable, Switch("Takes part in homing"));
        motorKey("MOTOR_STARTUP_RESET", motor.startupReset, kStartupReset, Switch("Initialization"));
        motorKey("MOTOR_PULSE_PER_MM", motor.pulsePerMm, kPulsePerMm, {"Step(p/um)", "p/um", 0.0, kMaxValue});
        motorKey("MOTOR_SIZE", motor.size, kSize, {"Move Distance(mm)", "mm", 0.0, kMaxValue});
        motorKey("MOTOR_ZERO_OFFSET", motor.zeroOffset, kZeroOffset, {"Zero Offset(mm)", "mm", 0.0, kMaxValue});
        motorKey("MOTOR_SPEED_JUMP", motor.speedJump, kSpeedJump, {"Ini Speed(mm/s)", "mm/s", 0.0, kMaxValue});
        motorKey("MOTOR_SPEED_MAX", motor.speedMax, kSpeedMax, {"Max Speed(mm/s)", "mm/s", 0.0, kMaxValue});
        motorKey("MOTOR_ACC_MAX", motor.accMax, kAccMax, {"Max Acc(mm/s²)", "mm/s²", 0.0, kMaxValue});
        motorKey("MOTOR_ACC_URGENT_STOP", motor.accUrgentStop, kAccUrgentStop,
                 {"Emergency stop Acc(mm/s²)", "mm/s²", 0.0, kMaxValue});
        motorKey("MOTOR_ACC_KEY", motor.accKey, kAccKey, {"Button Acc(mm/s²)", "mm/s²", 0.0, kMaxValue});
        motorKey("MOTOR_SPEED_KEY_JUMP", motor.speedKeyJump, kSpeedKeyJump,
                 {"Keypad Speed(mm/s)", "mm/s", 0.0, kMaxValue});
    }

    MachineSection& machine = record.machine;
    add(kMachine, "MACHINE_MACHINE_TYPE", machine.machineType, kMachineType, Quantity("Machine type"));
    add(kMachine, "MACHINE_MOTIVE_MODE", machine.motiveMode, kMotiveMode, {"Moving parts", "", 0.0, 3.0});
    add(kMachine, "MACHINE_FEED_MODE", machine.feedMode, kFeedMode, Quantity("Feed mode"));
    add(kMachine, "MACHINE_ZERO", machine.machineZero, kMachineZero, {"Machine zero", "", 0.0, 1.0});
    add(kMachine, "MACHINE_OPEN_PROJECT", machine.openProject, kOpenProject, Switch("Lid protection"));
    add(kMachine, "MACHINE_BLOW", machine.blow, kBlow, Switch("Blowing"));
    add(kMachine, "MACHINE_OUTAGE_DELAY", machine.outageDelay, kOutageDelay, Quantity("Power-off delay"));
    add(kMachine, "MACHINE_LASER_SPACE", machine.laserSpace, kLaserSpace, Quantity("Dual head Distance", "mm"));

    SpeedSection& speed = record.speed;
    add(kSpeed, "SPEED_CUT_SPEED_SPACE", speed.cutSpeedSpace, kCutSpeedSpace, Quantity("Idle speed(mm/s)", "mm/s"));
    add(kSpeed, "SPEED_CUT_SPEED_CORNER", speed.cutSpeedCorner, kCutSpeedCorner,
        Quantity("Corner speed(mm/s)", "mm/s"));
    add(kSpeed, "SPEED_CUT_ACC_SPACE", speed.cutAccSpace, kCutAccSpace, Quantity("Idle Acc(mm/s²)", "mm/s²"));
    add(kSpeed, "SPEED_CUT_ACC_CORNER", speed.cutAccCorner, kCutAccCorner, Quantity("PMax Acc(mm/s²)", "mm/s²"));
    add(kSpeed, "SPEED_CUT_ACC_WORK", speed.cutAccWork, kCutAccWork, Quantity("Working Acc(mm/s²)", "mm/s²"));
    add(kSpeed, "SPEED_SWEEP_SPEED_XSTART", speed.sweepSpeedXStart, kSweepSpeedXStart,
        Quantity("Engraving X-axis Ini speed(mm/s)", "mm/s"));
    add(kSpeed, "SPEED_SWEEP_SPEED_YSTART", speed.sweepSpeedYStart, kSweepSpeedYStart,
        Quantity("Engraving Y-axis Ini speed(mm/s)", "mm/s"));
    add(kSpeed, "SPEED_SWEEP_SPEED_NEWLINE", speed.sweepSpeedNewline, kSweepSpeedNewline,
        Quantity("Engraving DPI speed(mm/s)", "mm/s"));
    add(kSpeed, "SPEED_SWEEP_ACC_X", speed.sweepAccX, kSweepAccX, Quantity("Engraving X-axis Acc(mm/s²)", "mm/s²"));
    add(kSpeed, "SPEED_SWEEP_ACC_Y", speed.sweepAccY, kSweepAccY, Quantity("Engraving Y-axis Acc(mm/s²)", "mm/s²"));
    add(kSpeed, "SPEED_PANEL_SPEED_RESET", speed.panelSpeedReset, kPanelSpeedReset,
        Quantity("Reset speed(mm/s)", "mm/s"));
    return keys;
}
}

double FactoryParamKey::ValueOf(const FactoryParams& record, const QString& strKey)
{
    FactoryParams copy;
    std::memcpy(static_cast<void*>(&copy), &record, sizeof(FactoryParams));
    for (const FactoryParamKey& key : ForRecord(copy))
        if (key.strKey == strKey)
            return key.Value();
    return std::numeric_limits<double>::quiet_NaN();
}

double FactoryParamKey::Value() const
{
    if (pDouble)
        return *pDouble;
    if (pInt)
        return double(*pInt);
    return *pBool ? 1.0 : 0.0;
}

void FactoryParamKey::SetFromSettings(const QVariant& value) const
{
    if (pDouble)
        *pDouble = value.toDouble();
    else if (pInt)
        *pInt = value.toInt();
    else
        *pBool = value.toInt() != 0;
}

void FactoryParamKey::SetValue(double dValue) const
{
    if (pDouble)
        *pDouble = dValue;
    else if (pInt)
        *pInt = std::isfinite(dValue) && std::fabs(dValue) <= double(std::numeric_limits<int32_t>::max())
            ? int32_t(std::lround(dValue))
            : 0;
    else
        *pBool = dValue != 0.0;
}

QString FactoryParamKey::Where() const
{
    static const char* const kAxes[] = {"X", "Y", "Z", "U"};
    switch (group) {
    case GroupAxis: return QString::fromLatin1(kAxes[nIndex & 3]);
    case GroupLaser: return nIndex == 0 ? QStringLiteral("Laser 1") : QStringLiteral("Laser 2");
    default: return QString();
    }
}

bool FactoryParamKey::Takes(double dValue) const
{
    if (!std::isfinite(dValue))
        return false;
    if (!pDouble) {
        const double dLimit = double(std::numeric_limits<int32_t>::max());
        if (dValue != std::trunc(dValue) || dValue < -dLimit - 1.0 || dValue > dLimit)
            return false;
    }
    return dValue >= dMin && dValue <= dMax;
}
