// Arbitrary text typed into every number cell of the settings dialog.
#include "CFactoryMgrApp.h"
#include "DlgFactoryMgr.h"
#include "FactoryParams.h"

#include <QApplication>
#include <QLineEdit>
#include <QTableWidget>
#include <QTemporaryDir>

#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {
QApplication* g_pApp = nullptr;
DlgFactoryMgr* g_pDialog = nullptr;
FactoryParams* g_pRecord = nullptr;

struct Table
{
    const char* szName;
    void (DlgFactoryMgr::*clicked)(const QModelIndex&);
};
const Table kTables[] = {{"tableWidget_motor", &DlgFactoryMgr::on_tableWidget_motor_clicked},
                         {"tableWidget_laser", &DlgFactoryMgr::on_tableWidget_laser_clicked},
                         {"tableWidget_machine", &DlgFactoryMgr::on_tableWidget_machine_clicked},
                         {"tableWidget_speed", &DlgFactoryMgr::on_tableWidget_speed_clicked}};

bool Finite(const FactoryParams& p)
{
    for (const MotorParams& m : p.motor)
        for (double d : {m.pulsePerMm, m.size, m.zeroOffset, m.speedJump, m.speedMax, m.accMax, m.accUrgentStop, m.accKey,
                         m.speedKeyJump})
            if (!std::isfinite(d))
                return false;
    return std::isfinite(p.machine.laserSpace) && std::isfinite(p.speed.cutAccWork);
}
}

extern "C" int LLVMFuzzerInitialize(int* pArgc, char*** pArgv)
{
    static QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.path().toLocal8Bit());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    g_pApp = new QApplication(*pArgc, *pArgv);
    g_pRecord = new FactoryParams;
    g_pDialog = new DlgFactoryMgr(g_pRecord);
    g_pDialog->show();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize)
{
    const QString strText = QString::fromUtf8(reinterpret_cast<const char*>(pData), int(nSize));
    for (const Table& table : kTables) {
        auto* pTable = g_pDialog->findChild<QTableWidget*>(table.szName);
        for (int r = 0; r < pTable->rowCount(); ++r)
            for (int c = 1; c < pTable->columnCount(); ++c) {
                QWidget* pCell = pTable->cellWidget(r, c);
                QLineEdit* pEdit = pCell ? pCell->findChild<QLineEdit*>() : nullptr;
                if (!pEdit)
                    continue;
                (g_pDialog->*table.clicked)(pTable->model()->index(r, c));
                pEdit = pTable->cellWidget(r, c)->findChild<QLineEdit*>();
                pEdit->setText(strText);
                pEdit->setModified(true);
                emit pEdit->editingFinished();
                QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            }
    }
    g_pDialog->DataToCtrlSlot(false);
    FactoryParams collected;
    g_pDialog->GetParams(collected);
    // No typed text may leave an infinite value in the record.
    if (!Finite(collected))
        std::abort();
    return 0;
}
