#include "HostWindow.h"

#include "MemoryController.h"

#include <IFactoryMgr.h>

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QMenuBar>
#include <QStandardPaths>
#include <QStatusBar>
#include <QVBoxLayout>

#include <utility>

#include <sys/stat.h>

namespace {
// The host's pattern converter; this host has no cutting job to make, so the
// calibration cut finds none and the wizard says so.
int ConvertPattern(const char*, const char*, double)
{
    return 1;
}

// Where the plug-in keeps its parameter file: the user data directory, the
// per-user configuration directory + "/../Quorvane/Resources" (the theme this
// host ships in Resources/Theme/Theme.ini is "Quorvane"; another theme name
// makes it "/../Tessiflow/Resources").
QString ParameterFile()
{
    return QDir::cleanPath(QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation)
                           + "/../Quorvane/Resources/Data/FactoryParam.ini");
}

// The plug-in writes the file under a new name and renames it over the old
// one: a save that worked leaves a file that is another file.
ino_t Written()
{
    struct stat status {};
    return ::stat(QFile::encodeName(ParameterFile()).constData(), &status) == 0 ? status.st_ino : 0;
}
}

HostWindow::HostWindow(IFactoryMgr* pMgr, MemoryController* pController)
    : m_pMgr(pMgr)
    , m_pController(pController)
{
    setWindowTitle(QStringLiteral("Widgets host"));
    QMenu* pFile = menuBar()->addMenu(QStringLiteral("&File"));
    pFile->addAction(QStringLiteral("&Save"), QKeySequence::Save, this, &HostWindow::Save);
    pFile->addAction(QStringLiteral("&Quit"), QKeySequence::Quit, this, &QWidget::close);
    QMenu* pMachine = menuBar()->addMenu(QStringLiteral("&Machine"));
    QAction* pRead = pMachine->addAction(QStringLiteral("&Read"), this, &HostWindow::Read);
    QAction* pUpload = pMachine->addAction(QStringLiteral("&Upload"), this, &HostWindow::Upload);
    QAction* pCalibrate = pMachine->addAction(QStringLiteral("&Calibrate XY step..."), this, &HostWindow::Calibrate);
    m_pLine = new QLabel(this);
    statusBar()->addWidget(m_pLine, 1);

    // Without the access file the plug-in says so in a box of its own and
    // keeps no dialog: the dialog it returns is this host's, to delete.
    const bool bAccess = QFileInfo::exists(QCoreApplication::applicationDirPath() + "/../Resources/Data/FactoryPsw.ini");
    QDialog* pDialog = FactoryDialog(m_pMgr->ShowFactoryDlg(&ConvertPattern));
    if (!pDialog || !bAccess) {
        delete pDialog;
        pMachine->setEnabled(false);
        Say(pDialog ? QStringLiteral("The settings cannot be shown: the access file Resources/Data/FactoryPsw.ini is "
                                     "missing.")
                    : QStringLiteral("The settings cannot be shown: the plug-in made no dialog (its log says why)."));
        return;
    }
    // Embedded as a plain child widget, three levels below the window
    // (window, central widget, page, dialog): Escape closes the dialog and
    // the widget three levels above it, which is then this window.
    m_pDialog = pDialog;
    auto* pCentral = new QWidget(this);
    auto* pPage = new QWidget(pCentral);
    (new QVBoxLayout(pCentral))->addWidget(pPage);
    auto* pLayout = new QVBoxLayout(pPage);
    pLayout->setContentsMargins(0, 0, 0, 0);
    m_pDialog->setParent(pPage, Qt::Widget);
    pLayout->addWidget(m_pDialog);
    setCentralWidget(pCentral);
    connect(m_pDialog, SIGNAL(ReadCurParamsFromDeviceSignal()), pRead, SLOT(trigger()));
    connect(m_pDialog, SIGNAL(UploadCurParamsToDeviceSignal()), pUpload, SLOT(trigger()));
    connect(m_pDialog, SIGNAL(CorrectXyStepSignal()), pCalibrate, SLOT(trigger()));
    Say(ShowRecordInDialog() ? QStringLiteral("The settings show the parameter file.")
                             : QStringLiteral("The settings could not be filled in: the dialog has no DataToCtrlSlot."));
}

HostWindow::~HostWindow()
{
    // The dialog the plug-in keeps is the plug-in's, which would delete it at
    // the next ShowFactoryDlg(); a host may delete it earlier, as this one
    // does with its window.
    delete m_pDialog;
}

QString HostWindow::Said() const
{
    return m_pLine->text();
}

void HostWindow::Say(const QString& strText)
{
    m_pLine->setText(strText);
}

bool HostWindow::ShowRecordInDialog()
{
    return QMetaObject::invokeMethod(m_pDialog, "DataToCtrlSlot", Q_ARG(bool, true));
}

// Read: the controller's record into the plug-in's, then into the parameter
// file and the dialog, which a read alone does not change.
void HostWindow::Read()
{
    const int nResult = m_pMgr->ReadParamsFromDevice();
    if (nResult != 0) {
        Say(QStringLiteral("Nothing was read: result code %1.").arg(nResult));
        return;
    }
    FactoryParams record;
    m_pMgr->GetFactoryParams(&record);
    m_pMgr->SetFactoryParams(&record);
    Say(ShowRecordInDialog() ? QStringLiteral("The parameters were read from the controller.")
                             : QStringLiteral("The parameters were read from the controller, but the settings could "
                                              "not show them."));
}

// Upload: the dialog's values to the controller, then what it kept. The check
// answers "all kept" when it could read nothing back, so the host reads back
// itself first.
void HostWindow::Upload()
{
    const int nResult = m_pMgr->UploadParamsToDevice();
    if (nResult != 0) {
        Say(QStringLiteral("The Upload failed: result code %1.").arg(nResult));
        return;
    }
    FactoryParams kept;
    const int nRead = m_pController->ReadFactoryParams(&kept);
    if (nRead != 0) {
        Say(QStringLiteral("The values were sent, but the controller could not be read back: result code %1.").arg(nRead));
        return;
    }
    quint32 nFlags = 0;
    if (m_pMgr->CheckDeviceParams(&nFlags)) {
        Say(QStringLiteral("The controller kept every value. %1").arg(SaveFile(false)));
    } else {
        // The tabs of the sections that had a value set back.
        QStringList tabs;
        const std::pair<quint32, const char*> sections[] = {{IFactoryMgr::CheckFlagMotor, "Motor"},
                                                            {IFactoryMgr::CheckFlagLaser, "Laser"},
                                                            {IFactoryMgr::CheckFlagSpeed, "Processing"},
                                                            {IFactoryMgr::CheckFlagMachine, "Machine"}};
        for (const auto& [nFlag, szTab] : sections)
            if (nFlags & nFlag)
                tabs << QLatin1String(szTab);
        Say(tabs.isEmpty() ? QStringLiteral("The check of what the controller kept failed; see the plug-in's log. "
                                            "Nothing was saved.")
                           : QStringLiteral("The controller did not keep every value: the red cells on %1 are back at "
                                            "the values the settings opened with. Nothing was saved.")
                                 .arg(tabs.join(QStringLiteral(", "))));
    }
}

void HostWindow::Calibrate()
{
    m_pMgr->ShowCalibrateXyStepDlg();
}

void HostWindow::Save()
{
    Say(SaveFile(true));
}

// The plug-in does not say whether a save worked: it did when the parameter
// file is another file afterwards.
QString HostWindow::SaveFile(bool bFromDialog)
{
    const ino_t before = Written();
    m_pMgr->SaveToFile(bFromDialog);
    const ino_t after = Written();
    return after != 0 && after != before ? QStringLiteral("Saved to %1.").arg(ParameterFile())
                                         : QStringLiteral("The parameter file %1 was not written.").arg(ParameterFile());
}
