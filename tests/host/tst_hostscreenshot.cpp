#include "TestMain.h"

#include <QImage>
#include <QProcess>
#include <QSet>
#include <QStandardPaths>

// The host binary under a real X server (Xvfb), as a person would start it,
// rendering its windows to PNG files.
class TestHostScreenshot : public QObject
{
    Q_OBJECT
private slots:
    void rendersEveryWindowUnderX11();
};

void TestHostScreenshot::rendersEveryWindowUnderX11()
{
    const QString strXvfbRun = QStandardPaths::findExecutable("xvfb-run");
    QVERIFY2(!strXvfbRun.isEmpty(), "xvfb-run is missing: scripts/deps installs it");
    QTemporaryDir output;
    QTemporaryDir config;

    QProcess host;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QT_QPA_PLATFORM", "xcb");
    env.insert("XDG_CONFIG_HOME", config.path());
    env.remove("DISPLAY");
    host.setProcessEnvironment(env);
    host.setProcessChannelMode(QProcess::MergedChannels);
    host.start(strXvfbRun, {"-a", "-s", "-screen 0 1280x1024x24", QCoreApplication::applicationDirPath() + "/QuorvaneHost",
                            "--screenshot", output.path()});
    QVERIFY(host.waitForFinished(120000));
    const QByteArray log = host.readAll();
    QVERIFY2(host.exitStatus() == QProcess::NormalExit && host.exitCode() == 0, log.constData());

    const QStringList expected{"main-window", "settings-tab", "settings-widget1", "settings-tab_5",
                               "settings-widget2", "settings-tab_2", "settings-tab_theme", "settings-motor-refused",
                               "main-window-account", "wizard-page1", "wizard-page2", "activity", "restore", "settings-keyboard"};
    for (const QString& strName : expected) {
        const QImage image(output.path() + "/" + strName + ".png");
        QVERIFY2(!image.isNull(), qPrintable(strName));
        QVERIFY2(image.width() >= 300 && image.height() >= 150, qPrintable(strName));
        // Not blank: a rendered window has text, frames and fills.
        QSet<QRgb> colours;
        for (int y = 0; y < image.height(); y += 3)
            for (int x = 0; x < image.width(); x += 3)
                colours.insert(image.pixel(x, y));
        QVERIFY2(colours.size() > 8, qPrintable(QStringLiteral("%1: %2 colours").arg(strName).arg(colours.size())));
    }

    // The two values the controller did not keep (X max speed, Y max
    // acceleration) are marked: their cells are filled red, which the Motor
    // tab as it opens has nowhere.
    const auto redPixels = [&](const QString& strName) {
        const QImage image(output.path() + "/" + strName + ".png");
        int nRed = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) {
                const QRgb pixel = image.pixel(x, y);
                nRed += qRed(pixel) > 200 && qGreen(pixel) < 80 && qBlue(pixel) < 80;
            }
        return nRed;
    };
    QCOMPARE(redPixels("settings-tab"), 0);
    const int nRefusedRed = redPixels("settings-motor-refused");
    QVERIFY2(nRefusedRed > 4000, qPrintable(QStringLiteral("%1 red pixels").arg(nRefusedRed)));
}

FACTORYMGR_TEST_MAIN(TestHostScreenshot)
#include "tst_hostscreenshot.moc"
