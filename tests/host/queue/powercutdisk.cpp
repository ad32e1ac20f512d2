// The disk's memory, and what chance leaves of it.
#include "powercutdisk.h"

#include <algorithm>

namespace {

void put(std::string &file, std::size_t offset, std::string_view bytes)
{
    file.resize(std::max(file.size(), offset + bytes.size()));
    std::ranges::copy(bytes, file.begin() + static_cast<std::ptrdiff_t>(offset));
}

} // namespace

bool PowerCutDisk::tick()
{
    m_operationsLeft = std::max(0, m_operationsLeft - 1);
    return isOn();
}

PowerCutDisk::FilePtr PowerCutDisk::open(const std::string &name, bool nameIsSynced)
{
    FilePtr &file = m_names[name];
    if (!file) {
        file = std::make_shared<File>();
        if (nameIsSynced)
            m_syncedNames[name] = file;
        else
            m_pendingNames.push_back({name, file});
    }
    return file;
}

void PowerCutDisk::remove(const std::string &name)
{
    m_names.erase(name);
    m_pendingNames.push_back({name, nullptr});
}

void PowerCutDisk::syncFolder()
{
    if (m_ignoreSyncs)
        return;
    m_syncedNames = m_names;
    m_pendingNames.clear();
}

void PowerCutDisk::write(File &file, std::size_t offset, const char *bytes, std::size_t size)
{
    file.pending.push_back({offset, std::string(bytes, size)});
}

void PowerCutDisk::truncate(File &file, std::size_t size)
{
    file.pending.push_back({size, std::nullopt});
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

PowerCutDisk::Contents PowerCutDisk::cut()
{
    constexpr double keepings[] = {0, 0.5, 0.9, 1};
    m_keeping = keepings[m_random() % std::size(keepings)];
    m_blockSize = chance(0.5) ? 512 : 4096;
    const std::size_t keptNames = m_random() % (m_pendingNames.size() + 1);
    for (std::size_t i = 0; i < keptNames; ++i)
        apply(m_pendingNames[i], m_syncedNames);
    m_pendingNames.clear();

    Contents left;
    for (auto &[name, file] : m_syncedNames) {
        left[name] = survivor(*file);
        file = std::make_shared<File>(File{left[name], {}});
    }
    m_names = m_syncedNames;
    return left;
}

void PowerCutDisk::apply(const NameChange &change, std::map<std::string, FilePtr> &names)
{
    if (change.file)
        names[change.name] = change.file;
    else
        names.erase(change.name);
}

std::string PowerCutDisk::survivor(const File &file)
{
    std::string survivor = file.synced;
    std::size_t fullSize = survivor.size();
    for (const Change &change : file.pending) {
        fullSize = change.bytes ? std::max(fullSize, change.offset + change.bytes->size()) : change.offset;
        if (change.bytes)
            writeSomeBlocks(survivor, change.offset, *change.bytes);
        else if (chance(m_keeping))
            survivor.resize(change.offset);
    }
    if (chance(0.25)) // the size is kept elsewhere than the data
        survivor.resize(std::max(fullSize, survivor.size()));
    return survivor;
}

void PowerCutDisk::writeSomeBlocks(std::string &survivor, std::size_t offset, const std::string &bytes)
{
    for (std::size_t begin = 0; begin < bytes.size();) {
        const std::size_t room = m_blockSize - (offset + begin) % m_blockSize;
        const std::string_view block = std::string_view(bytes).substr(begin, room);
        writeBlock(survivor, offset + begin, block);
        begin += block.size();
    }
}

void PowerCutDisk::writeBlock(std::string &survivor, std::size_t offset, std::string_view block)
{
    if (chance(m_keeping))
        return put(survivor, offset, block);
    if (!chance(0.2)) {
        ++m_dropped;
        return;
    }
    ++m_torn;
    const std::size_t border = m_random() % block.size();
    if (chance(0.5))
        put(survivor, offset, block.substr(0, border));
    else
        put(survivor, offset + border, block.substr(border));
}
