#include "camera/settings/Keys.h"

#include "core/Exception.h"
#include "core/memory/MemoryAcsii.h"

#include <algorithm>
#include <cctype>
#include <sstream>

namespace velmo::camera {
namespace {

using exp::MemoryAcsii;
using exp::Variant;

bool contains(const std::vector<std::string>& words, const std::string& word)
{
    return std::find(words.begin(), words.end(), word) != words.end();
}

bool beginsLike(const std::string& value, const Form& form)
{
    try {
        parseForm(value.substr(0, value.find(':')), "", {form.front()});
        return true;
    } catch (const exp::Exception&) {
        return false;
    }
}

/// The numbers of a value. Of several forms that have as many fields the one is meant that it begins like.
std::vector<double> numbersOf(const ValueKind& kind, const std::string& value, const std::string& what)
{
    const Form* meant = nullptr;
    for (const Form& form : kind.forms)
        if (hasForm(value, form) && (meant == nullptr || beginsLike(value, form)))
            meant = &form;
    if (meant == nullptr)
        VELMO_THROW(what + ": '" + value + "' is not " + kind.shape());
    return parseForm(value, what, *meant);
}

void checkText(const std::string& value, const std::string& what)
{
    if (std::any_of(value.begin(), value.end(), [](unsigned char letter) { return std::iscntrl(letter); }))
        VELMO_THROW(what + ": a text of one line is needed");
}

void check(const ValueKind& kind, const std::string& value, const std::string& what)
{
    if (contains(kind.words, value))
        return;
    if (kind.text.empty())
        numbersOf(kind, value, what);
    else
        checkText(value, what);
}

/// A number, where the only form has one field.
std::shared_ptr<Variant> typed(const ValueKind& kind, const std::string& value)
{
    bool flag = false;
    std::int64_t whole = 0;
    double number = 0;
    if (kind.isFlag() && MemoryAcsii::parse(value, flag))
        return Variant::create(flag);
    const bool single =
        kind.text.empty() && !kind.list && kind.forms.size() == 1 && kind.forms[0].size() == 1;
    if (single && MemoryAcsii::parse(value, whole))
        return Variant::create(whole);
    if (single && MemoryAcsii::parse(value, number))
        return Variant::create(number);
    return Variant::create(value);
}

} // namespace

bool ValueKind::isFlag() const
{
    return words == std::vector<std::string>{"false", "true"};
}

std::shared_ptr<exp::Variant> ValueKind::read(const std::string& value, const std::string& what) const
{
    if (!list) {
        check(*this, value, what);
        return typed(*this, value);
    }
    std::string all;
    for (const std::string& part : parts(value)) {
        check(*this, part, what);
        all += (all.empty() ? "" : ", ") + part;
    }
    return Variant::create(all);
}

std::vector<double> ValueKind::numbers(const std::string& value) const
{
    return contains(words, value) || !text.empty() ? std::vector<double>() : numbersOf(*this, value, "value");
}

std::vector<std::string> ValueKind::parts(const std::string& list)
{
    std::vector<std::string> parts;
    std::istringstream text(list);
    for (std::string part; std::getline(text, part, ',');)
        parts.emplace_back(MemoryAcsii::trim(part));
    return parts;
}

std::vector<std::string> ValueKind::shapes() const
{
    std::vector<std::string> shapes = words;
    for (const Form& form : forms)
        shapes.push_back(formText(form));
    if (!text.empty())
        shapes.push_back(text);
    return shapes;
}

std::string ValueKind::shape() const
{
    const std::vector<std::string> names = shapes();
    std::string all;
    for (std::size_t i = 0; i < names.size(); ++i)
        all += (i == 0 ? "" : i + 1 == names.size() ? " or " : ", ") + names[i];
    return all + (list ? ", several with commas between" : "");
}

std::string ValueKind::limits() const
{
    std::string all;
    for (const Form& form : forms)
        for (const Field& field : form)
            if (const std::string limits = limitsText(field); !limits.empty())
                all += (all.empty() ? "" : ", ") + limits;
    return all;
}

} // namespace velmo::camera
