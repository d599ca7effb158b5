#include "TableDriver.h"

#include "ComboBox.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>
#include <QtTest>

QString TableDriver::ValueCell::Where() const
{
    return QStringLiteral("%1 (%2, %3)").arg(pTable->objectName()).arg(nRow).arg(nColumn);
}

QList<TableDriver::ValueCell> TableDriver::ValueCells(const QWidget* pDialog)
{
    QList<ValueCell> cells;
    for (const char* szTable : {"tableWidget_motor", "tableWidget_laser", "tableWidget_speed", "tableWidget_machine"}) {
        auto* pTable = pDialog->findChild<QTableWidget*>(QString::fromLatin1(szTable));
        for (int r = 0; pTable && r < pTable->rowCount(); ++r)
            for (int c = 1; c < pTable->columnCount(); ++c)
                if (ComboBox* pCell = Cell(pTable, r, c))
                    cells << ValueCell{pTable, r, c, pCell};
    }
    return cells;
}

ComboBox* TableDriver::Cell(QTableWidget* pTable, int nRow, int nColumn)
{
    return qobject_cast<ComboBox*>(pTable->cellWidget(nRow, nColumn));
}

void TableDriver::Click(QTableWidget* pTable, int nRow, int nColumn)
{
    // Scrolled into view first, as a person does before clicking a cell.
    pTable->scrollTo(pTable->model()->index(nRow, nColumn));
    QCoreApplication::processEvents();
    const QRect cell = pTable->visualRect(pTable->model()->index(nRow, nColumn));
    QTest::mouseClick(pTable->viewport(), Qt::LeftButton, Qt::NoModifier, cell.center());
    QCoreApplication::processEvents();
}

void TableDriver::Type(QTableWidget* pTable, int nRow, int nColumn, const QString& strText)
{
    Click(pTable, nRow, nColumn);
    ComboBox* pCell = Cell(pTable, nRow, nColumn);
    if (!pCell || !pCell->lineEdit()) {
        const QString strWhy = QStringLiteral("%1 cell (%2, %3) shows \"%4\" and has no line edit to type \"%5\" into")
                                   .arg(pTable->objectName())
                                   .arg(nRow)
                                   .arg(nColumn)
                                   .arg(Shown(pTable, nRow, nColumn), strText);
        QTest::qFail(qPrintable(strWhy), __FILE__, __LINE__);
        return;
    }
    // The click alone gives the cell's line edit the keyboard focus, with its
    // text selected: the keys go wherever the focus is, as a keyboard's do.
    QWidget* pFocus = QApplication::focusWidget();
    if (pFocus != pCell->lineEdit()) {
        const QString strWhy = QStringLiteral("the click on %1 cell (%2, %3) left the keyboard focus on %4 \"%5\"")
                                   .arg(pTable->objectName())
                                   .arg(nRow)
                                   .arg(nColumn)
                                   .arg(pFocus ? QString::fromLatin1(pFocus->metaObject()->className()) : QStringLiteral("nothing"),
                                        pFocus ? pFocus->objectName() : QString());
        QTest::qFail(qPrintable(strWhy), __FILE__, __LINE__);
        return;
    }
    QTest::keyClicks(pFocus, strText);
    QTest::keyClick(pFocus, Qt::Key_Return);
    QCoreApplication::processEvents();
}

void TableDriver::ChooseWithoutClick(QTableWidget* pTable, int nRow, int nColumn, int nIndex)
{
    // A choice rebuilds the cell: fetch the list afresh after every key.
    for (int nKeys = 0; nKeys < 20; ++nKeys) {
        ComboBox* pCell = Cell(pTable, nRow, nColumn);
        if (!pCell || !pCell->comboBox()) {
            const QString strWhy = QStringLiteral("%1 cell (%2, %3) shows \"%4\" and has no list to choose %5 in")
                                       .arg(pTable->objectName())
                                       .arg(nRow)
                                       .arg(nColumn)
                                       .arg(Shown(pTable, nRow, nColumn))
                                       .arg(nIndex);
            QTest::qFail(qPrintable(strWhy), __FILE__, __LINE__);
            return;
        }
        if (pCell->comboBox()->currentIndex() == nIndex)
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
