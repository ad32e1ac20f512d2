// SQLite's file operations: reported to the disk, then done for real.
#include "powercutvfs.h"

#include <new>

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

// True when the power was on throughout. A change that the power cut interrupts may be on the disk, in part.
bool change(File &file, PowerCutDisk::Change change)
{
    PowerCutDisk &disk = file.owner.disk;
    if (disk.isOn())
        file.onDisk->pending.push_back(std::move(change));
    return disk.tick();
}

int write(sqlite3_file *file, const void *bytes, int size, sqlite3_int64 offset)
{
    if (!change(own(file), {static_cast<std::size_t>(offset), std::string(static_cast<const char *>(bytes), size)}))
        return SQLITE_IOERR_WRITE;
    const int result = own(file).system.xWrite(file, bytes, size, offset);
    if (own(file).isDatabase)
        own(file).owner.onDatabaseWrite();
    return result;
}

int truncate(sqlite3_file *file, sqlite3_int64 size)
{
    return change(own(file), {static_cast<std::size_t>(size), {}}) ? own(file).system.xTruncate(file, size)
                                                                   : SQLITE_IOERR_TRUNCATE;
}

// Not done for real: nobody will pull the plug of this machine.
int sync(sqlite3_file *file, int)
{
    PowerCutDisk &disk = own(file).owner.disk;
    if (!disk.tick())
        return SQLITE_IOERR_FSYNC;
    disk.sync(*own(file).onDisk);
    if (own(file).syncsFolder)
        disk.syncFolder();
    own(file).syncsFolder = false;
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
        File{owner, *file->pMethods, owner.disk.open(name, isDatabase), isDatabase,
             !isDatabase && (flags & SQLITE_OPEN_CREATE) != 0};
    sqlite3_io_methods &methods = isDatabase ? databaseMethods : journalMethods;
    methods = *file->pMethods;
    methods.iVersion = 2; // without memory-mapped reading, which would go past the file operations
    methods.xClose = close;
    methods.xWrite = write;
    methods.xTruncate = truncate;
    methods.xSync = sync;
    file->pMethods = &methods;
    return owner.disk.tick() ? SQLITE_OK : SQLITE_CANTOPEN;
}

int remove(sqlite3_vfs *vfs, const char *name, int syncFolder)
{
    PowerCutVfs &owner = *static_cast<PowerCutVfs *>(vfs->pAppData);
    if (owner.disk.isOn())
        owner.disk.remove(name);
    if (!owner.disk.tick())
        return SQLITE_IOERR_DELETE;
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
