#pragma once

#include "CardInfo.h"
#include "FactoryParams.h"
#include "ICard.h"
#include "IDevice.h"
#include "ITaskState.h"

#include <QElapsedTimer>
#include <QMutex>
#include <QObject>
#include <QSizeF>
#include <QString>

#include <initializer_list>

// A motion-control card and the machine behind it, in software. It is the
// host's device, its current card and the card's task state at once.
//
// Firmware files must be of the boards' own format (CFirmwareFile); after a
// mainboard upgrade it restarts, off the line for a moment.
//
// Like a controller's flash, everything it keeps (the factory parameters, the
// counters, the firmware versions, the card type and the machine's true steps)
// lives in a file and survives a restart. It stores what it cannot take as
// the nearest value it can (CSimLimits). The machine's true travel per motor
// pulse differs from the configured step, so the calibration square comes out
// at 150 x true / configured mm on each axis until the step is corrected.
class CSimController : public QObject, public IDevice, public ICard, public ITaskState
{
    Q_OBJECT
public:
    // The controller's own result codes (the bridge's are 1001 and 1005).
    enum Code
    {
        CodeNotConnected = 2001,      // no controller on the line
        CodeFileMissing = 2002,       // the firmware or job file does not exist
        CodeFileEmpty = 2003,         // the firmware file is empty
        CodeWrongFileType = 2004,     // the firmware file has the wrong extension
        CodeBadJob = 2005,            // the job file is not a job the machine can cut
        CodeUnknownFunction = 2006,   // the card has no function of that name
        CodeNotFirmware = 2007,       // the file is no firmware file (no "QVFW 1" header)
        CodeWrongBoard = 2008,        // the firmware is for the other board
        CodeBadChecksum = 2009,       // the firmware image is damaged (CRC-32 differs)
        CodeUnreadable = 2010,        // the file cannot be read
        CodeNoPower = 2011,           // the job's laser power is 0 %: nothing would be cut
        CodeOutsideWorkArea = 2012,   // the job does not fit the work area the axes' travel gives
        CodeLinkLost = 2013,          // the link dropped during the operation
        CodeFlashError = 2014,        // the controller could not write its flash
        CodeFirmwareIncomplete = 2015,// an upgrade was cut off: the board needs it again
        CodeNoAnswer = 2016           // the controller did not answer in time
    };

    // Faults to make happen, each once, on the next operation it concerns.
    enum Fault
    {
        FaultNone,
        FaultDropOnWrite,     // the link drops while parameters are written (nothing is stored)
        FaultDropOnRead,      // the link drops while parameters are read
        FaultDropOnUpgrade,   // the link drops during an upgrade: the board's firmware is left incomplete
        FaultDropOnCut,       // the link drops during a cut
        FaultFlashError,      // a parameter write fails to reach the flash (nothing is stored)
        FaultCorruptRead,     // a parameter read returns one value garbled
        FaultNoAnswer         // the controller stays silent for a while, and the operation times out
    };

    explicit CSimController(const QString& strFlashPath, QObject* parent = nullptr);
    ~CSimController() override;

    // IDevice
    ICard* GetCurrentCard() override;
    int WriteFactoryParams(FactoryParams* pParams) override;
    int ReadFactoryParams(FactoryParams* pParams) override;
    // ICard
    int GetState() override;
    ITaskState* GetTaskState() override;
    int CallFunction(const char* szName, const QVariant& arg) override;
    int QueryFunction(const char* szName, QVariant& inOut) override;
    // ITaskState: busy while the operator runs a job, or while an upgrade or a cut runs.
    int IsBusy() override;

    // What the host's Device menu changes.
    void SetConnected(bool bConnected);
    bool IsConnected() const;
    // Connected, but only reading information is allowed (card state 3).
    void SetInformationOnly(bool bInformationOnly);
    bool IsInformationOnly() const;
    void SetBusy(bool bBusy);
    void SetCardType(int nCardType);
    int CardType() const;

    // The time base of the controller's work (two seconds by default): an
    // upgrade takes it for every 32 KiB of image (a quarter of it at least), a
    // parameter read or write a sixth of it (the link's time), a cut the time
    // its path needs at the cutting speed. 0 makes all of them instant.
    void SetTaskDuration(int nMilliseconds);
    // How long the controller is away while a new mainboard firmware starts.
    void SetRestartDuration(int nMilliseconds);
    // Arms a fault for the next nTimes operations it concerns (a noisy line
    // garbles every read, for example); FaultNone disarms. The flash file's
    // keys CONTROLLER/FAULT (a name from FaultName) and CONTROLLER/FAULT_TIMES
    // (1 when missing) arm one at start.
    void ArmFault(Fault fault, int nTimes = 1);
    Fault ArmedFault() const;
    static QString FaultName(Fault fault);
    static Fault FaultFromName(const QString& strName);
    // How long the controller stays silent before an operation times out.
    void SetNoAnswerDuration(int nMilliseconds);
    // The machine's true travel per motor pulse on X and Y.
    void SetTrueSteps(double dX, double dY);

    FactoryParams StoredParams() const;
    CardInfo Info() const;
    // How many values of the last parameter write it could not take as sent.
    int LastLimitedCount() const;
    // The size the last cut came out at, in millimetres (empty before any cut).
    QSizeF LastCut() const;

    QString FlashPath() const;
    // Why the flash file was not read as it stood at start (not a regular
    // file, larger than kMaxFlashSize, values it never writes); empty when it was.
    QString FlashProblem() const;
    // A flash file holds one record and a few counters: a few kilobytes.
    static constexpr qint64 kMaxFlashSize = 1024 * 1024;

signals:
    // A job was cut; the sizes are what a ruler would measure.
    void JobCut(double dWidth, double dHeight);
    // Connection, state, busy, card type, versions or counters changed.
    void StateChanged();
    // How far a firmware upgrade has come (0 to 1) and what it is doing
    // (the words of the stage, untranslated). Emitted on the upgrading thread.
    void Progress(double dFraction, const QString& strStage);

private:
    int Upgrade(const QVariant& arg, const QStringList& extensions, bool bMainboard);
    // Fires the armed fault if it is one of kinds: true, with the link
    // dropped where the fault says so.
    bool TakeFaultLocked(std::initializer_list<Fault> kinds);
    // One operation spoilt: the armed fault is gone when it has spoilt its count.
    void SpendFaultLocked();
    // The silence of FaultNoAnswer, if it is armed: true when it was.
    bool StayedSilent();
    // The time a parameter transfer takes on the link.
    void LinkWait() const;
    // What reads and writes share: the silence fault, the link's time, the
    // state checks; transferLocked does the rest under the lock and returns
    // the result.
    template <typename Fn>
    int Transfer(FactoryParams* pParams, Fn transferLocked);
    void DropLinkLocked();
    int Cut(const QVariant& arg);
    void Load();
    // False when the flash file could not be written (or may not be).
    bool SaveLocked();
    int WorkSecondsLocked() const;

    mutable QMutex m_mutex;
    const QString m_strFlashPath;
    QString m_strFlashProblem;
    FactoryParams m_params;
    bool m_bConnected = true;
    bool m_bInformationOnly = false;
    bool m_bBusy = false;
    bool m_bRunning = false;
    int m_nCardType = 8;
    int m_nTaskDuration = 2000;
    int m_nRestartDuration = 1500;
    int m_nNoAnswerDuration = 3000;
    Fault m_fault = FaultNone;
    // How many more operations the armed fault spoils.
    int m_nFaultTimes = 0;
    bool m_bMainboardIncomplete = false;
    bool m_bPanelIncomplete = false;
    qint64 m_nWorkSeconds = 0;        // before the current connection
    QElapsedTimer m_connectedFor;
    qint64 m_nJobSeconds = 0;
    double m_dTravelX = 0.0;
    double m_dTravelY = 0.0;
    QString m_strFirmware = QStringLiteral("QV-MB 3.2.0");
    QString m_strPanel = QStringLiteral("QV-PN 1.4.0");
    double m_dTrueStepX = 7.95;
    double m_dTrueStepY = 7.80;
    QSizeF m_lastCut;
    int m_nLastLimited = 0;
};
