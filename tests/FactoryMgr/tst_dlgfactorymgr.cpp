#include "TestMain.h"

#include "FactoryParamIo.h"
#include "HostileFiles.h"

#include "CFactoryMgrApp.h"
#include "CLogWriter.h"
#include "CTranslator.h"
#include "CUiPermissionsManager.h"
#include "DlgFactoryMgr.h"
#include "FactoryParamFile.h"
#include "FakeCard.h"
#include "FakeDevice.h"
#include "FileSizeLimit.h"
#include "ModalAnswerer.h"
#include "ParamFileTestData.h"
#include "ThreadDialogRun.h"

#include <QFileInfo>
#include <QDialog>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTableWidget>

#include <cstring>
#include <sys/stat.h>
#include <limits>

using namespace ParamFileTestData;

namespace {
template <typename T>
T* Child(QWidget* pDialog, const char* szName)
{
    return pDialog->findChild<T*>(QString::fromLatin1(szName));
}

QStringList Headers(QTableWidget* pTable)
{
    QStringList headers;
    for (int c = 0; c < pTable->columnCount(); ++c)
        headers << (pTable->horizontalHeaderItem(c) ? pTable->horizontalHeaderItem(c)->text() : QString());
    return headers;
}

QStringList RowLabels(QTableWidget* pTable)
{
    QStringList labels;
    for (int r = 0; r < pTable->rowCount(); ++r)
        labels << (pTable->item(r, 0) ? pTable->item(r, 0)->text() : QString());
    return labels;
}

QByteArray ReadBytes(const QString& strPath)
{
    QFile file(strPath);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A record that differs from the forced values on every axis. One laser: with
// no card connected the Laser tab keeps its single-laser choice, and a collect
// hands on the count the tab shows.
FactoryParams Caller()
{
    FactoryParams record = DistinctRecord();
    for (MotorParams& motor : record.motor) {
        motor.hardLimitProtect = false;
        motor.limitPolar = 1;
    }
    record.laser.laserCount = 1;
    return record;
}

const QStringList kMotorRows{"Direction of Polarity", "Control Mode", "PWM Edge Valid", "Keypad Direction",
                             "Initialization", "Step(p/um)", "Move Distance(mm)", "Zero Offset(mm)",
                             "Motor Speed Limit", "Ini Speed(mm/s)", "Max Speed(mm/s)", "Max Acc(mm/s²)",
                             "Emergency stop Acc(mm/s²)", "Button Acc(mm/s²)", "Keypad Speed(mm/s)"};
const QStringList kSpeedRows{"Idle speed(mm/s)", "Corner speed(mm/s)", "Idle Acc(mm/s²)", "PMax Acc(mm/s²)",
                             "Working Acc(mm/s²)", "Engraving X-axis Ini speed(mm/s)",
                             "Engraving Y-axis Ini speed(mm/s)", "Engraving DPI speed(mm/s)",
                             "Engraving X-axis Acc(mm/s²)", "Engraving Y-axis Acc(mm/s²)", "Reset speed(mm/s)"};
const QStringList kMachineRows{"Moving parts", "Dual head Distance", "Machine zero", "Lid protection", "Blowing"};
const QStringList kSystemRows{"Firmware Version", "Panel Version", "Total Work Time", "Total job processing time",
                              "Total X-axis Movement", "Total Y-axis Movement"};
const QStringList kThemeRows{"Start", "Navigation", "Gallery", "Device", "Community", "Knowledge Base",
                             "Official Support", "Navigation", "Online Gallery", "Advanced Tutorial"};
}

class TestDlgFactoryMgr : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void formHasEveryWidget_data();
    void formHasEveryWidget();
    void formTablesAndProperties();
    void bottomButtonsScrollWithTheTabs();
    void formTextsInEnglish();
    void formTextsAfterALanguageChange();
    void motorTableIsFormatted();
    void opensOnTheMotorTab();

    void recordsAtConstruction();
    void collectForcesHardLimitProtection();
    void exportStraightAfterConstruction();
    void exportWithTwoLasersOnACardThatHasThem();
    void exportGivesANameWithoutSuffixTheIniItsFilterNames();
    void importOverwritesTheCallersRecordAtOnce();
    void cancelledFileDialogsChangeNothing();
    void anExportThatCannotBeWrittenSaysWhy();
    void anImportOfWhatIsNoFileSaysWhy();
    void anImportHoldingANestedEncodedValueTakesItAsText();
    void deletedWhileARefusedImportIsTold();
    void applyXyStepRatio();
    void aBadRatioLeavesBothSteps_data();
    void aBadRatioLeavesBothSteps();
    void buttonsEmitTheirSignals();
    void escapeClosesTheDialogAndItsThirdAncestor();
    void escapeWithFewerAncestors();
    void escapeWhoseHostDeletesTheDialog();
    void themeTabFillsOnlyOnItsFirstShowing();
    void deviceTasksGoThroughTheApplicationObject();

private:
    FactoryParams m_caller;
    QString m_strDir;
    QScopedPointer<QTemporaryDir> m_pDir;
};

void TestDlgFactoryMgr::init()
{
    m_caller = Caller();
    m_pDir.reset(new QTemporaryDir);
    m_strDir = m_pDir->path();
    CLogWriter::GetInstance()->SetDirectory(m_strDir + "/log");
}

void TestDlgFactoryMgr::cleanup()
{
    CTranslator::GetInstance()->SetLanguage("en");
    CFactoryMgrApp::GetInstance()->SetDevice(nullptr);
    CLogWriter::GetInstance()->SetDirectory(QString());
}

void TestDlgFactoryMgr::formHasEveryWidget_data()
{
    QTest::addColumn<QString>("strName");
    QTest::addColumn<QString>("strClass");
    const QList<QPair<const char*, const char*>> widgets{
        {"scrollArea", "QScrollArea"}, {"scrollAreaWidgetContents", "QWidget"}, {"widget", "QWidget"},
        {"widget_2", "QWidget"}, {"tabWidget", "QTabWidget"}, {"tab", "QWidget"}, {"tableWidget_motor", "QTableWidget"},
        {"widget1", "QWidget"}, {"widget_laserConfiguration", "QWidget"}, {"label", "QLabel"},
        {"radioButton_laserSingle", "QRadioButton"}, {"radioButton_laserDouble", "QRadioButton"},
        {"widget_tubeconfiguration", "QWidget"}, {"label_2", "QLabel"}, {"radioButton_tubeSingle", "QRadioButton"},
        {"radioButton_tubeDouble", "QRadioButton"}, {"widget_7", "QWidget"}, {"tableWidget_laser", "QTableWidget"},
        {"tab_5", "QWidget"}, {"widget_9", "QWidget"}, {"tableWidget_speed", "QTableWidget"}, {"widget2", "QWidget"},
        {"widget_8", "QWidget"}, {"tableWidget_machine", "QTableWidget"}, {"tab_2", "QWidget"}, {"widget_10", "QWidget"},
        {"tableWidget_system", "QTableWidget"}, {"widget_11", "QWidget"},
        {"pushButton_mainboardUpgrade", "QPushButton"}, {"pushButton_panelUpgrade", "QPushButton"},
        {"pushButton_clear", "QPushButton"}, {"tab_theme", "QWidget"}, {"label_DlgFactoryMgr1", "QLabel"},
        {"tableWidget_customHomepage", "QTableWidget"}, {"widget_bottom", "QWidget"},
        {"pushButton_correctXyStep", "QPushButton"}, {"pushButton_read", "QPushButton"},
        {"pushButton_upload", "QPushButton"}};
    for (const auto& w : widgets)
        QTest::newRow(w.first) << QString::fromLatin1(w.first) << QString::fromLatin1(w.second);
    const QList<QPair<const char*, const char*>> layouts{
        {"verticalLayout_7", "QVBoxLayout"}, {"verticalLayout_3", "QVBoxLayout"}, {"verticalLayout", "QVBoxLayout"},
        {"verticalLayout_6", "QVBoxLayout"}, {"verticalLayout_4", "QVBoxLayout"}, {"verticalLayout_2", "QVBoxLayout"},
        {"horizontalLayout", "QHBoxLayout"}, {"horizontalLayout_2", "QHBoxLayout"}, {"verticalLayout_5", "QVBoxLayout"},
        {"verticalLayout_8", "QVBoxLayout"}, {"verticalLayout_10", "QVBoxLayout"}, {"verticalLayout_9", "QVBoxLayout"},
        {"gridLayout", "QGridLayout"}, {"verticalLayout_12", "QVBoxLayout"}, {"verticalLayout_11", "QVBoxLayout"},
        {"horizontalLayout_4", "QHBoxLayout"}, {"verticalLayout_14", "QVBoxLayout"},
        {"horizontalLayout_3", "QHBoxLayout"}};
    for (const auto& l : layouts)
        QTest::newRow(l.first) << QString::fromLatin1(l.first) << QString::fromLatin1(l.second);
}

void TestDlgFactoryMgr::formHasEveryWidget()
{
    QFETCH(QString, strName);
    QFETCH(QString, strClass);
    DlgFactoryMgr dialog(&m_caller);
    QObject* pObject = dialog.findChild<QObject*>(strName);
    QVERIFY2(pObject, qPrintable(strName));
    QCOMPARE(QString::fromLatin1(pObject->metaObject()->className()), strClass);
}

void TestDlgFactoryMgr::bottomButtonsScrollWithTheTabs()
{
    DlgFactoryMgr dialog(&m_caller);
    auto* pContents = dialog.findChild<QWidget*>("scrollAreaWidgetContents");
    auto* pBottom = dialog.findChild<QWidget*>("widget_bottom");
    QVERIFY(pContents && pBottom);
    // Inside the scroll area's contents, after "widget", in the same layout.
    QCOMPARE(pBottom->parentWidget(), pContents);
    QLayout* pLayout = pContents->layout();
    QCOMPARE(pLayout->objectName(), QStringLiteral("verticalLayout_3"));
    QCOMPARE(pLayout->count(), 2);
    QCOMPARE(pLayout->itemAt(0)->widget(), dialog.findChild<QWidget*>("widget"));
    QCOMPARE(pLayout->itemAt(1)->widget(), pBottom);
    QCOMPARE(dialog.layout()->count(), 1);   // verticalLayout_7 holds the scroll area alone
}

void TestDlgFactoryMgr::formTablesAndProperties()
{
    DlgFactoryMgr dialog(&m_caller);
    QCOMPARE(dialog.objectName(), QStringLiteral("DlgFactoryMgr"));
    QCOMPARE(dialog.size(), QSize(1000, 650));
    QCOMPARE(dialog.maximumSize(), QSize(16777215, 16777215));
    QVERIFY(Child<QScrollArea>(&dialog, "scrollArea")->widgetResizable());

    auto* pTabs = Child<QTabWidget>(&dialog, "tabWidget");
    QCOMPARE(pTabs->count(), 6);
    QCOMPARE(pTabs->focusPolicy(), Qt::NoFocus);
    QCOMPARE(pTabs->tabShape(), QTabWidget::Rounded);
    QVERIFY(!pTabs->documentMode() && !pTabs->tabsClosable() && !pTabs->isMovable() && !pTabs->tabBarAutoHide());
    const QStringList pages{"tab", "widget1", "tab_5", "widget2", "tab_2", "tab_theme"};
    for (int i = 0; i < pages.size(); ++i)
        QCOMPARE(pTabs->widget(i)->objectName(), pages[i]);

    // The laser table is rebuilt at construction: the label column and one laser.
    const QList<std::tuple<const char*, int, int>> tables{{"tableWidget_motor", 5, 15}, {"tableWidget_laser", 2, 10},
                                                           {"tableWidget_speed", 2, 11}, {"tableWidget_machine", 2, 5},
                                                           {"tableWidget_system", 2, 6},
                                                           {"tableWidget_customHomepage", 2, 10}};
    for (const auto& [szName, nColumns, nRows] : tables) {
        auto* pTable = Child<QTableWidget>(&dialog, szName);
        QCOMPARE(pTable->columnCount(), nColumns);
        QCOMPARE(pTable->rowCount(), nRows);
        QCOMPARE(pTable->focusPolicy(), Qt::NoFocus);
        QVERIFY(pTable->verticalHeader()->cascadingSectionResizes());
    }
    auto* pMotor = Child<QTableWidget>(&dialog, "tableWidget_motor");
    QCOMPARE(pMotor->selectionMode(), QAbstractItemView::SingleSelection);
    QVERIFY(!pMotor->alternatingRowColors());
    QVERIFY(!pMotor->horizontalHeader()->stretchLastSection());
    QVERIFY(pMotor->verticalHeader()->highlightSections());
    QCOMPARE(pMotor->verticalHeader()->minimumSectionSize(), 25);
    QCOMPARE(pMotor->verticalHeader()->defaultSectionSize(), 30);
    QCOMPARE(pMotor->horizontalHeader()->defaultSectionSize(), 130);
    QVERIFY(!pMotor->horizontalHeader()->isSortIndicatorShown());
    QVERIFY(!pMotor->styleSheet().isEmpty());
    QCOMPARE(Child<QTableWidget>(&dialog, "tableWidget_speed")->horizontalHeader()->defaultSectionSize(), 205);
    QCOMPARE(Child<QTableWidget>(&dialog, "tableWidget_machine")->horizontalHeader()->defaultSectionSize(), 130);
    auto* pSystem = Child<QTableWidget>(&dialog, "tableWidget_system");
    QCOMPARE(pSystem->horizontalHeader()->defaultSectionSize(), 165);
    QVERIFY(pSystem->showGrid());
    QCOMPARE(pSystem->gridStyle(), Qt::SolidLine);
    auto* pTheme = Child<QTableWidget>(&dialog, "tableWidget_customHomepage");
    QVERIFY(pTheme->showGrid());
    QVERIFY(!pTheme->verticalHeader()->isVisible() || pTheme->verticalHeader()->isHidden());

    QVERIFY(Child<QRadioButton>(&dialog, "radioButton_laserSingle")->isChecked());
    QVERIFY(!Child<QRadioButton>(&dialog, "radioButton_laserDouble")->isChecked());
    QVERIFY(Child<QRadioButton>(&dialog, "radioButton_tubeSingle")->isChecked());
    QVERIFY(Child<QRadioButton>(&dialog, "radioButton_tubeDouble")->autoExclusive());
}

void TestDlgFactoryMgr::formTextsInEnglish()
{
    DlgFactoryMgr dialog(&m_caller);
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Machine Settings"));
    auto* pTabs = Child<QTabWidget>(&dialog, "tabWidget");
    QStringList titles;
    for (int i = 0; i < pTabs->count(); ++i)
        titles << pTabs->tabText(i);
    QCOMPARE(titles, QStringList({"Motor", "Laser", "Processing", "Machine", "System", "Theme"}));
    QCOMPARE(Headers(Child<QTableWidget>(&dialog, "tableWidget_motor")), QStringList({"Property", "X", "Y", "Z", "U"}));
    QCOMPARE(RowLabels(Child<QTableWidget>(&dialog, "tableWidget_motor")), kMotorRows);
    QCOMPARE(Headers(Child<QTableWidget>(&dialog, "tableWidget_laser")), QStringList({"Property", "Laser 1"}));
    QCOMPARE(Headers(Child<QTableWidget>(&dialog, "tableWidget_speed")), QStringList({"Property", "Value"}));
    QCOMPARE(RowLabels(Child<QTableWidget>(&dialog, "tableWidget_speed")), kSpeedRows);
    QCOMPARE(Headers(Child<QTableWidget>(&dialog, "tableWidget_machine")), QStringList({"Property", "Value"}));
    QCOMPARE(RowLabels(Child<QTableWidget>(&dialog, "tableWidget_machine")), kMachineRows);
    QCOMPARE(Headers(Child<QTableWidget>(&dialog, "tableWidget_system")), QStringList({"Property", "Value"}));
    QCOMPARE(RowLabels(Child<QTableWidget>(&dialog, "tableWidget_system")), kSystemRows);
    QCOMPARE(Headers(Child<QTableWidget>(&dialog, "tableWidget_customHomepage")), QStringList({"Title Bar", "Website Link"}));
    QCOMPARE(RowLabels(Child<QTableWidget>(&dialog, "tableWidget_customHomepage")), kThemeRows);
    QCOMPARE(Child<QLabel>(&dialog, "label")->text(), QStringLiteral("Laser tube configuration"));
    QCOMPARE(Child<QLabel>(&dialog, "label_2")->text(), QStringLiteral("Laser tube configuration"));
    QCOMPARE(Child<QRadioButton>(&dialog, "radioButton_laserSingle")->text(), QStringLiteral("Single laser"));
    QCOMPARE(Child<QRadioButton>(&dialog, "radioButton_laserDouble")->text(), QStringLiteral("Multi-laser"));
    QCOMPARE(Child<QRadioButton>(&dialog, "radioButton_tubeSingle")->text(), QStringLiteral("Single tube"));
    QCOMPARE(Child<QRadioButton>(&dialog, "radioButton_tubeDouble")->text(), QStringLiteral("Multi-tube"));
    QCOMPARE(Child<QLabel>(&dialog, "label_DlgFactoryMgr1")->text(), QStringLiteral("Customize Homepage"));
    QCOMPARE(Child<QPushButton>(&dialog, "pushButton_mainboardUpgrade")->text(), QStringLiteral("MainboardUpgrade"));
    QCOMPARE(Child<QPushButton>(&dialog, "pushButton_panelUpgrade")->text(), QStringLiteral("PanelUpgrade"));
    QCOMPARE(Child<QPushButton>(&dialog, "pushButton_clear")->text(), QStringLiteral("Clear"));
    QCOMPARE(Child<QPushButton>(&dialog, "pushButton_correctXyStep")->text(), QStringLiteral("Calibrate XY step"));
    QCOMPARE(Child<QPushButton>(&dialog, "pushButton_read")->text(), QStringLiteral("Read"));
    QCOMPARE(Child<QPushButton>(&dialog, "pushButton_upload")->text(), QStringLiteral("Upload"));
}

void TestDlgFactoryMgr::formTextsAfterALanguageChange()
{
    DlgFactoryMgr dialog(&m_caller);
    QVERIFY(CTranslator::GetInstance()->SetLanguage("zh_CN"));
    QTRY_COMPARE(dialog.windowTitle(), QStringLiteral("机器设置"));
    const auto zh = [](const QStringList& english) {
        QStringList translated;
        for (const QString& text : english) {
            translated << CTranslator::GetInstance()->GetWording(text);
            // Every text of the form has an entry in the shipped table.
            if (text != "X" && text != "Y" && text != "Z" && text != "U" && translated.last() == text)
                qWarning("no Chinese wording for \"%s\"", qPrintable(text));
        }
        return translated;
    };
    QCOMPARE(Child<QTabWidget>(&dialog, "tabWidget")->tabText(0), QStringLiteral("电机"));
    QCOMPARE(RowLabels(Child<QTableWidget>(&dialog, "tableWidget_motor")), zh(kMotorRows));
    QCOMPARE(RowLabels(Child<QTableWidget>(&dialog, "tableWidget_speed")), zh(kSpeedRows));
    QCOMPARE(RowLabels(Child<QTableWidget>(&dialog, "tableWidget_machine")), zh(kMachineRows));
    QCOMPARE(RowLabels(Child<QTableWidget>(&dialog, "tableWidget_system")), zh(kSystemRows));
    QCOMPARE(RowLabels(Child<QTableWidget>(&dialog, "tableWidget_customHomepage")), zh(kThemeRows));
    QCOMPARE(Headers(Child<QTableWidget>(&dialog, "tableWidget_speed")), QStringList({"属性", "值"}));
    QCOMPARE(Child<QPushButton>(&dialog, "pushButton_upload")->text(), QStringLiteral("上传"));
    QCOMPARE(Child<QRadioButton>(&dialog, "radioButton_tubeDouble")->text(), QStringLiteral("多管"));
    for (const QString& text : kMotorRows + kSpeedRows + kMachineRows + kSystemRows + kThemeRows)
        QVERIFY2(CTranslator::GetInstance()->GetWording(text) != text, qPrintable(text));

    QVERIFY(CTranslator::GetInstance()->SetLanguage("en"));
    QTRY_COMPARE(dialog.windowTitle(), QStringLiteral("Machine Settings"));
    QCOMPARE(RowLabels(Child<QTableWidget>(&dialog, "tableWidget_motor")), kMotorRows);
}

void TestDlgFactoryMgr::motorTableIsFormatted()
{
    DlgFactoryMgr dialog(&m_caller);
    auto* pMotor = Child<QTableWidget>(&dialog, "tableWidget_motor");
    QVERIFY(!pMotor->horizontalHeader()->highlightSections());
    QCOMPARE(pMotor->horizontalHeader()->sectionResizeMode(0), QHeaderView::Fixed);
    for (int c = 1; c < 5; ++c)
        QCOMPARE(pMotor->horizontalHeader()->sectionResizeMode(c), QHeaderView::Stretch);
    QCOMPARE(pMotor->columnWidth(0), 255);   // a 96 DPI screen: scale 1
    for (int r = 0; r < pMotor->rowCount(); ++r) {
        QCOMPARE(pMotor->rowHeight(r), 35);
        const QTableWidgetItem* pLabel = pMotor->item(r, 0);
        QVERIFY(!(pLabel->flags() & Qt::ItemIsEditable));
        QVERIFY(!(pLabel->flags() & Qt::ItemIsSelectable));
        QCOMPARE(pLabel->background().color(), QColor(204, 204, 204, 255));
    }
}

void TestDlgFactoryMgr::opensOnTheMotorTab()
{
    DlgFactoryMgr dialog(&m_caller);
    QCOMPARE(Child<QTabWidget>(&dialog, "tabWidget")->currentIndex(), 0);
}

void TestDlgFactoryMgr::recordsAtConstruction()
{
    DlgFactoryMgr dialog(&m_caller);
    FactoryParams working;
    FactoryParams snapshot;
    QCOMPARE(dialog.GetParams(working), 0);
    QCOMPARE(dialog.GetSnapshotParams(snapshot), 0);
    QCOMPARE(std::memcmp(&working, &m_caller, sizeof(FactoryParams)), 0);
    QCOMPARE(std::memcmp(&snapshot, &m_caller, sizeof(FactoryParams)), 0);

    FactoryParams other;
    QCOMPARE(dialog.SetParams(other), 0);
    dialog.GetParams(working);
    dialog.GetSnapshotParams(snapshot);
    QCOMPARE(std::memcmp(&working, &other, sizeof(FactoryParams)), 0);
    QCOMPARE(std::memcmp(&snapshot, &m_caller, sizeof(FactoryParams)), 0);
    // The caller's record is not written by either.
    const FactoryParams expected = Caller();
    QVERIFY(FirstFileFieldDifference(m_caller, expected).isEmpty());
}

void TestDlgFactoryMgr::collectForcesHardLimitProtection()
{
    DlgFactoryMgr dialog(&m_caller);
    dialog.DataToCtrlSlot(false);
    FactoryParams working;
    dialog.GetParams(working);
    for (const MotorParams& motor : working.motor) {
        QCOMPARE(motor.hardLimitProtect, true);
        QCOMPARE(motor.limitPolar, 0);
    }
    FactoryParams expected = m_caller;
    for (MotorParams& motor : expected.motor) {
        motor.hardLimitProtect = true;
        motor.limitPolar = 0;
    }
    QVERIFY(FirstFileFieldDifference(working, expected).isEmpty());
}

void TestDlgFactoryMgr::exportStraightAfterConstruction()
{
    DlgFactoryMgr dialog(&m_caller);
    const QString strPath = m_strDir + "/exported.ini";
    ModalAnswerer answerer;
    answerer.AnswerFileWith(strPath);
    dialog.ExportParams();

    QCOMPARE(answerer.Count(), 1);
    QCOMPARE(answerer.Boxes().first().strClass, QStringLiteral("QFileDialog"));
    QCOMPARE(answerer.Boxes().first().strTitle, QStringLiteral("Save As"));
    QVERIFY2(answerer.Boxes().first().strText.contains("files (*.ini)"), qPrintable(answerer.Boxes().first().strText));
    FactoryParams exported;
    QVERIFY(LoadFactoryParams(exported, strPath));
    FactoryParams expected = Caller();
    for (MotorParams& motor : expected.motor) {
        motor.hardLimitProtect = true;
        motor.limitPolar = 0;
    }
    const QString strDiff = FirstFileFieldDifference(exported, expected);
    QVERIFY2(strDiff.isEmpty(), qPrintable(strDiff));
    // The caller's record is not touched by an export.
    QVERIFY(FirstFileFieldDifference(m_caller, Caller()).isEmpty());
    QVERIFY(ReadBytes(CLogWriter::GetInstance()->FilePath()).contains("[0] pushButton_export was clicked."));
}

void TestDlgFactoryMgr::exportGivesANameWithoutSuffixTheIniItsFilterNames()
{
    DlgFactoryMgr dialog(&m_caller);
    ModalAnswerer answerer;
    answerer.AnswerFileWith(m_strDir + "/export1");
    dialog.ExportParams();
    QCOMPARE(answerer.Count(), 1);
    QVERIFY(!QFileInfo::exists(m_strDir + "/export1"));
    FactoryParams exported;
    QVERIFY(LoadFactoryParams(exported, m_strDir + "/export1.ini"));
    QCOMPARE(exported.motor[1].speedMax, m_caller.motor[1].speedMax);

    // A name with a suffix of its own keeps it.
    answerer.AnswerFileWith(m_strDir + "/export2.txt");
    dialog.ExportParams();
    QVERIFY(LoadFactoryParams(exported, m_strDir + "/export2.txt"));
    QVERIFY(!QFileInfo::exists(m_strDir + "/export2.txt.ini"));
}

void TestDlgFactoryMgr::exportWithTwoLasersOnACardThatHasThem()
{
    FakeCard card;
    FakeDevice device;
    device.m_pCard = &card;
    CFactoryMgrApp::GetInstance()->SetDevice(&device);
    m_caller.laser.laserCount = 2;
    DlgFactoryMgr dialog(&m_caller);
    const QString strPath = m_strDir + "/two.ini";
    ModalAnswerer answerer;
    answerer.AnswerFileWith(strPath);
    dialog.ExportParams();
    FactoryParams exported;
    QVERIFY(LoadFactoryParams(exported, strPath));
    QCOMPARE(exported.laser.laserCount, 2);
    QCOMPARE(exported.laser.lasers[1].powerMax, m_caller.laser.lasers[1].powerMax);
}

void TestDlgFactoryMgr::importOverwritesTheCallersRecordAtOnce()
{
    const QString strPath = m_strDir + "/to-import.ini";
    FactoryParams fileRecord;
    fileRecord.motor[3].speedMax = 444.5;
    fileRecord.laser.laserCount = 2;
    QVERIFY(SaveFactoryParams(fileRecord, strPath));

    DlgFactoryMgr dialog(&m_caller);
    dialog.show();
    QSignalSpy accepted(&dialog, &QDialog::accepted);
    QSignalSpy finished(&dialog, &QDialog::finished);
    ModalAnswerer answerer;
    answerer.AnswerFileWith(strPath);
    dialog.ImportParams();

    QCOMPARE(answerer.Count(), 1);
    QCOMPARE(answerer.Boxes().first().strTitle, QStringLiteral("Open"));
    QCOMPARE(m_caller.motor[3].speedMax, 444.5);
    QCOMPARE(m_caller.laser.laserCount, 2);
    QVERIFY(FirstFileFieldDifference(m_caller, fileRecord).isEmpty());
    FactoryParams working;
    dialog.GetParams(working);
    QCOMPARE(std::memcmp(&working, &m_caller, sizeof(FactoryParams)), 0);
    QVERIFY(dialog.isVisible());
    QCOMPARE(accepted.count(), 0);
    QCOMPARE(finished.count(), 0);
    QVERIFY(ReadBytes(CLogWriter::GetInstance()->FilePath()).contains("[0] pushButton_import was clicked."));
}

void TestDlgFactoryMgr::anExportThatCannotBeWrittenSaysWhy()
{
    DlgFactoryMgr dialog(&m_caller);
    const QString strPath = m_strDir + "/exported.ini";
    ModalAnswerer answerer;
    answerer.AnswerFileWith(strPath);
    answerer.AnswerWith("OK");
    {
        // A parameter file is some 4 KB: it cannot be written in full.
        FileSizeLimit limit(2048);
        dialog.ExportParams();
    }
    QCOMPARE(answerer.Count(), 2);
    const ModalAnswerer::Seen box = answerer.Boxes()[1];
    QCOMPARE(box.strTitle, QStringLiteral("Tips"));
    QCOMPARE(box.buttons, QStringList{"OK"});
    QCOMPARE(box.strText,
             QStringLiteral("Export failed: %1 could not be written (read back, the new file does not hold the values "
                            "written).")
                 .arg(strPath));
    QVERIFY(!QFileInfo::exists(strPath));
    const QByteArray log = ReadBytes(CLogWriter::GetInstance()->FilePath());
    QVERIFY2(log.contains("The parameters were not saved to " + QFile::encodeName(strPath)), log.constData());
    // Nothing is left behind in the folder.
    QCOMPARE(QDir(m_strDir).entryList(QDir::Files), QStringList());
}

void TestDlgFactoryMgr::anImportHoldingANestedEncodedValueTakesItAsText()
{
    // Decoded, the value would take the host down with the edits in the
    // dialog; read as the text it is, it counts as any text does.
    FactoryParams fileRecord;
    fileRecord.motor[3].speedMax = 444.5;
    const QString strPath = m_strDir + "/nested.ini";
    const QString strJunk = m_strDir + "/junk.ini";
    QVERIFY(SaveFactoryParams(fileRecord, strPath));
    QByteArray bytes = ReadBytes(strPath);
    QVERIFY(bytes.contains("\nMOTOR_SPEED_MAX_1=1000\n"));
    QByteArray junk = bytes;
    bytes.replace("\nMOTOR_SPEED_MAX_1=1000\n", "\nMOTOR_SPEED_MAX_1=" + HostileFiles::NestedVariant() + "\n");
    junk.replace("\nMOTOR_SPEED_MAX_1=1000\n", "\nMOTOR_SPEED_MAX_1=junk\n");
    for (const auto& [strFile, content] : {std::pair{strPath, bytes}, std::pair{strJunk, junk}}) {
        QFile file(strFile);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QVERIFY(file.write(content) == content.size());
    }
    FactoryParams asJunk;
    QCOMPARE(ReadFactoryParamFile(asJunk, strJunk), ParamFileStatus::Loaded);

    DlgFactoryMgr dialog(&m_caller);
    dialog.show();
    ModalAnswerer answerer;
    answerer.AnswerFileWith(strPath);
    dialog.ImportParams();
    QCOMPARE(answerer.Count(), 1);
    QCOMPARE(m_caller.motor[3].speedMax, 444.5);
    QCOMPARE(m_caller.motor[0].speedMax, asJunk.motor[0].speedMax);
    QCOMPARE(ReadBytes(strPath), bytes);
}

void TestDlgFactoryMgr::anImportOfWhatIsNoFileSaysWhy()
{
    const QString strPath = m_strDir + "/pipe.ini";
    QCOMPARE(mkfifo(QFile::encodeName(strPath).constData(), 0600), 0);
    DlgFactoryMgr dialog(&m_caller);
    const FactoryParams before = m_caller;
    ModalAnswerer answerer;
    answerer.AnswerFileWith(strPath);
    answerer.AnswerWith("OK");
    dialog.ImportParams();
    QCOMPARE(answerer.Count(), 2);
    QCOMPARE(answerer.Boxes()[1].strTitle, QStringLiteral("Tips"));
    QCOMPARE(answerer.Boxes()[1].strText,
             QStringLiteral("Import failed: %1 cannot be read (it is not a file).").arg(strPath));
    QCOMPARE(std::memcmp(&m_caller, &before, sizeof(FactoryParams)), 0);
    QVERIFY(ReadBytes(CLogWriter::GetInstance()->FilePath()).contains("Import of " + QFile::encodeName(strPath)));
}

void TestDlgFactoryMgr::cancelledFileDialogsChangeNothing()
{
    DlgFactoryMgr dialog(&m_caller);
    ModalAnswerer answerer;
    answerer.CancelFileDialogs();
    dialog.ImportParams();
    dialog.ExportParams();
    QCOMPARE(answerer.Count(), 2);
    QVERIFY(FirstFileFieldDifference(m_caller, Caller()).isEmpty());
    FactoryParams working;
    dialog.GetParams(working);
    QCOMPARE(std::memcmp(&working, &m_caller, sizeof(FactoryParams)), 0);   // not even the forced fields
    QCOMPARE(QDir(m_strDir).entryList(QDir::Files), QStringList());
}

void TestDlgFactoryMgr::deletedWhileARefusedImportIsTold()
{
    const QString strPath = m_strDir + "/foreign.ini";
    QFile file(strPath);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[FACTORY_PARAM]\nFILE_FLAG=__OTHER__\n[FACTORY_PARAM_LASER]\nLASER_COUNT=2\n");
    file.close();
    auto* pDialog = new DlgFactoryMgr(&m_caller);
    pDialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(pDialog));
    const QPointer<DlgFactoryMgr> pAlive(pDialog);

    // The host answers the file dialog, and deletes the dialog while the box
    // that refuses the file is open.
    QStringList told;
    QTimer host;
    connect(&host, &QTimer::timeout, [&] {
        QWidget* pModal = QApplication::activeModalWidget();
        if (auto* pFiles = qobject_cast<QFileDialog*>(pModal)) {
            ModalAnswerer::AnswerFileDialog(pFiles, strPath);
        } else if (auto* pBox = qobject_cast<QMessageBox*>(pModal); pBox && pBox->isVisible() && pAlive) {
            told << pBox->text();
            const QPointer<QMessageBox> pStill(pBox);
            delete pAlive.data();
            if (pStill)
                pStill->reject();
        }
    });
    host.start(5);
    pDialog->ImportParams();

    QVERIFY(pAlive.isNull());
    QCOMPARE(told, QStringList{"File ID is incorrect!"});
    QVERIFY(FirstFileFieldDifference(m_caller, Caller()).isEmpty());   // the caller's record untouched
}

void TestDlgFactoryMgr::applyXyStepRatio()
{
    DlgFactoryMgr dialog(&m_caller);
    FactoryParams before;
    dialog.GetParams(before);
    // Every table is refilled: its cell editors are new ones.
    QList<QPointer<QWidget>> oldCells;
    for (const char* szTable : {"tableWidget_motor", "tableWidget_laser", "tableWidget_machine", "tableWidget_speed"})
        oldCells << Child<QTableWidget>(&dialog, szTable)->cellWidget(1, 1);
    dialog.ApplyXyStepRatio(1.0, 1.0);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    for (const QPointer<QWidget>& pCell : oldCells)
        QVERIFY(pCell.isNull());
    FactoryParams after;
    dialog.GetParams(after);
    QCOMPARE(std::memcmp(&before, &after, sizeof(FactoryParams)), 0);

    dialog.ApplyXyStepRatio(1.5, 0.25);
    dialog.GetParams(after);
    QCOMPARE(after.motor[0].pulsePerMm, before.motor[0].pulsePerMm * 1.5);
    QCOMPARE(after.motor[1].pulsePerMm, before.motor[1].pulsePerMm * 0.25);
    QCOMPARE(after.motor[2].pulsePerMm, before.motor[2].pulsePerMm);
    // The display blocks follow, so a collect keeps the new steps.
    dialog.DataToCtrlSlot(false);
    dialog.GetParams(after);
    QCOMPARE(after.motor[0].pulsePerMm, before.motor[0].pulsePerMm * 1.5);
    QVERIFY(!ReadBytes(CLogWriter::GetInstance()->FilePath()).contains("XY step calibration not applied"));
}

void TestDlgFactoryMgr::aBadRatioLeavesBothSteps_data()
{
    QTest::addColumn<double>("dRatioW");
    QTest::addColumn<double>("dRatioH");
    const double dNan = std::numeric_limits<double>::quiet_NaN();
    const double dInf = std::numeric_limits<double>::infinity();
    QTest::newRow("X nan") << dNan << 1.01;
    QTest::newRow("Y nan") << 1.01 << dNan;
    QTest::newRow("X inf") << dInf << 1.01;
    QTest::newRow("Y inf") << 1.01 << dInf;
    QTest::newRow("X -inf") << -dInf << 1.01;
    QTest::newRow("Y -inf") << 0.99 << -dInf;
    QTest::newRow("X zero") << 0.0 << 1.01;
    QTest::newRow("Y zero") << 1.01 << 0.0;
    QTest::newRow("X negative") << -1.01 << 1.01;
    QTest::newRow("Y negative") << 1.01 << -0.99;
    QTest::newRow("both nan") << dNan << dNan;
    // Finite, but the step it gives is not.
    QTest::newRow("X overflows its step") << std::numeric_limits<double>::max() << 1.01;
}

void TestDlgFactoryMgr::aBadRatioLeavesBothSteps()
{
    QFETCH(double, dRatioW);
    QFETCH(double, dRatioH);
    DlgFactoryMgr dialog(&m_caller);
    FactoryParams before;
    dialog.GetParams(before);
    QVERIFY(before.motor[0].pulsePerMm > 1.0);   // so that the largest ratio overflows it

    dialog.ApplyXyStepRatio(dRatioW, dRatioH);
    FactoryParams after;
    dialog.GetParams(after);
    QCOMPARE(after.motor[0].pulsePerMm, before.motor[0].pulsePerMm);
    QCOMPARE(after.motor[1].pulsePerMm, before.motor[1].pulsePerMm);
    // The tables keep them too: a collect hands on the old steps.
    dialog.DataToCtrlSlot(false);
    dialog.GetParams(after);
    QCOMPARE(after.motor[0].pulsePerMm, before.motor[0].pulsePerMm);
    QCOMPARE(after.motor[1].pulsePerMm, before.motor[1].pulsePerMm);
    const QByteArray log = ReadBytes(CLogWriter::GetInstance()->FilePath());
    QVERIFY2(log.contains("[1] XY step calibration not applied"), log.constData());
    QVERIFY(log.contains("both steps are unchanged"));
}

void TestDlgFactoryMgr::buttonsEmitTheirSignals()
{
    DlgFactoryMgr dialog(&m_caller);
    QSignalSpy calibrate(&dialog, &DlgFactoryMgr::CorrectXyStepSignal);
    QSignalSpy read(&dialog, &DlgFactoryMgr::ReadCurParamsFromDeviceSignal);
    QSignalSpy upload(&dialog, &DlgFactoryMgr::UploadCurParamsToDeviceSignal);
    QTest::mouseClick(Child<QPushButton>(&dialog, "pushButton_correctXyStep"), Qt::LeftButton);
    QTest::mouseClick(Child<QPushButton>(&dialog, "pushButton_read"), Qt::LeftButton);
    QTest::mouseClick(Child<QPushButton>(&dialog, "pushButton_read"), Qt::LeftButton);
    QTest::mouseClick(Child<QPushButton>(&dialog, "pushButton_upload"), Qt::LeftButton);
    QCOMPARE(calibrate.count(), 1);
    QCOMPARE(read.count(), 2);
    QCOMPARE(upload.count(), 1);
    QVERIFY(!ReadBytes(CLogWriter::GetInstance()->FilePath()).contains("pushButton_read"));
}

void TestDlgFactoryMgr::escapeClosesTheDialogAndItsThirdAncestor()
{
    QWidget window;
    auto* pLevel1 = new QWidget(&window);
    auto* pLevel2 = new QWidget(pLevel1);
    auto* pDialog = new DlgFactoryMgr(&m_caller, pLevel2);
    pDialog->setWindowFlags(Qt::Widget);   // embedded, as the host does
    window.show();
    pDialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QSignalSpy rejected(pDialog, &QDialog::rejected);

    QTest::keyClick(pDialog, Qt::Key_Escape);
    QVERIFY(!pDialog->isVisible());
    QVERIFY(!window.isVisible());
    // Once from close(), once more from QDialog's own Escape handling, which
    // the key still reaches.
    QCOMPARE(rejected.count(), 2);
}

void TestDlgFactoryMgr::escapeWithFewerAncestors()
{
    QWidget window;
    auto* pLevel1 = new QWidget(&window);
    auto* pDialog = new DlgFactoryMgr(&m_caller, pLevel1);
    pDialog->setWindowFlags(Qt::Widget);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTest::keyClick(pDialog, Qt::Key_Escape);
    QVERIFY(!pDialog->isVisible());
    QVERIFY(window.isVisible());   // only two levels: no third ancestor to close

    DlgFactoryMgr alone(&m_caller);
    alone.show();
    QVERIFY(QTest::qWaitForWindowExposed(&alone));
    QTest::keyClick(&alone, Qt::Key_Escape);
    QVERIFY(!alone.isVisible());
}

void TestDlgFactoryMgr::escapeWhoseHostDeletesTheDialog()
{
    // The host's window, three levels up, deletes the dialog when it closes.
    QDialog window;
    auto* pLevel1 = new QWidget(&window);
    auto* pLevel2 = new QWidget(pLevel1);
    auto* pDialog = new DlgFactoryMgr(&m_caller, pLevel2);
    pDialog->setWindowFlags(Qt::Widget);
    window.show();
    pDialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QPointer<DlgFactoryMgr> pAlive(pDialog);
    connect(&window, &QDialog::rejected, [&] { delete pAlive.data(); });

    QTest::keyPress(pDialog, Qt::Key_Escape);   // no release: the dialog is gone by then
    QVERIFY(pAlive.isNull());
    QVERIFY(!window.isVisible());
}

void TestDlgFactoryMgr::themeTabFillsOnlyOnItsFirstShowing()
{
    CUiPermissionsManager::GetInstance()->SetThemeOverride("Quorvane", "2.1 Global");
    SUrls urls = CUiPermissionsManager::GetInstance()->GetUrls();
    urls.strGallery = "https://gallery.example/first";
    CUiPermissionsManager::GetInstance()->SetHomepageUrls(urls);

    DlgFactoryMgr dialog(&m_caller);
    auto* pTabs = Child<QTabWidget>(&dialog, "tabWidget");
    auto* pTheme = Child<QTableWidget>(&dialog, "tableWidget_customHomepage");
    QVERIFY(!pTheme->item(2, 1) || pTheme->item(2, 1)->text().isEmpty());

    pTabs->setCurrentWidget(Child<QWidget>(&dialog, "tab_theme"));
    QCOMPARE(pTheme->item(2, 1)->text(), QStringLiteral("https://gallery.example/first"));
    pTheme->item(2, 1)->setText("https://gallery.example/typed");
    urls.strGallery = "https://gallery.example/changed-elsewhere";
    CUiPermissionsManager::GetInstance()->SetHomepageUrls(urls);

    pTabs->setCurrentIndex(0);
    pTabs->setCurrentWidget(Child<QWidget>(&dialog, "tab_theme"));
    QCOMPARE(pTheme->item(2, 1)->text(), QStringLiteral("https://gallery.example/typed"));
    QVERIFY(ReadBytes(CLogWriter::GetInstance()->FilePath()).contains("[0] tabWidget was changed."));
    CUiPermissionsManager::GetInstance()->SetThemeOverride(QString(), QString());
}

void TestDlgFactoryMgr::deviceTasksGoThroughTheApplicationObject()
{
    FakeDevice device;
    device.m_stored = DistinctRecord();
    device.m_stored.motor[0].speedMax = 321.0;
    CFactoryMgrApp::GetInstance()->SetDevice(&device);
    FactoryParams defaults;
    DlgFactoryMgr dialog(&defaults);

    QCOMPARE(ThreadDialogRun(&dialog, DlgFactoryMgr::TaskReadFromDevice, nullptr, 0, "Processing..."), 0);
    FactoryParams working;
    dialog.GetParams(working);
    QCOMPARE(working.motor[0].speedMax, 321.0);

    working.motor[0].speedMax = 654.0;
    dialog.SetParams(working);
    device.m_nResult = 17;
    QCOMPARE(dialog.RunTask(DlgFactoryMgr::TaskWriteToDevice, nullptr), 17);
    QCOMPARE(device.m_stored.motor[0].speedMax, 654.0);
    QCOMPARE(dialog.RunTask(7, nullptr), 0);
    QCOMPARE(device.m_nWrites.load(), 1);
    QCOMPARE(device.m_nReads.load(), 1);
    QCOMPARE(dialog.IsTaskCancelable(0), 0);
    QCOMPARE(dialog.CancelTask(1, 2, 3), 0);
    QCOMPARE(dialog.GetTaskProgress(1), 0.0);
}

FACTORYMGR_TEST_MAIN(TestDlgFactoryMgr)
#include "tst_dlgfactorymgr.moc"
