// The number of a lease.
#include "queuelease.h"

#include <QtCore/QRandomGenerator>

// Positive and with room for one byte more in a file offset; 62 random bits do not repeat.
QueueLease::QueueLease() : m_id(static_cast<qint64>(QRandomGenerator::system()->generate64() >> 2) + 1)
{}
