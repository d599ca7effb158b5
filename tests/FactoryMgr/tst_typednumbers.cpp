#include "TestMain.h"

#include "CFactoryMgrApp.h"
#include "CParamDiff.h"
#include "ComboBox.h"
#include "FactoryParamKeys.h"
#include "FakeCard.h"
#include "FakeDevice.h"
#include "TabTestFixture.h"
#include "TableDriver.h"

#include <QLineEdit>

#include <clocale>
#include <cmath>

// Text typed into every number cell of every property table that is no plain
// number: not-a-number, infinity, and a decimal comma. The tables read typed
// text with QString::toDouble, which knows the decimal point only, whatever
// the desktop's locale: such text is refused (Motor, Laser) or counts as 0
// (Processing, Machine), and not-a-number becomes the field's floor. None of
// it may reach the record as a value that is not finite, nor as another
// number (a comma read as a thousands separator would give 15 for "1,5").
// This suite also runs under de_DE.UTF-8, where the desktop writes "1,5".
namespace {
// Two laser columns, the second an RF source, whose pre-ignition cells are
// open for typing (a glass tube's are not).
FactoryParams TwoLasers()
{
    FactoryParams record;
    record.laser.laserCount = 2;
    record.laser.lasers[1].type = 2;
    return record;
}

// The first field of the record that holds a value that is not finite; empty when none.
QString NotFinite(const FactoryParams& record)
{
    for (const FactoryParamKey& key : FactoryParamKey::File())
        if (!std::isfinite(key.Value(record)))
            return key.strKey + "=" + QString::number(key.Value(record));
    return QString();
}
}

class TestTypedNumbers : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void theLocaleIsTheOneTheRunAsksFor();
    void noNumberNeverReachesTheRecord_data();
    void noNumberNeverReachesTheRecord();

private:
    FakeCard m_card;
    FakeDevice m_device;
};

void TestTypedNumbers::initTestCase()
{
    m_card.m_nCardType = 8;   // a laser card: each source set on its own
    m_device.m_pCard = &m_card;
    CFactoryMgrApp::GetInstance()->SetDevice(&m_device);
}

void TestTypedNumbers::cleanupTestCase()
{
    CFactoryMgrApp::GetInstance()->SetDevice(nullptr);
}

void TestTypedNumbers::theLocaleIsTheOneTheRunAsksFor()
{
    // A run under de_DE.UTF-8 that fell back to C would prove nothing: the
    // locale must be installed and in force, for Qt and for the C library.
    const bool bGerman = qEnvironmentVariable("LC_ALL").startsWith(QLatin1String("de_DE"));
    QCOMPARE(QLocale().decimalPoint(), bGerman ? QStringLiteral(",") : QStringLiteral("."));
    QCOMPARE(QByteArray(std::localeconv()->decimal_point), bGerman ? QByteArray(",") : QByteArray("."));
}

void TestTypedNumbers::noNumberNeverReachesTheRecord_data()
{
    QTest::addColumn<QString>("strTyped");
    QTest::addColumn<bool>("bComma");
    for (const char* szTyped : {"nan", "NaN", "-nan", "inf", "-inf", "Infinity", "1e999", "-1e999"})
        QTest::newRow(szTyped) << QString::fromLatin1(szTyped) << false;
    for (const char* szTyped : {"1,5", "1.500,25", "2,000"})
        QTest::newRow(szTyped) << QString::fromLatin1(szTyped) << true;
}

void TestTypedNumbers::noNumberNeverReachesTheRecord()
{
    QFETCH(QString, strTyped);
    QFETCH(bool, bComma);
    TabTestFixture f(TwoLasers());
    int nCells = 0;
    for (const TableDriver::ValueCell& cell : TableDriver::ValueCells(f.Dialog())) {
        if (!cell.pCell->lineEdit() || !cell.pCell->isEnabled())
            continue;
        const FactoryParams before = f.Collected();
        TableDriver::Type(cell.pTable, cell.nRow, cell.nColumn, strTyped);
        if (QTest::currentTestFailed())
            return;
        const FactoryParams after = f.Collected();
        const QString strNotFinite = NotFinite(after);
        QVERIFY2(strNotFinite.isEmpty(), qPrintable(cell.Where() + ": " + strNotFinite));
        const QList<SParamDifference> changed = CParamDiff::Compare(before, after);
        QVERIFY2(changed.size() <= 1, qPrintable(cell.Where() + QStringLiteral(": %1 fields changed").arg(changed.size())));
        // A number with a comma is refused or counts as 0, never as another number.
        if (bComma && !changed.isEmpty())
            QVERIFY2(changed.first().dB == 0.0, qPrintable(cell.Where() + ": " + CParamDiff::Describe(changed.first())));
        ++nCells;
    }
    // Every number cell a person can type into: 14 rows of 4 axes, less the
    // sub-heading and the five lists of each axis; six number rows for the
    // RF source and four for the glass tube; the eleven speeds; the one
    // distance of the Machine table.
    QCOMPARE(nCells, 9 * 4 + 6 + 4 + 11 + 1);
}

FACTORYMGR_TEST_MAIN(TestTypedNumbers)
#include "tst_typednumbers.moc"
