#pragma once

#include "CToolInputs.h"

#include <QCommandLineParser>
#include <QSet>
#include <QStringList>
#include <QTextStream>

struct FactoryParams;

// The commands of factoryparams, each given its own arguments (the command's
// name first) and answering with the process's exit code: 0 done (and, for
// diff, check and fleet, nothing different or wrong), 1 differences or
// problems found, 2 the command could not do its work (bad arguments, a file
// that is missing or no parameter file, a target that cannot be written).
// Results go to standard output; every complaint to standard error.
class CParamsTool
{
public:
    enum Exit
    {
        ExitOk = 0,
        ExitDifferent = 1,
        ExitFailed = 2
    };

    CParamsTool(QTextStream& out, QTextStream& err);

    int Run(const QStringList& arguments);

private:
    int Show(const QStringList& arguments);
    int Diff(const QStringList& arguments);
    int Check(const QStringList& arguments);
    int Set(const QStringList& arguments);
    int Fleet(const QStringList& arguments);
    int Apply(const QStringList& arguments);
    // Changes one file (strPath, named strName) by KEY=VALUE assignments, as
    // set does; each change printed after strPrefix.
    int ChangeFile(const QString& strPath, const QString& strName, const QStringList& assignments, bool bRepair,
                   bool bDryRun, const QString& strPrefix);
    int Usage();

    // Reads a parameter file, naming the keys it lacks in pMissing; false,
    // with the reason on standard error, when it cannot.
    bool Load(const CToolInputs::SInput& input, FactoryParams& record, QSet<QString>* pMissing);
    void Complain(const QString& strText);
    // The files and folders a command is given from its nFirst positional
    // argument on, and those --files-from lists; false, said, when there are
    // none or the list cannot be read.
    bool GatherInputs(const QCommandLineParser& parser, const QCommandLineOption& filesFrom, int nFirst,
                      CToolInputs& inputs);

    QTextStream& m_out;
    QTextStream& m_err;
};
