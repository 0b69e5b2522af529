#pragma once

#include "apps/thermal/Program.h"
#include "camera/Frame.h"
#include "tests/Support.h"

#include <opencv2/imgcodecs.hpp>

#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

/// What one run of the program said.
struct ProgramRun
{
    int code = -1;
    std::string output;
    std::string errors;
};

/// The program in a folder with files.
struct ProgramFixture : FilesTest
{
    using Frame = velmo::camera::Frame;

    void write(const std::string& name, const std::string& bytes) const { put(name, bytes); }
    void write(const std::string& name, const Frame& frame) const { cv::imwrite(put(name, ""), frame); }

    /// What a run has left; without it there is nothing to look at.
    cv::Mat stored(const std::string& name, int flags = cv::IMREAD_UNCHANGED) const
    {
        cv::Mat image = cv::imread(path(name), flags);
        if (image.empty())
            throw std::runtime_error(name + ": no picture");
        return image;
    }

    cv::Mat_<cv::Vec3b> picture(const std::string& name) const { return stored(name, cv::IMREAD_COLOR); }

    /// In this process: its own function, without the start of a process.
    /// @param arguments  separated by single blanks
    ProgramRun call(const std::string& arguments) const
    {
        std::istringstream text("thermal " + arguments);
        const std::vector<std::string> words(std::istream_iterator<std::string>(text), {});
        std::vector<const char*> pointers;
        for (const std::string& word : words)
            pointers.push_back(word.c_str());

        const std::filesystem::path before = std::filesystem::current_path();
        std::filesystem::current_path(folder.path());
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int code = thermal::runProgram(static_cast<int>(pointers.size()), pointers.data());
        std::filesystem::current_path(before);
        return {code, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
    }

    /// What it prints where nothing goes wrong.
    std::string said(const std::string& arguments) const
    {
        const ProgramRun run = call(arguments);
        EXPECT_EQ(run.code, 0) << arguments;
        EXPECT_EQ(run.errors, "") << arguments;
        return run.output;
    }

    /// Every refusal looks like this: code 2, one line that names what is wrong, nothing left behind.
    /// @param refused  arguments, and what the line names
    void expectRefusals(const std::vector<std::pair<std::string, std::string>>& refused) const
    {
        const auto before = folder.entries();
        for (const auto& [arguments, named] : refused) {
            const ProgramRun run = call(arguments);
            EXPECT_EQ(run.code, 2) << arguments;
            EXPECT_EQ(run.output, "") << arguments;
            EXPECT_THAT(run.errors,
                        testing::AllOf(HasSubstr(named), testing::MatchesRegex("thermal: [^\n]+\n")))
                << arguments;
            EXPECT_EQ(folder.entries(), before) << arguments;
        }
    }

    /// A process of its own, started by a shell in the folder.
    /// @param before  what the shell does first
    pid_t start(const std::string& arguments, const std::string& before = "") const
    {
        const std::string command = "cd " + folder.path().string() + "; " + before +
                                    "exec " THERMAL_PROGRAM " >" + (m_oSaid.path() / "output").string() +
                                    " 2>" + (m_oSaid.path() / "errors").string() + " " + arguments;
        const pid_t process = fork();
        if (process == 0) {
            execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
            _exit(127);
        }
        return process;
    }

    ProgramRun end(pid_t process) const
    {
        int status = 0;
        waitpid(process, &status, 0);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contentOf(m_oSaid.path() / "output"),
                contentOf(m_oSaid.path() / "errors")};
    }

    ProgramRun shell(const std::string& arguments, const std::string& before = "") const
    {
        return end(start(arguments, before));
    }

private:
    TemporaryFolder m_oSaid;
};
