// Not installed.
#pragma once

#include <utility>

namespace velmo::exp {

template <class Function>
struct Forms;

/// A loop in its two forms, which leave the same bits. Called, it runs the fast one. They are paired here and
/// nowhere else: tests and benchmarks take both from the loop itself.
template <class Result, class... Parameters>
struct Forms<Result(Parameters...)>
{
    using Form = Result(Parameters...);

    const char* name;
    Form* plain; ///< the definition, as readable as can be
    Form* fast;  ///< what the library runs

    Result operator()(Parameters... parameters) const
    {
        return fast(std::forward<Parameters>(parameters)...);
    }
};

} // namespace velmo::exp
