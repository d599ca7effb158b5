#include "CCutPatternTask.h"

#include "CDlgCalibrateXyStep.h"
#include "CFactoryMgrApp.h"
#include "TextCodec.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

CCutPatternTask::CCutPatternTask(double dPower)
    : m_dPower(dPower)
{
}

int CCutPatternTask::Cut(double dPower)
{
    const QString strPattern = CFactoryMgrApp::GetResourceDirectory() + "/Data/adjustpulse.lcpx";
    if (!QFile::exists(strPattern))
        return CDlgCalibrateXyStep::ResultNoJob;
    const QString strJob = CDlgCalibrateXyStep::JobPath();
    QDir().mkpath(QFileInfo(strJob).absolutePath());
    // A job left by an earlier run (one killed half-way leaves it) must never
    // be cut in place of this one: whatever is there after the conversion was
    // made by it. A job that cannot be removed is not cut either.
    QFile::remove(strJob);
    if (QFileInfo::exists(strJob))
        return CDlgCalibrateXyStep::ResultNoJob;
    if (CFactoryMgrApp::PfnConvertPattern pfnConvert = CFactoryMgrApp::GetInstance()->GetConvertPatternCallback())
        pfnConvert(StringToUtf8(strPattern).constData(), StringToUtf8(strJob).constData(), dPower);
    if (!QFile::exists(strJob))
        return CDlgCalibrateXyStep::ResultNoJob;
    const int nResult = CFactoryMgrApp::GetInstance()->BacklashAdjust(strJob);
    QFile::remove(strJob);
    return nResult;
}

int CCutPatternTask::RunTask(int nTask, void* pParam)
{
    Q_UNUSED(pParam)
    return nTask == CDlgCalibrateXyStep::TaskCut ? Cut(m_dPower) : -1;
}
