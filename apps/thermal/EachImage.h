#pragma once

#include "apps/thermal/Error.h"
#include "apps/thermal/Interrupt.h"
#include "apps/thermal/Progress.h"

#include <iostream>

namespace thermal {

/// Hands everything that a source delivers to `use`, with a progress bar unless `quiet`; an interrupt ends
/// it. A source has `next(image)`, `count()`, `name()` and `remark()`.
/// @throws UsageError  if there is nothing at all
template <class Image, class Source, class Use>
void forEachImage(Source& source, bool quiet, Use use)
{
    {
        Progress progress(source.name(), source.count(), quiet);
        bool any = false;
        for (Image image; checkInterrupt(), source.next(image); progress.step()) {
            any = true;
            use(image);
        }
        checkInterrupt(); // it ends a read, too
        if (!any)
            throw UsageError(source.name() + ": no frames");
    }
    if (!source.remark().empty())
        std::cerr << "thermal: " << source.remark() << std::endl;
}

} // namespace thermal
