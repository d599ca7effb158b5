#include "CPropertyTable.h"

#include "ComboBox.h"
#include "IResolution.h"

#include <QColor>
#include <QHeaderView>
#include <QLineEdit>
#include <QTableWidget>

#include <cmath>

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

ComboBox* CPropertyTable::MakeListCell(QTableWidget* pTable, int nRow, int nColumn, const QStringList& choices,
                                       int nCurrent, const QString& strItemText)
{
    // Made straight in the viewport, where setCellWidget puts it anyway: moved
    // there, it would receive a style change that makes every combo box build
    // its popup now, and under the table's style sheet Qt never releases the
    // style cache entry of such a popup (the memory grew with every opening).
    auto* pCell = new ComboBox(pTable->viewport(), ComboBox::ListMode);
    for (const QString& strChoice : choices)
        pCell->addItem(strChoice);
    pCell->setCurrentIndex(nCurrent);
    pTable->setItem(nRow, nColumn, new QTableWidgetItem(strItemText));
    pTable->setCellWidget(nRow, nColumn, pCell);
    pCell->show();
    return pCell;
}

ComboBox* CPropertyTable::MakeNumberCell(QTableWidget* pTable, int nRow, int nColumn, const QString& strText)
{
    auto* pCell = new ComboBox(pTable->viewport(), ComboBox::EditMode);
    pCell->setText(strText);
    pTable->setCellWidget(nRow, nColumn, pCell);
    pCell->setEditing(false);
    return pCell;
}

ComboBox* CPropertyTable::Cell(QTableWidget* pTable, int nRow, int nColumn)
{
    return qobject_cast<ComboBox*>(pTable->cellWidget(nRow, nColumn));
}

void CPropertyTable::ShowCellsAsText(QTableWidget* pTable)
{
    for (int r = 0; r < pTable->rowCount(); ++r)
        for (int c = 1; c < pTable->columnCount(); ++c)
            if (ComboBox* pCell = Cell(pTable, r, c))
                pCell->setEditing(pCell->mode() == ComboBox::ListMode);
}

void CPropertyTable::OpenCellEditor(QTableWidget* pTable, int nRow, int nColumn)
{
    if (nRow < 0 || nColumn < 0)
        return;
    if (ComboBox* pCell = Cell(pTable, nRow, nColumn))
        pCell->setEditing(true);
}

QString CPropertyTable::Fixed2(double dValue)
{
    return QString::number(dValue, 'f', 2);
}

double CPropertyTable::Round3(double dValue)
{
    // Past 2^52 a double has no fractions left to round, and times 1000 it
    // could overflow to infinity.
    if (!(std::fabs(dValue) < 4503599627370496.0))
        return dValue;
    return std::round(dValue * 1000.0) / 1000.0;
}

bool CPropertyTable::TakeTypedText(ComboBox* pCell, QString& strText)
{
    QLineEdit* pEdit = pCell ? pCell->lineEdit() : nullptr;
    if (!pEdit || !pEdit->isModified())
        return false;
    pEdit->setModified(false);
    strText = pEdit->text();
    return true;
}

bool CPropertyTable::ParseNumber(const QString& strText, double& dValue)
{
    bool bOk = false;
    dValue = strText.toDouble(&bOk);
    // "inf" converts, but no machine value is infinite: treat it as no number.
    return bOk && !std::isinf(dValue);
}
