#pragma once

#include <QList>
#include <QSet>
#include <QString>

#include <functional>

struct FactoryParams;

// One field that holds different values in two records, as a person reads it.
struct SParamDifference
{
    QString strKey;     // the parameter file's key
    QString strLabel;   // the settings dialog's label, translated
    QString strWhere;   // the axis or laser, translated; empty for one of a kind
    QString strUnit;
    double dA = 0.0;
    double dB = 0.0;
    bool bMissingA = false;   // the first file lacks the key (dA is what its reader put in)
    bool bMissingB = false;
    double dStoredPerShown = 1.0;   // dA and dB are stored values; divided by this they are in strUnit

    // A stored value of the field in strUnit.
    double Shown(double dStored) const { return dStored / dStoredPerShown; }
};

// Compares two parameter records field by field, in the parameter file's
// order, over every field the file stores. Two NaNs count as equal. Labels
// and axis or laser names are in the wording service's language unless
// another translation is given.
class CParamDiff
{
public:
    using Translate = std::function<QString(const QString&)>;

    // A key that one file lacks and the other has is a difference whatever
    // the values (missingA and missingB: the keys each file lacks).
    static QList<SParamDifference> Compare(const FactoryParams& a, const FactoryParams& b,
                                           const Translate& translate = Translate(),
                                           const QSet<QString>& missingA = {}, const QSet<QString>& missingB = {});
    // "Max Speed(mm/s), X"
    static QString Name(const SParamDifference& difference);
    // "Max Speed(mm/s), X: 1000 → 1200 mm/s"; a missing value is "(missing)".
    // Values are given in the unit the label names, as the dialog shows them.
    static QString Describe(const SParamDifference& difference);
    // One side's value as the dialog shows it, with its unit: "5 kHz", "(missing)".
    static QString Shown(const SParamDifference& difference, bool bSideB);
    // The shortest text that reads back as the same number ("nan", "inf" for those).
    static QString Number(double dValue);
};
