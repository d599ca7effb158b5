#include "TestMain.h"

#include "CFactoryMgrApp.h"
#include "CFactoryMgrIns.h"
#include "DlgFactoryMgr.h"
#include "FactoryParamFile.h"
#include "ModalAnswerer.h"
#include "ParamFileTestData.h"

using namespace ParamFileTestData;

// Built into a directory of its own whose resources have no access file.
class TestNoAccessFile : public QObject
{
    Q_OBJECT
private slots:
    void resourcesLackTheAccessFile();
    void showsTheBoxOnceAndStillReturnsADialog();
    void theDialogIsNotKept();
};

void TestNoAccessFile::resourcesLackTheAccessFile()
{
    QVERIFY(QFileInfo(CFactoryMgrApp::GetResourceDirectory() + "/Data").isDir());
    QVERIFY(!QFileInfo::exists(CFactoryMgrApp::GetResourceDirectory() + "/Data/FactoryPsw.ini"));
}

void TestNoAccessFile::showsTheBoxOnceAndStillReturnsADialog()
{
    IFactoryMgr* pMgr = NewInterface();
    pMgr->Init(nullptr, nullptr);
    ModalAnswerer answerer;
    answerer.AnswerWith("OK");
    std::unique_ptr<DlgFactoryMgr> pDialog(pMgr->ShowFactoryDlg(nullptr));
    QVERIFY(pDialog);
    QCOMPARE(answerer.Count(), 1);
    const ModalAnswerer::Seen box = answerer.Boxes().first();
    QCOMPARE(box.strClass, QStringLiteral("QMessageBox"));
    QCOMPARE(box.strTitle, QStringLiteral("Tips"));
    QCOMPARE(box.strText, QStringLiteral("Config file damaged or not exist, please contact the supplier!"));
    QCOMPARE(box.buttons, QStringList{"OK"});
    ReleaseInterface(pMgr);
}

void TestNoAccessFile::theDialogIsNotKept()
{
    QFile::remove(DefaultFactoryParamPath());
    IFactoryMgr* pMgr = NewInterface();
    pMgr->Init(nullptr, nullptr);
    ModalAnswerer answerer;
    answerer.AnswerWith("OK");
    std::unique_ptr<DlgFactoryMgr> pDialog(pMgr->ShowFactoryDlg(nullptr));
    QCOMPARE(answerer.Count(), 1);

    // Not filled by SetParams, and the dialog-bound operations pass it by.
    const FactoryParams record = DistinctRecord();
    pMgr->SetFactoryParams(&record);
    FactoryParams working;
    pDialog->GetParams(working);
    QVERIFY(!FirstFileFieldDifference(working, record).isEmpty());
    QFile::remove(DefaultFactoryParamPath());
    pMgr->SaveToFile(true);
    QVERIFY(!QFileInfo::exists(DefaultFactoryParamPath()));
    pMgr->ImportParams(nullptr);
    pMgr->ExportParams(nullptr);
    pMgr->ReloadFromFile();
    QCOMPARE(answerer.Count(), 1);   // no file dialog was opened
    ReleaseInterface(pMgr);
}

FACTORYMGR_TEST_MAIN(TestNoAccessFile)
#include "tst_noaccessfile.moc"
