#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

struct FactoryParams;

// What the host tells the person after an Upload, from what the plug-in's
// read-back check returned: whether the controller kept everything, and for
// every value it did not keep, the field as the settings dialog labels it,
// its axis or laser, the value sent, the value the controller kept and the
// value the plug-in put back. Every field the parameter file stores is
// compared; values are given exactly.
class CUploadReport
{
public:
    // sent: the record the Upload sent; kept: the controller's after it;
    // putBack: the plug-in's record after the check. Values with their unit,
    // lengths in the display unit nUnit.
    static QStringList PutBackLines(const FactoryParams& sent, const FactoryParams& kept, const FactoryParams& putBack,
                                    int nUnit);
    // The report: bKept and nFlags as the check returned them, the lines
    // above, and why the parameter file was not written (empty: it was).
    static QString Text(bool bKept, quint32 nFlags, const QStringList& lines, const QString& strSaveProblem);
};
