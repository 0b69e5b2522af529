#include "apps/thermal/Options.h"

#include "apps/thermal/Error.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include <algorithm>
#include <iterator>
#include <map>

namespace thermal {

Option& Option::required(bool isRequired)
{
    m_pOption->required(isRequired);
    return *this;
}

Option& Option::form(const std::string& name)
{
    m_pOption->type_name(name);
    return *this;
}

Option& Option::oneOf(const std::vector<std::string>& texts)
{
    m_pOption->check(CLI::IsMember(texts));
    return *this;
}

Option& Option::between(int least, int most)
{
    m_pOption->check(CLI::Range(least, most));
    return *this;
}

Option& Option::between(double least, double most)
{
    m_pOption->check(CLI::Range(least, most));
    return *this;
}

Option& Option::showDefault()
{
    m_pOption->capture_default_str();
    return *this;
}

Option& Option::values(int count)
{
    m_pOption->expected(count);
    return *this;
}

Option& Option::repeated()
{
    m_pOption->expected(1)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    return *this;
}

Option& Option::excludes(const Option& other)
{
    m_pOption->excludes(other.m_pOption);
    return *this;
}

bool Option::given() const
{
    return m_pOption->count() > 0;
}

Command Command::sub(const std::string& name, const std::string& help) const
{
    return Command(m_pApp->add_subcommand(name, help));
}

void Command::requireSub() const
{
    m_pApp->require_subcommand(1);
}

bool Command::hasSub() const
{
    return !m_pApp->get_subcommands().empty();
}

Option Command::option(const std::string& name, std::string& value, const std::string& help) const
{
    return Option(m_pApp->add_option(name, value, help));
}

Option Command::option(const std::string& name, std::vector<std::string>& values,
                       const std::string& help) const
{
    return Option(m_pApp->add_option(name, values, help));
}

Option Command::option(const std::string& name, int& value, const std::string& help) const
{
    return Option(m_pApp->add_option(name, value, help));
}

Option Command::option(const std::string& name, std::size_t& value, const std::string& help) const
{
    return Option(m_pApp->add_option(name, value, help));
}

Option Command::option(const std::string& name, double& value, const std::string& help) const
{
    return Option(m_pApp->add_option(name, value, help));
}

Option Command::flag(const std::string& name, bool& value, const std::string& help) const
{
    return Option(m_pApp->add_flag(name, value, help));
}

std::vector<std::pair<std::string, std::string>> Command::typed() const
{
    std::vector<std::pair<std::string, std::string>> all;
    std::map<const CLI::Option*, std::size_t> seen;
    for (const CLI::Option* option : m_pApp->parse_order())
        all.emplace_back(option->get_name(), option->results()[seen[option]++]);
    return all;
}

void Command::run(std::function<void()> work) const
{
    m_pApp->callback(std::move(work));
}

CommandLine::CommandLine(const std::string& name, const std::string& help, const std::string& version)
    : m_pApp(std::make_unique<CLI::App>(help, name))
{
    m_pApp->set_version_flag("--version", version);
    // Not more; that there is one is checked later, since a misspelt one deserves its own message.
    m_pApp->require_subcommand(0, 1);
    m_pApp->get_formatter()->column_width(36);
}

CommandLine::~CommandLine() = default;

bool CommandLine::run(std::vector<std::string> words)
{
    // They are taken from the end.
    std::reverse(words.begin(), words.end());
    try {
        m_pApp->parse(std::move(words));
    } catch (const CLI::ParseError& error) {
        // Code 0 is how --help and --version ask to be printed.
        if (error.get_exit_code() != 0)
            throw UsageError(error.what());
        m_pApp->exit(error);
        return true;
    }
    return program().hasSub();
}

} // namespace thermal
