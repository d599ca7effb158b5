#include "CDisplayUnit.h"

#include "CParamDiff.h"
#include "HostRules.h"

#include <cmath>

namespace {
bool IsLength(const QString& strUnit)
{
    return strUnit.startsWith(QLatin1String("mm"));
}
}

double CDisplayUnit::Convert(double dValue, const QString& strUnit, int nUnit)
{
    return HostRules::IsInch(nUnit) && IsLength(strUnit) ? dValue / 25.4 : dValue;
}

QString CDisplayUnit::Number(double dValue, const QString& strUnit, int nUnit)
{
    if (!HostRules::IsInch(nUnit) || !IsLength(strUnit) || !std::isfinite(dValue))
        return CParamDiff::Number(dValue);
    return CParamDiff::Number(std::round(Convert(dValue, strUnit, nUnit) * 100.0) / 100.0);
}

QString CDisplayUnit::Unit(const QString& strUnit, int nUnit)
{
    return HostRules::IsInch(nUnit) && IsLength(strUnit) ? QStringLiteral("in") + strUnit.mid(2) : strUnit;
}

QString CDisplayUnit::Value(double dValue, const QString& strUnit, int nUnit)
{
    const QString strShown = Unit(strUnit, nUnit);
    return strShown.isEmpty() ? Number(dValue, strUnit, nUnit) : Number(dValue, strUnit, nUnit) + " " + strShown;
}
