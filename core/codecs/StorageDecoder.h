#pragma once

#include "core/Exception.h"
#include "core/Export.h"
#include "core/datatypes/DataStorage.h"

#include <cstdint>
#include <istream>
#include <string>
#include <utility>

namespace velmo::exp {

/// Reads a storage tree in a format that is chosen when the decoder is made.
template <class TStorage>
class StorageDecoder;

template <>
class VELMO_API StorageDecoder<DataStorage<std::string>>
{
public:
    static constexpr std::int32_t s32Automatic = 0; ///< read as XML
    static constexpr std::int32_t s32Xml = 1;       ///< see StorageDecoderXml
    static constexpr std::int32_t s32Json = 2;      ///< not built in
    static constexpr std::int32_t s32Ini = 3;       ///< see StorageDecoderIni

    /// @param format  one of the above; any other value is refused by `decode`
    explicit StorageDecoder(std::int32_t format = s32Automatic);

    /// @return the tree, and the name of its root group; empty for INI text
    /// @throws Exception  for a format that is not built in, and as the format's own decoder does
    /// @throws std::logic_error  as StorageDecoderXml does
    std::pair<DataStorage<std::string>, std::string> decode(std::istream& in) const;

private:
    std::int32_t m_s32Format;
};

} // namespace velmo::exp
