// An event of the host: a code and named values. The value "document" holds the check.
#pragma once

#include <core/eventcode.h>
#include <poshost_export.h>

#include <QtCore/QMetaType>
#include <QtCore/QVariant>

class POSHOST_EXPORT Event
{
public:
    Event() = default;
    explicit Event(int code, const QVariantHash &values = {}) : m_code(code), m_values(values) {}
    explicit Event(EventCode code, const QVariantHash &values = {}) : Event(static_cast<int>(code), values) {}

    int getCode() const { return m_code; }
    QVariant value(const QString &name, const QVariant &defaultValue = {}) const
    {
        return m_values.value(name, defaultValue);
    }

private:
    int m_code = 0;
    QVariantHash m_values;
};

Q_DECLARE_METATYPE(Event)
