// The disk's memory, and what chance leaves of it.
#include "powercutdisk.h"

#include <algorithm>

namespace {

void put(std::string &file, std::size_t offset, std::string_view bytes)
{
    file.resize(std::max(file.size(), offset + bytes.size()));
    file.replace(offset, bytes.size(), bytes);
}

} // namespace

PowerCutDisk::FilePtr PowerCutDisk::open(const std::string &name, bool nameIsSynced)
{
    FilePtr &file = m_names[name];
    if (!file) {
        file = std::make_shared<File>();
        m_pendingNames.emplace_back(name, file);
        if (nameIsSynced)
            m_syncedNames[name] = file;
    }
    return file;
}

void PowerCutDisk::remove(const std::string &name)
{
    m_names.erase(name);
    m_pendingNames.emplace_back(name, nullptr);
}

void PowerCutDisk::sync(File &file) const
{
    if (m_ignoreSyncs)
        return;
    for (const Change &change : file.pending) {
        if (change.bytes)
            put(file.synced, change.offset, *change.bytes);
        else
            file.synced.resize(change.offset);
    }
    file.pending.clear();
}

void PowerCutDisk::syncFolder()
{
    if (m_ignoreSyncs)
        return;
    m_syncedNames = m_names;
    m_pendingNames.clear();
}

PowerCutDisk::Contents PowerCutDisk::cut()
{
    constexpr double keepings[] = {0, 0.5, 0.9, 1};
    const double keeping = keepings[m_random() % std::size(keepings)];
    const std::size_t blockSize = chance(0.5) ? 512 : 4096;
    Names names = m_syncedNames;
    for (std::size_t done = 0, most = m_random() % (m_pendingNames.size() + 1); done < most; ++done)
        names[m_pendingNames[done].first] = m_pendingNames[done].second;
    Contents left;
    for (const auto &[name, file] : names) {
        if (file)
            left[name] = survivor(*file, keeping, blockSize);
    }
    return left;
}

void PowerCutDisk::restart(const Contents &contents)
{
    m_names.clear();
    for (const auto &[name, bytes] : contents)
        m_names[name] = std::make_shared<File>(File{bytes, {}});
    m_syncedNames = m_names;
    m_pendingNames.clear();
}

std::string PowerCutDisk::survivor(const File &file, double keeping, std::size_t blockSize)
{
    std::string survivor = file.synced;
    std::size_t fullSize = survivor.size();
    for (const auto &[offset, bytes] : file.pending) {
        fullSize = bytes ? std::max(fullSize, offset + bytes->size()) : offset;
        if (bytes)
            writeSome(survivor, offset, *bytes, keeping, blockSize);
        else if (chance(keeping))
            survivor.resize(offset);
    }
    if (chance(0.25)) // the size is kept elsewhere than the data
        survivor.resize(std::max(fullSize, survivor.size()));
    return survivor;
}

/// Block by block: written, dropped or torn.
void PowerCutDisk::writeSome(std::string &survivor, std::size_t offset, std::string_view bytes, double keeping,
                             std::size_t blockSize)
{
    while (!bytes.empty()) {
        const std::string_view block = bytes.substr(0, blockSize - offset % blockSize);
        const std::size_t border = m_random() % block.size();
        if (chance(keeping)) {
            put(survivor, offset, block);
        } else if (chance(0.2)) {
            ++m_torn;
            if (chance(0.5))
                put(survivor, offset, block.substr(0, border));
            else
                put(survivor, offset + border, block.substr(border));
        }
        offset += block.size();
        bytes.remove_prefix(block.size());
    }
}
