// Settings of a test, in place of an INI file. They hold until the object goes.
#pragma once

#include <checks/checkstore.h>
#include <core/config.h>
#include <core/singleton.h>

class FakeConfig
{
public:
    explicit FakeConfig(const QVariantHash &values)
    {
        Singleton<Config>::replace(QSharedPointer<Values>::create(values));
        Singleton<CheckStore>::replace({});
    }
    ~FakeConfig()
    {
        Singleton<CheckStore>::replace({}); // its folder was a setting
        Singleton<Config>::replace({});
    }
    Q_DISABLE_COPY_MOVE(FakeConfig)

private:
    struct Values : Config
    {
        explicit Values(const QVariantHash &settings) : values(settings) {}
        QString getString(const QString &key, const QString &fallback) const override
        {
            return values.value(key, fallback).toString();
        }
        int getInt(const QString &key, int fallback) const override { return values.value(key, fallback).toInt(); }
        double getDouble(const QString &key, double fallback) const override
        {
            return values.value(key, fallback).toDouble();
        }
        QVariantHash values;
    };
};
