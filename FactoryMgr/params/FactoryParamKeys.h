#pragma once

#include <QString>
#include <QVector>

#include <cstdint>

struct FactoryParams;

// One key of the parameter file bound to its field in a record, in the order
// the file is read and written. Exactly one of the three pointers is set.
struct FactoryParamKey
{
    QString strSection;
    QString strKey;
    int32_t* pInt;
    bool* pBool;      // stored as the integers 0 and 1
    double* pDouble;
    double dMissing;  // stored when an existing file lacks the key

    // Every key of the file except the marker and the time stamp, bound to record.
    static QVector<FactoryParamKey> ForRecord(FactoryParams& record);
};
