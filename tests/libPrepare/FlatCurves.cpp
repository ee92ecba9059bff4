#include "FlatCurves.h"

#include <libPrepare/document/Numbers.h>

#include <cmath>
#include <string_view>

namespace test {

std::vector<double> sourceOf(const Prepared& done, const std::string& animation, const std::string& semantic)
{
    return done.inputNumbers(animation + "/sampler", semantic);
}

std::string wordsOf(const Prepared& done, const std::string& animation)
{
    const std::string id =
        done.node((animation + "/sampler/input[@semantic='INTERPOLATION']").c_str()).attribute("source").value();
    return done.text(("//source[@id='" + id.substr(1) + "']/Name_array").c_str());
}

double played(const Prepared& done, const std::string& animation, std::size_t component, double time, double declared)
{
    const std::vector<double> times = sourceOf(done, animation, "INPUT");
    const std::vector<double> values = sourceOf(done, animation, "OUTPUT");
    const std::string text = wordsOf(done, animation);
    const std::vector<std::string_view> ways = libPrepare::words(text);
    const std::size_t width = values.size() / times.size();
    const double t = std::fmod(time, times.back());
    std::size_t k = 0;
    while (k < times.size() && t > times[k]) {
        ++k;
    }
    if (t == 0 || k == times.size() || (k == 0 && t != times[0])) {
        return declared;
    }
    if (t == times[k]) {
        return values[k * width + component];
    }
    const double a = values[(k - 1) * width + component];
    const double b = values[k * width + component];
    const double s = (t - times[k - 1]) / (times[k] - times[k - 1]);
    if (ways[k - 1] == "STEP") {
        return a;
    }
    if (ways[k - 1] == "LINEAR") {
        return a + (b - a) * s;
    }
    const double out = sourceOf(done, animation, "OUT_TANGENT")[2 * ((k - 1) * width + component) + 1];
    const double in = sourceOf(done, animation, "IN_TANGENT")[2 * (k * width + component) + 1];
    const double r = 1 - s;
    return a * r * r * r + 3 * out * s * r * r + 3 * in * s * s * r + b * s * s * s;
}

} // namespace test
