#include "CCellMarks.h"

#include <QTableWidget>

CCellMarks::CCellMarks(QTableWidget* pTable)
    : QObject(pTable)
{
}

CCellMarks* CCellMarks::Of(QTableWidget* pTable)
{
    auto* pMarks = pTable->findChild<CCellMarks*>(QString(), Qt::FindDirectChildrenOnly);
    return pMarks ? pMarks : new CCellMarks(pTable);
}

void CCellMarks::Add(int nRow, int nColumn)
{
    m_cells.insert({nRow, nColumn});
}

bool CCellMarks::Remove(int nRow, int nColumn)
{
    return m_cells.remove({nRow, nColumn});
}

bool CCellMarks::Has(int nRow, int nColumn) const
{
    return m_cells.contains({nRow, nColumn});
}

void CCellMarks::Forget()
{
    m_cells.clear();
}
