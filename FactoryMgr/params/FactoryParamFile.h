#pragma once

#include <QString>

struct FactoryParams;

// FactoryParam.ini and every .ini file the user imports or exports.
// An empty path means the default location, "<user data directory>/Data/FactoryParam.ini".

// Fills record from the file: false, with the record untouched, when there is
// no file or its marker is wrong (the latter also shows "File ID is incorrect!").
// Values are kept exactly as stored; a missing key takes its Missing value.
bool LoadFactoryParams(FactoryParams& record, const QString& strPath);

// Writes record as a complete new file and only then puts it in place of the
// old one, so a save that fails at any point leaves the previous file whole.
// The file holds exactly the keys written. False when it cannot be written.
bool SaveFactoryParams(const FactoryParams& record, const QString& strPath);

QString DefaultFactoryParamPath();
