#pragma once

#include "camera/settings/Parse.h"

#include "core/Exception.h"
#include "core/Export.h"
#include "core/datatypes/Variant.h"

#include <memory>
#include <string>
#include <vector>

namespace velmo::camera {

/// What values a setting takes: some words, numbers in a form, or any text.
struct VELMO_API ValueKind
{
    std::vector<std::string> words; ///< "auto"
    std::vector<Form> forms;        ///< GAIN:FACTOR; of several, the one that fits
    std::string text;               ///< what a text stands for, FILE; empty if not any text is good
    bool list = false;              ///< several of them, with commas between

    bool isFlag() const;

    /// The value as a tree of settings holds it: a flag, a number, or a text.
    /// @param value  as typed
    /// @param what   begins the message of what is refused
    /// @throws Exception  for any other text
    std::shared_ptr<exp::Variant> read(const std::string& value, const std::string& what) const;

    /// The numbers of a value that was taken; none if it is a word or a text.
    std::vector<double> numbers(const std::string& value) const;

    /// The values of a list.
    static std::vector<std::string> parts(const std::string& list);

    /// What it takes: "auto", "off", "GAIN:FACTOR".
    std::vector<std::string> shapes() const;
    /// "auto, off or GAIN:FACTOR".
    std::string shape() const;

    /// "GAIN 0 to 16, FACTOR 0 to 2048"; empty if nothing has limits.
    std::string limits() const;
};

/// Something that can be chosen.
struct Key
{
    std::string path;   ///< in a tree of settings: "noise/temporal"
    std::string option; ///< on a command line: "--temporal"
    ValueKind kind;
    std::string unit;       ///< of its numbers; empty if they count something or nothing
    std::string fallback;   ///< the value when nothing is said
    std::string sentence;   ///< what it does
    std::string alone = {}; ///< what the option means without a value, and true; empty if it needs one
};

/// Everything that can be chosen, section by section. A new row here is a new setting: for files of settings,
/// the options of the program, the reference page and all messages.
VELMO_API const std::vector<Key>& keys();

/// The key of this path.
/// @throws Exception  for any other path; names the one that is most like it
VELMO_API const Key& keyOf(const std::string& path);

} // namespace velmo::camera
