#pragma once

#include "core/Exception.h"
#include "core/Export.h"
#include "core/datatypes/DataStorage.h"
#include "core/datatypes/Endian.h"

#include <istream>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

class TiXmlDocument;
class TiXmlNode;

namespace velmo::exp {

/// Reads a storage tree from an XML storage file: a root element "group", inside it elements "group"
/// and "item", all with a "name" (an id; "/" separates groups), items also with a "type". The value is
/// the text of an item; what stands first inside the element counts. An item or group that has the
/// name of an earlier one replaces it.
///
/// The text may follow a package instruction, `<?storage version="1" values="binary"
/// endian="little" size="512"?>`, alone on the first line: `size` bytes of XML text come after that
/// line, then the values of items in the order in which the items appear, if `values` is "binary" rather
/// than "text"; each item then has a "size", its number of bytes. `endian` is "little" or "big", and
/// "little" if it is not there. Without an instruction the stream is text to its end.
///
/// Comments and instructions (`<?...?>`, the XML declaration among them) are skipped wherever they stand
/// between elements; instructions inside an item as well. White space around the value of an item does not
/// count, unless its type is string.
///
/// A text is refused before it is parsed if it has more than 16 MiB, more than 250,000 elements, texts,
/// comments and instructions, more than 500 nested elements (the root counted), more than 256 attributes on
/// one element, more than 100,000 of all these and one for every 8 bytes, a second root, a NUL byte, or
/// a document type declaration. Ids have 500 components at most and name at most 100,000 groups in all;
/// binary values have 64 MiB at most beside the text. Safe on any bytes, also from several threads on a
/// stream each.
///
/// An exception mask of the stream does not matter: it is as before afterwards, also after an error; of the
/// state that reading left, what it would throw for is cleared.
class VELMO_API StorageDecoderXml
{
public:
    /// @param in  stands at the start of the file; afterwards behind the last byte that belongs to it
    /// @return the tree, and the name of its root group
    /// @throws Exception         for a stream that has failed, for text that is no storage file or exceeds a
    ///                           limit, for values that are not of their type
    /// @throws std::logic_error  for a group or item without a name, and for an item without a type
    static std::pair<DataStorage<std::string>, std::string> decode(std::istream& in);
    template <class TStorage>
    static std::pair<TStorage, std::string> decode(std::istream& in)
    {
        static_assert(std::is_same_v<TStorage, DataStorage<std::string>>);
        return decode(in);
    }

    /// The tree of one group element of a parsed document.
    /// @param in          stands at the binary values; not touched for text values
    /// @param group       null and an element without children give an empty tree
    /// @param textValues  whether values are the text of their items
    /// @param endian      byte order of binary values
    /// @throws as `decode`
    static DataStorage<std::string> decodeStorage(std::istream& in, TiXmlNode* group, bool textValues,
                                                  Endian endian);
    template <class TStorage>
    static TStorage decodeStorage(std::istream& in, TiXmlNode* group, bool textValues, Endian endian)
    {
        static_assert(std::is_same_v<TStorage, DataStorage<std::string>>);
        return decodeStorage(in, group, textValues, endian);
    }

    /// Reads the text of a storage file and leaves the stream at its binary values.
    /// @param in          stands at the start of the file; afterwards behind the text
    /// @param textValues  becomes whether values are the text of their items
    /// @param bigEndian   becomes whether binary values are big-endian
    /// @return the parsed document, or an empty pointer if the text is no XML
    /// @throws Exception  for a package instruction that is not in order, and for text beyond a limit
    static std::shared_ptr<TiXmlDocument> getPackageInfo(std::istream& in, bool& textValues, bool& bigEndian);
};

} // namespace velmo::exp
