#include "CParamDiff.h"

#include "FactoryParamKeys.h"
#include "ParamWording.h"
#include "FactoryParams.h"

#include <QLocale>

#include <cmath>

QList<SParamDifference> CParamDiff::Compare(const FactoryParams& a, const FactoryParams& b, const Translate& translate,
                                            const QSet<QString>& missingA, const QSet<QString>& missingB)
{
    const auto tr = [&translate](const QString& strText) {
        return translate ? translate(strText) : ParamWording(strText);
    };
    QList<SParamDifference> differences;
    for (const FactoryParamKey& key : FactoryParamKey::File()) {
        const double dA = key.Value(a);
        const double dB = key.Value(b);
        const bool bMissingA = missingA.contains(key.strKey);
        const bool bMissingB = missingB.contains(key.strKey);
        if ((key.Same(a, b) || (std::isnan(dA) && std::isnan(dB))) && bMissingA == bMissingB)
            continue;
        const QString strWhere = key.Where();
        differences << SParamDifference{key.strKey, tr(QString::fromUtf8(key.szLabel)),
                                        strWhere.isEmpty() ? QString() : tr(strWhere), QString::fromUtf8(key.szUnit),
                                        dA, dB, bMissingA, bMissingB, key.dStoredPerShown};
    }
    return differences;
}

QString CParamDiff::Name(const SParamDifference& difference)
{
    return difference.strWhere.isEmpty() ? difference.strLabel : difference.strLabel + ", " + difference.strWhere;
}

QString CParamDiff::Describe(const SParamDifference& difference)
{
    const auto number = [&difference](bool bMissing, double dValue) {
        return bMissing ? ParamWording("(missing)") : Number(difference.Shown(dValue));
    };
    QString strText = QStringLiteral("%1: %2 → %3")
                          .arg(Name(difference), number(difference.bMissingA, difference.dA),
                               number(difference.bMissingB, difference.dB));
    if (!difference.strUnit.isEmpty())
        strText += " " + difference.strUnit;
    return strText;
}

QString CParamDiff::Shown(const SParamDifference& difference, bool bSideB)
{
    if (bSideB ? difference.bMissingB : difference.bMissingA)
        return ParamWording("(missing)");
    const QString strNumber = Number(difference.Shown(bSideB ? difference.dB : difference.dA));
    return difference.strUnit.isEmpty() ? strNumber : strNumber + " " + difference.strUnit;
}

QString CParamDiff::Number(double dValue)
{
    if (std::isnan(dValue))
        return QStringLiteral("nan");
    if (std::isinf(dValue))
        return dValue > 0 ? QStringLiteral("inf") : QStringLiteral("-inf");
    // Plain digits where a person reads them easily (1000000, 0.000125),
    // exponents only for the very large and the very small.
    const double dMagnitude = std::fabs(dValue);
    const bool bPlain = dMagnitude == 0.0 || (dMagnitude >= 1e-6 && dMagnitude < 1e15);
    return QString::number(dValue, bPlain ? 'f' : 'g', QLocale::FloatingPointShortest);
}
