#include "DrawnDocuments.h"

#include "support/ColladaBuilder.h"
#include "support/Words.h"

namespace docsTests {

using testSupport::ColladaBuilder;

namespace {

// A triangle of size 1 that faces +z, with its lower left corner at the origin.
std::string corner(const std::string& name)
{
    return "<geometry id='" + name + "'><mesh><source id='" + name + "-s'><float_array id='" + name +
           "-a' count='9'>0 0 0 1 0 0 0 1 0</float_array><technique_common><accessor source='#" + name +
           "-a' count='3' stride='3'><param name='X' type='float'/><param name='Y' type='float'/>"
           "<param name='Z' type='float'/></accessor></technique_common></source><vertices id='" +
           name + "-v'><input semantic='POSITION' source='#" + name + "-s'/></vertices><triangles material='" + name +
           "' count='1'><input semantic='VERTEX' source='#" + name +
           "-v' offset='0'/><p>0 1 2</p></triangles></mesh></geometry>";
}

std::string material(const std::string& name)
{
    return "<material id='" + name + "-material'><instance_effect url='#" + name + "-effect'/></material>";
}

} // namespace

std::string glow(const std::string& name, const std::string& color)
{
    return "<effect id='" + name + "-effect'><profile_COMMON><technique sid='t'><phong><emission><color>" + color +
           "</color></emission><diffuse><color>0 0 0 1</color></diffuse></phong></technique></profile_COMMON></effect>";
}

std::string shown(const std::string& name, const std::string& place)
{
    return "<node id='" + name + "-node'><translate sid='place'>" + place + "</translate><instance_geometry url='#" +
           name + "'><bind_material><technique_common><instance_material symbol='" + name + "' target='#" + name +
           "-material'/></technique_common></bind_material></instance_geometry></node>";
}

std::string threeTriangles(const std::string& viewer, const std::string& extra)
{
    return ColladaBuilder(
               "<library_cameras><camera id='eye'><optics><technique_common><perspective><xfov>90</xfov><yfov>90</yfov>"
               "<znear>1</znear><zfar>20</zfar></perspective></technique_common></optics>" +
               extra + "</camera></library_cameras><library_effects>" + glow("red", "1 0 0 1") +
               glow("green", "0 1 0 1") + glow("blue", "0 0 1 1") + "</library_effects><library_materials>" +
               material("red") + material("green") + material("blue") + "</library_materials><library_geometries>" +
               corner("red") + corner("green") + corner("blue") + "</library_geometries>")
        .addScene("<node id='middle'><translate>0 0 0</translate></node><node id='viewer'>" + viewer +
                  "<instance_camera url='#eye'/></node>" + shown("red", "2 2 0") + shown("green", "-2 -2 0") +
                  shown("blue", "2 2 -0.1"))
        .text();
}

std::string seenFromTheFront(const std::string& libraries, const std::string& nodes)
{
    return ColladaBuilder("<library_cameras><camera id='eye'>" +
                          testSupport::optics("<xfov>90</xfov><yfov>90</yfov><znear>1</znear><zfar>20</zfar>") +
                          "</camera></library_cameras>" + libraries)
        .addScene("<node id='viewer'><translate>0 0 5</translate><instance_camera url='#eye'/></node>" + nodes)
        .text();
}

std::string materialAndMesh(const std::string& name, const std::string& effectLibrary)
{
    return effectLibrary + "<library_materials>" + material(name) + "</library_materials><library_geometries>" +
           corner(name) + "</library_geometries>";
}

} // namespace docsTests
