#pragma once

#include "CParamCheck.h"
#include "CParamDiff.h"
#include "CParamFileText.h"
#include "FactoryParams.h"

#include <QSet>
#include <QStringList>

// A change of one parameter file that keeps everything it was not asked to
// change: the new values go onto their own lines of the text, and every other
// line (keys and sections nobody knows, comments, the order) stays as it was.
// Whether the new text holds what was meant is found by reading it through
// the plug-in's own reader before it may replace anything. The caller holds
// the file's lock.
class CParamEdit
{
public:
    explicit CParamEdit(const QString& strPath);

    // Why the file cannot be changed at all (no parameter file, unreadable);
    // empty when it can.
    const QString& Unreadable() const { return m_strUnreadable; }
    // What check finds wrong with the known fields and the file's structure
    // (keys it does not know are no reason to refuse a change).
    const QList<SParamProblem>& Problems() const { return m_problems; }

    // One KEY=VALUE; false, with the reason, when the key or value is not one
    // the file takes.
    bool Assign(const QString& strAssignment, QString* pWhy);
    // Fills and fixes every problem it can, with a line per field it changed;
    // pLeft gets the problems it cannot fix.
    QStringList Repair(QStringList* pLeft);

    bool Changed() const { return m_text.Bytes() != m_original; }
    QByteArray Bytes() const { return m_text.Bytes(); }
    // The fields whose values change, as the plug-in reads them.
    QList<SParamDifference> Changes() const;
    // Whether the new text, read as the plug-in reads it, holds exactly the
    // values meant and every other key as it was; false, with the reason, when not.
    bool Verify(QString* pWhy) const;

private:
    void Put(const QString& strKey, double dValue);

    QString m_strPath;
    QString m_strUnreadable;
    QByteArray m_original;
    CParamFileText m_text{QByteArray()};
    FactoryParams m_before;
    FactoryParams m_intended;
    QSet<QString> m_missing;
    QList<SParamProblem> m_problems;
};
