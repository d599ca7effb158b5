#include "TestMain.h"

#include "CFactoryMgrApp.h"
#include "CFactoryMgrIns.h"
#include "CLogWriter.h"
#include "FactoryParamFile.h"
#include "FakeCard.h"
#include "FakeDevice.h"
#include "FakeNotifier.h"
#include "ModalAnswerer.h"
#include "ParamFileTestData.h"

#include <cstring>
#include <memory>

using namespace ParamFileTestData;

namespace {
QByteArray ReadBytes(const QString& strPath)
{
    QFile file(strPath);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

FactoryParams Get(IFactoryMgr* pMgr)
{
    FactoryParams params;
    pMgr->GetFactoryParams(&params);
    return params;
}

// The service object as a host holds it: through the interface only.
struct Service
{
    Service()
        : pMgr(NewInterface())
    {
    }
    ~Service() { ReleaseInterface(pMgr); }
    IFactoryMgr* operator->() const { return pMgr; }
    IFactoryMgr* pMgr;
};

int ConvertPattern(const char*, const char*, double)
{
    return 0;
}
}

class TestFactoryMgrIns : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void releaseOfNullDoesNothing();
    void laserCountWithoutAFileIsOne();
    void constructionLoadsTheParameterFile();
    void constructionWithAWrongMarkerShowsTheBoxAndKeepsDefaults();
    void setFactoryParamsWithoutADialogStillWritesTheFile();
    void setFactoryParamsRefusesNull();
    void getFactoryParamsCopiesTheWholeRecord();
    void reloadWithoutADialogLeavesTheRecord();
    void saveFromDialogWithoutADialogWritesNothing();
    void saveFromRecordWritesTheRecord();

    void readFromDeviceFillsTheRecord();
    void uploadWithoutADialogSendsTheRecord();
    void deviceOperationsBeforeInitAnswerNoCard();
    void checkWithADeviceThatKeepsEverything();
    void checkWithADeviceThatChangesAValue();
    void settingsReachTheApplicationObject();
    void noExceptionCrossesTheInterface();

private:
    QString m_strDefault;
};

void TestFactoryMgrIns::init()
{
    m_strDefault = DefaultFactoryParamPath();
    QFile::remove(m_strDefault);
}

void TestFactoryMgrIns::cleanup()
{
    CFactoryMgrApp::GetInstance()->SetDevice(nullptr);
    CFactoryMgrApp::GetInstance()->SetNotifier(nullptr);
    QFile::remove(m_strDefault);
}

void TestFactoryMgrIns::releaseOfNullDoesNothing()
{
    ReleaseInterface(nullptr);
    IFactoryMgr* pMgr = NewInterface();
    QVERIFY(pMgr);
    ReleaseInterface(pMgr);   // freed: the leak checker would say otherwise
}

void TestFactoryMgrIns::laserCountWithoutAFileIsOne()
{
    QVERIFY(!QFileInfo::exists(m_strDefault));
    Service service;
    QCOMPARE(service->GetLaserCount(), 1);
    QCOMPARE(Get(service.pMgr).motor[0].pulsePerMm, 7.88627);   // the in-memory defaults
    QVERIFY(!QFileInfo::exists(m_strDefault));
}

void TestFactoryMgrIns::constructionLoadsTheParameterFile()
{
    QVERIFY(SaveFactoryParams(DistinctRecord(), QString()));
    Service service;
    QCOMPARE(service->GetLaserCount(), 2);
    QVERIFY(FirstFileFieldDifference(Get(service.pMgr), DistinctRecord()).isEmpty());
}

void TestFactoryMgrIns::constructionWithAWrongMarkerShowsTheBoxAndKeepsDefaults()
{
    QFile file(m_strDefault);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[FACTORY_PARAM]\nFILE_FLAG=__OTHER__\n[FACTORY_PARAM_LASER]\nLASER_COUNT=2\n");
    file.close();
    ModalAnswerer answerer;
    answerer.AnswerWith("OK");
    Service service;
    QCOMPARE(answerer.Count(), 1);
    QCOMPARE(answerer.Boxes().first().strText, QStringLiteral("File ID is incorrect!"));
    QCOMPARE(service->GetLaserCount(), 1);
}

void TestFactoryMgrIns::setFactoryParamsWithoutADialogStillWritesTheFile()
{
    Service service;
    const FactoryParams record = DistinctRecord();
    QCOMPARE(service->SetFactoryParams(&record), 0);
    QVERIFY(QFileInfo(m_strDefault).isFile());
    FactoryParams onDisk;
    QVERIFY(LoadFactoryParams(onDisk, QString()));
    QVERIFY(FirstFileFieldDifference(onDisk, record).isEmpty());
    const FactoryParams held = Get(service.pMgr);
    QCOMPARE(std::memcmp(&record, &held, sizeof(FactoryParams)), 0);
}

void TestFactoryMgrIns::setFactoryParamsRefusesNull()
{
    Service service;
    QCOMPARE(service->SetFactoryParams(nullptr), int(CFactoryMgrIns::ResultBadArgument));
    QCOMPARE(service->GetFactoryParams(nullptr), int(CFactoryMgrIns::ResultBadArgument));
    QVERIFY(!QFileInfo::exists(m_strDefault));
}

void TestFactoryMgrIns::getFactoryParamsCopiesTheWholeRecord()
{
    Service service;
    FactoryParams in = DistinctRecord();
    in.laser.reserved = 3;
    in.laser.lasers[1].enabled = false;
    service->SetFactoryParams(&in);
    FactoryParams out;
    QCOMPARE(service->GetFactoryParams(&out), 0);
    QCOMPARE(std::memcmp(&in, &out, sizeof(FactoryParams)), 0);
}

void TestFactoryMgrIns::reloadWithoutADialogLeavesTheRecord()
{
    Service service;
    const FactoryParams before = Get(service.pMgr);
    QVERIFY(SaveFactoryParams(DistinctRecord(), QString()));
    service->ReloadFromFile();
    const FactoryParams after = Get(service.pMgr);
    QCOMPARE(std::memcmp(&before, &after, sizeof(FactoryParams)), 0);
}

void TestFactoryMgrIns::saveFromDialogWithoutADialogWritesNothing()
{
    Service service;
    service->SaveToFile(true);
    QVERIFY(!QFileInfo::exists(m_strDefault));

    QVERIFY(SaveFactoryParams(DistinctRecord(), QString()));
    const QByteArray previous = ReadBytes(m_strDefault);
    service->SaveToFile(true);
    QCOMPARE(ReadBytes(m_strDefault), previous);
}

void TestFactoryMgrIns::saveFromRecordWritesTheRecord()
{
    Service service;
    service->SaveToFile(false);
    FactoryParams onDisk = DistinctRecord();
    QVERIFY(LoadFactoryParams(onDisk, QString()));
    QVERIFY(FirstFileFieldDifference(onDisk, FactoryParams()).isEmpty());
}

void TestFactoryMgrIns::readFromDeviceFillsTheRecord()
{
    FakeDevice device;
    device.m_stored = DistinctRecord();
    device.m_nResult = 0;
    FakeNotifier notifier;
    Service service;
    QCOMPARE(service->Init(&device, &notifier), 0);
    QCOMPARE(service->ReadParamsFromDevice(), 0);
    QCOMPARE(device.m_nReads.load(), 1);
    QVERIFY(FirstFileFieldDifference(Get(service.pMgr), DistinctRecord()).isEmpty());

    device.m_nResult = 1005;
    QCOMPARE(service->ReadParamsFromDevice(), 1005);
    QVERIFY(notifier.m_calls.isEmpty());   // the host decides what to show
}

void TestFactoryMgrIns::uploadWithoutADialogSendsTheRecord()
{
    FakeDevice device;
    Service service;
    service->Init(&device, nullptr);
    const FactoryParams record = DistinctRecord();
    service->SetFactoryParams(&record);
    device.m_nResult = 0;
    QCOMPARE(service->UploadParamsToDevice(), 0);
    QCOMPARE(device.m_nWrites.load(), 1);
    QVERIFY(FirstFileFieldDifference(device.m_stored, record).isEmpty());
}

void TestFactoryMgrIns::deviceOperationsBeforeInitAnswerNoCard()
{
    Service service;
    QCOMPARE(service->ReadParamsFromDevice(), 1001);
    QCOMPARE(service->UploadParamsToDevice(), 1001);
}

void TestFactoryMgrIns::checkWithADeviceThatKeepsEverything()
{
    FakeDevice device;
    Service service;
    service->Init(&device, nullptr);
    service->UploadParamsToDevice();
    quint32 nFlags = 0xFFFFFFFF;
    QVERIFY(service->CheckDeviceParams(&nFlags));
    QCOMPARE(nFlags, quint32(0));
    QVERIFY(service->CheckDeviceParams(nullptr));
}

void TestFactoryMgrIns::checkWithADeviceThatChangesAValue()
{
    FakeDevice device;
    Service service;
    service->Init(&device, nullptr);
    service->UploadParamsToDevice();
    device.m_stored.motor[0].speedMax = 600.0;   // the controller limited it
    quint32 nFlags = 0xFFFFFFFF;
    QVERIFY(!service->CheckDeviceParams(&nFlags));
    QCOMPARE(nFlags, quint32(0));   // nothing to put back without a dialog
    QCOMPARE(Get(service.pMgr).motor[0].speedMax, 600.0);

    // Within 0.0001 counts as kept.
    device.m_stored.motor[0].speedMax = 600.00005;
    QVERIFY(service->CheckDeviceParams(&nFlags));
}

void TestFactoryMgrIns::settingsReachTheApplicationObject()
{
    Service service;
    service->SetUnit(2);
    QCOMPARE(CFactoryMgrApp::GetInstance()->GetUnit(), 2);
    service->SetUnit(1);
    QCOMPARE(CFactoryMgrApp::GetInstance()->GetUnit(), 1);
    service->SetFactoryFlag(true);
    QCOMPARE(CFactoryMgrApp::GetInstance()->GetFactoryFlag(), true);
    service->SetFactoryFlag(false);
    QCOMPARE(CFactoryMgrApp::GetInstance()->GetFactoryFlag(), false);
    int nContext = 0;
    service->SetHostContext(&nContext, &nContext);   // kept, never read
    service->ShowFactoryDlg(&ConvertPattern);
    QVERIFY(CFactoryMgrApp::GetInstance()->GetConvertPatternCallback() == &ConvertPattern);
}

void TestFactoryMgrIns::noExceptionCrossesTheInterface()
{
    const QString strLogDir = QDir::tempPath() + "/factorymgr-ins-log-" + QString::number(QCoreApplication::applicationPid());
    CLogWriter::GetInstance()->SetDirectory(strLogDir);
    FakeDevice device;
    device.m_bThrow = true;
    Service service;
    service->Init(&device, nullptr);
    QCOMPARE(service->ReadParamsFromDevice(), int(CFactoryMgrIns::ResultInternalError));
    QCOMPARE(service->UploadParamsToDevice(), int(CFactoryMgrIns::ResultInternalError));
    // The check's result is the comparison of the record before and after its
    // read. A read that fails leaves the record as it was, so the result is
    // true although nothing was read back: that is the interface's rule, not
    // "the controller kept everything". The caller learns of the failed read
    // from its own device (the reference host reports it and trusts no mark).
    quint32 nFlags = 5;
    QCOMPARE(service->CheckDeviceParams(&nFlags), true);
    QCOMPARE(nFlags, quint32(0));

    const QByteArray log = ReadBytes(CLogWriter::GetInstance()->FilePath());
    QVERIFY2(log.contains("IFactoryMgr::ReadParamsFromDevice failed: device read failed"), log.constData());
    QVERIFY(log.contains("IFactoryMgr::UploadParamsToDevice failed: device write failed"));
    CLogWriter::GetInstance()->SetDirectory(QString());
    QDir(strLogDir).removeRecursively();
}

FACTORYMGR_TEST_MAIN(TestFactoryMgrIns)
#include "tst_factorymgrins.moc"
