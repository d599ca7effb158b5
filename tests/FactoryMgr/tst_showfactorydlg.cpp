#include "TestMain.h"

#include "CFactoryMgrApp.h"
#include "CFactoryMgrIns.h"
#include "DlgFactoryMgr.h"
#include "FactoryParamFile.h"
#include "FactoryParamIo.h"
#include "FakeDevice.h"
#include "ModalAnswerer.h"
#include "ParamFileTestData.h"

#include <QPointer>

#include <cstring>

using namespace ParamFileTestData;

namespace {
int ConvertPattern(const char*, const char*, double)
{
    return 0;
}

FactoryParams Working(DlgFactoryMgr* pDialog)
{
    FactoryParams params;
    pDialog->GetParams(params);
    return params;
}

FactoryParams Held(IFactoryMgr* pMgr)
{
    FactoryParams params;
    pMgr->GetFactoryParams(&params);
    return params;
}
}

// The service object with the access file present (the build's resources ship it).
class TestShowFactoryDlg : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void accessFileShipsWithTheResources();
    void returnsAKeptFilledDialogPlacedByItsOwner();
    void aNewShowReplacesTheOldDialog();
    void setFactoryParamsReachesTheDialog();
    void uploadCollectsTheDialogFirst();
    void saveFromTheDialogCollectsIt();
    void reloadRefreshesTheDialogFromTheFile();
    void importAndExportGoThroughTheDialog();
    void aDialogDeletedByTheHostIsForgotten();

private:
    IFactoryMgr* m_pMgr = nullptr;
};

void TestShowFactoryDlg::init()
{
    QFile::remove(DefaultFactoryParamPath());
    m_pMgr = NewInterface();
    QVERIFY(m_pMgr);
    m_pMgr->Init(nullptr, nullptr);
}

void TestShowFactoryDlg::cleanup()
{
    ReleaseInterface(m_pMgr);
    CFactoryMgrApp::GetInstance()->SetDevice(nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void TestShowFactoryDlg::accessFileShipsWithTheResources()
{
    QVERIFY(QFileInfo(CFactoryMgrApp::GetResourceDirectory() + "/Data/FactoryPsw.ini").isFile());
}

void TestShowFactoryDlg::returnsAKeptFilledDialogPlacedByItsOwner()
{
    const FactoryParams record = DistinctRecord();
    m_pMgr->SetFactoryParams(&record);
    ModalAnswerer answerer;
    std::unique_ptr<DlgFactoryMgr> pDialog(m_pMgr->ShowFactoryDlg(&ConvertPattern));
    QVERIFY(pDialog);
    QCOMPARE(answerer.Count(), 0);
    QVERIFY(!pDialog->IsCenterOnShow());
    QVERIFY(pDialog->parent() == nullptr);
    QVERIFY(!pDialog->isVisible());   // the host shows it
    QVERIFY(CFactoryMgrApp::GetInstance()->GetConvertPatternCallback() == &ConvertPattern);
    QVERIFY(FirstFileFieldDifference(Working(pDialog.get()), record).isEmpty());
    // A host without the dialog's declaration takes it as a QDialog: the same object.
    QDialog* pAsDialog = pDialog.get();
    QCOMPARE(FactoryDialog(pDialog.get()), pAsDialog);
    QCOMPARE(FactoryDialog(nullptr), static_cast<QDialog*>(nullptr));
}

void TestShowFactoryDlg::aNewShowReplacesTheOldDialog()
{
    QPointer<DlgFactoryMgr> pFirst = m_pMgr->ShowFactoryDlg(&ConvertPattern);
    QVERIFY(pFirst);
    DlgFactoryMgr* pSecond = m_pMgr->ShowFactoryDlg(nullptr);
    QVERIFY(pSecond && pSecond != pFirst.data());
    QVERIFY(pFirst);   // deleted later, not at once
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(pFirst.isNull());
    QVERIFY(CFactoryMgrApp::GetInstance()->GetConvertPatternCallback() == nullptr);

    // The operations now reach the second dialog.
    const FactoryParams record = DistinctRecord();
    m_pMgr->SetFactoryParams(&record);
    QVERIFY(FirstFileFieldDifference(Working(pSecond), record).isEmpty());
    delete pSecond;
}

void TestShowFactoryDlg::setFactoryParamsReachesTheDialog()
{
    std::unique_ptr<DlgFactoryMgr> pDialog(m_pMgr->ShowFactoryDlg(nullptr));
    FactoryParams record;
    record.machine.laserSpace = 12.5;
    QCOMPARE(m_pMgr->SetFactoryParams(&record), 0);
    QCOMPARE(Working(pDialog.get()).machine.laserSpace, 12.5);
    FactoryParams onDisk;
    QVERIFY(LoadFactoryParams(onDisk, QString()));
    QCOMPARE(onDisk.machine.laserSpace, 12.5);
}

void TestShowFactoryDlg::uploadCollectsTheDialogFirst()
{
    FakeDevice device;
    m_pMgr->Init(&device, nullptr);
    FactoryParams record = DistinctRecord();
    record.motor[2].hardLimitProtect = false;
    m_pMgr->SetFactoryParams(&record);
    std::unique_ptr<DlgFactoryMgr> pDialog(m_pMgr->ShowFactoryDlg(nullptr));
    QCOMPARE(m_pMgr->UploadParamsToDevice(), 0);
    QCOMPARE(device.m_nWrites.load(), 1);
    // The record that reached the device went through the dialog's collect.
    QCOMPARE(device.m_stored.motor[2].hardLimitProtect, true);
    QCOMPARE(Held(m_pMgr).motor[2].hardLimitProtect, true);
    QCOMPARE(device.m_stored.motor[1].speedMax, record.motor[1].speedMax);
}

void TestShowFactoryDlg::saveFromTheDialogCollectsIt()
{
    std::unique_ptr<DlgFactoryMgr> pDialog(m_pMgr->ShowFactoryDlg(nullptr));
    FactoryParams working = DistinctRecord();
    working.motor[0].limitPolar = 1;
    pDialog->SetParams(working);
    pDialog->DataToCtrlSlot(true);   // the controls show what was set
    m_pMgr->SaveToFile(true);
    FactoryParams onDisk;
    QVERIFY(LoadFactoryParams(onDisk, QString()));
    QCOMPARE(onDisk.motor[0].limitPolar, 0);
    QCOMPARE(onDisk.motor[3].accKey, working.motor[3].accKey);
    QCOMPARE(Held(m_pMgr).motor[3].accKey, working.motor[3].accKey);
}

void TestShowFactoryDlg::reloadRefreshesTheDialogFromTheFile()
{
    std::unique_ptr<DlgFactoryMgr> pDialog(m_pMgr->ShowFactoryDlg(nullptr));
    QVERIFY(SaveFactoryParams(DistinctRecord(), QString()));
    m_pMgr->ReloadFromFile();
    QVERIFY(FirstFileFieldDifference(Held(m_pMgr), DistinctRecord()).isEmpty());
    QVERIFY(FirstFileFieldDifference(Working(pDialog.get()), DistinctRecord()).isEmpty());
}

void TestShowFactoryDlg::importAndExportGoThroughTheDialog()
{
    QTemporaryDir dir;
    const QString strPath = dir.path() + "/machine.ini";
    QVERIFY(SaveFactoryParams(DistinctRecord(), strPath));
    std::unique_ptr<DlgFactoryMgr> pDialog(m_pMgr->ShowFactoryDlg(nullptr));
    ModalAnswerer answerer;
    answerer.AnswerFileWith(strPath);
    m_pMgr->ImportParams(nullptr);
    QCOMPARE(answerer.Count(), 1);
    // Import writes the service object's record, the dialog's caller record.
    QVERIFY(FirstFileFieldDifference(Held(m_pMgr), DistinctRecord()).isEmpty());

    // Export writes what the dialog holds: the imported record, field for
    // field, with the two motor fields the dialog forces on the way out, and
    // the laser count the dialog's radio buttons say (one: an imported count
    // takes effect only when the person picks it).
    const QString strExport = dir.path() + "/exported.ini";
    answerer.AnswerFileWith(strExport);
    m_pMgr->ExportParams(nullptr);
    QCOMPARE(answerer.Count(), 2);
    FactoryParams exported;
    QCOMPARE(ReadFactoryParamFile(exported, strExport), ParamFileStatus::Loaded);
    FactoryParams expected = DistinctRecord();
    for (MotorParams& motor : expected.motor) {
        motor.limitPolar = 0;
        motor.hardLimitProtect = true;
    }
    expected.laser.laserCount = 1;
    const QString strDifference = FirstFileFieldDifference(exported, expected);
    QVERIFY2(strDifference.isEmpty(), qPrintable(strDifference));
}

void TestShowFactoryDlg::aDialogDeletedByTheHostIsForgotten()
{
    delete m_pMgr->ShowFactoryDlg(nullptr);
    // Nothing dangles: the next show and the dialog-bound operations are safe.
    m_pMgr->SaveToFile(true);
    QVERIFY(!QFileInfo::exists(DefaultFactoryParamPath()));
    std::unique_ptr<DlgFactoryMgr> pDialog(m_pMgr->ShowFactoryDlg(nullptr));
    QVERIFY(pDialog);
}

FACTORYMGR_TEST_MAIN(TestShowFactoryDlg)
#include "tst_showfactorydlg.moc"
