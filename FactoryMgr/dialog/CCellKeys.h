#pragma once

#include <QObject>
#include <QPointer>

#include <functional>

class ComboBox;
class QKeyEvent;
class QTableWidget;
class QWidget;

// The keyboard of one property table, as a spreadsheet's: a current cell
// that a frame shows, moved by Tab, Shift+Tab, the arrow keys, Home and End
// (past the label column and disabled cells); a digit typed on a number cell
// opens it with that digit, F2 or Return with the value selected; Return
// commits and moves down, Tab commits and moves right, Escape gives the cell
// its stored value back and goes no further; a list opens with Space,
// Alt+Down or F4 and changes only by a choice in it.
//
// The keyboard focus rests on the current cell's editor, never on the table;
// while a number is typed, on its line edit. Opening a cell is the tab's own
// choosing of a cell, as a click does, without the click's log line.
class CCellKeys : public QObject
{
    Q_OBJECT
public:
    using Opener = std::function<void(int nRow, int nColumn)>;

    // The table's keyboard, made on first use (a child of the table).
    static CCellKeys* Of(QTableWidget* pTable);

    void SetOpener(Opener open);
    // Takes the keys of a cell editor made for the table.
    void Watch(ComboBox* pCell);
    // Makes (row, column) the current cell, framed, its editor focused.
    void SetCurrent(int nRow, int nColumn);

protected:
    bool eventFilter(QObject* pWatched, QEvent* event) override;

private:
    explicit CCellKeys(QTableWidget* pTable);

    // The cell whose editor w is, or is in; false for none.
    bool CellOf(QObject* pWidget, int& nRow, int& nColumn) const;
    bool Usable(int nRow, int nColumn) const;
    bool CellKey(ComboBox* pCell, int nRow, int nColumn, QKeyEvent* event);
    bool TypingKey(ComboBox* pCell, int nRow, int nColumn, QKeyEvent* event);
    // Moves the current cell as the key says; false for a key that moves nothing.
    bool Move(int nRow, int nColumn, QKeyEvent* event);
    // The focus leaves the table to the next (or previous) widget of the window.
    void Leave(QWidget* pFrom, bool bForward);
    void FocusCurrent();
    void PlaceFrame();

    QTableWidget* m_pTable;
    QObject* m_pViewport;
    QWidget* m_pFrame;
    Opener m_open;
};
