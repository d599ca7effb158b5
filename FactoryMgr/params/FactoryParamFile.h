#pragma once

#include <QString>

struct FactoryParams;

// FactoryParam.ini and every .ini file the user imports or exports.
// An empty path means the default location, "<user data directory>/Data/FactoryParam.ini".

// Fills record from the file: false, with the record untouched, when there is
// no file, its marker is wrong or it is larger than 1 MiB (the latter two also
// show "File ID is incorrect!"; the size is logged). Values are kept exactly
// as stored; a missing key takes its Missing value.
bool LoadFactoryParams(FactoryParams& record, const QString& strPath);

// Writes record as a complete new file and only then puts it in place of the
// old one, so a save that fails at any point leaves the previous file whole.
// The file holds exactly the keys written. False when it cannot be written;
// the reason is logged and given in pError.
// Before the default file is replaced, its content is kept in the backups
// (CParamBackups); a backup that cannot be made is logged and the save goes on.
bool SaveFactoryParams(const FactoryParams& record, const QString& strPath, QString* pError = nullptr);

QString DefaultFactoryParamPath();
