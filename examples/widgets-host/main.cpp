// A Qt Widgets host of the FactoryMgr plug-in: its main window embeds the
// plug-in's settings dialog, whose Read, Upload and Calibrate buttons reach
// the plug-in through the window (HostWindow), over a controller that lives
// in memory.
//
//   widgets-host [--self-test] [path of libFactoryMgr.so]
//
// With --self-test it presses the dialog's Read and Upload buttons itself,
// once with values the controller keeps and once with one it cannot, then
// Escape, prints "ok" or "FAIL" for each thing a person would see, and ends;
// the exit code is the number of failures. QT_QPA_PLATFORM=offscreen runs it
// without a display.
#include "HostWindow.h"
#include "MemoryController.h"

#include <IFactoryMgr.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QFileInfo>
#include <QImage>
#include <QKeyEvent>
#include <QLibrary>
#include <QSet>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

namespace {
constexpr int kSelfTestSeconds = 120;
int g_nFailed = 0;

void Step(const char* szWhat, bool bOk, const QString& strDetail = QString())
{
    std::printf("%-4s %s%s%s\n", bOk ? "ok" : "FAIL", szWhat, strDetail.isEmpty() ? "" : ": ",
                qPrintable(strDetail));
    std::fflush(stdout);
    if (!bOk)
        ++g_nFailed;
}

// The plug-in, checked for the interface revision this host was built for
// before anything else of it is called; null with the reason in strWhy.
IFactoryMgr* Load(QLibrary& library, PfnReleaseInterface* pRelease, QString* pWhy)
{
    if (!library.load()) {
        *pWhy = library.errorString();
        return nullptr;
    }
    auto pfnVersion = reinterpret_cast<PfnFactoryMgrVersion>(library.resolve("FactoryMgrVersion"));
    int nMajor = 0;
    int nMinor = 0;
    int nPatch = 0;
    const int nRevision = pfnVersion ? pfnVersion(&nMajor, &nMinor, &nPatch) : -1;
    if (nRevision != FACTORYMGR_INTERFACE_REVISION) {
        *pWhy = QStringLiteral("%1 implements interface revision %2; this host needs %3")
                    .arg(library.fileName())
                    .arg(nRevision)
                    .arg(FACTORYMGR_INTERFACE_REVISION);
        return nullptr;
    }
    auto pfnNew = reinterpret_cast<PfnNewInterface>(library.resolve("NewInterface"));
    *pRelease = reinterpret_cast<PfnReleaseInterface>(library.resolve("ReleaseInterface"));
    IFactoryMgr* pMgr = pfnNew && *pRelease ? pfnNew() : nullptr;
    if (!pMgr)
        *pWhy = QStringLiteral("%1 gave no service object").arg(library.fileName());
    return pMgr;
}

// A press on one of the dialog's buttons, as a person's click ends.
bool Press(QDialog* pDialog, const char* szName)
{
    auto* pButton = pDialog->findChild<QAbstractButton*>(QLatin1String(szName));
    if (!pButton || !pButton->isVisible() || !pButton->isEnabled())
        return false;
    pButton->click();
    return true;
}

// What the person sees of the window: the dialog inside it, drawn.
void CheckEmbedded(HostWindow& window)
{
    QDialog* pDialog = window.Dialog();
    Step("the settings dialog is in the window", pDialog && !pDialog->isWindow() && pDialog->window() == &window
                                                      && pDialog->isVisible());
    if (!pDialog)
        return;
    QWidget* pCentral = window.centralWidget();
    const QRect inCentral(pDialog->mapTo(pCentral, QPoint(0, 0)), pDialog->size());
    Step("the dialog lies within the window's central area", pCentral->rect().contains(inCentral),
         QStringLiteral("dialog %1,%2 %3x%4 in %5x%6")
             .arg(inCentral.x())
             .arg(inCentral.y())
             .arg(inCentral.width())
             .arg(inCentral.height())
             .arg(pCentral->width())
             .arg(pCentral->height()));
    // A drawn dialog has text, lines and fields: many colours, not one fill.
    const QImage picture = pDialog->grab().toImage();
    QSet<QRgb> colours;
    for (int y = 0; y < picture.height(); y += 3)
        for (int x = 0; x < picture.width(); x += 3)
            colours.insert(picture.pixel(x, y));
    Step("the dialog is drawn", colours.size() > 8, QStringLiteral("%1 colours").arg(colours.size()));
}

void SelfTest(HostWindow& window, IFactoryMgr* pMgr, MemoryController& controller)
{
    CheckEmbedded(window);
    QDialog* pDialog = window.Dialog();
    if (!pDialog)
        return;

    Step("Read is pressed", Press(pDialog, "pushButton_read"));
    FactoryParams record;
    pMgr->GetFactoryParams(&record);
    Step("Read asked the controller once", controller.nReads == 1, QString::number(controller.nReads));
    Step("the record holds the controller's X max speed", record.motor[0].speedMax == controller.held.motor[0].speedMax,
         QString::number(record.motor[0].speedMax));
    Step("the window says it read", window.Said() == "The parameters were read from the controller.", window.Said());

    Step("Upload is pressed", Press(pDialog, "pushButton_upload"));
    Step("Upload wrote to the controller once", controller.nWrites == 1, QString::number(controller.nWrites));
    Step("the controller holds the values the dialog showed", controller.held.motor[0].speedMax == 1200.0,
         QString::number(controller.held.motor[0].speedMax));
    Step("the window says all was kept and saved", window.Said().startsWith("The controller kept every value. Saved to "),
         window.Said());

    // A value beyond what the controller takes, put into the dialog as a
    // host's own import would: the controller keeps its limit instead.
    record.motor[0].speedMax = MemoryController::kSpeedMaxLimit + 500.0;
    pMgr->SetFactoryParams(&record);
    Step("the dialog shows the new record",
         QMetaObject::invokeMethod(pDialog, "DataToCtrlSlot", Q_ARG(bool, true)));
    Step("Upload is pressed again", Press(pDialog, "pushButton_upload"));
    Step("the controller holds its limit", controller.held.motor[0].speedMax == MemoryController::kSpeedMaxLimit,
         QString::number(controller.held.motor[0].speedMax));
    Step("the window says what was not kept, on which tab",
         window.Said().startsWith("The controller did not keep every value: the red cells on Motor are back"),
         window.Said());
}
}

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("widgets-host"));
    QStringList arguments = QCoreApplication::arguments().mid(1);
    const bool bSelfTest = arguments.removeAll(QStringLiteral("--self-test")) > 0;
    // The plug-in named on the command line; else the one shipped beside this
    // executable; else the SDK's, where the build found it.
    const QString strBeside = QCoreApplication::applicationDirPath() + "/libFactoryMgr.so";
    const QString strPlugin = !arguments.isEmpty()       ? arguments.first()
        : QFileInfo::exists(strBeside) ? strBeside
                                                         : QStringLiteral(FACTORYMGR_PLUGIN_PATH);

    QLibrary library(strPlugin);
    PfnReleaseInterface pfnRelease = nullptr;
    QString strWhy;
    IFactoryMgr* pMgr = Load(library, &pfnRelease, &strWhy);
    if (!pMgr) {
        std::fprintf(stderr, "widgets-host: %s\n", qPrintable(strWhy));
        return 1;
    }
    MemoryController controller;
    CodeCollector notifier;
    controller.held.motor[0].speedMax = 1200.0;
    pMgr->Init(&controller, &notifier);

    int nResult = 0;
    {
        HostWindow window(pMgr, &controller);
        window.resize(1000, 700);
        window.show();
        if (bSelfTest) {
            // A box nobody answers would keep it waiting: it gives up instead.
            QTimer::singleShot(kSelfTestSeconds * 1000, [] {
                Step("the self-test ended in time", false, QStringLiteral("%1 s").arg(kSelfTestSeconds));
                std::_Exit(99);
            });
            QTimer::singleShot(0, &window, [&] {
                SelfTest(window, pMgr, controller);
                Step("no result code was shown to the person", notifier.codes.isEmpty());
                // Escape closes the dialog and the window it is embedded in.
                QDialog* pDialog = window.Dialog();
                if (pDialog) {
                    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
                    QCoreApplication::sendEvent(pDialog, &escape);
                }
                Step("Escape closes the window", pDialog && !window.isVisible());
                window.close();
            });
        }
        nResult = app.exec();
    }
    pfnRelease(pMgr);
    if (bSelfTest) {
        std::printf("%s\n", g_nFailed == 0 ? "the window did what a person asked"
                                           : qPrintable(QStringLiteral("%1 check(s) failed").arg(g_nFailed)));
        return g_nFailed;
    }
    return nResult;
}
