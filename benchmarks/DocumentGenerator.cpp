#include "DocumentGenerator.h"

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace benchmarks {

namespace {

// Speed does not matter here, because documents are made before anything is measured.
// NOLINTBEGIN(performance-inefficient-string-concatenation)

template <class... Values>
void print(std::string& text, const char* format, Values... values)
{
    char piece[192];
    const int length = std::snprintf(piece, sizeof(piece), format, values...);
    text.append(piece, static_cast<std::size_t>(length));
}

std::string document(const std::string& libraries, const std::string& nodes)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<COLLADA xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" version=\"1.4.1\">\n"
           "<asset><created>2026-01-01T00:00:00Z</created><modified>2026-01-01T00:00:00Z</modified></asset>\n" +
           libraries + "<library_visual_scenes><visual_scene id=\"scene\">\n" + nodes +
           "</visual_scene></library_visual_scenes>\n"
           "<scene><instance_visual_scene url=\"#scene\"/></scene>\n</COLLADA>\n";
}

// A source of `count` records of `stride` values each. `array` is the name of its array element.
std::string source(const std::string& id, const std::string& array, unsigned count, unsigned stride,
                   const std::string& params, const std::string& values)
{
    const std::string arrayId = id + "-array";
    return "<source id=\"" + id + "\"><" + array + " id=\"" + arrayId + "\" count=\"" + std::to_string(count * stride) +
           "\">" + values + "</" + array + "><technique_common><accessor source=\"#" + arrayId + "\" count=\"" +
           std::to_string(count) + "\" stride=\"" + std::to_string(stride) + "\">" + params +
           "</accessor></technique_common></source>\n";
}

// The texts of the arrays of a mesh, and of its index list over positions, normals and texture coordinates.
struct MeshText {
    std::string positions;
    std::string normals;
    std::string texcoords;
    std::string indices;
    unsigned vertices = 0;
    unsigned triangles = 0;
};

std::string vectorSource(const std::string& id, unsigned count, const std::string& names, const std::string& values)
{
    std::string params;
    for (const char name : names) {
        params += std::string("<param name=\"") + name + "\" type=\"float\"/>";
    }
    return source(id, "float_array", count, static_cast<unsigned>(names.size()), params, values);
}

std::string geometryElement(const std::string& id, const MeshText& mesh, const std::string& material)
{
    return "<geometry id=\"" + id + "\" name=\"" + id + "\"><mesh>\n" +
           vectorSource(id + "-positions", mesh.vertices, "XYZ", mesh.positions) +
           vectorSource(id + "-normals", mesh.vertices, "XYZ", mesh.normals) +
           vectorSource(id + "-texcoords", mesh.vertices, "ST", mesh.texcoords) + "<vertices id=\"" + id +
           "-vertices\"><input semantic=\"POSITION\" source=\"#" + id +
           "-positions\"/></vertices>\n<triangles count=\"" + std::to_string(mesh.triangles) + "\" material=\"" +
           material + "\"><input semantic=\"VERTEX\" offset=\"0\" source=\"#" + id +
           "-vertices\"/><input semantic=\"NORMAL\" offset=\"1\" source=\"#" + id +
           "-normals\"/><input semantic=\"TEXCOORD\" offset=\"2\" source=\"#" + id + "-texcoords\"/><p>" +
           mesh.indices + "</p></triangles>\n</mesh></geometry>\n";
}

void addVertex(MeshText& mesh, double x, double y, double height)
{
    print(mesh.positions, "%.6f %.6f %.6f ", x, y, height);
    print(mesh.normals, "%.5f %.5f %.5f ", std::sin(x), std::cos(x), height);
    print(mesh.texcoords, "%.5f %.5f ", x * 0.01, y * 0.01);
    ++mesh.vertices;
}

void addTriangle(MeshText& mesh, unsigned a, unsigned b, unsigned c)
{
    for (const unsigned index : {a, b, c}) {
        const std::string text = std::to_string(index) + " ";
        mesh.indices += text + text + text;
    }
    ++mesh.triangles;
}

MeshText grid(unsigned columns, unsigned rows)
{
    MeshText mesh;
    for (unsigned y = 0; y <= rows; ++y) {
        for (unsigned x = 0; x <= columns; ++x) {
            addVertex(mesh, 0.1 * x, 0.1 * y, std::sin(0.01 * x) * std::cos(0.02 * y));
        }
    }
    const unsigned width = columns + 1;
    for (unsigned y = 0; y < rows; ++y) {
        for (unsigned x = 0; x < columns; ++x) {
            const unsigned corner = y * width + x;
            addTriangle(mesh, corner, corner + 1, corner + width);
            addTriangle(mesh, corner + 1, corner + width + 1, corner + width);
        }
    }
    return mesh;
}

std::string oneMesh(const MeshText& mesh)
{
    return document("<library_geometries>" + geometryElement("mesh", mesh, "skin") + "</library_geometries>\n",
                    "<node id=\"holder\"><instance_geometry url=\"#mesh\"/></node>\n");
}

// A curve: the target of its channel, and the text of the array with its values.
struct Curve {
    std::string id;
    std::string target;
    std::string params;
    unsigned stride = 1;
    std::string values;
};

// The times of all curves, the first one a step after second 0.
std::string keyTimes(unsigned keys)
{
    std::string times;
    for (unsigned i = 1; i <= keys; ++i) {
        print(times, "%.6f ", i / keysPerSecond);
    }
    return times;
}

std::string repeated(const char* word, unsigned count)
{
    std::string words;
    for (unsigned i = 0; i < count; ++i) {
        words += word;
    }
    return words;
}

std::string animationElement(const Curve& curve, unsigned keys, const std::string& times, const std::string& kinds)
{
    const std::string& id = curve.id;
    return "<animation id=\"" + id + "\">\n" +
           source(id + "-input", "float_array", keys, 1, "<param name=\"TIME\" type=\"float\"/>", times) +
           source(id + "-output", "float_array", keys, curve.stride, curve.params, curve.values) +
           source(id + "-interpolation", "Name_array", keys, 1, "<param name=\"INTERPOLATION\" type=\"Name\"/>",
                  kinds) +
           "<sampler id=\"" + id + "-sampler\"><input semantic=\"INPUT\" source=\"#" + id +
           "-input\"/><input semantic=\"OUTPUT\" source=\"#" + id +
           "-output\"/><input semantic=\"INTERPOLATION\" source=\"#" + id +
           "-interpolation\"/></sampler>\n<channel source=\"#" + id + "-sampler\" target=\"" + curve.target +
           "\"/></animation>\n";
}

std::string library(const std::vector<Curve>& curves, unsigned keys)
{
    const std::string times = keyTimes(keys);
    const std::string kinds = repeated("LINEAR ", keys);
    std::string xml = "<library_animations>\n";
    for (const Curve& curve : curves) {
        xml += animationElement(curve, keys, times, kinds);
    }
    return xml + "</library_animations>\n";
}

std::string angles(unsigned keys, unsigned phase)
{
    std::string values;
    for (unsigned i = 0; i < keys; ++i) {
        print(values, "%.5f ", 180.0 * std::sin(0.01 * i + phase));
    }
    return values;
}

// Rotations about the Y axis that move along the X axis.
std::string matrices(unsigned keys, unsigned phase)
{
    std::string values;
    for (unsigned i = 0; i < keys; ++i) {
        const double sine = std::sin(0.01 * i + phase);
        const double cosine = std::cos(0.01 * i + phase);
        print(values, "%.6f 0 %.6f %.6f 0 1 0 %.6f %.6f 0 %.6f %.6f 0 0 0 1 ", cosine, sine, 0.125 * i, 1.0 * phase,
              -sine, cosine, sine * cosine);
    }
    return values;
}

} // namespace

std::string smoothMesh(unsigned triangles)
{
    // As close to a square as the number allows.
    const unsigned squares = triangles / 2;
    auto columns = static_cast<unsigned>(std::sqrt(squares));
    while (squares % columns != 0) {
        --columns;
    }
    return oneMesh(grid(columns, squares / columns));
}

std::string quadMesh(unsigned quads)
{
    const auto columns = static_cast<unsigned>(std::sqrt(quads));
    const unsigned rows = quads / columns;
    MeshText mesh = grid(columns, rows);
    mesh.indices.clear();
    std::string counts;
    for (unsigned y = 0; y < rows; ++y) {
        for (unsigned x = 0; x < columns; ++x) {
            const unsigned corner = y * (columns + 1) + x;
            for (const unsigned index : {corner, corner + 1, corner + columns + 2, corner + columns + 1}) {
                print(mesh.indices, "%u %u %u ", index, index, index);
            }
            counts += "4 ";
        }
    }
    std::string text = oneMesh(mesh);
    const std::size_t start = text.find("<triangles count=");
    text.replace(start, text.find(" material", start) - start,
                 "<polylist count=\"" + std::to_string(columns * rows) + '"');
    text.insert(text.find("<p>", start), "<vcount>" + counts + "</vcount>");
    text.replace(text.find("</triangles>", start), 12, "</polylist>");
    return text;
}

std::string fan(unsigned triangles)
{
    MeshText mesh;
    addVertex(mesh, 0.0, 0.0, 1.0);
    for (unsigned i = 0; i <= triangles; ++i) {
        const double angle = 6.283185307179586 * i / triangles;
        addVertex(mesh, std::cos(angle), std::sin(angle), 0.0);
    }
    for (unsigned i = 1; i <= triangles; ++i) {
        addTriangle(mesh, 0, i, i + 1);
    }
    return oneMesh(mesh);
}

std::string manyGeometries(unsigned geometries)
{
    constexpr unsigned materials = 100;
    std::string effects;
    std::string library;
    for (unsigned i = 0; i < materials; ++i) {
        const std::string number = std::to_string(i);
        effects +=
            "<effect id=\"effect-" + number +
            "\"><profile_COMMON><technique sid=\"common\"><phong><diffuse><color>0.5 0.25 0.125 1</color></diffuse>"
            "<shininess><float>20</float></shininess></phong></technique></profile_COMMON></effect>\n";
        library +=
            "<material id=\"material-" + number + "\"><instance_effect url=\"#effect-" + number + "\"/></material>\n";
    }
    const MeshText mesh = grid(10, 5);
    std::string meshes;
    std::string nodes;
    for (unsigned i = 0; i < geometries; ++i) {
        const std::string number = std::to_string(i);
        const std::string material = std::to_string(i % materials);
        meshes += geometryElement("mesh-" + number, mesh, "symbol-" + material);
        nodes += "<node id=\"node-" + number + "\"><translate>" + number +
                 " 0 0</translate><instance_geometry url=\"#mesh-" + number +
                 "\"><bind_material><technique_common><instance_material symbol=\"symbol-" + material +
                 "\" target=\"#material-" + material +
                 "\"/></technique_common></bind_material></instance_geometry></node>\n";
    }
    return document("<library_effects>" + effects + "</library_effects><library_materials>" + library +
                        "</library_materials><library_geometries>" + meshes + "</library_geometries>\n",
                    nodes);
}

std::string camerasAndLights(unsigned nodes)
{
    const unsigned pool = nodes < 10 ? 1 : nodes / 10;
    std::string cameras;
    std::string lights;
    for (unsigned i = 0; i < pool; ++i) {
        const std::string number = std::to_string(i);
        cameras += "<camera id=\"camera-" + number +
                   "\"><optics><technique_common><perspective><yfov>40</yfov><aspect_ratio>1.5</aspect_ratio>"
                   "<znear>0.5</znear><zfar>200</zfar></perspective></technique_common></optics><extra>"
                   "<technique profile=\"FCOLLADA\"><target>#node-0</target></technique></extra></camera>\n";
        lights += "<light id=\"light-" + number +
                  "\"><technique_common><point><color>1 0.5 0.25</color></point></technique_common></light>\n";
    }
    std::string tree;
    for (unsigned i = 0; i < nodes; ++i) {
        // Groups of a hundred, because the document model takes quadratic time for many siblings.
        const std::string number = std::to_string(i);
        const std::string object = std::to_string(i % pool);
        tree += i % 100 == 0 ? (i == 0 ? "<node>" : "</node>\n<node>") : "";
        tree += "<node id=\"node-" + number + "\"><translate>" + number +
                " 1 2</translate><instance_camera url=\"#camera-" + object + "\"/><instance_light url=\"#light-" +
                object + "\"/></node>\n";
    }
    return document("<library_cameras>" + cameras + "</library_cameras><library_lights>" + lights +
                        "</library_lights>\n",
                    tree + "</node>\n");
}

std::string balancedTree(unsigned nodes, Ids ids)
{
    constexpr unsigned branches = 8;
    // Node i has the children 8 i + 1 to 8 i + 8. The nodes are written depth first.
    struct Entry {
        unsigned node;
        bool isStarted;
    };
    std::string xml;
    std::vector<Entry> open = {{0, false}};
    while (!open.empty()) {
        if (open.back().isStarted) {
            xml += "</node>\n";
            open.pop_back();
            continue;
        }
        open.back().isStarted = true;
        const unsigned node = open.back().node;
        const std::string number = std::to_string(node);
        xml += ids == Ids::Distinct ? "<node id=\"node-" + number + "\" name=\"node-" + number + "\">" : "<node>";
        xml += "<translate sid=\"place\">" + std::to_string(node % 100) +
               ".5 1.25 -3.75</translate>"
               "<rotate sid=\"turn\">0 1 0 " +
               std::to_string(node % 360) + "</rotate>";
        for (unsigned i = branches; i > 0; --i) {
            const unsigned child = branches * node + i;
            if (child < nodes) {
                open.push_back({child, false});
            }
        }
    }
    return document(std::string(), xml);
}

std::string flatTree(unsigned nodes)
{
    std::string xml;
    for (unsigned i = 0; i < nodes; ++i) {
        const std::string number = std::to_string(i);
        xml += "<node id=\"node-" + number + "\"><translate sid=\"place\">" + number +
               ".5 1.25 -3.75</translate></node>\n";
    }
    return document(std::string(), xml);
}

std::string chain(unsigned depth)
{
    std::string xml;
    for (unsigned i = 0; i < depth; ++i) {
        xml += "<node id=\"link-" + std::to_string(i) + "\"><translate>0 0.5 0</translate>";
    }
    for (unsigned i = 0; i < depth; ++i) {
        xml += "</node>";
    }
    return document(std::string(), xml);
}

std::string angleCurves(unsigned animations, unsigned keys)
{
    std::vector<Curve> curves;
    std::string nodes;
    for (unsigned i = 0; i < animations; ++i) {
        const std::string node = "joint-" + std::to_string(i);
        const std::string axis(1, "XYZ"[i % 3]);
        curves.push_back({node + "-rotate" + axis, node + "/rotate" + axis + ".ANGLE",
                          "<param name=\"ANGLE\" type=\"float\"/>", 1, angles(keys, i)});
        nodes += "<node id=\"" + node + "\"><translate sid=\"translate\">" + std::to_string(i) +
                 " 0 0</translate><rotate sid=\"rotateZ\">0 0 1 10</rotate><rotate sid=\"rotateY\">0 1 0 20</rotate>"
                 "<rotate sid=\"rotateX\">1 0 0 30</rotate></node>\n";
    }
    return document(library(curves, keys), nodes);
}

std::string matrixCurves(unsigned animations, unsigned keys)
{
    std::vector<Curve> curves;
    std::string nodes;
    for (unsigned i = 0; i < animations; ++i) {
        const std::string node = "bone-" + std::to_string(i);
        curves.push_back({node + "-matrix", node + "/matrix", "<param name=\"TRANSFORM\" type=\"float4x4\"/>", 16,
                          matrices(keys, i)});
        nodes += "<node id=\"" + node + "\"><matrix sid=\"matrix\">1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix></node>\n";
    }
    return document(library(curves, keys), nodes);
}

std::string animatedNode(unsigned keys)
{
    Curve curve = {"path", "walker/place",
                   "<param name=\"X\" type=\"float\"/><param name=\"Y\" type=\"float\"/><param name=\"Z\" "
                   "type=\"float\"/>",
                   3, std::string()};
    for (unsigned i = 0; i < keys; ++i) {
        curve.values += std::to_string(i % 10) + " 0.5 " + std::to_string(i % 7) + ".25 ";
    }
    return document(library({curve}, keys), "<node id=\"walker\"><translate sid=\"place\">1 2 3</translate></node>\n");
}

// NOLINTEND(performance-inefficient-string-concatenation)

DocumentFile::DocumentFile(const std::string& content)
{
    std::string name = (std::filesystem::temp_directory_path() / "libVideoBenchmark-XXXXXX").string();
    const int descriptor = mkstemp(name.data());
    if (descriptor < 0) {
        throw std::runtime_error("no temporary file: " + name);
    }
    m_path = name;
    std::ofstream file(m_path, std::ios::binary);
    file << content;
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + name);
    }
}

DocumentFile::~DocumentFile()
{
    std::error_code ignored;
    std::filesystem::remove(m_path, ignored);
}

} // namespace benchmarks
