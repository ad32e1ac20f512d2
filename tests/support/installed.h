// A collaborator that every part of the program gets from the factory while the object lives.
#pragma once

#include <core/mockfactory.h>

template <class Real, class Double>
struct Installed
{
    Installed() { MockFactory<Real>::install(object); }
    ~Installed() { MockFactory<Real>::clear(); }
    Q_DISABLE_COPY_MOVE(Installed)
    Double *operator->() const { return object.get(); }
    Double &operator*() const { return *object; }

    QSharedPointer<Double> object = QSharedPointer<Double>::create();
};
