#include "CParamCheck.h"

#include "CParamDiff.h"
#include "FactoryParamIo.h"
#include "FactoryParamKeys.h"
#include "FactoryParams.h"
#include "IniValue.h"

#include <QSet>

#include <cmath>

namespace {
const QString kMarkerKey = QStringLiteral("FACTORY_PARAM/FILE_FLAG");
const QString kTimeKey = QStringLiteral("FACTORY_PARAM/CREATE_TIME");

QString Range(const FactoryParamKey& key)
{
    if (key.dMin == 0.0 && key.dMax == 1.0)
        return QStringLiteral("takes 0 or 1");
    if (key.dMin == 1.0 && key.dMax == 2.0)
        return QStringLiteral("takes 1 or 2");
    return QStringLiteral("takes %1 to %2").arg(CParamDiff::Number(key.dMin), CParamDiff::Number(key.dMax));
}
}

bool CParamCheck::Parse(const FactoryParamKey& key, const QString& strText, double* pValue, QString* pWhy)
{
    const QString strTrimmed = strText.trimmed();
    bool bNumber = false;
    double dValue = 0.0;
    if (key.pDouble) {
        dValue = strTrimmed.toDouble(&bNumber);
    } else {
        dValue = double(strTrimmed.toLongLong(&bNumber));
        bool bDecimal = false;
        const double dDecimal = strTrimmed.toDouble(&bDecimal);
        // The reader would take "1.5" for a switch as 0: say what it is.
        if (!bNumber && bDecimal && std::isfinite(dDecimal)) {
            if (pWhy)
                *pWhy = QStringLiteral("not a whole number");
            return false;
        }
    }
    QString strWhy;
    if (!bNumber)
        strWhy = QStringLiteral("not a number");
    else if (!std::isfinite(dValue))
        strWhy = QStringLiteral("not a finite number");
    else if (!key.Takes(dValue))
        strWhy = key.HasRange() ? Range(key) : QStringLiteral("out of range");
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
    switch (ParamFileKind(strPath)) {
    case ParamFileStatus::NoFile: return {{strPath, QString(), QString(), QStringLiteral("no such file")}};
    case ParamFileStatus::TooLarge:
        return {{strPath, QString(), QString(),
                 QStringLiteral("larger than %1 bytes: not a parameter file").arg(kMaxParamFileSize)}};
    case ParamFileStatus::WrongMarker: {
        QString strMarker;
        ReadIniText(QStringLiteral("FACTORY_PARAM"), QStringLiteral("FILE_FLAG"), strPath, &strMarker);
        return {{strPath, kMarkerKey, strMarker, QStringLiteral("not the parameter file marker")}};
    }
    case ParamFileStatus::Loaded: break;
    }

    QList<SParamProblem> problems;
    FactoryParams record;
    QSet<QString> known{kMarkerKey, kTimeKey};
    for (const FactoryParamKey& key : FactoryParamKey::ForRecord(record)) {
        known << key.strSection + "/" + key.strKey;
        QString strText;
        if (!ReadIniText(key.strSection, key.strKey, strPath, &strText)) {
            problems << SParamProblem{strPath, key.strKey, QString(),
                                      QStringLiteral("missing (read as %1)").arg(CParamDiff::Number(key.dMissing))};
            continue;
        }
        QString strWhy;
        if (!Parse(key, strText, nullptr, &strWhy))
            problems << SParamProblem{strPath, key.strKey, strText, strWhy};
    }
    for (const QString& strKey : ReadIniKeys(strPath)) {
        if (!known.contains(strKey)) {
            QString strText;
            ReadIniText(strKey.section('/', 0, 0), strKey.section('/', 1), strPath, &strText);
            problems << SParamProblem{strPath, strKey, strText, QStringLiteral("unknown key")};
        }
    }
    return problems;
}
