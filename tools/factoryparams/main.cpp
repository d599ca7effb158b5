// factoryparams: reads, compares, checks and changes FactoryMgr parameter
// files from a terminal or a script, for one machine or a whole factory.
#include "CParamsTool.h"
#include "CTranslator.h"
#include "ParamWording.h"

#include <QCoreApplication>
#include <QLocale>

#include <cstdio>

namespace {
// The tool speaks the language of the locale it runs in (LANGUAGE, LC_ALL,
// LC_MESSAGES, LANG) when a wording table has it, and English otherwise.
void ChooseLanguage(QTextStream& err)
{
    // As gettext does: the C locale's messages are English, LANGUAGE or not.
    for (const char* szVariable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const QString strLocale = qEnvironmentVariable(szVariable);
        if (strLocale.isEmpty())
            continue;
        if (strLocale == QLatin1String("C") || strLocale == QLatin1String("POSIX")
            || strLocale.startsWith(QLatin1String("C.")))
            return;
        break;
    }
    CTranslator* pTranslator = CTranslator::GetInstance();
    const QStringList available = pTranslator->AvailableLanguages();
    for (QString strLanguage : QLocale::system().uiLanguages()) {
        strLanguage.replace(QLatin1Char('-'), QLatin1Char('_'));
        if (strLanguage == QLatin1String("C") || strLanguage == QLatin1String("en")
            || strLanguage.startsWith(QLatin1String("en_")))
            return;
        if (!available.contains(strLanguage))
            continue;
        if (!pTranslator->SetLanguage(strLanguage))
            err << "factoryparams: " << ParamWording("The language stays English: %1.").arg(pTranslator->Problem())
                << Qt::endl;
        return;
    }
}
}

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("factoryparams"));
    QCoreApplication::setApplicationVersion(QStringLiteral(FACTORYMGR_VERSION));
    QTextStream out(stdout);
    QTextStream err(stderr);
    ChooseLanguage(err);
    CParamsTool tool(out, err);
    const int nExit = tool.Run(QCoreApplication::arguments().mid(1));
    // Output that never arrived (a full disk, a closed pipe) is no result.
    out.flush();
    if (out.status() != QTextStream::Ok || std::fflush(stdout) != 0 || std::ferror(stdout)) {
        err << "factoryparams: " << ParamWording("standard output could not be written") << "\n";
        err.flush();
        return CParamsTool::ExitFailed;
    }
    return nExit;
}
