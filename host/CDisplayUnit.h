#pragma once

#include <QString>

// Lengths as the host shows them: the record holds millimetres; where the
// person works in inches (display unit 0 or 2) every length, speed and
// acceleration the host shows is in inches, two decimals, as the
// calibration wizard shows them.
class CDisplayUnit
{
public:
    // A value stored in strUnit ("mm", "mm/s", "mm/s²", or anything else,
    // which is shown as it is), with its unit: "1800 mm/s", "70.87 in/s".
    static QString Value(double dValue, const QString& strUnit, int nUnit);
    // The number alone, and the unit alone, as Value() shows them.
    static QString Number(double dValue, const QString& strUnit, int nUnit);
    static QString Unit(const QString& strUnit, int nUnit);
    // The value in the display unit, not rounded.
    static double Convert(double dValue, const QString& strUnit, int nUnit);
};
