#pragma once

#include "Picture.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace scenetool {

/// One document in a sheet: a picture, or the reason why there is none.
struct SheetCell {
    std::optional<Picture> picture;
    std::string fault;
};

/// Draws the documents, each at the size of a cell. @return their cells in the same order
using SheetDrawing = std::function<std::vector<SheetCell>(const std::vector<std::string>& files)>;

/// Layout of a sheet; sizes are in pixels.
struct SheetOptions {
    unsigned cellWidth = 320;
    unsigned cellHeight = 240;
};

/// The documents in a folder and its subfolders: all files with the extension .dae in any case, sorted by path.
/// @throws PictureError if there is no such folder, or no document in it
std::vector<std::string> documentsIn(const std::string& folder);

/// The documents in a folder without its subfolders. @throws PictureError if there is no such folder
std::vector<std::string> documentsDirectlyIn(const std::string& folder);

/// Draws all documents in one picture, in rows from the top, each with its name below it.
/// @param folder names are relative to it
/// @throws PictureError if the documents do not fit into a picture
Picture renderSheet(const std::vector<std::string>& files, const std::string& folder, const SheetOptions& options,
                    const SheetDrawing& draw);

} // namespace scenetool
