#include "FactoryParamKeys.h"

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

// Per-axis and per-laser keys carry the number of their axis or laser, counting from 1.
QString Numbered(const char* szPattern, int nIndex)
{
    return QString::fromLatin1(szPattern).arg(nIndex + 1);
}

using Key = FactoryParamKey;

// Builds the table over a record of its own: a field's place is its address
// there, less the record's.
QVector<FactoryParamKey> Build()
{
    static FactoryParams s_template;
    const char* const pBase = reinterpret_cast<const char*>(&s_template);
    QVector<FactoryParamKey> keys;
    keys.reserve(108);
    const auto add = [&keys, pBase](Key::Section section, const QString& strSection, const QString& strKey,
                                    auto& field, double dMissing, const Meaning& meaning,
                                    Key::Group group = Key::GroupNone, int nIndex = 0) -> FactoryParamKey& {
        using Field = std::remove_reference_t<decltype(field)>;
        FactoryParamKey key;
        key.section = section;
        key.strSection = strSection;
        key.strKey = strKey;
        key.type = std::is_same_v<Field, int32_t> ? Key::TypeInt
            : std::is_same_v<Field, bool>         ? Key::TypeBool
                                                  : Key::TypeDouble;
        key.nOffset = std::size_t(reinterpret_cast<const char*>(&field) - pBase);
        key.dMissing = dMissing;
        key.szLabel = meaning.szLabel;
        key.szUnit = meaning.szUnit;
        key.group = group;
        key.nIndex = nIndex;
        key.dMin = meaning.dMin;
        key.dMax = meaning.dMax;
        keys << key;
        return keys.last();
    };
    // Where the dialog shows a field, and what the read-back check does with it.
    const auto number = [](FactoryParamKey& key, Key::Table table, int nRow, Key::Check check) {
        key.table = table;
        key.nRow = nRow;
        key.editor = Key::EditorNumber;
        key.check = check;
    };
    const auto list = [](FactoryParamKey& key, Key::Table table, int nRow, const QStringList& choices,
                         Key::Check check = Key::CheckNone) {
        key.table = table;
        key.nRow = nRow;
        key.editor = Key::EditorList;
        key.choices = choices;
        key.check = check;
    };
    const QStringList noYes{"No", "Yes"};

    FactoryParams& record = s_template;
    LaserSection& laser = record.laser;
    const auto laserKey = [&](const QString& strKey, auto& field, double dMissing, const Meaning& meaning,
                              Key::Group group = Key::GroupNone, int nIndex = 0) -> FactoryParamKey& {
        return add(Key::SectionLaser, kLaser, strKey, field, dMissing, meaning, group, nIndex);
    };
    laserKey("LASER_COUNT", laser.laserCount, 1.0, {"Laser count", "", 1.0, 2.0});
    // The Laser tab writes RF as type 2 and shows types 1 and 2 as "RF": its
    // rule maps list and value.
    for (int i = 0; i < 2; ++i)
        list(laserKey(Numbered("LASER%1_TYPE", i), laser.lasers[i].type, 0.0, {"Laser type", "", 0.0, 4.0},
                      Key::GroupLaser, i),
             Key::TableLaser, 0, {"Glass", "RF", "Fiber"});
    laserKey("LASER_MACHINE_TYPE", laser.laserMachineType, 0.0, Switch("Laser tube configuration"));
    for (int i = 0; i < 2; ++i) {
        LaserParams& source = laser.lasers[i];
        const auto sourceKey = [&](const char* szKey, auto& field, double dMissing,
                                   const Meaning& meaning) -> FactoryParamKey& {
            return laserKey(Numbered(szKey, i), field, dMissing, meaning, Key::GroupLaser, i);
        };
        // The rated power's list holds the powers; the tab's rule stores the one picked.
        list(sourceKey("LASER_POWER_%1", source.power, 80.0, Quantity("Laser power(W)", "W")), Key::TableLaser, 9,
             {"30", "40", "50", "60", "80", "100", "130"});
        number(sourceKey("LASER_POWER_MIN_%1", source.powerMin, 0.0, {"Min power(%)", "%", 0.0, 100.0}),
               Key::TableLaser, 3, Key::CheckMarked);
        number(sourceKey("LASER_POWER_MAX_%1", source.powerMax, 100.0, {"Max power(%)", "%", 0.0, 100.0}),
               Key::TableLaser, 4, Key::CheckMarked);
        number(sourceKey("LASER_POWER_REDUCTION_%1", source.powerReduction, 0.0,
                         {"Laser Attenuation(%)", "%", 0.0, 100.0}),
               Key::TableLaser, 5, Key::CheckMarked);
        // The dialog shows the laser frequency as stored, the pre-burning
        // frequency divided by 1000; both rows say kHz.
        number(sourceKey("LASER_FREQUENCY_%1", source.frequency, 20000.0,
                         {"Laser Frequency(kHz)", "kHz", 0.0, kMaxValue}),
               Key::TableLaser, 6, Key::CheckMarked);
        FactoryParamKey& burning = sourceKey("LASER_BURNING_FREQUENCY_%1", source.burningFrequency, 5000.0,
                                             {"Pre-burning frequency(kHz)", "kHz", 0.0, kMaxValue});
        burning.dStoredPerShown = 1000.0;
        number(burning, Key::TableLaser, 7, Key::CheckMarkedWhenShifted);
        number(sourceKey("LASER_BURNING_WIDTH_%1", source.burningWidth, 0.5,
                         {"Pre-ignition pulse width(%)", "%", 0.0, 100.0}),
               Key::TableLaser, 8, Key::CheckMarkedWhenShifted);
        list(sourceKey("LASER_SWITCH_SIGNAL_%1", source.switchSignal, 0.0, Switch("SwitchLevel")),
             Key::TableLaser, 2, {"Low level", "High level"});
        list(sourceKey("LASER_WATER_PROTECT_%1", source.waterProtect, 0.0, Switch("Water Protection")),
             Key::TableLaser, 1, {"Close", "On"});
    }

    for (int a = 0; a < 4; ++a) {
        MotorParams& motor = record.motor[a];
        const auto motorKey = [&](const char* szKey, auto& field, double dMissing,
                                  const Meaning& meaning) -> FactoryParamKey& {
            return add(Key::SectionMotor, kMotor, Numbered(szKey, a), field, dMissing, meaning, Key::GroupAxis, a);
        };
        const auto motorNumber = [&](const char* szKey, double& field, double dMissing, const Meaning& meaning,
                                     int nRow) {
            number(motorKey(szKey, field, dMissing, meaning), Key::TableMotor, nRow, Key::CheckMarked);
        };
        // "Negative" first here, "Positive" first for the keypad: the stored
        // value is the list index in both.
        list(motorKey("MOTOR_DIRECTION_POLAR_%1", motor.directionPolar, 0.0,
                      Switch("Direction of Polarity")),
             Key::TableMotor, 0, {"Negative", "Positive"});
        // Not shown: every record leaving the dialog carries 0.
        motorKey("MOTOR_LIMIT_POLAR_%1", motor.limitPolar, 0.0, Switch("Limit switch polarity"));
        list(motorKey("MOTOR_CONTROL_TYPE_%1", motor.controlType, 0.0, Switch("Control Mode")),
             Key::TableMotor, 1, {"Pulse+Direction", "Double pulse"});
        list(motorKey("MOTOR_PWM_EDGE_%1", motor.pwmEdge, 0.0, Switch("PWM Edge Valid")), Key::TableMotor, 2,
             {"Descending Edge", "Rising Edge"});
        list(motorKey("MOTOR_KEY_DIRECTION_%1", motor.keyDirection, 0.0, Switch("Keypad Direction")),
             Key::TableMotor, 3, {"Positive", "Negative"});
        // Not shown: every record leaving the dialog carries protection on.
        motorKey("MOTOR_HARD_LIMIT_PROTECT_%1", motor.hardLimitProtect, 0.0,
                 Switch("Hard limit protection"));
        motorKey("MOTOR_RESET_ENABLE_%1", motor.resetEnable, 0.0, Switch("Takes part in homing"));
        list(motorKey("MOTOR_STARTUP_RESET_%1", motor.startupReset, 0.0, Switch("Initialization")),
             Key::TableMotor, 4, noYes);
        motorNumber("MOTOR_PULSE_PER_MM_%1", motor.pulsePerMm, 1.0, {"Step(p/um)", "p/um", 0.0, kMaxValue}, 5);
        motorNumber("MOTOR_SIZE_%1", motor.size, 900.0, {"Move Distance(mm)", "mm", 0.0, kMaxValue}, 6);
        motorNumber("MOTOR_ZERO_OFFSET_%1", motor.zeroOffset, 0.0, {"Zero Offset(mm)", "mm", 0.0, kMaxValue}, 7);
        // Row 8 is the sub-heading "Motor Speed Limit".
        motorNumber("MOTOR_SPEED_JUMP_%1", motor.speedJump, 5.0, {"Ini Speed(mm/s)", "mm/s", 0.0, kMaxValue}, 9);
        motorNumber("MOTOR_SPEED_MAX_%1", motor.speedMax, 1000.0, {"Max Speed(mm/s)", "mm/s", 0.0, kMaxValue}, 10);
        motorNumber("MOTOR_ACC_MAX_%1", motor.accMax, 8000.0, {"Max Acc(mm/s²)", "mm/s²", 0.0, kMaxValue}, 11);
        motorNumber("MOTOR_ACC_URGENT_STOP_%1", motor.accUrgentStop, 5000.0,
                    {"Emergency stop Acc(mm/s²)", "mm/s²", 0.0, kMaxValue}, 12);
        motorNumber("MOTOR_ACC_KEY_%1", motor.accKey, 3000.0, {"Button Acc(mm/s²)", "mm/s²", 0.0, kMaxValue}, 13);
        motorNumber("MOTOR_SPEED_KEY_JUMP_%1", motor.speedKeyJump, 5.0,
                    {"Keypad Speed(mm/s)", "mm/s", 0.0, kMaxValue}, 14);
    }

    MachineSection& machine = record.machine;
    const auto machineKey = [&](const char* szKey, auto& field, double dMissing,
                                const Meaning& meaning) -> FactoryParamKey& {
        return add(Key::SectionMachine, kMachine, QString::fromLatin1(szKey), field, dMissing, meaning);
    };
    machineKey("MACHINE_MACHINE_TYPE", machine.machineType, 0.0, Quantity("Machine type")).check
        = Key::CheckUnmarked;
    list(machineKey("MACHINE_MOTIVE_MODE", machine.motiveMode, 0.0, {"Moving parts", "", 0.0, 3.0}),
         Key::TableMachine, 0, {"Belt Stepping", "Belt Servo", "Screw Stepper", "Screw Servo"}, Key::CheckMarked);
    machineKey("MACHINE_FEED_MODE", machine.feedMode, 0.0, Quantity("Feed mode")).check = Key::CheckUnmarked;
    list(machineKey("MACHINE_ZERO", machine.machineZero, 0.0, {"Machine zero", "", 0.0, 1.0}),
         Key::TableMachine, 2, {"Top Left", "Top Right"}, Key::CheckMarked);
    list(machineKey("MACHINE_OPEN_PROJECT", machine.openProject, 0.0, Switch("Lid protection")),
         Key::TableMachine, 3, noYes, Key::CheckMarked);
    list(machineKey("MACHINE_BLOW", machine.blow, 0.0, Switch("Blowing")), Key::TableMachine, 4, noYes,
         Key::CheckMarked);
    machineKey("MACHINE_OUTAGE_DELAY", machine.outageDelay, 0.0, Quantity("Power-off delay")).check
        = Key::CheckUnmarked;
    number(machineKey("MACHINE_LASER_SPACE", machine.laserSpace, 0.0, Quantity("Dual head Distance", "mm")),
           Key::TableMachine, 1, Key::CheckMarked);

    SpeedSection& speed = record.speed;
    int nSpeedRow = 0;
    const auto speedKey = [&](const char* szKey, double& field, double dMissing, const char* szLabel,
                              const char* szUnit) {
        number(add(Key::SectionSpeed, kSpeed, QString::fromLatin1(szKey), field, dMissing, Quantity(szLabel, szUnit)),
               Key::TableSpeed, nSpeedRow++, Key::CheckMarked);
    };
    speedKey("SPEED_CUT_SPEED_SPACE", speed.cutSpeedSpace, 50.0, "Idle speed(mm/s)", "mm/s");
    speedKey("SPEED_CUT_SPEED_CORNER", speed.cutSpeedCorner, 50.0, "Corner speed(mm/s)", "mm/s");
    speedKey("SPEED_CUT_ACC_SPACE", speed.cutAccSpace, 800.0, "Idle Acc(mm/s²)", "mm/s²");
    speedKey("SPEED_CUT_ACC_CORNER", speed.cutAccCorner, 500.0, "PMax Acc(mm/s²)", "mm/s²");
    speedKey("SPEED_CUT_ACC_WORK", speed.cutAccWork, 800.0, "Working Acc(mm/s²)", "mm/s²");
    speedKey("SPEED_SWEEP_SPEED_XSTART", speed.sweepSpeedXStart, 5.0,
             "Engraving X-axis Ini speed(mm/s)", "mm/s");
    speedKey("SPEED_SWEEP_SPEED_YSTART", speed.sweepSpeedYStart, 5.0,
             "Engraving Y-axis Ini speed(mm/s)", "mm/s");
    speedKey("SPEED_SWEEP_SPEED_NEWLINE", speed.sweepSpeedNewline, 5.0, "Engraving DPI speed(mm/s)",
             "mm/s");
    speedKey("SPEED_SWEEP_ACC_X", speed.sweepAccX, 800.0, "Engraving X-axis Acc(mm/s²)", "mm/s²");
    speedKey("SPEED_SWEEP_ACC_Y", speed.sweepAccY, 800.0, "Engraving Y-axis Acc(mm/s²)", "mm/s²");
    speedKey("SPEED_PANEL_SPEED_RESET", speed.panelSpeedReset, 50.0, "Reset speed(mm/s)", "mm/s");

    // The fields the file does not hold: every record the dialog hands out
    // carries both sources enabled and the row shift it was given.
    for (int i = 0; i < 2; ++i)
        laserKey(QString(), laser.lasers[i].enabled, 1.0, Switch(""), Key::GroupLaser, i);
    laserKey(QString(), laser.reserved, 0.0, {"", "", -2147483648.0, 2147483647.0});
    return keys;
}
}

const QVector<FactoryParamKey>& FactoryParamKey::All()
{
    static const QVector<FactoryParamKey> s_all = Build();
    return s_all;
}

const QVector<FactoryParamKey>& FactoryParamKey::File()
{
    static const QVector<FactoryParamKey> s_file = [] {
        QVector<FactoryParamKey> keys;
        for (const FactoryParamKey& key : All())
            if (key.InFile())
                keys << key;
        return keys;
    }();
    return s_file;
}

const FactoryParamKey* FactoryParamKey::Find(const QString& strKey)
{
    if (strKey.isEmpty())
        return nullptr;
    for (const FactoryParamKey& key : File())
        if (key.strKey == strKey)
            return &key;
    return nullptr;
}

const FactoryParamKey* FactoryParamKey::AtCell(Table table, int nRow, int nColumn)
{
    if (table == TableNone)
        return nullptr;
    for (const FactoryParamKey& key : All())
        if (key.table == table && key.nRow == nRow && key.Column() == nColumn)
            return &key;
    return nullptr;
}

double FactoryParamKey::ValueOf(const FactoryParams& record, const QString& strKey)
{
    const FactoryParamKey* pKey = Find(strKey);
    return pKey ? pKey->Value(record) : std::numeric_limits<double>::quiet_NaN();
}

namespace {
template <typename T>
T& FieldIn(FactoryParams& record, std::size_t nOffset)
{
    return *reinterpret_cast<T*>(reinterpret_cast<char*>(&record) + nOffset);
}

template <typename T>
T FieldOf(const FactoryParams& record, std::size_t nOffset)
{
    T value;
    std::memcpy(&value, reinterpret_cast<const char*>(&record) + nOffset, sizeof(T));
    return value;
}
}

double FactoryParamKey::Value(const FactoryParams& record) const
{
    switch (type) {
    case TypeDouble: return FieldOf<double>(record, nOffset);
    case TypeInt: return double(FieldOf<int32_t>(record, nOffset));
    case TypeBool: return FieldOf<bool>(record, nOffset) ? 1.0 : 0.0;
    }
    return 0.0;
}

void FactoryParamKey::SetFromSettings(FactoryParams& record, const QVariant& value) const
{
    switch (type) {
    case TypeDouble: FieldIn<double>(record, nOffset) = value.toDouble(); break;
    case TypeInt: FieldIn<int32_t>(record, nOffset) = value.toInt(); break;
    case TypeBool: FieldIn<bool>(record, nOffset) = value.toInt() != 0; break;
    }
}

void FactoryParamKey::SetValue(FactoryParams& record, double dValue) const
{
    switch (type) {
    case TypeDouble: FieldIn<double>(record, nOffset) = dValue; break;
    case TypeInt:
        FieldIn<int32_t>(record, nOffset)
            = std::isfinite(dValue) && dValue >= double(std::numeric_limits<int32_t>::min())
                && dValue <= double(std::numeric_limits<int32_t>::max())
            ? int32_t(std::lround(dValue))
            : 0;
        break;
    case TypeBool: FieldIn<bool>(record, nOffset) = dValue != 0.0; break;
    }
}

bool FactoryParamKey::Same(const FactoryParams& a, const FactoryParams& b) const
{
    return Value(a) == Value(b);
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
    if (!IsDouble()) {
        const double dLimit = double(std::numeric_limits<int32_t>::max());
        if (dValue != std::trunc(dValue) || dValue < -dLimit - 1.0 || dValue > dLimit)
            return false;
    }
    return dValue >= dMin && dValue <= dMax;
}

QString FactoryParamKey::Shown(const FactoryParams& record) const
{
    return Fixed2(ToShown(Value(record)));
}

QString FactoryParamKey::Fixed2(double dValue)
{
    return QString::number(dValue, 'f', 2);
}
