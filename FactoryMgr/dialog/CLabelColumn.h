#pragma once

#include <QObject>

class QTableWidget;

// The label column of a property table: its full width while the window has
// the room, narrower in a narrow window, down to what its longest label
// needs, so that more of the value columns stay in view beside it (they keep
// the width that shows their values, and the table scrolls sideways).
class CLabelColumn : public QObject
{
    Q_OBJECT
public:
    // Keeps pTable's column 0 at nFullWidth where there is the room; made
    // once per table, as its child.
    static void Keep(QTableWidget* pTable, int nFullWidth);

protected:
    bool eventFilter(QObject* pWatched, QEvent* event) override;

private:
    CLabelColumn(QTableWidget* pTable, int nFullWidth);
    void Fit();

    QTableWidget* m_pTable;
    int m_nFullWidth;
};
