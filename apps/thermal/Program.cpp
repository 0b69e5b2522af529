#include "apps/thermal/Program.h"

#include "apps/thermal/Commands.h"
#include "apps/thermal/Error.h"
#include "apps/thermal/Options.h"
#include "apps/thermal/SettingsOptions.h"
#include "apps/thermal/Terminal.h"

#include "core/Exception.h"

#include <opencv2/core.hpp>

#include <iostream>
#include <string>
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

int runCommand(CommandLine& line, int argc, const char* const* argv)
{
    const std::vector<std::string> words = withValuesLeftOut({argv + 1, argv + argc});
    try {
        if (!line.run(words))
            return complain("a command is needed, see thermal --help");
        std::cout.flush();
        return std::cout ? 0 : complain("cannot write to standard output");
    } catch (const DoubtfulResult& doubt) {
        return complain(doubt.what(), s32Doubtful);
    } catch (const cv::Exception& error) {
        return complain(error.err); // what() is a report of several lines
    } catch (const velmo::exp::Exception& error) {
        return complain(namingOptions(error.what(), words));
    } catch (const std::exception& error) {
        return complain(error.what());
    }
}

} // namespace

int runProgram(int argc, const char* const* argv)
{
    CommandLine line(
        "thermal", "Looks at recordings of thermal cameras: cleans the frames and turns them into pictures.",
        "thermal " THERMAL_VERSION);
    const Command program = line.program();
    addBlobsCommand(program);
    addCleanCommand(program);
    addConvertCommand(program);
    addDemoCommand(program);
    addFlatCommand(program);
    addMeasureCommand(program);
    addPixelsCommand(program);
    addRenderCommand(program);
    addNoiseCommand(program);
    addPalettesCommand(program);
    addSettingsCommand(program);
    addUndistortCommand(program);

    return runCommand(line, argc, argv);
}

} // namespace thermal
