#include "recordings/Films.h"

#include "core/Exception.h"

#include <dlfcn.h>

namespace velmo::recordings {
namespace {

const Films& load()
{
    // A bare name: the loader looks where it looks for the libraries that this code is linked with.
    void* const module = dlopen("libvision_films_1_0.so", RTLD_NOW | RTLD_LOCAL);
    void* const entry = module == nullptr ? nullptr : dlsym(module, "vision_films_1_0");
    if (entry == nullptr) {
        const char* const reason = dlerror();
        VELMO_THROW(std::string("films cannot be used: ") + (reason == nullptr ? "" : reason));
    }
    return *reinterpret_cast<const Films* (*)()>(entry)();
}

} // namespace

const Films& films()
{
    static const Films& loaded = load();
    return loaded;
}

} // namespace velmo::recordings
