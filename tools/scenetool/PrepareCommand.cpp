#include "PrepareCommand.h"

#include "common/DefaultCreaseAngle.h"
#include "common/ReportPrinter.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <map>
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

// The range checks of CLI11 accept NaN.
const CLI::Validator
    finite([](const std::string& text) { return numberOf(text) ? std::string() : '"' + text + "\" is not a number"; },
           "");
const CLI::Validator positive(
    [](const std::string& text) {
        return numberOf(text).value_or(0) > 0 ? std::string() : '"' + text + "\" is not a number above 0";
    },
    "");

} // namespace

PrepareCommand::PrepareCommand(CLI::App& app)
    : m_command(app.add_subcommand("prepare", "Rewrites a document so that the library delivers it whole."))
{
    m_command->add_option("IN", m_in, "The document")->required();
    m_command->add_option("-o,--output", m_out, "The result, which is written completely or not at all")->required();
    m_command->add_flag("--report", m_showsReport, "Print what changed and what is lost, with lines and remedies");
    m_command->add_flag("--json", m_showsJson, "Print the report as one JSON object");
    m_command
        ->add_option("--time", m_options.time,
                     "Time in seconds for the pose of skins and morphs, and for animated lights and materials")
        ->check(finite)
        ->type_name("");
    const std::map<std::string, libPrepare::UpAxis> axes = {
        {"keep", libPrepare::UpAxis::keep}, {"y", libPrepare::UpAxis::y}, {"z", libPrepare::UpAxis::z}};
    m_command->add_option("--up", m_options.upAxis, "The axis that points up in the result: keep, y or z")
        ->transform(CLI::CheckedTransformer(axes, CLI::ignore_case).description(""))
        ->type_name("")
        ->default_str("keep");
    m_command->add_option("--unit", m_options.unit, "Meters per unit of the result (default: the document's unit)")
        ->check(positive)
        ->type_name("");
    m_command->add_option("--aspect", m_options.aspect, "Width over height for cameras that do not determine it")
        ->check(positive)
        ->type_name("");
    m_command
        ->add_option_function<std::string>(
            "--normals",
            [this](const std::string& text) {
                // CLI11 passes "true" for an option without a value.
                const std::optional<double> angle =
                    text.empty() || text == "true" ? defaultCreaseAngle : numberOf(text);
                if (!angle || *angle < 0 || *angle > 180) {
                    throw CLI::ValidationError("--normals", '"' + text + "\" is not an angle from 0 to 180");
                }
                m_options.normals = angle;
            },
            "Compute missing normals, with this crease angle in degrees (60 if none is given)")
        ->expected(0, 1)
        ->type_name("");
    m_command
        ->add_option("--sample-rate", m_options.sampleRate,
                     "Samples per second at which curves that cannot be written exactly are compared")
        ->check(positive)
        ->type_name("")
        ->default_str("60");
    m_command->add_option("--tolerance", m_options.tolerance, "Largest error of such curves, relative or in degrees")
        ->check(positive)
        ->type_name("")
        ->default_str("0.0001");
    m_command->add_flag(
        "--no-approximations", m_leavesApproximationsOut,
        "Leave out what can only be approximated: directional and ambient lights, orthographic cameras");
    m_command->add_option("--max-size", m_options.maxSize, "Largest size of the result, such as 500MB")
        ->transform(CLI::AsSizeValue(false).description(""))
        ->type_name("")
        ->default_str("1GB");
}

int PrepareCommand::run() const
{
    libPrepare::Options options = m_options;
    options.approximations = !m_leavesApproximationsOut;
    const libPrepare::Report report = libPrepare::prepare(m_in, m_out, options);
    if (m_showsJson) {
        using Json = nlohmann::ordered_json;
        std::cout << reportJson(m_in, report).dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
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
