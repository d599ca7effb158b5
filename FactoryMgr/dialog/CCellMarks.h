#pragma once

#include <QObject>
#include <QPair>
#include <QSet>

class QTableWidget;

// The cells of one property table whose values the controller did not keep:
// the one record of the marks. The red of a cell's item and editor and what
// assistive technology is told are painted from it. It lives with its table
// (a child object), so cell editors made anew show the marks again.
class CCellMarks : public QObject
{
    Q_OBJECT
public:
    // The table's marks, made empty on first use.
    static CCellMarks* Of(QTableWidget* pTable);

    void Add(int nRow, int nColumn);
    // False when the cell was not marked.
    bool Remove(int nRow, int nColumn);
    bool Has(int nRow, int nColumn) const;
    // Forgets every mark, for a table whose rows are made anew.
    void Forget();

private:
    explicit CCellMarks(QTableWidget* pTable);

    QSet<QPair<int, int>> m_cells;
};
