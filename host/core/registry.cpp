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
    std::recursive_mutex mutex; // what is created or destroyed may use the registry
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
    return findOrCreate(key, [] { return std::shared_ptr<void>(); });
}

std::shared_ptr<void> findOrCreate(const std::type_info &key, std::shared_ptr<void> (*create)())
{
    const std::lock_guard lock(storage().mutex);
    std::shared_ptr<void> &object = storage().objects[key.name()];
    if (!object)
        object = create();
    return object;
}

void store(const std::type_info &key, std::shared_ptr<void> value)
{
    const std::lock_guard lock(storage().mutex);
    storage().objects[key.name()].swap(value);
}

} // namespace poshost::registry
