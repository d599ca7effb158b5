#include "CSimController.h"

#include "CShapeFile.h"
#include "CFirmwareFile.h"
#include "CSimLimits.h"
#include "CSettingsFile.h"
#include "SafeFile.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QThread>
#include <QTimer>
#include <QVariant>

#include <cmath>
#include <cstring>
#include <limits>

namespace {
const char* const kGroup = "CONTROLLER";

// A sum or a product of numbers from files may be anything; a counter keeps
// only what is a number.
double Finite(double dValue)
{
    return std::isfinite(dValue) ? dValue : 0.0;
}

// A counter as the card reports it: a whole number from 0 to the int32 maximum.
int ToCounter(double dValue)
{
    if (!(dValue > 0.0))
        return 0;
    return dValue >= double(std::numeric_limits<int>::max()) ? std::numeric_limits<int>::max() : int(dValue);
}


void CopyText(char* pBuffer, std::size_t nSize, const QString& strText)
{
    std::memset(pBuffer, 0, nSize);
    const QByteArray bytes = strText.toUtf8().left(int(nSize) - 1);
    std::memcpy(pBuffer, bytes.constData(), std::size_t(bytes.size()));
}
}

CSimController::CSimController(const QString& strFlashPath, QObject* parent)
    : QObject(parent)
    , m_strFlashPath(strFlashPath)
{
    Load();
    m_connectedFor.start();
}

CSimController::~CSimController()
{
    QMutexLocker locker(&m_mutex);
    SaveLocked();
}

QString CSimController::FlashPath() const
{
    return m_strFlashPath;
}

QString CSimController::FlashProblem() const
{
    QMutexLocker locker(&m_mutex);
    return m_strFlashProblem;
}

void CSimController::Load()
{
    CSettingsFile file(m_strFlashPath, kMaxFlashSize);
    m_strFlashProblem = file.Problem();
    QSettings& flash = file.Settings();
    flash.beginGroup(kGroup);
    const QByteArray params = flash.value("PARAMS").toByteArray();
    if (params.size() == int(sizeof(FactoryParams)))
        std::memcpy(static_cast<void*>(&m_params), params.constData(), sizeof(FactoryParams));
    m_nWorkSeconds = flash.value("WORK_SECONDS", 0).toLongLong();
    m_nJobSeconds = flash.value("JOB_SECONDS", 0).toLongLong();
    m_dTravelX = flash.value("TRAVEL_X", 0.0).toDouble();
    m_dTravelY = flash.value("TRAVEL_Y", 0.0).toDouble();
    m_strFirmware = flash.value("FIRMWARE", m_strFirmware).toString();
    m_strPanel = flash.value("PANEL", m_strPanel).toString();
    m_nCardType = flash.value("CARD_TYPE", m_nCardType).toInt();
    m_fault = FaultFromName(flash.value("FAULT").toString());
    m_nFaultTimes = m_fault == FaultNone ? 0 : qBound(1, flash.value("FAULT_TIMES", 1).toInt(), 1000000);
    m_bMainboardIncomplete = flash.value("MAINBOARD_INCOMPLETE", false).toBool();
    m_bPanelIncomplete = flash.value("PANEL_INCOMPLETE", false).toBool();
    // A flash file edited by hand may hold anything: a true step must be a
    // positive number, the counters whole numbers in their range.
    const double dTrueX = flash.value("TRUE_STEP_X", m_dTrueStepX).toDouble();
    const double dTrueY = flash.value("TRUE_STEP_Y", m_dTrueStepY).toDouble();
    if (std::isfinite(dTrueX) && dTrueX > 0.0)
        m_dTrueStepX = dTrueX;
    if (std::isfinite(dTrueY) && dTrueY > 0.0)
        m_dTrueStepY = dTrueY;
    m_dTravelX = Finite(m_dTravelX);
    m_dTravelY = Finite(m_dTravelY);
    m_nWorkSeconds = qBound(qint64(0), m_nWorkSeconds, qint64(std::numeric_limits<int>::max()));
    m_nJobSeconds = qBound(qint64(0), m_nJobSeconds, qint64(std::numeric_limits<int>::max()));
}

bool CSimController::SaveLocked()
{
    // A flash file the controller did not write (or cannot hold) is kept as
    // it is: nothing reaches the flash, and the write says so.
    QDir().mkpath(QFileInfo(m_strFlashPath).absolutePath());
    CSettingsFile file(m_strFlashPath, kMaxFlashSize);
    QSettings* pFlash = file.Writable();
    if (!pFlash)
        return false;
    QSettings& flash = *pFlash;
    flash.beginGroup(kGroup);
    flash.setValue("PARAMS", QByteArray(reinterpret_cast<const char*>(&m_params), sizeof(FactoryParams)));
    flash.setValue("WORK_SECONDS", WorkSecondsLocked());
    flash.setValue("JOB_SECONDS", m_nJobSeconds);
    flash.setValue("TRAVEL_X", m_dTravelX);
    flash.setValue("TRAVEL_Y", m_dTravelY);
    flash.setValue("FIRMWARE", m_strFirmware);
    flash.setValue("PANEL", m_strPanel);
    flash.setValue("CARD_TYPE", m_nCardType);
    flash.setValue("FAULT", FaultName(m_fault));
    flash.setValue("FAULT_TIMES", m_nFaultTimes);
    flash.setValue("MAINBOARD_INCOMPLETE", m_bMainboardIncomplete);
    flash.setValue("PANEL_INCOMPLETE", m_bPanelIncomplete);
    flash.setValue("TRUE_STEP_X", m_dTrueStepX);
    flash.setValue("TRUE_STEP_Y", m_dTrueStepY);
    flash.endGroup();
    flash.sync();
    return flash.status() == QSettings::NoError;
}

int CSimController::WorkSecondsLocked() const
{
    return ToCounter(double(m_nWorkSeconds + (m_bConnected ? m_connectedFor.elapsed() / 1000 : 0)));
}

ICard* CSimController::GetCurrentCard()
{
    QMutexLocker locker(&m_mutex);
    return m_bConnected ? static_cast<ICard*>(this) : nullptr;
}

void CSimController::LinkWait() const
{
    int nDuration = 0;
    {
        QMutexLocker locker(&m_mutex);
        nDuration = m_nTaskDuration / 6;
    }
    if (nDuration > 0)
        QThread::msleep(static_cast<unsigned long>(nDuration));
}

template <typename Fn>
int CSimController::Transfer(FactoryParams* pParams, Fn transferLocked)
{
    if (StayedSilent())
        return CodeNoAnswer;
    LinkWait();
    int nResult = 0;
    {
        QMutexLocker locker(&m_mutex);
        if (!m_bConnected)
            return CodeNotConnected;
        if (m_bMainboardIncomplete)
            return CodeFirmwareIncomplete;
        if (!pParams)
            return CodeBadJob;
        nResult = transferLocked();
    }
    if (nResult == CodeLinkLost)
        emit StateChanged();
    return nResult;
}

int CSimController::WriteFactoryParams(FactoryParams* pParams)
{
    return Transfer(pParams, [&] {
        if (m_bInformationOnly)
            return 1001;
        if (m_bBusy || m_bRunning)
            return 1005;
        // Cut off or not flashed: the controller keeps what it had.
        int nResult = 0;
        if (TakeFaultLocked({FaultDropOnWrite}))
            nResult = CodeLinkLost;
        else if (TakeFaultLocked({FaultFlashError}))
            nResult = CodeFlashError;
        else {
            // What does not reach the flash is not kept: a restart would lose it.
            const FactoryParams kept = m_params;
            m_params = CSimLimits::Limit(*pParams, m_params, &m_nLastLimited);
            if (SaveLocked())
                return 0;
            m_params = kept;
            return int(CodeFlashError);
        }
        SaveLocked();
        return nResult;
    });
}

int CSimController::ReadFactoryParams(FactoryParams* pParams)
{
    return Transfer(pParams, [&] {
        if (TakeFaultLocked({FaultDropOnRead})) {
            SaveLocked();
            return int(CodeLinkLost);
        }
        std::memcpy(static_cast<void*>(pParams), &m_params, sizeof(FactoryParams));
        // A bit lost on the line: X's maximum speed arrives garbled.
        if (TakeFaultLocked({FaultCorruptRead})) {
            pParams->motor[0].speedMax += 1024.0;
            SaveLocked();
        }
        return 0;
    });
}

void CSimController::ArmFault(Fault fault, int nTimes)
{
    {
        QMutexLocker locker(&m_mutex);
        m_fault = nTimes > 0 ? fault : FaultNone;
        m_nFaultTimes = m_fault == FaultNone ? 0 : nTimes;
        SaveLocked();
    }
    emit StateChanged();
}

CSimController::Fault CSimController::ArmedFault() const
{
    QMutexLocker locker(&m_mutex);
    return m_fault;
}

void CSimController::SetNoAnswerDuration(int nMilliseconds)
{
    QMutexLocker locker(&m_mutex);
    m_nNoAnswerDuration = qMax(0, nMilliseconds);
}

namespace {
const QList<QPair<CSimController::Fault, const char*>> kFaultNames{
    {CSimController::FaultDropOnWrite, "drop-write"},   {CSimController::FaultDropOnRead, "drop-read"},
    {CSimController::FaultDropOnUpgrade, "drop-upgrade"}, {CSimController::FaultDropOnCut, "drop-cut"},
    {CSimController::FaultFlashError, "flash-error"},   {CSimController::FaultCorruptRead, "corrupt-read"},
    {CSimController::FaultNoAnswer, "no-answer"}};
}

QString CSimController::FaultName(Fault fault)
{
    for (const auto& entry : kFaultNames)
        if (entry.first == fault)
            return QString::fromLatin1(entry.second);
    return QString();
}

CSimController::Fault CSimController::FaultFromName(const QString& strName)
{
    for (const auto& entry : kFaultNames)
        if (strName == QLatin1String(entry.second))
            return entry.first;
    return FaultNone;
}

bool CSimController::TakeFaultLocked(std::initializer_list<Fault> kinds)
{
    for (Fault kind : kinds) {
        if (m_fault != kind)
            continue;
        SpendFaultLocked();
        if (kind == FaultDropOnWrite || kind == FaultDropOnRead || kind == FaultDropOnUpgrade || kind == FaultDropOnCut)
            DropLinkLocked();
        return true;
    }
    return false;
}

void CSimController::SpendFaultLocked()
{
    if (--m_nFaultTimes <= 0) {
        m_nFaultTimes = 0;
        m_fault = FaultNone;
    }
}

void CSimController::DropLinkLocked()
{
    m_nWorkSeconds = WorkSecondsLocked();
    m_bConnected = false;
    m_connectedFor.restart();
}

bool CSimController::StayedSilent()
{
    int nSilence = 0;
    {
        QMutexLocker locker(&m_mutex);
        if (m_fault != FaultNoAnswer || !m_bConnected)
            return false;
        SpendFaultLocked();
        SaveLocked();
        nSilence = m_nNoAnswerDuration;
    }
    // Nothing comes back until the host gives up waiting.
    if (nSilence > 0)
        QThread::msleep(static_cast<unsigned long>(nSilence));
    return true;
}

int CSimController::GetState()
{
    QMutexLocker locker(&m_mutex);
    if (!m_bConnected)
        return StateDisconnected;
    return m_bInformationOnly ? StateInformationOnly : StateReady;
}

ITaskState* CSimController::GetTaskState()
{
    return this;
}

int CSimController::IsBusy()
{
    QMutexLocker locker(&m_mutex);
    return m_bBusy || m_bRunning ? 1 : 0;
}

int CSimController::CallFunction(const char* szName, const QVariant& arg)
{
    if (!IsConnected())
        return CodeNotConnected;
    if (StayedSilent())
        return CodeNoAnswer;
    const QByteArray name(szName ? szName : "");
    {
        // An incomplete mainboard firmware does nothing but take a new one.
        QMutexLocker locker(&m_mutex);
        if (m_bMainboardIncomplete && name != "CardUpgrade")
            return CodeFirmwareIncomplete;
    }
    if (name == "BacklashAdjust")
        return Cut(arg);
    if (name == "CardUpgrade")
        return Upgrade(arg, {"upd"}, true);
    if (name == "PanelUpgrade")
        return Upgrade(arg, {"hmt", "hmi"}, false);
    if (name == "ClearCardInfo") {
        QMutexLocker locker(&m_mutex);
        m_nWorkSeconds = 0;
        m_connectedFor.restart();
        m_nJobSeconds = 0;
        m_dTravelX = 0.0;
        m_dTravelY = 0.0;
        SaveLocked();
        locker.unlock();
        emit StateChanged();
        return 0;
    }
    return CodeUnknownFunction;
}

int CSimController::QueryFunction(const char* szName, QVariant& inOut)
{
    if (!IsConnected())
        return CodeNotConnected;
    if (StayedSilent())
        return CodeNoAnswer;
    const QByteArray name(szName ? szName : "");
    if (name == "GetCardInfo") {
        auto* pInfo = static_cast<CardInfo*>(inOut.value<void*>());
        if (!pInfo)
            return CodeBadJob;
        *pInfo = Info();
        return 0;
    }
    if (name == "CurrentCardType") {
        inOut = QVariant(CardType());
        return 0;
    }
    return CodeUnknownFunction;
}

int CSimController::Upgrade(const QVariant& arg, const QStringList& extensions, bool bMainboard)
{
    emit Progress(0.0, QStringLiteral("Checking the firmware file"));
    const QFileInfo info(arg.toString());
    if (arg.toString().isEmpty() || !info.isFile())
        return CodeFileMissing;
    if (!extensions.contains(info.suffix().toLower()))
        return CodeWrongFileType;
    // No image of these boards comes near 64 MiB; a pipe or a device is no image.
    QByteArray content;
    if (!SafeFile::ReadAll(info.absoluteFilePath(), 64 * 1024 * 1024, &content, nullptr))
        return CodeUnreadable;
    if (content.isEmpty())
        return CodeFileEmpty;
    QString strVersion;
    switch (CFirmwareFile::Parse(content, bMainboard ? CFirmwareFile::kMainboard : CFirmwareFile::kPanel, strVersion)) {
    case CFirmwareFile::NoMagic: return CodeNotFirmware;
    case CFirmwareFile::WrongBoard: return CodeWrongBoard;
    case CFirmwareFile::BadChecksum: return CodeBadChecksum;
    case CFirmwareFile::Valid: break;
    }
    if (content.size() > 64 * 1024 * 1024)
        return CodeNotFirmware;

    {
        QMutexLocker locker(&m_mutex);
        m_bRunning = true;
    }
    emit StateChanged();
    // Flashing takes time in proportion to the image: the task duration for
    // every 32 KiB, a quarter of it at the least.
    int nDuration = 0;
    {
        QMutexLocker locker(&m_mutex);
        nDuration = ToCounter(std::max(double(m_nTaskDuration) * double(content.size()) / 32768.0,
                                       double(m_nTaskDuration) / 4.0));
    }
    // Written in steps, each said as it is done.
    const int nWriting = std::min(nDuration, 120000);
    constexpr int kStepMs = 100;
    emit Progress(0.0, QStringLiteral("Writing the firmware"));
    for (int nDone = 0; nDone < nWriting;) {
        const int nStep = std::min(kStepMs, nWriting - nDone);
        QThread::msleep(static_cast<unsigned long>(nStep));
        nDone += nStep;
        emit Progress(double(nDone) / double(nWriting), QStringLiteral("Writing the firmware"));
    }
    int nRestart = 0;
    {
        QMutexLocker locker(&m_mutex);
        m_bRunning = false;
        // Cut off half-way: the board holds part of an image and takes
        // nothing but a new upgrade.
        if (TakeFaultLocked({FaultDropOnUpgrade})) {
            (bMainboard ? m_bMainboardIncomplete : m_bPanelIncomplete) = true;
            SaveLocked();
            locker.unlock();
            emit StateChanged();
            return CodeLinkLost;
        }
        (bMainboard ? m_strFirmware : m_strPanel) = strVersion;
        (bMainboard ? m_bMainboardIncomplete : m_bPanelIncomplete) = false;
        // A new mainboard firmware starts itself: the controller is gone from
        // the line for a moment and comes back with the new version.
        if (bMainboard) {
            m_nWorkSeconds = WorkSecondsLocked();
            m_bConnected = false;
            nRestart = m_nRestartDuration;
        }
        SaveLocked();
    }
    emit Progress(1.0, bMainboard ? QStringLiteral("Restarting the controller") : QStringLiteral("Done"));
    if (bMainboard)
        QMetaObject::invokeMethod(
            this, [this, nRestart] { QTimer::singleShot(nRestart, this, [this] { SetConnected(true); }); },
            Qt::QueuedConnection);
    emit StateChanged();
    return 0;
}

void CSimController::SetRestartDuration(int nMilliseconds)
{
    QMutexLocker locker(&m_mutex);
    m_nRestartDuration = qMax(0, nMilliseconds);
}

int CSimController::Cut(const QVariant& arg)
{
    if (!QFileInfo(arg.toString()).isFile())
        return CodeFileMissing;
    CShapeFile job;
    QString strError;
    if (!job.Read(arg.toString(), "TL", strError) || job.shapes.isEmpty())
        return CodeBadJob;
    // The laser must fire to cut: a power of 0 % (or none named) cuts nothing.
    bool bPower = false;
    const double dPower = job.fields.value("POWER").toDouble(&bPower);
    if (!bPower || !std::isfinite(dPower) || !(dPower > 0.0))
        return CodeNoPower;

    double dScaleX = 0.0;
    double dScaleY = 0.0;
    double dSpeed = 0.0;
    const QRectF bounds = job.Bounds();
    int nDuration = 0;
    {
        QMutexLocker locker(&m_mutex);
        const double dStepX = m_params.motor[0].pulsePerMm;
        const double dStepY = m_params.motor[1].pulsePerMm;
        if (dStepX <= 0.0 || dStepY <= 0.0)
            return CodeBadJob;
        dScaleX = m_dTrueStepX / dStepX;
        dScaleY = m_dTrueStepY / dStepY;
        // The head reaches from 0 to each axis' travel (its size); the job's
        // shapes, as the machine would draw them, must lie within.
        const QRectF drawn(bounds.left() * dScaleX, bounds.top() * dScaleY, bounds.width() * dScaleX,
                           bounds.height() * dScaleY);
        if (!(drawn.left() >= 0.0 && drawn.top() >= 0.0 && drawn.right() <= m_params.motor[0].size
              && drawn.bottom() <= m_params.motor[1].size))
            return CodeOutsideWorkArea;
        dSpeed = m_params.speed.cutSpeedCorner > 0.0 ? m_params.speed.cutSpeedCorner : 50.0;
        // In real time: the path at the cutting speed; nothing when tasks are instant.
        const QPointF travel = job.Travel();
        const double dSeconds = (travel.x() * dScaleX + travel.y() * dScaleY) / dSpeed;
        nDuration = m_nTaskDuration > 0 ? ToCounter(std::min(dSeconds * 1000.0, 600000.0)) : 0;
        m_bRunning = true;
    }
    emit StateChanged();
    if (nDuration > 0)
        QThread::msleep(static_cast<unsigned long>(nDuration));
    {
        QMutexLocker locker(&m_mutex);
        if (TakeFaultLocked({FaultDropOnCut})) {
            m_bRunning = false;
            SaveLocked();
            locker.unlock();
            emit StateChanged();
            return CodeLinkLost;
        }
    }

    const QSizeF cut(bounds.width() * dScaleX, bounds.height() * dScaleY);
    const QPointF travel = job.Travel();
    {
        QMutexLocker locker(&m_mutex);
        m_lastCut = cut;
        m_dTravelX += Finite(travel.x() * dScaleX);
        m_dTravelY += Finite(travel.y() * dScaleY);
        m_nJobSeconds += qint64(ToCounter((travel.x() * dScaleX + travel.y() * dScaleY) / dSpeed + 0.5));
        m_bRunning = false;
        SaveLocked();
    }
    emit JobCut(cut.width(), cut.height());
    emit StateChanged();
    return 0;
}

void CSimController::SetConnected(bool bConnected)
{
    {
        QMutexLocker locker(&m_mutex);
        if (bConnected == m_bConnected)
            return;
        if (!bConnected)
            m_nWorkSeconds = WorkSecondsLocked();
        m_bConnected = bConnected;
        m_connectedFor.restart();
        SaveLocked();
    }
    emit StateChanged();
}

bool CSimController::IsConnected() const
{
    QMutexLocker locker(&m_mutex);
    return m_bConnected;
}

void CSimController::SetInformationOnly(bool bInformationOnly)
{
    {
        QMutexLocker locker(&m_mutex);
        m_bInformationOnly = bInformationOnly;
    }
    emit StateChanged();
}

bool CSimController::IsInformationOnly() const
{
    QMutexLocker locker(&m_mutex);
    return m_bInformationOnly;
}

void CSimController::SetBusy(bool bBusy)
{
    {
        QMutexLocker locker(&m_mutex);
        m_bBusy = bBusy;
    }
    emit StateChanged();
}

void CSimController::SetCardType(int nCardType)
{
    {
        QMutexLocker locker(&m_mutex);
        m_nCardType = nCardType;
        SaveLocked();
    }
    emit StateChanged();
}

int CSimController::CardType() const
{
    QMutexLocker locker(&m_mutex);
    return m_nCardType;
}

void CSimController::SetTaskDuration(int nMilliseconds)
{
    QMutexLocker locker(&m_mutex);
    m_nTaskDuration = qMax(0, nMilliseconds);
}

void CSimController::SetTrueSteps(double dX, double dY)
{
    QMutexLocker locker(&m_mutex);
    m_dTrueStepX = dX;
    m_dTrueStepY = dY;
    SaveLocked();
}

FactoryParams CSimController::StoredParams() const
{
    QMutexLocker locker(&m_mutex);
    return m_params;
}

CardInfo CSimController::Info() const
{
    QMutexLocker locker(&m_mutex);
    CardInfo info{};
    info.totalWorkTime = WorkSecondsLocked();
    info.totalJobTime = ToCounter(double(m_nJobSeconds));
    info.totalXMove = ToCounter(m_dTravelX + 0.5);
    info.totalYMove = ToCounter(m_dTravelY + 0.5);
    CopyText(info.firmwareVersion, sizeof(info.firmwareVersion),
             m_bMainboardIncomplete ? QStringLiteral("%1 (incomplete)").arg(m_strFirmware) : m_strFirmware);
    CopyText(info.panelVersion, sizeof(info.panelVersion),
             m_bPanelIncomplete ? QStringLiteral("%1 (incomplete)").arg(m_strPanel) : m_strPanel);
    return info;
}

int CSimController::LastLimitedCount() const
{
    QMutexLocker locker(&m_mutex);
    return m_nLastLimited;
}

QSizeF CSimController::LastCut() const
{
    QMutexLocker locker(&m_mutex);
    return m_lastCut;
}
