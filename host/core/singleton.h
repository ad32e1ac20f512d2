// One object of a type per process, shared by the host and everything it loads.
#pragma once

#include <core/registry.h>

#include <QtCore/QSharedPointer>

template <class T>
class Singleton
{
public:
    /// The process-wide object; the first caller creates it with `T()`. Never null. A caller that keeps the pointer
    /// keeps the object, also when replace() puts another in its place.
    static QSharedPointer<T> instance()
    {
        const auto holder = poshost::registry::findOrCreate(typeid(Singleton<T>), [] {
            return std::shared_ptr<void>(std::make_shared<QSharedPointer<T>>(QSharedPointer<T>::create()));
        });
        return *static_cast<QSharedPointer<T> *>(holder.get());
    }

    /// Puts `object` in place for all later calls of instance(); null lets the next call create a new one.
    static void replace(const QSharedPointer<T> &object)
    {
        poshost::registry::store(typeid(Singleton<T>), object ? std::make_shared<QSharedPointer<T>>(object) : nullptr);
    }
};
