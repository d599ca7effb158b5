#include "CParamAccount.h"

#include "CDisplayUnit.h"
#include "CTranslator.h"
#include "Wording.h"

namespace {
QString Translate(const QString& strText)
{
    return CTranslator::GetInstance()->GetWording(strText);
}

// How many of the differences the sentence names before it says "…".
constexpr int kNamed = 2;
}

void CParamAccount::SetDialogClosed()
{
    m_bDialogOpen = false;
    emit Changed();
}

void CParamAccount::SetDialog(const FactoryParams& values)
{
    if (!m_bDialogOpen)
        m_dialogOpened = values;
    m_bDialogOpen = true;
    m_dialog = values;
    emit Changed();
}

bool CParamAccount::IsDialogChangedSinceOpened() const
{
    return m_bDialogOpen && !CParamDiff::Compare(m_dialogOpened, m_dialog, Translate).isEmpty();
}

void CParamAccount::SetFile(const FactoryParams& record, const QDateTime& written)
{
    m_file = File::Held;
    m_fileRecord = record;
    m_fileWritten = written;
    m_strFileProblem.clear();
    emit Changed();
}

void CParamAccount::SetFileMissing()
{
    m_file = File::Missing;
    m_strFileProblem.clear();
    emit Changed();
}

void CParamAccount::SetFileUnreadable(const QString& strWhy)
{
    m_file = File::Unreadable;
    m_strFileProblem = strWhy;
    emit Changed();
}

void CParamAccount::SetController(const FactoryParams& record)
{
    m_bControllerKnown = true;
    m_bChangedSinceController = false;
    m_controller = record;
    emit Changed();
}

void CParamAccount::SetControllerUnknown()
{
    m_bControllerKnown = false;
    emit Changed();
}

void CParamAccount::SetChangedSinceController(bool bChanged)
{
    m_bChangedSinceController = bChanged;
    emit Changed();
}

void CParamAccount::SetUnit(int nUnit)
{
    m_nUnit = nUnit;
    emit Changed();
}

QList<SParamDifference> CParamAccount::UnsavedChanges() const
{
    if (!m_bDialogOpen || m_file != File::Held)
        return {};
    return CParamDiff::Compare(m_fileRecord, m_dialog, Translate);
}

QList<SParamDifference> CParamAccount::ControllerDifferences() const
{
    if (m_file != File::Held || !m_bControllerKnown)
        return {};
    return CParamDiff::Compare(m_fileRecord, m_controller, Translate);
}

QString CParamAccount::Describe(const SParamDifference& difference, const QString& strA, const QString& strB) const
{
    return QStringLiteral("%1: %2 %3, %4 %5")
        .arg(CParamDiff::Name(difference), strA, CDisplayUnit::Value(difference.Shown(difference.dA), difference.strUnit, m_nUnit), strB,
             CDisplayUnit::Value(difference.Shown(difference.dB), difference.strUnit, m_nUnit));
}

QString CParamAccount::Sentence() const
{
    QString strSettings;
    if (!m_bDialogOpen) {
        strSettings = Wording("closed");
    } else if (m_file != File::Held) {
        strSettings = Wording("not saved");
    } else {
        const qsizetype nChanges = UnsavedChanges().size();
        strSettings = nChanges == 0 ? Wording("no changes") : Wording("%1 change(s) not saved").arg(nChanges);
    }

    QString strFile;
    switch (m_file) {
    case File::Held:
        strFile = Wording("saved %1")
                      .arg(m_fileWritten.date() == QDate::currentDate() ? m_fileWritten.toString(QStringLiteral("HH:mm"))
                                                                         : m_fileWritten.toString(QStringLiteral("yyyy-MM-dd HH:mm")));
        break;
    case File::Missing: strFile = Wording("not written yet"); break;
    case File::Unreadable: strFile = Wording("cannot be read (%1)").arg(m_strFileProblem); break;
    case File::Unknown: strFile = Wording("not looked at yet"); break;
    }

    QString strController;
    if (!m_bControllerKnown) {
        strController = m_bChangedSinceController ? Wording("not read yet; values saved since were not uploaded")
                                                  : Wording("not read yet");
    } else if (m_file != File::Held) {
        strController = Wording("read");
    } else {
        const QList<SParamDifference> differences = ControllerDifferences();
        if (differences.isEmpty()) {
            strController = Wording("same as the file");
        } else {
            QStringList named;
            for (qsizetype i = 0; i < differences.size() && i < kNamed; ++i)
                named << Describe(differences[i], Wording("file"), Wording("controller"));
            if (differences.size() > kNamed)
                named << QStringLiteral("…");
            strController = Wording("differs in %1 field(s) (%2)").arg(differences.size()).arg(named.join(QStringLiteral("; ")));
        }
    }
    return Wording("Settings: %1 · File: %2 · Controller: %3").arg(strSettings, strFile, strController);
}
