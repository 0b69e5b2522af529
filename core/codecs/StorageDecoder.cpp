#include "core/codecs/StorageDecoder.h"

#include "core/Exception.h"
#include "core/codecs/StorageDecoderIni.h"
#include "core/codecs/StorageDecoderXml.h"

namespace velmo::exp {

using Storage = DataStorage<std::string>;

StorageDecoder<Storage>::StorageDecoder(std::int32_t format) : m_s32Format(format) {}

std::pair<Storage, std::string> StorageDecoder<Storage>::decode(std::istream& in) const
{
    switch (m_s32Format) {
    case s32Automatic: // nothing else is tried before, so the stream still stands where it stood
    case s32Xml:
        return StorageDecoderXml::decode<Storage>(in);
    case s32Json:
        VELMO_THROW("JSON support disabled");
    case s32Ini:
        return StorageDecoderIni::decode(in);
    default:
        VELMO_THROW("StorageDecoder encountered unsupported flag, flag was: " + std::to_string(m_s32Format));
    }
}

} // namespace velmo::exp
