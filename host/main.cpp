#include "CHostWindow.h"
#include "CScreenshotTour.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTimer>

#include <cstdio>
#include <initializer_list>

namespace {
// The tour takes seconds; under the sanitizers and a loaded machine, well under this.
constexpr int kTourSeconds = 240;

// Asked for help or the version, the host answers at a terminal without a
// display; Qt's own options beside them (-platform, -style) are let be.
// --help-all lists those options too, which only a full application knows.
bool Wants(int argc, char** argv, std::initializer_list<const char*> options)
{
    for (int i = 1; i < argc; ++i)
        for (const char* szOption : options)
            if (qstrcmp(argv[i], szOption) == 0)
                return true;
    return false;
}
}

int main(int argc, char** argv)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Reference host of the FactoryMgr plug-in on a simulated controller."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                        QStringLiteral("Render the windows to PNG files in <dir> and exit."),
                                        QStringLiteral("dir"));
    parser.addOption(screenshot);
    const bool bVersion = Wants(argc, argv, {"-v", "--version"});
    if (bVersion || Wants(argc, argv, {"-h", "--help"})) {
        QCoreApplication core(argc, argv);
        QCoreApplication::setApplicationName(QStringLiteral("QuorvaneHost"));
        QCoreApplication::setApplicationVersion(QStringLiteral(FACTORYMGR_VERSION));
        if (bVersion)
            parser.showVersion();   // both print and exit
        parser.showHelp();
    }

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("QuorvaneHost"));
    QApplication::setApplicationVersion(QStringLiteral(FACTORYMGR_VERSION));
    parser.process(app);

    if (parser.isSet(screenshot))
        CScreenshotTour::EndOnAnyQuestion(kTourSeconds);
    CHostWindow window;
    if (!window.Start())
        return 1;
    if (parser.isSet(screenshot)) {
        // Inside the event loop and out through a real quit, as a person's run
        // ends: the plug-in stores what it keeps when the application quits.
        QTimer::singleShot(0, &window, [&] {
            const bool bOk = CScreenshotTour(window).Save(parser.value(screenshot));
            std::printf("%s\n", bOk ? "screenshots written" : "screenshots failed");
            QApplication::exit(bOk ? 0 : 1);
        });
        return app.exec();
    }
    window.show();
    return app.exec();
}
