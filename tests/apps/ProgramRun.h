#pragma once

#include "tests/TemporaryFolder.h"

#include "apps/thermal/Program.h"

#include <sys/wait.h>

#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

/// What one run of the program said.
struct ProgramRun
{
    int code = -1;
    std::string output;
    std::string errors;
};

/// What the program's own function says, in this process: as a run, but without the start of a process.
/// @param arguments  separated by single blanks
inline ProgramRun callProgram(const std::string& arguments, const std::filesystem::path& folder)
{
    std::vector<std::string> words = {"thermal"};
    std::istringstream text(arguments);
    for (std::string word; text >> word;)
        words.push_back(word);
    std::vector<const char*> pointers;
    pointers.reserve(words.size());
    for (const std::string& word : words)
        pointers.push_back(word.c_str());

    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder);
    std::ostringstream output;
    std::ostringstream errors;
    std::streambuf* const cout = std::cout.rdbuf(output.rdbuf());
    std::streambuf* const cerr = std::cerr.rdbuf(errors.rdbuf());
    const int code = thermal::runProgram(static_cast<int>(pointers.size()), pointers.data());
    std::cout.rdbuf(cout);
    std::cerr.rdbuf(cerr);
    std::filesystem::current_path(before);
    return {code, output.str(), errors.str()};
}

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
