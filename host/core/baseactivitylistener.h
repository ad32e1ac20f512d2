// The base of everything that receives host events.
#pragma once

#include <core/event.h>
#include <poshost_export.h>

#include <QtCore/QObject>

class POSHOST_EXPORT BaseActivityListener : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

public Q_SLOTS:
    /// Called on the check thread for each event whose code the listener has subscribed to.
    virtual void handleEvent(const Event &event) = 0;
};
