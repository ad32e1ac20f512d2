// The one place per process where Singleton and MockFactory keep their objects. It lives in libPosHost, so that a
// plugin with hidden visibility shares the host's objects instead of having copies.
#pragma once

#include <poshost_export.h>

#include <memory>
#include <typeinfo>

namespace poshost::registry {

/// Returns what is stored under `key`, or null. Thread-safe.
POSHOST_EXPORT std::shared_ptr<void> find(const std::type_info &key);

/// Returns what is stored under `key`; when there is nothing, stores and returns `create()`. Thread-safe; `create` may
/// itself use the registry, but must not wait for another thread that does.
POSHOST_EXPORT std::shared_ptr<void> findOrCreate(const std::type_info &key, std::shared_ptr<void> (*create)());

/// Replaces what is stored under `key`; null removes it. Thread-safe.
POSHOST_EXPORT void store(const std::type_info &key, std::shared_ptr<void> value);

} // namespace poshost::registry
