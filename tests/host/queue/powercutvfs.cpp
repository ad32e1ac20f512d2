// SQLite's file operations: reported to the disk, then done for real.
#include "powercutdisk.h"

#include <new>
#include <utility>

namespace {

constexpr int journals = SQLITE_OPEN_MAIN_JOURNAL | SQLITE_OPEN_WAL;

/// What is kept of an open file, in memory behind the system's own object.
struct File
{
    PowerCutVfs &owner;
    const sqlite3_io_methods &system;
    PowerCutDisk::FilePtr onDisk;
    bool isDatabase;
    bool syncsFolder; // as SQLite does at the first sync of a journal that it may have made
};

std::size_t systemSize; // of the system's object
// The system's, with those replaced that change files: of databases, which have locks and shared memory, and of others.
sqlite3_io_methods databaseMethods{};
sqlite3_io_methods journalMethods{};

File &own(sqlite3_file *file)
{
    return *std::launder(reinterpret_cast<File *>(reinterpret_cast<char *>(file) + systemSize));
}

PowerCutDisk &diskBeforeOperation(PowerCutVfs &owner)
{
    owner.beforeOperation();
    return owner.disk;
}

void change(sqlite3_file *file, PowerCutDisk::Change change)
{
    diskBeforeOperation(own(file).owner);
    own(file).onDisk->pending.push_back(std::move(change));
}

int write(sqlite3_file *file, const void *bytes, int size, sqlite3_int64 offset)
{
    change(file, {static_cast<std::size_t>(offset), std::string(static_cast<const char *>(bytes), size)});
    const int result = own(file).system.xWrite(file, bytes, size, offset);
    if (own(file).isDatabase)
        own(file).owner.afterDatabaseWrite();
    return result;
}

int truncate(sqlite3_file *file, sqlite3_int64 size)
{
    change(file, {static_cast<std::size_t>(size), {}});
    return own(file).system.xTruncate(file, size);
}

// Not done for real: nobody will pull the plug of this machine.
int sync(sqlite3_file *file, int)
{
    PowerCutDisk &disk = diskBeforeOperation(own(file).owner);
    disk.sync(*own(file).onDisk);
    if (std::exchange(own(file).syncsFolder, false))
        disk.syncFolder();
    return SQLITE_OK;
}

int close(sqlite3_file *file)
{
    const int result = own(file).system.xClose(file);
    own(file).~File();
    return result;
}

int open(sqlite3_vfs *vfs, const char *name, sqlite3_file *file, int flags, int *outFlags)
{
    PowerCutVfs &owner = *static_cast<PowerCutVfs *>(vfs->pAppData);
    const int result = owner.system->xOpen(owner.system, name, file, flags, outFlags);
    const bool isDatabase = (flags & SQLITE_OPEN_MAIN_DB) != 0;
    if (result != SQLITE_OK || name == nullptr || !(isDatabase || (flags & journals) != 0))
        return result;
    // The database's own file was made, and its folder synced, before SQLite has seen it.
    new (reinterpret_cast<char *>(file) + systemSize)
        File{owner, *file->pMethods, diskBeforeOperation(owner).open(name, isDatabase), isDatabase,
             !isDatabase && (flags & SQLITE_OPEN_CREATE) != 0};
    sqlite3_io_methods &methods = isDatabase ? databaseMethods : journalMethods;
    methods = *file->pMethods;
    methods.iVersion = 2; // without memory-mapped reading, which would go past the file operations
    methods.xClose = close;
    methods.xWrite = write;
    methods.xTruncate = truncate;
    methods.xSync = sync;
    file->pMethods = &methods;
    return SQLITE_OK;
}

int remove(sqlite3_vfs *vfs, const char *name, int syncFolder)
{
    PowerCutVfs &owner = *static_cast<PowerCutVfs *>(vfs->pAppData);
    diskBeforeOperation(owner).remove(name);
    if (syncFolder != 0)
        owner.disk.syncFolder();
    return owner.system->xDelete(owner.system, name, 0);
}

} // namespace

PowerCutVfs::PowerCutVfs(PowerCutDisk &ofDisk) : disk(ofDisk), system(sqlite3_vfs_find("unix")), vfs(*system)
{
    systemSize = system->szOsFile;
    vfs.zName = "powercut";
    vfs.pAppData = this;
    vfs.szOsFile += static_cast<int>(sizeof(File));
    vfs.xOpen = open;
    vfs.xDelete = remove;
    sqlite3_vfs_register(&vfs, 1);
}

PowerCutVfs::~PowerCutVfs()
{
    sqlite3_vfs_unregister(&vfs);
    sqlite3_vfs_register(system, 1);
}
