#include "CLabelColumn.h"

#include <QEvent>
#include <QHeaderView>
#include <QTableWidget>

void CLabelColumn::Keep(QTableWidget* pTable, int nFullWidth)
{
    CLabelColumn* pKept = pTable->findChild<CLabelColumn*>(QString(), Qt::FindDirectChildrenOnly);
    if (pKept)
        pKept->m_nFullWidth = nFullWidth;
    else
        pKept = new CLabelColumn(pTable, nFullWidth);
    pKept->Fit();
}

CLabelColumn::CLabelColumn(QTableWidget* pTable, int nFullWidth)
    : QObject(pTable)
    , m_pTable(pTable)
    , m_nFullWidth(nFullWidth)
{
    pTable->viewport()->installEventFilter(this);
}

bool CLabelColumn::eventFilter(QObject* pWatched, QEvent* event)
{
    if (event->type() == QEvent::Resize)
        Fit();
    return QObject::eventFilter(pWatched, event);
}

void CLabelColumn::Fit()
{
    if (m_pTable->columnCount() == 0)
        return;
    // What the longest label needs, in the table's font, with the cell's margins.
    int nLabels = 0;
    for (int r = 0; r < m_pTable->rowCount(); ++r)
        if (const QTableWidgetItem* pItem = m_pTable->item(r, 0))
            nLabels = qMax(nLabels, m_pTable->fontMetrics().horizontalAdvance(pItem->text()) + 12);
    QHeaderView* pHeader = m_pTable->horizontalHeader();
    const int nValues = (m_pTable->columnCount() - 1) * pHeader->minimumSectionSize();
    const int nWidth = qMax(qMin(nLabels, m_nFullWidth), qMin(m_nFullWidth, m_pTable->viewport()->width() - nValues));
    if (pHeader->sectionSize(0) != nWidth)
        pHeader->resizeSection(0, nWidth);
}
