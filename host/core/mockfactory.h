// Creates collaborators that touch the outside world, or hands out the one that a test has installed.
#pragma once

#include <core/registry.h>

#include <QtCore/QSharedPointer>

template <class T>
class MockFactory
{
public:
    /// The installed object, shared by all callers, or else a new `T()` owned by the caller. Never null.
    static QSharedPointer<T> create()
    {
        if (const auto holder = poshost::registry::find(typeid(MockFactory<T>)))
            return *static_cast<QSharedPointer<T> *>(holder.get());
        return QSharedPointer<T>::create();
    }

    /// Makes every later create() of this process return `object`, until clear().
    static void install(const QSharedPointer<T> &object)
    {
        poshost::registry::store(typeid(MockFactory<T>), std::make_shared<QSharedPointer<T>>(object));
    }

    static void clear() { poshost::registry::store(typeid(MockFactory<T>), nullptr); }
};
