#include "CUploadReport.h"

#include "CDisplayUnit.h"
#include "CParamDiff.h"
#include "CTranslator.h"
#include "Wording.h"
#include "FactoryParamKeys.h"
#include "FactoryParams.h"
#include "IFactoryMgr.h"

QStringList CUploadReport::PutBackLines(const FactoryParams& sent, const FactoryParams& kept,
                                        const FactoryParams& putBack, int nUnit)
{
    QStringList lines;
    const auto translate = [](const QString& strText) { return CTranslator::GetInstance()->GetWording(strText); };
    for (const SParamDifference& d : CParamDiff::Compare(sent, kept, translate))
        lines << Wording("%1: sent %2, the controller kept %3, put back %4")
                     .arg(CParamDiff::Name(d), CDisplayUnit::Value(d.Shown(d.dA), d.strUnit, nUnit),
                          CDisplayUnit::Value(d.Shown(d.dB), d.strUnit, nUnit),
                          CDisplayUnit::Value(d.Shown(FactoryParamKey::ValueOf(putBack, d.strKey)), d.strUnit, nUnit));
    return lines;
}

QString CUploadReport::Text(bool bKept, quint32 nFlags, const QStringList& lines, const QString& strSaveProblem)
{
    QStringList text;
    if (bKept && nFlags == 0) {
        text << Wording("The controller kept every value.");
    } else {
        QStringList sections;
        if (nFlags & IFactoryMgr::CheckFlagMotor)
            sections << Wording("Motor");
        if (nFlags & IFactoryMgr::CheckFlagLaser)
            sections << Wording("Laser");
        if (nFlags & IFactoryMgr::CheckFlagSpeed)
            sections << Wording("Processing");
        if (nFlags & IFactoryMgr::CheckFlagMachine)
            sections << Wording("Machine");
        text << (nFlags == 0 ? Wording("The controller changed values the check does not put back.")
                             : Wording("The controller did not keep %1 value(s) (%2); they are put back and marked red:")
                                   .arg(lines.size())
                                   .arg(sections.join(", ")));
        text << lines;
    }
    text << (strSaveProblem.isEmpty() ? Wording("The parameters are saved.")
                                      : Wording("The parameter file could not be saved: %1.").arg(strSaveProblem));
    return text.join('\n');
}
