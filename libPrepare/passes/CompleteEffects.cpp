#include "Passes.h"

#include <libPrepare/document/Document.h>
#include <libPrepare/document/Looks.h>
#include <libPrepare/document/Numbers.h>
#include <libPrepare/document/Tree.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace libPrepare {

namespace {

const std::string black = "0 0 0 1";

std::string nameOf(pugi::xml_node element)
{
    return std::string("<") + element.name() + "> \"" + element.attribute("id").value() + "\"";
}

// ------------------------------------------------------------------------------------------- parameters of materials

// Gives each material its own effect if they set the parameters of a shared effect differently.
class EffectSplitter {
public:
    explicit EffectSplitter(Document& document) : m_document(document) {}

    void run(const std::vector<pugi::xml_node>& materials)
    {
        countUsers();
        for (const pugi::xml_node material : materials) {
            const pugi::xml_node effect = effectOf(m_document, material);
            if (!effect || !material.child("instance_effect").child("setparam")) {
                continue;
            }
            const std::string changes = changesBy(material, effect);
            if (!changes.empty()) {
                separate(material, effect, changes);
            }
        }
    }

private:
    void countUsers()
    {
        for (const pugi::xml_node library : m_document.root().children("library_materials")) {
            for (const pugi::xml_node material : library.children("material")) {
                ++m_users[effectOf(m_document, material).hash_value()];
            }
        }
    }

    // The parameters that the colors and numbers of an effect refer to.
    const std::unordered_set<std::string>& parametersIn(pugi::xml_node effect)
    {
        const auto [entry, isNew] = m_parameters.try_emplace(effect.hash_value());
        if (isNew) {
            const Shading shading = shadingOf(effect);
            const Parameters parameters(effect, shading);
            for (const pugi::xml_node channel : shading.shader.children()) {
                const std::string name(trimmed(channel.child("param").attribute("ref").value()));
                if (parameters.find(name)) {
                    entry->second.insert(name);
                }
            }
        }
        return entry->second;
    }

    // The changes that a material's <setparam> elements make to the shader, as a text for comparison.
    std::string changesBy(pugi::xml_node material, pugi::xml_node effect)
    {
        const std::unordered_set<std::string>& parameters = parametersIn(effect);
        std::map<std::string, std::string> values; // a later one overrides an earlier one
        for (const pugi::xml_node setparam : material.child("instance_effect").children("setparam")) {
            const std::string name(trimmed(setparam.attribute("ref").value()));
            const pugi::xml_node numbers = Parameters::numbersIn(setparam);
            if (numbers && parameters.count(name) > 0) {
                values[name] = textOf(numbers);
            }
        }
        std::string changes;
        for (const auto& [name, value] : values) {
            changes += name;
            changes += '=';
            changes += value;
            changes += '\n';
        }
        return changes;
    }

    void separate(pugi::xml_node material, pugi::xml_node effect, const std::string& changes)
    {
        if (m_users[effect.hash_value()] <= 1) {
            return; // no other material uses the effect
        }
        std::string& id = m_copies[std::to_string(effect.hash_value()) + '\n' + changes];
        if (id.empty()) {
            if (!m_document.takeBytes(sizeOf(effect))) {
                m_document.lost(material, "setparam",
                                "The effect of " + nameOf(material) + " would be too large to copy.",
                                "raise the limit for the size of the result");
                return;
            }
            pugi::xml_node copy = effect.parent().insert_copy_after(effect, effect);
            dropInnerIds(copy);
            id = m_document.freshId(std::string(effect.attribute("id").value()) + '-' +
                                    material.attribute("id").value());
            m_document.setId(copy, id);
            m_document.setOrigin(copy, effect);
        }
        --m_users[effect.hash_value()];
        setAttribute(material.child("instance_effect"), "url", '#' + id);
        m_document.rewritten(material, "setparam",
                             nameOf(material) + " sets parameters of an effect that others show, too.",
                             "it has an effect of its own: \"" + id + "\"");
    }

    // Images in a copy are those of the original.
    static void dropInnerIds(pugi::xml_node copy)
    {
        for (pugi::xml_node element : elementsBelow(copy, nullptr)) {
            element.remove_attribute("id");
        }
    }

    Document& m_document;
    std::unordered_map<std::size_t, std::unordered_set<std::string>> m_parameters;
    std::unordered_map<std::size_t, unsigned> m_users;
    std::unordered_map<std::string, std::string> m_copies;
};

// ----------------------------------------------------------------------------------------------------------- shaders

// Completes the shader of one effect.
class EffectCompleter {
public:
    EffectCompleter(Document& document, pugi::xml_node effect, const Shading& shading, pugi::xml_node material)
        : m_document(document), m_effect(effect), m_shader(shading.shader), m_parameters(effect, shading)
    {
        for (const pugi::xml_node setparam : material.child("instance_effect").children("setparam")) {
            m_parameters.set(setparam);
            reportTexture(setparam);
        }
    }

    /// The opacity texture of the effect, without a symbol; no image if it has none.
    const OpacityTexture& opacityTexture() const { return m_opacityTexture; }

    void run()
    {
        for (const char* const name : {"emission", "ambient", "diffuse", "specular", "reflective"}) {
            completeColor(name);
        }
        for (const char* const name : {"shininess", "reflectivity", "transparency", "index_of_refraction"}) {
            if (const pugi::xml_node channel = m_shader.child(name)) {
                completeFloat(channel);
            }
        }
        completeOpacity();
        if (!m_absent.empty()) {
            m_document.rewritten(m_shader, "channel", "The shader of " + nameOf(m_effect) + " has no " + m_absent + ".",
                                 "written out as black, which adds nothing");
        }
        if (is(m_shader, "lambert") || is(m_shader, "constant")) {
            m_document.rewritten(m_shader, m_shader.name(), "Lambert and constant shaders are not read.",
                                 is(m_shader, "lambert") ? "a <phong> without a highlight"
                                                         : "a <phong> that only emits");
            m_shader.set_name("phong");
        }
    }

private:
    // Samplers and surfaces are those of the effect.
    void reportTexture(pugi::xml_node setparam)
    {
        const bool isTexture = setparam.child("surface") || setparam.find_child([](pugi::xml_node child) {
            return std::string_view(child.name()).substr(0, 7) == "sampler";
        });
        const std::string name(trimmed(setparam.attribute("ref").value()));
        if (isTexture && m_parameters.find(name)) {
            m_document.lost(setparam, "setparam",
                            "A material sets the texture parameter \"" + name +
                                "\" of its effect, which is not followed.",
                            "give the material an effect of its own");
        }
    }

    // Channels that a kind of shader does not have are black, whatever the document says.
    bool hasChannel(std::string_view name) const
    {
        if (is(m_shader, "constant")) {
            return name == "emission" || name == "reflective";
        }
        return name != "specular" || !is(m_shader, "lambert");
    }

    void completeColor(const char* name)
    {
        const pugi::xml_node channel = m_shader.child(name);
        if (!hasChannel(name)) {
            if (!channel || !isBlack(channel)) {
                setColor(needChannel(m_shader, name), black);
            }
            return;
        }
        if (const pugi::xml_node texture = channel.child("texture")) {
            if (channel.child("color") || channel.child("param")) {
                keepOnly(channel, texture);
            }
            return;
        }
        if (const pugi::xml_node reference = channel.child("param")) {
            resolveColor(channel, reference);
        }
        if (!isPlainColor(channel)) {
            m_absent += (m_absent.empty() ? "" : ", ") + std::string(name);
            setColor(needChannel(m_shader, name), black);
        }
    }

    static bool isBlack(pugi::xml_node channel)
    {
        const std::vector<double> color = numbersOf(channel.child("color"));
        return isPlainColor(channel) && std::all_of(color.begin(), color.begin() + 3, [](double v) { return v == 0; });
    }

    // A texture takes precedence over other forms of color.
    void keepOnly(pugi::xml_node channel, pugi::xml_node texture)
    {
        m_document.rewritten(channel, "channel", "A channel has a texture and a color.", "the texture stays");
        for (pugi::xml_node child = channel.first_child(); child;) {
            const pugi::xml_node next = child.next_sibling();
            if (child != texture && (is(child, "color") || is(child, "param"))) {
                discard(child);
            }
            child = next;
        }
    }

    void resolveColor(pugi::xml_node channel, pugi::xml_node reference)
    {
        const std::string name(trimmed(reference.attribute("ref").value()));
        const pugi::xml_node values = m_parameters.numbersOf(name);
        std::string text(trimmed(textOf(values)));
        const std::size_t count = words(text).size();
        if (count < 3) {
            m_document.lost(channel, "param", "The parameter \"" + name + "\" is no color.",
                            "give it three numbers or four");
            setText(channel, {}); // which leaves it black
            return;
        }
        if (count == 3) {
            text += " 1";
        }
        setColor(channel, text);
        m_document.rewritten(channel, "param", "A channel is the parameter \"" + name + "\".",
                             "its value is written out");
    }

    void completeFloat(pugi::xml_node channel)
    {
        const pugi::xml_node reference = channel.child("param");
        if (!reference) {
            return;
        }
        const std::string name(trimmed(reference.attribute("ref").value()));
        const std::string text = textOf(m_parameters.numbersOf(name));
        const std::vector<std::string_view> values = words(text);
        if (values.empty()) {
            m_document.lost(channel, "param", "The parameter \"" + name + "\" is no number.", "give it a value");
            m_document.rewritten(channel, "param", "A value leads nowhere.", "taken out");
            discard(channel);
            return;
        }
        setFloat(channel, std::string(values.front()));
        m_document.rewritten(channel, "param", "A value is the parameter \"" + name + "\".", "it is written out");
    }

    static void setFloat(pugi::xml_node channel, const std::string& text)
    {
        if (const pugi::xml_node reference = channel.child("param")) {
            discard(reference);
        }
        setText(channel.child("float") ? channel.child("float") : channel.append_child("float"), text);
    }

    // ------------------------------------------------------------------------------------------------------- opacity

    // <transparency> alone is read, as the opacity. What <transparent> adds has to be in it.
    void completeOpacity()
    {
        pugi::xml_node transparent = m_shader.child("transparent");
        if (transparent.child("param") && !transparent.child("texture")) {
            resolveColor(transparent, transparent.child("param"));
        }
        const pugi::xml_node declared = m_shader.child("transparency").child("float");
        const double factor = declared ? numberOr(textOf(declared), 1) : 1;
        double opacity = factor;
        const std::string mode = transparent.attribute("opaque").as_string("A_ONE");
        const bool isByColor = mode == "RGB_ZERO" || mode == "RGB_ONE";
        const bool isInverted = mode == "RGB_ZERO" || mode == "A_ZERO";
        bool isKept = !isByColor && !isInverted;
        if (const pugi::xml_node texture = transparent.child("texture")) {
            opacity = opacityOfTexture(transparent, texture, factor, isByColor, isInverted);
        } else if (transparent.child("color")) {
            std::vector<double> color = numbersOf(transparent.child("color"));
            color.resize(4, 1.0);
            const double luminance = color[0] * 0.212671 + color[1] * 0.715160 + color[2] * 0.072169;
            const double share = (isByColor ? luminance : color[3]) * factor;
            opacity = isInverted ? 1 - share : share;
            isKept = isKept && color[3] == 1;
        } else if (transparent) {
            isKept = false;
            opacity = isInverted ? 1 : factor; // nothing says how much light passes
        }
        opacity = std::isfinite(opacity) ? std::min(std::max(opacity, 0.0), 1.0) : 1.0;
        const bool isDeclared = number(trimmed(textOf(declared))) == opacity; // the number keeps its text
        if (opacity == 0) {
            m_document.lost(m_shader, "invisible",
                            "By the standard nothing is seen of " + nameOf(m_effect) + ": its opacity is 0.",
                            "some programs mean the opposite: write 1 into <transparency> if it should be seen");
        }
        if (isKept && isDeclared) {
            return;
        }
        if (!isKept) {
            setAttribute(transparent, "opaque", "A_ONE");
            setColor(transparent, "1 1 1 1");
        }
        if (!isDeclared) {
            setFloat(needChannel(m_shader, "transparency"), text(opacity));
        }
        m_document.rewritten(m_shader, "opacity",
                             "The opacity of " + nameOf(m_effect) + " is in several values, or in none.",
                             "<transparency> holds it: " + text(opacity));
    }

    // The alpha of the diffuse texture is always used. No other texture can make a face transparent.
    double opacityOfTexture(pugi::xml_node transparent, pugi::xml_node texture, double factor, bool isByColor,
                            bool isInverted)
    {
        const pugi::xml_node diffuse = m_shader.child("diffuse").child("texture");
        const pugi::xml_node image =
            followTexture(m_document, m_parameters, texture.attribute("texture").value()).image;
        const bool isDiffuse =
            diffuse && image &&
            image == followTexture(m_document, m_parameters, diffuse.attribute("texture").value()).image;
        if (!isByColor && !isInverted && isDiffuse) {
            return factor;
        }
        if (factor == 0) { // the texture has no say
            return isInverted ? 1 : 0;
        }
        m_opacityTexture.image = image.attribute("id").value();
        m_opacityTexture.wrapS = wrapOf(texture, "wrap_s");
        m_opacityTexture.wrapT = wrapOf(texture, "wrap_t");
        m_opacityTexture.isByColor = isByColor;
        m_opacityTexture.isInverted = isInverted;
        m_opacityTexture.factor = factor;
        if (!isByColor && !isInverted) {
            m_document.lost(transparent, "transparent-texture",
                            "Only the diffuse texture can make parts of a face transparent.",
                            "put the opacity into the alpha of the diffuse texture");
            return factor;
        }
        m_document.lost(transparent, "transparent-texture", "A texture says by its colors how much light passes.",
                        "put the opacity into the alpha of the diffuse texture");
        return 1;
    }

    std::string wrapOf(pugi::xml_node texture, const char* name) const
    {
        const pugi::xml_node sampler =
            followTexture(m_document, m_parameters, texture.attribute("texture").value()).sampler.child("sampler2D");
        return std::string(trimmed(textOf(sampler.child(name))));
    }

    Document& m_document;
    OpacityTexture m_opacityTexture;
    pugi::xml_node m_effect;
    pugi::xml_node m_shader;
    Parameters m_parameters;
    std::string m_absent;
};

// The shading of an effect. Where only a later technique of a profile has a shader, it becomes the first.
Shading needShading(Document& document, pugi::xml_node effect)
{
    if (const Shading shading = shadingOf(effect)) {
        return shading;
    }
    for (pugi::xml_node profile : effect.children("profile_COMMON")) {
        for (const pugi::xml_node technique : profile.children("technique")) {
            if (shaderOf(technique)) {
                document.rewritten(technique, "technique", "Only the first technique of a profile is read.",
                                   "the first one with a shader is the first now");
                profile.insert_move_before(technique, profile.child("technique"));
                return shadingOf(effect);
            }
        }
    }
    return {};
}

// Reports the opacity textures of effects, by the address of each, for the symbols that show them.
void reportOpacity(Document& document, const std::unordered_map<std::size_t, OpacityTexture>& byEffect)
{
    std::unordered_set<std::string> known;
    for (const pugi::xml_node binding : elementsBelow(shownScene(document), "instance_material")) {
        const auto found = byEffect.find(effectOf(document, materialOf(document, binding)).hash_value());
        if (found != byEffect.end() && known.insert(binding.attribute("symbol").value()).second) {
            document.report().opacityTextures.push_back(found->second);
            document.report().opacityTextures.back().symbol = binding.attribute("symbol").value();
        }
    }
}

} // namespace

void completeEffects(Document& document)
{
    const std::vector<pugi::xml_node> materials = shownMaterials(document);
    EffectSplitter(document).run(materials);
    std::unordered_set<std::size_t> known;
    std::unordered_map<std::size_t, OpacityTexture> opacities;
    for (const pugi::xml_node material : materials) {
        const pugi::xml_node effect = effectOf(document, material);
        if (!effect) {
            document.lost(material, "effect", nameOf(material) + " leads to no effect.",
                          "give it an <instance_effect>");
            continue;
        }
        if (!document.resolve(material.child("instance_effect").attribute("url").value(), {"effect"})) {
            const std::string id = effect.attribute("id").value();
            setAttribute(material.child("instance_effect"), "url", '#' + id);
            document.rewritten(material, "effect", nameOf(material) + " names its effect as if it were a file.",
                               "it names the effect \"" + id + "\"");
        }
        if (!known.insert(effect.hash_value()).second) {
            continue;
        }
        if (const Shading shading = needShading(document, effect)) {
            EffectCompleter completer(document, effect, shading, material);
            completer.run();
            if (!completer.opacityTexture().image.empty()) {
                opacities.emplace(effect.hash_value(), completer.opacityTexture());
            }
        } else {
            document.lost(effect, "effect", nameOf(effect) + " has no shader in a <profile_COMMON>.",
                          "add a <technique> with a <phong>");
        }
    }
    if (!opacities.empty()) {
        reportOpacity(document, opacities);
    }
}

} // namespace libPrepare
