#pragma once

#include <string>
#include <vector>

namespace velmo::recordings {

/// Whether `left` comes before `right` when runs of digits count as numbers: frame_2 before frame_10.
bool naturallyBefore(const std::string& left, const std::string& right);

/// The ending of a name in lower case, with its dot: ".png". Empty if there is none.
std::string endingOf(const std::string& path);

/// The files that `inputs` stand for: a file stands for itself, a folder for the files in it whose names end
/// in one of `endings` (lower case, with the dot; empty: all files), a pattern with * ? [] for what matches
/// it. Folders and patterns come in natural order, inputs in the order given.
///
/// @throws Exception  for an input that stands for no file
std::vector<std::string> listFiles(const std::vector<std::string>& inputs,
                                   const std::vector<std::string>& endings);

} // namespace velmo::recordings
