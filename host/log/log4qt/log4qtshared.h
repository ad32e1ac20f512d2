// The export macro of the logging facade.
#pragma once

#include <QtCore/QtGlobal>

#ifdef LOG4QT_LIBRARY
#define LOG4QT_EXPORT Q_DECL_EXPORT
#else
#define LOG4QT_EXPORT Q_DECL_IMPORT
#endif
