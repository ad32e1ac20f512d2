// What a fuzzer consists of: one operation that reads an input from outside.
#pragma once

#include <QtCore/QByteArray>

/// The operation, one in each program. Whatever it throws ends the run.
void fuzz(const QByteArray &input);

/// Ends the run, with the input kept, when what must always be true is not.
inline void require(bool holds)
{
    if (!holds)
        __builtin_trap();
}

/// Bad input may be refused, by this exception and no other.
template <class Exception, class Operation>
void orRefuse(Operation operation)
{
    try {
        operation();
    } catch (const Exception &) {
        return;
    }
}
