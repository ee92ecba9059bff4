#include "Sheet.h"

#include "../common/DocumentFiles.h"

#include <stb/stb_easy_font.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace scenetool {

namespace {

constexpr unsigned gap = 8;
constexpr unsigned labelHeight = 20;
constexpr unsigned textTop = 5;   // space above a label
constexpr unsigned textStep = 13; // height of a line
constexpr std::size_t maxSheetPixels = 134217728;

using Color = std::array<unsigned char, 3>;

constexpr Color paper{28, 30, 34};
constexpr Color ink{230, 230, 226};
constexpr Color faultPaper{74, 32, 34};

struct Place {
    unsigned x;
    unsigned y;
};

void fill(Picture& picture, Place from, unsigned width, unsigned height, const Color& color)
{
    for (unsigned y = from.y; y < std::min(from.y + height, picture.height); ++y) {
        for (unsigned x = from.x; x < std::min(from.x + width, picture.width); ++x) {
            unsigned char* const pixel = picture.row(y) + 4 * std::size_t(x);
            std::copy(color.begin(), color.end(), pixel);
            pixel[3] = 255;
        }
    }
}

// Replaces characters that are not ASCII, because the font does not have them.
std::string plain(std::string text)
{
    for (char& c : text) {
        c = c < ' ' || c > '~' ? '?' : c;
    }
    return text;
}

unsigned widthOf(std::string text)
{
    return static_cast<unsigned>(stb_easy_font_width(text.data()));
}

void write(Picture& picture, Place at, std::string text)
{
    struct Corner {
        float x, y, z;
        unsigned char color[4];
    };
    std::vector<Corner> corners(320 * text.size() + 4); // four per stroke; letters have fewer than 80 strokes
    const int strokes = stb_easy_font_print(0, 0, text.data(), nullptr, corners.data(),
                                            static_cast<int>(corners.size() * sizeof(Corner)));
    for (int i = 0; i < strokes; ++i) {
        const Corner& first = corners[4 * static_cast<std::size_t>(i)];
        const Corner& last = corners[4 * static_cast<std::size_t>(i) + 2];
        fill(picture, {at.x + static_cast<unsigned>(first.x), at.y + static_cast<unsigned>(first.y)},
             static_cast<unsigned>(last.x - first.x), static_cast<unsigned>(last.y - first.y), ink);
    }
}

// Shortens a long name at its start, because the end distinguishes files better.
std::string fitted(const std::string& text, unsigned width)
{
    std::string result = text;
    for (std::size_t cut = 1; widthOf(result) > width && cut < text.size(); ++cut) {
        result = "..." + text.substr(cut);
    }
    return result;
}

// Breaks text into lines at blanks, or within a word that is longer than a line.
std::vector<std::string> wrapped(const std::string& text, unsigned width)
{
    std::vector<std::string> lines(1);
    for (const char c : text) {
        if (widthOf(lines.back() + c) > width) {
            const std::size_t blank = lines.back().rfind(' ');
            const std::string rest = blank == std::string::npos ? std::string() : lines.back().substr(blank + 1);
            lines.back().resize(blank == std::string::npos ? lines.back().size() : blank);
            lines.push_back(rest);
        }
        lines.back() += c;
    }
    return lines;
}

void copy(const Picture& from, Picture& to, Place place, const SheetOptions& options)
{
    const unsigned width = std::min(from.width, options.cellWidth);
    for (unsigned y = 0; y < std::min(from.height, options.cellHeight); ++y) {
        std::memcpy(to.row(place.y + y) + 4 * std::size_t(place.x), from.row(y), 4 * std::size_t(width));
    }
}

void showFault(Picture& sheet, Place place, const std::string& fault, const SheetOptions& options)
{
    fill(sheet, place, options.cellWidth, options.cellHeight, faultPaper);
    unsigned y = place.y + textTop;
    for (const std::string& line : wrapped(plain(fault), options.cellWidth - std::min(options.cellWidth, gap))) {
        if (y + textStep > place.y + options.cellHeight) {
            return;
        }
        write(sheet, {place.x + textTop, y}, line);
        y += textStep;
    }
}

} // namespace

std::vector<std::string> documentsIn(const std::string& folder)
{
    std::error_code error;
    std::vector<std::string> files;
    std::filesystem::recursive_directory_iterator entry(
        folder, std::filesystem::directory_options::skip_permission_denied, error);
    for (; !error && entry != std::filesystem::recursive_directory_iterator(); entry.increment(error)) {
        if (isDocument(*entry)) {
            files.push_back(entry->path().string());
        }
    }
    if (error) {
        throw PictureError(folder + " cannot be listed: " + error.message());
    }
    if (files.empty()) {
        throw PictureError("there is no document in " + folder);
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<std::string> documentsDirectlyIn(const std::string& folder)
{
    std::error_code error;
    std::vector<std::string> files;
    std::filesystem::directory_iterator entry(folder, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        if (isDocument(*entry)) {
            files.push_back(entry->path().string());
        }
    }
    if (error) {
        throw PictureError(folder + " cannot be listed: " + error.message());
    }
    std::sort(files.begin(), files.end());
    return files;
}

Picture renderSheet(const std::vector<std::string>& files, const std::string& folder, const SheetOptions& options,
                    const SheetDrawing& draw)
{
    const auto count = static_cast<unsigned>(files.size());
    const auto columns = static_cast<unsigned>(std::ceil(std::sqrt(static_cast<double>(count))));
    const unsigned rows = (count + columns - 1) / columns;
    const std::size_t width = gap + std::size_t(columns) * (options.cellWidth + gap);
    const std::size_t height = gap + std::size_t(rows) * (options.cellHeight + labelHeight + gap);
    if (width * height > maxSheetPixels) {
        throw PictureError(std::to_string(count) + " documents do not fit into one picture; use a smaller --size");
    }
    Picture sheet(static_cast<unsigned>(width), static_cast<unsigned>(height));
    fill(sheet, {0, 0}, sheet.width, sheet.height, paper);
    const std::vector<SheetCell> cells = draw(files);
    for (unsigned i = 0; i < count; ++i) {
        const Place place{gap + (i % columns) * (options.cellWidth + gap),
                          gap + (i / columns) * (options.cellHeight + labelHeight + gap)};
        const SheetCell& cell = cells[i];
        if (cell.picture) {
            copy(*cell.picture, sheet, place, options);
        } else {
            showFault(sheet, place, cell.fault, options);
        }
        const std::string name = std::filesystem::path(files[i]).lexically_relative(folder).string();
        write(sheet, {place.x, place.y + options.cellHeight + textTop}, fitted(plain(name), options.cellWidth));
    }
    return sheet;
}

} // namespace scenetool
