#pragma once

#include "core/Exception.h"
#include "core/Export.h"
#include "core/datatypes/DataStorage.h"
#include "vision/id/Palette.h"
#include "vision/imgproc/ColorPaletteConverter.h"
#include "vision/imgproc/ColorRegion.h"

#include <string>
#include <vector>

namespace velmo::vision {

/// The false-colour palettes of the process: twelve built-in ones, those a caller adds and those from files.
/// A palette is a byte vector of 3 x N bytes, N at least 1: colour points of red, green and blue from the
/// coldest to the hottest end, which ColorPaletteConverter stretches over a range of values.
///
/// All known palettes are available; those that a device offers to its user are supported, and one of these
/// is active. Names are compared byte by byte. Nothing is registered when the library is loaded: the first
/// loadPalettes or getPaletteColors registers the built-in palettes. Palettes can be replaced but not
/// removed.
///
/// Every operation holds one recursive mutex from its start to its end, so that any number of threads may
/// call them. The data members are for reading while no other thread uses the manager. Registries, built-in
/// colours and the active name are ready before static objects of ordinary priority are built.
class VELMO_API ColorPaletteManager
{
public:
    ColorPaletteManager() = delete;

    static exp::DataStorage<std::string> m_stoAvailablePalettes; ///< name to byte vector
    static exp::DataStorage<std::string> m_stoSupportedPalettes; ///< shares the values of the available ones
    static std::string m_strActivePalette;                       ///< "Ironbow" until set otherwise

    /// Names of the supported palettes in ascending byte-wise order. Loads nothing.
    static std::vector<std::string> getSupportedPalettesNames();

    /// Names of the available palettes in the same order. Loads nothing.
    static std::vector<std::string> getAvailableColorPalettes();

    /// @throws Exception  if `name` is not supported; the active palette stays
    static void setActivePalette(const std::string& name);

    /// Makes available palettes supported, in addition to those that are.
    ///
    /// @throws Exception  for the first name that is not available; those before it are supported then
    static void setSupportedColorPalettes(std::vector<std::string> names);

    /// Makes a palette available and supported; replaces one of the same name.
    ///
    /// @param name    not empty and without "/", which separates groups in a storage
    /// @param colors  3 x N bytes, N at least 1
    /// @throws Exception  for another size and for such a name; nothing changes then
    static void addPalette(const std::string& name, std::vector<unsigned char> colors);

    /// Registers the built-in palettes as available, Ironbow also as supported, whatever stood under their
    /// names; then loads the files in their order.
    static void loadPalettes(std::vector<std::string> files);

    /// Makes every top-level entry of an XML storage file available and supported, whatever its type and
    /// size; getPaletteColors refuses what is no byte vector. A file that cannot be opened, a named pipe
    /// among them, is passed over in silence. Any other error is printed on standard output and ends the
    /// loading of this file. A file of more than 81 MiB is such an error.
    static void loadFile(const std::string& path);

    /// A copy of the colour points of an available palette; registers the built-in ones if none is.
    ///
    /// @throws Exception  if `name` is not available, or what stands under it is no byte vector
    static std::vector<unsigned char> getPaletteColors(const std::string& name);

    /// The colour points of the supported palettes in the order of their names.
    ///
    /// @throws Exception  as getPaletteColors
    static std::vector<std::vector<unsigned char>> getSupportedPalettesColors();
};

} // namespace velmo::vision
