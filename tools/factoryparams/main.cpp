// factoryparams: reads, compares, checks and changes FactoryMgr parameter
// files from a terminal or a script, for one machine or a whole factory.
#include "CParamsTool.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("factoryparams"));
    QCoreApplication::setApplicationVersion(QStringLiteral(FACTORYMGR_VERSION));
    QTextStream out(stdout);
    QTextStream err(stderr);
    CParamsTool tool(out, err);
    const int nExit = tool.Run(QCoreApplication::arguments().mid(1));
    // Output that never arrived (a full disk, a closed pipe) is no result.
    out.flush();
    if (out.status() != QTextStream::Ok || std::fflush(stdout) != 0 || std::ferror(stdout)) {
        err << "factoryparams: standard output could not be written\n";
        err.flush();
        return CParamsTool::ExitFailed;
    }
    return nExit;
}
