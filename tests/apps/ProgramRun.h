#pragma once

#include "tests/apps/TemporaryFolder.h"

#include <sys/wait.h>

#include <fstream>
#include <sstream>
#include <string>

/// What one run of the program said.
struct ProgramRun
{
    int code = -1;
    std::string output;
    std::string errors;
};

/// Runs the program in `folder`, with arguments as typed into a shell.
inline ProgramRun runProgram(const std::string& arguments, const std::filesystem::path& folder)
{
    const TemporaryFolder said;
    const auto text = [&](const char* name) {
        std::ostringstream all;
        all << std::ifstream(said.path() / name).rdbuf();
        return all.str();
    };
    const std::string command = "cd " + folder.string() + " && " THERMAL_PROGRAM " >" +
                                (said.path() / "output").string() + " 2>" +
                                (said.path() / "errors").string() + " " + arguments;
    ProgramRun run;
    const int status = std::system(command.c_str());
    run.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.output = text("output");
    run.errors = text("errors");
    return run;
}
