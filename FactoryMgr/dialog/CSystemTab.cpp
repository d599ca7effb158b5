#include "CSystemTab.h"

#include "CFactoryMgrApp.h"
#include "CPropertyTable.h"
#include "Wording.h"
#include "CardInfo.h"
#include "DlgFactoryMgr.h"
#include "ILog.h"
#include "ThreadDialogRun.h"

#include <QFileDialog>
#include <QGridLayout>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPointer>
#include <QTableWidget>

namespace {
// A box as narrow as its text gets its title cut by the window manager (an
// empty title shows the application's name): the box is made wide enough
// for the title and the title bar's buttons.
void KeepTitleWhole(QMessageBox* pBox)
{
    const QString strTitle =
        pBox->windowTitle().isEmpty() ? QGuiApplication::applicationDisplayName() : pBox->windowTitle();
    constexpr int kTitleBarButtons = 160;
    if (auto* pGrid = qobject_cast<QGridLayout*>(pBox->layout()))
        pGrid->addItem(new QSpacerItem(pBox->fontMetrics().horizontalAdvance(strTitle) + kTitleBarButtons, 0,
                                       QSizePolicy::Minimum, QSizePolicy::Minimum),
                       pGrid->rowCount(), 0, 1, pGrid->columnCount());
}
}

CSystemTab::CSystemTab(DlgFactoryMgr* pDialog, QTableWidget* pTable)
    : m_pDialog(pDialog)
    , m_pTable(pTable)
{
}

QString CSystemTab::FormatDuration(int nSeconds)
{
    const int nMinutesTotal = nSeconds / 60;
    return QStringLiteral("%1:%2:%3")
        .arg(nMinutesTotal / 60, 0, 10, QLatin1Char(' '))
        .arg(nMinutesTotal % 60, 0, 10, QLatin1Char(' '))
        .arg(nSeconds % 60, 0, 10, QLatin1Char(' '));
}

void CSystemTab::FillSystemTab(bool bShowError)
{
    CardInfo info{};
    const int nResult = CFactoryMgrApp::GetInstance()->GetCardInfo(&info);
    if (nResult != 0) {
        if (bShowError)
            CFactoryMgrApp::GetInstance()->ReportError(nResult);
        return;
    }
    // The texts are NUL-terminated within their 64 bytes; a card that filled
    // all 64 is cut there rather than read past.
    const QStringList values{QString::fromLocal8Bit(info.firmwareVersion, int(qstrnlen(info.firmwareVersion, 64))),
                             QString::fromLocal8Bit(info.panelVersion, int(qstrnlen(info.panelVersion, 64))),
                             FormatDuration(info.totalWorkTime),
                             FormatDuration(info.totalJobTime),
                             QStringLiteral("%1").arg(info.totalXMove, 0, 10, QLatin1Char(' ')),
                             QStringLiteral("%1").arg(info.totalYMove, 0, 10, QLatin1Char(' '))};
    for (int r = 0; r < values.size() && r < m_pTable->rowCount(); ++r)
        m_pTable->setItem(r, 1, new QTableWidgetItem(values[r]));
}

void CSystemTab::Shown()
{
    if (m_bSystemTabLoaded)
        return;
    m_bSystemTabLoaded = true;
    FillSystemTab(false);
    CPropertyTable::Format(m_pTable, m_pDialog->Resolution());
}

void CSystemTab::Clear()
{
    ILog_WriteLogF(0, "pushButton_clear was clicked.");
    const int nResult = CFactoryMgrApp::GetInstance()->ClearCardInfo();
    if (nResult != 0) {
        CFactoryMgrApp::GetInstance()->ReportError(nResult);
        return;
    }
    FillSystemTab(false);
}

void CSystemTab::Upgrade(int nTask)
{
    const bool bMainboard = nTask == CFactoryMgrApp::TaskCardUpgrade;
    ILog_WriteLogF(0, bMainboard ? "on_pushButton_mainboardUpgrade was clicked." : "on_pushButton_panelUpgrade was clicked.");
    // The file dialog, the upgrade's progress loop and the result box all run
    // loops in which the host may delete the dialog, and this tab with it:
    // after each, only the guarded dialog is used, never a member.
    const QPointer<DlgFactoryMgr> pDialog(m_pDialog);
    QString strPath = QFileDialog::getOpenFileName(pDialog, Wording("Open"), QString(),
                                                   bMainboard ? QStringLiteral("(*.upd)") : QStringLiteral("(*.hmt *.hmi)"));
    if (strPath.isEmpty() || !pDialog)
        return;
    pDialog->setCursor(Qt::WaitCursor);
    const int nResult = ThreadDialogRun(CFactoryMgrApp::GetInstance(), nTask, &strPath, 0, Wording("Processing..."));
    ILog_WriteLogF(1, "HMI update erro code:%d", nResult);
    if (!pDialog)
        return;
    pDialog->setCursor(Qt::ArrowCursor);
    // Made on the heap as the dialog's child: deleted with the dialog while it
    // is open, the box ends its loop instead of being freed a second time.
    auto* pBox = nResult != 0
        ? new QMessageBox(QMessageBox::Warning, Wording("error"), Wording("Import failed"), QMessageBox::Ok, pDialog)
        : new QMessageBox(QMessageBox::Information, QString(), Wording("Import successfully"), QMessageBox::Ok, pDialog);
    // Why, as the host said it when the upgrade ended; its code at the least.
    if (nResult != 0) {
        const QString strWhy = ThreadDialogFailure();
        pBox->setInformativeText(strWhy.isEmpty() ? Wording("Result code %1.").arg(nResult) : strWhy);
    }
    KeepTitleWhole(pBox);
    pBox->setAttribute(Qt::WA_DeleteOnClose);
    pBox->exec();
}
