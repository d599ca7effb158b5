#pragma once

#include <QList>
#include <QString>

class ComboBox;
class QTableWidget;
class QWidget;

// Drives a property table as a person does: click a cell, type a number and
// press Return, or pick in a cell's list with the keyboard.
class TableDriver
{
public:
    struct ValueCell
    {
        QTableWidget* pTable;
        int nRow;
        int nColumn;
        ComboBox* pCell;
        // "tableWidget_motor (10, 1)", for messages.
        QString Where() const;
    };
    // Every cell with a cell editor in the four property tables of pDialog
    // (Motor, Laser, Processing, Machine), table by table, row by row.
    static QList<ValueCell> ValueCells(const QWidget* pDialog);

    static void Click(QTableWidget* pTable, int nRow, int nColumn);
    // Clicks the cell, types strText into its editor and presses Return.
    static void Type(QTableWidget* pTable, int nRow, int nColumn, const QString& strText);
    // Clicks the cell and moves its list to nIndex with the arrow keys.
    static void Choose(QTableWidget* pTable, int nRow, int nColumn, int nIndex);
    // Moves the cell's list by keyboard only, without a click on it, until it
    // shows nIndex (a list that snaps back gets up to 20 keys). Fails the test
    // when the cell has no list; Type fails it when the cell has no line edit
    // or the click did not give that line edit the focus.
    static void ChooseWithoutClick(QTableWidget* pTable, int nRow, int nColumn, int nIndex);
    static ComboBox* Cell(QTableWidget* pTable, int nRow, int nColumn);
    // What the cell shows: the number label or the list's text.
    static QString Shown(QTableWidget* pTable, int nRow, int nColumn);
};
