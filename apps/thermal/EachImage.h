#pragma once

#include "apps/thermal/Error.h"
#include "apps/thermal/Progress.h"
#include "apps/thermal/Terminal.h"

#include <iostream>

namespace thermal {

/// Hands everything that a source delivers to `use`, with a progress bar unless `quiet`. A
/// source has `next(image)`, `count()`, `name()` and `remark()`.
/// @throws UsageError  if there is nothing at all
template <class Image, class Source, class Use>
void forEachImage(Source& source, bool quiet, Use use)
{
    {
        Progress progress(source.name(), source.count(), quiet);
        bool any = false;
        for (Image image; source.next(image); progress.step()) {
            any = true;
            use(image);
        }
        if (!any)
            throw UsageError(source.name() + ": no frames");
    }
    if (!source.remark().empty())
        std::cerr << complaint(source.remark()) << std::flush;
}

} // namespace thermal
