#pragma once

#include "Prepared.h"

#include <string>

namespace test {

/// `<geometry id="...">` with one triangle.
std::string triangleGeometry(const std::string& id, const std::string& symbol);
/// A `<node>` that shows a geometry, with the bindings of its symbols.
std::string geometryNode(const std::string& geometry, const std::string& bindings);
std::string bindMaterial(const std::string& symbol, const std::string& material);
/// `<library_visual_scenes>` with these nodes, and the `<scene>` that shows it.
std::string shownNodes(const std::string& nodes);
/// `<effect id="...">` with a common profile that has this technique. `scope` comes before the technique.
std::string effect(const std::string& id, const std::string& shader, const std::string& scope = {});
/// `<material id="...">` of an effect.
std::string material(const std::string& id, const std::string& effect, const std::string& setparams = {});
/// A document with a triangle that shows one effect, "fx", by the material "mat" and the symbol "sym".
std::string shownEffect(const std::string& effects, const std::string& more = {});
/// The same with an effect of this shader.
std::string shownShader(const std::string& shader, const std::string& scope = {}, const std::string& more = {});

} // namespace test
