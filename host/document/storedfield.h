// A field of a type that is stored with a check. Each stored type lists its fields once, in storedFields(); that list
// writes a row, reads it strictly and tells whether it has changed. See storedrow.h.
#pragma once

#include <tuple>
#include <type_traits>

template <class Owner, class Value>
struct StoredField
{
    using Check = bool (*)(const Value &);

    constexpr StoredField(const char *fieldName, Value Owner::*fieldMember,
                          std::type_identity_t<Check> fieldCheck = nullptr)
        : name(fieldName), member(fieldMember), isAllowed(fieldCheck)
    {}

    const char *name;
    Value Owner::*member;
    Check isAllowed; ///< Null: all values of the type are.
};
