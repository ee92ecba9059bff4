#pragma once

/// @file
/// The vendor data that cameras and lights carry: what they look at.

#include "Dom.h"

#include <string>

namespace libVideo::detail {

/// Whether a technique is of the one vendor profile that is read.
inline bool isVendorTechnique(const domTechnique& technique)
{
    return vesk::String::compareNoCase(technique.getProfile(), "FCOLLADA") == 0;
}

/// Id of the node that a look-at reference names. The base URI of the `DAE` parses it and keeps it. Of a text that is no
/// URI to it, what stands behind the first "#" counts, without the blanks around it.
inline vesk::String lookAtId(const std::string& text, DAE& dae)
{
    daeURI& parser = dae.getBaseURI();
    parser.setURI(text.c_str(), nullptr);
    if (!parser.originalStr().empty()) {
        return parser.fragment().c_str();
    }
    const std::size_t hash = text.find('#');
    if (hash == std::string::npos) {
        return vesk::String();
    }
    static constexpr const char* blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks, hash + 1);
    if (first == std::string::npos) {
        return vesk::String();
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1).c_str();
}

} // namespace libVideo::detail
