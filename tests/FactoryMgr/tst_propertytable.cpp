#include "TestMain.h"

#include "CPropertyTable.h"
#include "IResolution.h"

#include <QTableWidget>

#include <limits>

namespace {
// A scaling service that answers every length with one fixed value, or
// scales by a factor when the value is 0.
class FixedResolution : public IResolution
{
public:
    double m_dAnswer = 0.0;
    double m_dFactor = 0.0;

    double GetLogicalDpi() override { return 96.0; }
    double GetScaleFactor() override { return m_dFactor; }
    double Scale(double dLength) override { return m_dFactor != 0.0 ? dLength * m_dFactor : m_dAnswer; }
};
}

class TestPropertyTable : public QObject
{
    Q_OBJECT
private slots:
    void scaledSizes();
    void oddScalesKeepTheDesignSizes_data();
    void oddScalesKeepTheDesignSizes();
};

void TestPropertyTable::scaledSizes()
{
    FixedResolution resolution;
    resolution.m_dFactor = 1.5;
    QTableWidget table(3, 2);
    CPropertyTable::Format(&table, &resolution);
    QCOMPARE(table.columnWidth(0), 382);   // 382.5, toward zero
    QCOMPARE(table.rowHeight(2), 52);
}

void TestPropertyTable::oddScalesKeepTheDesignSizes_data()
{
    QTest::addColumn<double>("dAnswer");
    QTest::newRow("nan") << std::numeric_limits<double>::quiet_NaN();
    QTest::newRow("inf") << std::numeric_limits<double>::infinity();
    QTest::newRow("-inf") << -std::numeric_limits<double>::infinity();
    QTest::newRow("1e20") << 1e20;
    QTest::newRow("-1e20") << -1e20;
    QTest::newRow("zero") << 0.0;
    QTest::newRow("negative") << -35.0;
}

void TestPropertyTable::oddScalesKeepTheDesignSizes()
{
    QFETCH(double, dAnswer);
    FixedResolution resolution;
    resolution.m_dAnswer = dAnswer;
    QTableWidget table(3, 2);
    CPropertyTable::Format(&table, &resolution);
    QCOMPARE(table.columnWidth(0), 255);
    for (int r = 0; r < table.rowCount(); ++r)
        QCOMPARE(table.rowHeight(r), 35);
}

FACTORYMGR_TEST_MAIN(TestPropertyTable)
#include "tst_propertytable.moc"
