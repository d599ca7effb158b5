#pragma once

#include <QObject>

class QLabel;
class QTableWidget;

// The line under a property table that says why a typed value was not taken
// as typed. It is no box: it waits for nothing, and the next edit of the
// table replaces or removes it. Assistive technology is told each new note.
class CCellNote : public QObject
{
    Q_OBJECT
public:
    // The table's note line, made on first use beneath the table.
    static CCellNote* Of(QTableWidget* pTable);

    // Shows strText; an empty text hides the line.
    void Say(const QString& strText);
    QString Text() const;

private:
    explicit CCellNote(QTableWidget* pTable);

    QLabel* m_pLabel;
};
