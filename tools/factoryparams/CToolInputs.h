#pragma once

#include <QList>
#include <QString>
#include <QTemporaryDir>

#include <memory>

// The files a command of factoryparams is given. An argument is a file, a
// folder (every *.ini file below it, not the Backups folders), or "-" for
// standard input; a list file gives one such argument per line. Standard
// input, a pipe ("<(...)") and a file whose name the settings layer cannot
// spell (not valid UTF-8) are read once into a private copy, so that the
// plug-in's own reader reads them like any file.
class CToolInputs
{
public:
    struct SInput
    {
        QString strName;   // as the person reads it: the argument, or the path found under a folder
        QString strPath;   // what the reader opens
        QString strWhy;    // why it cannot be read at all (empty when it can be tried)
        bool bCopy = false;   // strPath is a private copy: the file itself cannot be changed through it
    };

    // Adds what strArgument names. Folders are walked only when bFolders.
    void Add(const QString& strArgument, bool bFolders);
    // Adds every argument listed in the file strList ("-": standard input),
    // one per line. False, with the reason, when the list cannot be read.
    bool AddListFrom(const QString& strList, QString* pWhy);

    const QList<SInput>& Inputs() const { return m_inputs; }

private:
    void AddFolder(const QByteArray& folder, const QString& strName);
    // A private copy of what the bytes path (or standard input, when empty) holds.
    SInput Copy(const QByteArray& path, const QString& strName);

    QList<SInput> m_inputs;
    std::unique_ptr<QTemporaryDir> m_pCopies;
    int m_nCopies = 0;
    bool m_bStandardInputTaken = false;
};
