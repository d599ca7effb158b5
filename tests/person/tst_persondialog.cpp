#include "PersonTestMain.h"

#include "CFactoryMgrApp.h"
#include "CParamDiff.h"
#include "CellPicture.h"
#include "ComboBox.h"
#include "DlgFactoryMgr.h"
#include "FactoryParamFile.h"
#include "FakeCard.h"
#include "FakeDevice.h"
#include "IFactoryMgr.h"
#include "XInput.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QAccessibleInterface>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>

#include <algorithm>
#include <functional>
#include <memory>

// The settings dialog on a real X server, driven only by pointer and key
// events that the X server delivers, and checked by what a person gets:
// where the keyboard focus is, what every cell reads to assistive technology
// (which is what it shows), what the screen shows, and what the controller
// gets when the person clicks Upload. Nothing reads the dialog's own record
// between inputs.
namespace {
enum Tab
{
    MotorTab = 0,
    LaserTab = 1,
    ProcessingTab = 2,
    MachineTab = 3
};
const char* const kTables[] = {"tableWidget_motor", "tableWidget_laser", "tableWidget_speed", "tableWidget_machine"};

// The record the dialog opens with.
FactoryParams Opening()
{
    FactoryParams record;
    record.laser.laserCount = 1;
    record.laser.reserved = 0;
    record.motor[0].speedMax = 1800.0;   // the controller takes 1500 at most
    record.laser.lasers[0].powerMax = 90.0;
    record.laser.lasers[0].powerMin = 10.0;
    record.speed.cutSpeedSpace = 900.0;
    record.machine.laserSpace = 55.0;
    record.machine.motiveMode = 3;
    return record;
}

// What the controller gets when the opening record goes out untouched: the
// dialog forces the limit polarity and the hard limit on every axis.
FactoryParams OpeningAsSent()
{
    FactoryParams record = Opening();
    for (MotorParams& motor : record.motor) {
        motor.limitPolar = 0;
        motor.hardLimitProtect = true;
    }
    return record;
}

// Every value cell's text as assistive technology reads it, keyed "tab row column".
using Screen = QMap<QString, QString>;

QString Key(int nTab, int nRow, int nColumn)
{
    return QStringLiteral("%1 %2 %3").arg(nTab).arg(nRow).arg(nColumn);
}

// The first cell where two readings differ, for a message; empty when none.
QString ScreenDifference(const Screen& expected, const Screen& actual)
{
    for (auto it = expected.cbegin(); it != expected.cend(); ++it)
        if (actual.value(it.key()) != it.value())
            return QStringLiteral("cell %1 reads \"%2\", not \"%3\"").arg(it.key(), actual.value(it.key()), it.value());
    if (actual.size() != expected.size())
        return QStringLiteral("%1 cells read, not %2").arg(actual.size()).arg(expected.size());
    return QString();
}

// The first field where two records differ, for a message; empty when none.
QString RecordDifference(const FactoryParams& expected, const FactoryParams& actual)
{
    const QList<SParamDifference> differences = CParamDiff::Compare(expected, actual);
    return differences.isEmpty() ? QString() : CParamDiff::Describe(differences.first());
}
}

class TestPersonDialog : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void typingAfterOneClickChangesOnlyThatCell_data();
    void typingAfterOneClickChangesOnlyThatCell();
    void keysAfterReturnGoOnDownTheColumn_data();
    void keysAfterReturnGoOnDownTheColumn();
    void theKeyboardMovesAFramedCellAndEdits();
    void aListChangesOnlyByAChoiceFromTheKeyboard();
    void theKeyboardPassesCellsThatAreOff();
    void aValueNotTakenAsTypedIsSaidUnderTheTable_data();
    void aValueNotTakenAsTypedIsSaidUnderTheTable();
    void doubleClickThenTypingStillReachesTheCell();
    void aListClickedAfterTypingInItsColumnOpens();
    void wheelOverListsScrollsAndChangesNothing();
    void aListChosenWithTheMouseIsStoredInItsOwnField_data();
    void aListChosenWithTheMouseIsStoredInItsOwnField();
    void refusedValuesShowRedWithTheirValues();
    void anEditClearsItsMarkOnScreen();
    void aCleanCheckClearsEveryRed();
    void everyValueCellShowsOneCentredLine_data();
    void everyValueCellShowsOneCentredLine();
    void cleanupTestCase();
    void screenshotsForALook();

private:
    QTableWidget* Table(int nTab) const;
    ComboBox* Cell(int nTab, int nRow, int nColumn) const;
    QRect CellRect(int nTab, int nRow, int nColumn) const;
    QPoint CellCentre(int nTab, int nRow, int nColumn) const;
    // Brings a tab to the front with a click on its tab.
    bool ShowTab(int nTab);
    // Scrolls with the wheel over the label column until the cell is in view.
    bool ScrollIntoView(int nTab, int nRow, int nColumn);
    // What every value cell of the four tables reads through QAccessible.
    Screen Read() const;
    // Clicks Upload; what the controller then holds.
    FactoryParams Uploaded();
    // The grab of a cell's inside (its grid line left out).
    CellPicture Picture(int nTab, int nRow, int nColumn) const;
    // Waits until the screen shows what pred wants of the cell; false if it never does.
    bool WaitForPicture(int nTab, int nRow, int nColumn, const std::function<bool(const CellPicture&)>& pred,
                        double* pRedShare = nullptr);
    // Clicks Upload and waits for the check to be done.
    bool ClickUpload();
    // Waits until the keyboard focus is on the cell's editor.
    bool FocusIsOn(int nTab, int nRow, int nColumn);
    // Whether the keyboard's frame is seen around the cell.
    bool Framed(int nTab, int nRow, int nColumn);
    void RefuseSome();
    // The host's part in an Upload: send, let the controller limit what it
    // cannot take, check what it kept.
    void Upload();

    std::unique_ptr<XInput> m_pInput;
    FakeCard m_card;
    FakeDevice m_device;
    IFactoryMgr* m_pMgr = nullptr;
    DlgFactoryMgr* m_pDialog = nullptr;
    std::function<void(FactoryParams&)> m_controllerLimits;
    quint32 m_nFlags = 0;
};

void TestPersonDialog::initTestCase()
{
    QAccessible::setActive(true);
    m_pInput = std::make_unique<XInput>();
    QVERIFY2(m_pInput->Error().isEmpty(), qPrintable(m_pInput->Error()));
    QVERIFY2(m_pInput->Drain(), qPrintable(m_pInput->Error()));
}

void TestPersonDialog::init()
{
    QFile::remove(DefaultFactoryParamPath());
    m_card.m_nCardType = 8;
    m_device.m_pCard = &m_card;
    m_pMgr = NewInterface();
    m_pMgr->Init(&m_device, nullptr);
    const FactoryParams opening = Opening();
    m_pMgr->SetFactoryParams(&opening);
    m_pDialog = m_pMgr->ShowFactoryDlg(nullptr);
    QVERIFY(m_pDialog);
    m_controllerLimits = [](FactoryParams&) {};
    connect(m_pDialog, &DlgFactoryMgr::UploadCurParamsToDeviceSignal, this, &TestPersonDialog::Upload);
    m_pDialog->show();
    m_pDialog->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_pDialog));
    QVERIFY2(m_pInput->Drain(), qPrintable(m_pInput->Error()));
}

void TestPersonDialog::cleanup()
{
    delete m_pDialog;
    m_pDialog = nullptr;
    ReleaseInterface(m_pMgr);
    m_pMgr = nullptr;
    CFactoryMgrApp::GetInstance()->SetDevice(nullptr);
}

void TestPersonDialog::Upload()
{
    m_pMgr->UploadParamsToDevice();
    m_controllerLimits(m_device.m_stored);
    m_pMgr->CheckDeviceParams(&m_nFlags);
}

QTableWidget* TestPersonDialog::Table(int nTab) const
{
    return m_pDialog->findChild<QTableWidget*>(QString::fromLatin1(kTables[nTab]));
}

ComboBox* TestPersonDialog::Cell(int nTab, int nRow, int nColumn) const
{
    return qobject_cast<ComboBox*>(Table(nTab)->cellWidget(nRow, nColumn));
}

QRect TestPersonDialog::CellRect(int nTab, int nRow, int nColumn) const
{
    QTableWidget* pTable = Table(nTab);
    return pTable->visualRect(pTable->model()->index(nRow, nColumn));
}

QPoint TestPersonDialog::CellCentre(int nTab, int nRow, int nColumn) const
{
    return Table(nTab)->viewport()->mapToGlobal(CellRect(nTab, nRow, nColumn).center());
}

bool TestPersonDialog::ShowTab(int nTab)
{
    auto* pTabs = m_pDialog->findChild<QTabWidget*>("tabWidget");
    QTabBar* pBar = pTabs->tabBar();
    if (!m_pInput->Click(pBar->mapToGlobal(pBar->tabRect(nTab).center())))
        return false;
    if (!QTest::qWaitFor([&] { return pTabs->currentIndex() == nTab && Table(nTab)->isVisible(); }, 5000))
        return false;
    // The new page painted and on the screen before anyone looks.
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    return true;
}

bool TestPersonDialog::ScrollIntoView(int nTab, int nRow, int nColumn)
{
    QTableWidget* pTable = Table(nTab);
    for (int i = 0; i < 40; ++i) {
        const QRect cell = CellRect(nTab, nRow, nColumn);
        const QRect view = pTable->viewport()->rect();
        if (view.contains(cell))
            return true;
        const QPoint label = pTable->viewport()->mapToGlobal(QPoint(20, view.height() / 2));
        if (!m_pInput->Wheel(label, cell.top() < 0 ? 1 : -1))
            return false;
    }
    return false;
}

Screen TestPersonDialog::Read() const
{
    Screen screen;
    for (int nTab : {MotorTab, LaserTab, ProcessingTab, MachineTab}) {
        QTableWidget* pTable = Table(nTab);
        QAccessibleInterface* pAccess = QAccessible::queryAccessibleInterface(pTable);
        if (!pAccess || !pAccess->tableInterface())
            continue;
        for (int r = 0; r < pTable->rowCount(); ++r)
            for (int c = 1; c < pTable->columnCount(); ++c)
                if (Cell(nTab, r, c))
                    if (QAccessibleInterface* pCell = pAccess->tableInterface()->cellAt(r, c))
                        screen.insert(Key(nTab, r, c), pCell->text(QAccessible::Name));
    }
    return screen;
}

FactoryParams TestPersonDialog::Uploaded()
{
    if (!ClickUpload())
        QTest::qFail(qPrintable("Upload was clicked, and the check never came: " + m_pInput->Error()), __FILE__, __LINE__);
    return m_device.m_stored;
}

void TestPersonDialog::cleanupTestCase()
{
    // Before the test main deletes the windows that are left.
    m_pInput.reset();
}

CellPicture TestPersonDialog::Picture(int nTab, int nRow, int nColumn) const
{
    QTableWidget* pTable = Table(nTab);
    return CellPicture(pTable->viewport(), CellRect(nTab, nRow, nColumn).adjusted(0, 0, -1, -1));
}

bool TestPersonDialog::WaitForPicture(int nTab, int nRow, int nColumn,
                                      const std::function<bool(const CellPicture&)>& pred, double* pRedShare)
{
    // The repaint may still be on its way to the X server: ask again until
    // it shows, or give up.
    bool bOk = false;
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    static_cast<void>(QTest::qWaitFor(   // what it waited for is checked below
        [&] {
            const CellPicture picture = Picture(nTab, nRow, nColumn);
            if (pRedShare)
                *pRedShare = picture.RedShare();
            bOk = pred(picture);
            return bOk;
        },
        3000));
    return bOk;
}

bool TestPersonDialog::ClickUpload()
{
    m_nFlags = 0xffffffffu;
    auto* pUpload = m_pDialog->findChild<QPushButton*>("pushButton_upload");
    if (!m_pInput->Click(pUpload->mapToGlobal(pUpload->rect().center())))
        return false;
    return QTest::qWaitFor([&] { return m_nFlags != 0xffffffffu; }, 5000);
}

// What the controller of these tests cannot take, stored as the nearest
// value it can: one value in every table, a list among them, and one field
// that has no cell.
void TestPersonDialog::RefuseSome()
{
    m_controllerLimits = [](FactoryParams& p) {
        p.motor[0].speedMax = 1500.0;
        p.laser.lasers[0].powerMax = 80.0;
        p.laser.lasers[0].burningWidth = 0.2;
        p.speed.cutSpeedSpace = 500.0;
        p.machine.laserSpace = 40.0;
        p.machine.motiveMode = 1;
    };
}

namespace {
// The field one typed value lands in.
struct TypedCase
{
    const char* szName;
    int nTab;
    int nRow;
    int nColumn;
    const char* szTyped;
    const char* szShown;
    std::function<void(FactoryParams&)> expect;
    // Another cell of the same table whose click commits the typing.
    int nOtherRow;
    int nOtherColumn;
};

const QList<TypedCase>& TypedCases()
{
    static const QList<TypedCase> cases{
        {"Motor Y step", MotorTab, 5, 2, "12.5", "12.50", [](FactoryParams& p) { p.motor[1].pulsePerMm = 12.5; }, 6,
         1},
        {"Motor U zero offset, negative", MotorTab, 7, 4, "-4", "0.00",
         [](FactoryParams& p) { p.motor[3].zeroOffset = 0.0; }, 5, 1},
        {"Laser min power 1", LaserTab, 3, 1, "1", "1.00", [](FactoryParams& p) { p.laser.lasers[0].powerMin = 1.0; },
         6, 1},
        {"Laser attenuation", LaserTab, 5, 1, "33", "33.00",
         [](FactoryParams& p) { p.laser.lasers[0].powerReduction = 33.0; }, 6, 1},
        {"Processing PMax Acc", ProcessingTab, 3, 1, "2500", "2500.00",
         [](FactoryParams& p) { p.speed.cutAccCorner = 2500.0; }, 0, 1},
        {"Processing reset speed", ProcessingTab, 10, 1, "75.5", "75.50",
         [](FactoryParams& p) { p.speed.panelSpeedReset = 75.5; }, 0, 1},
        // The only number of the Machine table: the other cell is a list.
        {"Machine distance", MachineTab, 1, 1, "12.25", "12.25",
         [](FactoryParams& p) { p.machine.laserSpace = 12.25; }, 2, 1},
    };
    return cases;
}
}

void TestPersonDialog::typingAfterOneClickChangesOnlyThatCell_data()
{
    QTest::addColumn<int>("nCase");
    QTest::addColumn<QString>("strCommit");
    for (int i = 0; i < TypedCases().size(); ++i)
        for (const char* szCommit : {"Return", "click on its label", "click on another cell", "click on Upload"})
            QTest::addRow("%s, %s", TypedCases()[i].szName, szCommit) << i << QString::fromLatin1(szCommit);
}

void TestPersonDialog::typingAfterOneClickChangesOnlyThatCell()
{
    QFETCH(int, nCase);
    QFETCH(QString, strCommit);
    const TypedCase& c = TypedCases()[nCase];
    QVERIFY(ShowTab(c.nTab));
    QVERIFY(ScrollIntoView(c.nTab, c.nRow, c.nColumn));
    const Screen before = Read();

    QVERIFY2(m_pInput->Click(CellCentre(c.nTab, c.nRow, c.nColumn)), qPrintable(m_pInput->Error()));
    // One click: the cell's line edit has the keyboard focus, its whole text selected.
    ComboBox* pCell = Cell(c.nTab, c.nRow, c.nColumn);
    QVERIFY(pCell && pCell->lineEdit());
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(pCell->lineEdit()));
    QVERIFY(pCell->lineEdit()->isVisible());
    QCOMPARE(pCell->lineEdit()->selectedText(), pCell->lineEdit()->text());

    QVERIFY2(m_pInput->Type(QString::fromLatin1(c.szTyped)), qPrintable(m_pInput->Error()));
    if (strCommit == "Return") {
        QVERIFY(m_pInput->Key("Return"));
    } else if (strCommit == "click on its label") {
        QVERIFY(m_pInput->Click(CellCentre(c.nTab, c.nRow, 0)));
    } else if (strCommit == "click on Upload") {
        QVERIFY(ClickUpload());
        QCOMPARE(m_nFlags, quint32(0));
    } else {
        QVERIFY(m_pInput->Click(CellCentre(c.nTab, c.nOtherRow, c.nOtherColumn)));
        // A list opens its choices on the click: closed again, nothing chosen.
        if (QComboBox* pList = Cell(c.nTab, c.nOtherRow, c.nOtherColumn)->comboBox()) {
            QTRY_VERIFY(pList->view()->isVisible());
            QVERIFY(m_pInput->Key("Escape"));
            QTRY_VERIFY(!QApplication::activePopupWidget());
        }
    }

    // The cell reads the stored value, and no other cell changed.
    Screen expected = before;
    expected[Key(c.nTab, c.nRow, c.nColumn)] = QString::fromLatin1(c.szShown);
    const Screen after = Read();
    QVERIFY2(after == expected, qPrintable(ScreenDifference(expected, after)));
    // On the screen: one line, not red.
    QVERIFY(WaitForPicture(c.nTab, c.nRow, c.nColumn,
                           [](const CellPicture& p) { return p.InkLines().size() == 1 && p.RedShare() < 0.01; }));
    // What the controller gets is the opening record with that one field changed.
    FactoryParams expectedRecord = OpeningAsSent();
    c.expect(expectedRecord);
    const FactoryParams sent = strCommit == "click on Upload" ? m_device.m_stored : Uploaded();
    QVERIFY2(RecordDifference(expectedRecord, sent).isEmpty(), qPrintable(RecordDifference(expectedRecord, sent)));
}

void TestPersonDialog::keysAfterReturnGoOnDownTheColumn_data()
{
    QTest::addColumn<int>("nCase");
    for (int i = 0; i < TypedCases().size(); ++i)
        QTest::newRow(TypedCases()[i].szName) << i;
}

void TestPersonDialog::keysAfterReturnGoOnDownTheColumn()
{
    QFETCH(int, nCase);
    const TypedCase& c = TypedCases()[nCase];
    QVERIFY(ShowTab(c.nTab));
    QVERIFY(ScrollIntoView(c.nTab, c.nRow, c.nColumn));
    QVERIFY(m_pInput->Click(CellCentre(c.nTab, c.nRow, c.nColumn)));
    QVERIFY(m_pInput->Type(QString::fromLatin1(c.szTyped)));
    QVERIFY(m_pInput->Key("Return"));
    const Screen committed = Read();
    QCOMPARE(committed.value(Key(c.nTab, c.nRow, c.nColumn)), QString::fromLatin1(c.szShown));

    // Return moved the current cell down the column, past disabled cells
    // and the heading row; it stays at the column's last cell.
    const auto below = [&](int nRow) {
        for (int r = nRow + 1; r < Table(c.nTab)->rowCount(); ++r)
            if (Cell(c.nTab, r, c.nColumn) && Cell(c.nTab, r, c.nColumn)->isEnabled())
                return r;
        return nRow;
    };
    int nCurrent = below(c.nRow);
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(Cell(c.nTab, nCurrent, c.nColumn)));

    // More keys go on from there: a digit on a number starts its edit, Down
    // commits it and moves on; there a digit starts another edit, which
    // Escape cancels. On a list, digits change nothing.
    Screen expected = committed;
    const int nFirst = nCurrent;
    const int nSecond = below(nFirst);
    if (Cell(c.nTab, nFirst, c.nColumn)->lineEdit())
        expected[Key(c.nTab, nFirst, c.nColumn)] = QStringLiteral("1.00");
    QVERIFY(m_pInput->Type("1"));
    QVERIFY(m_pInput->Key("Down"));
    QVERIFY(m_pInput->Type("3"));
    // (On a list no edit is open: there Escape would close the window.)
    if (Cell(c.nTab, nSecond, c.nColumn)->lineEdit())
        QVERIFY(m_pInput->Key("Escape"));
    QVERIFY(m_pInput->Drain());
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(Cell(c.nTab, nSecond, c.nColumn)));
    QVERIFY(m_pDialog->isVisible());
    const Screen after = Read();
    QVERIFY2(after == expected, qPrintable(ScreenDifference(expected, after)));
    QVERIFY(!QApplication::activePopupWidget());
}

namespace {
// The share of the pixels along a rectangle's top and bottom edges (two
// pixels deep) that have the colour of the keyboard's frame.
double FrameShare(const QImage& image, const QColor& frame)
{
    int nFrame = 0;
    int nAll = 0;
    for (int y : {0, 1, image.height() - 2, image.height() - 1})
        for (int x = 4; x < image.width() - 4; ++x, ++nAll) {
            const QColor pixel = image.pixelColor(x, y);
            if (std::abs(pixel.red() - frame.red()) < 40 && std::abs(pixel.green() - frame.green()) < 40
                && std::abs(pixel.blue() - frame.blue()) < 40)
                ++nFrame;
        }
    return nAll ? double(nFrame) / nAll : 0.0;
}

// What assistive technology says of the widget that has the keyboard focus.
QString FocusSaid()
{
    QWidget* pFocus = QApplication::focusWidget();
    QAccessibleInterface* pAccess = pFocus ? QAccessible::queryAccessibleInterface(pFocus) : nullptr;
    return pAccess ? pAccess->text(QAccessible::Name) + " | " + pAccess->text(QAccessible::Description) : QString();
}
}

bool TestPersonDialog::FocusIsOn(int nTab, int nRow, int nColumn)
{
    return QTest::qWaitFor([&] { return QApplication::focusWidget() == Cell(nTab, nRow, nColumn); }, 5000);
}

bool TestPersonDialog::Framed(int nTab, int nRow, int nColumn)
{
    const QColor frame = Table(nTab)->palette().color(QPalette::Highlight);
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    return QTest::qWaitFor(
        [&] {
            const CellPicture picture(Table(nTab)->viewport(), CellRect(nTab, nRow, nColumn));
            return FrameShare(picture.Image(), frame) > 0.8;
        },
        3000);
}

void TestPersonDialog::theKeyboardMovesAFramedCellAndEdits()
{
    QVERIFY(ShowTab(MotorTab));
    const Screen before = Read();
    // Into the table with one click; Escape gives the cell its value back
    // and the window stays.
    QVERIFY(m_pInput->Click(CellCentre(MotorTab, 5, 1)));
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(Cell(MotorTab, 5, 1)->lineEdit()));
    QVERIFY(m_pInput->Type("77"));
    QVERIFY(m_pInput->Key("Escape"));
    QVERIFY(FocusIsOn(MotorTab, 5, 1));
    QVERIFY(m_pDialog->isVisible());
    QVERIFY(!Cell(MotorTab, 5, 1)->lineEdit()->isVisible());
    QVERIFY2(Read() == before, qPrintable(ScreenDifference(before, Read())));
    QVERIFY(Framed(MotorTab, 5, 1));

    // The arrows move the frame and the focus; the label column is passed.
    QVERIFY(m_pInput->Key("Right"));
    QVERIFY(FocusIsOn(MotorTab, 5, 2));
    QVERIFY(Framed(MotorTab, 5, 2));
    QVERIFY(!Framed(MotorTab, 5, 1));
    QVERIFY2(FocusSaid().startsWith(Table(MotorTab)->item(5, 0)->text() + " Y"), qPrintable(FocusSaid()));
    QVERIFY(m_pInput->Key("Left Left Left"));
    QVERIFY(FocusIsOn(MotorTab, 5, 1));
    // Down passes the heading row.
    QVERIFY(m_pInput->Key("Down Down Down"));
    QVERIFY(FocusIsOn(MotorTab, 9, 1));
    QVERIFY(ScrollIntoView(MotorTab, 9, 1));
    QVERIFY(Framed(MotorTab, 9, 1));

    // F2 opens the value selected; Tab commits and moves right.
    QVERIFY(m_pInput->Key("F2"));
    QLineEdit* pEdit = Cell(MotorTab, 9, 1)->lineEdit();
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(pEdit));
    QCOMPARE(pEdit->selectedText(), pEdit->text());
    QVERIFY(m_pInput->Type("33"));
    QVERIFY(m_pInput->Key("Tab"));
    QVERIFY(FocusIsOn(MotorTab, 9, 2));
    // A digit opens the cell with that digit; Return commits and moves down.
    QVERIFY(m_pInput->Type("44"));
    QVERIFY(m_pInput->Key("Return"));
    QVERIFY(FocusIsOn(MotorTab, 10, 2));
    // Shift+Tab goes back along the row.
    QVERIFY(m_pInput->Key("shift+Tab"));
    QVERIFY(FocusIsOn(MotorTab, 10, 1));

    Screen expected = before;
    expected[Key(MotorTab, 9, 1)] = QStringLiteral("33.00");
    expected[Key(MotorTab, 9, 2)] = QStringLiteral("44.00");
    const Screen after = Read();
    QVERIFY2(after == expected, qPrintable(ScreenDifference(expected, after)));

    // Ctrl+End: the table's last cell; Tab from there leaves the table.
    QVERIFY(m_pInput->Key("ctrl+End"));
    const int nLastRow = Table(MotorTab)->rowCount() - 1;
    QVERIFY(FocusIsOn(MotorTab, nLastRow, 4));
    QVERIFY(m_pInput->Key("Tab"));
    QTRY_VERIFY(QApplication::focusWidget() && !Table(MotorTab)->isAncestorOf(QApplication::focusWidget()));

    FactoryParams expectedRecord = OpeningAsSent();
    expectedRecord.motor[0].speedJump = 33.0;
    expectedRecord.motor[1].speedJump = 44.0;
    const FactoryParams sent = Uploaded();
    QVERIFY2(RecordDifference(expectedRecord, sent).isEmpty(), qPrintable(RecordDifference(expectedRecord, sent)));
}

void TestPersonDialog::aListChangesOnlyByAChoiceFromTheKeyboard()
{
    QVERIFY(ShowTab(MotorTab));
    QVERIFY(m_pInput->Click(CellCentre(MotorTab, 5, 1)));
    QVERIFY(m_pInput->Key("Escape"));
    QVERIFY(FocusIsOn(MotorTab, 5, 1));
    const Screen before = Read();
    // Up and Down on closed lists move between cells and change nothing.
    QVERIFY(m_pInput->Key("Up Up Up Down"));
    QVERIFY(FocusIsOn(MotorTab, 3, 1));
    QVERIFY(Framed(MotorTab, 3, 1));
    QVERIFY(m_pInput->Type("1a"));
    QVERIFY2(Read() == before, qPrintable("keys on a closed list: " + ScreenDifference(before, Read())));

    QComboBox* pList = Cell(MotorTab, 3, 1)->comboBox();
    // Alt+Down and F4 open it, Escape closes it: nothing chosen.
    for (const char* szOpen : {"alt+Down", "F4"}) {
        QVERIFY(m_pInput->Key(QString::fromLatin1(szOpen)));
        QTRY_VERIFY2(Cell(MotorTab, 3, 1)->comboBox()->view()->isVisible(), szOpen);
        QVERIFY(m_pInput->Key("Escape"));
        QTRY_VERIFY(!QApplication::activePopupWidget());
        QVERIFY(m_pDialog->isVisible());
        QVERIFY(FocusIsOn(MotorTab, 3, 1));
    }
    QVERIFY2(Read() == before, qPrintable(ScreenDifference(before, Read())));
    // Space opens it; the next choice is picked with Down and Return.
    const int nWas = pList->currentIndex();
    const bool bDown = nWas + 1 < pList->count();
    const int nWant = bDown ? nWas + 1 : nWas - 1;
    QVERIFY(m_pInput->Key("space"));
    QTRY_VERIFY(Cell(MotorTab, 3, 1)->comboBox()->view()->isVisible());
    QVERIFY(m_pInput->Key(bDown ? "Down Return" : "Up Return"));
    QTRY_VERIFY(!QApplication::activePopupWidget());
    QTRY_COMPARE(Cell(MotorTab, 3, 1)->comboBox()->currentIndex(), nWant);
    // The focus is on the chosen cell, and the next arrow moves on.
    QVERIFY(FocusIsOn(MotorTab, 3, 1));
    QVERIFY(m_pInput->Key("Down"));
    QVERIFY(FocusIsOn(MotorTab, 4, 1));

    Screen expected = before;
    expected[Key(MotorTab, 3, 1)] = Cell(MotorTab, 3, 1)->comboBox()->itemText(nWant);
    const Screen after = Read();
    QVERIFY2(after == expected, qPrintable(ScreenDifference(expected, after)));
    const FactoryParams sent = Uploaded();
    QCOMPARE(CParamDiff::Compare(OpeningAsSent(), sent).size(), 1);
}

void TestPersonDialog::theKeyboardPassesCellsThatAreOff()
{
    // A glass tube: pre-ignition frequency and width (rows 7 and 8) are off.
    QVERIFY(ShowTab(LaserTab));
    QVERIFY(!Cell(LaserTab, 7, 1)->isEnabled() && !Cell(LaserTab, 8, 1)->isEnabled());
    QVERIFY(ScrollIntoView(LaserTab, 6, 1));
    QVERIFY(m_pInput->Click(CellCentre(LaserTab, 6, 1)));
    QVERIFY(m_pInput->Key("Escape"));
    QVERIFY(FocusIsOn(LaserTab, 6, 1));
    QVERIFY(m_pInput->Key("Down"));
    QVERIFY(FocusIsOn(LaserTab, 9, 1));
    QVERIFY(m_pInput->Key("Up"));
    QVERIFY(FocusIsOn(LaserTab, 6, 1));
}

void TestPersonDialog::aValueNotTakenAsTypedIsSaidUnderTheTable_data()
{
    QTest::addColumn<int>("nTab");
    QTest::addColumn<int>("nRow");
    QTest::addColumn<int>("nColumn");
    QTest::addColumn<QString>("strKeys");   // typed, or a key's name in braces
    QTest::addColumn<QString>("strShown");
    QTest::addColumn<QString>("strNote");
    QTest::newRow("above Y's cap") << int(MotorTab) << 10 << 2 << "900" << "1000.00"
                                    << "Y Max Speed takes at most 500 mm/s here; kept 1000.00";
    QTest::newRow("the README's Y acceleration") << int(MotorTab) << 11 << 2 << "45000" << "20000.00"
                                                 << "Y Max Acc takes at most 10000 mm/s² here; kept 20000.00";
    QTest::newRow("Z cannot change here") << int(MotorTab) << 10 << 3 << "100" << "1000.00"
                                          << "Z Max Speed is not changed from this table; kept 1000.00";
    QTest::newRow("letters") << int(MotorTab) << 6 << 1 << "abc" << "900.00"
                             << "X Move Distance needs a number; kept 900.00";
    QTest::newRow("beyond a double") << int(MotorTab) << 6 << 1 << "1e999" << "900.00"
                                     << "X Move Distance needs a number; kept 900.00";
    QTest::newRow("a decimal comma") << int(MotorTab) << 6 << 1 << "1,5" << "900.00"
                                     << "X Move Distance needs a number; kept 900.00";
    QTest::newRow("emptied") << int(MotorTab) << 6 << 1 << "{BackSpace}" << "900.00"
                             << "X Move Distance needs a number; kept 900.00";
    QTest::newRow("negative") << int(MotorTab) << 6 << 1 << "-5" << "0.00"
                              << "X Move Distance takes at least 0 mm here; set to 0.00";
    QTest::newRow("four decimals") << int(MotorTab) << 5 << 1 << "1.23456" << "1.24"
                                   << "X Step keeps 3 decimals; set to 1.235";
    QTest::newRow("laser above 100") << int(LaserTab) << 4 << 1 << "150" << "100.00"
                                     << "Laser 1 Max power takes at most 100 % here; set to 100.00";
    QTest::newRow("processing letters") << int(ProcessingTab) << 0 << 1 << "abc" << "0.00"
                                        << "Idle speed needs a number; set to 0.00";
}

void TestPersonDialog::aValueNotTakenAsTypedIsSaidUnderTheTable()
{
    QFETCH(int, nTab);
    QFETCH(int, nRow);
    QFETCH(int, nColumn);
    QFETCH(QString, strKeys);
    QFETCH(QString, strShown);
    QFETCH(QString, strNote);
    QVERIFY(ShowTab(nTab));
    QVERIFY(ScrollIntoView(nTab, nRow, nColumn));
    auto* pNote = m_pDialog->findChild<QLabel*>(QString::fromLatin1(kTables[nTab]) + "_note");
    QVERIFY(!pNote || !pNote->isVisible());
    QVERIFY(m_pInput->Click(CellCentre(nTab, nRow, nColumn)));
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(Cell(nTab, nRow, nColumn)->lineEdit()));
    if (strKeys.startsWith('{'))
        QVERIFY(m_pInput->Key(strKeys.mid(1, strKeys.size() - 2)));
    else
        QVERIFY(m_pInput->Type(strKeys));
    QVERIFY(m_pInput->Key("Return"));
    QVERIFY(m_pInput->Drain());

    // The cell shows what is kept, never the refused text; no box asks anything.
    QCOMPARE(Read().value(Key(nTab, nRow, nColumn)), strShown);
    QVERIFY(!Cell(nTab, nRow, nColumn)->lineEdit()->isVisible());
    QVERIFY(!QApplication::activeModalWidget());
    // The line under the table says why, on the screen and to assistive technology.
    pNote = m_pDialog->findChild<QLabel*>(QString::fromLatin1(kTables[nTab]) + "_note");
    QVERIFY(pNote);
    QTRY_VERIFY(pNote->isVisible());
    QCOMPARE(pNote->text(), strNote);
    QCOMPARE(QAccessible::queryAccessibleInterface(pNote)->text(QAccessible::Name), strNote);
    const QRect underTable = pNote->geometry();
    QVERIFY(underTable.top() >= Table(nTab)->geometry().bottom());
    QTRY_VERIFY(CellPicture(pNote, pNote->rect()).InkCount() > 50);

    // The table's next edit, taken as typed, takes the note away.
    const QPoint next = nTab == MotorTab ? QPoint(2, 5) : QPoint(1, 5);
    QVERIFY(ScrollIntoView(nTab, next.y(), next.x()));
    QVERIFY(m_pInput->Click(CellCentre(nTab, next.y(), next.x())));
    QVERIFY(m_pInput->Type("7"));
    QVERIFY(m_pInput->Key("Return"));
    QTRY_VERIFY(!pNote->isVisible());
    QCOMPARE(Read().value(Key(nTab, next.y(), next.x())), QStringLiteral("7.00"));
}

void TestPersonDialog::doubleClickThenTypingStillReachesTheCell()
{
    QVERIFY(ShowTab(MotorTab));
    const Screen before = Read();
    QVERIFY(m_pInput->DoubleClick(CellCentre(MotorTab, 6, 1)));
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(Cell(MotorTab, 6, 1)->lineEdit()));
    QVERIFY(m_pInput->Type("321"));
    QVERIFY(m_pInput->Key("Return"));
    Screen expected = before;
    expected[Key(MotorTab, 6, 1)] = QStringLiteral("321.00");
    const Screen after = Read();
    QVERIFY2(after == expected, qPrintable(ScreenDifference(expected, after)));
    FactoryParams expectedRecord = OpeningAsSent();
    expectedRecord.motor[0].size = 321.0;
    const FactoryParams sent = Uploaded();
    QVERIFY2(RecordDifference(expectedRecord, sent).isEmpty(), qPrintable(RecordDifference(expectedRecord, sent)));
}

void TestPersonDialog::aListClickedAfterTypingInItsColumnOpens()
{
    // The typing is committed as the list takes the focus, and the Laser
    // column is rebuilt: the list in the cell must still open.
    QVERIFY(ShowTab(LaserTab));
    const Screen before = Read();
    QVERIFY(m_pInput->Click(CellCentre(LaserTab, 3, 1)));
    QVERIFY(m_pInput->Type("5"));
    QVERIFY(m_pInput->Click(CellCentre(LaserTab, 1, 1)));
    QTRY_VERIFY(QApplication::activePopupWidget());
    QVERIFY(Cell(LaserTab, 1, 1)->comboBox()->view()->isVisible());
    QVERIFY(m_pInput->Key("Escape"));
    QTRY_VERIFY(!QApplication::activePopupWidget());
    Screen expected = before;
    expected[Key(LaserTab, 3, 1)] = QStringLiteral("5.00");
    const Screen after = Read();
    QVERIFY2(after == expected, qPrintable(ScreenDifference(expected, after)));
    FactoryParams expectedRecord = OpeningAsSent();
    expectedRecord.laser.lasers[0].powerMin = 5.0;
    const FactoryParams sent = Uploaded();
    QVERIFY2(RecordDifference(expectedRecord, sent).isEmpty(), qPrintable(RecordDifference(expectedRecord, sent)));
}

void TestPersonDialog::wheelOverListsScrollsAndChangesNothing()
{
    QVERIFY(ShowTab(MotorTab));
    QTableWidget* pTable = Table(MotorTab);
    QScrollBar* pBar = pTable->verticalScrollBar();
    QVERIFY2(pBar->maximum() > 0, "the Motor table must need scrolling at the dialog's size");
    QCOMPARE(pBar->value(), 0);
    const Screen before = Read();
    // The pointer over "Direction of Polarity" of X and of U, lists nobody opened.
    QVERIFY(m_pInput->Wheel(CellCentre(MotorTab, 0, 1), -3));
    QTRY_VERIFY(pBar->value() > 0);
    const int nScrolled = pBar->value();
    QVERIFY(m_pInput->Wheel(pTable->viewport()->mapToGlobal(QPoint(CellRect(MotorTab, 2, 4).center().x(), 60)), 3));
    QTRY_VERIFY(pBar->value() < nScrolled);
    const Screen after = Read();
    QVERIFY2(after == before, qPrintable("the wheel changed a cell: " + ScreenDifference(before, after)));
    // The lists of the other tables take no wheel either.
    for (int nTab : {LaserTab, MachineTab}) {
        QVERIFY(ShowTab(nTab));
        for (int r : {0, 1, 2}) {
            if (!Cell(nTab, r, 1)->comboBox())
                continue;
            QVERIFY(m_pInput->Wheel(CellCentre(nTab, r, 1), -2));
            QVERIFY(m_pInput->Wheel(CellCentre(nTab, r, 1), 2));
        }
    }
    const Screen afterAll = Read();
    QVERIFY2(afterAll == before, qPrintable("the wheel changed a cell: " + ScreenDifference(before, afterAll)));
    const FactoryParams sent = Uploaded();
    QVERIFY2(RecordDifference(OpeningAsSent(), sent).isEmpty(), qPrintable(RecordDifference(OpeningAsSent(), sent)));
}

void TestPersonDialog::aListChosenWithTheMouseIsStoredInItsOwnField_data()
{
    QTest::addColumn<int>("nTab");
    QTest::addColumn<int>("nRow");
    QTest::addColumn<int>("nColumn");
    QTest::addColumn<QString>("strKey");
    QTest::addColumn<QString>("strShown");
    QTest::addColumn<int>("nField");
    QTest::newRow("Motor Z Initialization") << int(MotorTab) << 4 << 3 << "Up" << "No" << 0;
    QTest::newRow("Laser water protection") << int(LaserTab) << 1 << 1 << "Up" << "Close" << 1;
    QTest::newRow("Machine blowing") << int(MachineTab) << 4 << 1 << "Down" << "Yes" << 2;
    QTest::newRow("Machine zero") << int(MachineTab) << 2 << 1 << "Down" << "Top Right" << 3;
}

void TestPersonDialog::aListChosenWithTheMouseIsStoredInItsOwnField()
{
    QFETCH(int, nTab);
    QFETCH(int, nRow);
    QFETCH(int, nColumn);
    QFETCH(QString, strKey);
    QFETCH(QString, strShown);
    QFETCH(int, nField);
    QVERIFY(ShowTab(nTab));
    const Screen before = Read();
    QComboBox* pList = Cell(nTab, nRow, nColumn)->comboBox();
    QVERIFY(m_pInput->Click(CellCentre(nTab, nRow, nColumn)));
    QTRY_VERIFY(pList->view()->isVisible());
    QVERIFY(m_pInput->Key(strKey));
    QVERIFY(m_pInput->Key("Return"));
    // The cell reads the choice, and no other cell changed.
    Screen expected = before;
    expected[Key(nTab, nRow, nColumn)] = strShown;
    QTRY_VERIFY2(Read() == expected, qPrintable(ScreenDifference(expected, Read())));
    FactoryParams expectedRecord = OpeningAsSent();
    switch (nField) {
    case 0: expectedRecord.motor[2].startupReset = !expectedRecord.motor[2].startupReset; break;
    case 1: expectedRecord.laser.lasers[0].waterProtect = !expectedRecord.laser.lasers[0].waterProtect; break;
    case 2: expectedRecord.machine.blow = !expectedRecord.machine.blow; break;
    default: expectedRecord.machine.machineZero = 1; break;
    }
    const FactoryParams sent = Uploaded();
    QVERIFY2(RecordDifference(expectedRecord, sent).isEmpty(), qPrintable(RecordDifference(expectedRecord, sent)));
}

void TestPersonDialog::refusedValuesShowRedWithTheirValues()
{
    RefuseSome();
    QVERIFY(ClickUpload());
    QCOMPARE(m_nFlags, quint32(IFactoryMgr::CheckFlagMotor | IFactoryMgr::CheckFlagLaser | IFactoryMgr::CheckFlagSpeed
                                | IFactoryMgr::CheckFlagMachine));
    struct Mark
    {
        int nTab, nRow, nColumn;
        const char* szShown;
    };
    const QList<Mark> marks{{MotorTab, 10, 1, "1800.00"},  {LaserTab, 4, 1, "90.00"},
                            {ProcessingTab, 0, 1, "900.00"}, {MachineTab, 0, 1, "Screw Servo"},
                            {MachineTab, 1, 1, "55.00"}};
    int nVisited = 0;
    int nRed = 0;
    for (int nTab : {MotorTab, LaserTab, ProcessingTab, MachineTab}) {
        QVERIFY(ShowTab(nTab));
        QTableWidget* pTable = Table(nTab);
        for (int r = 0; r < pTable->rowCount(); ++r)
            for (int c = 1; c < pTable->columnCount(); ++c) {
                if (!Cell(nTab, r, c))
                    continue;   // the sub-heading row has no value
                QVERIFY2(ScrollIntoView(nTab, r, c),
                         qPrintable(QStringLiteral("tab %1 cell (%2, %3) cannot be scrolled into view").arg(nTab).arg(r).arg(c)));
                ++nVisited;
                const Mark* pMark = nullptr;
                for (const Mark& m : marks)
                    if (m.nTab == nTab && m.nRow == r && m.nColumn == c)
                        pMark = &m;
                double dRed = 0.0;
                if (pMark) {
                    // Red filling the cell, the put-back value on it, one line.
                    QCOMPARE(Read().value(Key(nTab, r, c)), QString::fromLatin1(pMark->szShown));
                    QVERIFY2(WaitForPicture(nTab, r, c,
                                            [](const CellPicture& p) {
                                                return p.RedShare() > 0.6 && p.InkCount() > 20
                                                    && p.InkLines().size() == 1;
                                            },
                                            &dRed),
                             qPrintable(QStringLiteral("tab %1 cell (%2, %3): red share %4").arg(nTab).arg(r).arg(c).arg(dRed)));
                    ++nRed;
                } else {
                    QVERIFY2(WaitForPicture(nTab, r, c, [](const CellPicture& p) { return p.RedShare() < 0.01; }, &dRed),
                             qPrintable(QStringLiteral("tab %1 cell (%2, %3): red share %4").arg(nTab).arg(r).arg(c).arg(dRed)));
                }
            }
    }
    // Every value cell was looked at: 14 rows of four axes, one laser's ten,
    // eleven speeds, five machine options.
    QCOMPARE(nVisited, 14 * 4 + 10 + 11 + 5);
    QCOMPARE(nRed, int(marks.size()));
    // Every refused value, the width that has no cell among them, is put back
    // in the dialog: the next Upload sends what the dialog opened with.
    m_controllerLimits = [](FactoryParams&) {};
    const FactoryParams sent = Uploaded();
    QVERIFY2(RecordDifference(OpeningAsSent(), sent).isEmpty(), qPrintable(RecordDifference(OpeningAsSent(), sent)));
}

void TestPersonDialog::anEditClearsItsMarkOnScreen()
{
    RefuseSome();
    QVERIFY(ClickUpload());
    const auto red = [](const CellPicture& p) { return p.RedShare() > 0.6; };
    const auto white = [](const CellPicture& p) { return p.RedShare() < 0.01; };
    // A number typed over a refused value.
    QVERIFY(ShowTab(MotorTab));
    QVERIFY(ScrollIntoView(MotorTab, 10, 1));
    QVERIFY(WaitForPicture(MotorTab, 10, 1, red));
    QVERIFY(m_pInput->Click(CellCentre(MotorTab, 10, 1)));
    QVERIFY(m_pInput->Type("1400"));
    QVERIFY(m_pInput->Key("Return"));
    QVERIFY(WaitForPicture(MotorTab, 10, 1, white));
    QCOMPARE(Read().value(Key(MotorTab, 10, 1)), QStringLiteral("1400.00"));
    // A list choice over a refused one; the other mark of the table stays.
    QVERIFY(ShowTab(MachineTab));
    QVERIFY(m_pInput->Click(CellCentre(MachineTab, 0, 1)));
    QTRY_VERIFY(Cell(MachineTab, 0, 1)->comboBox()->view()->isVisible());
    QVERIFY(m_pInput->Key("Up"));
    QVERIFY(m_pInput->Key("Return"));
    QTRY_COMPARE(Read().value(Key(MachineTab, 0, 1)), QStringLiteral("Screw Stepper"));
    QVERIFY(WaitForPicture(MachineTab, 0, 1, white));
    QVERIFY(WaitForPicture(MachineTab, 1, 1, red));
    // The Laser and Processing marks are still there.
    for (const auto& cell : {std::make_pair(LaserTab, 4), std::make_pair(ProcessingTab, 0)}) {
        QVERIFY(ShowTab(cell.first));
        QVERIFY(WaitForPicture(cell.first, cell.second, 1, red));
    }
    QVERIFY(m_pInput->Click(CellCentre(ProcessingTab, 0, 1)));
    QVERIFY(m_pInput->Type("650"));
    QVERIFY(m_pInput->Click(CellCentre(ProcessingTab, 0, 0)));
    QVERIFY(WaitForPicture(ProcessingTab, 0, 1, white));
    QCOMPARE(Read().value(Key(ProcessingTab, 0, 1)), QStringLiteral("650.00"));
    // The controller now takes what it is sent: the three edits, and the
    // put-back values of the rest.
    m_controllerLimits = [](FactoryParams&) {};
    FactoryParams expectedRecord = OpeningAsSent();
    expectedRecord.motor[0].speedMax = 1400.0;
    expectedRecord.machine.motiveMode = 2;
    expectedRecord.speed.cutSpeedSpace = 650.0;
    const FactoryParams sent = Uploaded();
    QVERIFY2(RecordDifference(expectedRecord, sent).isEmpty(), qPrintable(RecordDifference(expectedRecord, sent)));
}

void TestPersonDialog::aCleanCheckClearsEveryRed()
{
    RefuseSome();
    QVERIFY(ClickUpload());
    QVERIFY(m_nFlags != 0);
    // Now the controller keeps everything it is sent.
    m_controllerLimits = [](FactoryParams&) {};
    QVERIFY(ClickUpload());
    QCOMPARE(m_nFlags, quint32(0));
    for (int nTab : {MotorTab, LaserTab, ProcessingTab, MachineTab}) {
        QVERIFY(ShowTab(nTab));
        QWidget* pViewport = Table(nTab)->viewport();
        double dRed = 1.0;
        static_cast<void>(QTest::qWaitFor(   // what it waited for is checked below
            [&] {
                dRed = CellPicture(pViewport, pViewport->rect()).RedShare();
                return dRed == 0.0;
            },
            3000));
        QVERIFY2(dRed == 0.0, qPrintable(QStringLiteral("tab %1: red share %2").arg(nTab).arg(dRed)));
    }
}

void TestPersonDialog::everyValueCellShowsOneCentredLine_data()
{
    QTest::addColumn<int>("nTab");
    QTest::addColumn<int>("nCells");
    QTest::newRow("Motor") << int(MotorTab) << 14 * 4;
    QTest::newRow("Laser") << int(LaserTab) << 10;
    QTest::newRow("Processing") << int(ProcessingTab) << 11;
    QTest::newRow("Machine") << int(MachineTab) << 5;
}

void TestPersonDialog::everyValueCellShowsOneCentredLine()
{
    QFETCH(int, nTab);
    QFETCH(int, nCells);
    QVERIFY(ShowTab(nTab));
    QTableWidget* pTable = Table(nTab);
    QList<int> lefts;
    for (int r = 0; r < pTable->rowCount(); ++r)
        for (int c = 1; c < pTable->columnCount(); ++c) {
            ComboBox* pCell = Cell(nTab, r, c);
            if (!pCell)
                continue;   // the sub-heading row has no value
            QVERIFY2(ScrollIntoView(nTab, r, c),
                     qPrintable(QStringLiteral("cell (%1, %2) cannot be scrolled into view").arg(r).arg(c)));
            const QRect rect = CellRect(nTab, r, c);
            // The list's arrow at the right is no text. Greyed text of a
            // disabled cell is fainter, and a list's frame is left out for it.
            const bool bEnabled = pCell->isEnabled();
            const QRect text = pCell->comboBox() ? rect.adjusted(0, bEnabled ? 0 : 3, -28, bEnabled ? -1 : -4)
                                                 : rect.adjusted(0, 0, -1, -1);
            const int nContrast = bEnabled ? 110 : 30;
            CellPicture picture(pTable->viewport(), text, nContrast);
            static_cast<void>(QTest::qWaitFor(   // what it waited for is checked below
                [&] {
                    picture = CellPicture(pTable->viewport(), text, nContrast);
                    return picture.InkLines().size() == 1;
                },
                3000));
            const QString strWhere = QStringLiteral("cell (%1, %2) \"%3\"").arg(r).arg(c).arg(pCell->shownText());
            const auto lines = picture.InkLines();
            QVERIFY2(lines.size() == 1, qPrintable(strWhere + QStringLiteral(": %1 lines of text").arg(lines.size())));
            const double dMiddle = (lines[0].first + lines[0].second) / 2.0;
            const double dCentre = (text.height() - 1) / 2.0 + (bEnabled || !pCell->comboBox() ? 0.0 : 0.5);
            QVERIFY2(qAbs(dMiddle - dCentre) <= 2.5,
                     qPrintable(strWhere + QStringLiteral(": text at %1 of %2").arg(dMiddle).arg(text.height())));
            lefts << picture.InkLeft();
        }
    QCOMPARE(int(lefts.size()), nCells);
    // One left padding for numbers and choices alike (glyphs differ by a pixel or two).
    const auto [min, max] = std::minmax_element(lefts.begin(), lefts.end());
    QVERIFY2(*max - *min <= 3, qPrintable(QStringLiteral("text starts between %1 and %2 px").arg(*min).arg(*max)));
}

void TestPersonDialog::screenshotsForALook()
{
    const QString strDir = qEnvironmentVariable("FACTORYMGR_PERSON_SHOTS");
    if (strDir.isEmpty())
        QSKIP("set FACTORYMGR_PERSON_SHOTS to a directory to get the screenshots");
    const auto shoot = [&](const QString& strName) {
        const QRect frame = m_pDialog->frameGeometry();
        QGuiApplication::primaryScreen()->grabWindow(0, frame.x(), frame.y(), frame.width(), frame.height()).save(strDir + "/" + strName);
    };
    RefuseSome();
    QVERIFY(ClickUpload());
    for (int nTab : {MotorTab, LaserTab, ProcessingTab, MachineTab}) {
        QVERIFY(ShowTab(nTab));
        QTest::qWait(200);
        shoot(QStringLiteral("tab%1.png").arg(nTab));
    }
    // A refused value's note under the table, and the keyboard's frame on the cell below.
    QVERIFY(ShowTab(MotorTab));
    QVERIFY(ScrollIntoView(MotorTab, 11, 2));
    QVERIFY(m_pInput->Click(CellCentre(MotorTab, 10, 2)));
    QVERIFY(m_pInput->Type("900"));
    QVERIFY(m_pInput->Key("Return"));
    QTest::qWait(200);
    shoot(QStringLiteral("keyboard.png"));
}

FACTORYMGR_PERSON_TEST_MAIN(TestPersonDialog)
#include "tst_persondialog.moc"
