#include "CDifferenceFilter.h"
#include "ParamWording.h"

#include <cmath>

namespace {
QRegularExpression Pattern(const QString& strPattern)
{
    return QRegularExpression(QRegularExpression::wildcardToRegularExpression(
        strPattern, QRegularExpression::UnanchoredWildcardConversion).prepend('^').append('$'));
}
}

bool CDifferenceFilter::Set(const QStringList& ignore, const QStringList& tolerances, QString* pWhy)
{
    for (const QString& strPattern : ignore) {
        const QRegularExpression pattern = Pattern(strPattern.trimmed());
        if (strPattern.trimmed().isEmpty() || !pattern.isValid()) {
            *pWhy = ParamWording("--ignore \"%1\" is no key pattern").arg(strPattern);
            return false;
        }
        m_ignore << pattern;
    }
    for (const QString& strTolerance : tolerances) {
        const QString strKey = strTolerance.contains('=') ? strTolerance.section('=', 0, 0).trimmed() : QStringLiteral("*");
        const QString strValue = strTolerance.section('=', -1).trimmed();
        bool bNumber = false;
        const double dValue = strValue.toDouble(&bNumber);
        if (!bNumber || !std::isfinite(dValue) || dValue < 0.0 || strKey.isEmpty()) {
            *pWhy = ParamWording("--tolerance \"%1\" is not [KEY-PATTERN=]VALUE with a VALUE of 0 or more")
                        .arg(strTolerance);
            return false;
        }
        m_tolerances << qMakePair(Pattern(strKey), dValue);
    }
    return true;
}

bool CDifferenceFilter::Counts(const SParamDifference& difference) const
{
    for (const QRegularExpression& pattern : m_ignore)
        if (pattern.match(difference.strKey).hasMatch())
            return false;
    if (difference.bMissingA || difference.bMissingB)
        return true;
    for (const auto& [pattern, dTolerance] : m_tolerances)
        if (pattern.match(difference.strKey).hasMatch() && std::fabs(difference.dA - difference.dB) <= dTolerance)
            return false;
    return true;
}

QList<SParamDifference> CDifferenceFilter::Counted(const QList<SParamDifference>& differences) const
{
    QList<SParamDifference> counted;
    for (const SParamDifference& difference : differences)
        if (Counts(difference))
            counted << difference;
    return counted;
}
