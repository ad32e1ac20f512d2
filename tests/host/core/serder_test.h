// Types for the tests of the serialisation.
#pragma once

#include <core/tr.h>

#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QObject>

class StoredSample
{
    Q_GADGET
    Q_PROPERTY(QString name MEMBER name)
    Q_PROPERTY(double amount MEMBER amount)
    Q_PROPERTY(Kind kind MEMBER kind)
    Q_PROPERTY(QDateTime time MEMBER time)
    Q_PROPERTY(QDateTime noTime MEMBER noTime)
    Q_PROPERTY(tr::Tr title MEMBER title)

public:
    enum class Kind { First, Second };
    Q_ENUM(Kind)

    QString name{};
    double amount = 0;
    Kind kind = Kind::First;
    QDateTime time{};
    QDateTime noTime{};
    tr::Tr title{};

    friend bool operator==(const StoredSample &, const StoredSample &) = default;
};

struct Opaque
{
    int value = 0;
};

Q_DECLARE_METATYPE(StoredSample)
Q_DECLARE_METATYPE(Opaque)
