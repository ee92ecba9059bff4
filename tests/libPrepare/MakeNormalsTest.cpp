#include "AnimationWords.h"
#include "Expectations.h"
#include "Prepared.h"

#include <libPrepare/document/Numbers.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

using test::Prepared;

std::string document(const std::string& positions, const std::string& primitives)
{
    return "<library_geometries><geometry id='g'><mesh>" + test::source("p", "X Y Z", positions) +
           "<vertices id='v'><input semantic='POSITION' source='#p'/></vertices>" + primitives +
           "</mesh></geometry></library_geometries>" +
           test::shown("<node id='n'><matrix>1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix>"
                       "<instance_geometry url='#g'/></node>");
}

libPrepare::Options crease(double angle)
{
    libPrepare::Options options;
    options.normals = angle;
    return options;
}

// A roof: two faces that meet at the edge from 0 0 0 to 0 1 0. The left one is flat, the right one rises by an angle.
std::string roof(double angle)
{
    const double radians = angle * 3.14159265358979323846 / 180;
    return document(
        "0 0 0 0 1 0 -1 0 0 " + libPrepare::text(std::vector<double>{std::cos(radians), 0, std::sin(radians)}),
        "<triangles count='2'><input semantic='VERTEX' source='#v' offset='0'/><p>0 1 2 1 0 3</p></triangles>");
}

// The normal of each corner.
std::vector<std::vector<double>> normals(const Prepared& result)
{
    const std::vector<double> values = result.inputNumbers("//triangles", "NORMAL");
    std::vector<std::vector<double>> all;
    const std::vector<long long> list = libPrepare::integers(result.text("//triangles/p"));
    for (std::size_t i = 1; i < list.size(); i += 2) {
        const std::size_t at = 3 * static_cast<std::size_t>(list[i]);
        all.push_back({values.at(at), values.at(at + 1), values.at(at + 2)});
    }
    return all;
}

TEST(MakeNormalsTest, FacesWithinTheAngleShareTheMeanOfTheirNormals)
{
    const Prepared result(roof(50), crease(60));
    const auto all = normals(result);
    ASSERT_EQ(6U, all.size());
    const double half = 25 * 3.14159265358979323846 / 180;
    test::expectNear({-std::sin(half), 0, std::cos(half)}, all[0], 1e-7);
    test::expectNear({-std::sin(half), 0, std::cos(half)}, all[3], 1e-7);
    test::expectNear({0, 0, 1}, all[2], 1e-7); // a corner that only the flat face has
    test::expectNear({-std::sin(2 * half), 0, std::cos(2 * half)}, all[5], 1e-7);
    const Prepared again(result.xml(), crease(60));
    EXPECT_EQ(result.xml(), again.xml());
    EXPECT_FALSE(again.report.changed);
    EXPECT_EQ(1U, result.findings("normals"));
}

TEST(MakeNormalsTest, GeometriesThatGotNormalsAreReported)
{
    EXPECT_EQ(std::vector<std::string>{"g"}, Prepared(roof(50), crease(60)).report.madeNormals);
    EXPECT_TRUE(Prepared(roof(50)).report.madeNormals.empty());
}

TEST(MakeNormalsTest, FacesBeyondTheAngleKeepTheirOwn)
{
    const auto all = normals(Prepared(roof(70), crease(60)));
    test::expectNear({0, 0, 1}, all[0], 1e-7);
    const double radians = 70 * 3.14159265358979323846 / 180;
    test::expectNear({-std::sin(radians), 0, std::cos(radians)}, all[3], 1e-7);
}

TEST(MakeNormalsTest, FlatFaceCountsOnceHoweverItIsCut)
{
    // A square of two triangles in the plane, both at the corner 0, and a triangle at 40 degrees to them.
    const double radians = 40 * 3.14159265358979323846 / 180;
    const Prepared result(
        document("0 0 0 -1 0 0 -1 -1 0 0 -1 0 " +
                     libPrepare::text(std::vector<double>{std::cos(radians), 0, std::sin(radians)}),
                 "<polylist count='2'><input semantic='VERTEX' source='#v' offset='0'/><vcount>4 3</vcount>"
                 "<p>0 1 2 3 0 3 4</p></polylist>"),
        crease(60));
    const double half = radians / 2;
    test::expectNear({-std::sin(half), 0, std::cos(half)}, normals(result)[0], 1e-7);
}

TEST(MakeNormalsTest, NothingIsMadeUnlessItIsAskedFor)
{
    const Prepared result(roof(50));
    EXPECT_EQ(0U, result.findings("normals"));
    EXPECT_EQ(0U, result.count("//input[@semantic='NORMAL']"));
}

TEST(MakeNormalsTest, NormalsThatAreThereStay)
{
    const Prepared result(document("0 0 0 1 0 0 0 1 0",
                                   "<triangles count='1'><input semantic='VERTEX' source='#v' offset='0'/>"
                                   "<input semantic='NORMAL' source='#p' offset='1'/><p>0 0 1 1 2 2</p></triangles>"),
                          crease(60));
    EXPECT_EQ(0U, result.findings("normals"));
    EXPECT_TRUE(result.report.madeNormals.empty());
    EXPECT_EQ("0 0 1 1 2 2", result.text("//p"));
}

TEST(MakeNormalsTest, ManyFacesAtOneVertexTakeLittleTime)
{
    std::string positions = "0 0 0";
    std::string list;
    constexpr int count = 20000;
    for (int i = 0; i < count; ++i) {
        const double angle = 2 * 3.14159265358979323846 * i / count;
        positions += ' ' + libPrepare::text(std::vector<double>{std::cos(angle), std::sin(angle), 0.1 * (i % 7)});
        list += "0 " + std::to_string(i + 1) + ' ' + std::to_string((i + 1) % count + 1) + ' ';
    }
    const Prepared result(document(positions, "<triangles count='" + std::to_string(count) +
                                                  "'><input semantic='VERTEX' source='#v' offset='0'/><p>" + list +
                                                  "</p></triangles>"),
                          crease(60));
    EXPECT_EQ(static_cast<std::size_t>(3 * count), normals(result).size());
}

} // namespace
