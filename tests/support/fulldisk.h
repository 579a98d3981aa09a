#pragma once

#include <csignal>
#include <sys/resource.h>

/// A limit on the size of files stands for the full disk: write() takes bytes, the flush fails.
class FullDisk final
{
public:
    explicit FullDisk(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_usual);
        const rlimit tight{bytes, m_usual.rlim_max};
        setrlimit(RLIMIT_FSIZE, &tight);
    }
    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &m_usual); }

private:
    rlimit m_usual{};
};
