#include "CHostWindow.h"
#include "CScreenshotTour.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTimer>

#include <cstdio>

namespace {
// The tour takes seconds; under the sanitizers and a loaded machine, well under this.
constexpr int kTourSeconds = 240;

// Asked for help or the version, the host answers at a terminal without a display.
bool OnlyText(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i)
        for (const char* szOption : {"-h", "--help", "--help-all", "-v", "--version"})
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
    if (OnlyText(argc, argv)) {
        QCoreApplication core(argc, argv);
        QCoreApplication::setApplicationName(QStringLiteral("QuorvaneHost"));
        QCoreApplication::setApplicationVersion(QStringLiteral(FACTORYMGR_VERSION));
        parser.process(core);   // prints and exits
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
