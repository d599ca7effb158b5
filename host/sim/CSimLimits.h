#pragma once

struct FactoryParams;

// What the simulated controller can take. A value it cannot take is stored
// as the nearest value it can, as a real controller limits what it cannot
// drive; the settings dialog's read-back check then finds and marks it.
//
//   Field(s)                                   Range
//   enumerated motor and laser switches        0 .. 1
//   laserCount                                 1 .. 2
//   laser type                                 0 .. 4
//   powerMin, powerMax, powerReduction         0 .. 100 %
//   other motor and laser values               0 .. 1,000,000
//   X axis speedMax                            0 .. 1,500 mm/s   (the machine's limits:
//   Y, Z and U axis speedMax                   0 .. 1,000 mm/s    a heavier Y gantry,
//   X and Y accMax, accUrgentStop              0 .. 30,000 mm/s²  and motors that cannot
//                                                                 accelerate harder)
//   X, Y, Z, U size (travel)                   0 .. 3,000 mm
//   processing speeds                          0 .. 1,500 mm/s
//   processing accelerations                   0 .. 40,000 mm/s²
//   machine: laserSpace 0 .. 3,000 mm, outageDelay 0 .. 60,000, machineZero 0 .. 3, motiveMode 0 .. 3
//
// And what no controller can take, whatever the ranges:
//   not-a-number or infinite            the value it held before
//   a step (pulsePerMm) of 0 or less    the step it held before
//   powerMin above powerMax             powerMax
//   an axis' start speed (speedJump) above its maximum speed    the maximum speed
//   an axis' maximum speed beyond the card's pulse rate: speedMax x pulsePerMm may not
//     exceed kMaxPulseRate pulses per second              kMaxPulseRate / pulsePerMm
//   processing speeds above the X or Y maximum speed      the smaller of the two
class CSimLimits
{
public:
    // The most step pulses per second the card emits on one axis.
    static constexpr double kMaxPulseRate = 20000.0;

    // params as the controller stores them, coming after previous (what it
    // held); *pnChanged, when given, says how many values that changed.
    static FactoryParams Limit(const FactoryParams& params, const FactoryParams& previous, int* pnChanged = nullptr);
};
