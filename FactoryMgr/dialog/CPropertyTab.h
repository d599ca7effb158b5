#pragma once

#include "FactoryParamKeys.h"

#include <QModelIndex>
#include <QVector>

class ComboBox;
class DlgFactoryMgr;
class QTableWidget;
struct FactoryParams;

// What the Motor, Laser, Processing and Machine tabs share: their table, the
// field descriptors of its cells, the cell the last click chose, the making
// of each cell from its descriptor, and the taking of a typed number. Each
// tab adds only its rules.
class CPropertyTab
{
public:
    CPropertyTab(DlgFactoryMgr* pDialog, QTableWidget* pTable, FactoryParamKey::Table table, FactoryParams* pShown);
    virtual ~CPropertyTab() = default;

    // A click on a cell: logged, every cell back to showing its value, the
    // clicked one chosen and, where the tab allows, opened.
    void Clicked(const QModelIndex& index);
    // Makes (row, column) the current cell and opens its editor where the tab allows.
    void SelectCell(int nRow, int nColumn);
    // A number cell's line edit finished: the tab stores what was typed, and
    // the line under the table says why a value was not taken as typed.
    void EditFinished();

protected:
    // The tab's rules for a typed number in the current cell.
    virtual void StoreTyped() = 0;
    // The rest of a click, after the log line.
    virtual void ClickedCell(int nRow, int nColumn);
    // Whether choosing (row, column) opens its editor.
    virtual bool Opens(int nRow, int nColumn) const;
    // The row's identifier for the descriptors (the Laser tab's rows carry one).
    virtual int RowKey(int nRow) const { return nRow; }
    // What a number cell takes here, in the unit it shows: dMin to dMax (an
    // infinite dMax: no upper bound). False when this table never changes
    // the field. By default: anything from 0 up.
    virtual bool Bounds(const FactoryParamKey& key, double& dMin, double& dMax) const;
    // Gives the cell of key at row the tooltip that names the field, its unit
    // and what it takes, or its choices.
    void ExplainCell(const FactoryParamKey& key, int nRow) const;

    // The field shown at (row, column), or null.
    const FactoryParamKey* KeyAt(int nRow, int nColumn) const;
    // The fields of a column, by row.
    QVector<const FactoryParamKey*> KeysOfColumn(int nColumn) const;
    // Makes the cell of key at (row, its column) showing the value in the
    // dialog's record: a number as described, a list at the value's choice.
    ComboBox* MakeCell(const FactoryParamKey& key, int nRow) const;
    // Makes every cell of a column and connects its list, or its line edit,
    // to the dialog's slot; connected only once made, so the initial
    // selection tells the dialog nothing.
    using ListSlot = void (DlgFactoryMgr::*)(int);
    using EditSlot = void (DlgFactoryMgr::*)();
    void FillColumn(int nColumn, ListSlot onList, EditSlot onEdit) const;

    enum NoNumber
    {
        NoNumberRefused,   // text that is no number changes nothing
        NoNumberIsZero     // text that is no number counts as 0
    };
    // The number typed into the current cell, taken once and rounded to 3
    // decimals: false when nothing new was typed, or it is no number and the
    // tab refuses such text. pTyped, if given, receives the text as typed.
    bool TakeTypedNumber(double& dValue, NoNumber noNumber, QString* pTyped = nullptr);

    DlgFactoryMgr* m_pDialog;
    QTableWidget* m_pTable;
    FactoryParamKey::Table m_table;
    FactoryParams* m_pShown;   // the dialog's display record
    int m_nRow = -1;
    int m_nColumn = -1;

private:
    // The field's name as a sentence starts with it: "Y Max Speed".
    static QString FieldName(const FactoryParamKey& key);
    // The last text taken from a cell, and what it meant.
    struct Typed
    {
        bool bTaken = false;
        bool bNumber = false;
        NoNumber noNumber = NoNumberRefused;
        QString strText;
        double dValue = 0.0;   // as typed, before rounding
    };
    // What the note says of the typed text, given the value before and the
    // value stored now (both in the unit shown); empty when it was taken as typed.
    QString Why(const FactoryParamKey& key, const Typed& typed, double dBefore, double dNow) const;

    Typed* m_pTyped = nullptr;   // where the edit being finished records what it took
};
