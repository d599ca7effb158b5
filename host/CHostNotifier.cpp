#include "CHostNotifier.h"

#include "CSimController.h"
#include "Wording.h"

#include <QApplication>
#include <QMessageBox>

QString CHostNotifier::Describe(int nCode)
{
    switch (nCode) {
    case 1001: return Wording("No controller is connected, or the controller's state does not allow this.");
    case 1005: return Wording("The controller is busy with a job. Try again when it has finished.");
    case 11: return Wording("The calibration pattern could not be turned into a machine job.");
    case CSimController::CodeNotConnected: return Wording("The controller is not connected.");
    case CSimController::CodeFileMissing: return Wording("The file does not exist.");
    case CSimController::CodeFileEmpty: return Wording("The firmware file is empty.");
    case CSimController::CodeWrongFileType: return Wording("The firmware file is not of the expected type.");
    case CSimController::CodeNotFirmware: return Wording("The file is not a firmware file of this controller.");
    case CSimController::CodeWrongBoard: return Wording("The firmware file is for the other board.");
    case CSimController::CodeBadChecksum: return Wording("The firmware file is damaged: its checksum does not match.");
    case CSimController::CodeUnreadable: return Wording("The file cannot be read.");
    case CSimController::CodeNoPower: return Wording("The cutting power is 0 %: the laser would cut nothing.");
    case CSimController::CodeOutsideWorkArea: return Wording("The job does not fit the machine's work area.");
    case CSimController::CodeLinkLost:
        return Wording("The connection to the controller was lost during the operation. Reconnect and try again.");
    case CSimController::CodeFlashError: return Wording("The controller could not store the values in its memory.");
    case CSimController::CodeFirmwareIncomplete:
        return Wording("The mainboard firmware is incomplete after an interrupted upgrade. Upgrade it again.");
    case CSimController::CodeNoAnswer: return Wording("The controller did not answer in time.");
    case CSimController::CodeBadJob: return Wording("The machine cannot cut this job.");
    case CSimController::CodeUnknownFunction: return Wording("The controller does not know this function.");
    default: return Wording("The controller reported an error.");
    }
}

int CHostNotifier::ShowErrorCode(int nCode, int nReserved)
{
    Q_UNUSED(nReserved)
    // The calibration wizard hands on every result, success (0) included.
    if (nCode == 0)
        return 0;
    m_shown << nCode;
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return 0;
    QMessageBox box(QMessageBox::Warning, Wording("Error"),
                    QStringLiteral("%1\n\n%2 %3").arg(Describe(nCode), Wording("Code:")).arg(nCode),
                    QMessageBox::Ok, QApplication::activeWindow());
    box.setObjectName(QStringLiteral("errorBox"));
    box.exec();
    return 0;
}

QList<int> CHostNotifier::Shown() const
{
    return m_shown;
}
