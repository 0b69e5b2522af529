#pragma once

#include "core/Exception.h"
#include "core/Export.h"
#include "core/datatypes/Endian.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

namespace velmo::exp {

template <class TKey>
class DataStorage;

template <class T>
class Variant_;

/// The integer type of fixed width that has the size and the sign of T; T itself if it is none or a bool.
template <class T, bool integer = std::is_integral_v<T> && !std::is_same_v<T, bool>>
struct FixedWidth
{
    using Type = T;
};
template <class T>
struct FixedWidth<T, true>
{
    template <class Signed, class Unsigned>
    using Either = std::conditional_t<std::is_signed_v<T>, Signed, Unsigned>;
    using Type = std::conditional_t<
        sizeof(T) == 1, Either<std::int8_t, std::uint8_t>,
        std::conditional_t<sizeof(T) == 2, Either<std::int16_t, std::uint16_t>,
                           std::conditional_t<sizeof(T) == 4, Either<std::int32_t, std::uint32_t>,
                                              Either<std::int64_t, std::uint64_t>>>>;
};

/// Whether a Variant can hold a T: the item types of storage files, and groups.
template <class T>
inline constexpr bool isVariantType =
    std::is_same_v<T, bool> || std::is_same_v<T, std::int8_t> || std::is_same_v<T, std::uint8_t> ||
    std::is_same_v<T, std::int16_t> || std::is_same_v<T, std::uint16_t> || std::is_same_v<T, std::int32_t> ||
    std::is_same_v<T, std::uint32_t> || std::is_same_v<T, std::int64_t> || std::is_same_v<T, std::uint64_t> ||
    std::is_same_v<T, float> || std::is_same_v<T, double> || std::is_same_v<T, std::string> ||
    std::is_same_v<T, std::vector<unsigned char>> || std::is_same_v<T, DataStorage<std::string>>;

/// Holds one value of one type; storage trees are made of these, shared by pointer. The types and
/// their names in storage files: bool, int8, uint8, int16, uint16, int32, uint32, int64, uint64,
/// float, double, string, uint8[] (a `std::vector<unsigned char>`) and groups (a
/// `DataStorage<std::string>`; include its header for those).
///
/// Const members may run on several threads at once while no thread changes the value.
class VELMO_API Variant
{
public:
    virtual ~Variant();

    virtual bool isArithmetic() const = 0;
    virtual bool isArray() const = 0; ///< a C array; never
    virtual bool isClass() const = 0;
    virtual bool isFundamental() const = 0;
    virtual bool isIntegral() const = 0;
    virtual bool isFloatingPoint() const = 0;
    virtual bool isContainer() const = 0; ///< a vector
    virtual bool isStreamable() const = 0;
    virtual bool isEqualComparable() const = 0;
    virtual bool isConst() const = 0;
    virtual bool isSerializable() const = 0;

    /// The type's name in storage files, "uint8[]" for example; "group" for a storage.
    virtual std::string getTypeDescriptionName() const = 0;
    virtual const std::type_info& getTypeInfo() const = 0;
    virtual std::size_t sizeofT() const = 0;

    /// Where the held value lies; it lives as long as the holder.
    virtual const void* address() const = 0;
    virtual void* address() = 0;
    virtual const void* addressConst() const = 0;

    /// The text that `fromString` turns into this value again: numbers independent of the locale and
    /// as short as they come back exactly, bytes as decimal numbers with blanks between.
    /// @throws Exception  for a storage
    virtual std::string toString() const = 0;

    /// The value as another type. A fraction is cut off; any number but 0 is true.
    /// @throws Exception  if the held type is no number or flag, or the value lies outside the range
    virtual bool toBool() const = 0;
    virtual std::int8_t toSignedInt8() const = 0;
    virtual std::uint8_t toUnsignedInt8() const = 0;
    virtual std::int16_t toSignedInt16() const = 0;
    virtual std::uint16_t toUnsignedInt16() const = 0;
    virtual std::int32_t toSignedInt32() const = 0;
    virtual std::uint32_t toUnsignedInt32() const = 0;
    virtual std::int64_t toSignedInt64() const = 0;
    virtual std::uint64_t toUnsignedInt64() const = 0;
    virtual float toFloat() const = 0;
    virtual double toDouble() const = 0;

    /// Writes the binary form that `deserialize` reads.
    /// @param endian  byte order of the value
    /// @param bytes   room for as many bytes as are returned; may be null, then nothing is written
    /// @return how many bytes the binary form has
    /// @throws Exception  for a storage, which has no binary form, and for more than 2^32 - 1 elements
    virtual std::size_t serialize(Endian endian, char* bytes) const = 0;

    /// Whether `other` holds the same type and an equal value; false for an empty pointer.
    virtual bool equal(std::shared_ptr<Variant> other) const = 0;

    /// A new shared value that holds a copy of `value`, or its content if it is an rvalue. Text in
    /// quotes is held as a string, an integer as the item type of its size and sign: `long long` as int64,
    /// `char` as int8 where it has a sign.
    template <class T>
    static std::shared_ptr<Variant> create(T&& value)
    {
        using Decayed = std::decay_t<T>;
        using Held = std::conditional_t<std::is_convertible_v<Decayed, const char*>, std::string,
                                        typename FixedWidth<Decayed>::Type>;
        return std::make_shared<Variant_<Held>>(Held(std::forward<T>(value)));
    }
    /// The same for a type that is named: `Variant::create<std::string>(name)`.
    template <class T>
    static std::shared_ptr<Variant> create(std::enable_if_t<!std::is_reference_v<T>, const T&> value)
    {
        return create<const T&>(value);
    }

    /// The held value itself.
    /// @throws Exception  if it is not a T
    template <class T>
    const T& value() const
    {
        return *static_cast<const T*>(value(typeid(T)));
    }
    template <class T>
    T& value()
    {
        return *static_cast<T*>(const_cast<void*>(value(typeid(T))));
    }

    /// A new value from its text form in storage files.
    /// @throws Exception  for an unknown type, and for a text that is not wholly a value of it: blanks
    ///                    around a number, a number beyond the type's range and the like
    static std::shared_ptr<Variant> fromString(const std::string& type, const std::string& text);

    /// A new value from its binary form in storage files.
    /// @param type      the name of an item type
    /// @param endian    byte order of the value
    /// @param bytes     begin with the value; what follows it is not looked at
    /// @param consumed  becomes the number of bytes that the value took from the front of `bytes`
    /// @throws Exception  for an unknown type, and for bytes that end before the value does
    static std::shared_ptr<Variant> deserialize(const std::string& type, Endian endian,
                                                const std::vector<unsigned char>& bytes,
                                                std::size_t& consumed);
    /// The same from `size` bytes anywhere in memory, as `serialize` writes them.
    static std::shared_ptr<Variant> deserialize(const std::string& type, Endian endian, const char* bytes,
                                                std::size_t size, std::size_t& consumed);

protected:
    Variant() = default;
    Variant(const Variant&) = default;
    Variant& operator=(const Variant&) = default;

private:
    const void* value(const std::type_info& wanted) const;
};

/// The holder of a T; see Variant for what its members do.
template <class T>
class VELMO_API Variant_ : public Variant
{
    static_assert(isVariantType<T>, "a Variant holds the item types of storage files and groups");

public:
    Variant_();
    explicit Variant_(const T& value);
    explicit Variant_(T&& value);
    ~Variant_() override;

    Variant_(const Variant_&) = default;
    Variant_& operator=(const Variant_&) = default;

    bool isArithmetic() const override;
    bool isArray() const override;
    bool isClass() const override;
    bool isFundamental() const override;
    bool isIntegral() const override;
    bool isFloatingPoint() const override;
    bool isContainer() const override;
    bool isStreamable() const override;
    bool isEqualComparable() const override;
    bool isConst() const override;
    bool isSerializable() const override;
    std::string getTypeDescriptionName() const override;
    const std::type_info& getTypeInfo() const override;
    std::size_t sizeofT() const override;
    const void* address() const override;
    void* address() override;
    const void* addressConst() const override;
    std::string toString() const override;
    bool toBool() const override;
    std::int8_t toSignedInt8() const override;
    std::uint8_t toUnsignedInt8() const override;
    std::int16_t toSignedInt16() const override;
    std::uint16_t toUnsignedInt16() const override;
    std::int32_t toSignedInt32() const override;
    std::uint32_t toUnsignedInt32() const override;
    std::int64_t toSignedInt64() const override;
    std::uint64_t toUnsignedInt64() const override;
    float toFloat() const override;
    double toDouble() const override;
    std::size_t serialize(Endian endian, char* bytes) const override;
    bool equal(std::shared_ptr<Variant> other) const override;

    /// Replaces the held value by the content of `value`.
    virtual void move(T&& value);

private:
    T m_value;
};

extern template class Variant_<bool>;
extern template class Variant_<std::int8_t>;
extern template class Variant_<std::uint8_t>;
extern template class Variant_<std::int16_t>;
extern template class Variant_<std::uint16_t>;
extern template class Variant_<std::int32_t>;
extern template class Variant_<std::uint32_t>;
extern template class Variant_<std::int64_t>;
extern template class Variant_<std::uint64_t>;
extern template class Variant_<float>;
extern template class Variant_<double>;
extern template class Variant_<std::string>;
extern template class Variant_<std::vector<unsigned char>>;

} // namespace velmo::exp
