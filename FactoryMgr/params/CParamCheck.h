#pragma once

#include <QList>
#include <QString>

struct FactoryParamKey;

// One thing wrong in a parameter file.
struct SParamProblem
{
    QString strFile;
    QString strKey;     // empty for the file as a whole
    QString strValue;   // the text the file holds
    QString strWhat;    // what is wrong, in a few words
    bool bUnreadable = false;   // the file cannot be read as a parameter file at all
    // What a repair does with it (strWhat is for people, in their language).
    enum Kind
    {
        KindValue,        // a value, the time or the whole file
        KindUnknownKey,   // a key the plug-in does not read: left alone
        KindRepeated      // a key given more than once
    } kind = KindValue;
};

// Checks parameter files against what a controller takes: the marker, every
// key present and none unknown, and each value a number of the right kind
// within the range of its field. Reads through the same settings layer as the
// plug-in's reader. Qt Core only.
class CParamCheck
{
public:
    static QList<SParamProblem> CheckFile(const QString& strPath);
    // The value a text gives the key's field, when the field takes it;
    // otherwise false, with the reason in pWhy.
    static bool Parse(const FactoryParamKey& key, const QString& strText, double* pValue, QString* pWhy);
};
