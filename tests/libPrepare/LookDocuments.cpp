#include "LookDocuments.h"

namespace test {

std::string triangleGeometry(const std::string& id, const std::string& symbol)
{
    return "<geometry id=\"" + id + "\"><mesh><source id=\"" + id + "-p\"><float_array id=\"" + id +
           "-a\" count=\"9\">0 0 0 1 0 0 0 1 0</float_array><technique_common><accessor source=\"#" + id +
           "-a\" count=\"3\" stride=\"3\"><param name=\"X\" type=\"float\"/><param name=\"Y\" type=\"float\"/>"
           "<param name=\"Z\" type=\"float\"/></accessor></technique_common></source><vertices id=\"" +
           id + "-v\"><input semantic=\"POSITION\" source=\"#" + id + "-p\"/></vertices><triangles count=\"1\"" +
           (symbol.empty() ? "" : " material=\"" + symbol + "\"") + "><input semantic=\"VERTEX\" source=\"#" + id +
           "-v\" offset=\"0\"/><p>0 1 2</p></triangles></mesh></geometry>";
}

std::string geometryNode(const std::string& geometry, const std::string& bindings)
{
    return "<node id=\"" + geometry +
           "-node\"><matrix>1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix>"
           "<instance_geometry url=\"#" +
           geometry + "\">" +
           (bindings.empty() ? ""
                             : "<bind_material><technique_common>" + bindings + "</technique_common></bind_material>") +
           "</instance_geometry></node>";
}

std::string bindMaterial(const std::string& symbol, const std::string& material)
{
    return "<instance_material symbol=\"" + symbol + "\" target=\"#" + material + "\"/>";
}

std::string shownNodes(const std::string& nodes)
{
    return "<library_visual_scenes><visual_scene id=\"scene\">" + nodes +
           "</visual_scene></library_visual_scenes><scene><instance_visual_scene url=\"#scene\"/></scene>";
}

std::string effect(const std::string& id, const std::string& shader, const std::string& scope)
{
    return "<effect id=\"" + id + "\"><profile_COMMON>" + scope + "<technique sid=\"common\">" + shader +
           "</technique></profile_COMMON></effect>";
}

std::string material(const std::string& id, const std::string& effect, const std::string& setparams)
{
    return "<material id=\"" + id + "\"><instance_effect url=\"#" + effect + "\">" + setparams +
           "</instance_effect></material>";
}

std::string shownEffect(const std::string& effects, const std::string& more)
{
    return more + "<library_effects>" + effects + "</library_effects><library_materials>" + material("mat", "fx") +
           "</library_materials><library_geometries>" + triangleGeometry("geo", "sym") + "</library_geometries>" +
           shownNodes(geometryNode("geo", bindMaterial("sym", "mat")));
}

std::string shownShader(const std::string& shader, const std::string& scope, const std::string& more)
{
    return shownEffect(effect("fx", shader, scope), more);
}

} // namespace test
