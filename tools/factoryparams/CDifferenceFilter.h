#pragma once

#include "CParamDiff.h"

#include <QList>
#include <QRegularExpression>
#include <QStringList>

// Which differences count, for a model file that gates a line of machines:
// keys to leave out (--ignore KEY-PATTERN, for example the calibrated steps
// MOTOR_PULSE_PER_MM_*) and how far a value may be from the model's
// (--tolerance [KEY-PATTERN=]VALUE; without a pattern, for every key).
// Patterns are shell wildcards over the file's keys. A key that a file lacks
// counts whatever the tolerance.
class CDifferenceFilter
{
public:
    // False, with the reason, when a pattern or tolerance is not one.
    bool Set(const QStringList& ignore, const QStringList& tolerances, QString* pWhy);
    bool Counts(const SParamDifference& difference) const;
    QList<SParamDifference> Counted(const QList<SParamDifference>& differences) const;

private:
    QList<QRegularExpression> m_ignore;
    QList<QPair<QRegularExpression, double>> m_tolerances;
};
