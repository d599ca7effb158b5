#pragma once

#include <QString>
#include <QStringList>

// One family of helpers over an INI file in the platform settings format.
// A read opens the file, looks up "<section>/<key>" and converts the text with
// the settings layer's conversion: a missing key gives the default, a text
// that does not convert gives that conversion's zero.
// A write enters the section, sets the key and leaves the section. Between
// BeginBatchWrite and EndBatchWrite every write of the thread goes through one
// settings object, so the file is written once; otherwise each write opens
// the file for that one value.
int ReadIniInt(const QString& strSection, const QString& strKey, int nDefault, const QString& strPath);
double ReadIniDouble(const QString& strSection, const QString& strKey, double dDefault, const QString& strPath);
QString ReadIniString(const QString& strSection, const QString& strKey, const QString& strDefault,
                      const QString& strPath);

// The text stored under "<section>/<key>" as the file holds it (a value the
// settings layer splits at commas is joined again); false when the key is absent.
bool ReadIniText(const QString& strSection, const QString& strKey, const QString& strPath, QString* pText);
// Every key of the file, as "<section>/<key>".
QStringList ReadIniKeys(const QString& strPath);

void WriteIniInt(const QString& strSection, const QString& strKey, int nValue, const QString& strPath);
void WriteIniDouble(const QString& strSection, const QString& strKey, double dValue, const QString& strPath);
void WriteIniString(const QString& strSection, const QString& strKey, const QString& strValue,
                    const QString& strPath);

// Opens the module-wide shared settings object on strPath (ending any earlier one).
void BeginBatchWrite(const QString& strPath);
// Writes the shared object's file and drops it. False when the file could
// not be written completely (or when no batch was open).
bool EndBatchWrite();
