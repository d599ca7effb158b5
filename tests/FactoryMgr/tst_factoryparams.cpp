#include "TestMain.h"

#include "FactoryParamKeys.h"
#include "FactoryParams.h"

#include <cstddef>

namespace {
// What the file reader stores for a key the file lacks.
double Missing(const char* szKey)
{
    const FactoryParamKey* pKey = FactoryParamKey::Find(QString::fromLatin1(szKey));
    return pKey ? pKey->dMissing : -1.0;
}
}

class TestFactoryParams : public QObject
{
    Q_OBJECT
private slots:
    void recordIs720Bytes();
    void constructorGivesInMemoryDefaultsOnEveryAxis();
    void constructorGivesInMemoryDefaultsOnBothLasers();
    void constructorGivesMachineAndSpeedDefaults();
    void missingValuesDifferFromInMemoryDefaultsWhereIntended();
};

void TestFactoryParams::recordIs720Bytes()
{
    QCOMPARE(sizeof(FactoryParams), size_t(720));
    QCOMPARE(offsetof(FactoryParams, speed) + sizeof(SpeedSection), size_t(720));
}

void TestFactoryParams::constructorGivesInMemoryDefaultsOnEveryAxis()
{
    const FactoryParams params;
    for (const MotorParams& motor : params.motor) {
        QCOMPARE(motor.directionPolar, 1);
        QCOMPARE(motor.limitPolar, 0);
        QCOMPARE(motor.controlType, 0);
        QCOMPARE(motor.pwmEdge, 0);
        QCOMPARE(motor.keyDirection, 1);
        QCOMPARE(motor.pulsePerMm, 7.88627);
        QCOMPARE(motor.size, 900.0);
        QCOMPARE(motor.zeroOffset, 3.0);
        QCOMPARE(motor.hardLimitProtect, true);
        QCOMPARE(motor.resetEnable, true);
        QCOMPARE(motor.startupReset, true);
        QCOMPARE(motor.speedJump, 20.0);
        QCOMPARE(motor.speedMax, 1000.0);
        QCOMPARE(motor.accMax, 20000.0);
        QCOMPARE(motor.accUrgentStop, 20000.0);
        QCOMPARE(motor.accKey, 2500.0);
        QCOMPARE(motor.speedKeyJump, 10.0);
    }
}

void TestFactoryParams::constructorGivesInMemoryDefaultsOnBothLasers()
{
    const FactoryParams params;
    QCOMPARE(params.laser.laserCount, 1);
    QCOMPARE(params.laser.reserved, 0);
    QCOMPARE(params.laser.laserMachineType, 0);
    for (const LaserParams& laser : params.laser.lasers) {
        QCOMPARE(laser.enabled, true);
        QCOMPARE(laser.powerMin, 10.0);
        QCOMPARE(laser.powerMax, 100.0);
        QCOMPARE(laser.power, 80);
        QCOMPARE(laser.powerReduction, 0.0);
        QCOMPARE(laser.frequency, 20000.0);
        QCOMPARE(laser.burningFrequency, 5000.0);
        QCOMPARE(laser.burningWidth, 0.5);
        QCOMPARE(laser.switchSignal, 0);
        QCOMPARE(laser.waterProtect, true);
        QCOMPARE(laser.type, 0);
    }
}

void TestFactoryParams::constructorGivesMachineAndSpeedDefaults()
{
    const FactoryParams params;
    QCOMPARE(params.machine.machineType, 0);
    QCOMPARE(params.machine.motiveMode, 0);
    QCOMPARE(params.machine.feedMode, 0);
    QCOMPARE(params.machine.machineZero, 0);
    QCOMPARE(params.machine.openProject, false);
    QCOMPARE(params.machine.blow, false);
    QCOMPARE(params.machine.laserSpace, 0.0);
    QCOMPARE(params.machine.outageDelay, 1000);

    QCOMPARE(params.speed.panelSpeedReset, 50.0);
    QCOMPARE(params.speed.sweepSpeedXStart, 5.0);
    QCOMPARE(params.speed.sweepSpeedYStart, 5.0);
    QCOMPARE(params.speed.sweepSpeedNewline, 20.0);
    QCOMPARE(params.speed.sweepAccX, 2000.0);
    QCOMPARE(params.speed.sweepAccY, 2000.0);
    QCOMPARE(params.speed.cutSpeedSpace, 300.0);
    QCOMPARE(params.speed.cutSpeedCorner, 50.0);
    QCOMPARE(params.speed.cutAccSpace, 2000.0);
    QCOMPARE(params.speed.cutAccCorner, 800.0);
    QCOMPARE(params.speed.cutAccWork, 2000.0);
}

void TestFactoryParams::missingValuesDifferFromInMemoryDefaultsWhereIntended()
{
    // The two sets must stay apart: a record loaded from a file that lacks
    // keys is not a fresh record.
    const FactoryParams fresh;
    QCOMPARE(Missing("MOTOR_PULSE_PER_MM_1"), 1.0);
    QVERIFY(fresh.motor[0].pulsePerMm != Missing("MOTOR_PULSE_PER_MM_1"));
    QCOMPARE(Missing("MACHINE_OUTAGE_DELAY"), 0.0);
    QVERIFY(fresh.machine.outageDelay != Missing("MACHINE_OUTAGE_DELAY"));
    QCOMPARE(Missing("MOTOR_HARD_LIMIT_PROTECT_1"), 0.0);
    QCOMPARE(Missing("MOTOR_RESET_ENABLE_1"), 0.0);
    QCOMPARE(Missing("MOTOR_STARTUP_RESET_1"), 0.0);
    QCOMPARE(Missing("LASER_WATER_PROTECT_1"), 0.0);
    QCOMPARE(Missing("LASER_POWER_MIN_1"), 0.0);
    QCOMPARE(Missing("MOTOR_ACC_MAX_1"), 8000.0);
    QCOMPARE(Missing("MOTOR_ACC_URGENT_STOP_1"), 5000.0);
    QCOMPARE(Missing("MOTOR_ACC_KEY_1"), 3000.0);
    QCOMPARE(Missing("MOTOR_SPEED_JUMP_1"), 5.0);
    QCOMPARE(Missing("MOTOR_SPEED_KEY_JUMP_1"), 5.0);
    QCOMPARE(Missing("MOTOR_ZERO_OFFSET_1"), 0.0);
    QCOMPARE(Missing("MOTOR_DIRECTION_POLAR_1"), 0.0);
    QCOMPARE(Missing("MOTOR_KEY_DIRECTION_1"), 0.0);
    QCOMPARE(Missing("SPEED_SWEEP_SPEED_NEWLINE"), 5.0);
    QCOMPARE(Missing("SPEED_SWEEP_ACC_X"), 800.0);
    QCOMPARE(Missing("SPEED_CUT_SPEED_SPACE"), 50.0);
    QCOMPARE(Missing("SPEED_CUT_ACC_CORNER"), 500.0);
}

FACTORYMGR_TEST_MAIN(TestFactoryParams)
#include "tst_factoryparams.moc"
