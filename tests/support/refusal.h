// What a refused operation says.
#pragma once

#include <core/basicexception.h>

/// The text of the BasicException that `operation` throws; empty when it throws none.
template <class Operation>
QString refusalOf(const Operation &operation)
{
    try {
        operation();
    } catch (const BasicException &error) {
        return error.text().ru();
    }
    return {};
}
