// What of a few files is on the disk for certain, and what the system still holds in memory and may write in any order,
// in part, or not at all when the power fails. Knows nothing of databases.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>
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

    /// Switches the power on for this many operations.
    void switchOn(int operations) { m_operationsLeft = operations; }
    bool isOn() const { return m_operationsLeft > 0; }

    /// To be called at each operation, before its completion and after what it has begun was reported. False: the power
    /// is off.
    [[nodiscard]] bool tick();

    /// `nameIsSynced`: where the file is new, its maker has synced the folder.
    FilePtr open(const std::string &name, bool nameIsSynced);
    bool hasSeen(const std::string &name) const { return m_names.contains(name); }
    void remove(const std::string &name);
    void sync(File &file) const;
    void syncFolder();

    /// What a power cut leaves. The disk goes on from there.
    Contents cut();

    /// Blocks that were written in part, at all cuts so far.
    int torn() const { return m_torn; }

private:
    using Names = std::map<std::string, FilePtr>;

    std::string survivor(const File &file);
    void writeSome(std::string &survivor, std::size_t offset, std::string_view bytes);
    bool chance(double probability) { return std::bernoulli_distribution(probability)(m_random); }

    std::mt19937_64 m_random;
    bool m_ignoreSyncs;
    int m_operationsLeft = 0;
    Names m_names; // as programs see them
    Names m_syncedNames;
    std::vector<Names::value_type> m_pendingNames; // in order; without a file: removed
    std::size_t m_blockSize = 0;                   // of the cut in hand
    double m_keeping = 0;
    int m_torn = 0;
};
