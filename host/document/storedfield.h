// A field of a type that is stored with a check. Each stored type lists its fields once, in storedFields(). That list
// serves to write a row, to read it strictly and to compare it. See storedrow.h.
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
