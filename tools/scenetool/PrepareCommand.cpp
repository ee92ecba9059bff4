#include "PrepareCommand.h"

#include "common/DefaultCreaseAngle.h"
#include "common/ReportPrinter.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <optional>

namespace scenetool {

namespace {

std::optional<double> numberOf(const std::string& text)
{
    double value = 0;
    const std::from_chars_result read = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isNumber = read.ec == std::errc() && read.ptr == text.data() + text.size() && std::isfinite(value);
    return isNumber ? std::optional(value) : std::nullopt;
}

// The range checks of the parser accept NaN.
std::string faultOfFinite(const std::string& text)
{
    return numberOf(text) ? std::string() : '"' + text + "\" is not a number";
}

std::string faultOfPositive(const std::string& text)
{
    return numberOf(text).value_or(0) > 0 ? std::string() : '"' + text + "\" is not a number above 0";
}

} // namespace

PrepareCommand::PrepareCommand(CommandLine& line)
    : m_command(line.addCommand("prepare", "Rewrites a document so that the library delivers it whole."))
{
    m_command.add("IN", m_in, "The document").require();
    m_command.add("-o,--output", m_out, "The result, which is written completely or not at all").require();
    m_command.addFlag("--report", m_showsReport, "Print what changed and what is lost, with lines and remedies");
    m_command.addFlag("--json", m_showsJson, "Print the report as one JSON object");
    m_command
        .add("--time", m_options.time,
             "Time in seconds for the pose of skins and morphs, and for animated lights and materials")
        .check(faultOfFinite)
        .hideType();
    m_command
        .addChoice("--up", m_upAxis,
                   {{"keep", static_cast<int>(libPrepare::UpAxis::keep)},
                    {"y", static_cast<int>(libPrepare::UpAxis::y)},
                    {"z", static_cast<int>(libPrepare::UpAxis::z)}},
                   "The axis that points up in the result: keep, y or z")
        .hideType()
        .showDefault("keep");
    m_command.add("--unit", m_options.unit, "Meters per unit of the result (default: the document's unit)")
        .check(faultOfPositive)
        .hideType();
    m_command.add("--aspect", m_options.aspect, "Width over height for cameras that do not determine it")
        .check(faultOfPositive)
        .hideType();
    const Option::Check readNormals = [this](const std::string& text) {
        const std::optional<double> angle = text.empty() || text == "true" ? defaultCreaseAngle : numberOf(text);
        if (!angle || *angle < 0 || *angle > 180) {
            return '"' + text + "\" is not an angle from 0 to 180";
        }
        m_options.normals = angle;
        return std::string();
    };
    m_command
        .addOptional("--normals", readNormals,
                     "Compute missing normals, with this crease angle in degrees (60 if none is given)")
        .hideType();
    m_command
        .add("--sample-rate", m_options.sampleRate,
             "Samples per second at which curves that cannot be written exactly are compared")
        .check(faultOfPositive)
        .hideType()
        .showDefault("60");
    m_command.add("--tolerance", m_options.tolerance, "Largest error of such curves, relative or in degrees")
        .check(faultOfPositive)
        .hideType()
        .showDefault("0.0001");
    m_command.addFlag("--no-approximations", m_leavesApproximationsOut,
                      "Leave out what can only be approximated: directional and ambient lights, orthographic cameras");
    m_command.addSize("--max-size", m_options.maxSize, "Largest size of the result, such as 500MB")
        .hideType()
        .showDefault("1GB");
}

int PrepareCommand::run() const
{
    libPrepare::Options options = m_options;
    options.upAxis = static_cast<libPrepare::UpAxis>(m_upAxis);
    options.approximations = !m_leavesApproximationsOut;
    const libPrepare::Report report = libPrepare::prepare(m_in, m_out, options);
    if (m_showsJson) {
        std::cout << reportJson(m_in, report, 2) << '\n';
    } else if (m_showsReport && report.done) {
        writeReport(report, std::cout);
    }
    if (report.done) {
        return EXIT_SUCCESS;
    }
    const libPrepare::Finding* const why = report.first(libPrepare::Outcome::refused);
    const bool isOutput = why != nullptr && why->kind == "unwritable";
    std::cerr << "scenetool: "
              << (why == nullptr ? m_out + " cannot be written" : refusalText(isOutput ? m_out : m_in, *why)) << '\n';
    return EXIT_FAILURE;
}

} // namespace scenetool
