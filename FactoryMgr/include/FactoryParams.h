#pragma once

// The factory parameter record exchanged between the host and the FactoryMgr
// plug-in as one block of exactly 720 bytes. Its layout is a binary contract:
// natural alignment, little-endian, no packing. Every field keeps its offset
// and width (checked below); padding is spelled out where it falls.
//
// Default member values are the in-memory defaults of a new record. The
// parameter file reader has a second, different set for keys absent from a
// file (FactoryParamMissing); the two are kept apart on purpose.

#include <cstddef>
#include <cstdint>
#include <type_traits>

struct MotorParams
{
    int32_t directionPolar = 1;     // direction signal polarity, 0 or 1
    int32_t limitPolar = 0;         // limit switch polarity, 0 or 1
    int32_t controlType = 0;        // drive signal mode, 0 or 1
    int32_t pwmEdge = 0;            // active pulse edge, 0 or 1
    int32_t keyDirection = 1;       // jog key direction, 0 or 1
    double pulsePerMm = 7.88627;    // motor step, pulses per mm
    double size = 900.0;            // travel, mm
    double zeroOffset = 3.0;        // origin offset, mm
    bool hardLimitProtect = true;
    bool resetEnable = true;        // takes part in homing
    bool startupReset = true;       // homes at power-up
    double speedJump = 20.0;        // start speed, mm/s
    double speedMax = 1000.0;       // mm/s
    double accMax = 20000.0;        // mm/s²
    double accUrgentStop = 20000.0; // emergency stop deceleration, mm/s²
    double accKey = 2500.0;         // jog key acceleration, mm/s²
    double speedKeyJump = 10.0;     // jog key speed, mm/s
};

struct LaserParams
{
    bool enabled = true;            // source present; no file key
    double powerMin = 10.0;         // percent
    double powerMax = 100.0;        // percent
    int32_t power = 80;             // rated power, W
    double powerReduction = 0.0;    // percent
    double frequency = 20000.0;     // PWM frequency
    double burningFrequency = 5000.0; // pre-ignition frequency, Hz
    double burningWidth = 0.5;      // pre-ignition pulse width, percent
    int32_t switchSignal = 0;       // 0 high level, 1 low level
    bool waterProtect = true;
    int32_t type = 0;               // 0 glass, 1 and 2 RF, 3 fibre, 4 reserved
};

struct LaserSection
{
    // Both sources are constructed first; then the section's own words.
    LaserSection()
    {
        laserCount = 1;
        reserved = 0;
        laserMachineType = 0;
    }

    int32_t laserCount;             // 1 or 2 sources
    int32_t reserved;               // laser row shift of the dialog; no file key
    LaserParams lasers[2];
    int32_t laserMachineType;       // 0 single tube, 1 double tube
};

struct MachineSection
{
    int32_t machineType = 0;
    int32_t motiveMode = 0;         // 0 belt stepping, 1 belt servo, 2 screw stepper, 3 screw servo
    int32_t feedMode = 0;
    int32_t machineZero = 0;        // origin corner
    bool openProject = false;
    bool blow = false;              // air assist
    double laserSpace = 0.0;        // distance between the two heads, mm
    int32_t outageDelay = 1000;
};

struct SpeedSection
{
    double panelSpeedReset = 50.0;
    double sweepSpeedXStart = 5.0;
    double sweepSpeedYStart = 5.0;
    double sweepSpeedNewline = 20.0;
    double sweepAccX = 2000.0;
    double sweepAccY = 2000.0;
    double cutSpeedSpace = 300.0;
    double cutSpeedCorner = 50.0;
    double cutAccSpace = 2000.0;
    double cutAccCorner = 800.0;
    double cutAccWork = 2000.0;
};

struct FactoryParams
{
    MotorParams motor[4];           // axes X, Y, Z, U
    LaserSection laser;
    MachineSection machine;
    SpeedSection speed;
};

// ---- The binary contract -------------------------------------------------

#define FACTORYPARAMS_CHECK(type, member, offset, width)                                                  \
    static_assert(offsetof(type, member) == (offset), #type "::" #member " moved");                      \
    static_assert(sizeof(type::member) == (width), #type "::" #member " changed width")

static_assert(std::is_trivially_copyable<FactoryParams>::value, "FactoryParams travels as raw bytes");
static_assert(std::is_standard_layout<FactoryParams>::value, "FactoryParams travels as raw bytes");
static_assert(sizeof(bool) == 1, "booleans are one byte");

static_assert(sizeof(FactoryParams) == 720, "FactoryParams is 720 bytes");
FACTORYPARAMS_CHECK(FactoryParams, motor, 0, 416);
FACTORYPARAMS_CHECK(FactoryParams, laser, 416, 176);
FACTORYPARAMS_CHECK(FactoryParams, machine, 592, 40);
FACTORYPARAMS_CHECK(FactoryParams, speed, 632, 88);

static_assert(sizeof(MotorParams) == 104, "MotorParams is 104 bytes");
FACTORYPARAMS_CHECK(MotorParams, directionPolar, 0, 4);
FACTORYPARAMS_CHECK(MotorParams, limitPolar, 4, 4);
FACTORYPARAMS_CHECK(MotorParams, controlType, 8, 4);
FACTORYPARAMS_CHECK(MotorParams, pwmEdge, 12, 4);
FACTORYPARAMS_CHECK(MotorParams, keyDirection, 16, 4);
FACTORYPARAMS_CHECK(MotorParams, pulsePerMm, 24, 8);
FACTORYPARAMS_CHECK(MotorParams, size, 32, 8);
FACTORYPARAMS_CHECK(MotorParams, zeroOffset, 40, 8);
FACTORYPARAMS_CHECK(MotorParams, hardLimitProtect, 48, 1);
FACTORYPARAMS_CHECK(MotorParams, resetEnable, 49, 1);
FACTORYPARAMS_CHECK(MotorParams, startupReset, 50, 1);
FACTORYPARAMS_CHECK(MotorParams, speedJump, 56, 8);
FACTORYPARAMS_CHECK(MotorParams, speedMax, 64, 8);
FACTORYPARAMS_CHECK(MotorParams, accMax, 72, 8);
FACTORYPARAMS_CHECK(MotorParams, accUrgentStop, 80, 8);
FACTORYPARAMS_CHECK(MotorParams, accKey, 88, 8);
FACTORYPARAMS_CHECK(MotorParams, speedKeyJump, 96, 8);

static_assert(sizeof(LaserSection) == 176, "LaserSection is 176 bytes");
FACTORYPARAMS_CHECK(LaserSection, laserCount, 0, 4);
FACTORYPARAMS_CHECK(LaserSection, reserved, 4, 4);
FACTORYPARAMS_CHECK(LaserSection, lasers, 8, 160);
FACTORYPARAMS_CHECK(LaserSection, laserMachineType, 168, 4);

static_assert(sizeof(LaserParams) == 80, "LaserParams is 80 bytes");
FACTORYPARAMS_CHECK(LaserParams, enabled, 0, 1);
FACTORYPARAMS_CHECK(LaserParams, powerMin, 8, 8);
FACTORYPARAMS_CHECK(LaserParams, powerMax, 16, 8);
FACTORYPARAMS_CHECK(LaserParams, power, 24, 4);
FACTORYPARAMS_CHECK(LaserParams, powerReduction, 32, 8);
FACTORYPARAMS_CHECK(LaserParams, frequency, 40, 8);
FACTORYPARAMS_CHECK(LaserParams, burningFrequency, 48, 8);
FACTORYPARAMS_CHECK(LaserParams, burningWidth, 56, 8);
FACTORYPARAMS_CHECK(LaserParams, switchSignal, 64, 4);
FACTORYPARAMS_CHECK(LaserParams, waterProtect, 68, 1);
FACTORYPARAMS_CHECK(LaserParams, type, 72, 4);

static_assert(sizeof(MachineSection) == 40, "MachineSection is 40 bytes");
FACTORYPARAMS_CHECK(MachineSection, machineType, 0, 4);
FACTORYPARAMS_CHECK(MachineSection, motiveMode, 4, 4);
FACTORYPARAMS_CHECK(MachineSection, feedMode, 8, 4);
FACTORYPARAMS_CHECK(MachineSection, machineZero, 12, 4);
FACTORYPARAMS_CHECK(MachineSection, openProject, 16, 1);
FACTORYPARAMS_CHECK(MachineSection, blow, 17, 1);
FACTORYPARAMS_CHECK(MachineSection, laserSpace, 24, 8);
FACTORYPARAMS_CHECK(MachineSection, outageDelay, 32, 4);

static_assert(sizeof(SpeedSection) == 88, "SpeedSection is 88 bytes");
FACTORYPARAMS_CHECK(SpeedSection, panelSpeedReset, 0, 8);
FACTORYPARAMS_CHECK(SpeedSection, sweepSpeedXStart, 8, 8);
FACTORYPARAMS_CHECK(SpeedSection, sweepSpeedYStart, 16, 8);
FACTORYPARAMS_CHECK(SpeedSection, sweepSpeedNewline, 24, 8);
FACTORYPARAMS_CHECK(SpeedSection, sweepAccX, 32, 8);
FACTORYPARAMS_CHECK(SpeedSection, sweepAccY, 40, 8);
FACTORYPARAMS_CHECK(SpeedSection, cutSpeedSpace, 48, 8);
FACTORYPARAMS_CHECK(SpeedSection, cutSpeedCorner, 56, 8);
FACTORYPARAMS_CHECK(SpeedSection, cutAccSpace, 64, 8);
FACTORYPARAMS_CHECK(SpeedSection, cutAccCorner, 72, 8);
FACTORYPARAMS_CHECK(SpeedSection, cutAccWork, 80, 8);

#undef FACTORYPARAMS_CHECK
