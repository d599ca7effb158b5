#include "CParamCheck.h"

#include "ParamWording.h"

#include "CParamDiff.h"
#include "FactoryParamIo.h"
#include "FactoryParamKeys.h"
#include "FactoryParams.h"
#include "IniValue.h"
#include "CParamFileLock.h"
#include "CParamFileText.h"
#include "CSettingsFile.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

#include <QSet>

#include <cmath>

namespace {
// The text a value holds, as the file has it (a value the settings layer
// splits at commas is joined again).
QString TextOf(const QVariant& value)
{
    return value.typeId() == QMetaType::QStringList ? value.toStringList().join(',') : value.toString();
}

const QString kMarkerKey = QStringLiteral("FACTORY_PARAM/FILE_FLAG");
const QString kTimeKey = QStringLiteral("FACTORY_PARAM/CREATE_TIME");

QString Range(const FactoryParamKey& key)
{
    if (key.dMin == 0.0 && key.dMax == 1.0)
        return ParamWording("takes 0 or 1");
    if (key.dMin == 1.0 && key.dMax == 2.0)
        return ParamWording("takes 1 or 2");
    return ParamWording("takes %1 to %2").arg(CParamDiff::Number(key.dMin), CParamDiff::Number(key.dMax));
}
}

bool CParamCheck::Parse(const FactoryParamKey& key, const QString& strText, double* pValue, QString* pWhy)
{
    const QString strTrimmed = strText.trimmed();
    bool bNumber = false;
    double dValue = 0.0;
    dValue = strTrimmed.toDouble(&bNumber);
    // "1.5" for a switch: a number, but not one the field can hold.
    if (!key.IsDouble() && bNumber && std::isfinite(dValue) && dValue != std::trunc(dValue)) {
        if (pWhy)
            *pWhy = ParamWording("not a whole number");
        return false;
    }
    QString strWhy;
    if (!bNumber)
        strWhy = ParamWording("not a number");
    else if (!std::isfinite(dValue))
        strWhy = ParamWording("not a finite number");
    else if (!key.Takes(dValue))
        strWhy = Range(key);
    if (!strWhy.isEmpty()) {
        if (pWhy)
            *pWhy = strWhy;
        return false;
    }
    if (pValue)
        *pValue = dValue;
    return true;
}

QList<SParamProblem> CParamCheck::CheckFile(const QString& strPath)
{
    // Not in the middle of another process's save.
    const CParamFileLock lock(strPath);
    const ParamFileStatus status = ParamFileKind(strPath);
    if (status == ParamFileStatus::WrongMarker && QFileInfo(strPath).isReadable()) {
        // A marker of another kind is shown; a file without one is simply no parameter file.
        QString strMarker;
        if (ReadIniText(QStringLiteral("FACTORY_PARAM"), QStringLiteral("FILE_FLAG"), strPath, &strMarker))
            return {{strPath, kMarkerKey, strMarker, ParamWording("not the parameter file marker"), true}};
    }
    if (status != ParamFileStatus::Loaded)
        return {{strPath, QString(), QString(), ParamFileProblem(strPath, status), true}};
    QFile raw(strPath);
    if (!raw.open(QIODevice::ReadOnly))
        return {{strPath, QString(), QString(), raw.errorString(), true}};

    // One reading of the file for every value, as the plug-in's reader does.
    CSettingsFile guarded(strPath, kMaxParamFileSize);
    const QSettings& file = guarded.Settings();
    QList<SParamProblem> problems;
    const QStringList present = file.allKeys();
    QSet<QString> known{kMarkerKey, kTimeKey};
    FactoryParams record;
    for (const FactoryParamKey& key : FactoryParamKey::File()) {
        const QString strName = key.strSection + "/" + key.strKey;
        known << strName;
        const QVariant value = file.value(strName);
        if (!value.isValid()) {
            problems << SParamProblem{strPath, key.strKey, QString(),
                                      ParamWording("missing (read as %1)").arg(CParamDiff::Number(key.dMissing))};
            continue;
        }
        const QString strText = TextOf(value);
        double dValue = 0.0;
        QString strWhy;
        if (!Parse(key, strText, &dValue, &strWhy)) {
            problems << SParamProblem{strPath, key.strKey, strText, strWhy};
            continue;
        }
        // A value the plug-in would read as another number ("80.000" for
        // a whole number reads as 0).
        key.SetFromSettings(record, value);
        if (key.Value(record) != dValue)
            problems << SParamProblem{strPath, key.strKey, strText,
                                      ParamWording("the plug-in reads this as %1; write %2")
                                          .arg(CParamDiff::Number(key.Value(record)), CParamDiff::Number(dValue))};
    }
    const QVariant time = file.value(kTimeKey);
    if (!time.isValid())
        problems << SParamProblem{strPath, QStringLiteral("CREATE_TIME"), QString(), ParamWording("missing")};
    else if (!QDateTime::fromString(TextOf(time), QStringLiteral("yyyyMMddHHmmss")).isValid())
        problems << SParamProblem{strPath, QStringLiteral("CREATE_TIME"), TextOf(time),
                                  ParamWording("not a time written as yyyyMMddHHmmss")};
    for (const QString& strKey : present)
        if (!known.contains(strKey))
            problems << SParamProblem{strPath, strKey, TextOf(file.value(strKey)), ParamWording("unknown key"), false, SParamProblem::KindUnknownKey};

    // What the settings layer hides: a key or a section given twice.
    const CParamFileText text(raw.readAll());
    for (const auto& [strName, nTimes] : text.RepeatedKeys())
        problems << SParamProblem{strPath, strName, TextOf(file.value(strName)),
                                  ParamWording("given %1 times; the plug-in reads the last one").arg(nTimes), false,
                                  SParamProblem::KindRepeated};
    for (const auto& [strSection, nTimes] : text.RepeatedSections())
        problems << SParamProblem{strPath, "[" + strSection + "]", QString(),
                                  ParamWording("section given %1 times").arg(nTimes)};
    return problems;
}
