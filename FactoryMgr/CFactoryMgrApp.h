#pragma once

#include "CBusyTaskOwner.h"

#include <QString>

struct CardInfo;
class ICard;
class IDevice;
class IErrorNotifier;
class QMutex;
class QVariant;
struct FactoryParams;

// The module's single service object: it holds what the host hands in,
// serialises every device call behind one mutex and turns the named card
// functions into calls on the host's card. One instance lives as long as the
// library is loaded (GetInstance); tests may make their own.
class CFactoryMgrApp : public CBusyTaskOwner
{
public:
    // Host callback that turns a pattern file into a machine job file.
    typedef int (*PfnConvertPattern)(const char* szPatternPath, const char* szJobPath, double dPower);

    // Result codes of the bridge itself; anything else comes from the card.
    enum ResultCode
    {
        ResultOk = 0,
        ResultNoCard = 1001,   // no card, or its state does not allow the function
        ResultBusy = 1005      // the card is busy with a job
    };

    // Tasks of RunTask.
    enum Task
    {
        TaskPanelUpgrade = 0,
        TaskCardUpgrade = 1
    };

    CFactoryMgrApp();
    ~CFactoryMgrApp() override;
    CFactoryMgrApp(const CFactoryMgrApp&) = delete;
    CFactoryMgrApp& operator=(const CFactoryMgrApp&) = delete;

    static CFactoryMgrApp* GetInstance();

    // Plain stores, made on the GUI thread before any task runs.
    void SetDevice(IDevice* pDevice);
    void SetNotifier(IErrorNotifier* pNotifier);
    void SetConvertPatternCallback(PfnConvertPattern pfnConvertPattern);
    void SetUnit(int nUnit);
    void SetFactoryFlag(bool bFactoryFlag);

    PfnConvertPattern GetConvertPatternCallback() const;
    int GetUnit() const;
    bool GetFactoryFlag() const;

    // The device's current card, or null when there is no device or no card.
    ICard* GetCurrentCard() const;

    // Hands a result code to the host's notifier; without one it does nothing.
    int ReportError(int nCode);

    // The parameter transfers hold the mutex for the whole device call.
    int ReadFactoryParams(FactoryParams* pParams);
    int WriteFactoryParams(FactoryParams* pParams);

    // The named card functions.
    int BacklashAdjust(const QString& strJobPath);
    int GetCardInfo(CardInfo* pInfo);
    int ClearCardInfo();
    int CardUpgrade(const QString& strFilePath);
    int PanelUpgrade(const QString& strFilePath);

    // IThreadDialogOwner: task 0 upgrades the panel, task 1 the mainboard,
    // pParam pointing to the file path (a QString).
    int RunTask(int nTask, void* pParam) override;

    // Application directory + "/../Resources": what ships with the host.
    static QString GetResourceDirectory();
    // Where the module writes: per-user configuration directory +
    // "/../Quorvane/Resources" (or "/../Tessiflow/Resources" for a theme
    // other than "Quorvane"). Created when missing; returned cleaned.
    static QString GetUserDataDirectory();

private:
    int CallCardFunction(const char* szName, QVariant& arg, bool bAllowInformationState, bool bQuery);

    bool m_bFactoryFlag;
    PfnConvertPattern m_pfnConvertPattern;
    IErrorNotifier* m_pNotifier;
    int m_nUnit;
    QMutex* m_pMutex;
    IDevice* m_pDevice;
};
