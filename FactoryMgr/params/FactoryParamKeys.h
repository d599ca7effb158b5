#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <cstddef>

struct FactoryParams;

// One field of the record, described once: where the parameter file keeps it,
// what a person reads about it, where the settings dialog shows it and how,
// and what the read-back check does with it. The table of these is constant,
// built once, and reads and writes any record through the field's place in
// it; the file, the diff, the checker, the tool, the dialog's tables and the
// read-back check all walk it.
//
// Adding a field is adding its descriptor here (and its row to the dialog's
// form and its words to the wording tables).
struct FactoryParamKey
{
    enum Group
    {
        GroupNone,    // one of a kind
        GroupAxis,    // nIndex 0..3: X, Y, Z, U
        GroupLaser    // nIndex 0..1: laser 1, 2
    };
    enum Type
    {
        TypeInt,      // int32_t
        TypeBool,     // bool, stored in the file as the integers 0 and 1
        TypeDouble
    };
    // The settings dialog's property tables, numbered as the dialog's
    // MarkInvalidCell numbers them.
    enum Table
    {
        TableNone = -1,
        TableMotor = 0,
        TableLaser = 1,
        TableSpeed = 2,
        TableMachine = 3
    };
    enum Editor
    {
        EditorNone,
        EditorNumber,   // shown as ToShown(value), 2 decimals
        EditorList      // choices: the value is the list index, unless the tab's rule says otherwise
    };
    // The record's sections, in the order the read-back check walks them.
    enum Section
    {
        SectionMotor,
        SectionLaser,
        SectionSpeed,
        SectionMachine
    };
    // What the read-back check does when the controller did not keep the field.
    enum Check
    {
        CheckNone,               // not compared
        CheckMarked,             // put back, its cell marked red
        CheckUnmarked,           // put back without a mark
        CheckMarkedWhenShifted   // put back; marked only while the laser section's row shift is set
    };

    Section section = SectionMotor;
    QString strSection;   // the file's section
    QString strKey;       // the file's key; empty for a field the file does not hold
    Type type = TypeDouble;
    std::size_t nOffset = 0;   // the field's place in a record
    // Stored when an existing file lacks the key. Many differ from a new
    // record's defaults on purpose (pulsePerMm 1 against 7.88627, outageDelay
    // 0 against 1000, the motor switches off against on): a record loaded
    // from an incomplete file is meant to differ from a fresh one.
    double dMissing = 0.0;

    const char* szLabel = "";  // the dialog's wording key for the field
    // The unit the dialog's label names (empty for counts, codes and
    // switches), and how many stored units make one shown: the pre-burning
    // frequency is kept in Hz and shown in kHz, 1000.
    const char* szUnit = "";
    double dStoredPerShown = 1.0;
    Group group = GroupNone;
    int nIndex = 0;
    // The values the record's field takes; switches 0..1.
    double dMin = 0.0;
    double dMax = 0.0;

    // Where the dialog shows the field: its table, its row (in the Laser
    // table the row's identifier, which a row keeps wherever it stands), the
    // column is Column(). No table: the dialog does not show it.
    Table table = TableNone;
    int nRow = -1;
    Editor editor = EditorNone;
    QStringList choices;   // wording keys of a list, in list order
    Check check = CheckNone;

    // Every field of the record: the file's keys in the file's order, then
    // the fields the file does not hold.
    static const QVector<FactoryParamKey>& All();
    // The keys of the parameter file, marker and time stamp aside, in the order it is read and written.
    static const QVector<FactoryParamKey>& File();
    // The key named strKey, or null.
    static const FactoryParamKey* Find(const QString& strKey);
    // The field the dialog shows in table at (row, column), or null; a Laser row is given by its identifier.
    static const FactoryParamKey* AtCell(Table table, int nRow, int nColumn);
    // The value of the field under strKey in record; NaN for a key the file does not have.
    static double ValueOf(const FactoryParams& record, const QString& strKey);

    bool InFile() const { return !strKey.isEmpty(); }
    bool IsDouble() const { return type == TypeDouble; }
    // The field's value in record as a number, as stored.
    double Value(const FactoryParams& record) const;
    // Sets the field from a value of the settings layer, as the plug-in's
    // reader does: its integer or double conversion, the conversion's zero
    // for a text that does not convert.
    void SetFromSettings(FactoryParams& record, const QVariant& value) const;
    // Sets the field from a number (an int field takes it rounded; callers
    // check the range first).
    void SetValue(FactoryParams& record, double dValue) const;
    // Whether the field holds equal numbers in both records (a NaN equals nothing).
    bool Same(const FactoryParams& a, const FactoryParams& b) const;
    // The dialog's column: the axis or laser number, 1 for one of a kind.
    int Column() const { return group == GroupNone ? 1 : nIndex + 1; }
    // "X", "Laser 1" and so on (untranslated wording keys); empty for one of a kind.
    QString Where() const;
    // Whether dValue is one the field takes: finite, whole for int and
    // switch fields, within the range.
    bool Takes(double dValue) const;
    // A stored value in the unit the label names, and back.
    double ToShown(double dStored) const { return dStored / dStoredPerShown; }
    double FromShown(double dShown) const { return dShown * dStoredPerShown; }
    // The value as the dialog shows it in a number cell: fixed, 2 decimals, in the label's unit.
    QString Shown(const FactoryParams& record) const;
    // A number as the dialog's cells show it: fixed notation, 2 decimals.
    static QString Fixed2(double dValue);
};
