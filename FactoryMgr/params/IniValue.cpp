#include "IniValue.h"

#include "CSettingsFile.h"

#include <QSettings>

#include <memory>

namespace {
// The shared settings object of a batch write, one per thread: the host keeps
// backups from the progress dialog's worker while its GUI thread may save.
thread_local std::unique_ptr<QSettings> g_pBatchSettings;

QVariant ReadValue(const QString& strSection, const QString& strKey, const QVariant& defaultValue,
                   const QString& strPath)
{
    CSettingsFile file(strPath);
    return file.Settings().value(QStringLiteral("%1%2%3").arg(strSection, "/", strKey), defaultValue);
}

void WriteValue(const QString& strSection, const QString& strKey, const QVariant& value, const QString& strPath)
{
    // A file that is no settings file this system wrote is left as it is.
    std::unique_ptr<CSettingsFile> pOwn;
    QSettings* pSettings = g_pBatchSettings.get();
    if (!pSettings) {
        pOwn = std::make_unique<CSettingsFile>(strPath);
        pSettings = pOwn->Writable();
        if (!pSettings)
            return;
    }
    pSettings->beginGroup(strSection);
    pSettings->setValue(strKey, value);
    pSettings->endGroup();
}
}

int ReadIniInt(const QString& strSection, const QString& strKey, int nDefault, const QString& strPath)
{
    return ReadValue(strSection, strKey, nDefault, strPath).toInt();
}

double ReadIniDouble(const QString& strSection, const QString& strKey, double dDefault, const QString& strPath)
{
    return ReadValue(strSection, strKey, dDefault, strPath).toDouble();
}

QString ReadIniString(const QString& strSection, const QString& strKey, const QString& strDefault,
                      const QString& strPath)
{
    return ReadValue(strSection, strKey, strDefault, strPath).toString();
}

bool ReadIniText(const QString& strSection, const QString& strKey, const QString& strPath, QString* pText)
{
    const QVariant value = ReadValue(strSection, strKey, QVariant(), strPath);
    if (!value.isValid())
        return false;
    if (pText)
        *pText = value.typeId() == QMetaType::QStringList ? value.toStringList().join(',') : value.toString();
    return true;
}

QStringList ReadIniKeys(const QString& strPath)
{
    CSettingsFile file(strPath);
    return file.Settings().allKeys();
}

void WriteIniInt(const QString& strSection, const QString& strKey, int nValue, const QString& strPath)
{
    WriteValue(strSection, strKey, nValue, strPath);
}

void WriteIniDouble(const QString& strSection, const QString& strKey, double dValue, const QString& strPath)
{
    WriteValue(strSection, strKey, dValue, strPath);
}

void WriteIniString(const QString& strSection, const QString& strKey, const QString& strValue,
                    const QString& strPath)
{
    WriteValue(strSection, strKey, strValue, strPath);
}

void BeginBatchWrite(const QString& strPath)
{
    g_pBatchSettings = std::make_unique<QSettings>(strPath, QSettings::IniFormat);
}

bool EndBatchWrite()
{
    if (!g_pBatchSettings)
        return false;
    g_pBatchSettings->sync();
    const bool bOk = g_pBatchSettings->status() == QSettings::NoError;
    g_pBatchSettings.reset();
    return bOk;
}
