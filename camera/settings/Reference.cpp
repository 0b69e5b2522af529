#include "camera/settings/Reference.h"

#include "camera/settings/Keys.h"

namespace velmo::camera {
namespace {

const char* const pHead = R"(# Settings

Made by `thermal settings --reference` from the table in `camera/settings/Keys.cpp`.

What can be chosen is a tree of settings, the same for the program, for `Camera` in C++ and for files. A file is INI text
(`thermal settings > camera.ini` writes one with all defaults) or XML; `thermal render --settings camera.ini` takes it, and
options on the command line stand above it. A setting that is not in this table is refused by name.

```ini
[noise]
denoise = strong

[picture]
legend = true
```

```cpp
Settings settings;
settings.set("noise/denoise", "strong");
settings.set("picture/legend", true);
```
)";

std::string rowOf(const Key& key)
{
    const std::string limits = key.kind.limits();
    return "| `" + key.path + "` | `" + key.option + "` | " + key.kind.shape() +
           (limits.empty() ? "" : "; " + limits) + " | " + key.unit + " | " + key.fallback + " | " +
           key.sentence + " |\n";
}

} // namespace

std::string settingsReference()
{
    std::string page = pHead, section;
    for (const Key& key : keys()) {
        const std::string own = key.path.substr(0, key.path.find('/'));
        if (own != section)
            page += "\n## " + own + "\n\n| setting | option | values | unit | default | what it does |\n" +
                    "|---|---|---|---|---|---|\n";
        section = own;
        page += rowOf(key);
    }
    return page;
}

} // namespace velmo::camera
