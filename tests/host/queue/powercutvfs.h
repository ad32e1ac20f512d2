// The operating system as SQLite sees it, with every change of a file reported to a disk that may lose its power.
#pragma once

#include "powercutdisk.h"

#include <sqlite3.h>

#include <functional>

/// While the object lives, it is what SQLite opens databases with where nothing else is asked for; one at a time, used
/// on one thread. Everything really happens, in real files that the connections read; the disk is told of what would
/// have to be durable.
///
/// The shared memory of the write-ahead index stays the system's own: it is no durable state. It is never synced, and
/// whoever opens the database first after a cut makes it anew from the log, whatever the file holds.
struct PowerCutVfs
{
    explicit PowerCutVfs(PowerCutDisk &disk);
    ~PowerCutVfs();
    PowerCutVfs(const PowerCutVfs &) = delete;
    PowerCutVfs &operator=(const PowerCutVfs &) = delete;

    PowerCutDisk &disk;
    std::function<void()> beforeOperation = [] {};    ///< Called before anything that changes or syncs the disk.
    std::function<void()> afterDatabaseWrite = [] {}; ///< Called after each write to a database itself, not to its log.
    sqlite3_vfs *system;
    sqlite3_vfs vfs;
};
