#pragma once

#include "Picture.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace scenetool {

/// What one document gives to a sheet: a picture, or the reason why there is none.
struct SheetCell {
    std::optional<Picture> picture;
    std::string fault;
};

/// Draws one document, at the size of a cell, from any thread. It may do so in another process; what it throws ends the
/// sheet.
using SheetWorker = std::function<SheetCell(const std::string& file)>;
/// Hears how many documents are done.
using SheetProgress = std::function<void(unsigned done, unsigned all)>;

/// How a sheet is laid out, in pixels.
struct SheetOptions {
    unsigned workers = 1; ///< documents that are drawn at a time
    unsigned cellWidth = 320;
    unsigned cellHeight = 240;
};

/// The documents in a folder and all folders below it, told by the ending .dae in any case, in the order of their
/// paths. @throws PictureError if there is no such folder, or no document in it
std::vector<std::string> documentsIn(const std::string& folder);

/// The documents in a folder itself. @throws PictureError if there is no such folder
std::vector<std::string> documentsDirectlyIn(const std::string& folder);

/// All documents on one picture, each with its name below it, in rows from the top.
/// @param folder what the names are shortened by
/// @throws PictureError for more documents than fit a picture
Picture renderSheet(const std::vector<std::string>& files, const std::string& folder, const SheetOptions& options,
                    const SheetWorker& worker, const SheetProgress& progress);

} // namespace scenetool
