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
    Names names = m_names.back();
    FilePtr &file = names[name];
    if (!file) {
        file = std::make_shared<File>();
        m_names.push_back(names);
    }
    for (Names &possible : m_names)
        if (nameIsSynced)
            possible[name] = file;
    return file;
}

void PowerCutDisk::remove(const std::string &name)
{
    m_names.push_back(m_names.back());
    m_names.back().erase(name);
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
    if (!m_ignoreSyncs)
        m_names.erase(m_names.begin(), m_names.end() - 1);
}

PowerCutDisk::Contents PowerCutDisk::cut()
{
    constexpr double keepings[] = {0, 0.5, 0.9, 1};
    const double keeping = keepings[m_random() % std::size(keepings)];
    const std::size_t blockSize = chance(0.5) ? 512 : 4096;
    Contents left;
    for (const auto &[name, file] : m_names[m_random() % m_names.size()])
        left[name] = survivor(*file, keeping, blockSize);
    return left;
}

void PowerCutDisk::restart(const Contents &contents)
{
    m_names = {{}};
    for (const auto &[name, bytes] : contents)
        m_names.back()[name] = std::make_shared<File>(File{bytes, {}});
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
