#pragma once

// The values the parameter file reader stores for a key that an existing file
// lacks. Many differ from a new record's defaults (pulsePerMm 1 against
// 7.88627, outageDelay 0 against 1000, the motor switches off against on): a
// record loaded from an incomplete file is meant to differ from a fresh one.
namespace FactoryParamMissing {

// Laser section
constexpr int kLaserCount = 1;
constexpr int kLaserType = 0;
constexpr int kLaserMachineType = 0;
constexpr int kPower = 80;
constexpr double kPowerMin = 0.0;
constexpr double kPowerMax = 100.0;
constexpr double kPowerReduction = 0.0;
constexpr double kFrequency = 20000.0;
constexpr double kBurningFrequency = 5000.0;
constexpr double kBurningWidth = 0.5;
constexpr int kSwitchSignal = 0;
constexpr int kWaterProtect = 0;

// Motor section, every axis
constexpr int kDirectionPolar = 0;
constexpr int kLimitPolar = 0;
constexpr int kControlType = 0;
constexpr int kPwmEdge = 0;
constexpr int kKeyDirection = 0;
constexpr int kHardLimitProtect = 0;
constexpr int kResetEnable = 0;
constexpr int kStartupReset = 0;
constexpr double kPulsePerMm = 1.0;
constexpr double kSize = 900.0;
constexpr double kZeroOffset = 0.0;
constexpr double kSpeedJump = 5.0;
constexpr double kSpeedMax = 1000.0;
constexpr double kAccMax = 8000.0;
constexpr double kAccUrgentStop = 5000.0;
constexpr double kAccKey = 3000.0;
constexpr double kSpeedKeyJump = 5.0;

// Machine section
constexpr int kMachineType = 0;
constexpr int kMotiveMode = 0;
constexpr int kFeedMode = 0;
constexpr int kMachineZero = 0;
constexpr int kOpenProject = 0;
constexpr int kBlow = 0;
constexpr int kOutageDelay = 0;
constexpr double kLaserSpace = 0.0;

// Speed section
constexpr double kCutSpeedSpace = 50.0;
constexpr double kCutSpeedCorner = 50.0;
constexpr double kCutAccSpace = 800.0;
constexpr double kCutAccCorner = 500.0;
constexpr double kCutAccWork = 800.0;
constexpr double kSweepSpeedXStart = 5.0;
constexpr double kSweepSpeedYStart = 5.0;
constexpr double kSweepSpeedNewline = 5.0;
constexpr double kSweepAccX = 800.0;
constexpr double kSweepAccY = 800.0;
constexpr double kPanelSpeedReset = 50.0;

} // namespace FactoryParamMissing
