// ThreadSanitizer does not see the locks under which Qt hands events from thread to thread: Qt makes them of futexes.
// This tells it that all a thread has done before it emits a signal, or calls a method of an object of another thread,
// happens before what any thread does for the next event.
#pragma once

#include <QtWidgets/QApplication>

#ifdef __SANITIZE_THREAD__
class WatchedApplication : public QApplication
{
public:
    using QApplication::QApplication;
    bool notify(QObject *receiver, QEvent *event) override;
};
#else
using WatchedApplication = QApplication;
#endif
