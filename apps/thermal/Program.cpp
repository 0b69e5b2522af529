#include "apps/thermal/Program.h"

#include "apps/thermal/Commands.h"
#include "apps/thermal/Error.h"
#include "apps/thermal/SettingsOptions.h"
#include "apps/thermal/Terminal.h"

#include <opencv2/core.hpp>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include <algorithm>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace thermal {
namespace {

constexpr int s32BadUsage = 2;
constexpr int s32Doubtful = 3;

int complain(const std::string& message, int code = s32BadUsage)
{
    std::cout.flush();
    std::cerr << complaint(message) << std::flush;
    return code;
}

int runCommand(CLI::App& program, int argc, const char* const* argv)
{
    try {
        // CLI11 takes them from the end.
        std::vector<std::string> words = withValuesLeftOut({argv + 1, argv + argc});
        std::reverse(words.begin(), words.end());
        program.parse(std::move(words));
        if (program.get_subcommands().empty())
            return complain("a command is needed, see thermal --help");
        std::cout.flush();
        return std::cout ? 0 : complain("cannot write to standard output");
    } catch (const CLI::ParseError& error) {
        // Code 0 is how --help and --version ask to be printed.
        return error.get_exit_code() == 0 ? program.exit(error) : complain(error.what());
    } catch (const DoubtfulResult& doubt) {
        return complain(doubt.what(), s32Doubtful);
    } catch (const cv::Exception& error) {
        return complain(error.err); // what() is a report of several lines
    } catch (const std::exception& error) {
        return complain(error.what());
    }
}

} // namespace

int runProgram(int argc, const char* const* argv)
{
    CLI::App program{
        "Looks at recordings of thermal cameras: cleans the frames and turns them into pictures.", "thermal"};
    program.set_version_flag("--version", "thermal " THERMAL_VERSION);
    // Not more; that there is one is checked here, since a misspelt one deserves its own message.
    program.require_subcommand(0, 1);
    program.get_formatter()->column_width(36);

    addBlobsCommand(program);
    addCleanCommand(program);
    addConvertCommand(program);
    addDemoCommand(program);
    addMeasureCommand(program);
    addPixelsCommand(program);
    addRenderCommand(program);
    addNoiseCommand(program);
    addPalettesCommand(program);
    addSettingsCommand(program);
    addUndistortCommand(program);

    return runCommand(program, argc, argv);
}

} // namespace thermal
