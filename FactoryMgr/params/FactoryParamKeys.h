#pragma once

#include <QString>
#include <QVariant>
#include <QVector>

#include <cstdint>

struct FactoryParams;

// One key of the parameter file bound to its field in a record, in the order
// the file is read and written. Exactly one of the three pointers is set.
//
// It also says what the field is to a person: the label the settings dialog
// gives it (its wording key, translated by whoever shows it), the axis or
// laser it belongs to, its unit, and the range of values a controller takes.
// This table is the one place that ties the file, the record and the dialog's
// words together.
struct FactoryParamKey
{
    enum Group
    {
        GroupNone,    // one of a kind
        GroupAxis,    // nIndex 0..3: X, Y, Z, U
        GroupLaser    // nIndex 0..1: laser 1, 2
    };

    QString strSection;
    QString strKey;
    int32_t* pInt;
    bool* pBool;      // stored as the integers 0 and 1
    double* pDouble;
    double dMissing;  // stored when an existing file lacks the key

    const char* szLabel = "";  // the dialog's wording key for the field
    // The unit the dialog's label names, and what the stored value is
    // multiplied by to be shown in it (the pre-burning frequency is kept in
    // Hz and shown in kHz); empty for counts, codes and switches.
    const char* szUnit = "";
    double dShownScale = 1.0;
    Group group = GroupNone;
    int nIndex = 0;
    // The values the record's field takes; switches 0..1.
    double dMin = 0.0;
    double dMax = 0.0;

    // Every key of the file except the marker and the time stamp, bound to record.
    static QVector<FactoryParamKey> ForRecord(FactoryParams& record);
    // The value of the field under strKey in record; NaN for a key the file does not have.
    static double ValueOf(const FactoryParams& record, const QString& strKey);

    // The field's value as a number, as stored.
    double Value() const;
    // Sets the field from a value of the settings layer, as the plug-in's
    // reader does: its integer or double conversion, the conversion's zero
    // for a text that does not convert.
    void SetFromSettings(const QVariant& value) const;
    // Sets the field from a number (an int field takes it rounded; callers
    // check the range first).
    void SetValue(double dValue) const;
    // "X", "Laser 1" and so on (untranslated wording keys); empty for one of a kind.
    QString Where() const;
    // Whether dValue is one the field takes: finite, whole for int and
    // switch fields, within the range.
    bool Takes(double dValue) const;
};
