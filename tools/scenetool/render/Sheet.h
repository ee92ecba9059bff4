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

/// Draws one document at the size of a cell. Called from any thread; it may use another process. An exception cancels
/// the sheet.
using SheetWorker = std::function<SheetCell(const std::string& file)>;
/// Receives the number of finished documents.
using SheetProgress = std::function<void(unsigned done, unsigned all)>;

/// Layout of a sheet; sizes are in pixels.
struct SheetOptions {
    unsigned workers = 1; ///< number of documents drawn at a time
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
                    const SheetWorker& worker, const SheetProgress& progress);

} // namespace scenetool
