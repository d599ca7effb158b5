#include "CPropertyTable.h"

#include "IResolution.h"

#include <QColor>
#include <QHeaderView>
#include <QTableWidget>

double CPropertyTable::Scaled(IResolution* pResolution, double dLength)
{
    return pResolution ? pResolution->Scale(dLength) : dLength;
}

void CPropertyTable::LockCell(QTableWidget* pTable, int nRow, int nColumn)
{
    QTableWidgetItem* pItem = pTable->item(nRow, nColumn);
    if (!pItem) {
        pItem = new QTableWidgetItem;
        pTable->setItem(nRow, nColumn, pItem);
    }
    pItem->setFlags(pItem->flags() & ~(Qt::ItemIsEditable | Qt::ItemIsSelectable));
    pItem->setBackground(QColor(204, 204, 204, 255));
}

void CPropertyTable::Format(QTableWidget* pTable, IResolution* pResolution)
{
    QHeaderView* pHeader = pTable->horizontalHeader();
    pHeader->setHighlightSections(false);
    for (int c = 0; c < pTable->columnCount(); ++c)
        pHeader->setSectionResizeMode(c, c == 0 ? QHeaderView::Fixed : QHeaderView::Stretch);
    if (pTable->columnCount() > 0)
        pTable->setColumnWidth(0, int(Scaled(pResolution, 255.0)));
    const int nRowHeight = int(Scaled(pResolution, 35.0));
    for (int r = 0; r < pTable->rowCount(); ++r) {
        LockCell(pTable, r, 0);
        pTable->setRowHeight(r, nRowHeight);
    }
}
