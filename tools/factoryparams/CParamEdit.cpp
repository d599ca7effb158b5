#include "CParamEdit.h"
#include "ParamWording.h"

#include "CSettingsFile.h"
#include "FactoryParamIo.h"
#include "FactoryParamKeys.h"

#include <QDateTime>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>

namespace {
const QString kTimeFormat = QStringLiteral("yyyyMMddHHmmss");

// The text a field's value is written as: what the plug-in reads back exactly.
QString TextFor(const FactoryParamKey& key, double dValue)
{
    return key.IsDouble() ? CParamDiff::Number(dValue) : QString::number(qint64(dValue));
}
}

CParamEdit::CParamEdit(const QString& strPath)
    : m_strPath(strPath)
{
    const ParamFileStatus status = ReadFactoryParamFile(m_before, strPath, &m_missing);
    if (status != ParamFileStatus::Loaded) {
        m_strUnreadable = ParamFileProblem(strPath, status);
        return;
    }
    QFile file(strPath);
    if (!file.open(QIODevice::ReadOnly)) {
        m_strUnreadable = file.errorString();
        return;
    }
    m_original = file.readAll();
    m_text = CParamFileText(m_original);
    m_intended = m_before;
    for (const SParamProblem& problem : CParamCheck::CheckFile(strPath))
        if (problem.kind != SParamProblem::KindUnknownKey)
            m_problems << problem;
}

void CParamEdit::Put(const QString& strKey, double dValue)
{
    const FactoryParamKey* pKey = FactoryParamKey::Find(strKey);
    // A value the file holds already, as the plug-in reads it, keeps its line as written.
    if (!m_missing.contains(strKey) && pKey->Value(m_intended) == dValue && m_text.Has(pKey->strSection, strKey))
        return;
    pKey->SetValue(m_intended, dValue);
    m_text.Set(pKey->strSection, pKey->strKey, TextFor(*pKey, dValue));
}

bool CParamEdit::Assign(const QString& strAssignment, QString* pWhy)
{
    const QString strKey = strAssignment.section('=', 0, 0).trimmed();
    const QString strValue = strAssignment.section('=', 1);
    const FactoryParamKey* pKey = FactoryParamKey::Find(strKey);
    if (!strAssignment.contains('=')) {
        *pWhy = ParamWording("\"%1\" is not KEY=VALUE").arg(strAssignment);
        return false;
    }
    if (!pKey) {
        *pWhy = ParamWording("no key %1 (factoryparams show lists them)").arg(strKey);
        return false;
    }
    double dValue = 0.0;
    QString strWhy;
    if (!CParamCheck::Parse(*pKey, strValue, &dValue, &strWhy)) {
        *pWhy = QStringLiteral("%1=%2: %3").arg(strKey, strValue, strWhy);
        return false;
    }
    Put(strKey, dValue);
    return true;
}

QStringList CParamEdit::Repair(QStringList* pLeft)
{
    QStringList repaired;
    bool bRepeatedDropped = false;
    for (const SParamProblem& problem : m_problems) {
        const FactoryParamKey* pKey = FactoryParamKey::Find(problem.strKey);
        if (pKey) {
            double dValue = pKey->dMissing;
            QString strWhy;
            if (problem.strValue.isEmpty() && m_missing.contains(pKey->strKey)) {
                strWhy = ParamWording("missing");
            } else if (CParamCheck::Parse(*pKey, problem.strValue, &dValue, nullptr)) {
                strWhy = problem.strWhat;   // read otherwise than written: written as meant
            } else {
                bool bNumber = false;
                const double dText = problem.strValue.trimmed().toDouble(&bNumber);
                if (bNumber && std::isfinite(dText))
                    dValue = std::clamp(pKey->IsDouble() ? dText : std::round(dText), pKey->dMin, pKey->dMax);
                strWhy = problem.strWhat;
            }
            Put(pKey->strKey, dValue);
            repaired << QStringLiteral("%1: %2 → %3 (%4)")
                            .arg(pKey->strKey, problem.strValue.isEmpty() ? ParamWording("(missing)") : problem.strValue,
                                 TextFor(*pKey, dValue), strWhy);
        } else if (problem.strKey == QLatin1String("CREATE_TIME")) {
            const QString strNow = QDateTime::currentDateTime().toString(kTimeFormat);
            m_text.Set(QStringLiteral("FACTORY_PARAM"), QStringLiteral("CREATE_TIME"), strNow);
            repaired << QStringLiteral("CREATE_TIME: %1 → %2 (%3)")
                            .arg(problem.strValue.isEmpty() ? ParamWording("(missing)") : problem.strValue, strNow,
                                 problem.strWhat);
        } else if (problem.kind == SParamProblem::KindRepeated) {
            if (!bRepeatedDropped)
                m_text.DropRepeatedKeys();
            bRepeatedDropped = true;
            repaired << ParamWording("%1: only the last of its lines is kept, the one the plug-in reads (%2)")
                            .arg(problem.strKey, problem.strValue);
        } else {
            *pLeft << QStringLiteral("%1: %2").arg(problem.strKey, problem.strWhat);
        }
    }
    return repaired;
}

QList<SParamDifference> CParamEdit::Changes() const
{
    QSet<QString> missingAfter;
    for (const QString& strKey : m_missing) {
        const FactoryParamKey* pKey = FactoryParamKey::Find(strKey);
        if (!CParamFileText(Bytes()).Has(pKey->strSection, strKey))
            missingAfter << strKey;
    }
    return CParamDiff::Compare(m_before, m_intended, {}, m_missing, missingAfter);
}

bool CParamEdit::Verify(QString* pWhy) const
{
    QTemporaryDir dir;
    const QString strNew = dir.filePath(QStringLiteral("new.ini"));
    QFile file(strNew);
    if (!dir.isValid() || !file.open(QIODevice::WriteOnly) || file.write(Bytes()) != Bytes().size() || !file.flush()) {
        *pWhy = ParamWording("the new text could not be read back (no private copy of it could be written)");
        return false;
    }
    file.close();
    FactoryParams read;
    if (ReadFactoryParamFile(read, strNew) != ParamFileStatus::Loaded
        || !CParamDiff::Compare(m_intended, read).isEmpty()) {
        *pWhy = ParamWording("read back, the new text does not hold the values meant");
        return false;
    }
    // Every key the table does not know reads as it did.
    CSettingsFile beforeFile(m_strPath, kMaxParamFileSize);
    CSettingsFile afterFile(strNew, kMaxParamFileSize);
    const QSettings& before = beforeFile.Settings();
    const QSettings& after = afterFile.Settings();
    QSet<QString> known{QStringLiteral("FACTORY_PARAM/CREATE_TIME")};
    for (const FactoryParamKey& key : FactoryParamKey::File())
        known << key.strSection + "/" + key.strKey;
    for (const QString& strKey : before.allKeys())
        if (!known.contains(strKey) && before.value(strKey) != after.value(strKey)) {
            *pWhy = ParamWording("read back, the new text changes %1, which nobody asked to change").arg(strKey);
            return false;
        }
    return true;
}
