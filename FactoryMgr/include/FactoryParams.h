#pragma once

/// \file FactoryParams.h
/// \brief The 720-byte factory parameter record, FactoryParams, and its sections.
///
/// The record passes between the host and the FactoryMgr plug-in as one block of exactly
/// 720 bytes: IFactoryMgr::SetFactoryParams() and IFactoryMgr::GetFactoryParams() copy it,
/// IDevice::WriteFactoryParams() and IDevice::ReadFactoryParams() receive a pointer to it. Its
/// layout is a binary contract: natural alignment (a double on a multiple of 8 bytes, an int32_t
/// on a multiple of 4), little-endian, no packing, one-byte booleans (0 or 1). Every field keeps
/// its offset and width, which static assertions at the end of this header check when the
/// header is compiled. The padding the alignment needs is implicit: there are no padding
/// members, and nothing in the plug-in compares or stores padding bytes.
///
/// No field holds a pointer, so copies never share state; every copy is a plain copy of the
/// 720 bytes. Neither the record nor the parameter file reader checks ranges; only the settings
/// dialog limits what the user types.
///
/// The default member values are the in-memory defaults of a new record. The parameter file
/// reader has a second, different set for keys that an existing file lacks; the two differ on
/// purpose (for example MotorParams::pulsePerMm 7.88627 against 1), so a record loaded from an
/// incomplete file differs from a new one.

#include <cstddef>
#include <cstdint>
#include <type_traits>

/// \brief The settings of one motor axis; 104 bytes.
///
/// FactoryParams::motor holds one per axis: index 0 to 3 is axis X, Y, Z, U (number 1 to 4 in
/// the parameter file's keys).
struct MotorParams
{
    int32_t directionPolar = 1;     ///< Direction signal polarity, 0 or 1 (the dialog shows 0 "Negative", 1 "Positive").
    int32_t limitPolar = 0;         ///< Limit switch polarity, 0 or 1. Not shown by the dialog, which sends 0.
    int32_t controlType = 0;        ///< Drive signal mode, 0 or 1 (0 "Pulse+Direction", 1 "Double pulse").
    int32_t pwmEdge = 0;            ///< Active pulse edge, 0 or 1 (0 "Descending Edge", 1 "Rising Edge").
    int32_t keyDirection = 1;       ///< Jog key direction, 0 or 1 (0 "Positive", 1 "Negative").
    double pulsePerMm = 7.88627;    ///< Motor step, pulses per mm. The calibration wizard corrects it for X and Y.
    double size = 900.0;            ///< Travel of the axis, mm.
    double zeroOffset = 3.0;        ///< Offset of the origin, mm.
    bool hardLimitProtect = true;   ///< Hard limit protection on. Not shown by the dialog, which sends true.
    bool resetEnable = true;        ///< The axis takes part in homing. Not shown by the dialog.
    bool startupReset = true;       ///< The axis homes at power-up.
    double speedJump = 20.0;        ///< Start speed, mm/s.
    double speedMax = 1000.0;       ///< Maximum speed, mm/s.
    double accMax = 20000.0;        ///< Maximum acceleration, mm/s².
    double accUrgentStop = 20000.0; ///< Emergency stop deceleration, mm/s².
    double accKey = 2500.0;         ///< Jog key acceleration, mm/s².
    double speedKeyJump = 10.0;     ///< Jog key speed, mm/s.
};

/// \brief The settings of one laser source; 80 bytes.
///
/// LaserSection::lasers holds two, whatever LaserSection::laserCount says (number 1 and 2 in
/// the parameter file's keys).
struct LaserParams
{
    bool enabled = true;            ///< Source present. Not in the parameter file; the dialog sends true for both sources.
    double powerMin = 10.0;         ///< Minimum power, percent.
    double powerMax = 100.0;        ///< Maximum power, percent.
    int32_t power = 80;             ///< Rated power, W (the dialog offers 30, 40, 50, 60, 80, 100 and 130).
    double powerReduction = 0.0;    ///< Power reduction, percent.
    double frequency = 20000.0;     ///< Laser PWM frequency; the dialog shows this number unscaled.
    double burningFrequency = 5000.0; ///< Pre-ignition frequency, Hz (the dialog shows kHz).
    double burningWidth = 0.5;      ///< Pre-ignition pulse width, percent.
    int32_t switchSignal = 0;       ///< Level that switches the laser on, 0 or 1; the dialog shows 0 as "Low level", 1 as "High level".
    bool waterProtect = true;       ///< Water flow protection on.
    int32_t type = 0;               ///< Kind of source: 0 glass, 1 and 2 RF, 3 fibre, 4 reserved. The dialog writes 0, 2 or 3.
};

/// \brief The laser sources of the machine; 176 bytes.
struct LaserSection
{
    /// \brief Makes the section with the in-memory defaults.
    ///
    /// Both sources are constructed first; then the section's own words are set:
    /// laserCount 1, reserved 0, laserMachineType 0.
    LaserSection()
    {
        laserCount = 1;
        reserved = 0;
        laserMachineType = 0;
    }

    int32_t laserCount;             ///< Number of laser sources, 1 or 2 (the dialog writes 1 or 2; a file may hold any value).
    int32_t reserved;               ///< Laser row shift of the dialog, which writes 0. Not in the parameter file.
    LaserParams lasers[2];          ///< Source 1 and source 2.
    int32_t laserMachineType;       ///< Tube arrangement: 0 single tube, 1 double tube. Stored and passed on; the dialog does not show it.
};

/// \brief Options of the machine's mechanics; 40 bytes.
struct MachineSection
{
    int32_t machineType = 0;        ///< Machine model code; stored and passed on, not shown by the dialog.
    int32_t motiveMode = 0;         ///< Drive train: 0 belt stepping, 1 belt servo, 2 screw stepper, 3 screw servo.
    int32_t feedMode = 0;           ///< Feeding mode code; stored and passed on, not shown by the dialog.
    int32_t machineZero = 0;        ///< Corner of the machine origin: 0 top left, 1 top right.
    bool openProject = false;       ///< Open project option.
    bool blow = false;              ///< Air assist.
    double laserSpace = 0.0;        ///< Distance between the two laser heads, mm.
    int32_t outageDelay = 1000;     ///< Power outage delay, a whole number; stored and passed on, not shown by the dialog.
};

/// \brief Default processing speeds and accelerations; 88 bytes.
struct SpeedSection
{
    double panelSpeedReset = 50.0;   ///< Reset (homing) speed, mm/s.
    double sweepSpeedXStart = 5.0;   ///< Engraving start speed of X, mm/s.
    double sweepSpeedYStart = 5.0;   ///< Engraving start speed of Y, mm/s.
    double sweepSpeedNewline = 20.0; ///< Engraving line feed speed, mm/s.
    double sweepAccX = 2000.0;       ///< Engraving acceleration of X, mm/s².
    double sweepAccY = 2000.0;       ///< Engraving acceleration of Y, mm/s².
    double cutSpeedSpace = 300.0;    ///< Cutting: speed of idle moves, mm/s.
    double cutSpeedCorner = 50.0;    ///< Cutting: corner speed, mm/s.
    double cutAccSpace = 2000.0;     ///< Cutting: acceleration of idle moves, mm/s².
    double cutAccCorner = 800.0;     ///< Cutting: corner acceleration, mm/s².
    double cutAccWork = 2000.0;      ///< Cutting: acceleration while cutting, mm/s².
};

/// \brief The factory parameter record: every factory setting of one machine; 720 bytes.
///
/// A default-constructed record holds the in-memory defaults given with each field.
/// Ownership: the plug-in owns its own record; every caller owns its copies.
struct FactoryParams
{
    MotorParams motor[4];           ///< Axes X, Y, Z, U; offset 0, 416 bytes.
    LaserSection laser;             ///< Laser sources; offset 416, 176 bytes.
    MachineSection machine;         ///< Machine options; offset 592, 40 bytes.
    SpeedSection speed;             ///< Processing speeds; offset 632, 88 bytes.
};

// ---- The binary contract -------------------------------------------------

/// \brief Fails the build when \p member of \p type is not at \p offset with \p width bytes.
///
/// Used only below and undefined again at the end of this header.
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
