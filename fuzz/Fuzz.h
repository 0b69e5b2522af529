#pragma once

#include "core/Exception.h"

#include <cstdint>
#include <cstdlib>

/// What holds for every input; if it does not, that is a finding.
inline void require(bool holds)
{
    if (!holds)
        std::abort();
}

/// Refusing an input is right; whatever else is thrown is a finding.
/// @returns what a target returns
template <class Call>
int unlessRefused(Call call)
{
    try {
        call();
    } catch (const velmo::exp::Exception&) {
    }
    return 0;
}
