#include "FactoryParamFile.h"

#include "CFactoryMgrApp.h"
#include "CParamBackups.h"
#include "CTipsBox.h"
#include "FactoryParamIo.h"
#include "ILog.h"

#include <QDir>
#include <QFileInfo>

namespace {
QString ResolvePath(const QString& strPath)
{
    return strPath.isEmpty() ? DefaultFactoryParamPath() : strPath;
}
}

QString DefaultFactoryParamPath()
{
    // A first save on a fresh machine must find its folder.
    const QString strData = CFactoryMgrApp::GetUserDataDirectory() + "/Data";
    QDir().mkpath(strData);
    return strData + "/FactoryParam.ini";
}

bool LoadFactoryParams(FactoryParams& record, const QString& strPath)
{
    const QString strFile = ResolvePath(strPath);
    switch (ReadFactoryParamFile(record, strFile)) {
    case ParamFileStatus::Loaded: return true;
    case ParamFileStatus::NoFile: return false;
    case ParamFileStatus::TooLarge:
        ILog_WriteLogF(1, "The parameter file %s is refused: it is larger than %d bytes.",
                       QFile::encodeName(strFile).constData(), int(kMaxParamFileSize));
        break;
    case ParamFileStatus::WrongMarker: break;
    }
    CTipsBox::ShowTranslated("File ID is incorrect!");
    return false;
}

bool SaveFactoryParams(const FactoryParams& record, const QString& strPath, QString* pError)
{
    const QString strFile = ResolvePath(strPath);
    // The default file is the one the machine builder lives with: what it
    // held goes to the backups first. A backup that cannot be made does not
    // stop the save.
    if (QFileInfo(strFile).absoluteFilePath() == QFileInfo(DefaultFactoryParamPath()).absoluteFilePath()) {
        QString strError;
        if (!CParamBackups::KeepFile(strFile, CParamBackups::ReasonSave, &strError))
            ILog_WriteLogF(1, "No backup was kept before saving the parameters: %s", strError.toUtf8().constData());
    }
    QString strWhy;
    if (WriteFactoryParamFile(record, strFile, &strWhy))
        return true;
    ILog_WriteLogF(1, "The parameters were not saved to %s: %s.", QFile::encodeName(strFile).constData(),
                   strWhy.toUtf8().constData());
    if (pError)
        *pError = strWhy;
    return false;
}
