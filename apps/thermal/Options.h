#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace thermal {

// The command line of the program. The library that parses it is slow to compile: only one source sees it.

/// An option or argument of a command. A handle, as good as its command.
class Option
{
public:
    Option& required(bool isRequired = true);

    /// What stands for the value in the help: "WxH".
    Option& form(const std::string& name);

    /// Other texts are refused.
    Option& oneOf(const std::vector<std::string>& texts);

    /// Other numbers are refused; both ends are allowed.
    Option& between(int least, int most);
    Option& between(double least, double most);

    /// The help says what its variable held at first.
    Option& showDefault();

    /// So many values follow it.
    Option& values(int count);

    /// It may be given again, each time with one value.
    Option& repeated();

    Option& excludes(const Option& other);

    /// @returns whether the command line had it
    bool given() const;

private:
    friend class Command;
    explicit Option(CLI::Option* option) : m_pOption(option) {}

    CLI::Option* m_pOption;
};

/// A word of the command line, with options of its own. A handle, as good as its program. Variables are
/// filled when the program parses: they must live until then.
class Command
{
public:
    Command sub(const std::string& name, const std::string& help) const;

    /// One of its subcommands must be named.
    void requireSub() const;

    /// @returns whether one of its subcommands was named
    bool hasSub() const;

    /// With a name that does not begin with dashes: what stands there without one.
    Option option(const std::string& name, std::string& value, const std::string& help) const;
    Option option(const std::string& name, std::vector<std::string>& values, const std::string& help) const;
    Option option(const std::string& name, int& value, const std::string& help) const;
    Option option(const std::string& name, std::size_t& value, const std::string& help) const;
    Option option(const std::string& name, double& value, const std::string& help) const;

    /// True if it is given.
    Option flag(const std::string& name, bool& value, const std::string& help) const;

    /// @returns each option that was given and its value, in the order of the command line
    std::vector<std::pair<std::string, std::string>> typed() const;

    /// What happens once everything is parsed.
    void run(std::function<void()> work) const;

private:
    friend class CommandLine;
    explicit Command(CLI::App* app) : m_pApp(app) {}

    CLI::App* m_pApp;
};

/// All commands of a program.
class CommandLine
{
public:
    CommandLine(const std::string& name, const std::string& help, const std::string& version);
    ~CommandLine();

    Command program() const { return Command(m_pApp.get()); }

    /// Parses, and runs the command that was named; prints the help or the version if they were asked for.
    /// @returns whether there was anything to run
    /// @throws UsageError  that says what is wrong, and whatever the command throws
    bool run(std::vector<std::string> words);

private:
    std::unique_ptr<CLI::App> m_pApp;
};

} // namespace thermal
