// The storage behind Singleton and MockFactory. It is never destroyed: objects of other libraries may still ask for
// their collaborators while the process exits.
#include <core/registry.h>

#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>

namespace poshost::registry {

namespace {

// Keyed by the type's name, because its std::type_info goes away with the library that asked first.
struct Storage
{
    std::shared_mutex mutex;
    std::recursive_mutex creation;
    std::unordered_map<std::string, std::shared_ptr<void>> objects;
};

Storage &storage()
{
    static auto *const instance = new Storage;
    return *instance;
}

} // namespace

std::shared_ptr<void> find(const std::type_info &key)
{
    Storage &all = storage();
    const std::shared_lock lock(all.mutex);
    const auto found = all.objects.find(key.name());
    return found == all.objects.end() ? nullptr : found->second;
}

std::shared_ptr<void> findOrCreate(const std::type_info &key, std::shared_ptr<void> (*create)())
{
    if (auto object = find(key))
        return object;
    Storage &all = storage();
    const std::lock_guard creating(all.creation);
    if (auto object = find(key))
        return object;
    auto made = create();
    const std::unique_lock lock(all.mutex);
    // Another thread may have stored one in the meantime, and it may be in use.
    return all.objects.try_emplace(key.name(), std::move(made)).first->second;
}

void store(const std::type_info &key, std::shared_ptr<void> value)
{
    Storage &all = storage();
    {
        const std::unique_lock lock(all.mutex);
        if (value)
            all.objects[key.name()].swap(value);
        else if (auto node = all.objects.extract(key.name()))
            value = std::move(node.mapped());
    }
    // `value` is now the old object; it goes outside the lock, since its destructor may use the registry.
}

} // namespace poshost::registry
