#pragma once

#include <pugixml.hpp>

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace libPrepare {

class Document;

/// All elements of a name below another, in document order; of any name if it is null.
std::vector<pugi::xml_node> elementsBelow(pugi::xml_node top, const char* name);

/// The `<material>` that an `<instance_material>` leads to; null if there is none.
pugi::xml_node materialOf(Document& document, pugi::xml_node instanceMaterial);
/// The same, or the material whose id is the symbol. The reference is corrected where it leads to no material itself.
pugi::xml_node repairedMaterialOf(Document& document, pugi::xml_node instanceMaterial);
/// The `<effect>` that a `<material>` leads to; null if there is none.
pugi::xml_node effectOf(Document& document, pugi::xml_node material);
/// The materials that the shown scene binds to its meshes, each once, in the order of the first binding.
std::vector<pugi::xml_node> shownMaterials(Document& document);

/// The part of an `<effect>` with its shading. All null if there is none.
struct Shading {
    pugi::xml_node profile;   ///< `<profile_COMMON>`.
    pugi::xml_node technique; ///< Its first `<technique>`.
    pugi::xml_node shader;    ///< `<constant>`, `<lambert>`, `<phong>` or `<blinn>`.

    explicit operator bool() const { return static_cast<bool>(shader); }
};
/// The first shader in the first technique of a common profile.
Shading shadingOf(pugi::xml_node effect);
/// The first shader of a `<technique>`; null if there is none.
pugi::xml_node shaderOf(pugi::xml_node technique);

/// The `<newparam>` elements for names in a shader: those of the technique take precedence over those of the profile,
/// and these over the effect's.
class Parameters {
public:
    Parameters(pugi::xml_node effect, const Shading& shading);

    /// Lets a `<setparam>` of a material replace the parameter that it names, if that exists and the new value is numeric.
    void set(pugi::xml_node setparam);
    /// The `<newparam>` or `<setparam>`; null if there is none.
    pugi::xml_node find(std::string_view name) const;
    /// The `<float>`, `<float2>` ... of a parameter; null if it holds something else.
    pugi::xml_node numbersOf(std::string_view name) const;
    /// The `<float>`, `<float2>` ... that a `<setparam>` sets; null if it sets something else.
    static pugi::xml_node numbersIn(pugi::xml_node setparam);

private:
    void read(pugi::xml_node scope);

    std::unordered_map<std::string, pugi::xml_node> m_byName;
};

/// The targets of the name in a `<texture>`.
struct TextureChain {
    pugi::xml_node sampler; ///< The `<newparam>` of the first sampler; null if the name skips it.
    pugi::xml_node surface; ///< The `<newparam>` of the surface; null if the names skip it.
    pugi::xml_node image;   ///< Null if the name leads nowhere.
};
TextureChain followTexture(Document& document, const Parameters& parameters, std::string_view name);

/// Whether a channel such as `<diffuse>` has a `<color>` of at least three numbers and nothing that goes before it.
bool isPlainColor(pugi::xml_node channel);
/// Replaces what a channel holds by a color.
void setColor(pugi::xml_node channel, const std::string& text);
/// A channel of a shader. It is created at its place if it is missing.
pugi::xml_node needChannel(pugi::xml_node shader, const char* name);

} // namespace libPrepare
