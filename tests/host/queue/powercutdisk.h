// What of a few files is on the disk for certain, and what the system still holds in memory and may write in any order,
// in part, or not at all when the power fails; and the operating system as SQLite sees it, which reports to that disk.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

/// Modelled on a journalling file system: data that was not synced may reach the disk block by block in any order, also
/// torn within a block and with the file's new size or without; truncations likewise. Names are made and removed in
/// order, and all of them are on the disk when the folder was synced.
class PowerCutDisk
{
public:
    /// The bytes of the files by their names.
    using Contents = std::map<std::string, std::string>;

    struct Change
    {
        std::size_t offset;
        std::optional<std::string> bytes; ///< None: the file is truncated at the offset.
    };
    struct File
    {
        std::string synced;
        std::vector<Change> pending;
    };
    using FilePtr = std::shared_ptr<File>;

    /// `ignoreSyncs`: a disk that says it has synced and has not.
    PowerCutDisk(std::uint64_t seed, bool ignoreSyncs) : m_random(seed), m_ignoreSyncs(ignoreSyncs) {}

    /// `nameIsSynced`: where the file is new, its maker has synced the folder.
    FilePtr open(const std::string &name, bool nameIsSynced);
    void remove(const std::string &name);
    void sync(File &file) const;
    void syncFolder();

    /// What could be left if the power failed now.
    Contents cut();

    /// Starts again with these files, all of them synced.
    void restart(const Contents &contents);

    bool isEmpty() const { return m_names.back().empty(); }

    /// Blocks that were written in part, at all cuts so far.
    int torn() const { return m_torn; }

private:
    using Names = std::map<std::string, FilePtr>;

    std::string survivor(const File &file, double keeping, std::size_t blockSize);
    void writeSome(std::string &survivor, std::size_t offset, std::string_view bytes, double keeping,
                   std::size_t blockSize);
    bool chance(double probability) { return std::bernoulli_distribution(probability)(m_random); }

    std::mt19937_64 m_random;
    bool m_ignoreSyncs;
    std::vector<Names> m_names{{}}; // since the folder was synced; the last ones are those that programs see
    int m_torn = 0;
};

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
