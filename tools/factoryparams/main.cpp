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
    return tool.Run(QCoreApplication::arguments().mid(1));
}
