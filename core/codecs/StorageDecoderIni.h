#pragma once

#include "core/Exception.h"
#include "core/Export.h"
#include "core/datatypes/DataStorage.h"

#include <istream>
#include <string>
#include <type_traits>
#include <utility>

namespace velmo::exp {

/// Reads a storage tree from INI text, line by line:
///
/// - `[section/sub]` opens a group, and makes it if there is none; what follows goes into it.
/// - `key = value` stores a value, replacing an earlier one: a bool (`true`, `false`), a signed 64-bit
///   integer, a double, a `uint8[]` (two or more comma-separated numbers 0 to 255), or else a string;
///   the first that fits. Keys may be paths.
/// - Lines that begin with `;` or `#` are comments; empty lines mean nothing. White space around lines,
///   keys, values and section names does not count.
///
/// Refused are a text of more than 64 MiB, more than 100,000 keys and sections, ids of more than 500
/// components, and ids that name more than 100,000 groups in all.
///
/// An exception mask of the stream does not matter: it is as before afterwards, also after an error; of the
/// state that reading left, what it would throw for is cleared.
class VELMO_API StorageDecoderIni
{
public:
    /// @param in  is read to its end
    /// @return the tree; the name is empty
    /// @throws Exception  for a stream that has failed, for a line that is none of the above, an invalid
    ///                    id, a path through a value that is no group, and for text beyond a limit
    static std::pair<DataStorage<std::string>, std::string> decode(std::istream& in);
    template <class TStorage>
    static std::pair<TStorage, std::string> decode(std::istream& in)
    {
        static_assert(std::is_same_v<TStorage, DataStorage<std::string>>);
        return decode(in);
    }
};

} // namespace velmo::exp
