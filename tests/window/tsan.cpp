#include "tsan.h"

#ifdef __SANITIZE_THREAD__
#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>

namespace {

char handOver;

/// The one that is hidden by the function of this name here.
template <class Function>
Function hidden(const char *name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

} // namespace

// The memory of Qt's events changes hands between release and acquire. Of the answer's lock, a condition variable's,
// ThreadSanitizer sees only one side.
extern "C" __attribute__((visibility("default"))) const char *__tsan_default_suppressions()
{
    return "called_from_lib:libQt6Core.so.6\ncalled_from_lib:libQt6Gui.so.6\ncalled_from_lib:libQt6Widgets.so.6\n"
           "called_from_lib:libglib-2.0.so.0\nrace:till::CheckDesk::waitForAnswer\n";
}

bool WatchedApplication::notify(QObject *receiver, QEvent *event)
{
    __tsan_acquire(&handOver);
    return QApplication::notify(receiver, event);
}

void QMetaObject::activate(QObject *sender, const QMetaObject *type, int signal, void **arguments)
{
    static const auto inQt =
        hidden<void (*)(QObject *, const QMetaObject *, int, void **)>("_ZN11QMetaObject8activateEP7QObjectPKS_iPPv");
    __tsan_release(&handOver);
    inQt(sender, type, signal, arguments);
}

bool QMetaObject::invokeMethodImpl(QObject *object, QtPrivate::QSlotObjectBase *slot, Qt::ConnectionType type,
                                   void *result)
{
    static const auto inQt = hidden<decltype(&invokeMethodImpl)>(
        "_ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14ConnectionTypeEPv");
    __tsan_release(&handOver);
    return inQt(object, slot, type, result);
}
#endif
