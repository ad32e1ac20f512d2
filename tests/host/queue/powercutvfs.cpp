// SQLite's file operations: reported to the disk, then done for real.
#include "powercutvfs.h"

#include <new>
#include <stdexcept>

namespace {

constexpr const char *systemName = "unix";
constexpr int tracked = SQLITE_OPEN_MAIN_DB | SQLITE_OPEN_MAIN_JOURNAL | SQLITE_OPEN_WAL;
constexpr int journals = SQLITE_OPEN_MAIN_JOURNAL | SQLITE_OPEN_WAL;

} // namespace

/// One open file; the system's own file object follows it in memory.
struct PowerCutVfs::File : sqlite3_file
{
    PowerCutVfs *vfs;
    PowerCutDisk::FilePtr file; // null: of no interest, a temporary file
    bool isDatabase;
    bool syncsFolder; // as SQLite does at the first sync of a journal, which may be new
};

struct PowerCutVfs::Calls
{
    static File &own(sqlite3_file *file) { return static_cast<File &>(*file); }
    static sqlite3_file *system(sqlite3_file *file) { return reinterpret_cast<sqlite3_file *>(&own(file) + 1); }

    template <auto method, class Result, class... Args>
    static Result pass(sqlite3_file *file, Args... args)
    {
        return (system(file)->pMethods->*method)(system(file), args...);
    }

    static int open(sqlite3_vfs *vfs, const char *name, sqlite3_file *file, int flags, int *outFlags);
    static int remove(sqlite3_vfs *vfs, const char *name, int syncFolder);
    static int random(sqlite3_vfs *vfs, int size, char *bytes);
    static int close(sqlite3_file *file);
    static int write(sqlite3_file *file, const void *bytes, int size, sqlite3_int64 offset);
    static int truncate(sqlite3_file *file, sqlite3_int64 size);
    static int sync(sqlite3_file *file, int flags);
    static const sqlite3_io_methods methods;
};

// Version 2: without memory-mapped reading, which would go past the file operations.
const sqlite3_io_methods PowerCutVfs::Calls::methods = {
    .iVersion = 2,
    .xClose = close,
    .xRead = pass<&sqlite3_io_methods::xRead>,
    .xWrite = write,
    .xTruncate = truncate,
    .xSync = sync,
    .xFileSize = pass<&sqlite3_io_methods::xFileSize>,
    .xLock = pass<&sqlite3_io_methods::xLock>,
    .xUnlock = pass<&sqlite3_io_methods::xUnlock>,
    .xCheckReservedLock = pass<&sqlite3_io_methods::xCheckReservedLock>,
    .xFileControl = pass<&sqlite3_io_methods::xFileControl>,
    .xSectorSize = pass<&sqlite3_io_methods::xSectorSize>,
    .xDeviceCharacteristics = pass<&sqlite3_io_methods::xDeviceCharacteristics>,
    .xShmMap = pass<&sqlite3_io_methods::xShmMap>,
    .xShmLock = pass<&sqlite3_io_methods::xShmLock>,
    .xShmBarrier = pass<&sqlite3_io_methods::xShmBarrier>,
    .xShmUnmap = pass<&sqlite3_io_methods::xShmUnmap>,
    .xFetch = nullptr,
    .xUnfetch = nullptr,
};

int PowerCutVfs::Calls::open(sqlite3_vfs *vfs, const char *name, sqlite3_file *file, int flags, int *outFlags)
{
    auto *const self = static_cast<PowerCutVfs *>(vfs->pAppData);
    File *const opened = new (file) File{{nullptr},
                                         self,
                                         nullptr,
                                         (flags & SQLITE_OPEN_MAIN_DB) != 0,
                                         (flags & journals) != 0 && (flags & SQLITE_OPEN_CREATE) != 0};
    const int result = self->m_ordinary->xOpen(self->m_ordinary, name, system(file), flags, outFlags);
    if (result != SQLITE_OK)
        return result;
    opened->pMethods = &methods;
    if (name == nullptr || (flags & tracked) == 0)
        return SQLITE_OK;
    // The database's own file was made and its folder synced before SQLite has seen it.
    opened->file = self->m_disk.open(name, opened->isDatabase);
    return self->m_disk.tick() ? SQLITE_OK : SQLITE_CANTOPEN;
}

int PowerCutVfs::Calls::remove(sqlite3_vfs *vfs, const char *name, int syncFolder)
{
    auto *const self = static_cast<PowerCutVfs *>(vfs->pAppData);
    if (!self->m_disk.isOn())
        return SQLITE_IOERR_DELETE;
    self->m_disk.remove(name);
    if (!self->m_disk.tick())
        return SQLITE_IOERR_DELETE;
    if (syncFolder != 0)
        self->m_disk.syncFolder();
    return self->m_ordinary->xDelete(self->m_ordinary, name, 0);
}

// The only chance in SQLite's files are the log's salts; with the same ones a seed gives the same run.
int PowerCutVfs::Calls::random(sqlite3_vfs *, int size, char *bytes)
{
    for (int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i);
    return size;
}

int PowerCutVfs::Calls::close(sqlite3_file *file)
{
    const int result = pass<&sqlite3_io_methods::xClose, int>(file);
    own(file).~File();
    return result;
}

int PowerCutVfs::Calls::write(sqlite3_file *file, const void *bytes, int size, sqlite3_int64 offset)
{
    const File &own = Calls::own(file);
    PowerCutDisk &disk = own.vfs->m_disk;
    if (own.file && disk.isOn()) {
        PowerCutDisk::write(*own.file, offset, static_cast<const char *>(bytes), size);
        if (!disk.tick())
            return SQLITE_IOERR_WRITE;
    }
    if (!disk.isOn())
        return SQLITE_IOERR_WRITE;
    const int result = pass<&sqlite3_io_methods::xWrite, int>(file, bytes, size, offset);
    if (own.isDatabase)
        own.vfs->onDatabaseWrite();
    return result;
}

int PowerCutVfs::Calls::truncate(sqlite3_file *file, sqlite3_int64 size)
{
    const File &own = Calls::own(file);
    PowerCutDisk &disk = own.vfs->m_disk;
    if (own.file && disk.isOn()) {
        PowerCutDisk::truncate(*own.file, size);
        if (!disk.tick())
            return SQLITE_IOERR_TRUNCATE;
    }
    return disk.isOn() ? pass<&sqlite3_io_methods::xTruncate, int>(file, size) : SQLITE_IOERR_TRUNCATE;
}

// Not passed on: nobody will pull the plug of this machine.
int PowerCutVfs::Calls::sync(sqlite3_file *file, int)
{
    File &own = Calls::own(file);
    PowerCutDisk &disk = own.vfs->m_disk;
    if (!own.file)
        return SQLITE_OK;
    if (!disk.tick())
        return SQLITE_IOERR_FSYNC;
    disk.sync(*own.file);
    if (own.syncsFolder)
        disk.syncFolder();
    own.syncsFolder = false;
    return SQLITE_OK;
}

const char *PowerCutVfs::ordinaryName()
{
    return systemName;
}

PowerCutVfs::PowerCutVfs(PowerCutDisk &disk)
    : m_disk(disk), m_ordinary(sqlite3_vfs_find(systemName)), m_vfs(*m_ordinary)
{
    m_vfs.zName = "powercut";
    m_vfs.pAppData = this;
    m_vfs.pNext = nullptr;
    m_vfs.szOsFile = static_cast<int>(sizeof(File)) + m_ordinary->szOsFile;
    m_vfs.xOpen = Calls::open;
    m_vfs.xDelete = Calls::remove;
    m_vfs.xRandomness = Calls::random;
    if (sqlite3_vfs_register(&m_vfs, 1) != SQLITE_OK)
        throw std::runtime_error("sqlite3_vfs_register");
}

PowerCutVfs::~PowerCutVfs()
{
    sqlite3_vfs_unregister(&m_vfs);
    sqlite3_vfs_register(m_ordinary, 1);
}
