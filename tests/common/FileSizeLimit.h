#pragma once

#include <sys/resource.h>

// While it lives, this process can write no file larger than nBytes: a disk
// where saves fail, even for root (whom permission bits do not stop). The
// signal such a write raises is ignored, so the write itself fails.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t nBytes);
    ~FileSizeLimit();
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_before{};
};
