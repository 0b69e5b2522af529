#include "apps/thermal/Table.h"

#include "apps/thermal/Terminal.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iomanip>
#include <ostream>
#include <sstream>

namespace thermal {
namespace {

/// How wide a text is on a terminal: bytes that continue a UTF-8 letter take no room.
std::size_t widthOf(const std::string& text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

std::string shortest(double number)
{
    std::ostringstream text;
    text << std::setprecision(10) << number;
    return text.str();
}

std::string jsonText(const std::string& text)
{
    std::string quoted = "\"";
    for (const char letter : text) {
        if (letter == '"' || letter == '\\') {
            quoted += '\\';
            quoted += letter;
        } else if (static_cast<unsigned char>(letter) < 0x20) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(letter));
            quoted += escaped;
        } else {
            quoted += letter;
        }
    }
    return quoted + '"';
}

std::string csvText(const std::string& text)
{
    if (text.find_first_of(",\"\n\r") == std::string::npos)
        return text;
    std::string quoted = "\"";
    for (const char letter : text)
        quoted += letter == '"' ? std::string("\"\"") : std::string(1, letter);
    return quoted + '"';
}

/// What stands for a number that is no finite one.
std::string wordFor(double number, const char* none)
{
    return std::isnan(number) ? none : number < 0 ? "below" : "above";
}

std::string forJson(const Table::Cell& cell)
{
    if (const auto* text = std::get_if<std::string>(&cell))
        return jsonText(*text);
    const double number = std::get<double>(cell);
    return std::isfinite(number) ? shortest(number)
           : std::isnan(number)  ? "null"
                                 : jsonText(wordFor(number, ""));
}

std::string padded(const std::string& text, std::size_t width, bool right)
{
    const std::string blanks(width - std::min(width, widthOf(text)), ' ');
    return right ? blanks + text : text + blanks;
}

void printLine(std::ostream& out, std::string line)
{
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
}

} // namespace

std::string forCsv(const Table::Cell& cell)
{
    if (const auto* text = std::get_if<std::string>(&cell))
        return csvText(*text);
    const double number = std::get<double>(cell);
    return std::isfinite(number) ? shortest(number) : wordFor(number, "");
}

void TableFormat::addTo(const Command& command)
{
    const Option asJson = command.flag("--json", json, "Print tables as JSON");
    command.flag("--csv", csv, "Print tables as comma-separated values").excludes(asJson);
}

void Table::add(std::vector<Cell> row)
{
    row.resize(m_vecColumns.size());
    m_vecRows.push_back(std::move(row));
}

void Table::print(std::ostream& out, const TableFormat& format) const
{
    if (format.json)
        printJson(out);
    else if (format.csv)
        printCsv(out);
    else
        printAligned(out);
}

std::string Table::forPeople(std::size_t column, const Cell& cell) const
{
    if (const auto* text = std::get_if<std::string>(&cell))
        return forTerminal(*text);
    const double number = std::get<double>(cell);
    if (!std::isfinite(number))
        return wordFor(number, "-");
    std::ostringstream text;
    text << std::fixed << std::setprecision(m_vecColumns[column].decimals) << number;
    return text.str();
}

void Table::printAligned(std::ostream& out) const
{
    std::string headings;
    std::string rule;
    std::vector<std::string> lines(m_vecRows.size());
    for (std::size_t c = 0; c < m_vecColumns.size(); ++c) {
        std::size_t width = widthOf(m_vecColumns[c].heading);
        for (const auto& row : m_vecRows)
            width = std::max(width, widthOf(forPeople(c, row[c])));
        const bool number = !m_vecRows.empty() && std::holds_alternative<double>(m_vecRows[0][c]);
        const std::string gap = c == 0 ? "" : "  ";
        headings += gap + padded(m_vecColumns[c].heading, width, number);
        rule += gap + std::string(width, '-');
        for (std::size_t r = 0; r < m_vecRows.size(); ++r)
            lines[r] += gap + padded(forPeople(c, m_vecRows[r][c]), width, number);
    }
    printLine(out, headings);
    printLine(out, rule);
    for (const std::string& line : lines)
        printLine(out, line);
}

void Table::printJson(std::ostream& out) const
{
    out << "[";
    for (std::size_t r = 0; r < m_vecRows.size(); ++r) {
        out << (r == 0 ? "\n  {" : ",\n  {");
        for (std::size_t c = 0; c < m_vecColumns.size(); ++c)
            out << (c == 0 ? "" : ", ") << jsonText(m_vecColumns[c].key) << ": " << forJson(m_vecRows[r][c]);
        out << "}";
    }
    out << "\n]\n";
}

void Table::printCsv(std::ostream& out) const
{
    for (std::size_t c = 0; c < m_vecColumns.size(); ++c)
        out << (c == 0 ? "" : ",") << csvText(m_vecColumns[c].heading);
    out << '\n';
    for (const auto& row : m_vecRows) {
        for (std::size_t c = 0; c < row.size(); ++c)
            out << (c == 0 ? "" : ",") << forCsv(row[c]);
        out << '\n';
    }
}

void printTables(std::ostream& out, const Tables& tables, const TableFormat& format)
{
    const bool object = format.json && tables.size() > 1;
    for (std::size_t i = 0; i < tables.size(); ++i) {
        if (object)
            out << (i == 0 ? "{" : ",") << jsonText(tables[i].first) << ":\n";
        else if (i > 0)
            out << '\n';
        tables[i].second.print(out, format);
    }
    if (object)
        out << "}\n";
}

} // namespace thermal
