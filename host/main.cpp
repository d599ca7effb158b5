#include "CHostWindow.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("QuorvaneHost"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Reference host of the FactoryMgr plug-in on a simulated controller."));
    parser.addHelpOption();
    const QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                        QStringLiteral("Render the windows to PNG files in <dir> and exit."),
                                        QStringLiteral("dir"));
    parser.addOption(screenshot);
    parser.process(app);

    CHostWindow window;
    if (!window.Start())
        return 1;
    if (parser.isSet(screenshot)) {
        const bool bOk = window.SaveScreenshots(parser.value(screenshot));
        std::printf("%s\n", bOk ? "screenshots written" : "screenshots failed");
        return bOk ? 0 : 1;
    }
    window.show();
    return app.exec();
}
