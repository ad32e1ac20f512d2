// The storage behind Singleton and MockFactory. It is never destroyed: objects of other libraries may still ask for
// their collaborators while the process exits.
#include <core/registry.h>

#include <mutex>
#include <string>
#include <unordered_map>

namespace poshost::registry {

namespace {

// Keyed by the type's name, because its std::type_info goes away with the library that asked first.
struct Storage
{
    std::recursive_mutex mutex; // an object that is being created may use the registry
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
    const std::lock_guard lock(all.mutex);
    const auto found = all.objects.find(key.name());
    return found == all.objects.end() ? nullptr : found->second;
}

std::shared_ptr<void> findOrCreate(const std::type_info &key, std::shared_ptr<void> (*create)())
{
    Storage &all = storage();
    const std::lock_guard lock(all.mutex);
    if (auto object = find(key))
        return object;
    return all.objects[key.name()] = create();
}

void store(const std::type_info &key, std::shared_ptr<void> value)
{
    Storage &all = storage();
    const std::lock_guard lock(all.mutex);
    all.objects[key.name()].swap(value);
    // `value` is now the old object; it goes after the lock, since its destructor may wait for another thread.
}

} // namespace poshost::registry
