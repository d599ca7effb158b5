#pragma once

#include <QString>
#include <QStringList>

class ComboBox;
class IResolution;
class QTableWidget;

// What every property table of the settings dialog shares: its look (the
// label column fixed at the display-scaled 255 pixels and greyed, rows the
// display-scaled 35 pixels high, the other columns stretched) and the making
// and switching of its cell editors. The tabs differ only in their rules.
class CPropertyTable
{
public:
    // The design length scaled for the screen; unscaled without the service.
    static double Scaled(IResolution* pResolution, double dLength);
    static void Format(QTableWidget* pTable, IResolution* pResolution);
    // Makes a cell read-only and grey, like a label.
    static void LockCell(QTableWidget* pTable, int nRow, int nColumn);

    // A list cell: the choices, the current one selected before anyone can
    // listen, a plain item with the current text beneath, shown.
    static ComboBox* MakeListCell(QTableWidget* pTable, int nRow, int nColumn, const QStringList& choices,
                                  int nCurrent, const QString& strItemText);
    // A number cell showing strText on its label.
    static ComboBox* MakeNumberCell(QTableWidget* pTable, int nRow, int nColumn, const QString& strText);
    // The cell editor at (row, column), or null.
    static ComboBox* Cell(QTableWidget* pTable, int nRow, int nColumn);
    // Every number cell shows its label, every list cell its list.
    static void ShowCellsAsText(QTableWidget* pTable);
    // Switches the editor at (row, column), if any, to editing.
    static void OpenCellEditor(QTableWidget* pTable, int nRow, int nColumn);

    // Numbers as the tables show them: fixed notation, 2 decimals.
    static QString Fixed2(double dValue);
    // What the record keeps of a typed number: at most 3 decimals.
    static double Round3(double dValue);
    // The text the user typed into a number cell, taken once: false when there
    // is no number cell or nothing new was typed. A line edit also reports
    // "editing finished" when it loses focus after Return, by then holding the
    // value the table wrote back; that must not be stored a second time.
    static bool TakeTypedText(ComboBox* pCell, QString& strText);
    // A typed text as a number; false for text that is none, or infinite.
    static bool ParseNumber(const QString& strText, double& dValue);
};
