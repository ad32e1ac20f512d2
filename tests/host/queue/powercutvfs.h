// The operating system as SQLite sees it, with a disk that can lose its power.
#pragma once

#include "powercutdisk.h"

#include <sqlite3.h>

#include <functional>

/// While the object lives, it is what SQLite opens databases with where nothing else is asked for; one at a time, used
/// on one thread. Everything really happens, through the ordinary system interface, in real files that the connections
/// read; the disk is told of what would have to be durable. When its power is off, all that would change a file fails.
///
/// The shared memory of the write-ahead index is passed on as it is: it is no durable state. It is never synced, and
/// whoever opens the database first after a cut makes it anew from the log, whatever the file holds.
class PowerCutVfs
{
public:
    explicit PowerCutVfs(PowerCutDisk &disk);
    ~PowerCutVfs();
    PowerCutVfs(const PowerCutVfs &) = delete;
    PowerCutVfs &operator=(const PowerCutVfs &) = delete;

    /// Called after each write to a database itself; must not throw.
    std::function<void()> onDatabaseWrite = [] {};

    /// The name to open a database without this object.
    static const char *ordinaryName();

private:
    struct File;
    struct Calls;

    PowerCutDisk &m_disk;
    sqlite3_vfs *m_ordinary;
    sqlite3_vfs m_vfs;
};
