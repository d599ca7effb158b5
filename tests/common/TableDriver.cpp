#include "TableDriver.h"

#include "ComboBox.h"

#include <QApplication>
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
    // The click alone gives the cell's line edit the keyboard focus, with its
    // text selected: the keys go wherever the focus is, as a keyboard's do.
    QWidget* pFocus = QApplication::focusWidget();
    if (pFocus != pCell->lineEdit())
        QTest::qFail("the click did not give the cell's line edit the keyboard focus", __FILE__, __LINE__);
    if (!pFocus)
        return;
    QTest::keyClicks(pFocus, strText);
    QTest::keyClick(pFocus, Qt::Key_Return);
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
