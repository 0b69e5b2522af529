#include "core/datatypes/Variant.h"

#include "core/Exception.h"
#include "core/datatypes/DataStorage.h"
#include "core/datatypes/TypeName.h"
#include "core/memory/ByteCursor.h"
#include "core/memory/MemoryAcsii.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>

namespace velmo::exp {

namespace {

using Bytes = std::vector<unsigned char>;
using Group = DataStorage<std::string>;

/// Whether a number has a counterpart in To; a fraction may get lost, a magnitude or a sign may not.
template <class To, class From>
bool fits(From value)
{
    using Limits = std::numeric_limits<To>;
    if constexpr (std::is_floating_point_v<From> && std::is_integral_v<To>) {
        // Both ends are powers of two or 0, thus exact; "not a number" fails both comparisons.
        const From whole = std::trunc(value);
        return whole >= static_cast<From>(Limits::min()) && whole < std::ldexp(From{1}, Limits::digits);
    } else if constexpr (std::is_floating_point_v<To>) {
        if constexpr (std::is_floating_point_v<From>)
            return !std::isfinite(value) || std::abs(value) <= static_cast<double>(Limits::max());
        return true;
    } else if constexpr (std::is_signed_v<From>) {
        return value < 0 ? std::is_signed_v<To> && std::int64_t{value} >= std::int64_t{Limits::min()}
                         : static_cast<std::uint64_t>(value) <= static_cast<std::uint64_t>(Limits::max());
    } else {
        return std::uint64_t{value} <= static_cast<std::uint64_t>(Limits::max());
    }
}

/// The one place where a held number becomes another type.
template <class To, class From>
To convert(const From& value)
{
    if constexpr (!std::is_arithmetic_v<From>) {
        VELMO_THROW(nameOf(typeid(From)) + " is not convertible to " + nameOf(typeid(To)));
    } else if constexpr (std::is_same_v<To, bool>) {
        return value != From{};
    } else {
        if (!fits<To>(value))
            VELMO_THROW(MemoryAcsii::format(value) + " is outside the range " +
                        MemoryAcsii::format(std::numeric_limits<To>::lowest()) + " to " +
                        MemoryAcsii::format(std::numeric_limits<To>::max()));
        return static_cast<To>(value);
    }
}

template <class T>
std::string toStringTimpl(const T& value)
{
    if constexpr (std::is_same_v<T, Group>)
        VELMO_THROW("type '" + nameOf(typeid(T)) + "' can not be serialized to string");
    else
        return MemoryAcsii::format(value);
}

/// A number's bytes, turned over if they are wanted against the host's order.
template <class T>
std::array<char, sizeof(T)> ordered(T value, Endian endian)
{
    std::array<char, sizeof(T)> bytes;
    std::memcpy(bytes.data(), &value, sizeof(T));
    if (endian == Endian::Swapped)
        std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

template <class T>
std::size_t serializeValue(const T& value, Endian endian, char* out)
{
    if constexpr (std::is_same_v<T, Group>) {
        VELMO_THROW("type '" + nameOf(typeid(T)) + "' can not be serialized to bytes");
    } else if constexpr (std::is_arithmetic_v<T>) {
        const auto bytes = ordered(value, endian);
        if (out)
            std::copy(bytes.begin(), bytes.end(), out);
        return bytes.size();
    } else {
        if (value.size() > std::numeric_limits<std::uint32_t>::max())
            VELMO_THROW(std::to_string(value.size()) + " elements do not fit a 32-bit count");
        if (out)
            std::copy(value.begin(), value.end(),
                      out + serializeValue(static_cast<std::uint32_t>(value.size()), endian, out));
        return sizeof(std::uint32_t) + value.size();
    }
}

template <class T>
T takeNumber(ByteCursor& bytes, Endian endian)
{
    std::array<std::uint8_t, sizeof(T)> raw;
    std::copy_n(bytes.take(sizeof(T)), sizeof(T), raw.begin());
    if (endian == Endian::Swapped)
        std::reverse(raw.begin(), raw.end());
    T value;
    std::memcpy(&value, raw.data(), sizeof(T));
    return value;
}

template <class T>
T takeValue(ByteCursor& bytes, Endian endian)
{
    if constexpr (std::is_same_v<T, bool>) {
        const std::uint8_t flag = *bytes.take(1);
        if (flag > 1)
            VELMO_THROW(std::to_string(flag) + " is not a value of type bool, which is 0 or 1");
        return flag == 1;
    } else if constexpr (std::is_arithmetic_v<T>) {
        return takeNumber<T>(bytes, endian);
    } else {
        const std::size_t count = takeNumber<std::uint32_t>(bytes, endian);
        const std::uint8_t* const first = bytes.take(count); // before anything of that size is allocated
        return T(first, first + count);
    }
}

/// What the decoders know of an item type.
struct ItemType
{
    const char* name;
    const std::type_info& type;
    std::shared_ptr<Variant> (*fromText)(const std::string& text);
    std::shared_ptr<Variant> (*fromBytes)(ByteCursor& bytes, Endian endian);
};

/// Empty if the text is no value of the type.
template <class T>
std::shared_ptr<Variant> createFromText(const std::string& text)
{
    T value{};
    return MemoryAcsii::parse(text, value) ? Variant::create(std::move(value)) : nullptr;
}

template <class T>
std::shared_ptr<Variant> createFromBytes(ByteCursor& bytes, Endian endian)
{
    return Variant::create(takeValue<T>(bytes, endian));
}

template <class T>
ItemType itemType(const char* name)
{
    return {name, typeid(T), createFromText<T>, createFromBytes<T>};
}

const std::array<ItemType, 13>& itemTypes()
{
    static const std::array<ItemType, 13> types = {
        itemType<bool>("bool"),
        itemType<std::int8_t>("int8"),
        itemType<std::uint8_t>("uint8"),
        itemType<std::int16_t>("int16"),
        itemType<std::uint16_t>("uint16"),
        itemType<std::int32_t>("int32"),
        itemType<std::uint32_t>("uint32"),
        itemType<std::int64_t>("int64"),
        itemType<std::uint64_t>("uint64"),
        itemType<float>("float"),
        itemType<double>("double"),
        itemType<std::string>("string"),
        itemType<Bytes>("uint8[]"),
    };
    return types;
}

const ItemType* findType(const std::string& name)
{
    const auto& types = itemTypes();
    const auto found =
        std::find_if(types.begin(), types.end(), [&](const ItemType& type) { return name == type.name; });
    return found == types.end() ? nullptr : &*found;
}

/// Messages stay readable, whatever a file holds.
std::string quoted(const std::string& text)
{
    constexpr std::size_t limit = 80;
    return "'" + (text.size() > limit ? text.substr(0, limit) + "..." : text) + "'";
}

} // namespace

// Here, so that the type's run-time information has one home.
Variant::~Variant() = default;

const void* Variant::value(const std::type_info& wanted) const
{
    if (getTypeInfo() != wanted)
        VELMO_THROW("Variant-type (" + nameOf(getTypeInfo()) + ")!= Template-type (" + nameOf(wanted) + ")");
    return address();
}

std::shared_ptr<Variant> Variant::fromString(const std::string& type, const std::string& text)
{
    const ItemType* const known = findType(type);
    if (!known)
        VELMO_THROW("Unknown type " + quoted(type) + " of the value " + quoted(text));
    auto value = known->fromText(text);
    if (!value)
        VELMO_THROW(quoted(text) + " is not a value of type " + type);
    return value;
}

std::shared_ptr<Variant> Variant::deserialize(const std::string& type, Endian endian,
                                              const std::vector<unsigned char>& bytes, std::size_t& consumed)
{
    return deserialize(type, endian, reinterpret_cast<const char*>(bytes.data()), bytes.size(), consumed);
}

std::shared_ptr<Variant> Variant::deserialize(const std::string& type, Endian endian, const char* bytes,
                                              std::size_t size, std::size_t& consumed)
{
    const ItemType* const known = findType(type);
    if (!known)
        VELMO_THROW("Unknown type " + quoted(type) + " of a value of " + std::to_string(size) + " bytes");
    ByteCursor cursor(reinterpret_cast<const std::uint8_t*>(bytes), size);
    auto value = known->fromBytes(cursor, endian);
    consumed = size - cursor.left();
    return value;
}

template <class T>
Variant_<T>::Variant_() : m_value()
{}

template <class T>
Variant_<T>::Variant_(const T& value) : m_value(value)
{}

template <class T>
Variant_<T>::Variant_(T&& value) : m_value(std::move(value))
{}

template <class T>
Variant_<T>::~Variant_() = default;

template <class T>
bool Variant_<T>::isArithmetic() const
{
    return std::is_arithmetic_v<T>;
}

template <class T>
bool Variant_<T>::isArray() const
{
    return std::is_array_v<T>;
}

template <class T>
bool Variant_<T>::isClass() const
{
    return std::is_class_v<T>;
}

template <class T>
bool Variant_<T>::isFundamental() const
{
    return std::is_fundamental_v<T>;
}

template <class T>
bool Variant_<T>::isIntegral() const
{
    return std::is_integral_v<T>;
}

template <class T>
bool Variant_<T>::isFloatingPoint() const
{
    return std::is_floating_point_v<T>;
}

template <class T>
bool Variant_<T>::isContainer() const
{
    return std::is_same_v<T, Bytes>;
}

template <class T>
bool Variant_<T>::isStreamable() const
{
    return true;
}

template <class T>
bool Variant_<T>::isEqualComparable() const
{
    return true;
}

template <class T>
bool Variant_<T>::isConst() const
{
    return std::is_const_v<T>;
}

template <class T>
bool Variant_<T>::isSerializable() const
{
    return true;
}

template <class T>
std::string Variant_<T>::getTypeDescriptionName() const
{
    for (const ItemType& known : itemTypes())
        if (known.type == typeid(T))
            return known.name;
    return "group";
}

template <class T>
const std::type_info& Variant_<T>::getTypeInfo() const
{
    return typeid(T);
}

template <class T>
std::size_t Variant_<T>::sizeofT() const
{
    return sizeof(T);
}

template <class T>
const void* Variant_<T>::address() const
{
    return &m_value;
}

template <class T>
void* Variant_<T>::address()
{
    return &m_value;
}

template <class T>
const void* Variant_<T>::addressConst() const
{
    return &m_value;
}

template <class T>
std::string Variant_<T>::toString() const
{
    return toStringTimpl(m_value);
}

template <class T>
bool Variant_<T>::toBool() const
{
    return convert<bool>(m_value);
}

template <class T>
std::int8_t Variant_<T>::toSignedInt8() const
{
    return convert<std::int8_t>(m_value);
}

template <class T>
std::uint8_t Variant_<T>::toUnsignedInt8() const
{
    return convert<std::uint8_t>(m_value);
}

template <class T>
std::int16_t Variant_<T>::toSignedInt16() const
{
    return convert<std::int16_t>(m_value);
}

template <class T>
std::uint16_t Variant_<T>::toUnsignedInt16() const
{
    return convert<std::uint16_t>(m_value);
}

template <class T>
std::int32_t Variant_<T>::toSignedInt32() const
{
    return convert<std::int32_t>(m_value);
}

template <class T>
std::uint32_t Variant_<T>::toUnsignedInt32() const
{
    return convert<std::uint32_t>(m_value);
}

template <class T>
std::int64_t Variant_<T>::toSignedInt64() const
{
    return convert<std::int64_t>(m_value);
}

template <class T>
std::uint64_t Variant_<T>::toUnsignedInt64() const
{
    return convert<std::uint64_t>(m_value);
}

template <class T>
float Variant_<T>::toFloat() const
{
    return convert<float>(m_value);
}

template <class T>
double Variant_<T>::toDouble() const
{
    return convert<double>(m_value);
}

template <class T>
std::size_t Variant_<T>::serialize(Endian endian, char* bytes) const
{
    return serializeValue(m_value, endian, bytes);
}

template <class T>
bool Variant_<T>::equal(std::shared_ptr<Variant> other) const
{
    return other && other->getTypeInfo() == typeid(T) && *static_cast<const T*>(other->address()) == m_value;
}

template <class T>
void Variant_<T>::move(T&& value)
{
    m_value = std::move(value);
}

template class Variant_<bool>;
template class Variant_<std::int8_t>;
template class Variant_<std::uint8_t>;
template class Variant_<std::int16_t>;
template class Variant_<std::uint16_t>;
template class Variant_<std::int32_t>;
template class Variant_<std::uint32_t>;
template class Variant_<std::int64_t>;
template class Variant_<std::uint64_t>;
template class Variant_<float>;
template class Variant_<double>;
template class Variant_<std::string>;
template class Variant_<Bytes>;
template class Variant_<Group>;

} // namespace velmo::exp
