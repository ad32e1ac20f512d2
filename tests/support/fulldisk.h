// A disk without space.
#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <QtCore/QtGlobal>

#include <csignal>

/// While it lives, no file of this process can grow beyond `size` bytes.
class FullDisk
{
public:
    explicit FullDisk(qint64 size)
    {
        ::signal(SIGXFSZ, SIG_IGN);
        EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &m_limit), 0);
        set({static_cast<rlim_t>(size), m_limit.rlim_max});
    }
    ~FullDisk() { set(m_limit); }
    Q_DISABLE_COPY_MOVE(FullDisk)

private:
    static void set(const rlimit &limit) { EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0); }

    rlimit m_limit = {};
};
