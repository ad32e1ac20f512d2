// One object of a type per process, shared by the host and everything it loads.
#pragma once

#include <core/registry.h>

#include <QtCore/QSharedPointer>

template <class T>
class Singleton
{
public:
    /// The process-wide object, which the first call creates with `T()`. Never null. Whoever keeps the pointer keeps
    /// the object, even after replace().
    static QSharedPointer<T> instance()
    {
        const auto holder = poshost::registry::findOrCreate(typeid(Singleton<T>), [] {
            return std::shared_ptr<void>(std::make_shared<QSharedPointer<T>>(QSharedPointer<T>::create()));
        });
        return *static_cast<QSharedPointer<T> *>(holder.get());
    }

    /// Makes later calls of instance() return `object`; after null the next call creates a new one.
    static void replace(const QSharedPointer<T> &object)
    {
        poshost::registry::store(typeid(Singleton<T>), object ? std::make_shared<QSharedPointer<T>>(object) : nullptr);
    }
};
