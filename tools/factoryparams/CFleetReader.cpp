#include "CFleetReader.h"

#include "CParamDiff.h"
#include "ParamWording.h"
#include "FactoryParamIo.h"

#include <QElapsedTimer>
#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

CFleetReader::CFleetReader(const FactoryParams& reference, const QString& strReferencePath,
                           const QList<CToolInputs::SInput>& files, const CDifferenceFilter& filter)
    : m_reference(reference)
    , m_files(files)
    , m_filter(filter)
    , m_results(size_t(files.size()))
    , m_ready(size_t(files.size()), 0)
{
    struct stat status {};
    if (::stat(QFile::encodeName(strReferencePath).constData(), &status) == 0) {
        m_bReferenceKnown = true;
        m_nReferenceDevice = status.st_dev;
        m_nReferenceInode = status.st_ino;
    }
    const int nThreads = qBound(1, int(std::thread::hardware_concurrency()), 16);
    for (int i = 0; i < nThreads; ++i)
        m_threads.emplace_back([this] { Work(); });
    // On a terminal, a long run says how far it is.
    if (::isatty(STDERR_FILENO) && files.size() >= 1000) {
        m_threads.emplace_back([this] {
            std::unique_lock<std::mutex> locker(m_mutex);
            QElapsedTimer shown;
            while (m_nDone < m_files.size() && !m_bStop) {
                if (!shown.isValid() || shown.elapsed() >= 250) {
                    std::fprintf(stderr, "\rfactoryparams: %s",
                                 ParamWording("%1 of %2 files read").arg(m_nDone).arg(m_files.size()).toLocal8Bit().constData());
                    shown.start();
                }
                m_changed.wait_for(locker, std::chrono::milliseconds(250));
            }
            std::fprintf(stderr, "\r\033[K");
        });
    }
}

CFleetReader::~CFleetReader()
{
    {
        const std::lock_guard<std::mutex> locker(m_mutex);
        m_bStop = true;
    }
    m_changed.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
}

void CFleetReader::Work()
{
    // Files are taken a few at a time: one lock per file would cost more
    // than reading a small one.
    constexpr qsizetype kChunk = 32;
    for (;;) {
        qsizetype nFirst = 0;
        qsizetype nEnd = 0;
        {
            const std::lock_guard<std::mutex> locker(m_mutex);
            if (m_bStop || m_nNext >= m_files.size())
                return;
            nFirst = m_nNext;
            nEnd = qMin(m_files.size(), nFirst + kChunk);
            m_nNext = nEnd;
        }
        for (qsizetype i = nFirst; i < nEnd; ++i)
            Read(i);
        {
            const std::lock_guard<std::mutex> locker(m_mutex);
            for (qsizetype i = nFirst; i < nEnd; ++i)
                m_ready[size_t(i)] = 1;
            m_nDone += nEnd - nFirst;
        }
        m_changed.notify_all();
    }
}

void CFleetReader::Read(qsizetype i)
{
    const CToolInputs::SInput& input = m_files[i];
    SResult& result = m_results[size_t(i)];
    if (!input.strWhy.isEmpty()) {
        result.strWhy = input.strWhy;
        return;
    }
    struct stat status {};
    if (m_bReferenceKnown && ::stat(QFile::encodeName(input.strPath).constData(), &status) == 0
        && status.st_dev == m_nReferenceDevice && status.st_ino == m_nReferenceInode) {
        result.bReference = true;
        return;
    }
    FactoryParams machine;
    QSet<QString> missing;
    const ParamFileStatus fileStatus = ReadFactoryParamFile(machine, input.strPath, &missing);
    if (fileStatus != ParamFileStatus::Loaded)
        result.strWhy = ParamFileProblem(input.strPath, fileStatus);
    else
        result.differences = m_filter.Counted(CParamDiff::Compare(m_reference, machine, {}, {}, missing));
}

const CFleetReader::SResult& CFleetReader::Wait(qsizetype i)
{
    std::unique_lock<std::mutex> locker(m_mutex);
    m_changed.wait(locker, [this, i] { return m_ready[size_t(i)] != 0; });
    return m_results[size_t(i)];
}
