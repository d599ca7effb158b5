#pragma once

#include <QSet>
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
// Values are kept exactly as stored; a missing key takes its Missing value
// (and, when pMissing is given, is named there).
ParamFileStatus ReadFactoryParamFile(FactoryParams& record, const QString& strPath,
                                     QSet<QString>* pMissing = nullptr);

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

// Puts bytes in place of the file at strFile (a link is followed, and its
// target replaced) in one step, as a save does: written beside it in full,
// read back, then renamed over it. The file keeps its mode and its owner; if
// the owner cannot be kept, nothing is replaced. The caller holds the file's
// lock (CParamFileLock). False, with the reason, when the file is unchanged.
bool ReplaceParamFileBytes(const QString& strFile, const QByteArray& bytes, QString* pError);

// Removes what saves in strDir left when they were killed: working files
// older than a minute, half-made copies, and lock files of processes that
// are gone. Every save does this first.
void RemoveSaveLeftovers(const QString& strDir);
