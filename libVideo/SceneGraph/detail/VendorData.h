#pragma once

/// @file
/// Reads the vendor data of cameras and lights, such as the node that they look at.

#include "Dom.h"

#include <cstddef>
#include <string>

namespace libVideo::detail {

/// Visits the elements of the one vendor profile that is read, in document order, until `isFound` returns true.
/// @param isFound called with a `daeElement&`
/// @return the element for which it returned true, or null
template <class Predicate>
daeElement* findVendorChild(const domExtra_Array& extras, const Predicate& isFound)
{
    for (std::size_t i = 0; i < extras.getCount(); ++i) {
        const domTechnique_Array& techniques = extras[i]->getTechnique_array();
        for (std::size_t j = 0; j < techniques.getCount(); ++j) {
            if (vesk::String::compareNoCase(techniques[j]->getProfile(), "FCOLLADA") != 0) {
                continue;
            }
            const daeElementRefArray& children = techniques[j]->getContents();
            for (std::size_t k = 0; k < children.getCount(); ++k) {
                if (isFound(*children[k])) {
                    return children[k];
                }
            }
        }
    }
    return nullptr;
}

/// Id of the node that a look-at reference names. The reference is parsed by the base URI of the `DAE`, which keeps it.
/// If the text is not a valid URI, the id is the rest after the first "#", without surrounding blanks.
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
