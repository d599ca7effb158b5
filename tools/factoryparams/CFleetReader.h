#pragma once

#include "CDifferenceFilter.h"
#include "CToolInputs.h"
#include "FactoryParams.h"

#include <QList>

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

// Reads a fleet's parameter files on every core and compares each with the
// reference, while the caller takes the results in the order of the files
// as soon as each is there (so that output can stream). On a terminal a
// progress line on standard error says how far it is.
class CFleetReader
{
public:
    struct SResult
    {
        QString strWhy;   // why the file could not be read; empty when it was
        QList<SParamDifference> differences;   // those the filter counts
        bool bReference = false;   // the reference file itself, found among the machines
    };

    CFleetReader(const FactoryParams& reference, const QString& strReferencePath,
                 const QList<CToolInputs::SInput>& files, const CDifferenceFilter& filter);
    ~CFleetReader();
    CFleetReader(const CFleetReader&) = delete;
    CFleetReader& operator=(const CFleetReader&) = delete;

    // The result of file i, once it is there.
    const SResult& Wait(qsizetype i);

private:
    void Work();
    void Read(qsizetype i);

    const FactoryParams& m_reference;
    const QList<CToolInputs::SInput>& m_files;
    const CDifferenceFilter& m_filter;
    bool m_bReferenceKnown = false;
    dev_t m_nReferenceDevice = 0;
    ino_t m_nReferenceInode = 0;
    std::vector<SResult> m_results;
    std::vector<char> m_ready;   // under m_mutex
    qsizetype m_nNext = 0;       // under m_mutex
    qsizetype m_nDone = 0;       // under m_mutex
    bool m_bStop = false;        // under m_mutex
    // The standard library's threads, mutex and condition: the race
    // detector follows them through a wait and a join (it cannot see into
    // Qt's, and took them for races).
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::thread> m_threads;
};
