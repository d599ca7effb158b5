#pragma once

#include <QVariant>
#include <QWidget>

class QComboBox;
class QLabel;
class QLineEdit;

// The one cell editor of every property table: by a mode fixed at
// construction either a list (a QComboBox) or a number (a QLineEdit), plus a
// label that shows a number while its cell is not being edited.
//
// It covers its cell with an opaque background; numbers on the label, in the
// line edit and list choices sit vertically centred with one left padding, so
// the tables read as one table. A list that the person has not opened lets
// the mouse wheel scroll the table instead of changing the choice, and a
// press on a list is a click on its table cell. A double click on a number
// selects all of it.
class ComboBox : public QWidget
{
    Q_OBJECT
public:
    enum Mode
    {
        ListMode = 0,
        EditMode = 1
    };

    Q_INVOKABLE explicit ComboBox(QWidget* parent = nullptr, int nMode = ListMode);
    ~ComboBox() override;

    void addItem(const QString& strText);
    void setItemData(int nIndex, const QVariant& value, int nRole = Qt::UserRole);
    QVariant itemData(int nIndex, int nRole = Qt::UserRole) const;
    int currentIndex() const;
    void setCurrentIndex(int nIndex);
    QComboBox* comboBox() const;
    QLineEdit* lineEdit() const;
    QLabel* label() const;
    // Edit mode: the line edit's text; both modes: the label's text (label hidden).
    void setText(const QString& strText);
    QString text() const;
    int mode() const;
    // What the cell shows a person: the list's choice, or the number.
    QString shownText() const;
    // List mode: show or hide the list; it never takes the keyboard focus
    // from the cell being edited. Edit mode: the line edit (on), focused with
    // its text selected so that typing replaces the value, or the label (off).
    void setEditing(bool bOn);

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* pWatched, QEvent* event) override;

private:
    void AlignContents();

    int m_nMode;
    QComboBox* m_pCombo;
    QLineEdit* m_pLineEdit;
    QLabel* m_pLabel;
};

Q_DECLARE_METATYPE(ComboBox*)
