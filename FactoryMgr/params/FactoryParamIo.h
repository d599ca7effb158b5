#pragma once

#include <QString>
#include <QtGlobal>

struct FactoryParams;

// Reading and writing a parameter file at a given path, with nothing shown to
// anyone: the plug-in, the host and the command-line tool all go through
// these two. Qt Core only.

enum class ParamFileStatus
{
    Loaded,       // the record holds the file's values
    NoFile,       // nothing (or no regular file) at the path
    TooLarge,     // larger than kMaxParamFileSize: not even looked into
    WrongMarker   // a file, but not a parameter file
};

// A real parameter file is about 4 KB; anything past this is refused before
// a single value is read (the settings layer would parse it once per value).
constexpr qint64 kMaxParamFileSize = 1024 * 1024;

// Fills record from the file; on anything but Loaded the record is untouched.
// Values are kept exactly as stored; a missing key takes its Missing value.
ParamFileStatus ReadFactoryParamFile(FactoryParams& record, const QString& strPath);

// Writes record as a complete new file and only then puts it in place of the
// old one, so a write that fails at any point leaves the previous file whole.
// The file holds exactly the keys written. False when it cannot be written,
// with the reason in pError.
bool WriteFactoryParamFile(const FactoryParams& record, const QString& strPath, QString* pError = nullptr);

// Whether strPath holds the parameter file marker (and is small enough to look at).
ParamFileStatus ParamFileKind(const QString& strPath);

// Why what is at strPath is no parameter file that can be read, in a few
// words: "no such file", "permission denied", "not a parameter file (...)".
// Empty for Loaded.
QString ParamFileProblem(const QString& strPath, ParamFileStatus status);
