#pragma once

#include <QString>
#include <QStringList>

class ComboBox;
class IResolution;
class QTableWidget;
class QTableWidgetItem;

// What every property table of the settings dialog shares: its look (the
// label column fixed at the display-scaled 255 pixels, narrower only in a
// window too narrow for it and the values, and greyed, rows the
// display-scaled 35 pixels high, the other columns stretched), the making
// and switching of its cell editors, and the red marks of values the
// controller did not keep. The tabs differ only in their rules.
//
// A mark is kept in the table's CCellMarks; the cell's item (a red
// background) and editor (a red style sheet) show it, and a cell editor made
// anew for a marked cell shows it again. Every
// value cell has an item, whose accessible text is what the cell shows, so
// that assistive technology reads the table as the eye does.
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
    // The cell's item, made empty when there is none.
    static QTableWidgetItem* Item(QTableWidget* pTable, int nRow, int nColumn);
    // The cell editor at (row, column), or null.
    static ComboBox* Cell(QTableWidget* pTable, int nRow, int nColumn);
    // Every number cell shows its label, every list cell its list.
    static void ShowCellsAsText(QTableWidget* pTable);
    // Switches the editor at (row, column), if any, to editing.
    static void OpenCellEditor(QTableWidget* pTable, int nRow, int nColumn);
    // Ends typing in the table's open number cell, if it has the keyboard
    // focus: the focus goes to the cell itself and the line edit reports
    // "editing finished", so the typed text is stored before the table's
    // current cell moves on.
    static void CommitTyping(QTableWidget* pTable);

    // Marks: the item red with strShown (the put-back value), the editor red
    // showing strShown on its label; a list's choice is the caller's to set.
    static void MarkCell(QTableWidget* pTable, int nRow, int nColumn, const QString& strShown);
    // Removes the cell's red, if it has any.
    static void ClearMark(QTableWidget* pTable, int nRow, int nColumn);
    static bool IsMarked(QTableWidget* pTable, int nRow, int nColumn);
    // Tells assistive technology what the cell shows and whether it is marked,
    // and gives the cell its tooltip: its explanation, and for a marked cell
    // what the controller did.
    static void Describe(QTableWidget* pTable, int nRow, int nColumn);
    // Keeps the table's value columns at least as wide as the cell needs to
    // show all of its value (the table scrolls sideways when the window is narrower).
    static void KeepWidthFor(QTableWidget* pTable, ComboBox* pCell);
    // Keeps what the cell's tooltip says of its field, and describes the cell.
    static void SetExplanation(QTableWidget* pTable, int nRow, int nColumn, const QString& strText);

    // What the record keeps of a typed number: at most 3 decimals.
    static double Round3(double dValue);
    // The text the user typed into a number cell, taken once: false when there
    // is no number cell or nothing new was typed. A line edit also reports
    // "editing finished" when it loses focus after Return, by then holding the
    // value the table wrote back; that must not be stored a second time.
    static bool TakeTypedText(ComboBox* pCell, QString& strText);
    // A stored number as a whole number, toward zero; not-a-number is 0 and
    // what lies beyond int is the nearest int.
    static int ToInt(double dValue);
    // A typed text as a number; false for text that is none, or infinite.
    static bool ParseNumber(const QString& strText, double& dValue);
};
