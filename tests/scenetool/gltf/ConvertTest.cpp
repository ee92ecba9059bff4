#include "ConvertedDocument.h"

#include "support/ColladaBuilder.h"
#include "support/Process.h"

#include <libVideo/SceneGraph.h>

#include <meshoptimizer.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

using testSupport::ConvertedDocument;

constexpr double tolerance = 1e-5;

const char* const triangle = R"(<library_geometries><geometry id="plate" name="Plate"><mesh>
    <source id="p"><float_array id="pa" count="9">0 0 0 2 0 0 0 3 0</float_array><technique_common>
        <accessor source="#pa" count="3" stride="3"><param name="X" type="float"/><param name="Y" type="float"/><param name="Z" type="float"/></accessor></technique_common></source>
    <source id="n"><float_array id="na" count="3">0 0 5</float_array><technique_common>
        <accessor source="#na" count="1" stride="3"><param name="X" type="float"/><param name="Y" type="float"/><param name="Z" type="float"/></accessor></technique_common></source>
    <source id="t"><float_array id="ta" count="6">0 0 1 0.25 0 1</float_array><technique_common>
        <accessor source="#ta" count="3" stride="2"><param name="S" type="float"/><param name="T" type="float"/></accessor></technique_common></source>
    <vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
    <triangles material="paint" count="1"><input semantic="VERTEX" source="#v" offset="0"/>
        <input semantic="NORMAL" source="#n" offset="1"/><input semantic="TEXCOORD" source="#t" offset="2"/>
        <p>0 0 0 1 0 1 2 0 2</p></triangles>
    </mesh></geometry></library_geometries>)";

std::string scene(const std::string& nodes)
{
    return "<library_visual_scenes><visual_scene id='s'>" + nodes +
           "</visual_scene></library_visual_scenes><scene><instance_visual_scene url='#s'/></scene>";
}

const char* const shown = "<node id='a' name='A'><translate>1 2 3</translate><instance_geometry url='#plate'/></node>";

TEST(ConvertTest, MeshHasPositionsUnitNormalsAndCoordinatesFromTheTop)
{
    const ConvertedDocument converted(triangle + scene(shown));
    const auto& primitive = converted.json["meshes"][0]["primitives"][0];
    EXPECT_EQ("Plate", converted.json["meshes"][0]["name"]);
    EXPECT_EQ((std::vector<double>{0, 0, 0, 2, 0, 0, 0, 3, 0}), converted.numbers(primitive["attributes"]["POSITION"]));
    EXPECT_EQ((std::vector<double>{0, 0, 1, 0, 0, 1, 0, 0, 1}), converted.numbers(primitive["attributes"]["NORMAL"]));
    EXPECT_EQ((std::vector<double>{0, 1, 1, 0.75, 0, 0}), converted.numbers(primitive["attributes"]["TEXCOORD_0"]));
    EXPECT_EQ((std::vector<double>{0, 1, 2}), converted.numbers(primitive["indices"]));
    const auto& bounds = converted.json["accessors"][primitive["attributes"]["POSITION"].get<std::size_t>()];
    EXPECT_EQ((std::vector<double>{0, 0, 0}), bounds["min"].get<std::vector<double>>());
    EXPECT_EQ((std::vector<double>{2, 3, 0}), bounds["max"].get<std::vector<double>>());
}

TEST(ConvertTest, CompressedViewsDecodeToTheSameVerticesAndTriangles)
{
    const ConvertedDocument plain(triangle + scene(shown));
    const ConvertedDocument packed(triangle + scene(shown), {}, ".glb", {"--as-loaded", "--compress"});
    const char* const extension = "EXT_meshopt_compression";
    EXPECT_EQ(extension, packed.json["extensionsRequired"][0]);
    EXPECT_EQ(true, packed.json["buffers"][1]["extensions"][extension]["fallback"]);
    ASSERT_EQ(plain.json["bufferViews"].size(), packed.json["bufferViews"].size());
    for (std::size_t i = 0; i < packed.json["bufferViews"].size(); ++i) {
        const auto& view = packed.json["bufferViews"][i];
        EXPECT_EQ(1, view["buffer"]);
        const auto& how = view["extensions"][extension];
        const std::size_t count = how["count"].get<std::size_t>();
        const std::size_t stride = how["byteStride"].get<std::size_t>();
        const std::string data =
            packed.binary.substr(how["byteOffset"].get<std::size_t>(), how["byteLength"].get<std::size_t>());
        const auto* const bytes = reinterpret_cast<const unsigned char*>(data.data());
        std::string decoded(count * stride, '\0');
        if (how["mode"] == "ATTRIBUTES") {
            ASSERT_EQ(0, meshopt_decodeVertexBuffer(decoded.data(), count, stride, bytes, data.size()));
        } else {
            ASSERT_EQ("TRIANGLES", how["mode"]);
            ASSERT_EQ(0, meshopt_decodeIndexBuffer(decoded.data(), count, stride, bytes, data.size()));
        }
        EXPECT_EQ(plain.view(i), decoded);
    }
}

TEST(ConvertTest, PointsWithoutPositionsAreLeftOut)
{
    const ConvertedDocument converted(R"(<library_geometries><geometry id="plate"><mesh>
        <source id="t"><float_array id="ta" count="6">1 0 0 0 1 0</float_array><technique_common>
            <accessor source="#ta" count="2" stride="3"><param name="X" type="float"/><param name="Y" type="float"/>
            <param name="Z" type="float"/></accessor></technique_common></source>
        <vertices id="v"><input semantic="TANGENT" source="#t"/></vertices></mesh></geometry></library_geometries>)" +
                                      scene(shown));
    EXPECT_TRUE(converted.isWritten);
    EXPECT_FALSE(converted.json.contains("meshes"));
}

TEST(ConvertTest, TextFormHasItsDataBeside)
{
    const ConvertedDocument binary(triangle + scene(shown));
    const ConvertedDocument text(triangle + scene(shown), {}, ".gltf");
    EXPECT_FALSE(binary.json["buffers"][0].contains("uri"));
    EXPECT_TRUE(text.json["buffers"][0].contains("uri"));
    EXPECT_EQ(binary.binary, text.binary);
}

TEST(ConvertTest, NodeKeepsItsNameIdAndPlace)
{
    const ConvertedDocument converted(triangle + scene(shown));
    const auto& node = converted.json["nodes"][0];
    EXPECT_EQ("A", node["name"]);
    EXPECT_EQ("a", node["extras"]["id"]);
    EXPECT_EQ((std::vector<double>{1, 2, 3}), node["translation"].get<std::vector<double>>());
    EXPECT_EQ(0, node["mesh"]);
    EXPECT_EQ((std::vector<std::size_t>{0}), converted.json["scenes"][0]["nodes"].get<std::vector<std::size_t>>());
}

TEST(ConvertTest, NodeThatShearsBecomesAChain)
{
    const ConvertedDocument converted(
        triangle +
        scene("<node id='a'><matrix>1 1 0 4 0 1 0 5 0 0 1 6 0 0 0 1</matrix><instance_geometry url='#plate'/></node>"));
    const auto& nodes = converted.json["nodes"];
    ASSERT_EQ(2U, nodes.size());
    EXPECT_EQ((std::vector<std::size_t>{1}), nodes[0]["children"].get<std::vector<std::size_t>>());
    EXPECT_TRUE(nodes[1].contains("mesh"));
    const std::vector<double> world = converted.world(1);
    const std::vector<double> expected{1, 1, 0, 4, 0, 1, 0, 5, 0, 0, 1, 6, 0, 0, 0, 1};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(expected[i], world[i], tolerance) << "element " << i;
    }
}

std::string material(const std::string& shader)
{
    return "<library_effects><effect id='e'><profile_COMMON><technique sid='t'>" + shader +
           "</technique></profile_COMMON></effect></library_effects><library_materials><material id='m'>"
           "<instance_effect url='#e'/></material></library_materials>";
}

const char* const painted =
    "<node id='a'><translate>0 0 0</translate><instance_geometry url='#plate'><bind_material><technique_common>"
    "<instance_material symbol='paint' target='#m'/></technique_common></bind_material></instance_geometry></node>";

TEST(ConvertTest, PhongBecomesARoughDielectricWithLinearColors)
{
    // (0.5 + 0.055) / 1.055 to the power of 2.4 is 0.2140; (2 / (6 + 2)) to the power of 1/4 is the root of 0.5.
    const ConvertedDocument converted(
        triangle +
        material("<phong><emission><color>0 0 0 1</color></emission><ambient><color>0 0 0 1</color>"
                 "</ambient><diffuse><color>0.5 1 0 1</color></diffuse><specular><color>1 1 1 1"
                 "</color></specular><shininess><float>6</float></shininess><reflective><color>"
                 "0 0 0 1</color></reflective><transparency><float>0.25</float></transparency></phong>") +
        scene(painted));
    const auto& result = converted.json["materials"][0];
    const auto& base = result["pbrMetallicRoughness"];
    EXPECT_EQ("paint", result["name"]);
    EXPECT_NEAR(0.21404, base["baseColorFactor"][0].get<double>(), tolerance);
    EXPECT_NEAR(1.0, base["baseColorFactor"][1].get<double>(), tolerance);
    EXPECT_NEAR(0.0, base["baseColorFactor"][2].get<double>(), tolerance);
    EXPECT_NEAR(0.25, base["baseColorFactor"][3].get<double>(), tolerance);
    EXPECT_NEAR(0.0, base["metallicFactor"].get<double>(), tolerance);
    EXPECT_NEAR(std::sqrt(0.5), base["roughnessFactor"].get<double>(), tolerance);
    EXPECT_EQ("BLEND", result["alphaMode"]);
    EXPECT_EQ(true, result["doubleSided"]);
    EXPECT_FALSE(result["extensions"].contains("KHR_materials_unlit"));
}

TEST(ConvertTest, MaterialThatOnlyEmitsIsUnlit)
{
    const std::string black = "<color>0 0 0 1</color>";
    const ConvertedDocument converted(triangle +
                                      material("<phong><emission><color>0 1 0 1</color></emission><diffuse>" + black +
                                               "</diffuse><specular>" + black +
                                               "</specular><transparency><float>1</float></transparency></phong>") +
                                      scene(painted));
    const auto& result = converted.json["materials"][0];
    EXPECT_TRUE(result["extensions"].contains("KHR_materials_unlit"));
    EXPECT_EQ((std::vector<double>{0, 1, 0, 1}),
              result["pbrMetallicRoughness"]["baseColorFactor"].get<std::vector<double>>());
    EXPECT_FALSE(result.contains("alphaMode"));
}

TEST(ConvertTest, FaceWithoutMaterialIsWhiteAndNoMetal)
{
    const ConvertedDocument converted(triangle + scene(shown));
    EXPECT_EQ(0.0, converted.json["materials"][0]["pbrMetallicRoughness"]["metallicFactor"].get<double>());
    EXPECT_FALSE(converted.json["materials"][0]["pbrMetallicRoughness"].contains("baseColorFactor"));
}

std::string moving(const std::string& kinds)
{
    return "<library_animations><animation id='m'><source id='ti'><float_array id='tia' count='3'>0 1 2</float_array>"
           "<technique_common><accessor source='#tia' count='3' stride='1'><param name='TIME' type='float'/></accessor>"
           "</technique_common></source><source id='to'><float_array id='toa' count='9'>0 0 0 4 0 0 4 2 0</float_array>"
           "<technique_common><accessor source='#toa' count='3' stride='3'><param name='X' type='float'/><param "
           "name='Y' "
           "type='float'/><param name='Z' type='float'/></accessor></technique_common></source><source "
           "id='tk'><Name_array "
           "id='tka' count='3'>" +
           kinds +
           "</Name_array><technique_common><accessor source='#tka' count='3' stride='1'><param name='INTERPOLATION' "
           "type='Name'/></accessor></technique_common></source><sampler id='sa'><input semantic='INPUT' source='#ti'/>"
           "<input semantic='OUTPUT' source='#to'/><input semantic='INTERPOLATION' source='#tk'/></sampler>"
           "<channel source='#sa' target='a/place'/></animation></library_animations>" +
           scene("<node id='a'><translate sid='place'>0 0 0</translate><instance_geometry url='#plate'/></node>");
}

TEST(ConvertTest, StraightMotionNeedsItsKeysAlone)
{
    const ConvertedDocument converted(triangle + moving("LINEAR LINEAR LINEAR"));
    const auto& animation = converted.json["animations"][0];
    ASSERT_EQ(1U, animation["channels"].size());
    EXPECT_EQ("translation", animation["channels"][0]["target"]["path"]);
    const std::vector<double> times = converted.numbers(animation["samplers"][0]["input"]);
    const std::vector<double> values = converted.numbers(animation["samplers"][0]["output"]);
    const std::vector<double> expected{0, 0, 0, 4, 0, 0, 4, 2, 0};
    ASSERT_EQ(3U, times.size());
    for (std::size_t i = 0; i < times.size(); ++i) {
        EXPECT_NEAR(double(i), times[i], 1e-3);
    }
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(expected[i], values[i], 1e-3) << "value " << i;
    }
}

TEST(ConvertTest, StepsAreSteep)
{
    const ConvertedDocument converted(triangle + moving("STEP STEP STEP"));
    const auto& sampler = converted.json["animations"][0]["samplers"][0];
    const std::vector<double> times = converted.numbers(sampler["input"]);
    const std::vector<double> values = converted.numbers(sampler["output"]);
    for (std::size_t i = 0; i < times.size(); ++i) {
        const double x = values[3 * i];
        if (times[i] < 1 - 1e-3) {
            EXPECT_NEAR(0, x, tolerance) << "at " << times[i];
        } else if (times[i] > 1 + 1e-3) {
            EXPECT_NEAR(4, x, tolerance) << "at " << times[i];
        }
    }
}

std::string numbersSource(const std::string& id, unsigned stride, const std::string& numbers, unsigned count)
{
    std::string params;
    for (unsigned i = 0; i < stride; ++i) {
        params += "<param name='P' type='float'/>";
    }
    return "<source id='" + id + "'><float_array id='" + id + "a' count='" + std::to_string(count * stride) + "'>" +
           numbers + "</float_array><technique_common><accessor source='#" + id + "a' count='" + std::to_string(count) +
           "' stride='" + std::to_string(stride) + "'>" + params + "</accessor></technique_common></source>";
}

// Two Bezier keys at seconds 0 and 2. Control points are pairs of time and value.
std::string bezier(const std::string& id, const std::string& target, unsigned stride, const std::string& values,
                   const std::string& inTangents, const std::string& outTangents)
{
    return "<animation id='" + id + "'>" + numbersSource(id + "i", 1, "0 2", 2) +
           numbersSource(id + "o", stride, values, 2) + numbersSource(id + "t", 2 * stride, inTangents, 2) +
           numbersSource(id + "u", 2 * stride, outTangents, 2) + "<source id='" + id + "k'><Name_array id='" + id +
           "ka' count='2'>BEZIER BEZIER</Name_array><technique_common><accessor source='#" + id +
           "ka' count='2' stride='1'><param name='INTERPOLATION' type='Name'/></accessor></technique_common></source>"
           "<sampler id='" +
           id + "s'><input semantic='INPUT' source='#" + id + "i'/><input semantic='OUTPUT' source='#" + id +
           "o'/><input semantic='IN_TANGENT' source='#" + id + "t'/><input semantic='OUT_TANGENT' source='#" + id +
           "u'/><input semantic='INTERPOLATION' source='#" + id + "k'/></sampler><channel source='#" + id +
           "s' target='" + target + "'/></animation>";
}

const std::string glide =
    bezier("g", "a/place", 3, "0 0 0 6 0 8", "0 0 0 0 0 0 0 5 0 0 0 8", "0 2 0 3 0 0 0 0 0 0 0 0");

TEST(ConvertTest, BezierMotionIsACubicOfItsTwoKeys)
{
    // The slope at a key is three times the difference to its control point, over 2 seconds: 3 (2 - 0) / 2 and 3 (3 -
    // 0) / 2 at the first one, 3 (6 - 5) / 2 and 3 (8 - 8) / 2 at the second one.
    const ConvertedDocument converted(
        triangle + ("<library_animations>" + glide + "</library_animations>") +
        scene("<node id='a'><translate sid='place'>0 0 0</translate><instance_geometry url='#plate'/></node>"));
    const auto& sampler = converted.json["animations"][0]["samplers"][0];
    EXPECT_EQ("CUBICSPLINE", sampler["interpolation"]);
    const std::vector<double> times = converted.numbers(sampler["input"]);
    const std::vector<double> values = converted.numbers(sampler["output"]);
    ASSERT_EQ((std::vector<double>{0, 2}), times);
    const std::vector<double> expected{0, 0, 0, 3, 4.5, 0, 1.5, 0, 0, 6, 0, 8};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(expected[i], values[3 + i], 2e-3) << "value " << i;
    }
}

// The product of the library's matrices of a node and its ancestors at a time, row by row.
libMath::Matrix<float, 4, 4> worldAt(libVideo::Node& node, double time)
{
    const libMath::Matrix<float, 4, 4> local = node.transform(time);
    return node.parent() ? worldAt(*node.parent(), time) * local : local;
}

TEST(ConvertTest, WorldMatricesAreTheLibrarysAtAllTimes)
{
    const std::string body =
        triangle +
        ("<library_animations>" + glide + bezier("r", "b/turn", 1, "10 700", "0 0 0 690", "0 60 0 0") +
         bezier("z", "c/size", 3, "1 1 1 2 0.5 3", "0 1 0 1 0 1 0 2 0 1 0 3", "0 1 0 2 0 1 0 1 0 1 0 1") +
         "</library_animations>") +
        scene("<node id='a'><translate sid='place'>0 0 0</translate><rotate>0 1 0 30</rotate>"
              "<node id='b'><translate>0 3 0</translate><rotate sid='turn'>1 2 2 10</rotate><node id='c'>"
              "<scale sid='size'>1 1 1</scale><instance_geometry url='#plate'/></node></node></node>");
    const testSupport::TemporaryFile document(testSupport::ColladaBuilder(body).text());
    libVideo::Scene loaded;
    ASSERT_TRUE(loaded.createFromCollada(document.path().c_str()));
    vesk::Array<libVideo::NodeLink> nodes = loaded.visualScene().root().children();
    for (unsigned i = 0; i < nodes.size(); ++i) {
        nodes.appendArray(nodes[i]->children());
    }
    ConvertedDocument converted(body);
    ASSERT_EQ(3U, nodes.size());
    ASSERT_EQ(3U, converted.json["nodes"].size());
    for (unsigned step = 0; step < 100; ++step) {
        const double time = 2.0 * step / 100;
        converted.moveTo(time);
        for (unsigned i = 0; i < nodes.size(); ++i) {
            const libMath::Matrix<float, 4, 4> expected = worldAt(*nodes[i], time);
            const std::vector<double> world = converted.world(i);
            for (unsigned k = 0; k < 16; ++k) {
                EXPECT_NEAR(double(expected[k]), world[k], 0.01)
                    << "element " << k << " of node " << i << " at " << time;
            }
        }
    }
}

TEST(ConvertTest, CameraHasItsAnglesAndPlanes)
{
    // The cotangent of 45 degrees is 1: a vertical angle of 90 degrees, and twice the tangent across.
    const ConvertedDocument converted(
        "<library_cameras><camera id='c' "
        "name='Camera'><optics><technique_common><perspective><yfov>90</yfov><aspect_ratio>2"
        "</aspect_ratio><znear>1</znear><zfar>11</zfar></perspective></technique_common></optics><extra><technique "
        "profile='FCOLLADA'>"
        "<target>#t</target></technique></extra></camera></library_cameras>" +
        scene("<node id='a'><translate>0 0 10</translate><instance_camera url='#c'/></node>"
              "<node id='t'><translate>0 0 0</translate></node>"));
    const auto& camera = converted.json["cameras"][0];
    EXPECT_EQ("perspective", camera["type"]);
    EXPECT_NEAR(std::acos(-1.0) / 2, camera["perspective"]["yfov"].get<double>(), tolerance);
    EXPECT_NEAR(1.0, camera["perspective"]["znear"].get<double>(), 1e-4);
    EXPECT_NEAR(11.0, camera["perspective"]["zfar"].get<double>(), 1e-3);
    EXPECT_EQ(0, converted.json["nodes"][0]["camera"]); // which looks along -Z already
}

TEST(ConvertTest, CameraThatLooksAsideIsTurned)
{
    const ConvertedDocument converted(
        "<library_cameras><camera "
        "id='c'><optics><technique_common><perspective><xfov>60</xfov><yfov>60</yfov><znear>1</znear>"
        "<zfar>11</zfar></perspective></technique_common></optics><extra><technique "
        "profile='FCOLLADA'><target>#t</target>"
        "</technique></extra></camera></library_cameras>" +
        scene("<node id='a'><translate>0 0 10</translate><instance_camera url='#c'/></node>"
              "<node id='t'><translate>5 0 10</translate></node>"));
    ASSERT_FALSE(converted.json["nodes"][0].contains("camera"));
    const std::size_t turned = converted.json["nodes"][0]["children"][0].get<std::size_t>();
    EXPECT_EQ(0, converted.json["nodes"][turned]["camera"]);
    const std::vector<double> world = converted.world(turned);
    EXPECT_NEAR(-1, world[2], tolerance); // the third column is the opposite of the direction +X
    EXPECT_NEAR(1, world[5], tolerance);  // and Y stays up
    EXPECT_NEAR(10, world[11], tolerance);
}

TEST(ConvertTest, PointLightIsAsStrongAsTheDocumentsAtTheCenterOfTheScene)
{
    // The plate's center is (1, 1.5, 0), 10 from the light, where the document's light is 0.5 / (1 + 0.1 * 10).
    const ConvertedDocument converted(
        std::string(triangle) +
        "<library_lights><light id='l'><technique_common><point><color>0.5 0.25 0</color><constant_attenuation>1"
        "</constant_attenuation><linear_attenuation>0.1</linear_attenuation></point></technique_common></light></"
        "library_lights>" +
        scene("<node id='a'><translate>0 0 0</translate><instance_geometry url='#plate'/></node>"
              "<node id='b'><translate>1 1.5 10</translate><instance_light url='#l'/></node>"));
    const auto& light = converted.json["extensions"]["KHR_lights_punctual"]["lights"][0];
    EXPECT_EQ("point", light["type"]);
    EXPECT_EQ((std::vector<double>{1, 0.5, 0}), light["color"].get<std::vector<double>>());
    EXPECT_NEAR(std::acos(-1.0) * 0.25 * 100, light["intensity"].get<double>(), 1e-3);
    EXPECT_EQ(0, converted.json["nodes"][1]["extensions"]["KHR_lights_punctual"]["light"]);
}

TEST(ConvertTest, ImageIsTakenInAsItIs)
{
    const std::string image = testSupport::onePixelPng();
    const ConvertedDocument converted(
        std::string(triangle) +
            "<library_images><image "
            "id='i'><init_from>pixel.png</init_from></image></library_images><library_effects><effect id='e'>"
            "<profile_COMMON><newparam sid='su'><surface "
            "type='2D'><init_from>i</init_from></surface></newparam><newparam sid='sa'>"
            "<sampler2D><source>su</source><wrap_s>CLAMP</wrap_s><wrap_t>MIRROR</wrap_t></sampler2D></"
            "newparam><technique sid='t'>"
            "<phong><diffuse><texture texture='sa' "
            "texcoord='x'/></diffuse></phong></technique></profile_COMMON></effect>"
            "</library_effects><library_materials><material id='m'><instance_effect "
            "url='#e'/></material></library_materials>" +
            scene(painted),
        {{"pixel.png", image}});
    const auto& json = converted.json;
    const std::size_t texture =
        json["materials"][0]["pbrMetallicRoughness"]["baseColorTexture"]["index"].get<std::size_t>();
    const auto& entry = json["images"][json["textures"][texture]["source"].get<std::size_t>()];
    EXPECT_EQ("image/png", entry["mimeType"]);
    EXPECT_EQ(image, converted.view(entry["bufferView"].get<std::size_t>()));
    const auto& sampler = json["samplers"][json["textures"][texture]["sampler"].get<std::size_t>()];
    EXPECT_EQ(33071, sampler["wrapS"]);
    EXPECT_EQ(33648, sampler["wrapT"]);
}

TEST(ConvertTest, ResultThatIsTooLargeIsNotWritten)
{
    std::string points;
    for (unsigned i = 0; i < 120000; ++i) {
        points += "0 0 0 ";
    }
    const ConvertedDocument converted(
        "<library_geometries><geometry id='plate'><mesh><source id='p'><float_array id='pa' count='360000'>" + points +
            "</float_array><technique_common><accessor source='#pa' count='120000' stride='3'><param name='X' "
            "type='float'/>"
            "<param name='Y' type='float'/><param name='Z' type='float'/></accessor></technique_common></source>"
            "<vertices id='v'><input semantic='POSITION' "
            "source='#p'/></vertices></mesh></geometry></library_geometries>" +
            scene(shown),
        {}, ".glb", {"--max-size", "1"});
    EXPECT_EQ(1, converted.status);
    EXPECT_FALSE(converted.isWritten);
    EXPECT_NE(std::string::npos, converted.errors.find("1048576 bytes"));
}

TEST(ConvertTest, MaterialAsLoadedThatSaysNoTransparencyIsOpaque)
{
    const ConvertedDocument converted(triangle + material("<phong><diffuse><color>1 1 1 1</color></diffuse></phong>") +
                                      scene(painted));
    const auto& result = converted.json["materials"][0];
    EXPECT_EQ(1.0, result["pbrMetallicRoughness"]["baseColorFactor"][3].get<double>());
    EXPECT_FALSE(result.contains("alphaMode"));
}

TEST(ConvertTest, CheckSaysWhatGltfCannotHold)
{
    const testSupport::TemporaryFile document(
        testSupport::ColladaBuilder(
            triangle +
            material(
                "<phong><emission><color>0 0 0 1</color></emission><ambient><color>1 0 0 1</color></ambient><diffuse>"
                "<color>1 1 1 1</color></diffuse><specular><color>0 0 0 1</color></specular></phong>") +
            scene(painted))
            .text());
    const std::string plain = testSupport::runProcess({SCENETOOL_PROGRAM, "check", document.path()}).output;
    const auto result = testSupport::runProcess({SCENETOOL_PROGRAM, "check", "--gltf", document.path()});
    EXPECT_EQ(1, result.status);
    EXPECT_EQ(std::string::npos, plain.find("glTF"));
    EXPECT_NE(std::string::npos, result.output.find("In glTF: ")) << result.output;
}

TEST(ConvertTest, NameThatSaysNoFormatIsRefused)
{
    const ConvertedDocument converted(triangle + scene(shown), {}, ".obj");
    EXPECT_NE(0, converted.status);
    EXPECT_FALSE(converted.isWritten);
}

} // namespace
