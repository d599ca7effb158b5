#include "TableDriver.h"

#include "ComboBox.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>
#include <QtTest>

ComboBox* TableDriver::Cell(QTableWidget* pTable, int nRow, int nColumn)
{
    return qobject_cast<ComboBox*>(pTable->cellWidget(nRow, nColumn));
}

void TableDriver::Click(QTableWidget* pTable, int nRow, int nColumn)
{
    const QRect cell = pTable->visualRect(pTable->model()->index(nRow, nColumn));
    QTest::mouseClick(pTable->viewport(), Qt::LeftButton, Qt::NoModifier, cell.center());
    QCoreApplication::processEvents();
}

void TableDriver::Type(QTableWidget* pTable, int nRow, int nColumn, const QString& strText)
{
    Click(pTable, nRow, nColumn);
    ComboBox* pCell = Cell(pTable, nRow, nColumn);
    if (!pCell || !pCell->lineEdit())
        return;
    QLineEdit* pEdit = pCell->lineEdit();
    pEdit->setFocus();
    pEdit->selectAll();
    QTest::keyClicks(pEdit, strText);
    QTest::keyClick(pEdit, Qt::Key_Return);
    QCoreApplication::processEvents();
}

void TableDriver::ChooseWithoutClick(QTableWidget* pTable, int nRow, int nColumn, int nIndex)
{
    // A choice rebuilds the cell: fetch the list afresh after every key.
    for (int nKeys = 0; nKeys < 20; ++nKeys) {
        ComboBox* pCell = Cell(pTable, nRow, nColumn);
        if (!pCell || !pCell->comboBox() || pCell->comboBox()->currentIndex() == nIndex)
            return;
        QComboBox* pCombo = pCell->comboBox();
        QTest::keyClick(pCombo, pCombo->currentIndex() < nIndex ? Qt::Key_Down : Qt::Key_Up);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }
}

void TableDriver::Choose(QTableWidget* pTable, int nRow, int nColumn, int nIndex)
{
    Click(pTable, nRow, nColumn);
    ChooseWithoutClick(pTable, nRow, nColumn, nIndex);
}

QString TableDriver::Shown(QTableWidget* pTable, int nRow, int nColumn)
{
    ComboBox* pCell = Cell(pTable, nRow, nColumn);
    if (!pCell)
        return pTable->item(nRow, nColumn) ? pTable->item(nRow, nColumn)->text() : QString();
    return pCell->mode() == ComboBox::ListMode ? pCell->comboBox()->currentText() : pCell->label()->text();
}
